"""A working tree on the disk, and a person who edits it at random."""

import contextlib
import os
import random
import shutil
import time
from pathlib import Path

from tree_changes import IGNORE_FILE

NAMES = [
    "a.txt",
    "A.TXT",
    "b.txt",
    "plans",
    "plans/ground floor.dwg",
    "plans/upper.dwg",
    "plans/old/cellar.dwg",
    "plans/old/list.csv",
    "site.dwg",
    "notes/Übergabe Mai/minutes.txt",
    "notes/line\nfeed.txt",
    os.fsdecode(b"sch\xe4den.txt"),
    "c.tmp",
    "plans/d.tmp",
    "plans/e.bak",
    "n" * 251 + ".txt",
]
RULES = [b"*.bak\n", b"*.bak\n*.tmp\n"]
LARGE = random.Random(1).randbytes(9000)
CONTENTS = [b"", b"one\n", b"two\n", b"six\n", b"longer than that\n", LARGE, LARGE[:4000] + b"edited" + LARGE[4000:]]
NS_PER_SECOND = 1_000_000_000
NS_PER_DAY = 86400 * NS_PER_SECOND


class WorkingTree:
    """Each edit gives a line for the journal."""

    def __init__(self, folder, chance):
        self.root = folder / "root"
        self.outside = folder / "outside"
        self.random = chance
        self.times = time.time_ns() - 10 * NS_PER_DAY

    def make(self):
        self.root.mkdir()
        self.outside.mkdir()
        (self.outside / "file").write_bytes(b"outside")
        (self.outside / "upper.dwg").write_bytes(b"outside too")

    def is_outside_untouched(self):
        contents = {path.name: path.read_bytes() for path in self.outside.iterdir()}
        return contents == {"file": b"outside", "upper.dwg": b"outside too"}

    def look(self):
        """Files with their contents, links, and folders: everything but the metadata."""
        files, links, folders = {}, set(), {".qrv", ".qrv/properties"}
        waiting = [""]
        while waiting:
            above = waiting.pop()
            for entry in os.scandir(self.root / above):
                path = above + entry.name
                if entry.is_symlink():
                    links.add(path)
                elif not entry.is_dir():
                    files[path] = Path(entry.path).read_bytes()
                elif path != ".qrv":
                    folders.add(path)
                    waiting.append(path + "/")
        for path in (self.root / ".qrv/properties").iterdir():
            files[".qrv/properties/" + path.name] = path.read_bytes()
        return files, links, folders

    # What the edits are made of.

    def make_room(self, path):
        for folder in [*reversed(path.parents), path]:
            if folder.is_symlink() or (folder.exists() and not folder.is_dir()):
                folder.unlink()
        if path.is_dir():
            shutil.rmtree(path)
        path.parent.mkdir(parents=True, exist_ok=True)

    def put_into_the_past(self, path):
        """So that the program may trust what it noted of it. No two of these times are the same."""
        self.times += NS_PER_SECOND
        os.utime(path, ns=(self.times, self.times))

    def prune(self, path):
        with contextlib.suppress(OSError):
            for folder in path.parents:
                if folder != self.root:
                    folder.rmdir()

    def some_file(self):
        """Never the ignore file, without which the program falls back to rules of its own."""
        files = sorted(path for path in self.look()[0] if path != IGNORE_FILE)
        return self.root / self.random.choice(files) if files else None

    # Edits.

    def edit(self):
        edits = [self.write] * 20 + [self.remove] * 6 + [self.rename] * 6 + [self.unlink] * 3
        edits += [self.link, self.make_folder, self.age, self.age, self.change_rules]
        return self.random.choice(edits)()

    def some_name(self):
        """A file in place of a folder is rare, or the files of the folder would be."""
        name = self.random.choice(NAMES)
        return self.random.choice(NAMES) if name == "plans" else name

    def write(self):
        path = self.root / self.some_name()
        self.make_room(path)
        path.write_bytes(self.random.choice(CONTENTS))
        if self.random.random() < 0.8:
            self.put_into_the_past(path)
        return f"write {path}"

    def remove(self):
        path = self.some_file()
        if path is not None:
            path.unlink()
            self.prune(path)
        return f"remove {path}"

    def rename(self):
        path, target = self.some_file(), self.root / self.some_name()
        if path is None or target == path or path in target.parents or target in path.parents:
            return "nothing"
        self.make_room(target)
        path.rename(target)
        self.prune(path)
        return f"rename {path} to {target}"

    def link(self):
        name = self.random.choice(NAMES[:6])
        self.make_room(self.root / name)
        (self.root / name).symlink_to(self.outside / ("" if name == "plans" else "file"))
        return f"link {name}"

    def unlink(self):
        links = sorted(self.look()[1])
        if not links:
            return "nothing"
        path = self.root / self.random.choice(links)
        path.unlink()
        self.prune(path)
        return f"unlink {path}"

    def make_folder(self):
        path = self.root / self.random.choice(NAMES)
        if any(above.is_symlink() or above.is_file() for above in [path, *path.parents]):
            return "nothing"
        path.mkdir(parents=True, exist_ok=True)
        return f"folder {path}"

    def age(self):
        for name in self.look()[0]:
            self.put_into_the_past(self.root / name)
        return "everything is old"

    def change_rules(self):
        (self.root / IGNORE_FILE).write_bytes(self.random.choice(RULES))
        self.put_into_the_past(self.root / IGNORE_FILE)
        return "other rules"
