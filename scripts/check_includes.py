#!/usr/bin/env python3
"""Who may include whom. Prints each include that the tables below do not allow."""

import re
import sys

import sources

# Room -> the other rooms that it may include, each edge with its reason. A new edge is a new line here. Every
# room may include itself; every room of common may include platform; every room of engine and cli may include common,
# platform and sys, and every room of cli those of engine. There is no circle in it.
EDGES = {
    "platform/kernel": {},
    "platform/ut": {
        "platform/kernel": "paths and times are the kernel's types",
        "sys": "the system's calls, and files that appear as a whole",
    },
    "platform/qut": {
        "platform/kernel": "converts the kernel's texts",
        "platform/ut": "opens files by their host names",
    },
    "sys": {},
    "common/base": {},
    "common/json": {"common/base": "errors and their texts"},
    "common/repository": {"common/base": "errors and their texts"},
    "common/history": {"common/base": "errors and their texts"},
    "common/config": {
        "common/base": "errors and their texts",
        "common/json": "the file is JSON",
        "common/repository": "IoInterface, which is told how a write went",
    },
    "common/worktree": {
        "common/base": "errors and their texts",
        "common/repository": "files are found below a root",
    },
    "common/server": {
        "common/base": "errors and their texts",
        "common/json": "the records are JSON",
        "common/worktree": "File and RepoFile stand in the records",
    },
    "common/state": {
        "common/base": "errors and their texts",
        "common/json": "the file is JSON",
        "common/repository": "the file's place, and IoInterface",
        "common/worktree": "staged files and their changes stand in the state",
    },
    "common/storage": {
        "common/base": "errors and their texts",
        "common/repository": "the stores' places",
        "common/server": "repository files name stored versions",
        "common/state": "a merge records conflicts",
        "common/worktree": "files and their changes",
    },
    "engine/base": {},
    "engine/paths": {"engine/base": "errors and their texts"},
    "engine/tree": {
        "engine/base": "errors and their texts",
        "engine/paths": "files are named by checked paths",
    },
    "engine/database": {"engine/base": "errors and their texts"},
    "engine/storage": {
        "engine/base": "digests, errors and their texts",
        "engine/database": "drawing stores and the packs of older programs are databases",
        "engine/paths": "working files and stored versions are named from outside",
    },
    "engine/history": {
        "engine/base": "digests, errors and their texts",
        "engine/database": "the history is one",
        "engine/paths": "commits name files and stored versions",
        "engine/tree": "each commit has one",
    },
    "engine/repository": {
        "engine/base": "errors and their texts, and who asks",
        "engine/history": "is a part of what is opened",
        "engine/paths": "tells files of ours from strays by their names",
        "engine/storage": "is a part of what is opened",
    },
    "engine/worktree": {
        "engine/base": "errors and their texts, and who is told",
        "engine/history": "the tree is compared with commits, and becomes one",
        "engine/paths": "working files are named from outside",
        "engine/repository": "is opened, locked and logged to",
        "engine/storage": "files are stored and brought back",
        "engine/tree": "is brought to another one",
    },
    "engine/journal": {
        "engine/base": "errors and their texts, and who is told",
        "engine/history": "what is to be done is noted there",
        "engine/paths": "stored versions are named from outside",
        "engine/repository": "is opened",
        "engine/storage": "files are brought back from there",
        "engine/tree": "leads from one tree to another",
        "engine/worktree": "the files that are changed",
    },
    "engine/diff": {
        "engine/base": "errors and their texts",
        "engine/history": "compares commits",
        "engine/paths": "stored versions are named from outside",
        "engine/storage": "reads what is compared",
        "engine/tree": "is what is compared",
        "engine/worktree": "compares working files",
    },
    "engine/maintenance": {
        "engine/base": "errors and their texts, and who is told",
        "engine/database": "is asked for damage, and a failure of it ends one step",
        "engine/history": "is checked, and made anew",
        "engine/journal": "leads from one tree to another",
        "engine/paths": "stored versions are named from outside",
        "engine/repository": "lists what lies there",
        "engine/storage": "is checked, packed and collected",
        "engine/tree": "HEAD is brought to another one",
        "engine/worktree": "collection keeps what the working tree needs",
    },
    "engine/operations": {
        "engine/base": "errors and their texts, and who is told",
        "engine/diff": "what differs can be asked",
        "engine/history": "branches, tags and commits",
        "engine/journal": "changes of many files are noted before they begin",
        "engine/maintenance": "a repository is checked, made smaller and made anew",
        "engine/paths": "stored versions are named from outside",
        "engine/repository": "what was done is logged",
        "engine/storage": "contents are given out",
        "engine/tree": "is what is merged",
        "engine/worktree": "most work on working files",
    },
    "cli/user": {},
    "cli/terminal": {},
    "cli/shell": {
        "cli/terminal": "notes and progress appear there",
        "cli/user": "answers for the person",
    },
    "cli/text": {
        "cli/terminal": "colours",
        "cli/user": "warns at the sizes that the person has set",
    },
    "cli/commands": {
        "cli/shell": "arguments and results",
        "cli/terminal": "notes and progress",
        "cli/text": "puts results into words",
        "cli/user": "settings, the registry and the author",
    },
}

