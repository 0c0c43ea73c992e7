#!/usr/bin/env python3
"""Uses `qrv` at random beside a model of a repository, and compares the two after every step.

Usage: random_walk.py PROGRAM [--steps N] [--seed N]. Without a seed it takes a new one. A step is an edit of the
working tree or a command. After it the working tree, the exit status, the branch, HEAD, the stage, the renamings, the
conflicts and the history are as the model says; at the end every commit gives back its files, and nothing is damaged.
On a difference it prints the seed and the last steps, and leaves the repository where it is.
"""

import argparse
import json
import os
import random
import shutil
import subprocess
import sys
import tempfile
from collections import Counter
from pathlib import Path

from repository_model import Commit, Model, Refused
from tree_changes import IGNORE_FILE, Changes
from working_tree import NAMES, RULES, WorkingTree

BRANCHES = ["master", "side", "try/größer"]
# Nothing here needs a disk.
MEMORY = "/dev/shm"


class Difference(Exception):
    """The program did something else than the model."""


def expectation_of(call):
    """The exit status that the model expects, and what it gives back."""
    try:
        return 0, call()
    except Refused:
        return 1, None


class Walk:
    def __init__(self, program, folder, seed):
        self.random = random.Random(seed)
        self.program = program
        self.folder = folder
        self.environment = {
            **os.environ,
            "QRV_CONFIG_DIR": str(folder / "configuration"),
            "QRV_AUTHOR": "walker",
            "LC_ALL": "C.UTF-8",
        }
        self.tree = WorkingTree(folder, self.random)
        self.model = Model()
        self.journal = []
        self.counts = Counter()

    def happens(self, probability):
        return self.random.random() < probability

    def run(self, *arguments):
        result = subprocess.run(
            [self.program, *map(os.fsencode, arguments)],
            cwd=self.tree.root,
            env=self.environment,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
        )
        self.journal.append(f"  {' '.join(map(repr, arguments))} -> {result.returncode} {result.stderr!r}")
        # A sanitizer may end the program with the status of a failed command.
        if b"Sanitizer" in result.stderr or b"runtime error: " in result.stderr:
            raise Difference("the program is wrong in itself")
        return result

    def document(self, *arguments):
        result = self.run(*arguments, "--json")
        if result.returncode != 0:
            raise Difference(f"status {result.returncode}")
        return json.loads(result.stdout)

    def expect(self, what, found, expected):
        if found != expected:
            raise Difference(f"{what}\n  found    {found!r}\n  expected {expected!r}")

    # Commands.

    def try_both(self, arguments, call):
        """Gives what the model gives."""
        expected, answer = expectation_of(call)
        self.expect("exit status", self.run(*arguments).returncode, expected)
        self.counts[f"{arguments[0]} {'done' if expected == 0 else 'refused'}"] += 1
        return answer

    def some_paths(self, candidates):
        candidates = sorted(candidates)
        chosen = self.random.sample(candidates, min(len(candidates), self.random.randint(1, 3)))
        # Sometimes the folder of a file stands for all that it holds.
        return [os.path.dirname(p) if self.happens(0.3) and p != IGNORE_FILE else p for p in chosen]

    def as_arguments(self, paths):
        return [path or "." for path in paths]

    def some_commit(self):
        return self.random.choice(sorted(self.model.commits))

    def forcing(self):
        return ["--force"] if self.happens(0.5) else []

    def add(self):
        changes = Changes(self.model).by_path
        if not changes or self.happens(0.3):
            return self.try_both(["add", "--all"], lambda: self.model.add([""], everything=True))
        paths = self.some_paths(changes)
        return self.try_both(["add", *self.as_arguments(paths)], lambda: self.model.add(paths))

    def unstage(self):
        if not self.model.staged or self.happens(0.2):
            return self.try_both(["unstage", "--all"], lambda: self.model.unstage([""], everything=True))
        paths = self.some_paths([path for path, _ in self.model.staged] + NAMES[:1])
        return self.try_both(["unstage", *self.as_arguments(paths)], lambda: self.model.unstage(paths))

    def message(self):
        """No two commits are the same."""
        return f"line {len(self.journal)}"

    def commit(self):
        message = self.message()
        commit = self.try_both(["commit", "-m", message], lambda: self.model.commit(message))
        if commit is not None:
            self.record(commit)

    def record(self, commit):
        number = self.document("status")["commit"]["number"]
        if number in self.model.commits:
            raise Difference(f"commit {number} for the second time")
        self.model.record(number, commit)

    def tidy(self):
        """A person who commits before going on gets further than one who does not."""
        if self.model.merging is None and self.happens(0.8):
            self.add()
            self.try_both(["add", "--all"], lambda: self.model.add([""], everything=True))
            self.commit()

    def switch(self):
        self.tidy()
        branch = self.random.choice(BRANCHES)
        if branch in self.model.branches and self.happens(0.95):
            return self.try_both(["switch", branch], lambda: self.model.switch(branch))
        start = self.some_commit() if self.happens(0.6) else None
        arguments = ["switch", "--create", branch, *([] if start is None else [f"#{start}"])]
        return self.try_both(arguments, lambda: self.model.switch(branch, create=True, start=start))

    def merge(self):
        self.tidy()
        branches = sorted(self.model.branches.items())
        known = self.model.ancestors(self.model.head_commit())
        ahead = [branch for branch in branches if branch[1] not in known]
        name, number = self.random.choice(ahead if ahead and self.happens(0.9) else branches)
        if self.happens(0.1):
            number = self.some_commit()
            name = f"#{number}"
        message = self.message()
        expected, answer = expectation_of(lambda: self.model.merge(number, message))
        # Open conflicts are no success, either.
        expected = 1 if answer == "conflicts" else expected
        self.expect("exit status", self.run("merge", name, "-m", message).returncode, expected)
        self.counts[f"merge {'clean' if isinstance(answer, Commit) else answer or 'refused'}"] += 1
        if isinstance(answer, Commit):
            self.record(answer)

    def abort(self):
        force = self.forcing()
        self.try_both(["merge", "--abort", *force], lambda: self.model.abort(bool(force)))

    def resolve(self):
        paths = [conflict.path for conflict in self.model.conflicts] or NAMES[:1]
        path, way, force = self.random.choice(paths), self.random.choice(["mine", "theirs", "merged"]), self.forcing()
        self.try_both(["resolve", path, f"--{way}", *force], lambda: self.model.resolve(path, way, bool(force)))

    def restore(self):
        number = self.some_commit() if self.happens(0.5) else None
        paths = self.some_paths(list(self.model.head if number is None else self.model.tree(number)) + NAMES[:1])
        force = self.forcing()
        arguments = ["restore", *self.as_arguments(paths), *force, *(["--from", str(number)] if number else [])]
        self.try_both(arguments, lambda: self.model.restore(paths, number, bool(force)))

    def tag(self):
        name = self.random.choice(["first", "v1.0"])
        if self.happens(0.5):
            return self.try_both(["tag", "--delete", name], lambda: self.model.delete_tag(name))
        return self.try_both(["tag", name], lambda: self.model.make_tag(name))

    def collect(self):
        """Changes nothing that can be seen."""
        self.try_both(["gc"], lambda: None)

    # Comparing.

    def compare_tree(self):
        files, links, _ = self.tree.look()
        for path in sorted(files.keys() | self.model.files.keys()):
            found, expected = files.get(path), self.model.files.get(path)
            self.expect(f"begin of {path!r}", found and found[:80], expected and expected[:80])
            self.expect(f"whole {path!r}", found == expected, True)
        self.expect("links", links, self.model.links)
        self.expect("outside is untouched", self.tree.is_outside_untouched(), True)

    def compare_status(self):
        found, model = self.document("status"), self.model
        changes = Changes(model)
        staged = model.staged_changes(changes)
        covered = {path for path, _ in staged} | {conflict.path for conflict in model.conflicts}
        rest = [(path, change) for path, change in sorted(changes.by_path.items()) if path not in covered]
        self.expect("branch", found["branch"], model.branch)
        self.expect("number", found.get("commit", {}).get("number"), model.head_commit())
        self.expect("merging", "merging" in found, model.merging is not None)
        self.expect("count of files", found["files"], len(changes.present))
        self.expect("staged", [(e["path"], e["change"]) for e in found["staged"]], staged)
        self.expect("unstaged", [(e["path"], e["change"]) for e in found["unstaged"]], rest)
        renames = [(e["path"], e["previousPath"]) for e in found["renames"]]
        self.expect("renames", renames, sorted(changes.renames.items()))
        conflicts = [(e["path"], e["local"], e["remote"]) for e in found["conflicts"]]
        self.expect("conflicts", conflicts, [(c.path, c.local, c.remote) for c in model.conflicts])

    def compare_state(self):
        state = json.loads(self.run("state").stdout)
        self.expect("HEAD", state["head"]["reference"], self.model.branch)
        staged = [(e["path"], e["file_change"]) for e in state.get("staged_files", [])]
        self.expect("noted stage", staged, self.model.staged)
        renames = {e["new"]: e["previous"] for e in state.get("renames", [])}
        self.expect("noted renames", renames, self.model.renames)

    def compare_history(self):
        entries = self.document("log")
        numbers = {entry["hash"]: entry["number"] for entry in entries}
        known = sorted(self.model.ancestors(self.model.head_commit()), reverse=True)
        self.expect("numbers", [entry["number"] for entry in entries], known)
        for entry in entries:
            commit = self.model.commits[entry["number"]]
            found = [numbers[parent] for parent in entry["parents"]], entry["message"]
            self.expect(f"commit {entry['number']}", found, (commit.parents, commit.message))
            names = sorted((r["type"], r["name"]) for r in entry["references"])
            self.expect("references", names, self.model.names_of(entry["number"]))

    def compare_commits(self):
        """Each commit gives back what was put into it."""
        for number, commit in sorted(self.model.commits.items()):
            target = self.folder / f"export-{number}"
            if commit.tree:
                self.expect("export", self.run("restore", ".", "--from", f"#{number}", "--to", str(target)).returncode, 0)
            found = {str(path.relative_to(target)): path.read_bytes() for path in target.rglob("*") if path.is_file()}
            # What belongs to the repository would make the folder pass for one.
            files = {path: version[0] for path, version in commit.tree.items() if not path.startswith(".qrv/")}
            self.expect(f"commit {number}", found, files)
            shutil.rmtree(target, ignore_errors=True)

    # The walk.

    def begin(self):
        self.tree.make()
        self.run("init")
        (self.tree.root / IGNORE_FILE).write_bytes(RULES[0])
        self.look_again()
        self.try_both(["add", "--all"], lambda: self.model.add([""], everything=True))
        self.commit()

    def look_again(self):
        self.model.files, self.model.links, self.model.folders = self.tree.look()

    def some_command(self):
        calm = [self.add] * 5 + [self.commit] * 4 + [self.unstage, self.resolve, self.abort, self.tag, self.collect]
        calm += [self.switch] * 5 + [self.merge] * 5 + [self.restore] * 3
        merging = [self.resolve] * 7 + [self.commit] * 3 + [self.add, self.abort, self.switch, self.merge, self.restore]
        self.random.choice(calm if self.model.merging is None else merging)()

    def step(self):
        self.look_again()
        if self.happens(0.4 if self.model.merging is None else 0.15):
            self.journal.append(f"  {self.tree.edit()}")
            self.look_again()
        else:
            self.some_command()
            self.compare_tree()
        # Looking notes what was seen, so that it is not always done.
        if self.happens(0.7):
            self.compare_status()
        if self.happens(0.3):
            self.compare_state()
        if self.happens(0.02):
            self.compare_history()
            self.expect("problems", self.document("verify")["problems"], [])

    def walk(self, steps):
        self.begin()
        for _ in range(steps):
            self.step()
        self.compare_status()
        self.compare_history()
        self.compare_commits()
        self.expect("problems", self.document("verify")["problems"], [])
        self.expect("a baseline was kept", (self.tree.root / ".qrv/baseline").exists(), True)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program", type=Path)
    parser.add_argument("--steps", type=int, default=2000)
    parser.add_argument("--seed", type=int, default=None)
    arguments = parser.parse_args()
    seed = random.SystemRandom().randrange(1 << 32) if arguments.seed is None else arguments.seed
    memory = MEMORY if os.access(MEMORY, os.W_OK) else None
    folder = Path(tempfile.mkdtemp(prefix="qrv-walk-", dir=memory)).resolve()
    walk = Walk(str(arguments.program.resolve()), folder, seed)
    try:
        walk.walk(arguments.steps)
    except Difference as difference:
        print("\n".join(walk.journal[-40:]))
        sys.exit(f"seed {seed}, in {folder}: {difference}")
    shutil.rmtree(folder)
    print(f"tried: {arguments.steps} steps of random walks")
    print(f"seed {seed}: {len(walk.model.commits)} commits, {dict(sorted(walk.counts.items()))}")


if __name__ == "__main__":
    main()
