"""The two programs that are compared, with the same verbs. Each has a working tree of its own."""

import os
import shutil

import measure


def environment(folder):
    names = {"QRV_CONFIG_DIR": str(folder / "configuration"), "QRV_AUTHOR": "bench", "LC_ALL": "C.UTF-8",
             "GIT_CONFIG_GLOBAL": "/dev/null", "GIT_CONFIG_NOSYSTEM": "1", "GIT_AUTHOR_NAME": "bench",
             "GIT_AUTHOR_EMAIL": "b@b", "GIT_COMMITTER_NAME": "bench", "GIT_COMMITTER_EMAIL": "b@b"}
    return {**os.environ, **names}


class Side:
    metadata = ""

    def __init__(self, top, name, program):
        self.name = name
        self.tree = top / name
        self.tree.mkdir()
        self.program = [str(word) for word in program]
        self.environment = environment(top)

    def run(self, *arguments, expected=(0,)):
        return measure.cost_of([*self.program, *map(str, arguments)], self.tree, self.environment, expected)

    def version(self):
        return self.run("--version")

    def init(self):
        return self.run("init")

    def forget(self):
        """Makes a plain folder of the repository again."""
        shutil.rmtree(self.tree / self.metadata)

    def kept_mebibytes(self):
        return measure.allocated_mebibytes(self.tree / self.metadata)

    def add_all(self):
        return self.run("add", "--all")

    def add(self, path):
        return self.run("add", path)

    def commit(self):
        return self.run("commit", "-m", "change")

    def switch(self, branch):
        return self.run("switch", branch)


class Ours(Side):
    metadata = ".qrv"

    def __init__(self, top, program):
        super().__init__(top, "qrv", [program])

    def status(self):
        return self.run("status")

    def begin_branch(self, branch):
        return self.run("switch", "--create", branch)

    def merge(self, branch, expected=(0,)):
        return self.run("merge", branch, expected=expected)

    def abandon_merge(self):
        return self.run("merge", "--abort")

    def verify(self):
        return self.run("verify")

    def gc(self):
        return self.run("gc")

    def log(self, *arguments):
        return self.run("log", *arguments)


class Git(Side):
    """Without its optional flushes, and without tidying up in the background."""

    metadata = ".git"
    settings = ("-c", "gc.auto=0", "-c", "core.fsync=none", "-c", "init.defaultBranch=master",
                "-c", "advice.detachedHead=false", "-c", "merge.renameLimit=0")

    def __init__(self, top):
        super().__init__(top, "git", ["git", *self.settings])

    def status(self):
        return self.run("status", "--untracked-files=all")

    def begin_branch(self, branch):
        return self.run("switch", "--quiet", "--create", branch)

    def switch(self, branch):
        return self.run("switch", "--quiet", branch)

    def commit(self):
        return self.run("commit", "--quiet", "-m", "change")

    def merge(self, branch, expected=(0,)):
        return self.run("merge", "--quiet", "--no-edit", branch, expected=expected)

    def abandon_merge(self):
        return self.run("merge", "--abort")

    def verify(self):
        return self.run("fsck", "--no-progress")

    def gc(self):
        return self.run("gc", "--quiet")

    def log(self, *arguments):
        return self.run("log", *arguments)
