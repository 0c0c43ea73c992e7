"""What the checks share: which files the project has, and their code without comments and texts."""

import pathlib
import re
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent


def project_files(root=ROOT):
    """All files of the project, relative to its root: tracked ones, and new ones that are not ignored."""
    listed = subprocess.run(
        ["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
        cwd=root, check=True, capture_output=True, text=True).stdout
    return sorted({name for name in listed.split("\0") if name and (root / name).is_file()})


def cpp_files(files, folders):
    """Those of `files` that are C++ and lie in one of the top folders."""
    return [name for name in files
            if name.endswith((".h", ".cpp")) and name.split("/")[0] in folders]


_TOKEN = re.compile(
    r"""//[^\n]*|/\*.*?\*/"""
    r'''|R"(?P<end>[^()\\\s]*)\(.*?\)(?P=end)"'''
    r"""|"(?:\\.|[^"\\\n])*"|(?<![0-9a-fA-F])'(?:\\.|[^'\\\n])+'""",
    re.DOTALL)


def _blank(match):
    token = match.group()
    lines = "\n" * token.count("\n")
    return lines if token.startswith("/") else '""' + lines


def code_only(text):
    """`text` with comments taken out and the contents of texts and characters emptied. Lines stay where
    they are. Include lines in <> stay whole."""
    return _TOKEN.sub(_blank, text)


def read(name, root=ROOT):
    return (root / name).read_text(encoding="utf-8")


def report(problems):
    """Prints the problems, one a line, and answers the exit status."""
    for problem in problems:
        print(problem)
    return 1 if problems else 0
