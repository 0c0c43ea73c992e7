"""The checks of the sources must see what they are there for: each is tried with what is allowed and with a fault."""

import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))

import check_calls
import check_includes
import check_lists
import check_sizes
import check_words
import sources


def reader(files):
    """Reads from a dictionary instead of the disk."""
    return lambda name: files[name]


class Includes(unittest.TestCase):
    ALLOWED = [
        ("common/state/Cache.h", "#include <common/worktree/File.h>"),
        ("common/state/Cache.cpp", "#include <platform/ut/TextFile.h>"),
        ("common/common.h", "#include <common/state/Cache.h>"),
        ("common/json/Reader.cpp", "#include <common/base/MessageInternal.h>"),
        ("common/json/Reader.cpp", "#include <vector>"),
        ("common/repository/RootPath.cpp", "#include <windows.h>"),
        ("common/repository/RootPath.cpp", "#ifdef _WIN32"),
        ("common/repository/ActivityLog.cpp", "#include <QFile>"),
        ("common/base/Message.cpp", "#include <wx/translation.h>"),
        ("platform/ut/Dir.cpp", "#include <dirent.h>"),
        ("platform/ut/Dir.cpp", "#ifdef __linux__"),
        ("cli/shell/CommandLine.cpp", "#include <CLI/CLI.hpp>"),
        ("cli/Main.cpp", "#include <common/common.h>"),
        ("tests/common/json/ReaderTest.cpp", "#include <common/json/ReaderInternal.h>"),
        ("tests/common/json/ReaderTest.cpp", "#include <gmock/gmock.h>"),
        ("tests/cli/MessageTest.cpp", "#include <engine/base/Printable.h>"),
        ("common/base/Export.h", "#if defined(_MSC_VER)"),
        ("engine/worktree/WorkingTree.cpp", "#include <engine/history/History.h>"),
        ("engine/worktree/WorkingTree.cpp", "#include <sys/Folder.h>"),
        ("cli/commands/Add.cpp", "#include <engine/worktree/Staging.h>"),
        ("cli/commands/Add.cpp", "#include <cli/shell/Output.h>"),
        ("sys/Status.cpp", "#include <sys/stat.h>"),
        ("platform/ut/Dir.cpp", "#include <sys/CallsInternal.h>"),
    ]
    REFUSED = [
        ("platform/ut/Dir.cpp", "#include <common/base/Expected.h>"),
        ("platform/kernel/OdString.cpp", "#include <platform/ut/Dir.h>"),
        ("platform/ut/Dir.cpp", "#include <platform/qut/toQt.h>"),
        ("common/base/Message.cpp", "#include <common/json/Value.h>"),
        ("common/worktree/File.h", "#include <common/state/ConflictData.h>"),
        ("common/json/Value.h", "#include <common/repository/RootPath.h>"),
        ("common/state/Cache.h", "#include <common/common.h>"),
        ("common/state/Cache.cpp", "#include <cli/shell/Output.h>"),
        ("cli/Main.cpp", "#include <common/base/MessageInternal.h>"),
        ("cli/commands/Add.cpp", "#include <CLI/CLI.hpp>"),
        ("cli/Main.cpp", "#include <tests/support/Files.h>"),
        ("platform/ut/Dir.cpp", "#include <common/base/MessageInternal.h>"),
        ("common/state/Cache.cpp", "#include <common/worktree/NameRuleInternal.h>"),
        ("common/state/Cache.cpp", "#include <unistd.h>"),
        ("common/state/Cache.cpp", "#include <sys/stat.h>"),
        ("common/state/Cache.cpp", "#include <windows.h>"),
        ("common/json/Reader.cpp", "#include <string.h>"),
        ("common/json/Reader.cpp", "#include <QString>"),
        ("common/state/Cache.cpp", "#include <openssl/sha.h>"),
        ("cli/Main.cpp", "  #  ifdef _WIN32"),
        ("common/state/Cache.cpp", "#if defined(__linux__)"),
        ("common/state/Cache.cpp", '#include "Cache.h"'),
        ("common/newfolder/Thing.cpp", "#include <common/base/Expected.h>"),
        ("engine/worktree/WorkingTree.cpp", "#include <cli/terminal/Message.h>"),
        ("engine/history/History.cpp", "#include <engine/worktree/WorkingTree.h>"),
        ("engine/storage/Storages.cpp", "#include <engine/maintenance/Packing.h>"),
        ("engine/newroom/Thing.cpp", "#include <engine/base/Digest.h>"),
        ("cli/shell/CommandLine.cpp", "#include <cli/commands/Commands.h>"),
        ("cli/terminal/Progress.cpp", "#include <cli/shell/Output.h>"),
        ("cli/commands/Add.cpp", "#include <engine/history/RowsInternal.h>"),
        ("common/state/Cache.cpp", "#include <engine/base/Digest.h>"),
        ("common/state/Cache.cpp", "#include <sys/Folder.h>"),
        ("sys/Folder.cpp", "#include <platform/kernel/OdString.h>"),
        ("platform/kernel/Clock.cpp", "#include <sys/Folder.h>"),
        ("platform/qut/OpenFile.cpp", "#include <sys/CallsInternal.h>"),
        ("engine/worktree/WorkingTree.cpp", "#include <sys/CallsInternal.h>"),
        ("tests/cli/MessageTest.cpp", "#include <bench/BenchFolder.h>"),
    ]

    def test_allowed_lines_pass(self):
        for name, line in self.ALLOWED:
            self.assertIsNone(check_includes.line_problem(name, line), (name, line))

    def test_other_lines_are_refused(self):
        for name, line in self.REFUSED:
            self.assertIsNotNone(check_includes.line_problem(name, line), (name, line))

    def test_the_place_is_named(self):
        files = {"platform/ut/Dir.cpp": "\n#include <common/common.h>\n"}
        self.assertEqual(
            check_includes.problems(list(files), reader(files)),
            ["platform/ut/Dir.cpp:2: platform/ut may not include common: <common/common.h>"])

    def test_files_that_include_each_other_in_a_circle_are_named(self):
        files = {"engine/base/A.h": "#include <engine/base/B.h>\n",
                 "engine/base/B.h": "#include <engine/base/C.h>\n#include <engine/base/D.h>\n",
                 "engine/base/C.h": "#include <engine/base/A.h>\n", "engine/base/D.h": "",
                 "engine/base/A.cpp": "#include <engine/base/A.h>\n#include <engine/base/D.h>\n"}
        self.assertEqual(
            check_includes.problems(list(files), reader(files)),
            ["engine/base/A.h: includes itself: engine/base/A.h -> engine/base/B.h -> "
             "engine/base/C.h -> engine/base/A.h"])

    def test_files_on_two_ways_to_one_file_are_no_circle(self):
        files = {"engine/base/A.h": "#include <engine/base/B.h>\n#include <engine/base/C.h>\n",
                 "engine/base/B.h": "#include <engine/base/D.h>\n",
                 "engine/base/C.h": "#include <engine/base/D.h>\n", "engine/base/D.h": ""}
        self.assertEqual(check_includes.problems(list(files), reader(files)), [])

    def test_the_table_has_no_circle(self):
        left = {folder: set(edges) for folder, edges in check_includes.EDGES.items()}
        while left:
            free = [folder for folder, edges in left.items() if not edges & set(left)]
            self.assertTrue(free, f"circle among {sorted(left)}")
            for folder in free:
                del left[folder]


