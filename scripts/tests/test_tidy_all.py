"""Looking at many sources together must find what looking at each of them finds."""

import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parent.parent / "tidy_all.py"
CONFIGURATION = """Checks: '-*,clang-analyzer-core.DivideZero,modernize-use-override,readability-identifier-naming'
WarningsAsErrors: '*'
HeaderFilterRegex: '.*'
CheckOptions:
  - {key: readability-identifier-naming.StructCase, value: CamelCase}
  - {key: readability-identifier-naming.FunctionCase, value: camelBack}
  - {key: readability-identifier-naming.MacroDefinitionCase, value: UPPER_CASE}
"""
CLEAN = "int {name}(int x) {{ return x; }}\n"
# Seen by the static analyzer alone, which follows the ways through a function.
DIVIDED = "int divided(int x) { if (x != 0) return 1; return 1 / x; }\n"


class TidyAll(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.folder = pathlib.Path(holder.name).resolve()
        (self.folder / ".clang-tidy").write_text(CONFIGURATION)
        self.sources = []
        self.commands = []
        for name in ("one", "two", "three"):
            self.add(name, CLEAN.format(name=name))

    def add(self, name, text, command="clang++ -std=c++20"):
        source = self.folder / f"{name}.cpp"
        source.write_text(text)
        self.sources.append(str(source))
        if command:
            entry = {"directory": str(self.folder), "file": str(source), "command": f"{command} -c {source} -o {name}.o"}
            self.commands.append(entry)

    def tidy(self, **variables):
        """The exit status, the names of the sources and checks of the findings, and how the work was done."""
        (self.folder / "compile_commands.json").write_text(json.dumps(self.commands))
        result = subprocess.run([sys.executable, str(SCRIPT), str(self.folder)], input="\n".join(self.sources), text=True,
                                capture_output=True, env={**os.environ, "QRV_TIDY_CACHE": "", **variables})
        found = [line.split(" ")[0].split("/")[-1].split(":")[0] + line[line.rindex("["):].split(",")[0]
                 for line in result.stdout.splitlines() if ": error: " in line]
        return result.returncode, found, result.stderr.splitlines()[-1]

    def test_clean_sources_are_looked_at_together(self):
        self.assertEqual(self.tidy(), (0, [], "3 sources in 1 texts, 0 looked at alone"))

    def test_each_or_one_in_so_many_is_looked_at_alone_on_request(self):
        self.assertEqual(self.tidy(QRV_TIDY_ALONE="1"), (0, [], "3 sources in 0 texts, 3 looked at alone"))
        self.assertEqual(self.tidy(QRV_TIDY_ALONE="2"), (0, [], "3 sources in 0 texts, 2 looked at alone"))

    def test_what_is_found_is_told_of_its_source(self):
        self.add("four", "int Four() { return 4; }\n")
        self.assertEqual(self.tidy(), (1, ["four.cpp[readability-identifier-naming"],
                                       "4 sources in 1 texts, 1 looked at alone"))

    def test_the_analyzer_follows_the_functions_of_each_source(self):
        self.add("four", DIVIDED)
        self.assertEqual(self.tidy(), (1, ["four.cpp[clang-analyzer-core.DivideZero"],
                                       "4 sources in 1 texts, 1 looked at alone"))

    def test_sources_with_names_of_their_own_go_together(self):
        for name in ("four", "five"):
            self.add(name, f"namespace {{ struct Arguments {{ int {name}; }}; }}\n"
                           f"int {name}() {{ return Arguments{{1}}.{name}; }}\n")
        self.assertEqual(self.tidy(), (0, [], "5 sources in 1 texts, 0 looked at alone"))
        self.add("six", "namespace { struct Arguments { int six; }; }\n"
                        "int Six() { return Arguments{1}.six; }\n")
        self.assertEqual(self.tidy(), (1, ["six.cpp[readability-identifier-naming"],
                                       "6 sources in 1 texts, 1 looked at alone"))

    def test_a_source_that_goes_with_no_others_is_looked_at_alone(self):
        self.add("four", "#ifndef FOUR\n#define FOUR\n#else\n#error twice\n#endif\n")
        self.add("five", "#define FOUR\n" + CLEAN.format(name="Five"))
        self.sources.sort()
        status, found, work = self.tidy()
        self.assertEqual((status, found), (1, ["five.cpp[readability-identifier-naming"]))
        self.assertEqual(work, "5 sources in 1 texts, 2 looked at alone")

    def test_other_commands_and_none_are_kept_apart(self):
        self.add("four", "#ifdef OTHER\n" + CLEAN.format(name="Four") + "#endif\n", "clang++ -std=c++20 -DOTHER")
        self.add("five", CLEAN.format(name="Five"), command=None)
        status, found, work = self.tidy()
        self.assertEqual((status, found[0]), (1, "five.cpp[readability-identifier-naming"))
        self.assertIn("four.cpp[readability-identifier-naming", found)
        self.assertEqual(work, "5 sources in 1 texts, 2 looked at alone")

    def test_what_is_found_in_a_header_is_told(self):
        (self.folder / "header.h").write_text("struct badly { int x; };\n")
        self.add("four", '#include "header.h"\n')
        self.assertEqual(self.tidy()[:2], (1, ["header.h[readability-identifier-naming"]))


if __name__ == "__main__":
    unittest.main()
