#!/usr/bin/env python3
"""Times the program against git on the same files, in turns in one run, and prints a table.

    bench/against_git.py QRV [--files N] [--runs N] [--only NAME ...]

Both run as whole processes with warm files, git without its optional flushes, ours as it is given to people. Each has a
tree of its own. `--files` is the size of the tree of small files, `--only` names groups: small, little, drawings, mixed,
start.
"""

import argparse
import pathlib
import shutil
import tempfile
import time

import rows
import sides
import trees

CHANGED = 1000


class Pair:
    """The two trees, in which the same is done in turns."""

    def __init__(self, top, qrv):
        self.ours, self.git = sides.Ours(top, qrv), sides.Git(top)
        self.both = (self.ours, self.git)

    def fill(self, make, *arguments):
        for side in self.both:
            make(side.tree, *arguments)

    def change(self, *arguments):
        for side in self.both:
            trees.change_small_files(side.tree, *arguments)

    def each(self, work):
        """What `work` takes on our side and on git's."""
        return [work(side) for side in self.both]

    def times(self, count, work):
        """The costs of some runs on each side; `work` gets the number of the run."""
        runs = [[work(side, number) for side in self.both] for number in range(count)]
        return [list(costs) for costs in zip(*runs)]


def settle():
    """Files as young as the note of them are read again: wait until they are not."""
    time.sleep(3)


def first_commit(pair, count, runs):
    def add_and_commit(side, number):
        if number > 0:
            side.forget()
        side.init()
        return side.add_all() + side.commit()

    costs = pair.times(runs, add_and_commit)
    yield rows.of_times(f"add and commit of {count:,} new small files", *costs, 0.7)
    yield rows.of_memory("the same, our memory", max(cost.peak_mebibytes for cost in costs[0]), 120)


def change_one(pair, count, runs):
    added, committed = [[], []], [[], []]
    for number in range(runs):
        path = trees.small_path(number * 97 % count)
        for place, side in enumerate(pair.both):
            (side.tree / path).write_text(f"changed {number}\n")
            added[place].append(side.add(path))
            committed[place].append(side.commit())
    yield rows.of_times(f"add one changed file of {count:,}", *added, 0.3)
    yield rows.of_times(f"commit one file of {count:,}", *committed, 0.5)
    yield rows.of_memory("the larger memory of both", max(cost.peak_mebibytes for cost in added[0] + committed[0]), 40)


