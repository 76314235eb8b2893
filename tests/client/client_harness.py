"""What the client's tests stand on: a tree of sparse files with a drive letter of its own, and ways
to run the client under Wine, piped or at a terminal. WINEPREFIX names the Wine prefix to use."""

import fcntl
import os
import re
import select
import shutil
import struct
import subprocess
import tempfile
import termios
import time

LARGE = 10 * 1024 * 1024  # files above this are large
TIME_LIMIT = 120

# Relative path -> size. Sizes are all different where the order of the rows is tested.
FILES = {
    "videos/holiday.mp4": 1500 * 1024 * 1024,
    "videos/clips/Short.MOV": 40 * 1024 * 1024 + 3,
    "work/report.PDF": 50 * 1024 * 1024,
    "work/archive.tar.gz": 30 * 1024 * 1024,
    "work/[draft]/plan.psd": 25 * 1024 * 1024,
    "\u00dcn\u00ef \u6587\u4ef6 \U0001f3b5/\u6570\u636e.zip": 20 * 1024 * 1024,
    "no extension": LARGE + 1,
    "exactly ten.bin": LARGE,  # not large: the limit is exclusive
    "small.txt": 12,
    "empty.txt": 0,
    "/".join(["deep folder with a long name"] * 10) + "/deep.iso": 12 * 1024 * 1024,
    "pagefile.sys": 60 * 1024 * 1024,  # the system's own, never reported
}
CATEGORIES = {
    "holiday.mp4": "Media files",
    "Short.MOV": "Media files",
    "report.PDF": "Documents",
    "archive.tar.gz": "Archives",
    "plan.psd": "Images",
    "\u6570\u636e.zip": "Archives",
    "no extension": "Other",
    "deep.iso": "Archives",
}
IGNORED = {"pagefile.sys", "swapfile.sys", "hiberfil.sys"}
# A whole number of seconds, each file one hour after the one before.
FIRST_TIME = 1_700_000_000
TICKS_TO_1970 = 621355968000000000


def sparse_file(path, size, modified=None):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        file.truncate(size)
    if modified is not None:
        os.utime(path, (modified, modified))


class Place:
    """A temporary folder below the build folder, reached by a drive letter of the Wine prefix.

    The letter, and not a folder of the drive that Wine gives to the whole machine: Wine shows mount
    points on the way as reparse points, which a scan does not enter."""

    def __init__(self, exe):
        self.prefix = os.environ["WINEPREFIX"]
        build = os.path.dirname(os.path.dirname(os.path.abspath(exe)))
        self.folder = tempfile.mkdtemp(prefix="client_test_", dir=build)
        devices = os.path.join(self.prefix, "dosdevices")
        for letter in "tuvwxyr":
            self.link = os.path.join(devices, letter + ":")
            try:
                os.symlink(self.folder, self.link)
            except FileExistsError:
                continue
            self.drive = letter.upper() + ":"
            break
        else:
            raise RuntimeError("no drive letter is free in " + devices)
        # On the system's drive: one large file that is protected there and one that is not.
        name = os.path.basename(self.folder)
        self.system_open = os.path.join(self.prefix, "drive_c", name)
        self.system_protected = os.path.join(self.prefix, "drive_c", "ProgramData", name)
        self._fill()

    def _fill(self):
        for number, (name, size) in enumerate(FILES.items()):
            sparse_file(os.path.join(self.folder, "tree", name), size, FIRST_TIME + 3600 * number)
        os.makedirs(os.path.join(self.folder, "tree", "nothing in here"))
        sparse_file(os.path.join(self.folder, "outside", "linked.iso"), 2 * LARGE)
        os.symlink("../outside", os.path.join(self.folder, "tree", "link"))
        for number in range(2000):
            sparse_file(os.path.join(self.folder, "many", f"{number:05}.iso"), LARGE + 1 + number)
        sparse_file(os.path.join(self.system_open, "open.iso"), 2 * LARGE)
        sparse_file(os.path.join(self.system_protected, "protected.iso"), 2 * LARGE)

    def windows_path(self, relative=""):
        return self.drive + "\\" + relative.replace("/", "\\")

    def find_large(self, folder):
        """What the system's own tool finds: Windows path -> size."""
        root = os.path.join(self.folder, folder)
        listing = subprocess.run(
            ["find", root, "-type", "f", "-size", f"+{LARGE}c", "-printf", "%P\\0%s\\0"],
            check=True, capture_output=True).stdout.decode().split("\0")[:-1]
        found = dict(zip(listing[::2], map(int, listing[1::2])))
        return {self.windows_path(folder + "/" + name): size for name, size in found.items()
                if os.path.basename(name) not in IGNORED}

    def remove(self):
        os.unlink(self.link)
        for folder in (self.folder, self.system_open, self.system_protected):
            shutil.rmtree(folder)


