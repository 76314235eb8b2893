"""A folder on the drive C: of the Wine prefix that WINEPREFIX names, and a way to run a program for
Windows on it."""

import os
import shutil
import subprocess
import tempfile
from pathlib import Path

TIME_LIMIT = 300


class Place:
    """Made for one test and removed after it. Below C:, since Wine shows mount points on the way
    from Z: as reparse points, which no scan enters."""

    def __init__(self):
        drive = Path(os.environ["WINEPREFIX"]) / "drive_c"
        self.folder = Path(tempfile.mkdtemp(prefix="quastel_callers_", dir=drive))
        self.windows_path = "C:\\" + self.folder.name

    def put(self, name, content):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)
        return path

    def files(self):
        return sorted(path.relative_to(self.folder).as_posix()
                      for path in self.folder.rglob("*") if path.is_file())

    def remove(self):
        shutil.rmtree(self.folder)


def run(program, *arguments, env={}, cwd=None):
    """(exit code, output) of a program under Wine. The output goes through a file: not every program
    can open a pipe there."""
    with tempfile.TemporaryFile() as output:
        done = subprocess.run(["wine", str(program), *map(str, arguments)], cwd=cwd,
                              env=dict(os.environ, TZ="UTC", **env), stdin=subprocess.DEVNULL,
                              stdout=output, stderr=subprocess.STDOUT, timeout=TIME_LIMIT)
        output.seek(0)
        return done.returncode, output.read().decode(errors="replace").replace("\r\n", "\n")


def windows_path_of(path):
    """A path of this machine as the programs see it. Good for what they read, not for scans."""
    return "Z:" + str(Path(path).resolve()).replace("/", "\\")
