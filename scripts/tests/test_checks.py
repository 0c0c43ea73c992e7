"""The checks must see what they are there for: each is tried with what is allowed and with a fault."""

import contextlib
import io
import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))

import bench_table
import check_calls
import check_endings
import check_exports
import check_includes
import check_lists
import check_run_path
import check_samples
import check_silence
import check_sizes
import check_words
import count_tests
import count_tried
import library_names
import manual_sources
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
        ("engine/worktree/Workspace.cpp", "#include <engine/history/History.h>"),
        ("engine/worktree/Workspace.cpp", "#include <sys/Folder.h>"),
        ("cli/commands/Add.cpp", "#include <engine/worktree/Staging.h>"),
        ("cli/commands/Add.cpp", "#include <cli/shell/Output.h>"),
        ("sys/Status.cpp", "#include <sys/stat.h>"),
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
        ("engine/worktree/Workspace.cpp", "#include <cli/terminal/Message.h>"),
        ("engine/history/History.cpp", "#include <engine/worktree/Workspace.h>"),
        ("engine/storage/Storages.cpp", "#include <engine/maintenance/Packing.h>"),
        ("engine/newroom/Thing.cpp", "#include <engine/base/Digest.h>"),
        ("cli/shell/CommandLine.cpp", "#include <cli/commands/Commands.h>"),
        ("cli/terminal/Progress.cpp", "#include <cli/shell/Output.h>"),
        ("cli/commands/Add.cpp", "#include <engine/history/RowsInternal.h>"),
        ("common/state/Cache.cpp", "#include <engine/base/Digest.h>"),
        ("common/state/Cache.cpp", "#include <sys/Folder.h>"),
        ("sys/Folder.cpp", "#include <platform/kernel/OdString.h>"),
        ("platform/ut/Dir.cpp", "#include <sys/Folder.h>"),
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
            ("platform/ut/ScopedFault.cpp", "kill(getpid(), SIGKILL);"),
            ("cli/Main.cpp", "std::cout << 1;"),
            ("tests/x.cpp", "std::ofstream file;"),
        ]:
            self.assertEqual(self.found(name, line), [], (name, line))


class Sizes(unittest.TestCase):
    def problems(self, lines, functions=(), excused=(), name="common/base/A.cpp"):
        return check_sizes.problems([name], list(functions), set(excused),
                                    reader({name: "\n" * lines}))

    def test_the_limits_themselves_pass(self):
        self.assertEqual(self.problems(400), [])
        self.assertEqual(self.problems(150, name="common/base/A.h"), [])
        self.assertEqual(self.problems(500, name="tests/ATest.cpp"), [])
        self.assertEqual(self.problems(1, [("common/base/A.cpp", "f", 1, 60)]), [])

    def test_one_more_fails(self):
        self.assertEqual(self.problems(401), ["common/base/A.cpp: 401 lines, at most 400"])
        self.assertEqual(len(self.problems(151, name="common/base/A.h")), 1)
        self.assertEqual(len(self.problems(501, name="tests/ATest.cpp")), 1)
        self.assertEqual(self.problems(1, [("common/base/A.cpp", "f", 1, 61)]),
                         ["common/base/A.cpp:1: f has 61 lines, at most 60"])

    def test_exceptions_excuse_what_they_name_and_no_more(self):
        function = ("common/base/A.cpp", "f", 1, 61)
        self.assertEqual(self.problems(401, excused=["common/base/A.cpp"]), [])
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

    def test_public_headers_must_be_listed(self):
        files = {"common/CMakeLists.txt": self.CMAKE}
        good = [*files, "common/common.h", "common/json/Reader.h", "common/json/AInternal.h"]
        self.assertEqual(check_lists.CHECKS["headers"](good, reader(files)), [])
        self.assertEqual(
            check_lists.CHECKS["headers"]([*good[:-2], "common/json/Value.h"], reader(files)),
            ["common/json/Value.h: public, but not in the list of headers",
             "common/CMakeLists.txt: lists json/Reader.h, which is not public or not there"])

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


class LibraryNames(unittest.TestCase):
    VALUE = ("jsonlib::json::Value_impl<jsonlib::json::Config_map<std::__cxx11::basic_string<wchar_t, "
             "std::char_traits<wchar_t>, std::allocator<wchar_t> > > >")

    def test_each_name_is_read_once_and_without_its_version(self):
        self.assertEqual(
            library_names.names("0000000000012af0 T common::Cache::write()\n"
                                "0000000000012af4 T common::Cache::write()\n"
                                "                 U std::cout@GLIBCXX_3.4\n"
                                "                 w __gmon_start__\n"
                                "0000000000000010 V vtable for common::File\n"),
            ["__gmon_start__", "common::Cache::write()", "std::cout", "vtable for common::File"])

    def test_types_are_spelled_as_in_the_headers(self):
        for name, spelled in [
            (f"write({self.VALUE} const&)", "write(jsonlib::json::Value const&)"),
            (f"f(std::vector<{self.VALUE}, std::allocator<{self.VALUE} > >)", "f(jsonlib::json::Array)"),
            ("f[abi:cxx11](std::vector<OdString, std::allocator<OdString> > const&)",
             "f(std::vector<OdString> const&)"),
            ("f(std::vector<int, std::allocator<long> >)", "f(std::vector<int, std::allocator<long>>)"),
        ]:
            self.assertEqual(library_names.readable(name), spelled)


