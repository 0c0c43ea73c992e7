#!/usr/bin/env python3
"""Cancels commits of many files and looks at what is left.

Usage: interrupted_commit.py PROGRAM. Ctrl-C left hundreds of temporary files among the objects, which `verify` listed one
by one: the process ended on the spot, and the files waited for their names until the last one was written.
"""

import os
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

COUNT = 1500


class Project:
    def __init__(self, program, folder):
        self.program = program
        self.folder = folder
        self.environment = {**os.environ, "LC_ALL": "C.UTF-8", "QRV_AUTHOR": "tester",
                            "QRV_CONFIG_DIR": str(folder.parent / "configuration")}
        folder.mkdir()
        self.run("init")
        for number in range(COUNT):
            # Large enough for a block of its own.
            (folder / f"{number:04}.bin").write_bytes(os.urandom(70_000))
        self.run("add", "--all")

    def start(self, *arguments):
        return subprocess.Popen([self.program, *arguments], cwd=self.folder, env=self.environment,
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def run(self, *arguments, status=0):
        process = self.start(*arguments)
        output, messages = process.communicate()
        expect(process.returncode == status, f"{arguments} ends with {process.returncode}: {messages.decode()}")
        return output.decode()

    def leftovers(self):
        return [path for path in (self.folder / ".qrv").rglob("*") if path.name.endswith(".qrv-tmp")]


def expect(condition, problem):
    if not condition:
        sys.exit(problem)


def cancel(project, wish):
    """Sends the signal in the middle of a commit. False when the commit was quicker."""
    process = project.start("commit", "-m", "many")
    while process.poll() is None and not project.leftovers():
        time.sleep(0.002)
    process.send_signal(wish)
    _, messages = process.communicate()
    if process.returncode == 0:
        return False
    expect(process.returncode == -wish, f"{wish.name}: the commit ends with {process.returncode}")
    expect(messages == b"qrv: Interrupted; nothing was committed\n" or messages == b"qrv: Interrupted\n",
           f"{wish.name}: {messages.decode()}")
    expect(not project.leftovers(), f"{wish.name} leaves {len(project.leftovers())} files")
    expect("no commit yet" in project.run("status"), f"{wish.name}: there is a commit")
    expect("left by" not in project.run("verify"), f"{wish.name}: verify finds something left")
    return True


def main():
    program = str(Path(sys.argv[1]).resolve())
    with tempfile.TemporaryDirectory() as folder:
        project = Project(program, Path(folder).resolve() / "root")
        for wish in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            expect(cancel(project, wish), f"{wish.name}: the commit was done before it could be cancelled")
        project.run("commit", "-m", "many")
        project.run("verify")


if __name__ == "__main__":
    main()
