"""Reads what the checks need from a 64-bit Windows program file."""

import struct

DIRECTORY_EXPORT = 0
DIRECTORY_IMPORT = 1
DIRECTORY_RESOURCE = 2
RESOURCE_TYPE_VERSION = 16


class PortableExecutable:
    def __init__(self, path):
        self.data = path.read_bytes()
        header = self.u32(0x3C)
        if self.data[header:header + 4] != b"PE\0\0":
            raise ValueError(f"{path} is no program file")
        self.machine = self.u16(header + 4)
        section_count = self.u16(header + 6)
        self.characteristics = self.u16(header + 22)
        optional = header + 24
        if self.u16(optional) != 0x20B:
            raise ValueError(f"{path} is not 64-bit")
        self.dll_characteristics = self.u16(optional + 70)
        self.directories = [(self.u32(optional + 112 + 8 * i), self.u32(optional + 116 + 8 * i))
                            for i in range(self.u32(optional + 108))]
        table = optional + self.u16(header + 20)
        self.sections = []
        for i in range(section_count):
            at = table + 40 * i
            self.sections.append((self.data[at:at + 8].rstrip(b"\0").decode(), self.u32(at + 12),
                                  self.u32(at + 16), self.u32(at + 20)))

    def u16(self, at):
        return struct.unpack_from("<H", self.data, at)[0]

    def u32(self, at):
        return struct.unpack_from("<I", self.data, at)[0]

    def at_address(self, address):
        for _, start, size, offset in self.sections:
            if start <= address < start + size:
                return offset + address - start
        raise ValueError(f"address {address:#x} lies in no section")

    def text_at(self, address):
        start = self.at_address(address)
        return self.data[start:self.data.index(b"\0", start)].decode()

    def dll_name(self):
        return self.text_at(self.u32(self.at_address(self.directories[DIRECTORY_EXPORT][0]) + 12))

    def exports(self):
        table = self.at_address(self.directories[DIRECTORY_EXPORT][0])
        names = self.at_address(self.u32(table + 32))
        return [self.text_at(self.u32(names + 4 * i)) for i in range(self.u32(table + 24))]

    def function_count(self):
        """Counts the exports by ordinal, of which some might have no name."""
        return self.u32(self.at_address(self.directories[DIRECTORY_EXPORT][0]) + 20)

    def imported_dlls(self):
        at = self.at_address(self.directories[DIRECTORY_IMPORT][0])
        found = []
        while self.u32(at + 12) != 0:
            found.append(self.text_at(self.u32(at + 12)))
            at += 20
        return found

    def version_resource(self):
        """The bytes of the version resource, or None."""
        if self.directories[DIRECTORY_RESOURCE][0] == 0:
            return None
        base = self.at_address(self.directories[DIRECTORY_RESOURCE][0])

        def entries(at):
            count = self.u16(at + 12) + self.u16(at + 14)
            return [(self.u32(at + 16 + 8 * i), self.u32(at + 20 + 8 * i)) for i in range(count)]

        def first_leaf(offset):
            while offset & 0x80000000:
                offset = entries(base + (offset & 0x7FFFFFFF))[0][1]
            return base + offset

        for kind, offset in entries(base):
            if kind == RESOURCE_TYPE_VERSION:
                leaf = first_leaf(offset)
                start = self.at_address(self.u32(leaf))
                return self.data[start:start + self.u32(leaf + 4)]
        return None
