#!/usr/bin/env python3
"""The message catalogues in po/: the template with every message of the sources, and a file for each language.

    scripts/catalogue.py            writes po/qrv.pot anew and brings the languages up to it; says what is
                                    still to be translated
    scripts/catalogue.py --check    changes nothing; prints what is out of date, missing or wrong

The tools of gettext do the work: what they write holds no date, so that the same sources give the same
files.
"""

import gettext
import pathlib
import re
import subprocess
import sys
import tempfile

import sources

FOLDERS = ("common", "engine", "cli")
# The functions that look a text up, and the one that marks a text for a later look-up.
KEYWORDS = ("translate", "translatedError", "tr", "trUtf8", "translatable")
# Where a look-up takes something else than a literal although the file marks no texts, and why no message is
# missed by that.
OTHER_LOOK_UPS = {
    "common/base/MessageInternal.h": "declares the look-up",
    "common/base/Message.cpp": "is the look-up",
    "engine/operations/NamedReferences.cpp": "looks up what is said of branches and tags, which a table marks",
    "cli/shell/CommandLine.cpp": "looks up the summaries of the commands, which their table marks",
    "cli/commands/Config.cpp": "looks up the summaries of the settings, which their table marks",
    "engine/base/Translation.h": "declares the program's look-up",
    "engine/base/Translation.cpp": "is the program's look-up",
}

HEADER = r'''# {title}
msgid ""
msgstr ""
"Project-Id-Version: qrv\n"
"Language: {language}\n"
"MIME-Version: 1.0\n"
"Content-Type: text/plain; charset=UTF-8\n"
"Content-Transfer-Encoding: 8bit\n"

'''
OTHER_LOOK_UP = re.compile(rf'(?<!\w)(?:{"|".join(KEYWORDS)})\((?!\s*(?:L""\s*)+[,)])')
NAME_OF_TEXT = re.compile(r"[\w.\->\[\]]+\)")

# What may hold quotes: comments, texts and characters.
TOKEN = re.compile(
    r"""//[^\n]*|/\*.*?\*/|R"\(.*?\)"|\bL"(?:\\.|[^"\\\n])*"|"(?:\\.|[^"\\\n])*"|'(?:\\.|[^'\\\n])'""",
    re.DOTALL)
# A percent sign and what follows it, as far as the filling of messages reads on.
PLACEHOLDER = re.compile(r"%(?:ls|.|$)", re.DOTALL)
# A no-break space is none of these: French sets it before a semicolon.
BLANKS = re.compile(r"[ \t]*")


def run(*command, text=None):
    """What the command prints. Its complaints are a failure too: they may be about a message left out."""
    done = subprocess.run(command, input=text, cwd=sources.ROOT, capture_output=True, encoding="utf-8")
    if done.returncode != 0 or done.stderr.strip():
        raise RuntimeError(f"{command[0]}: {done.stderr.strip()}")
    return done.stdout


def with_narrow_texts(code):
    """The code with L"..." made "...": xgettext reads wide texts, but does not join those that stand side by
    side."""
    return TOKEN.sub(lambda match: match.group().removeprefix("L"), code)


def template_text(files, read):
    """The template for the C++ files: every text in the order of the files, with the files that use it."""
    with tempfile.TemporaryDirectory() as folder:
        for name in files:
            copy = pathlib.Path(folder, name)
            copy.parent.mkdir(parents=True, exist_ok=True)
            copy.write_text(with_narrow_texts(read(name)), encoding="utf-8")
        messages = run(
            "xgettext", "--language=C++", "--from-code=UTF-8", "--omit-header", "--no-wrap",
            "--add-location=file", "--output=-", f"--directory={folder}", "--keyword",
            *(f"--keyword={name}" for name in KEYWORDS), *files)
    return HEADER.format(title="The messages of the library and the program.", language="") + messages


