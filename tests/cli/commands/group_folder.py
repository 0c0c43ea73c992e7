#!/usr/bin/env python3
"""Lets two people of a group work in one repository, in a folder that belongs to the group.

Usage: group_folder.py PROGRAM [--few]. Only root can become two people. For anybody else, and where the two may not
run the program, the test ends with status 77, which means that it was skipped.
"""

import json
import os
import shutil
import stat
import subprocess
import sys
import tempfile
from pathlib import Path

SKIPPED = 77
GROUP = 64200
GROUP_MAY_WRITE = 0o2775


class Person:
    """Somebody in a group of their own and in that of the office."""

    def __init__(self, program, number, umask, home):
        self.program, self.number, self.umask = program, number, umask
        self.home = home / str(number)
        self.home.mkdir(exist_ok=True)
        os.chown(self.home, number, number)

    def run(self, command, folder):
        return subprocess.run(
            command,
            cwd=folder,
            user=self.number,
            group=self.number,
            extra_groups=[GROUP],
            umask=self.umask,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            env={
                "PATH": os.environ["PATH"],
                "LANG": "C.UTF-8",
                "HOME": str(self.home),
                "QRV_CONFIG_DIR": str(self.home / "configuration"),
                "QRV_AUTHOR": f"person{self.number}",
            },
        )

    def qrv(self, folder, *arguments):
        """For a command that must go well; gives what it prints."""
        result = self.run([self.program, *arguments], folder)
        if result.returncode != 0:
            sys.exit(f"{self.number}: qrv {' '.join(arguments)} fails: {result.stdout}")
        return result.stdout

    def trust(self, folder):
        """A repository that somebody else has made is trusted by its path in the settings."""
        settings = self.home / "configuration/settings.json"
        settings.parent.mkdir(exist_ok=True)
        settings.write_text(json.dumps({"trusted": [str(folder)]}))
        for path in (settings.parent, settings):
            os.chown(path, self.number, self.number)

    def write(self, path, text):
        """Saves as many programs do: a new file takes the place of the old one."""
        save = 'printf %s "$2" > .new && mv -f .new "$1"'
        result = self.run(["sh", "-c", save, "sh", path.name, text], path.parent)
        if result.returncode != 0:
            sys.exit(f"{self.number} cannot save {path}: {result.stdout}")


def modes_below(folder):
    return {str(path.relative_to(folder)): path.lstat() for path in [folder, *folder.rglob("*")]}


def check_shared(folder):
    """Everything belongs to the group; it may read all, and write all but the packs, which nobody changes."""
    for name, status in modes_below(folder).items():
        wanted = 0o060
        if stat.S_ISDIR(status.st_mode):
            wanted = 0o2070
        elif name.startswith("packs/"):
            wanted = 0o040
        if status.st_mode & wanted != wanted or status.st_gid != GROUP:
            sys.exit(f"{name} has the mode {oct(status.st_mode)} and the group {status.st_gid}")


def check_private(folder):
    for name, status in modes_below(folder).items():
        if status.st_mode & 0o077:
            sys.exit(f"{name} is for others, too: {oct(status.st_mode)}")


def make_folder(path, owner, group, mode):
    path.mkdir()
    os.chown(path, owner, group)
    path.chmod(mode)
    return path


def work_together(folder, ada, ben, turns=3):
    """Each goes on with what the other has made."""
    ada.qrv(folder, "init")
    ada.write(folder / "plan.dwg", "first")
    ada.write(folder / "list.csv", "1")
    ada.qrv(folder, "add", "--all")
    ada.qrv(folder, "commit", "-m", "First")
    ben.trust(folder)
    for number, (person, other) in enumerate([(ben, ada), (ada, ben), (ben, ada)][:turns]):
        person.qrv(folder, "switch", "--create", f"side{number}")
        person.write(folder / "plan.dwg", f"plan {number}")
        person.write(folder / f"new{number}.txt", "new")
        person.qrv(folder, "add", "--all")
        person.qrv(folder, "commit", "-m", f"Side {number}")
        person.qrv(folder, "name", f"Name {number}")
        person.qrv(folder, "ignore", "add", f"*.x{number}")
        person.qrv(folder, "log-note", "noted")
        person.qrv(folder, "tag", f"tag{number}")
        person.qrv(folder, "add", "--all")
        person.qrv(folder, "commit", "-m", "Rules and name")
        other.qrv(folder, "status")
        other.qrv(folder, "switch", "master")
        other.qrv(folder, "merge", f"side{number}")
        other.qrv(folder, "gc")
        check_shared(folder / ".qrv")
    if len(json.loads(ada.qrv(folder, "log", "--json"))) != 1 + 2 * turns:
        sys.exit(f"not all commits are there: {ada.qrv(folder, 'log')}")
    for person in (ada, ben):
        person.qrv(folder, "verify")


def keep_private(folder, person):
    person.qrv(folder, "init")
    person.write(folder / "plan.dwg", "first")
    person.write(folder / "list.csv", "1")
    person.qrv(folder, "add", "--all")
    person.qrv(folder, "commit", "-m", "First")
    person.qrv(folder, "status")
    person.qrv(folder, "gc")
    check_private(folder / ".qrv")


def main(program, turns):
    if os.geteuid() != 0:
        print("only root can become two people")
        sys.exit(SKIPPED)
    with tempfile.TemporaryDirectory() as temporary:
        top = Path(temporary).resolve()
        top.chmod(0o755)
        ada, ben = Person(program, 64201, 0o002, top), Person(program, 64202, 0o002, top)
        if ada.run([program, "--version"], top).returncode != 0:
            print(f"{program} cannot be run by everybody")
            sys.exit(SKIPPED)
        work_together(make_folder(top / "shared", ada.number, GROUP, GROUP_MAY_WRITE), ada, ben, turns)
        # Who usually makes files that only they may write to does not lock the others out.
        careful = [Person(program, ada.number, 0o022, top), Person(program, ben.number, 0o022, top)]
        folder = make_folder(top / "careful", ada.number, GROUP, GROUP_MAY_WRITE)
        make_folder(folder / ".qrv", ada.number, GROUP, GROUP_MAY_WRITE)
        work_together(folder, *careful, turns)
        # What somebody takes out of it is their own again.
        careful[1].qrv(folder, "restore", "plan.dwg", "--to", str(careful[1].home / "mine"))
        mode = (careful[1].home / "mine/plan.dwg").stat().st_mode
        if mode & 0o777 != 0o644:
            sys.exit(f"a file that was taken out has the mode {oct(mode)}")
        alone = Person(program, 64203, 0o077, top)
        keep_private(make_folder(top / "private", alone.number, GROUP, GROUP_MAY_WRITE), alone)
        folder = make_folder(top / "unwanted", alone.number, GROUP, GROUP_MAY_WRITE)
        make_folder(folder / ".qrv", alone.number, GROUP, GROUP_MAY_WRITE)
        alone.qrv(folder, "config", "shared-folders", "0")
        alone.qrv(folder, "init")
        mode = (folder / ".qrv/qrv.state").stat().st_mode
        if mode & 0o077:
            sys.exit(f"the setting is not followed: {oct(mode)}")


if __name__ == "__main__":
    if shutil.which("sh") is None:
        sys.exit("the shell is missing")
    main(sys.argv[1], 1 if "--few" in sys.argv else 3)
