#!/usr/bin/env python3
"""Runs clang-tidy on one file, unless it found nothing in the same file before.

Usage: tidy_file.py BUILD FILE. What is the same: all text that the compiler sees, with comments (they can silence a finding),
the command, the configuration and the program. Only verdicts without a finding are remembered, in QRV_TIDY_CACHE (default:
~/.cache/qrv-tidy; empty: nothing is remembered). Prints what clang-tidy prints, and ends as it ends.
"""

import hashlib
import json
import os
import shlex
import subprocess
import sys
import time
from pathlib import Path

CHECKED_DAYS = 60


def command_of(build, source):
    """How the file is compiled, and where; nothing for a file that is not built."""
    for entry in json.loads((build / "compile_commands.json").read_text()):
        if (Path(entry["directory"]) / entry["file"]).resolve() == source:
            return shlex.split(entry["command"]), entry["directory"]
    return None, None


def without_output(command):
    """The command, without the launcher and the files that it writes."""
    kept, skip = [], 0
    for word in command:
        if skip:
            skip -= 1
        elif word in ("-o", "-MF", "-MT", "-MQ"):
            skip = 1
        elif word not in ("-c", "-MD", "-MMD"):
            kept.append(word)
    return kept[1:] if Path(kept[0]).name == "ccache" else kept


def key_of(build, source):
    """The name of the verdict; nothing when the compiler refuses the file."""
    command, folder = command_of(build, source)
    if command is None:
        return None
    seen = subprocess.run([*without_output(command), "-E", "-C"], cwd=folder, capture_output=True)
    if seen.returncode != 0:
        return None
    version = subprocess.run(["clang-tidy", "--version"], capture_output=True).stdout
    configuration = subprocess.run(["clang-tidy", "--dump-config", str(source)], capture_output=True).stdout
    digest = hashlib.sha256()
    for part in (repr(without_output(command)).encode(), seen.stdout, version, configuration):
        digest.update(hashlib.sha256(part).digest())
    return digest.hexdigest()


def forget_old(cache):
    """Those that nobody has asked for lately."""
    oldest = time.time() - CHECKED_DAYS * 86400
    for verdict in cache.iterdir():
        if verdict.stat().st_mtime < oldest:
            verdict.unlink(missing_ok=True)


def main(build, source):
    folder = os.environ.get("QRV_TIDY_CACHE", str(Path.home() / ".cache/qrv-tidy"))
    key = key_of(build, source) if folder else None
    verdict = Path(folder) / key if key else None
    if verdict and verdict.exists():
        verdict.touch()
        return 0
    found = subprocess.run(["clang-tidy", "--quiet", "-p", str(build), str(source)], stdout=subprocess.PIPE)
    sys.stdout.buffer.write(found.stdout)
    if verdict and found.returncode == 0 and not found.stdout.strip():
        verdict.parent.mkdir(parents=True, exist_ok=True)
        verdict.touch()
        forget_old(verdict.parent)
    return found.returncode


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    sys.exit(main(Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve()))
