"""Repositories in the middle of somebody's work, each with the command that is disturbed there.

A scenario's repository is made once and copied for every disturbance. It has two commits, drawings and other files in
several folders, names that are no words, a file that no commit knows, and one that the ignore rules hide.
"""

import hashlib
import json
import os
import random
import shutil
import sqlite3
import struct
import subprocess
import time
from collections import namedtuple
from pathlib import Path

from system_calls import Call, find_strace, injecting

DRAWING = random.Random(2).randbytes(60_000)
STRANGE = os.fsdecode(b"notes/sch\xe4den\n.txt")
FIRST = {
    "plans/ground floor.dwg": DRAWING,
    "plans/upper.dwg": DRAWING[:30_000],
    "plans/old/cellar.dwg": DRAWING[:20_000],
    "parts/list.csv": b"flange;3\n" * 2000,
    STRANGE: b"crack in the wall\n",
    "minutes.txt": b"first meeting\n",
    "swap": b"a file that becomes a folder\n",
}
ON_SIDE = {
    "plans/ground floor.dwg": DRAWING[:10_000] + b"other door" + DRAWING[10_000:],
    "plans/old/cellar.dwg": None,
    "parts/list.csv": b"flange;4\n" * 2000,
    "parts/new/bolts.csv": b"bolt;17\n",
    "plans/roof.dwg": DRAWING[5_000:],
    "swap": None,
    "swap/inside.txt": b"a folder that was a file\n",
}
ON_MASTER = {
    "minutes.txt": b"second meeting\n",
    "plans/upper.dwg": DRAWING[:25_000] + b"window" + DRAWING[25_000:30_000],
}
CONFLICTING = {**ON_MASTER, "parts/list.csv": b"flange;5\n" * 2000, "plans/ground floor.dwg": DRAWING[:50_000]}
UNSAVED = {"scratch.txt": b"not in any commit\n", "plans/old.bak": b"hidden by a rule\n"}

# A command is disturbed and later given again. It ends with `status`, and with one of `again` when it had done its
# work already. `is_halved` says that the files may be as after it and the rest as before.
Scenario = namedtuple("Scenario", "name folder arguments status again is_halved")


def digests_in_pack(pack):
    """Of all contents in a pack, which its last 72 bytes say where to find."""
    blocks_end, blocks, entries = struct.unpack("<QQQ", pack[-56:-32])
    rows = pack[blocks_end + 64 * blocks:][:44 * entries]
    return {rows[at:at + 32].hex() for at in range(0, len(rows), 44)}


class Repository:
    def __init__(self, program, folder):
        self.program = program
        self.folder = folder
        self.environment = {
            **os.environ,
            "QRV_CONFIG_DIR": str(folder.parent / "configuration"),
            "QRV_AUTHOR": "tester",
            "LC_ALL": "C.UTF-8",
            # The leak check of a sanitizer does not work under a tracer.
            "ASAN_OPTIONS": "detect_leaks=0",
        }

    def run(self, *arguments, tracer=()):
        result = subprocess.run(
            [*tracer, self.program, *arguments],
            cwd=self.folder,
            env=self.environment,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
        )
        # A sanitizer may end the program with the status of a failed command.
        if b"Sanitizer" in result.stderr or b"runtime error: " in result.stderr:
            raise RuntimeError(result.stderr.decode())
        return result

    def do(self, *arguments, status=0):
        result = self.run(*arguments)
        if result.returncode != status:
            raise RuntimeError(f"{arguments}: status {result.returncode}: {result.stderr.decode()}")
        return result.stdout

    def write(self, files):
        # Days old, so that what the program notes of them is trusted the next time.
        day = time.time() - 5 * 86400
        for number, (name, contents) in enumerate(files.items()):
            path = self.folder / name
            if contents is None:
                path.unlink(missing_ok=True)
                continue
            if path.parent.is_file():
                path.parent.unlink()
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(contents)
            os.utime(path, (day + number, day + number))

    def commit(self, message):
        self.do("add", "--all")
        self.do("commit", "-m", message)

    def copy(self, folder):
        shutil.copytree(self.folder, folder, symlinks=True)
        return Repository(self.program, folder)

    def files(self):
        """The working tree, with what the rules hide and whatever else lies there."""
        found = {}
        for path in self.folder.rglob("*"):
            name = str(path.relative_to(self.folder))
            # What was not finished there is no file of the project, and gc's after a day.
            is_kept = name.startswith(".qrv/properties/") and not name.endswith(".qrv-tmp")
            if path.is_file() and (not name.startswith(".qrv/") or is_kept):
                found[name] = path.read_bytes()
        return found

    def hashes(self):
        """The commits that the history has. What a killed process left is taken back on the way."""
        with sqlite3.connect(self.folder / ".qrv/qrv.db") as database:
            return {row[0] for row in database.execute("SELECT hash FROM commits")}

    def observe(self):
        """All that a person sees of the repository, without what differs from one day to the next."""
        status = json.loads(self.do("status", "--json"))
        log = json.loads(self.do("log", "--json")) if "commit" in status else []
        short = [(e["message"], len(e["parents"]), sorted(r["name"] for r in e["references"])) for e in log]
        seen = {key: status[key] for key in ("branch", "staged", "unstaged", "renames", "conflicts", "files")}
        tree = {name: digest_of(contents) for name, contents in self.files().items()}
        return {**seen, "merging": "merging" in status, "log": short, "tree": tree}

    def kept_contents(self):
        """The digests of all that is stored, also without a commit; `verify` says that it is whole."""
        digests = {path.name for path in (self.folder / ".qrv/objects").glob("*")}
        for pack in (self.folder / ".qrv/packs").glob("*.pack"):
            digests |= digests_in_pack(pack.read_bytes())
        for store in (self.folder / ".qrv/tf").glob("*.tf"):
            with sqlite3.connect(store) as database:
                digests |= {row[0].hex() for row in database.execute("SELECT digest FROM frames")}
        return digests

    def contents_of_commits(self):
        """The digests of everything that commits of any branch name, read back."""
        digests = set()
        target = self.folder.with_name(self.folder.name + "-export")
        for name in self.hashes():
            self.do("restore", ".", "--from", name, "--to", str(target))
            digests |= {digest_of(path.read_bytes()) for path in target.rglob("*") if path.is_file()}
            shutil.rmtree(target)
        return digests


