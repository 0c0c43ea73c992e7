#!/usr/bin/env python3
"""Compares what a library exports with the list of what it is to export.

    check_exports.py LIST LIBRARY [--sanitized]    prints each difference
    check_exports.py LIST LIBRARY --update         makes the list what the library exports

A host binds to these names: one that is gone breaks it, and one that leaks will be used.
"""

import argparse
import pathlib
import sys

import library_names
import sources


OURS = ("common::", "qrv::")


def listed(text):
    return {line for line in text.splitlines() if line and not line.startswith("#")}


def is_type_description(name):
    return name.startswith(("typeinfo for ", "typeinfo name for ")) and name.split(" for ")[1].startswith(OURS)


def problems(exported, expected, sanitized=False):
    """`sanitized`: the sanitizers describe each polymorphic class that is used, also where nobody asks
    for its type; such a description more is no fault."""
    extra = [name for name in sorted(set(exported) - expected)
             if not (sanitized and is_type_description(name))]
    return ([f"exported, but not in the list: {name}" for name in extra]
            + [f"in the list, but not exported: {name}" for name in sorted(expected - set(exported))])


def updated(text, exported):
    """The list with its opening comment and the names that are exported."""
    comment = [line for line in text.splitlines() if line.startswith("#")]
    return "\n".join([*comment, *sorted(exported), ""])


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("list", type=pathlib.Path)
    parser.add_argument("binary")
    parser.add_argument("--sanitized", action="store_true")
    parser.add_argument("--update", action="store_true")
    arguments = parser.parse_args()

    exported = library_names.of_library(arguments.binary, "--defined-only")
    text = arguments.list.read_text(encoding="utf-8")
    if arguments.update:
        arguments.list.write_text(updated(text, exported), encoding="utf-8")
        return 0
    status = sources.report(problems(exported, listed(text), arguments.sanitized))
    if status:
        print(f"When this is meant: python3 {sys.argv[0]} {arguments.list} {arguments.binary} --update")
    return status


if __name__ == "__main__":
    sys.exit(main())
