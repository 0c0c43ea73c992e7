#!/usr/bin/env python3
"""Looks where linked files search for libraries: an empty or relative folder is the one that somebody happens to
be in, and what lies there would be loaded. Usage: check_run_path.py FILE..."""

import re
import subprocess
import sys


def problems(file, dynamic_section):
    for folders in re.findall(r"\((?:RUNPATH|RPATH)\) .*\[(.*)\]", dynamic_section):
        for folder in folders.split(":"):
            if not folder.startswith(("/", "$ORIGIN")):
                yield f"{file}: '{folder}' in the run path {folders}"


def dynamic_section(file):
    return subprocess.run(["readelf", "--dynamic", "--wide", file], check=True, capture_output=True, text=True).stdout


if __name__ == "__main__":
    found = [problem for file in sys.argv[1:] for problem in problems(file, dynamic_section(file))]
    sys.exit("\n".join(found) or (0 if len(sys.argv) > 1 else "no file is named"))
