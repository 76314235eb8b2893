#!/usr/bin/env python3
"""Fetches packages that a package-lock.json pins, by npm as this machine has it set up.

usage: fetch_packages.py --lock LOCK --into FOLDER NAME...

Each package lands in FOLDER/node_modules/NAME, once its content agrees with the lock's integrity.
Only the files are taken: no script of a package runs, and the machine's own kind does not matter.
What is there already is not fetched again.
"""

import argparse
import base64
import hashlib
import json
import shutil
import subprocess
import sys
import tarfile
import tempfile
from pathlib import Path, PurePosixPath

MARK = ".quastel-integrity"


def integrity_of(data):
    return "sha512-" + base64.b64encode(hashlib.sha512(data).digest()).decode("ascii")


def fetched(name, version):
    with tempfile.TemporaryDirectory() as folder:
        done = subprocess.run(["npm", "pack", "--silent", f"{name}@{version}"], cwd=folder,
                              stdin=subprocess.DEVNULL, capture_output=True, text=True)
        files = list(Path(folder).glob("*.tgz"))
        if done.returncode != 0 or len(files) != 1:
            sys.exit(f"npm pack {name}@{version} failed:\n{done.stdout}{done.stderr}")
        return files[0].read_bytes(), files[0].name


def members(archive):
    """The plain files of a package, each with its place in it: a package has one folder at the top,
    and nothing may point out of it."""
    for member in archive.getmembers():
        parts = PurePosixPath(member.name).parts
        if member.isfile() and len(parts) > 1 and ".." not in parts and parts[0] != "/":
            yield member, PurePosixPath(*parts[1:])


def unpack(data, target):
    with tempfile.TemporaryFile() as file:
        file.write(data)
        file.seek(0)
        with tarfile.open(fileobj=file, mode="r:gz") as archive:
            for member, place in members(archive):
                path = target / place
                path.parent.mkdir(parents=True, exist_ok=True)
                with archive.extractfile(member) as content, open(path, "wb") as out:
                    shutil.copyfileobj(content, out)


def install(name, entry, folder):
    target = folder / "node_modules" / name
    mark = target / MARK
    if mark.exists() and mark.read_text() == entry["integrity"]:
        return
    data, file_name = fetched(name, entry["version"])
    if integrity_of(data) != entry["integrity"]:
        sys.exit(f"{file_name} is not what the lock file says")
    if target.exists():
        shutil.rmtree(target)
    target.mkdir(parents=True)
    unpack(data, target)
    mark.write_text(entry["integrity"])
    print(f"fetched {name} {entry['version']}")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--lock", type=Path, required=True)
    parser.add_argument("--into", type=Path, required=True)
    parser.add_argument("names", nargs="+")
    args = parser.parse_args()
    packages = json.loads(args.lock.read_text(encoding="utf-8"))["packages"]
    for name in args.names:
        install(name, packages[f"node_modules/{name}"], args.into)


if __name__ == "__main__":
    main()