def digest_of(contents):
    return hashlib.sha256(contents).hexdigest()


def begin(program, folder, on_master):
    """Both branches go on from the first commit; `on_master` is what the current one did."""
    folder.mkdir(parents=True)
    repository = Repository(program, folder)
    repository.do("init", "--name", "Anbau")
    repository.write(FIRST)
    repository.commit("first")
    repository.do("switch", "--create", "side")
    repository.write(ON_SIDE)
    repository.commit("on the side")
    repository.do("switch", "master")
    if on_master:
        repository.write(on_master)
        repository.commit("on master")
    repository.write(FIRST | on_master)
    repository.write(UNSAVED)
    repository.do("status")
    return repository


def many(count):
    return {f"many/{number:02}.txt": f"file {number}\n".encode() for number in range(count)}


def make_scenarios(program, folder, only=""):
    """All, or the one with the name `only`."""
    made = []

    def scenario(name, on_master, prepare, arguments, status=0, again=(0,), is_halved=False):
        if only not in ("", name):
            return
        repository = begin(program, folder / name / "root", on_master)
        prepare(repository)
        made.append(Scenario(name, repository.folder, arguments, status, again, is_halved))

    def edit(repository):
        repository.write(CONFLICTING)
        repository.write({"plans/roof.dwg": DRAWING[7_000:], "swap": None})

    def stage(repository):
        edit(repository)
        repository.do("add", "--all")

    def stage_many(repository):
        repository.write(many(20))
        repository.do("add", "--all")

    def conflict(repository):
        repository.do("merge", "side", status=1)

    def interrupt(repository):
        """Kills a switch between two of its files."""
        tracer = injecting(find_strace(), Call("renameat2", 6, ""), "signal=KILL")
        result = repository.run("switch", "side", tracer=tracer)
        if result.returncode != -9:
            raise RuntimeError(f"the switch was not killed, but ended with {result.returncode}")

    def pack(repository):
        """Each version in a pack of its own, as a difference from the one before; gc turns that round."""
        for number in range(4):
            repository.write({"parts/list.csv": b"flange;6\n" * 2000 + b"%i\n" % number,
                              "plans/roof.dwg": DRAWING + b"sheet %i" % number})
            repository.commit(f"newer list {number}")

    def age(repository):
        """Only beside files that are not quite new a look leaves anything but a newer state."""
        edit(repository)
        minute = time.time() - 60
        for name in (".qrv/properties/ignore", ".qrv/properties/project_name"):
            os.utime(repository.folder / name, (minute, minute))
        repository.do("add", "--all")

    scenario("add", {}, edit, ["add", "--all"])
    scenario("commit", {}, stage, ["commit", "-m", "work"], again=(1,))
    scenario("commit-of-many", {}, stage_many, ["commit", "-m", "work"], again=(1,))
    scenario("switch", ON_MASTER, lambda _: None, ["switch", "side"])
    scenario("clean-merge", ON_MASTER, lambda _: None, ["merge", "side"])
    scenario("merge-forward", {}, lambda _: None, ["merge", "side"])
    scenario("merge-with-conflicts", CONFLICTING, lambda _: None, ["merge", "side"], status=1, again=(1,))
    scenario("resolve", CONFLICTING, conflict, ["resolve", "parts/list.csv", "--theirs"], again=(1,), is_halved=True)
    scenario("abort", CONFLICTING, conflict, ["merge", "--abort"], again=(1,))
    scenario("recovery", ON_MASTER, interrupt, ["recover"])
    scenario("restore", {}, edit, ["restore", ".", "--force"])
    scenario("gc", CONFLICTING, pack, ["gc"])
    scenario("status", ON_MASTER, age, ["status"])
    scenario("unstage", {}, stage, ["unstage", "--all"])
    scenario("branch", ON_MASTER, lambda _: None, ["branch", "third"], again=(1,))
    scenario("tag", ON_MASTER, lambda _: None, ["tag", "v1"], again=(1,))
    scenario("ignore", ON_MASTER, lambda _: None, ["ignore", "add", "*.tmp"], again=(1,))
    scenario("name", ON_MASTER, lambda _: None, ["name", "Neubau"])
    return made
