#!/usr/bin/env python3
"""Lengths of files and functions. Prints each one above its limit that size_exceptions.txt does not name. Functions
are those of C++; files are also scripts and what describes the build.

A line of size_exceptions.txt is "path: reason" for a file or "path function: reason" for a function. A line
that excuses nothing any more is a problem too.
"""

import subprocess
import sys

import sources

FOLDERS = ("common", "platform", "sys", "engine", "cli", "tests", "bench", "fuzz")
SCRIPTS = (".py", ".sh", ".cmake", "CMakeLists.txt", ".ci/run")
LONGEST_FUNCTION = 60
LONGEST_FILE = 350
LONGEST_HEADER = 150
EXCEPTIONS = "scripts/size_exceptions.txt"


def longest(name):
    """How many lines the file may have."""
    is_of_users = name.startswith(("tests/", "bench/", "fuzz/"))
    return LONGEST_HEADER if name.endswith(".h") and not is_of_users else LONGEST_FILE


def parse_exceptions(text):
    """The set of excused "path" and "path function"; a line without a reason raises ValueError."""
    excused = set()
    for line in text.splitlines():
        if not line.strip() or line.startswith("#"):
            continue
        subject, colon, reason = line.partition(": ")
        if not colon or not reason.strip():
            raise ValueError(f"no reason given: {line}")
        excused.add(subject.strip())
    return excused


def parse_tags(output):
    """(path, function, first line, last line) of each function in the output of ctags."""
    functions = []
    for line in output.splitlines():
        fields = line.split("\t")
        if line.startswith("!") or len(fields) < 4:
            continue
        numbers = dict(field.split(":", 1) for field in fields[3:] if ":" in field)
        if "line" in numbers and "end" in numbers:
            functions.append((fields[1], fields[0], int(numbers["line"]), int(numbers["end"])))
    return functions


def functions_of(names, root=sources.ROOT):
    output = subprocess.run(
        ["ctags-universal", "--languages=C++", "--langmap=C++:.h.cpp", "--c++-kinds=f",
         "--fields=ne", "--excmd=number", "--sort=no", "-f", "-", "-L", "-"],
        cwd=root, input="\n".join(names), check=True, capture_output=True, text=True).stdout
    return parse_tags(output)


def problems(files, functions, excused, read=sources.read):
    found, used = [], set()

    def complain(subject, text):
        if subject in excused:
            used.add(subject)
        else:
            found.append(text)

    for name in files:
        count = read(name).count("\n")
        if count > longest(name):
            complain(name, f"{name}: {count} lines, at most {longest(name)}")
    for name, function, first, last in functions:
        count = last - first + 1
        if count > LONGEST_FUNCTION:
            complain(f"{name} {function}",
                     f"{name}:{first}: {function} has {count} lines, at most {LONGEST_FUNCTION}")
    for subject in sorted(excused - used):
        found.append(f"{EXCEPTIONS}: excuses nothing: {subject}")
    return found


def main():
    files = sources.project_files()
    of_cpp = sources.cpp_files(files, FOLDERS)
    scripts = [name for name in files if name.endswith(SCRIPTS)]
    excused = parse_exceptions(sources.read(EXCEPTIONS))
    return sources.report(problems(of_cpp + scripts, functions_of(of_cpp), excused))


if __name__ == "__main__":
    sys.exit(main())
