#!/usr/bin/env python3
"""Makes the files that Doxygen reads: copies of the public headers and the pages, below the folder given.

Comments and pages are written for people who read them in the tree: a sign means itself, and a link is a path.
In the copies signs are escaped, links name pages, and lines that need no words are empty. Every line keeps its
number. Prints the links that lead nowhere.
"""

import pathlib
import posixpath
import re
import sys

import check_lists
import sources

MAIN_PAGE = "docs/manual/manual.md"
PAGES = re.compile(r"(?:README|CONTRIBUTING)\.md|docs/.*\.md|(?:common|platform|engine)/.*README\.md")

_CODE_SPAN = re.compile(r"(`+[^`]*`+)")
_QUOTATION = re.compile(r'("[^"]*")')
_LINK = re.compile(r"\[(?P<text>[^\]]+)\]\((?P<target>[^)\s]+)\)")
_COMMENT = re.compile(r"(?P<start>\s*///|.*?\s///<)(?P<prose>.*)$")
# Copies and moves say themselves what they do, as does whatever the compiler makes or refuses.
_NEEDS_NO_WORDS = re.compile(
    r"\s[^/]*= (?:default|delete);$"
    r"|\s*(?P<type>\w+)\((?:const (?P=type)&|(?P=type)&&)(?: other)?\)(?: noexcept)?;$"
    r"|\s*(?P<same>\w+)& operator=\((?:const (?P=same)&|(?P=same)&&)(?: other)?\)(?: noexcept)?;$")


def _replaced(pattern, text, prose, code):
    """The text with `code` applied to what the pattern captures, and `prose` to what stands between."""
    pieces = pattern.split(text)
    pieces[::2] = map(prose, pieces[::2])
    pieces[1::2] = map(code, pieces[1::2])
    return "".join(pieces)


def escaped(text):
    """A line of prose, with the signs escaped that Doxygen would take for commands. It looks for none in
    quotations, and in code it only misses the percent sign."""
    def prose(piece):
        return _replaced(_QUOTATION, piece, lambda plain: re.sub(r"([\\@#%<>])", r"\\\1", plain), str)

    def code(piece):
        return _replaced(_QUOTATION, piece, lambda plain: plain.replace("%", "%%"), str)

    return _replaced(_CODE_SPAN, text, prose, code)


def header(text):
    """A header with its comments escaped, and without the lines that need no words and have none."""
    lines, is_documented = [], False
    for line in text.splitlines():
        comment = _COMMENT.match(line)
        if comment:
            is_code = comment["prose"].startswith("     ")
            line = comment["start"] + (comment["prose"] if is_code else escaped(comment["prose"]))
        elif not is_documented and _NEEDS_NO_WORDS.match(line):
            line = ""
        is_documented = line.lstrip().startswith("/// ")
        lines.append(line)
    return "\n".join(lines) + "\n"


def page_id(name):
    """What Doxygen calls the page."""
    return "page_" + re.sub(r"\W", "_", name.removesuffix(".md"))


def target_of(name, link):
    """The file of the project that a link of the page leads to; None when it leads out of the project."""
    if re.match(r"\w+:", link["target"]):
        return None
    path = link["target"].split("#")[0]
    return posixpath.normpath(posixpath.join(posixpath.dirname(name), path)) if path else name


def reference(name, link, pages):
    """The link as Doxygen writes it; one to a file that is no page becomes its text."""
    target = target_of(name, link)
    if target is None:
        return link.group()
    return f'@ref {page_id(target)} "{link["text"]}"' if target in pages else escaped(link["text"])


def converted(name, line, pages):
    """A line of prose with its signs escaped and its links converted."""
    text, end = "", 0
    for link in _LINK.finditer(line):
        text += escaped(line[end:link.start()]) + reference(name, link, pages)
        end = link.end()
    return text + escaped(line[end:])


def page(name, text, pages):
    """A page under an identifier of its own. What stands in blocks stays as it is."""
    lines, in_block = [], False
    for line in text.splitlines():
        if line.startswith("```"):
            in_block = not in_block
            # A block without a language would be taken for C++.
            line = "```{.unparsed}" if in_block and line == "```" else line
        elif not in_block and not line.startswith("    "):
            marks, prose = re.match(r"(#+ |> |)(.*)$", line).groups()
            line = marks + converted(name, prose, pages)
        lines.append(line)
    if name != MAIN_PAGE:
        lines[0] += f" {{#{page_id(name)}}}"
    return "\n".join(lines) + "\n"


def dead_links(name, text, files):
    """A link may also lead to a folder."""
    folders = {str(folder) for file in files for folder in pathlib.PurePosixPath(file).parents}
    return [f"{name}: links to {link['target']}, which is not there"
            for link in _LINK.finditer(re.sub(r"^```.*?^```", "", text, flags=re.DOTALL | re.MULTILINE))
            if target_of(name, link) not in {None, *files, *folders}]


def is_header(name):
    return check_lists.is_public_header(name)


def copies(files, read=sources.read):
    """The text of each copy by its name, and the links that lead nowhere."""
    pages = {name for name in files if PAGES.fullmatch(name)}
    texts = {name: header(read(name)) for name in files if is_header(name)}
    texts |= {name: page(name, read(name), pages) for name in pages}
    return texts, [problem for name in sorted(pages) for problem in dead_links(name, read(name), files)]


def main(folder):
    texts, problems = copies(sources.project_files())
    for name, text in texts.items():
        copy = pathlib.Path(folder) / name
        copy.parent.mkdir(parents=True, exist_ok=True)
        copy.write_text(text, encoding="utf-8")
    return sources.report(problems)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