# The foundations of a part: all of its rooms see everything public of these.
GROUNDS = {"common": ("platform",), "engine": ("common", "platform", "sys"),
           "cli": ("common", "platform", "sys", "engine"), "platform": (), "sys": ()}

# These see everything public, and what they test, measure or fuzz.
USERS = ("tests", "bench", "fuzz")
# The program begins here and puts its rooms together.
MAIN = "cli/Main.cpp"

# A header whose name ends in Internal.h belongs to its folder, but for these: who else, and why.
SHARED_INTERNAL_HEADERS = {
    "engine/operations/CommitInternal.h": ("cli", "the commands work on an open tree"),
    "common/base/MessageInternal.h": ("common", "every folder makes messages"),
    "common/repository/DeferredWriteInternal.h": ("common", "writes what a host let go of"),
    "common/json/ParseObjectInternal.h": ("common", "reads a file of ours as one object"),
    "common/json/RowScannerInternal.h": ("common/state", "a state is read row by row"),
    "common/json/RowTextInternal.h": ("common/state", "a state is written row by row"),
    "engine/history/RowsInternal.h": ("engine/maintenance", "a history is made anew row by row"),
    "engine/history/SumsInternal.h": ("engine/maintenance", "the rows that are made anew get their sums"),
    "platform/ut/RegularFileInternal.h": ("platform/qut", "opens only what ut::File opens"),
    "sys/CallsInternal.h": ("platform/ut", "a host's paths lead through links, those of a Folder do not"),
    "sys/EntriesInternal.h": ("platform/ut", "lists files apart from folders"),
    "sys/TransferInternal.h": ("platform/ut", "what was read before a failure counts"),
}

# Tests, benchmarks and fuzz targets look inside the folder that they are about; the program does not.
SEE_INTERNAL_HEADERS = ("tests", "bench", "fuzz")

STANDARD_HEADERS = set("""
algorithm any array atomic barrier bit bitset cctype cerrno cfenv cfloat charconv chrono cinttypes
climits clocale cmath codecvt compare complex concepts condition_variable coroutine csetjmp csignal
cstdarg cstddef cstdint cstdio cstdlib cstring ctime cuchar cwchar cwctype deque exception
execution expected filesystem format forward_list fstream functional future initializer_list iomanip ios
iosfwd iostream istream iterator latch limits list locale map memory memory_resource mutex new
numbers numeric optional ostream queue random ranges ratio regex scoped_allocator semaphore set
shared_mutex source_location span sstream stack stdexcept stop_token streambuf string string_view
system_error thread tuple type_traits typeindex typeinfo unordered_map unordered_set utility valarray
variant vector version
""".split())

# Libraries from outside: pattern of the header, and which folders use it.
LIBRARIES = [
    (r"Q[A-Z]\w*", ("platform", "common/repository", "common/config", "common/history", "engine", "cli")),
    (r"wx/\w+\.h", ("common/base", "engine", "cli")),
    (r"openssl/\w+\.h", ("common/worktree", "engine")),
    # Each source that includes it takes ten seconds more to compile.
    (r"CLI/\w+\.hpp", ("cli/shell/CommandLine.cpp", "cli/shell")),
    (r"sqlite3\.h", ("engine", "cli")),
    (r"zstd\.h", ("engine", "cli")),
]

