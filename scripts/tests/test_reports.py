"""The reports count what they say that they count."""

import contextlib
import io
import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))

import bench_table
import count_tests
import count_tried
import sources


class CountTests(unittest.TestCase):
    def outcomes(self, cases):
        with tempfile.NamedTemporaryFile("w", suffix=".xml") as report:
            report.write(f"<testsuite>{cases}</testsuite>")
            report.flush()
            return count_tests.outcomes(report.name)

    def test_each_outcome_is_counted_as_what_it_is(self):
        self.assertEqual(
            self.outcomes('<testcase name="a" status="run"/>'
                          '<testcase name="b" status="fail"><failure/></testcase>'
                          '<testcase name="c" status="notrun">'
                          '<skipped message="SKIP_RETURN_CODE=77"/></testcase>'
                          '<testcase name="d" status="notrun">'
                          '<skipped message="Unable to find executable: d"/></testcase>'
                          '<testcase name="e" status="notrun">'
                          '<skipped message="Fixture dependency failed: b"/></testcase>'
                          '<testcase name="f" status="notrun"/>'),
            (["a"], ["c"], ["b", "d", "e", "f"]))

    def test_nothing_run_is_a_failure(self):
        with contextlib.redirect_stdout(io.StringIO()) as printed:
            with contextlib.redirect_stderr(io.StringIO()):
                self.assertEqual(count_tests.main("/nonexistent/report.xml"), 1)
        self.assertEqual(printed.getvalue(), "0 passed, 0 failed\n")


class CountTried(unittest.TestCase):
    REPORT = """<testsuite>
        <testcase name="Kill.a"><system-out>a: 3 disturbances\ntried: 3 kills\n</system-out></testcase>
        <testcase name="Kill.b"><system-out>tried: 1040 kills\ntried: 2 saves\n</system-out></testcase>
        <testcase name="a.AllAgainUnderAnOddLocale"><system-out>tried: 5 kills\n</system-out></testcase>
        <testcase name="Silent"/>
    </testsuite>"""

    def test_each_kind_is_summed_and_repeats_are_not(self):
        tried, tests = count_tried.counts_of(io.StringIO(self.REPORT))
        self.assertEqual((tried, tests), ({"kills": 1043, "saves": 2}, {"kills": 2, "saves": 1}))
        self.assertTrue(count_tried.rows(tried, tests)[0].endswith(" | 1,043 | 2 |"))

    def test_a_kind_that_is_missing_or_unknown_is_told(self):
        every = dict.fromkeys(count_tried.KINDS, 1)
        self.assertEqual(count_tried.problems(count_tried.Counter(every)), [])
        found = count_tried.problems(count_tried.Counter({**every, "saves": 0, "sighs": 1}))
        self.assertEqual(found, ["no test has tried any: saves", "a kind without a row: sighs"])


class BenchTable(unittest.TestCase):
    ROW = ("Read", "json", "ours", "peer", "real_time", 0.6)

    def table(self, ours, peer):
        def runs(times):
            return [{"real_time": time, "time_unit": "ms"} for time in times]

        bench_table.ROWS, rows = [self.ROW], bench_table.ROWS
        try:
            reports = {"json": {"ours": runs(ours), "peer": runs(peer)}}
            return bench_table.ratio_table(reports).splitlines()[-1]
        finally:
            bench_table.ROWS = rows

    def test_ratios_are_of_medians(self):
        self.assertEqual(self.table([50, 60, 900], [100, 10, 400]),
                         "| Read | 60 ms | 100 ms | 0.60 | 0.6 | reached |")

    def test_a_missed_target_is_said(self):
        self.assertEqual(self.table([61], [100]),
                         "| Read | 61 ms | 100 ms | 0.61 | 0.6 | missed |")

    def test_each_row_names_benchmarks_that_exist(self):
        for _, report, *names, _, _ in bench_table.ROWS:
            source = sources.read(f"bench/{report.capitalize()}Bench.cpp")
            for name in filter(None, names):
                self.assertIn(f"BENCHMARK({name.split('/')[0]})", source)


if __name__ == "__main__":
    unittest.main()
