#!/usr/bin/env python3
"""Runs clang-tidy on many files, several at once in one text.

Usage: tidy_all.py BUILD, with the files on standard input, one a line. Nearly all of the time that clang-tidy takes for a
source it takes for the headers of others, which our sources have in common. So sources with the same command are put
together into one that includes them, BUILD/unified/UnifiedSource-*.cpp. Those that do not go together with others are
looked at alone. So are those in which something is found, and what is printed comes from there. Prints the findings,
and ends with 0 only when there are none. With QRV_TIDY_ALONE=1 in the environment each source is looked at alone, with a
larger number each of so many.

The static analyzer looks into the functions of included sources only because of the name "UnifiedSource".
"""

import json
import os
import re
import shlex
import subprocess
import sys
from collections import defaultdict
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import tidy_file

# More save little and need much memory.
MOST_TOGETHER = 24


def groups_of(build, sources):
    """The sources by how they are compiled: by folder and command without the names of files. And those that are not
    compiled at all."""
    groups, left = defaultdict(list), []
    for source in sources:
        command, folder = tidy_file.command_of(build, source)
        if command is None:
            left.append(source)
            continue
        words = [word for word in tidy_file.without_output(command) if (Path(folder) / word).resolve() != source]
        groups[folder, shlex.join(words)].append(source)
    return groups, left


def batches_of(sources):
    """As many as needed, all of about one size."""
    count = -(-len(sources) // MOST_TOGETHER)
    size = -(-len(sources) // count)
    return [sources[first:first + size] for first in range(0, len(sources), size)]


class Text:
    """A source that includes others which are compiled by the same command."""

    def __init__(self, file, place, command, sources):
        self.file, self.place, self.command, self.sources = file, place, command, sources
        self.renamed = defaultdict(set)
        self.left_out = []

    def part(self, source):
        """A name of its own that an earlier source has, too, becomes another one there."""
        names = sorted(self.renamed[source])
        other = "Of" + "".join(word.capitalize() for word in re.findall("[A-Za-z0-9]+", source.stem))
        return "".join([*(f"#define {name} {name}{other}  // NOLINT\n" for name in names),
                        f'#include "{source}"  // NOLINT(bugprone-suspicious-include)\n',
                        *(f"#undef {name}\n" for name in names)])

    def errors(self):
        """What the compiler says, by source."""
        self.file.write_text("".join(self.part(source) for source in self.sources))
        result = subprocess.run([*shlex.split(self.command), "-w", "-fsyntax-only", "-ferror-limit=0", str(self.file)],
                                cwd=self.place, capture_output=True, text=True)
        errors = re.findall(r"^(\S+?):\d+:\d+: (?:fatal )?error: (.*)", result.stderr, re.MULTILINE)
        # What is in none of the sources comes from any of them.
        known = set(map(str, self.sources))
        found = defaultdict(list)
        for file, error in errors if result.returncode else []:
            for source in [file] if file in known else sorted(known):
                found[Path(source)].append(error)
        return found

    def settle(self):
        """Renames, and leaves out what does not go with the others, until the compiler takes the rest."""
        while len(self.sources) > 1 and (found := self.errors()):
            for source, errors in found.items():
                names = set(re.findall(r"redefinition of '(\w+)'", "\n".join(errors))) - self.renamed[source]
                self.renamed[source] |= names
                if not names:
                    self.sources = [other for other in self.sources if other != source]
                    self.left_out.append(source)
        if len(self.sources) == 1:
            self.left_out += self.sources
            self.sources = []
        return self

    def entry(self):
        command = f"{self.command} -c {shlex.quote(str(self.file))}"
        return {"directory": self.place, "file": str(self.file), "command": command}


def together(folder, groups, pool):
    """Texts of the sources, and the sources that go with no others."""
    folder.mkdir(exist_ok=True)
    for old in folder.glob("UnifiedSource-*.cpp"):
        old.unlink()
    parts = [(*key, batch) for key, sources in groups.items() for batch in batches_of(sources)]
    texts = [Text(folder / f"UnifiedSource-{number}.cpp", *part) for number, part in enumerate(parts)]
    list(pool.map(Text.settle, texts))
    alone = [source for text in texts for source in text.left_out]
    texts = [text for text in texts if text.sources]
    (folder / "compile_commands.json").write_text(json.dumps([text.entry() for text in texts]))
    return texts, alone


def findings(build, source):
    """What clang-tidy prints about the file, and whether it is content with it."""
    script = Path(__file__).with_name("tidy_file.py")
    result = subprocess.run([sys.executable, str(script), str(build), str(source)], stdout=subprocess.PIPE, text=True)
    return result.stdout, result.returncode == 0


def suspects(found, sources):
    """In which of the sources to look for what was found in all of them together."""
    named = set(re.findall(r"^(\S+?):\d+:\d+: (?:warning|error):", found, re.MULTILINE))
    return [source for source in sources if str(source) in named] if named <= set(map(str, sources)) else sources


def main(build, sources):
    groups, alone = groups_of(build, sources)
    if every := int(os.environ.get("QRV_TIDY_ALONE", 0)):
        groups, alone = {}, sources[::every]
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        texts, left_out = together(build / "unified", groups, pool)
        alone += left_out
        for text, (found, is_clean) in zip(texts, pool.map(lambda text: findings(text.file.parent, text.file), texts)):
            if found.strip() or not is_clean:
                alone += suspects(found, text.sources) or text.sources
        results = list(pool.map(lambda source: findings(build, source), alone))
    for found, _ in results:
        print(found, end="")
    print(f"{len(sources)} sources in {len(texts)} texts, {len(alone)} looked at alone", file=sys.stderr)
    return 0 if all(is_clean for _, is_clean in results) else 1


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    sys.exit(main(Path(sys.argv[1]).resolve(), [Path(line.strip()).resolve() for line in sys.stdin if line.strip()]))
