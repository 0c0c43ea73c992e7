"""A scenario whose command is disturbed at one system call after the other, and the judgement of what is left."""

import argparse
import os
import shutil
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from scenarios import Repository, digest_of, make_scenarios
from system_calls import CHANGING, OTHER, available, calls_of, find_strace

# Here a flush takes no time, and no test of ours can cut the power anyway.
MEMORY = "/dev/shm"


def differences(seen, expected):
    """By key, and by path within the working tree."""
    pairs = {key: (seen[key], expected[key]) for key in expected if key != "tree"}
    paths = seen["tree"].keys() | expected["tree"].keys()
    pairs |= {path: (seen["tree"].get(path, "-")[:8], expected["tree"].get(path, "-")[:8]) for path in paths}
    return {key: pair for key, pair in pairs.items() if pair[0] != pair[1]}


def text_of(printed):
    return printed.decode(errors="replace")


class Disturbance:
    def __init__(self, program, strace, names, scenario):
        self.strace = strace
        self.scenario = scenario
        self.repository = Repository(program, scenario.folder)
        original = self.repository.copy(scenario.folder.with_name("before"))
        self.before = original.observe()
        self.hashes = original.hashes()
        self.contents = set(self.before["tree"].values()) | original.contents_of_commits()
        whole = self.repository.copy(scenario.folder.with_name("whole"))
        result, self.calls, self.by_chance = calls_of(strace, whole, scenario.arguments, names)
        if result.returncode != scenario.status:
            sys.exit(f"{scenario.name} ends with {result.returncode}: {result.stderr.decode()}")
        self.after = whole.observe()
        halfway = {**self.before, **{key: self.after[key] for key in ("tree", "files")}}
        self.allowed = [self.before, self.after, *([halfway] if scenario.is_halved else [])]

    def problem_at(self, label, tracer, judge):
        """Runs the command under the tracer in a copy; `judge` says what is wrong then, or nothing."""
        arguments = self.scenario.arguments
        return self.problem_in_copy(label, lambda copy: judge(copy, copy.run(*arguments, tracer=tracer)))

    def problem_in_copy(self, label, judge):
        repository = self.repository.copy(self.scenario.folder.with_name(label))
        try:
            return judge(repository)
        except RuntimeError as error:
            # It was a call of the sanitizer's own, which takes a failure amiss.
            was_its_own = self.by_chance and "CHECK failed: sanitizer_posix" in str(error)
            return None if was_its_own else str(error)
        finally:
            shutil.rmtree(repository.folder)

    def damage(self, repository, allowed):
        """What a person sees of a repository, and what is wrong with it when it is to be as one of `allowed`."""
        # Verified first: a look shows what a killed command left half done as it is.
        for command in ("verify", "recover"):
            result = repository.run(command)
            if result.returncode != 0:
                return None, f"{command} fails: {text_of(result.stdout)}{text_of(result.stderr)}"
        seen = repository.observe()
        if seen not in allowed:
            others = (str(differences(seen, a)) for a in allowed)
            return seen, "\n   differs: ".join(["the repository is none of:", *others])
        return seen, None if self.hashes <= repository.hashes() else "commits are lost"

    def problem_left(self, repository, allowed):
        """What is wrong with a repository that is to be as one of `allowed`, and with going on from there."""
        seen, problem = self.damage(repository, allowed)
        if problem:
            return problem
        left = set(seen["tree"].values()) | repository.contents_of_commits() | repository.kept_contents()
        if not self.contents <= left:
            return "contents are lost"
        return self.problem_again(repository, seen != self.after)

    def problem_again(self, repository, is_first):
        """What is wrong with the command when it is given once more."""
        again = repository.run(*self.scenario.arguments)
        allowed = (self.scenario.status,) if is_first else self.scenario.again
        if again.returncode not in allowed:
            return f"the command, given again, ends with {again.returncode}: {again.stderr.decode()}"
        seen = repository.observe()
        if seen != self.after:
            return f"the command, given again, differs: {differences(seen, self.after)}"
        return None


def run_all(description, what, tasks_of, scenarios_of=make_scenarios, names=("",)):
    """Does the tasks of every scenario. `tasks_of` gives, for a Disturbance and one call in so many, pairs of a text
    and a function that gives a problem or None. `what` they are is counted. `names` are those of the scenarios, where
    `scenarios_of` does not make all of them at once. Ends the program."""
    parser = argparse.ArgumentParser(description=description.splitlines()[0])
    parser.add_argument("program", type=Path)
    parser.add_argument("--only", default="", help="the name of the only scenario")
    parser.add_argument("--every", type=int, default=1, help="take only each N-th disturbance")
    arguments = parser.parse_args()
    strace = find_strace()
    calls = available(strace, CHANGING + OTHER)
    program = str(arguments.program.resolve())
    problems, count = [], 0
    for only in [arguments.only] if arguments.only else names:
        with tempfile.TemporaryDirectory(prefix="qrv-crash-", dir=MEMORY if os.access(MEMORY, os.W_OK) else None) as folder:
            for scenario in scenarios_of(program, Path(folder).resolve(), only):
                tasks = tasks_of(Disturbance(program, strace, calls, scenario), arguments.every)
                wrong = wrong_of(scenario, tasks)
                print(f"{scenario.name}: {len(tasks)} disturbances, {len(wrong)} problems", flush=True)
                problems += wrong
                count += len(tasks)
    print(f"tried: {count} {what}", flush=True)
    if count == 0:
        problems.append("nothing was disturbed")
    sys.exit("\n".join(problems) or 0)


def wrong_of(scenario, tasks):
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        found = list(pool.map(lambda task: task[1](), tasks))
    return [f"{scenario.name}: {text[:160]}:\n   {problem}" for (text, _), problem in zip(tasks, found) if problem]