class Calls(unittest.TestCase):
    def found(self, name, text):
        return check_calls.problems([name], reader({name: text}))

    def test_forbidden_calls_are_found(self):
        for name, line in [
            ("common/state/Cache.cpp", "std::ofstream file(path);"),
            ("cli/Main.cpp", "std::ofstream file(path);"),
            ("common/state/Cache.cpp", "std::rename(a, b);"),
            ("common/state/Cache.cpp", "::open(path, O_WRONLY);"),
            ("common/state/Cache.cpp", "QSaveFile file;"),
            ("common/state/Cache.cpp", "std::filesystem::path p;"),
            ("common/json/Reader.cpp", 'std::cerr << "x";'),
            ("platform/ut/Dir.cpp", 'std::printf("x");'),
            ("platform/ut/Dir.cpp", "std::exit(1);"),
            ("common/state/Cache.cpp", "std::abort();"),
            ("common/state/Cache.cpp", 'std::setlocale(LC_ALL, "");'),
            ("common/state/Cache.cpp", "std::signal(SIGINT, f);"),
            ("common/state/Cache.cpp", "std::thread worker;"),
            ("common/state/Cache.cpp", "qWarning() << 1;"),
        ]:
            self.assertEqual(len(self.found(name, line)), 1, (name, line))

    def test_other_code_passes(self):
        for name, line in [
            ("common/state/Cache.cpp", "// std::cout would print"),
            ("common/state/Cache.cpp", 'text = L"exit(1)";'),
            ("common/state/Cache.cpp", "state.renames.clear();"),
            ("common/state/Cache.cpp", "#include <thread>"),
            ("common/repository/ActivityLog.cpp", "QFile file;"),
            ("platform/ut/TextFile.cpp", "::rename(a, b);"),
            ("platform/ut/Dir.cpp", "std::filesystem::path p;"),
            ("sys/ScopedFault.cpp", "raise(SIGKILL);"),
            ("cli/Main.cpp", "std::cout << 1;"),
            ("tests/x.cpp", "std::ofstream file;"),
        ]:
            self.assertEqual(self.found(name, line), [], (name, line))


