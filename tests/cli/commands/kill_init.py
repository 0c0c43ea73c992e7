#!/usr/bin/env python3
"""Kills `qrv init` at each of its system calls that changes or opens a file, and looks at what is left.

Usage: kill_init.py PROGRAM [EVERY]. After each kill there is no state file or a whole one, and the next `qrv init`
completes the repository and registers it. A first run without a kill tells which calls there are, so every
one is met, or with EVERY each one of so many.
"""

import os
import re
import shutil
import subprocess
import sys
import tempfile
from collections import Counter
from pathlib import Path

CALLS = (
    "open,openat,creat,mkdir,mkdirat,write,pwrite64,writev,fsync,fdatasync,fchmod,fchmodat,chmod,ftruncate,"
    "rename,renameat,renameat2,link,linkat,unlink,unlinkat,close"
).split(",")
STATE = '{\n    "head" : {\n        "reference" : "master"\n    }\n}'
NAME = "Anbau"


def available(strace):
    """The names that this machine knows: not every one has each of them."""
    return [name for name in CALLS if traced(strace, name, ["true"], "").returncode == 0]


def run(command, registry, **variables):
    return subprocess.run(
        command,
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
        text=True,
        env={**os.environ, "QRV_CONFIG_DIR": str(registry), **variables},
    )


def traced(strace, names, command, registry, *options):
    trace = [strace, "-f", "-qq", "-e", f"trace={names}", *options, *command]
    # The leak check of a sanitizer does not work under a tracer.
    return run(trace, registry, ASAN_OPTIONS="detect_leaks=0")


def registry_of(folder):
    return folder.with_name(folder.name + "-registry")


def init(program, folder):
    return [program, "init", "--name", NAME, str(folder)]


def first_and_last_calls(strace, names, program, folder):
    """For each call, the numbers of its first use after the loader's work and of its last use."""
    log = folder.parent / "trace"
    command = init(program, folder)
    result = traced(strace, ",".join(names), command, registry_of(folder), "-o", str(log))
    if result.returncode != 0:
        sys.exit(f"init fails without a kill: {result.stderr}")
    total, started = Counter(), {}
    for line in log.read_text().splitlines():
        call = re.match(r"(?:\d+ +)?(\w+)\(", line)
        if not call:
            continue
        if str(folder) in line and not started:
            started = dict(total) or {"": 0}
        total[call.group(1)] += 1
    return {name: (started.get(name, 0) + 1, last) for name, last in total.items()}


def contents(folder):
    return {
        str(path.relative_to(folder)): path.read_bytes()
        for path in folder.rglob("*")
        if path.is_file() and not path.name.endswith(".qrv-tmp")
    }


def check(program, folder, expected):
    """What is wrong after a kill, or nothing."""
    state = folder / ".qrv/qrv.state"
    if state.exists() and state.read_text() != STATE:
        return f"the state file holds {state.read_text()!r}"
    again = run(init(program, folder), registry_of(folder))
    if again.returncode != 0:
        return f"the next init fails: {again.stderr}"
    if contents(folder) != expected:
        return f"the next init leaves {contents(folder)}"
    projects = run([program, "projects"], registry_of(folder))
    if projects.stdout != f"{NAME}  {folder}\n":
        return f"the registry lists {projects.stdout!r}"
    status = run([program, "status", str(folder)], registry_of(folder))
    if status.returncode != 0:
        return f"status fails: {status.stderr}"
    return None


def main(program, every=1):
    strace = shutil.which("strace")
    if strace is None:
        sys.exit("the program strace is missing")
    with tempfile.TemporaryDirectory() as temporary:
        whole = Path(temporary).resolve() / "whole"
        names = available(strace)
        calls = first_and_last_calls(strace, names, program, whole)
        expected = contents(whole)
        if expected.get(".qrv/qrv.state") != STATE.encode() or len(expected) != 3:
            sys.exit(f"init without a kill leaves {expected}")
        killed, problems, states, registries = 0, [], Counter(), Counter()
        every_one = [(name, number) for name, (first, last) in sorted(calls.items()) for number in range(first, last + 1)]
        chosen = every_one[::every]
        for name, number in chosen:
            folder = whole.with_name(f"{name}-{number}")
            kill = f"inject={name}:signal=KILL:when={number}"
            result = traced(strace, name, init(program, folder), registry_of(folder), "-e", kill)
            killed += result.returncode == -9
            states[(folder / ".qrv/qrv.state").exists()] += 1
            registries[(registry_of(folder) / "directories.state").exists()] += 1
            problem = check(program, folder, expected)
            if problem:
                problems.append(f"killed at {name} number {number}: {problem}")
        print(f"tried: {killed} kills")
        print(f"{states[True]} with a state file, {states[False]} without")
        if killed != len(chosen):
            problems.append(f"{len(chosen)} kills were planned")
        has_met_the_writing = "fsync" in calls and any("rename" in name for name in calls)
        if not states[True] or not states[False] or not has_met_the_writing:
            problems.append(f"the kills did not meet the writing of the state: {calls}")
        if not registries[True] or registries[False] <= states[False]:
            problems.append(f"the kills did not meet the writing of the registry: {calls}")
        sys.exit("\n".join(problems) or 0)


if __name__ == "__main__":
    main(sys.argv[1], *map(int, sys.argv[2:]))
