#!/usr/bin/env python3
"""Times the program against git on the same trees, side by side in one run, and prints a table.

Status: a tree of 50,000 small files after a commit, with untracked files listed. Commit: 20,000 new files of
8 to 200 KiB of bytes that do not compress, staged and committed. Both are to take no longer than git. Usage: versioning.py QRV [--files N] [--new N]
"""

import argparse
import os
import pathlib
import random
import shutil
import statistics
import subprocess
import tempfile
import time

RUNS = 7
SEED = 7


def environment(folder):
    names = {"QRV_CONFIG_DIR": str(folder / "configuration"), "QRV_AUTHOR": "bench",
             "GIT_CONFIG_GLOBAL": "/dev/null", "GIT_AUTHOR_NAME": "bench", "GIT_AUTHOR_EMAIL": "b@b",
             "GIT_COMMITTER_NAME": "bench", "GIT_COMMITTER_EMAIL": "b@b"}
    return {**os.environ, **names}


class Tree:
    """A working tree with a repository of each program; that of git lies outside it."""

    def __init__(self, top, qrv):
        self.root = top / "tree"
        self.root.mkdir()
        self.qrv_program = qrv
        self.git_folder = top / "git"
        self.environment = environment(top)

    def qrv(self, *arguments):
        return self.timed([self.qrv_program, *arguments])

    def git(self, *arguments):
        return self.timed(["git", f"--git-dir={self.git_folder}", f"--work-tree={self.root}",
                           "-c", "gc.auto=0", "-c", "init.defaultBranch=master", *arguments])

    def both_statuses(self):
        return self.qrv("status"), self.git("status", "--untracked-files=all")

    def timed(self, command):
        begin = time.perf_counter()
        subprocess.run(command, cwd=self.root, env=self.environment, check=True,
                       stdout=subprocess.DEVNULL)
        return time.perf_counter() - begin

    def make_repositories(self):
        self.qrv("init")
        self.git("init")
        (self.git_folder / "info" / "exclude").write_text(".qrv\n")


def make_small_files(root, count):
    for number in range(count):
        folder = root / f"part{number // 2500:02}" / f"sheet{number // 100 % 25:02}"
        if number % 100 == 0:
            folder.mkdir(parents=True, exist_ok=True)
        (folder / f"note{number % 100:03}.txt").write_text(f"note {number}\n")


def make_new_files(root, count):
    source = random.Random(SEED)
    total = 0
    for number in range(count):
        folder = root / f"scan{number // 200:03}"
        if number % 200 == 0:
            folder.mkdir()
        size = source.randrange(8 << 10, 200 << 10)
        (folder / f"sheet{number % 200:03}.bin").write_bytes(source.randbytes(size))
        total += size
    return total


def time_status(top, qrv, count):
    tree = Tree(top, qrv)
    make_small_files(tree.root, count)
    tree.make_repositories()
    tree.qrv("add", "--all")
    tree.qrv("commit", "-m", "all")
    tree.git("add", "--all")
    tree.git("commit", "--quiet", "--message=all")
    # Both look again at files that are as young as their index, and note that; most of what is timed comes after it.
    time.sleep(3)
    first = tree.both_statuses()
    tree.both_statuses()
    pairs = [tree.both_statuses() for _ in range(RUNS)]
    return first, [statistics.median(side) for side in zip(*pairs)]


def time_commit(top, qrv, count):
    tree = Tree(top, qrv)
    tree.make_repositories()
    total = make_new_files(tree.root, count)
    subprocess.run(["sync"], check=True)
    ours = tree.qrv("add", "--all") + tree.qrv("commit", "-m", "all")
    subprocess.run(["sync"], check=True)
    theirs = tree.git("add", "--all") + tree.git("commit", "--quiet", "--message=all")
    return ours, theirs, total


def in_new_folder(measure, *arguments):
    top = pathlib.Path(tempfile.mkdtemp(prefix="qrv-bench-"))
    try:
        return measure(top, *arguments)
    finally:
        shutil.rmtree(top)


def rating(ratio):
    return f"{ratio:.2f} | 1 | {'reached' if ratio <= 1 else 'missed'}"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("qrv", type=pathlib.Path)
    parser.add_argument("--files", type=int, default=50_000)
    parser.add_argument("--new", type=int, default=20_000)
    arguments = parser.parse_args()
    qrv = arguments.qrv.resolve()

    print("| what | qrv (s) | git (s) | ratio | target | |\n| --- | ---: | ---: | ---: | ---: | --- |")
    (first, their_first), (ours, theirs) = in_new_folder(time_status, qrv, arguments.files)
    print(f"| status of {arguments.files} files, median of {RUNS} | {ours:.3f} | {theirs:.3f} "
          f"| {rating(ours / theirs)} |")
    print(f"| the first status after the commit, once | {first:.3f} | {their_first:.3f} "
          f"| {rating(first / their_first)} |", flush=True)
    ours, theirs, total = in_new_folder(time_commit, qrv, arguments.new)
    print(f"| add and commit of {arguments.new} new files, {total / 1e9:.2f} GB | {ours:.2f} "
          f"| {theirs:.2f} | {rating(ours / theirs)} |")


if __name__ == "__main__":
    main()