class Sizes(unittest.TestCase):
    def problems(self, lines, functions=(), excused=(), name="common/base/A.cpp"):
        return check_sizes.problems([name], list(functions), set(excused),
                                    reader({name: "\n" * lines}))

    def test_the_limits_themselves_pass(self):
        self.assertEqual(self.problems(350), [])
        self.assertEqual(self.problems(150, name="common/base/A.h"), [])
        self.assertEqual(self.problems(350, name="tests/A.h"), [])
        self.assertEqual(self.problems(1, [("common/base/A.cpp", "f", 1, 60)]), [])

    def test_one_more_fails(self):
        self.assertEqual(self.problems(351), ["common/base/A.cpp: 351 lines, at most 350"])
        self.assertEqual(len(self.problems(151, name="common/base/A.h")), 1)
        for name in ("tests/ATest.cpp", "tests/A.h", "scripts/check_a.py"):
            self.assertEqual(len(self.problems(351, name=name)), 1)
        self.assertEqual(self.problems(1, [("common/base/A.cpp", "f", 1, 61)]),
                         ["common/base/A.cpp:1: f has 61 lines, at most 60"])

    def test_exceptions_excuse_what_they_name_and_no_more(self):
        function = ("common/base/A.cpp", "f", 1, 61)
        self.assertEqual(self.problems(351, excused=["common/base/A.cpp"]), [])
        self.assertEqual(self.problems(1, [function], ["common/base/A.cpp f"]), [])
        self.assertEqual(len(self.problems(1, [function], ["common/base/A.cpp g"])), 2)

    def test_an_exception_needs_a_reason(self):
        self.assertEqual(check_sizes.parse_exceptions("# why\n\na.h: table\n"), {"a.h"})
        for line in ("a.h", "a.h:", "a.h: "):
            self.assertRaises(ValueError, check_sizes.parse_exceptions, line)

    def test_functions_are_measured_from_head_to_closing_brace(self):
        with tempfile.TemporaryDirectory() as folder:
            body = "\n" * 58
            (pathlib.Path(folder) / "A.cpp").write_text(
                f"namespace n {{\nint f() {{{body}return 1;\n}}\nTEST(A, B) {{\n}}\n}}\n")
            self.assertEqual(check_sizes.functions_of(["A.cpp"], folder),
                             [("A.cpp", "f", 2, 61), ("A.cpp", "TEST", 62, 63)])


class Words(unittest.TestCase):
    def test_references_to_papers_are_found(self):
        for line in ("see the s" + "pec", "S" + "pecification", "P" + "art 3.2", "i" + "ssue 12",
                     "the d" + "esign page", "/w" + "ork/main", "T" + "ODO: later"):
            self.assertEqual(len(check_words.problems(["a"], reader({"a": line}))), 1, line)

    def test_ordinary_words_pass(self):
        for line in ("special", "unspecified", "part of", "issues", "a design", "working"):
            self.assertEqual(check_words.problems(["a"], reader({"a": line})), [], line)


