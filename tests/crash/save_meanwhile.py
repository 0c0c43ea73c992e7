#!/usr/bin/env python3
"""Saves a file as another program does while a command of `qrv` replaces or removes that very file.

Usage: save_meanwhile.py PROGRAM [--only SCENARIO] [--every N]. The command is stopped behind one system call after the
other; then the file is saved, in one of the ways in which programs do that, and the command goes on. Wherever it was:
what was saved lies in the folder afterwards, no index takes it for what was planned, nothing that was kept is damaged,
and the command, given again, does not replace it either.
"""

import json
import os
import re
import signal
import subprocess
import time
from functools import partial
from itertools import product

from disturbance import run_all
from scenarios import DRAWING, digest_of
from system_calls import CHANGING, injecting

SAVED = DRAWING[20_000:] + b"a day's work"
# One that is replaced, one that is removed, and one that is new.
FILES = ("plans/ground floor.dwg", "plans/old/cellar.dwg", "plans/roof.dwg")
# Of the calls that change nothing, one in so many.
SAMPLE = 10
PATIENCE_SECONDS = 20
TICKS_BEFORE_1970 = 116_444_736_000_000_000


def by_rename(path):
    beside = path.with_name("~saving.tmp")
    beside.write_bytes(SAVED)
    os.replace(beside, path)
    return None


def in_place(path):
    with open(path, "r+b" if path.exists() else "wb") as file:
        file.write(SAVED)
        file.truncate()
    return None


def held_open(path):
    """Opened now, and written to when the command is over."""
    file = open(path, "r+b" if path.exists() else "w+b")

    def write():
        with file:
            file.seek(0)
            file.write(SAVED)
            file.truncate()

    return write


SAVERS = (by_rename, in_place, held_open)


def stopped_process(log):
    """The process that the log of the tracer says to be stopped, or nothing."""
    try:
        found = re.search(r"^(\d+) +--- stopped by SIGSTOP ---$", log.read_text(errors="replace"), re.MULTILINE)
    except FileNotFoundError:
        return None
    return int(found.group(1)) if found else None


def run_with_save(repository, arguments, tracer, log, save):
    """Gives the result, and whether the command was stopped and the file saved."""
    process = subprocess.Popen(
        [*tracer, repository.program, *arguments],
        cwd=repository.folder,
        env=repository.environment,
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
    )
    later, is_saved = None, False
    end = time.monotonic() + PATIENCE_SECONDS
    while process.poll() is None and not is_saved and time.monotonic() < end:
        pid = stopped_process(log)
        if pid is None:
            time.sleep(0.001)
            continue
        later, is_saved = save(), True
        os.kill(pid, signal.SIGCONT)
    output, messages = process.communicate(timeout=PATIENCE_SECONDS)
    if later:
        later()
    return subprocess.CompletedProcess(arguments, process.returncode, output, messages), is_saved


def is_taken_for_planned(repository, name):
    """Whether the index says of the saved file, with the time that it has, that it is not modified."""
    state = json.loads((repository.folder / ".qrv/qrv.state").read_text(encoding="utf-8"))
    for entry in state.get("index", []):
        if entry["path"] == name and not entry["data"]["modified"]:
            ticks = (repository.folder / name).stat().st_mtime_ns // 100 + TICKS_BEFORE_1970
            return entry["data"]["last_checked"] == ticks
    return False


def problem_left(disturbance, repository, name, result):
    saved = digest_of(SAVED)
    if result.returncode not in (0, 1):
        return f"it ends with {result.returncode}: {result.stderr.decode()}"
    found = {digest_of(contents): path for path, contents in repository.files().items()}
    # With --force, a save that comes early enough is kept like everything that is replaced, and told.
    is_told = saved in result.stderr.decode() and saved in repository.kept_contents()
    if saved not in found and not is_told:
        return f"the save is lost; the command said ({result.returncode}): {result.stderr.decode()}"
    if found.get(saved) == name and is_taken_for_planned(repository, name):
        return "the index takes the saved file for the planned one"
    if any(path.endswith((".qrv-tmp", ".qrv-aside")) for path in repository.files()):
        return f"something is left over: {sorted(repository.files())}"
    verified = repository.run("verify")
    if verified.returncode != 0:
        return f"verify fails: {verified.stdout.decode()}{verified.stderr.decode()}"
    if not disturbance.hashes <= repository.hashes():
        return "commits are lost"
    again = repository.run(*disturbance.scenario.arguments)
    kept = {digest_of(contents) for contents in repository.files().values()} | repository.kept_contents()
    if saved not in kept:
        return f"given again, the command drops it ({again.returncode}): {again.stderr.decode()}"
    return None


def problem_of_save(disturbance, call, name, saver):
    label = f"{call.name}-{call.number}-{FILES.index(name)}-{saver.__name__}"

    def judge(repository):
        path = repository.folder / name
        log = repository.folder.with_name(label + "-log")
        tracer = injecting(disturbance.strace, call, "signal=STOP", log)

        def save():
            path.parent.mkdir(exist_ok=True)
            return saver(path)

        result, is_saved = run_with_save(repository, disturbance.scenario.arguments, tracer, log, save)
        return problem_left(disturbance, repository, name, result) if is_saved else None

    return disturbance.problem_in_copy(label, judge)


def saves(disturbance, every):
    changing = [call for call in disturbance.calls if call.name in CHANGING]
    others = [call for call in disturbance.calls if call.name not in CHANGING]
    chosen = list(product(changing + others[::SAMPLE], FILES, SAVERS))[::every]
    return [
        (f"{saver.__name__} of {name} behind {call.name} {call.number} {call.line}", partial(problem_of_save, disturbance, call, name, saver))
        for call, name, saver in chosen
    ]


if __name__ == "__main__":
    run_all(__doc__, "saves", saves)
