#!/usr/bin/env python3
"""Counts the instructions of some small commands, and compares them with those that are kept in a file.

    bench/instruction_counts.py QRV             fails when one grew by more than 3 %
    bench/instruction_counts.py QRV --update    writes what was counted, and keeps the reasons

Unlike times, instructions are the same on a busy machine. The file has a line for each command: its name, the number, and why it
last grew. Whoever makes a command dearer says so there, in the same change.
"""

import argparse
import os
import pathlib
import re
import subprocess
import sys
import tempfile

import sides
import trees

KEPT = pathlib.Path(__file__).with_name("instruction_counts.txt")
ALLOWED_GROWTH = 1.03
FILES = 400


class Counted(sides.Ours):
    """Counts what the process itself does, without the system."""

    def __init__(self, top, program):
        super().__init__(top, program)
        self.report = top / "report"

    def count(self, *arguments):
        command = ["valgrind", "--tool=callgrind", f"--callgrind-out-file={self.report}", *self.program, *arguments]
        done = subprocess.run(command, cwd=self.tree, env=self.environment, check=True, capture_output=True, text=True)
        return int(re.search(r"Collected : (\d+)", done.stderr).group(1))


def age_files(root):
    """Files as old as these are never read again for their age."""
    for path, folders, names in os.walk(root):
        folders[:] = [folder for folder in folders if folder != ".qrv"]
        for name in names:
            os.utime(os.path.join(path, name), (1_700_000_000, 1_700_000_000))


def counts(qrv, top):
    """Name of the work -> instructions, each in the repository that the one before left."""
    ours = Counted(top, qrv)
    trees.small_files(ours.tree, FILES)
    age_files(ours.tree)
    found = {"version": ours.count("--version")}
    ours.init()
    found["add-all"] = ours.count("add", "--all")
    found["commit-all"] = ours.count("commit", "-m", "all")
    ours.status()
    found["status"] = ours.count("status")
    path = str(trees.small_path(7))
    (ours.tree / path).write_text("another text\n")
    found["add-one"] = ours.count("add", path)
    found["commit-one"] = ours.count("commit", "-m", "one")
    ours.begin_branch("side")
    trees.change_small_files(ours.tree, 40, 10, "on the side")
    ours.add_all()
    ours.commit()
    found["switch"] = ours.count("switch", "master")
    found["verify"] = ours.count("verify")
    return found


def kept_counts():
    """Name -> number and reason."""
    lines = KEPT.read_text(encoding="utf-8").splitlines() if KEPT.exists() else []
    words = [line.split(None, 2) for line in lines]
    return {name: (int(number), reason) for name, number, reason in words}


def write(found, kept):
    lines = [f"{name:<12} {number:>12} {kept[name][1] if name in kept else 'first count'}" for name, number in found.items()]
    KEPT.write_text("\n".join(lines) + "\n", encoding="utf-8")


def complaints(found, kept):
    for name, number in found.items():
        if name not in kept:
            yield f"{name}: no number is kept"
        elif number > kept[name][0] * ALLOWED_GROWTH:
            yield f"{name}: {number:,} instructions, {number / kept[name][0] - 1:.1%} more than the {kept[name][0]:,} kept"
    for name in kept.keys() - found.keys():
        yield f"{name}: kept, but not counted"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("qrv", type=pathlib.Path)
    parser.add_argument("--update", action="store_true")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="qrv-bench-") as top:
        found = counts(arguments.qrv.resolve(), pathlib.Path(top))
    kept = kept_counts()
    if arguments.update:
        write(found, kept)
        return 0
    problems = list(complaints(found, kept))
    for problem in problems:
        print(problem, file=sys.stderr)
    if problems:
        print(f"Say in {KEPT.name} why (bench/instruction_counts.py QRV --update writes the numbers)", file=sys.stderr)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
