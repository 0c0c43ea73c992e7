#!/usr/bin/env python3
"""Takes permissions from folders of a repository and looks at what `qrv` makes of it.

Usage: unreadable_folders.py PROGRAM [--few]. Whatever lies below such a folder was recorded as removed, with exit status 0:
what cannot be looked at was taken for what is not there. It needs a user whom permissions bind, so that root works as
"nobody".
"""

import json
import os
import subprocess
import sys
import tempfile
from pathlib import Path

NOBODY = 65534
FILES = {"plans/ground.dwg": "ground", "plans/old/cellar.dwg": "cellar", "list.csv": "flange;3"}


class Project:
    def __init__(self, program, folder):
        self.program = program
        self.folder = folder
        self.user = {"user": NOBODY, "group": NOBODY, "extra_groups": []} if os.geteuid() == 0 else {}
        folder.mkdir()
        if self.user:
            os.chown(folder, NOBODY, NOBODY)
        self.run("qrv", "init")
        for name, text in FILES.items():
            self.write(name, text)
        self.run("qrv", "add", "--all")
        self.run("qrv", "commit", "-m", "first")

    def run(self, command, *arguments, status=0):
        environment = {**os.environ, "LC_ALL": "C.UTF-8", "HOME": str(self.folder), "QRV_AUTHOR": "tester"}
        environment.pop("XDG_CONFIG_HOME", None)
        environment["QRV_CONFIG_DIR"] = str(self.folder.parent / "configuration")
        program = self.program if command == "qrv" else command
        result = subprocess.run([program, *arguments], cwd=self.folder, env=environment, capture_output=True,
                                text=True, **self.user)
        expect(result.returncode == status, f"{arguments} ends with {result.returncode}: {result.stderr}")
        return result

    def write(self, name, text):
        self.run("sh", "-c", 'mkdir -p "$(dirname "$1")" && printf %s "$2" > "$1"', "sh", name, text)

    def staged(self):
        return [file["path"] for file in json.loads(self.run("qrv", "status", "--json").stdout)["staged"]]


def expect(condition, problem):
    if not condition:
        sys.exit(problem)


def changed(status):
    """All that a status tells of files."""
    return {key: status[key] for key in ("staged", "unstaged", "renames", "files")}


def check_closed(project, closed, mode):
    """With the permissions `mode`, nothing below the folder `closed` may be told, staged or committed."""
    label = f"{closed} with {mode:o}"
    folder = project.folder / closed
    before = folder.stat().st_mode
    folder.chmod(mode)
    try:
        plain = project.run("qrv", "status", status=1)
        expect(f"  {closed}" in plain.stdout and "Permission denied" in plain.stdout, f"{label}: {plain.stdout}")
        expect("removed" not in plain.stdout, f"{label}: {plain.stdout}")
        expect("modified  list.csv" in plain.stdout, f"{label}: the rest is not told: {plain.stdout}")
        shown = json.loads(project.run("qrv", "status", "--json", status=1).stdout)
        # One that can be read, but not entered, gives the names of its files.
        is_listed = mode == 0o444 and closed == "plans/old"
        listed = project.run("qrv", "files", status=0 if is_listed else 1)
        expect(is_listed or f"  {closed}" in listed.stderr, f"{label}: {listed.stderr}")
        expect([u["path"] for u in shown["unseen"]][0].startswith(closed), f"{label}: {shown}")
        commands = [["add", "--all"], ["restore", "."], ["diff"]]
        # A commit looks at what is staged and at nothing else.
        if closed == "plans":
            commands.append(["commit", "-m", "work"])
        for command in commands:
            told = project.run("qrv", *command, status=1).stderr
            expect(closed in told and "Permission denied" in told, f"{label}: {command}: {told}")
    finally:
        folder.chmod(before)


def check_rules(project):
    """Rules that cannot be read are not none: what they leave out would be staged."""
    rules = project.folder / ".qrv/properties/ignore"
    project.write("plans/ground.bak", "left out by a rule")
    rules.chmod(0)
    told = project.run("qrv", "add", "--all", status=1).stderr
    expect(".qrv/properties/ignore: Permission denied" in told, told)
    rules.chmod(0o644)


def main():
    program = str(Path(sys.argv[1]).resolve())
    with tempfile.TemporaryDirectory() as folder:
        os.chmod(folder, 0o755)
        project = Project(program, Path(folder).resolve() / "root")
        project.write("list.csv", "flange;4")
        project.write("plans/new.dwg", "a staged new drawing")
        project.run("qrv", "add", "plans/new.dwg")
        before = json.loads(project.run("qrv", "status", "--json").stdout)
        ways = [("plans", 0o000), ("plans/old", 0o444), ("plans/old", 0o111)]
        if "--few" not in sys.argv:
            ways += [("plans/old", 0o000), ("plans", 0o444), ("plans", 0o111)]
        for closed, mode in ways:
            check_closed(project, closed, mode)
            expect(project.staged() == ["plans/new.dwg"], f"{closed} with {mode:o} changed the stage")
        check_rules(project)
        now = json.loads(project.run("qrv", "status", "--json").stdout)
        expect(changed(now) == changed(before), f"{now} is not {before}")
        project.run("qrv", "commit", "-m", "work")
        log = project.run("qrv", "show", "--json").stdout
        expect("plans/new.dwg" in log and "removed" not in log, log)


if __name__ == "__main__":
    main()
