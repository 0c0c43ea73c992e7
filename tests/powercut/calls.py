"""What strace tells of a command, call by call, with all bytes."""

import re
import subprocess
from collections import namedtuple

# All that changes files or says which one is meant. What only reads is left out: it would double the log.
TRACED = (
    "open,openat,openat2,creat,close,dup,dup2,dup3,fcntl,chdir,fchdir,lseek,mmap,"
    "write,pwrite64,writev,pwritev,pwritev2,copy_file_range,sendfile,ioctl,ftruncate,truncate,fallocate,"
    "mkdir,mkdirat,rmdir,unlink,unlinkat,rename,renameat,renameat2,link,linkat,symlink,symlinkat,"
    "chmod,fchmod,fchmodat,utimensat,fsync,fdatasync,syncfs,sync"
).split(",")

# `result` is never negative: a call that failed changed nothing. A text among the arguments stands in quotes.
Call = namedtuple("Call", "name arguments result timeNs")

LINE = re.compile(r"(\d+) +(\d+)\.(\d{6}) (.*)")
WHOLE = re.compile(r"(\w+)\((.*)\) += (-?\d+|0x[0-9a-f]+|\?)")
UNFINISHED = " <unfinished ...>"
RESUMED = re.compile(r"<\.\.\. \w+ resumed>(.*)")


def split_arguments(text):
    """At the commas that are within no bracket; texts are all escapes and hold neither."""
    parts, depth, begin = [], 0, 0
    for place, character in enumerate(text):
        if character in "[{(":
            depth += 1
        elif character in "]})":
            depth -= 1
        elif character == "," and depth == 0:
            parts.append(text[begin:place].strip())
            begin = place + 1
    return [*parts, text[begin:].strip()]


def split_quickly(text):
    """The same, without a look at each character of long texts."""
    texts = []

    def hide(match):
        texts.append(match.group(0))
        return f'"{len(texts) - 1}"'

    parts = split_arguments(re.sub(r'"[^"]*"', hide, text))
    return [re.sub(r'"(\d+)"', lambda match: texts[int(match.group(1))], part) for part in parts]


def bytes_of(argument):
    """The texts in an argument, one after the other."""
    return b"".join(bytes.fromhex(text.replace("\\x", "")) for text in re.findall(r'"([^"]*)"', argument))


def calls_in(log):
    """The calls that did something, in the order in which they ended."""
    begun = {}
    for line in log.splitlines():
        match = LINE.fullmatch(line)
        if not match:
            raise ValueError(f"strace says what nobody understands: {line[:200]}")
        thread, seconds, microseconds, text = match.groups()
        if text.startswith(("+++", "---")):
            continue
        if text.endswith(UNFINISHED):
            begun[thread] = text[: -len(UNFINISHED)]
            continue
        if resumed := RESUMED.match(text):
            text = begun.pop(thread) + resumed.group(1)
        whole = WHOLE.match(text)
        if not whole:
            raise ValueError(f"strace says what nobody understands: {line[:200]}")
        name, arguments, result = whole.groups()
        if result == "?" or result.startswith("-"):
            continue
        time_ns = (int(seconds) * 1_000_000 + int(microseconds)) * 1000
        yield Call(name, split_quickly(arguments), int(result, 0), time_ns)


def trace(strace, names, repository, arguments):
    """Runs the command in the repository; gives how it ended and its calls."""
    log = repository.folder.with_name(repository.folder.name + "-calls")
    options = ["-f", "-qq", "-ttt", "-xx", "-s", "1000000000", "-e", f"trace={','.join(names)}", "-o", str(log)]
    result = repository.run(*arguments, tracer=[strace, *options])
    calls = list(calls_in(log.read_text()))
    log.unlink()
    return result, calls


def known_names(strace):
    """Of the traced ones those that this machine has."""
    command = [strace, "-qq", "-e"]
    return [n for n in TRACED if subprocess.run([*command, f"trace={n}", "true"], capture_output=True).returncode == 0]
