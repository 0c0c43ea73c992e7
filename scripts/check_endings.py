#!/usr/bin/env python3
"""Looks up in object files what they leave to be destroyed when the process, or a thread, ends.

    check_endings.py OBJECT...

A host may hold on to what the library gave it longer than the library's own static objects live: an application
to what an extension opened that it loaded, a thread to what it opened itself. What is let go of then needs
constants, not objects that have ended. Who destroys an object of static storage, or of a thread, says so in its
file, which asks for one of these functions.
"""

import re
import subprocess
import sys

import sources

ENDINGS = re.compile(r"__cxa_(?:thread_)?atexit(?:_impl)?")

# Who may, and why nothing goes wrong.
EXCEPTIONS = {
    "common/config/Config.cpp.o":
        "the registry of loaded configurations: loading one asks first whether it has ended, letting go never asks it",
}


def place(path):
    """Where the object file's source stands in the project."""
    return re.sub(r"^.*(?=\b(?:common|platform|sys|engine)/)", "", re.sub(r"CMakeFiles/[^/]+\.dir/(?:\./)?", "", path))


def problems(table):
    """The faults of the object files in what nm printed of them."""
    for line in table.splitlines():
        path, _, asked = line.partition(":")
        function = asked.split()[-1]
        if ENDINGS.fullmatch(function) and place(path) not in EXCEPTIONS:
            yield f"{place(path)}: has an object that is destroyed when the process or a thread ends: {function}"


def main(paths):
    table = subprocess.run(["nm", "--print-file-name", "--undefined-only", *paths],
                           check=True, capture_output=True, text=True).stdout
    return sources.report(list(problems(table)))


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
