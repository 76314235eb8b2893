#!/usr/bin/env python3
"""Checks the built DLL: exports, imports, version resource, hardening.

usage: check_dll.py --root ROOT --dll DLL --version VERSION [--client EXE]
"""

import argparse
import re
import struct
import sys
from pathlib import Path

sys.dont_write_bytecode = True  # the source tree stays as it is
from portable_executable import PortableExecutable  # noqa: E402

EXPORT_COUNT = 58
# What every Windows has. The C runtime's DLL is part of the system.
SYSTEM_DLLS = {"kernel32.dll", "shell32.dll", "ole32.dll", "msvcrt.dll"}
# The client also asks for its arguments, its console and the profile folder.
CLIENT_DLLS = SYSTEM_DLLS | {"advapi32.dll", "user32.dll", "quastel_core.dll"}
MACHINE_X64 = 0x8664
RELOCATIONS_STRIPPED = 0x1
HARDENING = {"high-entropy addresses": 0x20, "address randomisation": 0x40, "no-execute": 0x100}

failures = []


def expect(condition, text):
    print(f"{'ok  ' if condition else 'FAIL'} {text}")
    if not condition:
        failures.append(text)


def expect_same_names(found, wanted, what):
    missing, extra = sorted(set(wanted) - set(found)), sorted(set(found) - set(wanted))
    expect(not missing and not extra,
           f"{what}" + (f" (missing: {missing}, too many: {extra})" if missing or extra else ""))


def names_of_list(path):
    if not path.exists():
        return []
    return re.findall(r"^\s*(qs_\w+)\s*$", path.read_text(encoding="utf-8"), re.MULTILINE)


def names_of_header(path):
    text = re.sub(r"/\*.*?\*/|//[^\n]*", "", path.read_text(encoding="utf-8"), flags=re.DOTALL)
    return re.findall(r"^QS_API\b[^;]*?\b(qs_\w+)\s*\(", text, re.MULTILINE)


def check_hardening(pe, name):
    expect(pe.machine == MACHINE_X64, f"{name} is for x64")
    for what, bit in HARDENING.items():
        expect(pe.dll_characteristics & bit, f"{name} has {what}")
    # Without its relocations a program stays where it was linked, whatever the bits say.
    expect(not pe.characteristics & RELOCATIONS_STRIPPED, f"{name} keeps its relocations")
    expect(any(section[0] == ".reloc" for section in pe.sections), f"{name} has a .reloc section")


def check_version(pe, version):
    resource = pe.version_resource()
    expect(resource is not None, "the DLL has a version resource")
    if resource is None:
        return
    fixed = resource.find(struct.pack("<I", 0xFEEF04BD))
    expect(fixed > 0, "the version resource has its fixed part")
    major, minor, patch = (int(number) for number in version.split("."))
    file_version = struct.unpack_from("<II", resource, fixed + 8)
    expect(file_version == (major << 16 | minor, patch << 16), f"the file version is {version}")
    for key in ("FileVersion", "ProductVersion"):
        text = (key + "\0").encode("utf-16-le")
        at = resource.find(text)
        expect(at > 0 and resource[at + len(text):].lstrip(b"\0").startswith(
            (version + "\0").encode("utf-16-le")[:2 * len(version)]), f"{key} says {version}")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--root", type=Path, required=True)
    parser.add_argument("--dll", type=Path, required=True)
    parser.add_argument("--version", required=True)
    parser.add_argument("--client", type=Path)
    args = parser.parse_args()

    header = names_of_header(args.root / "include/quastel_core.h")
    listed = names_of_list(args.root / "src/frame/quastel_core.def")
    expect(len(header) == EXPORT_COUNT == len(set(header)),
           f"the header declares {EXPORT_COUNT} functions (found {len(header)})")
    expect_same_names(listed, header, "the .def file and the header name the same functions")

    pe = PortableExecutable(args.dll)
    expect_same_names(pe.exports(), listed, "the DLL exports the .def file's names")
    expect(pe.function_count() == len(listed), "no export is without a name")
    expect(pe.dll_name() == "quastel_core.dll", "the DLL calls itself quastel_core.dll")
    imported = {name.lower() for name in pe.imported_dlls()}
    expect(imported and imported <= SYSTEM_DLLS, f"imports come from the system: {sorted(imported)}")
    check_version(pe, args.version)
    check_hardening(pe, "the DLL")
    if args.client is not None:
        client = PortableExecutable(args.client)
        imported = {name.lower() for name in client.imported_dlls()}
        expect("quastel_core.dll" in imported and imported <= CLIENT_DLLS,
               f"the client imports the DLL and the system: {sorted(imported)}")
        check_hardening(client, "the client")
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
