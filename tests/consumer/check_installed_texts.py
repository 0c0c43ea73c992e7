#!/usr/bin/env python3
"""Compares the installed manual pages and completion scripts with what the installed program prints.

Usage: check_installed_texts.py PROGRAM PAGES DATA
"""

import os
import subprocess
import sys
from pathlib import Path

program, pages, data = sys.argv[1], Path(sys.argv[2]), Path(sys.argv[3])


def printed(*arguments):
    environment = {**os.environ, "LC_ALL": "C", "LANGUAGE": ""}
    return subprocess.run([program, *arguments], check=True, stdout=subprocess.PIPE, env=environment).stdout


commands = printed("manual", "--list").decode().split()
expected = {pages / f"qrv-{name}.1": printed("manual", name) for name in commands}
expected[pages / "qrv.1"] = printed("manual")
expected[data / "bash-completion/completions/qrv"] = printed("completion", "bash")
expected[data / "zsh/site-functions/_qrv"] = printed("completion", "zsh")
expected[data / "fish/vendor_completions.d/qrv.fish"] = printed("completion", "fish")

problems = []
for file, text in expected.items():
    if not file.is_file():
        problems.append(f"{file} is missing")
    elif not text or file.read_bytes() != text:
        problems.append(f"{file} is not what the program prints")
problems += [f"{page} is a page of no command" for page in pages.iterdir() if page not in expected]
sys.exit("\n".join(problems) or 0)
