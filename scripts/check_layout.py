#!/usr/bin/env python3
"""Texts that name what lies in the metadata folder. Prints each one that does not stand in the one file for them.

Whoever moves a file of the repository, or asks what lies there, has to look at engine/paths/Layout.h alone.
"""

import re
import sys

import sources

LAYOUT = "engine/paths/Layout.h"
FOLDERS = ("engine", "cli")

# The folder itself, what lies below it, and the names that stand only there.
NAMES = re.compile(r"^\.qrv$|\.qrv/|\bqrv\.(?:db|state|log)\b|\bobjects\.pack\b")
# A comment may name them; a text is taken apart from it.
TEXT_OR_COMMENT = re.compile(
    r"""//[^\n]*|/\*.*?\*/|^\s*#\s*include[^\n]*|"(?P<text>(?:\\.|[^"\\\n])*)"|(?<![0-9a-fA-F])'(?:\\.|[^'\\\n])+'""",
    re.DOTALL | re.MULTILINE)


def problems(files, read=sources.read):
    found = []
    for name in sources.cpp_files(files, FOLDERS):
        if name == LAYOUT:
            continue
        code = read(name)
        for match in TEXT_OR_COMMENT.finditer(code):
            text = match.group("text")
            if text is not None and NAMES.search(text):
                number = code.count("\n", 0, match.start("text")) + 1
                found.append(f'{name}:{number}: "{text}" belongs into {LAYOUT}')
    return found


if __name__ == "__main__":
    sys.exit(sources.report(problems(sources.project_files())))
