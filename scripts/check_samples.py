#!/usr/bin/env python3
"""The samples in docs/formats are the files that the tests read and write. Prints where they differ.

A sample is a fenced block below a line that ends in a link to its file and a colon. A block always ends with a
line feed; whether the file does, its page says. Every file of samples must be named by a page.
"""

import pathlib
import posixpath
import re
import sys

import sources

PAGES = "docs/formats/"
_LINK = re.compile(r"\]\((?P<target>[^)\s]+\.sample)\)")
_BLOCK = re.compile(r"\]\((?P<target>[^)\s]+\.sample)\)\)?:\n\n```\w*\n(?P<text>.*?)^```$",
                    re.DOTALL | re.MULTILINE)


def path_of(page, target):
    return posixpath.normpath(posixpath.join(posixpath.dirname(page), target))


def difference(text, expected):
    """The number of the first line that differs, or None."""
    if text in (expected, expected + "\n"):
        return None
    shown, real = text.split("\n"), expected.split("\n")
    same = (number for number, (left, right) in enumerate(zip(shown, real), 1) if left != right)
    return next(same, min(len(shown), len(real)))


def page_problems(page, text, files, read):
    found = [f"{page}: links to {path_of(page, link['target'])}, which is not there"
             for link in _LINK.finditer(text) if path_of(page, link["target"]) not in files]
    blocks = list(_BLOCK.finditer(text))
    if not blocks:
        found.append(f"{page}: shows no sample")
    for block in blocks:
        sample = path_of(page, block["target"])
        line = difference(block["text"], read(sample)) if sample in files else None
        if line is not None:
            start = text.count("\n", 0, block.start("text"))
            found.append(f"{page}:{start + line}: differs from {sample}:{line}")
    return found


def problems(files, read=sources.read):
    files = set(files)
    pages = sorted(name for name in files if name.startswith(PAGES) and name.endswith(".md"))
    found, named = [], set()
    for page in pages:
        text = read(page)
        found += page_problems(page, text, files, read)
        named |= {path_of(page, link["target"]) for link in _LINK.finditer(text)}
    samples = {name for name in files if name.startswith("tests/") and name.endswith(".sample")}
    return found + [f"{name}: no page in {PAGES} names it" for name in sorted(samples - named)]


def read_bytes(name):
    """Unlike `sources.read`, keeps every line end as it is."""
    return (pathlib.Path(sources.ROOT) / name).read_bytes().decode("utf-8")


if __name__ == "__main__":
    sys.exit(sources.report(problems(sources.project_files(), read_bytes)))
