#!/usr/bin/env python3
"""Makes each system call by which `qrv` learns something fail once, and looks at what the program makes of it.

Usage: fail_questions.py PROGRAM [--only SCENARIO] [--every N]. "I could not look" is no answer: either the
command has the very result that it has without the failure, in what it prints and in what it leaves, or it ends with
status 1, says why, and the repository is as before or as it was to be.

Left out are the calls of the loader and the look-ups of translations and settings of the locale, all of which come
before the program first asks for a folder ".qrv", and memory that cannot be had (mmap, brk).
"""

import re
import shutil
from collections import Counter, namedtuple
from functools import partial

from disturbance import run_all, text_of
from scenarios import make_scenarios
from system_calls import CHANGING, OTHER, Call, available, injecting

CAUSES = ("EIO", "ESTALE", "EACCES", "EMFILE", "ENOSPC", "EDQUOT", "ENOMEM")
# Closing teaches nothing.
ASKING = sorted({*OTHER, "statx", "fstat", "fstatfs", "access", "faccessat", "faccessat2", "readlink", "readlinkat",
                 "getcwd"} - {"close"})
# Commands that are tried where the scenario "status" is. Each ends with the status.
THERE = {
    "log": (["log"], 0),
    "show": (["show"], 0),
    "diff": (["diff"], 0),
    "diff-names": (["diff", "--names", "--path", "parts"], 0),
    "verify": (["verify"], 0),
    "files": (["files"], 0),
    "branch": (["branch"], 0),
    "tag": (["tag", "kept"], 0),
    "unstage": (["unstage", "--all"], 0),
    "ignore": (["ignore", "check", "plans/old.bak"], 0),
    "add-path": (["add", "plans"], 0),
    "export": (["restore", "plans", "--from", "1", "--to", "../exported", "--force"], 0),
}
# Whether these can be given twice is of no interest here.
ONCE = ("tag", "export")
# What it is about, when it can be met by nothing else: its number is also that of a call of the loader.
Question = namedtuple("Question", "call path")
# What a call is about: a path, or an open file.
SUBJECT = re.compile(r'\((?:AT_FDCWD<[^>]*>, "([^"]*)"|\d+<([^>]*)>)')


def questions(disturbance):
    """The calls of all threads, each once, from where the first one finds the repository; and what is printed. Which
    thread asks for which file is left to chance: some calls are met in other places, or not at all."""
    whole = disturbance.repository.copy(disturbance.scenario.folder.with_name("questions"))
    log = whole.folder.with_name("questions-trace")
    names = available(disturbance.strace, ASKING)
    tracer = [disturbance.strace, "-f", "-qq", "-y", "-s", "200", "-e", f"trace={','.join(names)}", "-o", str(log)]
    result = whole.run(*disturbance.scenario.arguments, tracer=tracer)
    counts, found, first, has_begun, by_loader = Counter(), {}, None, False, Counter()
    for line in log.read_text(errors="replace").splitlines():
        match = re.match(r"(\d+) +(\w+)\(", line)
        if not match:
            continue
        thread, name = match.groups()
        first = first or thread
        counts[thread, name] += 1
        has_begun = has_begun or ".qrv" in line
        number, text = counts[thread, name], line.split(" ", 1)[1]
        if not has_begun:
            by_loader[name] += 1
        elif number > by_loader[name]:
            found.setdefault((name, number), Question(Call(name, number, text), None))
        elif subject := SUBJECT.search(text):
            path = subject.group(1) or subject.group(2)
            found.setdefault((name, path), Question(Call(name, 1, text), path))
    shutil.rmtree(whole.folder)
    shutil.rmtree(whole.folder.with_name("exported"), ignore_errors=True)
    return list(found.values()), result.stdout


def problem_left(disturbance, repository, allowed):
    seen, problem = disturbance.damage(repository, allowed)
    if problem or disturbance.scenario.name in ONCE:
        return problem
    return disturbance.problem_again(repository, seen != disturbance.after)


def problem_of(disturbance, printed, question, cause):
    call, path = question
    status = disturbance.scenario.status

    def judge(repository, failed):
        told = text_of(failed.stderr)
        is_done = failed.returncode == status and failed.stdout == printed
        if failed.returncode == status == 0 and not is_done:
            return f"it ends with 0 and prints: {text_of(failed.stdout)}{told}"
        if not is_done and (failed.returncode != 1 or "qrv: " not in told):
            return f"it ends with {failed.returncode}: {told}"
        return problem_left(disturbance, repository, (disturbance.after,) if is_done else disturbance.allowed)

    tracer, label = injecting(disturbance.strace, call, f"error={cause}"), f"{call.name}-{call.number}-{cause}"
    if path:
        label = f"{call.name}-{abs(hash(path))}-{cause}"
        tracer += ["-P", path.replace("/questions", f"/{label}")]
    return disturbance.problem_at(label, tracer, judge)


def scenarios_of(program, folder, only):
    if only in THERE:
        arguments, status = THERE[only]
        return [s._replace(name=only, arguments=arguments, status=status, again=(0, 1))
                for s in make_scenarios(program, folder, "status")]
    return make_scenarios(program, folder, only)


def failing_questions(disturbance, every):
    asked, printed = questions(disturbance)
    pairs = [(question, cause) for question in asked for cause in CAUSES][::every]
    return [(f"{cause} at {q.call.name} {q.call.number} {q.call.line}", partial(problem_of, disturbance, printed, q, cause))
            for q, cause in pairs]


if __name__ == "__main__":
    run_all(__doc__, "failing questions", failing_questions, scenarios_of, ("", *THERE))