class Result:
    def __init__(self, code, out, err):
        self.code = code
        self.out = out
        self.err = err


def environment(extra):
    env = dict(os.environ, WINEDEBUG="-all", TZ="UTC")
    env.update(extra)
    return env


def run(exe, *arguments, cwd=None, env={}, stdout=subprocess.PIPE):
    """The client with both outputs piped."""
    done = subprocess.run(["wine", exe, *arguments], cwd=cwd, env=environment(env), stdout=stdout,
                          stderr=subprocess.PIPE, stdin=subprocess.DEVNULL, timeout=TIME_LIMIT)
    return Result(done.returncode, (done.stdout or b"").decode(), done.stderr.decode())


class Screen:
    """One line of a terminal, as far as a progress line needs one."""

    _SEQUENCE = re.compile(rb"\x1b\[(\??)(\d*)([A-Za-z])|([\x00-\x1f])|([^\x00-\x1f\x1b])")

    def __init__(self):
        self.cells = []
        self.column = 0
        self.widest = 0
        self.drawings = []

    def feed(self, data):
        for private, number, final, control, char in self._SEQUENCE.findall(data):
            count = int(number or 1)
            if char:
                self.cells[len(self.cells):] = [b" "] * (self.column - len(self.cells))
                self.cells[self.column:self.column + 1] = [char]
                self.column += 1
            elif control == b"\r":
                self._keep()
                self.column = 0
            elif control == b"\n":
                self._keep()
                self.cells, self.column = [], 0
            elif control == b"\b":
                self.column = max(0, self.column - 1)
            elif final == b"K" and not private:
                del self.cells[self.column:]
            elif final == b"C":
                self.column += count
            elif final == b"D":
                self.column = max(0, self.column - count)
            elif final == b"G":
                self.column = count - 1

    def _keep(self):
        if self.text():
            self.drawings.append(self.text())

    def text(self):
        return b"".join(self.cells).decode(errors="replace").rstrip()


_SEQUENCE = re.compile(r"\x1b(\[[0-9;?]*[A-Za-z]|\][^\x07]*\x07|[=>])")


def terminal_lines(output):
    """The lines that a terminal was sent, without what only moves the cursor or colours."""
    # Wine skips blank cells.
    output = re.sub(r"\x1b\[(\d*)C", lambda skip: " " * int(skip[1] or 1), output)
    return [line.rstrip() for line in _SEQUENCE.sub("", output).replace("\r", "").split("\n")]


def run_at_terminal(exe, *arguments, env={}, columns=80, interrupt_after=None,
                    out_at_terminal=False):
    """The client at a terminal, aside from its standard output, which is piped unless told. Answers
    the result, the screen and, when "Ctrl-C" was typed behind the text `interrupt_after`, the seconds
    from then to the end. What the terminal was sent is the result's `err`, without colours unless
    `env` has an empty NO_COLOR."""
    terminal, end = os.openpty()
    fcntl.ioctl(end, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))

    def take_terminal():
        os.setsid()
        fcntl.ioctl(0, termios.TIOCSCTTY, 0)

    with tempfile.TemporaryFile() as out:
        process = subprocess.Popen(["wine", exe, *arguments], stdin=end,
                                   stdout=end if out_at_terminal else out, stderr=end,
                                   env=environment({"NO_COLOR": "1", **env}), preexec_fn=take_terminal)
        os.close(end)
        screen = Screen()
        seen = b""
        typed_at = None
        ended_at = None
        limit = time.monotonic() + TIME_LIMIT
        while True:
            if ended_at is None and process.poll() is not None:
                ended_at = time.monotonic()
            ready, _, _ = select.select([terminal], [], [], 0.05)
            if ready:
                try:
                    data = os.read(terminal, 65536)
                except OSError:
                    break  # the last program closed the other end
                if not data:
                    break
                seen += data
                screen.feed(data)
                if interrupt_after and typed_at is None and interrupt_after.encode() in seen:
                    os.write(terminal, b"\x03")
                    typed_at = time.monotonic()
            elif ended_at is not None and time.monotonic() > ended_at + 1:
                break
            if time.monotonic() > limit:
                process.kill()
                raise TimeoutError("the client did not end; the terminal shows " + repr(seen))
        code = process.wait()
        os.close(terminal)
        out.seek(0)
        took = (ended_at or time.monotonic()) - typed_at if typed_at else None
        return Result(code, out.read().decode(), seen.decode(errors="replace")), screen, took
