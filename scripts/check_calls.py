#!/usr/bin/env python3
"""Calls that the library must not make. Prints each one found.

A library lives in its host's process: it does not print, end the process, or change its locale or signals.
And user data is written in one way only, ut::TextFile, which never leaves a half-written file.
"""

import re
import sys

import sources

# (what is wrong, folders, pattern, files where it is right and why)
RULES = [
    (
        "writes files past the one atomic routine (ut::TextFile)",
        ("common", "engine", "cli"),
        r"\b(?:w?ofstream|w?fstream|w?filebuf|QFile|QSaveFile|QTemporaryFile|QSettings)\b"
        r"|\b(?:fopen|fdopen|freopen|creat|openat|pwrite|truncate|ftruncate|rename|renameat2?|unlink"
        r"|unlinkat|mkstemp|remove_all|copy_file|resize_file)\s*\("
        r"|(?<![\w.>:])::(?:open|write|remove)\b",
        {
            "common/repository/PropertyProjectName.cpp": "the name file goes through Qt by agreement",
            "common/repository/ActivityLog.cpp": "the log is appended to, through Qt by agreement",
            "engine/maintenance/HistoryRebuild.cpp": "puts a damaged database aside, beneath the root's handle",
            "engine/journal/FileStep.cpp": "a NewFile takes the place of a file that was looked at",
            "cli/shell/Output.cpp": "occupies closed standard streams, with /dev/null",
        },
    ),
    (
        "std::filesystem stops at names that are not text; use ut::FileName and ut::Dir",
        ("common",),
        r"\bstd::filesystem\b",
        {"common/config/ConfigData.cpp": "compares two folders by device and inode, which ut does not"},
    ),
    (
        "the library prints nothing",
        ("common", "platform", "sys"),
        r"\b(?:printf|wprintf|fprintf|fwprintf|vprintf|vfprintf|puts|putchar|fputs|fputws|perror|syslog"
        r"|cout|cerr|clog|wcout|wcerr|wclog|qDebug|qInfo|qWarning|qCritical|qFatal|wxLog\w+)\b",
        {},
    ),
    (
        "the library does not end its host",
        ("common", "platform", "sys"),
        r"\b(?:exit|_exit|_Exit|quick_exit|abort|terminate|raise|kill|assert)\s*\(",
        {
            "sys/ScopedFault.cpp": "tests kill the process at a chosen call",
            "sys/Interruption.cpp": "only the program makes one, and ends by the signal that it was sent",
        },
    ),
    (
        "the library leaves its host's locale alone",
        ("common", "platform", "sys", "engine", "cli"),
        r"\b(?:setlocale|uselocale|newlocale)\b|\blocale::global\b",
        {},
    ),
    (
        "the library handles no signal",
        ("common", "platform", "sys"),
        r"\b(?:signal|sigaction|sigprocmask|set_terminate|atexit|at_quick_exit)\s*\(",
        {"sys/Interruption.cpp": "only the program makes one, while it must not be cut off"},
    ),
    (
        "the library starts no thread or process",
        ("common", "platform", "sys"),
        r"\bstd::(?:thread|jthread|async)\b|\b(?:pthread_create|fork|vfork|execv\w*|posix_spawn\w*|system|popen)\s*\("
        r"|\b(?:QThread|QProcess|QtConcurrent|QTimer)\b",
        {},
    ),
]


def problems(files, read=sources.read):
    found = []
    for name in sources.cpp_files(files, ("common", "platform", "sys", "engine", "cli")):
        lines = sources.code_only(read(name)).splitlines()
        for complaint, folders, pattern, exceptions in RULES:
            if name.split("/")[0] not in folders or name in exceptions:
                continue
            for number, line in enumerate(lines, 1):
                match = re.search(pattern, line)
                if match and not re.match(r"\s*#\s*include", line):
                    found.append(f"{name}:{number}: {complaint}: {match.group()}")
    return found


if __name__ == "__main__":
    sys.exit(sources.report(problems(sources.project_files())))
