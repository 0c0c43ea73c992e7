#!/usr/bin/env python3
"""Blocks of code and output in a document, which must stand in the files that they quote.

    check_quotes.py DOCUMENT FOLDER...

Each fenced block of DOCUMENT that names its language must be whole lines of a file of that kind in one of
the folders: "cpp" of a *.cpp or *.h, "cmake" of a CMakeLists.txt, "text" of a *.txt. Blocks of commands
("sh") are not looked at. Prints the first line of each block that is found nowhere.
"""

import pathlib
import re
import sys

KINDS = {"cpp": ("*.cpp", "*.h"), "cmake": ("CMakeLists.txt",), "text": ("*.txt",)}
BLOCK = re.compile(r"^```(\w+)\n(.*?)^```$", re.DOTALL | re.MULTILINE)


def blocks(document):
    """(language, text) of each block that is a quotation."""
    return [(language, text) for language, text in BLOCK.findall(document) if language != "sh"]


def stands_in(text, source):
    """Whether `text` is whole lines of `source`."""
    return ("\n" + text) in ("\n" + source)


def problems(document, sources):
    """What is wrong in the document; `sources` gives the texts of the files for each language."""
    quoted = blocks(document)
    found = [] if quoted else ["quotes nothing"]
    for language, text in quoted:
        if language not in sources:
            found.append(f"a block of {language}, of which no file is known")
        elif not any(stands_in(text, source) for source in sources[language]):
            found.append(f"stands in no file: {text.splitlines()[0] if text else '(nothing)'}")
    return found


def read_sources(folders):
    return {language: [path.read_text(encoding="utf-8")
                       for folder in folders for pattern in patterns
                       for path in sorted(pathlib.Path(folder).glob(pattern))]
            for language, patterns in KINDS.items()}


def main():
    document, *folders = sys.argv[1:]
    found = problems(pathlib.Path(document).read_text(encoding="utf-8"), read_sources(folders))
    for problem in found:
        print(f"{document}: {problem}")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
