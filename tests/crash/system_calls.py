"""The system calls of a command, as the program strace tells them, and what can be done to each."""

import re
import shutil
import subprocess
import sys
from collections import Counter, namedtuple

# What changes the disk, or lets go of a file that was changed.
CHANGING = (
    "creat,mkdir,mkdirat,rmdir,write,pwrite64,writev,pwritev,copy_file_range,sendfile,ioctl,fsync,fdatasync,syncfs,"
    "fchmod,fchmodat,chmod,utimensat,ftruncate,truncate,fallocate,rename,renameat,renameat2,link,linkat,symlink,"
    "unlink,unlinkat"
).split(",")
# Of these only every so often one is met.
OTHER = "openat,openat2,read,pread64,close,fcntl,flock,newfstatat,getdents64,lseek".split(",")

Call = namedtuple("Call", "name number line")


def find_strace():
    strace = shutil.which("strace")
    if strace is None:
        sys.exit("the program strace is missing")
    return strace


def available(strace, names):
    """The names that this machine knows: not every one has each of them."""
    command = [strace, "-qq", "-e"]
    return [n for n in names if subprocess.run([*command, f"trace={n}", "true"], capture_output=True).returncode == 0]


def calls_of(strace, repository, arguments, names):
    """What the first thread calls, in order, from where it finds the repository, without the loader's work; and the
    names of those calls whose numbers another run may give to others. A sanitizer asks through a pipe whether memory
    can be read, and how often is left to chance; what it calls itself is left out."""
    log = repository.folder.with_name(repository.folder.name + "-trace")
    tracer = [strace, "-f", "-qq", "-y", "-s", "200", "-e", f"trace={','.join(names)}", "-o", str(log)]
    result = repository.run(*arguments, tracer=tracer)
    counts, calls, has_begun = Counter(), [], False
    first, by_chance = None, set()
    for line in log.read_text(errors="replace").splitlines():
        match = re.match(r"(\d+) +(\w+)\(", line)
        if not match:
            continue
        first = first or match.group(1)
        if match.group(1) != first:
            continue
        counts[match.group(2)] += 1
        has_begun = has_begun or ".qrv" in line
        if re.search(r"\(([3-9]|\d\d+)<pipe:", line):
            by_chance.add(match.group(2))
        elif has_begun:
            calls.append(Call(match.group(2), counts[match.group(2)], line.split(" ", 1)[1]))
    return result, calls, by_chance


def injecting(strace, call, effect, log="/dev/null"):
    what = f"inject={call.name}:{effect}:when={call.number}"
    return [strace, "-f", "-qq", "-o", str(log), "-e", f"trace={call.name}", "-e", what]
