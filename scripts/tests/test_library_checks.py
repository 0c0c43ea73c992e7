"""The checks of the linked libraries must see what they are there for: each is tried with what is allowed and with a
fault."""

import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))

import check_endings
import check_exports
import check_run_path
import check_silence
import library_names


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
        exported = ["common::a()", "common::b()", "typeinfo for common::C", "vtable for common::C", "typeinfo name for qrv::D",
                    "typeinfo for std::E"]
        self.assertEqual(len(self.problems(exported)), 4)
        self.assertEqual(self.problems(exported, sanitized=True),
                         ["exported, but not in the list: typeinfo for std::E",
                          "exported, but not in the list: vtable for common::C"])

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
            self.assertEqual(len(self.found(name, check_silence.PLATFORM)), 1, name)
            if name not in ("raise", "sigaction", "umask"):
                self.assertEqual(len(self.found(name, check_silence.SYS)), 1, name)

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
        self.assertEqual(self.found("raise", check_silence.SYS), [])
        self.assertEqual(self.found("sigaction", check_silence.SYS), [])
        self.assertEqual(self.found("sys::setCreationMask(unsigned int)", check_silence.ENGINE), [])
        self.assertEqual(self.found("umask", check_silence.ENGINE),
                         ["libqrv-engine.so changes what belongs to the process: umask"])
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


if __name__ == "__main__":
    unittest.main()
