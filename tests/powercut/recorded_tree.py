"""A tree of files and folders that are known by a number, and the steps by which it changes."""

import os
from collections import namedtuple
from pathlib import Path

# Steps. What they change is on the disk for sure only after a Flush that covers it.
# `changes` are of the form Change; they happen at once or not at all.
Entries = namedtuple("Entries", "changes timeNs")
Write = namedtuple("Write", "file offset contents timeNs")
Resize = namedtuple("Resize", "file size timeNs")
# Of a file, a folder, or of everything (None).
Flush = namedtuple("Flush", "what path")

# What the name means in the folder before and after: the number of a file or folder, or nothing.
Change = namedtuple("Change", "folder name before after")

FOLDER_MODE = 0o40000
ROOT = 0


class Node:
    def __init__(self, mode, modified_ns=0, contents=b""):
        self.mode = mode
        self.modified_ns = modified_ns
        self.contents = bytearray(contents)
        self.entries = {} if mode & FOLDER_MODE else None

    @property
    def is_folder(self):
        return self.entries is not None


def load(folder):
    """The nodes of a folder, by number; 0 is the folder itself."""
    nodes = {ROOT: Node(FOLDER_MODE | (folder.stat().st_mode & 0o7777))}
    waiting, known = [(ROOT, folder)], {}
    while waiting:
        number, path = waiting.pop()
        for entry in sorted(os.scandir(path), key=lambda e: e.name):
            status = entry.stat(follow_symlinks=False)
            if entry.is_symlink():
                raise ValueError(f"{entry.path} is a link")
            child = known.setdefault(status.st_ino, len(nodes))
            nodes[number].entries[entry.name] = child
            if child in nodes:
                continue
            if entry.is_dir():
                nodes[child] = Node(FOLDER_MODE | (status.st_mode & 0o7777))
                waiting.append((child, Path(entry.path)))
            else:
                contents = Path(entry.path).read_bytes()
                nodes[child] = Node(status.st_mode & 0o7777, status.st_mtime_ns, contents)
    return nodes


def paths_of(nodes):
    """From paths to numbers, folders included."""
    found, waiting = {}, [("", ROOT)]
    while waiting:
        prefix, number = waiting.pop()
        for name, child in nodes[number].entries.items():
            found[prefix + name] = child
            if nodes[child].is_folder:
                waiting.append((prefix + name + "/", child))
    return found


def change_entry(entries, change):
    if change.after is None:
        entries.pop(change.name, None)
    else:
        entries[change.name] = change.after


def written(contents, offset, more):
    """The contents after a write, in place."""
    if len(contents) < offset:
        contents.extend(bytes(offset - len(contents)))
    contents[offset : offset + len(more)] = more


def resized(contents, size):
    del contents[size:]
    contents.extend(bytes(size - len(contents)))


class RecordedTree:
    """The tree of a folder, which notes each step."""

    def __init__(self, folder):
        self.folder = os.fsencode(folder)
        self.nodes = load(folder)
        self.steps = []

    def differences(self):
        """Where the tree of the recorder is not that of the disk."""
        real = load(Path(os.fsdecode(self.folder)))
        here, there = paths_of(self.nodes), paths_of(real)
        return [
            path
            for path in sorted(here.keys() | there.keys())
            if path not in here
            or path not in there
            or self.nodes[here[path]].mode != real[there[path]].mode
            or self.nodes[here[path]].contents != real[there[path]].contents
        ]

    def step_into(self, folder, name):
        if name == "..":
            return next((n for n, node in self.nodes.items() if node.is_folder and folder in node.entries.values()), None)
        child = self.nodes[folder].entries.get(name)
        return child if child is not None and self.nodes[child].is_folder else None

    def number_at(self, place):
        if place is None:
            return None
        folder, name = place
        return self.nodes[folder].entries.get(name) if name not in ("", "..") else folder if not name else None

    def path_of(self, number):
        return next((path for path, child in paths_of(self.nodes).items() if child == number), "")

    def change_entries(self, places, time_ns):
        """`places` are folders and names with what they mean from now on."""
        changes = [Change(folder, name, self.nodes[folder].entries.get(name), after) for folder, name, after in places]
        for change in changes:
            change_entry(self.nodes[change.folder].entries, change)
        self.steps.append(Entries(tuple(changes), time_ns))

    def write(self, number, offset, contents, time_ns):
        node = self.nodes[number]
        written(node.contents, offset, contents)
        node.modified_ns = time_ns
        self.steps.append(Write(number, offset, bytes(contents), time_ns))

    def resize(self, number, size, time_ns):
        node = self.nodes[number]
        if len(node.contents) == size:
            return
        resized(node.contents, size)
        node.modified_ns = time_ns
        self.steps.append(Resize(number, size, time_ns))

    def make(self, place, mode, time_ns):
        number = len(self.nodes)
        self.nodes[number] = Node(mode, time_ns)
        self.change_entries([(*place, number)], time_ns)
        return number