def merged_text(language, catalogue, template):
    """The catalogue brought up to the template: the order and the texts of the template, with what is
    translated already. Nothing is guessed, and what nobody uses any more is dropped."""
    with tempfile.TemporaryDirectory() as folder:
        old = pathlib.Path(folder, "old.po")
        new = pathlib.Path(folder, "new.pot")
        old.write_text(catalogue or HEADER.format(title=f"Messages in {language}.", language=language),
                       encoding="utf-8")
        new.write_text(template, encoding="utf-8")
        merged = run("msgmerge", "--quiet", "--no-fuzzy-matching", "--no-wrap", str(old), str(new))
    return run("msgattrib", "--no-obsolete", "--no-wrap", "-", text=merged)


def sources_of(template):
    """The messages of the template."""
    # In the English catalogue that msgen makes, each translation is the message itself.
    texts = run("msgexec", "0", text=run("msgen", "--no-wrap", "-", text=template)).split("\0")
    return [text for text in texts[1:] if text]


class Untranslated(gettext.NullTranslations):
    def gettext(self, message):
        return None


def translations_of(wanted, catalogue):
    """The wanted messages and their translations, as a host would read them: None for what is not
    translated, or only by guess."""
    with tempfile.TemporaryDirectory() as folder:
        compiled = pathlib.Path(folder, "qrv.mo")
        run("msgfmt", f"--output-file={compiled}", "-", text=catalogue)
        with compiled.open("rb") as file:
            translations = gettext.GNUTranslations(file)
    translations.add_fallback(Untranslated())
    return {source: translations.gettext(source) for source in wanted}


def translation_problem(source, translation):
    """What is wrong with a translation, or None."""
    if PLACEHOLDER.findall(source) != PLACEHOLDER.findall(translation):
        return "other placeholders, or in another order"
    # A line of the ignore file must stay one line, and a command's line must stay ended.
    if [part == "" for part in source.split("\n")] != [part == "" for part in translation.split("\n")]:
        return "other line ends"
    if BLANKS.match(source).group() != BLANKS.match(translation).group():
        return "other blanks at the beginning"
    return None


def catalogue_problems(translations):
    """What is wrong with the translations, each with the message that it is of."""
    found = []
    for source, translation in translations.items():
        problem = ("not translated, or marked as fuzzy" if translation is None
                   else translation_problem(source, translation))
        if problem:
            found.append(f"{problem}: {source!r}")
    return found


def look_up_problems(files, read):
    """Look-ups whose text the extraction cannot see."""
    found = []
    for name in files:
        if name in OTHER_LOOK_UPS:
            continue
        code = sources.code_only(read(name))
        marks_texts = "translatable(" in code
        for match in OTHER_LOOK_UP.finditer(code):
            if marks_texts and NAME_OF_TEXT.match(code, match.end()):
                continue
            line = code.count("\n", 0, match.start()) + 1
            found.append(f"{name}:{line}: looks up what is no literal: {match.group()}")
    return found


def languages(read=sources.read):
    return [line for line in read("po/LINGUAS").split("\n") if line and not line.startswith("#")]


def read_or_empty(name):
    path = sources.ROOT / name
    return path.read_text(encoding="utf-8") if path.is_file() else ""


def check(files):
    found = look_up_problems(files, sources.read)
    template = template_text(files, sources.read)
    if read_or_empty("po/qrv.pot") != template:
        found.append("po/qrv.pot: out of date; scripts/catalogue.py writes it")
    wanted = sources_of(template)
    for language in languages():
        name = f"po/{language}.po"
        catalogue = read_or_empty(name)
        merged = merged_text(language, catalogue, template)
        if catalogue != merged:
            found.append(f"{name}: out of date; scripts/catalogue.py brings it up to the sources")
        found += [f"{name}: {problem}" for problem in catalogue_problems(translations_of(wanted, merged))]
    return found


def write(files):
    template = template_text(files, sources.read)
    (sources.ROOT / "po/qrv.pot").write_text(template, encoding="utf-8")
    for language in languages():
        path = sources.ROOT / f"po/{language}.po"
        merged = merged_text(language, read_or_empty(f"po/{language}.po"), template)
        path.write_text(merged, encoding="utf-8")
    return check(files)


def main(arguments):
    files = sources.cpp_files(sources.project_files(), FOLDERS)
    if arguments not in ([], ["--check"]):
        sys.exit(__doc__)
    return sources.report(check(files) if arguments else write(files))


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