class Lists(unittest.TestCase):
    CMAKE = """add_library(qrv_common SHARED json/Reader.cpp) # json/Writer.cpp
        target_sources(qrv_common PUBLIC FILE_SET HEADERS FILES common.h json/Reader.h)"""

    def test_sources_must_be_listed(self):
        files = {"common/CMakeLists.txt": self.CMAKE, "CMakeLists.txt": "add_subdirectory(common)"}
        names = [*files, "common/json/Reader.cpp", "common/json/Writer.cpp", "common/Reader.cpp"]
        self.assertEqual(
            check_lists.CHECKS["sources"](names, reader(files)),
            ["common/json/Writer.cpp: in no CMakeLists.txt, so it is not built",
             "common/Reader.cpp: in no CMakeLists.txt, so it is not built"])

    def test_only_a_header_is_called_internal(self):
        files = {"common/CMakeLists.txt": "add_library(c json/RowInternal.cpp)",
                 "tests/common/CMakeLists.txt": "qrv_add_tests(t json/RowInternalTest.cpp)"}
        names = [*files, "common/json/RowInternal.h", "common/json/RowInternal.cpp",
                 "tests/common/json/RowInternalTest.cpp"]
        self.assertEqual(
            check_lists.CHECKS["sources"](names, reader(files)),
            ["common/json/RowInternal.cpp: a source and a test go without the word Internal",
             "tests/common/json/RowInternalTest.cpp: a source and a test go without the word Internal"])

    def test_public_headers_must_be_listed(self):
        good = {"common/CMakeLists.txt": self.CMAKE, "common/common.h": "", "common/json/Reader.h": "",
                "common/json/AInternal.h": ""}
        self.assertEqual(check_lists.CHECKS["headers"](list(good), reader(good)), [])
        bad = {"common/CMakeLists.txt": self.CMAKE, "common/common.h": "", "common/json/Value.h": ""}
        self.assertEqual(
            check_lists.CHECKS["headers"](list(bad), reader(bad)),
            ["common/json/Value.h: public, but not in the list of headers",
             "common/CMakeLists.txt: lists json/Reader.h, which is not public or not there"])

    def test_public_headers_include_what_is_installed_only(self):
        files = {"engine/CMakeLists.txt": "target_sources(qrv_engine_shared PUBLIC FILE_SET HEADERS FILES\n"
                                          "base/Caller.h operations/Commit.h)",
                 "engine/base/Caller.h": "#include <common/base/Expected.h>\n#include <vector>\n",
                 "engine/operations/Commit.h": "#include <engine/base/Caller.h>\n#include <engine/history/History.h>\n"
                                               "#include <sys/Folder.h>\n",
                 "engine/operations/CommitInternal.h": "#include <sys/Folder.h>\n",
                 "engine/history/History.h": "#include <engine/database/Database.h>\n"}
        self.assertEqual(
            check_lists.CHECKS["headers"](list(files), reader(files)),
            [f"engine/operations/Commit.h: public, but includes <{header}>, which is not installed"
             for header in ("engine/history/History.h", "sys/Folder.h")])

    def test_the_umbrella_is_complete(self):
        files = {"common/common.h": "#include <common/a/A.h>\n#include <vector>\n"}
        names = ["common/common.h", "common/b/B.h", "common/b/CInternal.h"]
        self.assertEqual(
            check_lists.CHECKS["common.h"](names, reader(files)),
            ["common/common.h: lacks <common/b/B.h>",
             "common/common.h: includes <common/a/A.h>, which is no public header of common",
             "common/common.h: includes <vector>, which is no public header of common"])

    def test_each_folder_has_a_short_readme(self):
        files = {f"{folder}/README.md": "x\n" * 10 for folder in check_lists.README_FOLDERS}
        names = [*files, "common/json/Reader.h"]
        self.assertEqual(check_lists.CHECKS["readmes"](names, reader(files)),
                         ["common/json/README.md: missing"])
        files["cli/README.md"] += "x\n"
        self.assertIn("cli/README.md: more than 10 lines",
                      check_lists.CHECKS["readmes"](names, reader(files)))


class CodeOnly(unittest.TestCase):
    def test_comments_and_texts_are_taken_out(self):
        for text, code in [
            ("a // b\nc", "a \nc"),
            ("a /* b\nc */ d", "a \n d"),
            ('f("x // y") // z', 'f("") '),
            ("f('\"') + \"exit(1)\"", 'f("") + ""'),
            ('R"(a "b" // c)" + d', '"" + d'),
            ("1'000'000 + x", "1'000'000 + x"),
            ('"a\\"b" c', '"" c'),
        ]:
            self.assertEqual(sources.code_only(text), code, text)


if __name__ == "__main__":
    unittest.main()
