"""What the benchmarks against another program print is what they measured."""

import pathlib
import sys
import tempfile
import unittest
import xml.etree.ElementTree

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "bench"))

import growth
import instruction_counts
import measure
import rows
import trees


def cost(seconds, peak=20.0):
    return measure.Cost(seconds, seconds, peak)


class Rows(unittest.TestCase):
    def test_a_row_shows_medians_their_ratio_and_whether_that_is_enough(self):
        row = rows.of_times("add", [cost(3), cost(1), cost(2)], [cost(4), cost(4), cost(4)], 0.5)
        self.assertEqual(row.ratio, 0.5)
        self.assertIn("| add | 2.000 s (1.000 to 3.000) | 4.000 s (4.000 to 4.000) | 0.50 | 0.5 | reached |",
                      rows.table([row]))

    def test_a_ratio_above_the_target_is_missed(self):
        self.assertEqual(rows.of_room("after gc", 31, 20, 1.5).verdict(), "missed")
        self.assertEqual(rows.of_memory("commit", 119, 120).verdict(), "reached")


class Measuring(unittest.TestCase):
    def test_a_command_that_fails_is_no_measurement(self):
        with self.assertRaises(SystemExit):
            measure.cost_of(["false"], "/", {"PATH": "/usr/bin:/bin"})

    def test_the_memory_is_that_of_the_process(self):
        used = measure.cost_of([sys.executable, "-c", "len(bytearray(200 << 20))"], "/", {})
        self.assertGreater(used.peak_mebibytes, 200)

    def test_room_is_that_of_whole_blocks(self):
        with tempfile.TemporaryDirectory() as folder:
            before = measure.allocated_mebibytes(folder)
            (pathlib.Path(folder) / "file").write_bytes(b"x" * (3 << 20))
            self.assertAlmostEqual(measure.allocated_mebibytes(folder) - before, 3, delta=0.1)


class Trees(unittest.TestCase):
    def test_the_same_numbers_make_the_same_drawings(self):
        with tempfile.TemporaryDirectory() as one, tempfile.TemporaryDirectory() as other:
            for folder in (one, other):
                trees.copies_of_templates(pathlib.Path(folder), 21)
            contents = [sorted((path.name, path.read_bytes()) for path in pathlib.Path(folder).rglob("*.dwg"))
                        for folder in (one, other)]
            self.assertEqual(contents[0], contents[1])
            self.assertEqual(len({drawing for _, drawing in contents[0]}), 21)


class Growth(unittest.TestCase):
    found = {size: {work: [cost(size / 1e6), cost(size / 1e5)] for work in growth.WORKS} for size in (100, 10_000)}

    def test_the_table_has_a_line_for_each_size(self):
        self.assertIn("| 10,000 | 10 ms | 100 ms | 0.10 |", growth.table(self.found))

    def test_the_picture_has_a_line_for_each_work_and_side(self):
        drawn = xml.etree.ElementTree.fromstring(growth.picture(self.found))
        lines = [line for line in drawn.iter("{http://www.w3.org/2000/svg}polyline") if line.get("stroke-width")]
        self.assertEqual(len(lines), 2 * len(growth.WORKS))
        labels = [text.text for text in drawn.iter("{http://www.w3.org/2000/svg}text")]
        self.assertIn("add one file, git", labels)


class InstructionCounts(unittest.TestCase):
    kept = {"add": (1000, "first count"), "gone": (5, "first count")}

    def test_growth_beyond_the_allowance_is_told(self):
        self.assertEqual(list(instruction_counts.complaints({"add": 1031, "gone": 5}, self.kept)),
                         ["add: 1,031 instructions, 3.1% more than the 1,000 kept"])
        self.assertEqual(list(instruction_counts.complaints({"add": 1030, "gone": 5}, self.kept)), [])

    def test_each_command_has_a_number_and_each_number_a_command(self):
        self.assertEqual(list(instruction_counts.complaints({"add": 1000, "new": 1}, self.kept)),
                         ["new: no number is kept", "gone: kept, but not counted"])


if __name__ == "__main__":
    unittest.main()