class Exports(unittest.TestCase):
    LIST = "# why\ncommon::a()\n\ncommon::b()\n"

    def problems(self, exported, **options):
        return check_exports.problems(exported, check_exports.listed(self.LIST), **options)

    def test_the_listed_names_pass(self):
        self.assertEqual(self.problems(["common::a()", "common::b()"]), [])

    def test_more_and_fewer_are_found(self):
        self.assertEqual(self.problems(["common::a()", "common::Leak::c()"]),
                         ["exported, but not in the list: common::Leak::c()",
                          "in the list, but not exported: common::b()"])

    def test_only_sanitizers_may_describe_more_types(self):
        exported = ["common::a()", "common::b()", "typeinfo for common::C", "vtable for common::C"]
        self.assertEqual(len(self.problems(exported)), 2)
        self.assertEqual(self.problems(exported, sanitized=True),
                         ["exported, but not in the list: vtable for common::C"])

    def test_an_update_keeps_the_comment(self):
        self.assertEqual(check_exports.updated(self.LIST, ["z", "common::a()"]),
                         "# why\ncommon::a()\nz\n")


class Silence(unittest.TestCase):
    def found(self, name, library=check_silence.COMMON):
        return check_silence.problems(library, [name])

    def test_what_a_guest_may_not_ask_for_is_found(self):
        for name in ("printf", "__fprintf_chk", "vwprintf", "puts", "putchar", "fputws", "stderr", "std::cout",
                     "std::ios_base::Init::Init()", "QMessageLogger::warning(char const*, ...) const",
                     "exit", "_exit", "abort", "raise", "__assert_fail", "setlocale",
                     "std::locale::global(std::locale const&)", "signal", "sigaction", "atexit",
                     "std::set_terminate(void (*)())", "pthread_create", "fork", "execvp", "system",
                     "std::thread::_M_start_thread(std::unique_ptr<int>, void (*)())",
                     "QThread::start(QThread::Priority)", "vtable for QThread::x", "setenv", "chdir", "umask"):
            self.assertEqual(len(self.found(name)), 1, name)
            if name != "raise":
                self.assertEqual(len(self.found(name, check_silence.PLATFORM)), 1, name)

    def test_only_the_platform_touches_the_file_system(self):
        for name in ("open", "openat64", "renameat", "unlink", "mkdir", "fopen",
                     "std::basic_ofstream<char, std::char_traits<char> >::open(char const*)",
                     "QFile::open(QFlags<QIODevice::OpenModeFlag>)", "QDir::mkpath(QString const&) const"):
            self.assertEqual(self.found(name), [
                f"libqrv-common.so touches the file system past the platform: {name}"])
            self.assertEqual(self.found(name, check_silence.PLATFORM), [], name)

    def test_everything_else_passes(self):
        for name in ("memcpy", "free", "SHA256_Init", "__cxa_atexit", "_Unwind_Resume", "qt_assert(char const*)",
                     "std::locale::locale()", "std::locale::classic()", "QFile::QFile()", "opendir",
                     "common::printf()", "std::basic_istream<char>::operator>>(long&)"):
            self.assertEqual(self.found(name), [], name)

    def test_exceptions_hold_for_their_library_only(self):
        self.assertEqual(self.found("raise", check_silence.PLATFORM), [])
        self.assertEqual(self.found("raise"), ["libqrv-common.so ends the process: raise"])


class Endings(unittest.TestCase):
    def found(self, path, *asked):
        return list(check_endings.problems("".join(f"{path}:                 U {name}\n" for name in asked)))

    def test_an_object_that_ends_with_the_process_or_a_thread_is_found(self):
        path = "/common/build/common/CMakeFiles/qrv_common.dir/./state/Cache.cpp.o"
        for function in ("__cxa_atexit", "__cxa_thread_atexit", "__cxa_thread_atexit_impl"):
            self.assertEqual(self.found(path, "free", function), [
                "common/state/Cache.cpp.o: has an object that is destroyed when the process or a thread ends: "
                + function])

    def test_everything_else_passes(self):
        self.assertEqual(self.found("platform/ut/Dir.cpp.o", "__cxa_finalize", "__cxa_guard_acquire", "free"), [])

    def test_exceptions_hold_for_their_file_only(self):
        folder = "build/dev/common/CMakeFiles/qrv_common.dir/config/"
        self.assertEqual(self.found(folder + "Config.cpp.o", "__cxa_atexit"), [])
        self.assertEqual(len(self.found(folder + "ConfigData.cpp.o", "__cxa_atexit")), 1)


