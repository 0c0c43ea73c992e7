"""Only what clang-tidy found to be clean is remembered, and only while nothing of it changes."""

import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parent.parent / "tidy_file.py"

# Finds something in files with the word BAD, and notes each run.
FAKE = """#!/bin/sh
case $1 in
--version) echo 1; exit ;;
--dump-config) cat "$FOLDER/configuration"; exit ;;
esac
echo run >> "$FOLDER/runs"
for file; do :; done
! grep BAD "$file"
"""


class TidyFile(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.folder = pathlib.Path(holder.name)
        (self.folder / "bin").mkdir()
        (self.folder / "bin/clang-tidy").write_text(FAKE)
        (self.folder / "bin/clang-tidy").chmod(0o755)
        (self.folder / "configuration").write_text("all")
        (self.folder / "runs").write_text("")
        self.write("int one;\n", header="int other;\n")
        command = "ccache g++ -DX -c source.cpp -o source.o"
        entry = {"directory": str(self.folder), "file": "source.cpp", "command": command}
        (self.folder / "compile_commands.json").write_text(json.dumps([entry]))

    def write(self, source, header):
        (self.folder / "source.cpp").write_text('#include "header.h"\n' + source)
        (self.folder / "header.h").write_text(header)

    def tidy(self, cache="cache"):
        """The exit status, and how often clang-tidy has run until now."""
        environment = {
            **os.environ,
            "FOLDER": str(self.folder),
            "PATH": f"{self.folder / 'bin'}:{os.environ['PATH']}",
            "QRV_TIDY_CACHE": cache and str(self.folder / cache),
        }
        command = [sys.executable, str(SCRIPT), str(self.folder), str(self.folder / "source.cpp")]
        status = subprocess.run(command, env=environment, capture_output=True).returncode
        return status, len((self.folder / "runs").read_text().split())

    def test_a_clean_file_is_not_looked_at_twice(self):
        self.assertEqual([self.tidy(), self.tidy()], [(0, 1), (0, 1)])

    def test_a_finding_is_not_remembered(self):
        self.write("int BAD;\n", header="")
        self.assertEqual([self.tidy(), self.tidy()], [(1, 1), (1, 2)])

    def test_a_change_of_the_source_of_a_header_or_of_a_comment_is_seen(self):
        self.assertEqual(self.tidy(), (0, 1))
        self.write("int two;\n", header="int other;\n")
        self.assertEqual(self.tidy(), (0, 2))
        self.write("int two;\n", header="int others;\n")
        self.assertEqual(self.tidy(), (0, 3))
        self.write("int two;  // NOLINT\n", header="int others;\n")
        self.assertEqual(self.tidy(), (0, 4))

    def test_a_change_of_the_configuration_is_seen(self):
        self.assertEqual(self.tidy(), (0, 1))
        (self.folder / "configuration").write_text("more")
        self.assertEqual(self.tidy(), (0, 2))

    def test_nothing_is_remembered_when_nobody_wants_that(self):
        self.assertEqual([self.tidy(""), self.tidy("")], [(0, 1), (0, 2)])

    def test_a_file_that_is_not_compiled_is_looked_at_each_time(self):
        (self.folder / "compile_commands.json").write_text("[]")
        self.assertEqual([self.tidy(), self.tidy()], [(0, 1), (0, 2)])


if __name__ == "__main__":
    unittest.main()
