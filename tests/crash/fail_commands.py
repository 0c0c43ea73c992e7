#!/usr/bin/env python3
"""Makes each system call of `qrv` that changes anything fail once, and looks at what the program does then.

Usage: fail_commands.py PROGRAM [--only SCENARIO] [--every N]. Either the command does its work all the same, or it ends
with status 1 and names the cause, and the repository is as before or, when only something after the work failed, as it
was to be. No contents are lost, and the next try has its result.
"""

from functools import partial

from disturbance import run_all
from system_calls import CHANGING, injecting

# Each with the words of the system or of SQLite by which a person recognises it.
SQLITE = ("disk I/O error", "unable to open database file")
CAUSES = {
    "ENOSPC": ("No space left on device", "full", *SQLITE),
    "EIO": ("Input/output error", *SQLITE),
    "EACCES": ("Permission denied", "readonly database", *SQLITE),
    "ESTALE": ("Stale file handle", *SQLITE),
    "EDQUOT": ("Disk quota exceeded", *SQLITE),
    "EMFILE": ("Too many open files", *SQLITE),
    "ENOMEM": ("Cannot allocate memory", "not enough memory", *SQLITE),
}
# The library does not say why the state or the rules could not be written; a folder that could not be removed is met later.
WITHOUT_CAUSE = ("Error writing to file", "The ignore file", "Is a directory")


def problem_of_failure(disturbance, call, cause):
    def judge(repository, failed):
        messages = failed.stderr.decode()
        is_told = messages.startswith("qrv: ") and any(w in messages for w in CAUSES[cause] + WITHOUT_CAUSE)
        # The work is done; what it left beside the history for a later rescue is done with the next change.
        is_note = messages.startswith("qrv: Note: the next command that changes something records this")
        if failed.returncode == disturbance.scenario.status and (is_note or not is_told):
            return disturbance.problem_left(repository, (disturbance.after,))
        if failed.returncode != 1 or not is_told:
            return f"it ends with {failed.returncode}: {messages}"
        return disturbance.problem_left(repository, disturbance.allowed)

    tracer = injecting(disturbance.strace, call, f"error={cause}")
    return disturbance.problem_at(f"{call.name}-{call.number}-{cause}", tracer, judge)


def failures(disturbance, every):
    # Whoever cannot read the messages is told nothing.
    chosen = [call for call in disturbance.calls if call.name in CHANGING and not call.line.startswith("write(2<")]
    pairs = [(call, cause) for call in chosen for cause in CAUSES][::every]
    return [(f"{e} at {c.name} {c.number} {c.line}", partial(problem_of_failure, disturbance, c, e)) for c, e in pairs]


if __name__ == "__main__":
    run_all(__doc__, "failing calls", failures)
