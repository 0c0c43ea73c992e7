"""How a disk may look after the power was cut at some moment of a recording.

What was flushed is there. Of the rest, any part may be: contents not at all, as zeros up to their size, or block by
block; entries of folders in the old or in the new way. Some order stays, as every sane file system keeps it: changes of
one name take place in turn; a folder goes after what was in it, and takes nothing along that had been moved out of it
before; what is moved to another folder is not lost with it.
"""

import hashlib
import os
from collections import defaultdict, namedtuple
from functools import cache

from recorded_tree import FOLDER_MODE, ROOT, Entries, Flush, Write, change_entry, resized, written

BLOCK_BYTES = 4096

# What is left of steps that were not flushed: the numbers of those of which all is there; of writes of which some blocks
# are, each with a source of chance; and whether of the other writes the size is there, with zeros.
Remains = namedtuple("Remains", "chosen torn zeroed")


class Disk:
    def __init__(self, before, steps, after):
        self.before = before
        self.steps = steps
        # For permissions and times, which are taken as they are at last.
        self.after = after
        self.steps_of = defaultdict(list)
        for number, step in enumerate(steps):
            if not isinstance(step, (Entries, Flush)):
                self.steps_of[step.file].append(number)
        # Most contents are the same in most states.
        self.known_contents = {}
        self.needs = cache(self.needs)

    def pending(self, count):
        """The numbers of the first `count` steps that are not on the disk for sure."""
        waiting = []
        for number, step in enumerate(self.steps[:count]):
            if not isinstance(step, Flush):
                waiting.append(number)
            elif step.what is None:
                waiting = []
            else:
                done = self.with_needed({n for n in waiting if self.touches(self.steps[n], step.what)}, waiting)
                waiting = [n for n in waiting if n not in done]
        return waiting

    @staticmethod
    def touches(step, what):
        if isinstance(step, Entries):
            return any(change.folder == what for change in step.changes)
        return step.file == what

    def with_needed(self, numbers, waiting):
        """These steps, and those of the waiting ones without which they cannot be."""
        chosen = set(numbers)
        for number in reversed(waiting):
            if number not in chosen and any(self.needs(n, number) for n in chosen if n > number):
                chosen.add(number)
        return chosen

    def without(self, number, waiting):
        """The waiting steps but for this one and those that cannot be without it."""
        dropped = {number}
        for later in waiting:
            if any(self.needs(later, n) for n in dropped if n < later):
                dropped.add(later)
        return set(waiting) - dropped

    def needs(self, later, earlier):
        """Whether the one step cannot be on the disk without the other."""
        one, other = self.steps[later], self.steps[earlier]
        if not isinstance(one, Entries) or not isinstance(other, Entries):
            return False
        names = {(change.folder, change.name) for change in one.changes}
        if any((change.folder, change.name) in names for change in other.changes):
            return True
        folders = {change.folder for change in one.changes}
        is_move = len(folders) > 1
        removed = set() if len(one.changes) > 1 else {c.before for c in one.changes if c.after is None}
        return any(c.folder in removed or (is_move and c.after in folders) for c in other.changes)

    def tree(self, count, remains):
        """From paths to (permissions, time, contents), contents being None for a folder, after the cut."""
        waiting = set(self.pending(count))
        entries = {n: dict(node.entries) for n, node in self.before.items() if node.is_folder}
        for number, step in enumerate(self.steps[:count]):
            if isinstance(step, Entries) and (number not in waiting or number in remains.chosen):
                for change in step.changes:
                    change_entry(entries.setdefault(change.folder, {}), change)
        found, folders = {}, [("", ROOT)]
        while folders:
            prefix, folder = folders.pop()
            for name, child in entries.get(folder, {}).items():
                node = self.after[child]
                if node.is_folder:
                    folders.append((prefix + name + "/", child))
                contents = None if node.is_folder else self.contents_of(child, count, waiting, remains)
                found[prefix + name] = (node.mode & ~FOLDER_MODE, self.time_of(child, count), contents)
        return found

    def contents_of(self, file, count, waiting, remains):
        """Of each step all, some blocks, zeros or nothing."""
        numbers = [number for number in self.steps_of[file] if number < count]
        whole = [n for n in numbers if n not in waiting or n in remains.chosen]
        is_torn = any(n in remains.torn for n in numbers)
        key = (file, tuple(whole), remains.zeroed and tuple(numbers))
        if not is_torn and key in self.known_contents:
            return self.known_contents[key]
        old = self.before.get(file)
        contents = bytearray(old.contents if old else b"")
        for number in numbers:
            step = self.steps[number]
            if number in whole:
                self.apply(step, contents)
            elif number in remains.torn:
                self.apply_torn(step, contents, remains.torn[number])
            elif remains.zeroed:
                end = step.offset + len(step.contents) if isinstance(step, Write) else step.size
                contents.extend(bytes(max(0, end - len(contents))))
        return bytes(contents) if is_torn else self.known_contents.setdefault(key, bytes(contents))

    @staticmethod
    def apply(step, contents):
        if isinstance(step, Write):
            written(contents, step.offset, step.contents)
        else:
            resized(contents, step.size)

    @staticmethod
    def apply_torn(step, contents, random):
        """Some blocks of a write; a half of the last of them."""
        if not isinstance(step, Write):
            return
        blocks = range(0, len(step.contents), BLOCK_BYTES)
        kept = [begin for begin in blocks if random.random() < 0.5]
        for begin in kept:
            size = BLOCK_BYTES // 2 if begin == kept[-1] else BLOCK_BYTES
            written(contents, step.offset + begin, step.contents[begin : begin + size])

    def time_of(self, file, count):
        is_old = file in self.before and not any(number < count for number in self.steps_of[file])
        return self.before[file].modified_ns if is_old else self.after[file].modified_ns


def fingerprint(tree):
    """The same for trees that are the same but for times."""
    files = [(path, tree[path][0], tree[path][2]) for path in sorted(tree)]
    parts = [(path, mode, contents and hashlib.sha256(contents).hexdigest()) for path, mode, contents in files]
    return hashlib.sha256(repr(parts).encode()).hexdigest()


def make(tree, folder):
    folder.mkdir()
    for path in sorted(tree):
        mode, modified_ns, contents = tree[path]
        target = folder / path
        if contents is None:
            target.mkdir()
            continue
        target.write_bytes(contents)
        target.chmod(mode)
        os.utime(target, ns=(modified_ns, modified_ns))