# Only platform/ and sys/ know the system. The exceptions, by file: what they may include or ask.
SYSTEM_EXCEPTIONS = {
    "common/repository/RootPath.cpp": {"windows.h", "_WIN32"},  # hides ".qrv" there
}
SYSTEM_FOLDERS = ("platform", "sys", "tests", "bench", "fuzz")
SYSTEM_MACRO = re.compile(
    r"^\s*#\s*(?:if|ifdef|ifndef|elif)\b.*?\b(_WIN32|_WIN64|WIN32|__linux__|__linux|__unix__|unix|"
    r"__APPLE__|__MACH__|__CYGWIN__|__MINGW32__|__GLIBC__|_POSIX_\w+|Q_OS_\w+)\b")

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')


def part_of(name):
    return name.split("/")[0]


def folder_of(name):
    """The room that a file belongs to: two levels deep where a part has rooms."""
    folders = name.split("/")[:-1]
    depth = 1 if part_of(name) in ("sys", *USERS) else 2
    return "/".join(folders[:depth])


def allowed_folder(source, target):
    source_folder, target_folder = folder_of(source), folder_of(target)
    if source_folder == target_folder:
        return True
    if source == "common/common.h":
        return target_folder.startswith("common/")
    if part_of(source) in USERS:
        return part_of(target) not in USERS
    if source == MAIN and part_of(target) == "cli":
        return True
    return part_of(target) in GROUNDS[part_of(source)] or target_folder in EDGES.get(source_folder, {})


def own_include_problem(source, target):
    if not allowed_folder(source, target):
        return f"{folder_of(source)} may not include {folder_of(target)}: <{target}>"
    is_foreign = folder_of(source) != folder_of(target)
    if target.endswith("Internal.h") and is_foreign:
        if source.startswith(SEE_INTERNAL_HEADERS):
            return None
        users, _ = SHARED_INTERNAL_HEADERS.get(target, (None, None))
        if users is None or not source.startswith(users + "/"):
            return f"internal to {folder_of(target)}: <{target}>"
    return None


def foreign_include_problem(source, target):
    if target in STANDARD_HEADERS or folder_of(source).startswith(SYSTEM_FOLDERS):
        return None
    if target in SYSTEM_EXCEPTIONS.get(source, ()):
        return None
    for pattern, folders in LIBRARIES:
        if re.fullmatch(pattern, target):
            if source.startswith(folders):
                return None
            return f"{folder_of(source)} does not use this library: <{target}>"
    return f"system headers belong into platform/ or sys/: <{target}>"


def is_own(target):
    """Also the system has headers in "sys"; ours begin with a capital."""
    return bool(re.match(rf"(?:common|platform|engine|cli|{'|'.join(USERS)})/|sys/[A-Z]", target))


def include_problem(source, quote, target):
    if quote == '"':
        return f'write <> and the path from the root: "{target}"'
    if is_own(target):
        return own_include_problem(source, target)
    return foreign_include_problem(source, target)


def line_problem(source, line):
    """What is wrong with one line of the file `source`, or None."""
    include = INCLUDE.match(line)
    if include:
        return include_problem(source, *include.groups())
    macro = SYSTEM_MACRO.match(line)
    if macro and not source.startswith(SYSTEM_FOLDERS):
        if macro.group(1) not in SYSTEM_EXCEPTIONS.get(source, ()):
            return f"asks for the system outside platform/ and sys/: {macro.group(1)}"
    return None


def own_includes(text):
    matches = (INCLUDE.match(line) for line in text.splitlines())
    return [match.group(2) for match in matches if match and is_own(match.group(2))]


def circles(files, read):
    """The circles of files that include each other, each with its files in the order of the way."""
    graph = {name: own_includes(read(name)) for name in sources.cpp_files(files, (*GROUNDS, *USERS))}
    found, done = [], set()

    def follow(name, way):
        if name in way:
            found.append([*way[way.index(name):], name])
        if name in way or name in done:
            return
        for target in graph.get(name, ()):
            follow(target, [*way, name])
        done.add(name)

    for name in sorted(graph):
        follow(name, [])
    return [f"{way[0]}: includes itself: {' -> '.join(way)}" for way in found]


def problems(files, read=sources.read):
    found = []
    for name in sources.cpp_files(files, (*GROUNDS, *USERS)):
        for number, line in enumerate(read(name).splitlines(), 1):
            problem = line_problem(name, line)
            if problem:
                found.append(f"{name}:{number}: {problem}")
    return found + circles(files, read)


if __name__ == "__main__":
    sys.exit(sources.report(problems(sources.project_files())))
