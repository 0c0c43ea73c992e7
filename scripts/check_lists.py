#!/usr/bin/env python3
"""Lists that must be complete: sources and headers in CMake, headers in common.h, a README in each folder.

Prints what is missing or too much.
"""

import pathlib
import re
import sys

import sources

LONGEST_README = 10
UMBRELLA = "common/common.h"
# The libraries whose headers are installed.
LIBRARIES = ("common", "platform", "engine")
# Of the engine, beside all of its operations, what these name.
OF_OPERATIONS = ("engine/base/Caller.h", "engine/base/Digest.h", "engine/base/Export.h", "engine/diff/Difference.h",
                 "engine/diff/PatchLine.h", "engine/history/CommitEntry.h", "engine/maintenance/Collected.h",
                 "engine/maintenance/Rebuilt.h", "engine/maintenance/Verification.h", "engine/tree/TreeFile.h",
                 "engine/worktree/IgnoreRule.h", "engine/worktree/Unseen.h")
# A README of a folder of tests would only repeat that of the folder that it tests.
README_FOLDERS = ("bench", "cli", "common", "engine", "fuzz", "platform", "scripts", "sys")


def cmake_texts(files, read):
    """The text of each CMakeLists.txt by its folder, without comments."""
    return {str(pathlib.PurePosixPath(name).parent): re.sub(r"#[^\n]*", "", read(name))
            for name in files if name.endswith("CMakeLists.txt")}


def is_listed(name, cmake):
    """Whether the nearest CMakeLists.txt above that could list the file does."""
    path = pathlib.PurePosixPath(name)
    for folder in path.parents:
        text = cmake.get(str(folder))
        if text is None:
            continue
        relative = re.escape(str(path.relative_to(folder)))
        if re.search(rf"qrv_add_fuzz\({re.escape(path.stem)}\s", text):
            return True
        if re.search(rf"(?<![\w./-]){relative}(?![\w./-])", text):
            return True
    return False


def source_problems(files, cmake):
    """Only a header says by its name that it is internal."""
    named = [name for name in files if name.endswith(".cpp")]
    return ([f"{name}: in no CMakeLists.txt, so it is not built" for name in named if not is_listed(name, cmake)]
            + [f"{name}: a source and a test go without the word Internal" for name in named
               if name.endswith(("Internal.cpp", "InternalTest.cpp"))])


def is_public_header(name):
    folders = ("common/", "platform/", "engine/operations/")
    return name in OF_OPERATIONS or (name.startswith(folders) and name.endswith(".h")
                                     and not name.endswith("Internal.h"))


def hidden_includes(name, text):
    """What a public header includes of ours that is not installed with it."""
    own = re.findall(rf"#include <((?:{'|'.join((*LIBRARIES, 'sys', 'cli'))})/[^>]+)>", text)
    return [f"{name}: public, but includes <{header}>, which is not installed"
            for header in own if not is_public_header(header)]


def header_problems(files, read):
    cmake = cmake_texts(files, read)
    found = []
    for library in LIBRARIES:
        text = cmake.get(library, "")
        block = re.search(r"FILE_SET HEADERS.*?\)", text, re.DOTALL)
        listed = set(re.findall(r"[\w/]+\.h\b", block.group() if block else ""))
        present = {name[len(library) + 1:] for name in files
                   if name.startswith(library + "/") and is_public_header(name)}
        found += [f"{library}/{name}: public, but not in the list of headers"
                  for name in sorted(present - listed)]
        found += [f"{library}/CMakeLists.txt: lists {name}, which is not public or not there"
                  for name in sorted(listed - present)]
        for name in sorted(present):
            found += hidden_includes(f"{library}/{name}", read(f"{library}/{name}"))
    return found


def umbrella_problems(files, read):
    included = set(re.findall(r"#include <([^>]+)>", read(UMBRELLA)))
    expected = {name for name in files
                if name.startswith("common/") and is_public_header(name) and name != UMBRELLA}
    return ([f"{UMBRELLA}: lacks <{name}>" for name in sorted(expected - included)]
            + [f"{UMBRELLA}: includes <{name}>, which is no public header of common"
               for name in sorted(included - expected)])


def readme_folders(files):
    """The folders that own sources of their own, and those that group them."""
    folders = set(README_FOLDERS)
    for name in sources.cpp_files(files, ("common", "platform", "engine", "cli")):
        folders.add("/".join(name.split("/")[:2]) if name.count("/") > 1 else name.split("/")[0])
    return sorted(folders)


def readme_problems(files, read):
    found = []
    for folder in readme_folders(files):
        readme = f"{folder}/README.md"
        if readme not in files:
            found.append(f"{readme}: missing")
        elif read(readme).count("\n") > LONGEST_README:
            found.append(f"{readme}: more than {LONGEST_README} lines")
    return found


CHECKS = {
    "sources": lambda files, read: source_problems(files, cmake_texts(files, read)),
    "headers": header_problems,
    "common.h": umbrella_problems,
    "readmes": readme_problems,
}


if __name__ == "__main__":
    sys.exit(sources.report(CHECKS[sys.argv[1]](sources.project_files(), sources.read)))
