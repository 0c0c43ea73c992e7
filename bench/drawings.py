#!/usr/bin/env python3
"""What 50 revisions of a 5 MiB drawing take on the disk, and how long storing and restoring takes, beside a
packed git repository.

    bench/drawings.py <qrv> [revisions] [MiB]

Prints a table. The revisions are made by drawing_revisions.py, always the same ones. Both programs get each as a
commit, as whole processes. Ours is measured as it is then, with all that lies in `.qrv`; git's objects are, after
`git repack -ad` and after `git gc --aggressive`. Each restored file is compared with what was stored.
"""

import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

import drawing_revisions

def run(*command, cwd):
    # Nobody's registry of projects gets the folders of a benchmark.
    environment = {**os.environ, "QRV_CONFIG_DIR": str(cwd.parent / "configuration"), "QRV_AUTHOR": "bench"}
    return subprocess.run(command, cwd=cwd, check=True, capture_output=True, env=environment).stdout


def timed(work):
    start = time.perf_counter()
    result = work()
    return time.perf_counter() - start, result


def bytes_below(folder):
    return sum(path.stat().st_size for path in folder.rglob("*") if path.is_file())


def chosen(items):
    return items[0], items[len(items) // 2], items[-1]


def commit_all(repository, revisions):
    run("git", "init", "--quiet", "--initial-branch=master", cwd=repository)
    times = []
    for path in revisions:
        (repository / "plan.dwg").write_bytes(path.read_bytes())
        times.append(timed(lambda: (
            run("git", "add", "plan.dwg", cwd=repository),
            run("git", "-c", "user.name=bench", "-c", "user.email=bench@localhost",
                "-c", "gc.auto=0", "commit", "--quiet", "--message=x", cwd=repository)))[0])
    commits = run("git", "rev-list", "--reverse", "HEAD", cwd=repository).decode().split()
    return times, commits


def git_rows(revisions, scratch):
    repository = scratch / "git"
    repository.mkdir()
    storing, commits = commit_all(repository, revisions)
    packings = (("git repack -ad", ("git", "repack", "-a", "-d", "--quiet")),
                ("git gc --aggressive", ("git", "gc", "--aggressive", "--prune=now", "--quiet")))
    for name, command in packings:
        packing, _ = timed(lambda: run(*command, cwd=repository))
        restoring = []
        for commit, path in zip(commits, revisions):
            seconds, contents = timed(lambda: run("git", "show", f"{commit}:plan.dwg", cwd=repository))
            assert contents == path.read_bytes(), f"git gave something else for {path.name}"
            restoring.append(seconds)
        size = bytes_below(repository / ".git" / "objects")
        yield f"{name} ({packing:.1f} s)", size, storing, [*chosen(restoring), max(restoring)]


def own_row(program, revisions, scratch):
    repository = scratch / "own"
    repository.mkdir()
    run(program, "init", cwd=repository)
    storing, restoring = [], []
    for path in revisions:
        (repository / "plan.dwg").write_bytes(path.read_bytes())
        storing.append(timed(lambda: (
            run(program, "add", "plan.dwg", cwd=repository),
            run(program, "commit", "-m", "x", cwd=repository)))[0])
    for number, path in enumerate(revisions, 1):
        seconds, _ = timed(lambda: run(program, "restore", "plan.dwg", "--from", str(number), "--to", "../restored",
                                       cwd=repository))
        restored = scratch / "restored" / "plan.dwg"
        assert restored.read_bytes() == path.read_bytes(), f"restored something else for {path.name}"
        restored.unlink()
        restoring.append(seconds)
    return "qrv", bytes_below(repository / ".qrv"), storing, [*chosen(restoring), max(restoring)]


def main():
    program = pathlib.Path(sys.argv[1]).resolve()
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 50
    mebibytes = float(sys.argv[3]) if len(sys.argv) > 3 else 5
    with tempfile.TemporaryDirectory() as folder:
        scratch = pathlib.Path(folder)
        revisions = []
        for number, contents in enumerate(drawing_revisions.revisions(count, int(mebibytes * 2**20))):
            revisions.append(scratch / f"{number:03}.dwg")
            revisions[-1].write_bytes(contents)
        rows = [own_row(program, revisions, scratch), *git_rows(revisions, scratch)]
    print(f"{count} revisions of a drawing of {mebibytes:g} MiB\n")
    print("| | bytes | store: median, longest (s) | restore: first, middle, last, longest of all (s) |")
    print("| --- | --- | --- | --- |")
    for name, size, storing, restoring in rows:
        print(f"| {name} | {size:,} | {statistics.median(storing):.3f}, {max(storing):.3f} | "
              + ", ".join(f"{seconds:.3f}" for seconds in restoring) + " |")


if __name__ == "__main__":
    main()
