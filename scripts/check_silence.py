#!/usr/bin/env python3
"""Looks up in linked libraries what they ask of others, and prints what a guest in its host's process must not.

    check_silence.py LIBRARY...

check_calls.py sees what the sources say; this sees what became of them, headers of others included.
"""

import pathlib
import re
import sys

import library_names
import sources

PLATFORM = "libqrv-platform.so"
COMMON = "libqrv-common.so"
SYS = "libqrv-sys.so"
ENGINE = "libqrv-engine.so"

# (what is wrong, libraries, pattern for the whole name without parameters, what is right and why)
RULES = [
    (
        "prints",
        (COMMON, PLATFORM, SYS, ENGINE),
        r"(?:__)?v?[fd]?w?printf(?:_chk)?|f?puts(?:_unlocked)?|fputws|f?putw?c(?:har)?(?:_unlocked)?|perror"
        r"|(?:__)?v?syslog(?:_chk)?|v?warnx?|psignal|stdout|stderr|_IO_2_1_std(?:out|err)_"
        r"|std::w?(?:cout|cerr|clog)|std::ios_base::Init::.*|QMessageLogger::.*|qt_message_output|wxLog.*",
        {},
    ),
    (
        "ends the process",
        (COMMON, PLATFORM, SYS, ENGINE),
        r"_?exit|_Exit|quick_exit|abort|v?errx?|raise|t?g?kill|longjmp|std::quick_exit"
        r"|__assert\w*|std::__glibcxx_assert_fail|qt_assert(?:_x)?|__stack_chk_fail|__fortify_fail",
        {
            (SYS, "raise"): "ScopedFault: tests kill the process at a chosen call; Interruption: the program, which alone "
                            "makes one, ends by the signal that it was sent",
            (COMMON, "std::__glibcxx_assert_fail"): "assertions of the standard library in preset dev",
            (PLATFORM, "std::__glibcxx_assert_fail"): "assertions of the standard library in preset dev",
            (SYS, "std::__glibcxx_assert_fail"): "assertions of the standard library in preset dev",
            (ENGINE, "std::__glibcxx_assert_fail"): "assertions of the standard library in preset dev",
            (COMMON, "qt_assert"): "assertions of Qt's headers in preset dev",
            (PLATFORM, "qt_assert"): "assertions of Qt's headers in preset dev",
        },
    ),
    (
        "changes the locale",
        (COMMON, PLATFORM, SYS, ENGINE),
        r"setlocale|uselocale|newlocale|std::locale::global|QLocale::setDefault|wxLocale::.*",
        {},
    ),
    (
        "handles signals or the process's end",
        (COMMON, PLATFORM, SYS, ENGINE),
        r"(?:bsd_|sysv_|__sysv_)?signal|sigaction|sigaltstack|(?:pthread_)?sig(?:proc)?mask|on_exit"
        r"|at(?:_quick_)?exit|__cxa_at_quick_exit|std::set_(?:terminate|new_handler|unexpected)"
        r"|qInstallMessageHandler|sys::Interruption::Interruption",
        {(SYS, "sigaction"): "Interruption: the program, which alone makes one, must not be cut off"},
    ),
    (
        "starts a thread or a process",
        (COMMON, PLATFORM, SYS, ENGINE),
        r"pthread_create|thrd_create|clone3?|_?v?[fF]ork|f?exec(?:[lv]p?e?|veat)|posix_spawnp?|system|popen"
        r"|std::thread::.*|QThread(?:Pool)?::.*|QtConcurrent::.*|QProcess::.*|QTimer::.*|wxThread.*|wxExecute",
        {(ENGINE, name): "a look lists the tree meanwhile, a check reads on all cores; the threads have ended when the "
                         "operation has" for name in (
            "std::thread::_M_start_thread", "std::thread::join", "std::thread::_State", "std::thread::_State::~_State",
            "std::thread::hardware_concurrency")},
    ),
    (
        "changes what belongs to the process",
        (COMMON, PLATFORM, SYS, ENGINE),
        r"setenv|putenv|unsetenv|clearenv|qputenv|qunsetenv|f?chdir|umask|set(?:re|res|e)?[ug]id|srand(?:om)?"
        r"|QDir::setCurrent|QCoreApplication::(?:set\w+|QCoreApplication)|sys::setCreationMask",
        {
            (SYS, "umask"): "setCreationMask: the engine shares a repository with a group",
            (ENGINE, "sys::setCreationMask"): "SharedMode: only when the caller says so",
        },
    ),
    (
        "touches the file system past the platform",
        (COMMON,),
        r"open(?:at)?(?:64)?|creat(?:64)?|fopen(?:64)?|rename(?:at2?)?|unlink(?:at)?|remove|mkdir(?:at)?|rmdir"
        r"|f?truncate(?:64)?|mkstemp\w*|std::filesystem::(?!equivalent$|__cxx11::path::).*|std::basic_[io]?f(?:stream|ilebuf)<.*"
        r"|QSaveFile::.*|QTemporaryFile::.*|QFile::(?:open|rename|remove|copy|link)|QDir::(?:mk|rm|remove)\w*",
        {},
    ),
]


def problems(library, asked):
    """The faults of the library of that name, which asks for the names `asked`."""
    found = []
    for name in asked:
        plain = re.sub(r"^(?:typeinfo|vtable) for ", "", name).split("(")[0]
        for complaint, libraries, pattern, exceptions in RULES:
            if (library in libraries and (library, plain) not in exceptions
                    and re.fullmatch(pattern, plain)):
                found.append(f"{library} {complaint}: {name}")
    return found


def main(libraries):
    found = []
    for library in libraries:
        asked = library_names.of_library(library, "--undefined-only")
        found += problems(re.sub(r"(?<=\.so)[.\d]*$", "", pathlib.Path(library).name), asked)
    return sources.report(found)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