def change_many(pair, count, runs):
    costs = [[], []]
    for number in range(runs):
        pair.change(CHANGED, count // CHANGED, f"many {number}")
        for place, side in enumerate(pair.both):
            costs[place].append(side.add_all())
        pair.each(lambda side: side.commit())
    yield rows.of_times(f"add --all, {CHANGED:,} of {count:,} changed", *costs, 1.0)


def status(pair, count, runs, what, target, first=None):
    """`first` is done before each run."""
    def look(side, number):
        if first:
            first(side, number)
        return side.status()

    look(pair.ours, 0), look(pair.git, 0)
    yield rows.of_times(f"status of {count:,}, {what}", *pair.times(runs, look), target)


def switch_and_merge(pair, count, runs):
    step = count // CHANGED
    pair.each(lambda side: side.begin_branch("side"))
    pair.change(CHANGED, step, "on the side")
    pair.each(lambda side: side.add_all() + side.commit())
    costs = pair.times(2 * runs, lambda side, number: side.switch("side" if number % 2 else "master"))
    yield rows.of_times(f"switch, {CHANGED:,} of {count:,} files differ", *costs, 1.0)
    after_switch = lambda side, number: side.switch("side" if number % 2 else "master")
    yield from status(pair, count, runs, "straight after switch", 1.0, after_switch)
    pair.each(lambda side: side.switch("master"))
    merges = [[], []]
    for number in range(runs):
        pair.each(lambda side: side.begin_branch(f"topic{number}"))
        pair.change(CHANGED, step, f"topic {number}")
        pair.each(lambda side: side.add_all() + side.commit() + side.switch("master"))
        for side in pair.both:
            (side.tree / trees.small_path(1)).write_text(f"ours {number}\n")
            side.add(trees.small_path(1))
            side.commit()
        for place, side in enumerate(pair.both):
            merges[place].append(side.merge(f"topic{number}"))
    yield rows.of_times(f"merge, {CHANGED:,} of {count:,} files", *merges, 1.0)
    yield from status(pair, count, 1, "straight after merge", 1.0)


def conflict(pair, count, runs):
    path = trees.small_path(5)
    pair.each(lambda side: side.begin_branch("theirs"))
    for word in ("theirs", "ours"):
        for side in pair.both:
            (side.tree / path).write_text(f"{word}\n")
            side.add(path)
            side.commit()
            if word == "theirs":
                side.switch("master")
    # Ours answers 3 to a merge that waits for somebody to settle a conflict.
    pair.ours.merge("theirs", expected=(0, 1, 3))
    pair.git.merge("theirs", expected=(1,))
    yield from status(pair, count, runs, "while a conflict is open", 1.0)
    pair.each(lambda side: side.abandon_merge())


def small(top, qrv, count, runs):
    pair = Pair(top, qrv)
    pair.fill(trees.small_files, count)
    yield from first_commit(pair, count, 1)
    settle()
    yield from status(pair, count, 1, "the first after the commit", None)
    yield from status(pair, count, runs, "nothing changed", 0.7)
    kept = pair.ours.kept_mebibytes()
    gc = pair.each(lambda side: side.gc())
    kept_by_git = pair.git.kept_mebibytes()
    yield rows.of_room(f"room of {count:,} small files, after commit", kept, kept_by_git, 3.0)
    yield rows.of_room("the same after gc", pair.ours.kept_mebibytes(), kept_by_git, 1.5)
    yield rows.of_times("gc", *[[cost] for cost in gc])
    yield rows.of_times("verify after gc", *pair.times(min(runs, 3), lambda side, _: side.verify()), 1.0)
    yield from change_one(pair, count, runs)
    yield from change_many(pair, count, runs)
    yield from status(pair, count, runs, "straight after add", 1.0, lambda side, number: add_one(side, count, number))
    pair.each(lambda side: side.commit())
    yield from switch_and_merge(pair, count, runs)
    yield from conflict(pair, count, runs)


def add_one(side, count, number):
    path = trees.small_path((number * 31 + 11) % count)
    (side.tree / path).write_text(f"added {number}\n")
    side.add(path)


def committed_pair(top, qrv, count):
    """Small files in one commit, all of which have been looked at."""
    pair = Pair(top, qrv)
    pair.fill(trees.small_files, count)
    pair.each(lambda side: side.init() + side.add_all() + side.commit())
    settle()
    pair.each(lambda side: side.status())
    return pair


def little(top, qrv, _, runs):
    pair = committed_pair(top, qrv, 1000)

    def change(side, number):
        path = trees.small_path(number * 7 % 1000)
        (side.tree / path).write_text(f"changed {number}\n")
        return side.add(path) + side.commit()

    yield rows.of_times("one file changed, add and commit, tree of 1,000 files", *pair.times(4 * runs, change), 1.5)
    yield from status(pair, 1000, 4 * runs, "nothing changed", None)


def start(top, qrv, _, runs):
    pair = committed_pair(top, qrv, 20)
    yield rows.of_times("--version", *pair.times(8 * runs, lambda side, _: side.version()), 2.0)
    yield rows.of_times("status in a folder of 20 files", *pair.times(8 * runs, lambda side, _: side.status()), 2.0)


def of_folder(top, qrv, make, what, room_now, room_later, time_target):
    """One commit of a folder: the time, and the room before and after gc."""
    pair = Pair(top, qrv)
    pair.fill(*make)
    pair.each(lambda side: side.init())
    costs = pair.each(lambda side: side.add_all() + side.commit())
    yield rows.of_times(f"{what}: add and commit", *[[cost] for cost in costs], time_target)
    kept = pair.ours.kept_mebibytes()
    gc = pair.each(lambda side: side.gc())
    yield rows.of_room("the same on disk, after commit", kept, pair.git.kept_mebibytes(), room_now)
    yield rows.of_room("the same after gc", pair.ours.kept_mebibytes(), pair.git.kept_mebibytes(), room_later)
    yield rows.of_times("its gc", *[[cost] for cost in gc])


def drawings(top, qrv, *_):
    yield from of_folder(top, qrv, (trees.copies_of_templates, 3000), "3,000 similar drawings of 20 to 60 KB", 2.0, 1.0,
                         0.5)


def mixed(top, qrv, *_):
    yield from of_folder(top, qrv, (trees.mixed_folder, 2400), "2.4 GB of drawings, documents, pictures, archives", 1.0,
                         1.0, 0.4)


def large(top, qrv, *_):
    yield from of_folder(top, qrv, (trees.files_that_do_not_compress, 20_000),
                         "20,000 files of 2 GB that do not compress", None, None, 0.11)


GROUPS = {"start": start, "little": little, "small": small, "drawings": drawings, "large": large, "mixed": mixed}


def measured(group, qrv, count, runs):
    top = pathlib.Path(tempfile.mkdtemp(prefix="qrv-bench-"))
    try:
        return list(GROUPS[group](top, qrv, count, runs))
    finally:
        shutil.rmtree(top)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("qrv", type=pathlib.Path)
    parser.add_argument("--files", type=int, default=200_000)
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--only", nargs="+", choices=GROUPS, default=list(GROUPS))
    arguments = parser.parse_args()
    found = []
    for group in arguments.only:
        found += measured(group, arguments.qrv.resolve(), arguments.files, arguments.runs)
    print(rows.table(found), end="")


if __name__ == "__main__":
    main()
