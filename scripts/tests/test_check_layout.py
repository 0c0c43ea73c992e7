"""The check for names of files below the metadata folder is tried with what is allowed and with each kind of fault."""

import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))

import check_layout
import sources


def found_in(code, name="engine/history/History.cpp"):
    return check_layout.problems([name], lambda _: code)


class Layout(unittest.TestCase):
    def test_tells_where_a_name_stands_outside_the_one_file(self):
        code = 'int a;\nconstexpr const char* path = ".qrv/qrv.db";\n'
        self.assertEqual(found_in(code), ['engine/history/History.cpp:2: ".qrv/qrv.db" belongs into engine/paths/Layout.h'])

    def test_knows_each_form_of_a_name(self):
        for text in ('".qrv"', 'L".qrv/objects/"', '"a/.qrv/tf"', '"qrv.state"', '"qrv.log"', '"objects.pack"',
                     '"say \\".qrv/\\""'):
            self.assertEqual(len(found_in(f"f({text});")), 1, text)

    def test_leaves_other_texts_alone(self):
        for code in ('f("qrv");', 'f(".qrv-tmp");', 'f("the objects");', "// \".qrv/objects\"", '/* ".qrv" */',
                     "#include <engine/.qrv/x.h>", "f('\"'); // '.qrv/'", "state.qrv();"):
            self.assertEqual(found_in(code), [], code)

    def test_looks_at_engine_and_program_but_not_at_the_one_file(self):
        code = 'f(".qrv/lock");'
        self.assertEqual(len(found_in(code, "cli/commands/Init.cpp")), 1)
        for name in (check_layout.LAYOUT, "common/repository/RootPath.cpp", "tests/cli/InitTest.cpp"):
            self.assertEqual(found_in(code, name), [], name)

    def test_the_project_has_none(self):
        self.assertEqual(check_layout.problems(sources.project_files()), [])


if __name__ == "__main__":
    unittest.main()
