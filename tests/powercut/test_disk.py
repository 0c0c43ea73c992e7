"""What may be found after a cut, for short recordings whose answer is known."""

import unittest

import power_cuts
from disk import Disk
from recorded_tree import FOLDER_MODE, ROOT, Change, Entries, Flush, Node, Resize, Write

OLD, NEW, FOLDER, OTHER = 1, 2, 3, 4
PLAIN = 0o644
CONTENTS = b"new contents"
ZEROS = bytes(len(CONTENTS))


def folder(entries):
    node = Node(FOLDER_MODE | 0o755)
    node.entries = entries
    return node


def found(before, steps, after):
    """The trees that the cuts behind the last step leave: their paths with contents."""
    disk = Disk(before, steps, after)
    trees = [disk.tree(cut.count, cut.remains) for cut in power_cuts.cuts_behind(disk, len(steps))]
    return {tuple(sorted((path, file[2]) for path, file in tree.items())) for tree in trees}


class Replacement(unittest.TestCase):
    """A file is written beside another and takes its name."""

    WRITE = [
        Entries((Change(ROOT, "tmp", None, NEW),), 1),
        Write(NEW, 0, CONTENTS, 2),
    ]
    RENAME = [Entries((Change(ROOT, "tmp", NEW, None), Change(ROOT, "a", OLD, NEW)), 3)]

    def found(self, *steps):
        before = {ROOT: folder({"a": OLD}), OLD: Node(PLAIN, 0, b"old")}
        after = {**before, NEW: Node(PLAIN, 2, CONTENTS)}
        trees = found(before, [*steps], after)
        return {dict(tree).get("a") for tree in trees}, {dict(tree).get("tmp") for tree in trees}

    def test_without_a_flush_can_leave_nothing_zeros_or_a_part(self):
        contents, _ = self.found(*self.WRITE, *self.RENAME)
        self.assertLessEqual({b"old", b"", ZEROS, CONTENTS}, contents)

    def test_with_its_contents_flushed_is_the_old_or_the_new_file(self):
        for what in (NEW, None):
            contents, beside = self.found(*self.WRITE, Flush(what, "tmp"), *self.RENAME)
            self.assertEqual(contents, {b"old", CONTENTS})
            self.assertEqual(beside - {None}, {CONTENTS})

    def test_is_for_good_only_when_its_folder_is_flushed(self):
        contents, beside = self.found(*self.WRITE, Flush(NEW, "tmp"), *self.RENAME, Flush(ROOT, ""))
        self.assertEqual((contents, beside), ({CONTENTS}, {None}))

    def test_is_not_helped_by_the_flush_of_another_file(self):
        contents, _ = self.found(*self.WRITE, Flush(OLD, "a"), *self.RENAME)
        self.assertIn(b"", contents)


class Changes(unittest.TestCase):
    def test_within_a_file_go_missing_one_by_one(self):
        before = {ROOT: folder({"a": OLD}), OLD: Node(PLAIN, 0, b"abcd")}
        steps = [Write(OLD, 0, b"A", 1), Write(OLD, 3, b"D", 2), Resize(OLD, 5, 3)]
        contents = {dict(tree)["a"] for tree in found(before, steps, before)}
        self.assertLessEqual({b"abcd", b"AbcD\0", b"Abcd\0", b"abcD\0"}, contents)
        flushed = {dict(tree)["a"] for tree in found(before, [*steps, Flush(OLD, "a")], before)}
        self.assertEqual(flushed, {b"AbcD\0"})

    def test_of_one_name_stay_in_their_order(self):
        before = {ROOT: folder({"a": OLD}), OLD: Node(PLAIN, 0, b"old")}
        steps = [
            Entries((Change(ROOT, "a", OLD, None), Change(ROOT, "b", None, OLD)), 1),
            Entries((Change(ROOT, "b", OLD, None), Change(ROOT, "c", None, OLD)), 2),
        ]
        self.assertEqual(found(before, steps, before), {((name, b"old"),) for name in "abc"})

    def test_of_one_folder_are_not_for_good_when_another_is_flushed(self):
        before = {ROOT: folder({"a": OLD, "f": FOLDER}), FOLDER: folder({}), OLD: Node(PLAIN, 0, b"old")}
        steps = [Entries((Change(ROOT, "a", OLD, None),), 1)]
        self.assertEqual(len(found(before, [*steps, Flush(FOLDER, "f")], before)), 2)
        self.assertEqual(len(found(before, [*steps, Flush(ROOT, "")], before)), 1)

    def test_lose_nothing_that_is_moved_out_of_a_folder_before_that_goes(self):
        before = {ROOT: folder({"f": FOLDER}), FOLDER: folder({"a": OLD}), OLD: Node(PLAIN, 0, b"old")}
        steps = [
            Entries((Change(FOLDER, "a", OLD, None), Change(ROOT, "a", None, OLD)), 1),
            Entries((Change(ROOT, "f", FOLDER, None),), 2),
        ]
        kept = found(before, steps, before)
        self.assertEqual(len(kept), 3)
        self.assertTrue(all(dict(tree).get("a") or dict(tree).get("f/a") for tree in kept))

    def test_lose_nothing_that_is_moved_into_a_new_folder(self):
        before = {ROOT: folder({"a": OLD}), OLD: Node(PLAIN, 0, b"old")}
        after = {**before, FOLDER: folder({})}
        steps = [
            Entries((Change(ROOT, "f", None, FOLDER),), 1),
            Entries((Change(ROOT, "a", OLD, None), Change(FOLDER, "a", None, OLD)), 2),
        ]
        for more in ([], [Flush(ROOT, "")], [Flush(FOLDER, "f")]):
            kept = found(before, [*steps, *more], after)
            self.assertTrue(all(dict(tree).get("a") or dict(tree).get("f/a") for tree in kept))


if __name__ == "__main__":
    unittest.main()
