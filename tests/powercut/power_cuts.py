#!/usr/bin/env python3
"""Records what commands of `qrv` write, cuts the power at every moment, and looks at what is made of the disk then.

Usage: power_cuts.py PROGRAM [--only SCENARIO] [--states N] [--ignore-flushes-of EXPRESSION]. After each cut nothing that
was kept is damaged, the repository is as before the command or as it was to be (as it was to be when the command had
ended), and no contents of any file are lost. Then the command is given again, and the repository is as if nothing had
happened. Without --states every state is tried that the cuts leave in one of the regular ways, and some random ones.

With --ignore-flushes-of the disk does not do what it was asked to when the path fits (* stands for the whole file system).
Then there must be damage: so the check itself is checked.
"""

import argparse
import copy
import os
import random
import re
import shutil
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parents[1] / "crash"))

from calls import known_names, trace
from disk import Disk, Remains, fingerprint, make
from disturbance import MEMORY, Disturbance
from recorded_tree import Entries, Flush, Write
from recording import Recorder
from scenarios import Repository, make_scenarios
from system_calls import CHANGING, OTHER, available, find_strace

SEED = 20261121
# For each moment.
RANDOM_STATES = 4


class Cut:
    """One state of the disk after a cut behind so many steps."""

    def __init__(self, label, count, remains):
        self.label = label
        self.count = count
        self.remains = remains


def torn(numbers, label):
    return {number: random.Random(f"{SEED} {label} {number}") for number in numbers}


def cuts_behind(disk, count):
    waiting = disk.pending(count)
    entries = [n for n in waiting if isinstance(disk.steps[n], Entries)]
    writes = [n for n in waiting if isinstance(disk.steps[n], Write)]

    def cut(label, chosen, torn_writes=(), zeroed=False):
        label = f"behind step {count}, {label}"
        return Cut(label, count, Remains(frozenset(chosen), torn(torn_writes, label), zeroed))

    yield cut("with all", waiting)
    yield cut("with nothing", [])
    yield cut("with the names alone", entries)
    yield cut("with names and zeros", entries, zeroed=True)
    yield cut("with contents alone", set(waiting) - set(entries))
    for number in entries:
        yield cut(f"without step {number}", disk.without(number, waiting))
        yield cut(f"with step {number} alone", disk.with_needed({number}, waiting))
    for number in writes:
        yield cut(f"without write {number}", set(waiting) - {number})
        yield cut(f"with a part of write {number}", set(waiting) - {number}, [number])
    if len(waiting) < 2:
        return
    for attempt in range(RANDOM_STATES):
        chance = random.Random(f"{SEED} {count} {attempt}")
        some = {n for n in waiting if chance.random() < 0.5}
        parts = [n for n in writes if n not in some and chance.random() < 0.5]
        yield cut(f"by chance {attempt}", disk.with_needed(some, waiting), parts, chance.random() < 0.5)


def chosen_cuts(disk, limit):
    """All, or some by chance: half of them behind the last step, where the command had ended."""
    last = len(disk.steps)
    cuts = [cut for count in range(last + 1) for cut in cuts_behind(disk, count)]
    if not limit:
        return cuts
    random.Random(SEED).shuffle(cuts)
    ends = [cut for cut in cuts if cut.count == last]
    return ends[: limit // 2] + [cut for cut in cuts if cut.count < last]


def states(disk, limit):
    """Cuts that leave different trees, with these."""
    seen, found = set(), []
    for cut in chosen_cuts(disk, limit):
        tree = disk.tree(cut.count, cut.remains)
        mark = (fingerprint(tree), cut.count == len(disk.steps))
        if mark not in seen:
            seen.add(mark)
            found.append((cut, tree))
        if limit and len(found) == limit:
            break
    return found


def record(strace, disturbance, ignored):
    recorded = disturbance.repository.copy(disturbance.scenario.folder.with_name("recorded"))
    recorder = Recorder(recorded.folder)
    before = copy.deepcopy(recorder.nodes)
    result, calls = trace(strace, known_names(strace), recorded, disturbance.scenario.arguments)
    if result.returncode != disturbance.scenario.status:
        sys.exit(f"{disturbance.scenario.name} ends with {result.returncode}: {result.stderr.decode()}")
    steps = recorder.record(calls)
    if differences := recorder.differences():
        sys.exit(f"{disturbance.scenario.name}: the recording tells another story of {differences}")
    if ignored:
        steps = [s for s in steps if not (isinstance(s, Flush) and re.fullmatch(ignored, s.path))]
    return Disk(before, steps, recorder.nodes)


def problem_after(disturbance, disk, number, cut, tree):
    folder = disturbance.scenario.folder.with_name(f"cut-{number}")
    make(tree, folder)
    has_ended = cut.count == len(disk.steps)
    try:
        allowed = [disturbance.after] if has_ended else disturbance.allowed
        return disturbance.problem_left(Repository(disturbance.repository.program, folder), allowed)
    except RuntimeError as error:
        return str(error)
    finally:
        shutil.rmtree(folder)


def problems_of(disturbance, disk, limit):
    tasks = list(enumerate(states(disk, limit)))
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        found = list(pool.map(lambda task: problem_after(disturbance, disk, task[0], *task[1]), tasks))
    wrong = [f"{disturbance.scenario.name}: {task[1][0].label}:\n   {p}" for task, p in zip(tasks, found) if p]
    print(f"{disturbance.scenario.name}: {len(disk.steps)} steps, {len(tasks)} states, {len(wrong)} problems", flush=True)
    return len(tasks), wrong


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program", type=Path)
    parser.add_argument("--only", default="", help="the name of the only scenario")
    parser.add_argument("--states", type=int, default=0, help="try at most N states of each scenario")
    parser.add_argument("--ignore-flushes-of", help="a disk that lies; it must be found out")
    arguments = parser.parse_args()
    strace, program = find_strace(), str(arguments.program.resolve())
    names = available(strace, CHANGING + OTHER)
    problems, count = [], 0
    with tempfile.TemporaryDirectory(prefix="qrv-power-", dir=MEMORY if os.access(MEMORY, os.W_OK) else None) as folder:
        for scenario in make_scenarios(program, Path(folder).resolve(), arguments.only):
            disturbance = Disturbance(program, strace, names, scenario)
            disk = record(strace, disturbance, arguments.ignore_flushes_of)
            tried, wrong = problems_of(disturbance, disk, arguments.states)
            problems += wrong
            count += tried
    print(f"tried: {count} power-cut states", flush=True)
    if count == 0:
        problems.append("nothing was tried")
    if arguments.ignore_flushes_of:
        sys.exit(None if problems else "a disk that lies is not found out")
    sys.exit("\n".join(problems) or 0)


if __name__ == "__main__":
    main()
