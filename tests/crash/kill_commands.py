#!/usr/bin/env python3
"""Kills commands of `qrv` at each of their system calls that change anything, and looks at what is left.

Usage: kill_commands.py PROGRAM [--only SCENARIO] [--every N]. After each kill nothing that was kept is damaged, the next
command finds the repository as it was before or as it was to be, and no contents of any file are lost. Then the
command is given again, and the repository is as if nothing had happened.
"""

from functools import partial

from disturbance import run_all
from system_calls import CHANGING, injecting

# Of the calls that change nothing, one in so many.
SAMPLE = 12


def problem_of_kill(disturbance, call):
    def judge(repository, killed):
        # How often the threads wait for each other, and with which calls, is left to chance.
        is_certain = call.name in CHANGING and call.name not in disturbance.by_chance
        if killed.returncode == disturbance.scenario.status and not is_certain:
            return None
        if killed.returncode != -9:
            return f"it was not killed, but ended with {killed.returncode}"
        return disturbance.problem_left(repository, disturbance.allowed)

    tracer = injecting(disturbance.strace, call, "signal=KILL")
    return disturbance.problem_at(f"{call.name}-{call.number}", tracer, judge)


def kills(disturbance, every):
    changing = [call for call in disturbance.calls if call.name in CHANGING]
    others = [call for call in disturbance.calls if call.name not in CHANGING]
    chosen = changing[::every] + others[:: SAMPLE * every]
    return [(f"killed at {c.name} {c.number} {c.line}", partial(problem_of_kill, disturbance, c)) for c in chosen]


if __name__ == "__main__":
    run_all(__doc__, "kills", kills)
