#!/usr/bin/env python3
"""What commands take when the history is long, beside git: prints a table.

    bench/long_history.py QRV GENERATOR [--commits N ...] [--runs N]

A tree of 1,000 small files has that many commits, each of which changes one file. GENERATOR is `qrv_long_history`; git gets the
same by `git fast-import`.
"""

import argparse
import pathlib
import shutil
import subprocess
import tempfile

import against_git
import rows
import trees

FILES = 1000


def lengthen_git(side, count):
    """The same changes as LongHistory.cpp makes."""
    listed = subprocess.run([*side.program, "ls-tree", "-r", "HEAD"], cwd=side.tree, env=side.environment, check=True,
                            capture_output=True, text=True).stdout.splitlines()
    files = [(line.split("\t")[1], line.split()[2]) for line in listed]
    parts, changed = [], set()

    def commit(number, message, changes):
        parts.append(f"commit refs/heads/master\nmark :{number}\ncommitter bench <b@b> {1_800_000_000 + number} +0000\n"
                     f"data {len(message)}\n{message}\n" + ("from refs/heads/master^0\n" if number == 1 else "")
                     + "".join(f"M 100644 {blob} {path}\n" for path, blob in changes))

    for number in range(1, count):
        target, source = number * 7 % len(files), (number * 7 + number // len(files) + 1) % len(files)
        changed.add(target)
        commit(number, f"change {number}", [(files[target][0], files[source][1])])
    commit(count, "back", [files[place] for place in sorted(changed)])
    subprocess.run([*side.program, "fast-import", "--quiet"], cwd=side.tree, env=side.environment, check=True,
                   input="".join(parts), text=True)


def table_of(count, qrv, generator, runs):
    top = pathlib.Path(tempfile.mkdtemp(prefix="qrv-bench-"))
    try:
        pair = against_git.Pair(top, qrv)
        pair.fill(trees.small_files, FILES)
        pair.each(lambda side: side.init() + side.add_all() + side.commit())
        subprocess.run([generator, pair.ours.tree, str(count)], check=True)
        lengthen_git(pair.git, count)
        # The records of the new commits, and git's index of them.
        against_git.add_one(pair.ours, FILES, 1), against_git.add_one(pair.git, FILES, 1)
        pair.each(lambda side: side.commit())
        pair.git.gc()
        against_git.settle()
        pair.each(lambda side: side.status())
        yield from measured(pair, count, runs)
    finally:
        shutil.rmtree(top)


def measured(pair, count, runs):
    path = trees.small_path(70)
    middle = count // 2

    def of(work, ours, git):
        costs = ([], [])
        for _ in range(runs):
            costs[0].append(pair.ours.run(*ours))
            costs[1].append(pair.git.run(*git))
        return rows.of_times(f"{work}, {count:,} commits", *costs)

    yield of("log -n 10", ("log", "-n", "10"), ("log", "-n", "10"))
    yield of("log, all", ("log",), ("log",))
    yield of("log of one file", ("log", "--path", path), ("log", "--", path))
    yield of("show the newest", ("show",), ("show",))
    yield of("diff of neighbours", ("diff", str(count), str(count + 1), "--names"),
             ("diff", "--name-only", "HEAD~2", "HEAD~1"))
    yield of("diff of far ones", ("diff", "2", str(count), "--names"),
             ("diff", "--name-only", f"HEAD~{count}", "HEAD~2"))
    yield of("diff with the middle", ("diff", str(middle), str(count), "--names"),
             ("diff", "--name-only", f"HEAD~{count - middle + 2}", "HEAD~2"))
    yield of("list the branches", ("branch",), ("branch",))
    yield of("status", ("status",), ("status", "--untracked-files=all"))
    committed = ([], [])
    for number in range(runs):
        for place, side in enumerate(pair.both):
            (side.tree / path).write_text(f"changed {number}\n")
            committed[place].append(side.add(path) + side.commit())
    yield rows.of_times(f"add and commit of one file, {count:,} commits", *committed)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("qrv", type=pathlib.Path)
    parser.add_argument("generator", type=pathlib.Path)
    parser.add_argument("--commits", type=int, nargs="+", default=[20_000, 100_000])
    parser.add_argument("--runs", type=int, default=5)
    arguments = parser.parse_args()
    found = []
    for count in arguments.commits:
        found += table_of(count, arguments.qrv.resolve(), arguments.generator.resolve(), arguments.runs)
    print(rows.table(found), end="")


if __name__ == "__main__":
    main()