class RunPath(unittest.TestCase):
    def found(self, folders):
        line = f" 0x000000000000001d (RUNPATH)            Library runpath: [{folders}]\n"
        return list(check_run_path.problems("qrv", line))

    def test_an_empty_or_relative_folder_is_found(self):
        for folders in ("", "/build/common:", ":/build", "$ORIGIN/../lib::/usr/lib", "lib", "./lib:/usr/lib"):
            self.assertEqual(len(self.found(folders)), 1, folders)

    def test_other_folders_pass(self):
        for folders in ("$ORIGIN", "$ORIGIN/../lib:/opt/qrv/lib", "/usr/lib"):
            self.assertEqual(self.found(folders), [], folders)
        self.assertEqual(list(check_run_path.problems("qrv", " (NEEDED) Shared library: [libc.so.6]\n")), [])


class Samples(unittest.TestCase):
    PAGE = "docs/formats/a.md"
    SAMPLE = "tests/a.sample"

    def problems(self, page, sample, **more):
        files = {self.PAGE: page, self.SAMPLE: sample, **more}
        return check_samples.problems(list(files), reader(files))

    def page(self, block):
        return f"# A\n\nAs read ([a.sample](../../tests/a.sample)):\n\n```json\n{block}```\n"

    def test_a_block_is_the_file_with_or_without_its_last_line_feed(self):
        self.assertEqual(self.problems(self.page("{\n}\n"), "{\n}"), [])
        self.assertEqual(self.problems(self.page("{\n}\n"), "{\n}\n"), [])

    def test_each_other_byte_counts(self):
        for sample in ("{\n} ", "{\r\n}", "{\n}\n\n", "{ \n}", "{", "{\n}\n}"):
            found = self.problems(self.page("{\n}\n"), sample)
            self.assertEqual(len(found), 1, sample)
            self.assertIn(f"differs from {self.SAMPLE}", found[0])

    def test_the_line_is_named(self):
        self.assertEqual(self.problems(self.page("a\nb\n"), "a\nc\n"),
                         [f"{self.PAGE}:7: differs from {self.SAMPLE}:2"])

    def test_a_page_needs_a_block_and_a_sample_needs_a_page(self):
        self.assertEqual(self.problems("# A\n", "x"),
                         [f"{self.PAGE}: shows no sample", f"{self.SAMPLE}: no page in docs/formats/ names it"])

    def test_a_link_to_nothing_is_found(self):
        text = self.page("x\n") + "See [b](../../tests/b.sample).\n"
        self.assertEqual(self.problems(text, "x\n"),
                         [f"{self.PAGE}: links to tests/b.sample, which is not there"])


class ManualSources(unittest.TestCase):
    def test_signs_mean_themselves(self):
        for text, expected in [
            ("50 % of <b> \\n a@b #1", r"50 \% of \<b\> \\n a\@b \#1"),
            ('"%ls" takes <T>', r'"%ls" takes \<T\>'),
            ("`%ls` takes `<T>`", "`%%ls` takes `<T>`"),
            ('`f(L"%ls")` at 5 %', r'`f(L"%ls")` at 5 \%'),
        ]:
            self.assertEqual(manual_sources.escaped(text), expected)

    def test_a_header_keeps_its_lines_and_loses_what_needs_no_words(self):
        text = ("/// <T> first.\n///     code<T>();\nclass A {\n    A(const A&) = default;\n    A(A&&);\n"
                "    A& operator=(const A& other);\n    /// Said.\n    A(A) = delete;\n    A(B&&);\n"
                "    int b;  ///< 5 %\n};\n")
        self.assertEqual(
            manual_sources.header(text),
            "/// \\<T\\> first.\n///     code<T>();\nclass A {\n\n\n\n    /// Said.\n    A(A) = delete;\n"
            "    A(B&&);\n    int b;  ///< 5 \\%\n};\n")

    def test_links_name_pages_and_other_files_become_text(self):
        page = ("# A <b>\n[b](b.md#part), [c](../src/c.cpp), [d](https://d.org/)\n\n"
                "    [e](b.md)\n```\n[f](b.md) <g>\n```\n")
        self.assertEqual(
            manual_sources.page("docs/a.md", page, {"docs/a.md", "docs/b.md"}),
            '# A \\<b\\> {#page_docs_a}\n@ref page_docs_b "b", c, [d](https://d.org/)\n\n'
            "    [e](b.md)\n```{.unparsed}\n[f](b.md) <g>\n```\n")

    def test_dead_links_are_found(self):
        files = {
            "docs/a.md": "# A\n[b](b.md) [c](../cli/) [d](#part) [e](http://e.org)\n```\n[f](f.md)\n```\n",
            "README.md": "# R\n[a](docs/a.md)\n", "cli/Main.cpp": "", "common/base/Expected.h": "int a;\n",
            "common/base/AInternal.h": ""}
        texts, problems = manual_sources.copies(list(files), reader(files))
        self.assertEqual(problems, ["docs/a.md: links to b.md, which is not there"])
        self.assertEqual(sorted(texts), ["README.md", "common/base/Expected.h", "docs/a.md"])


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
