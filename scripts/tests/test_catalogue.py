"""The check of the message catalogues must see what it is there for: each with what is right and a fault."""

import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))

import catalogue

SOURCE = r'''
auto a = translate(L"Syntax: ");
auto b = translatedError(L"Could not parse %ls, "  // in two pieces
                         L"missing \"%ls\"", record, key);
auto c = tr(L"Syntax: ") + OdString::format(L"not %ls translated", a) + 'L' + '"';
// tr(L"in a comment")
Command d = {"files", translatable(L"List %i files\n"), trUtf8(L"Gone")};
auto e = retranslate(L"another function");
'''
MESSAGES = ["Syntax: ", 'Could not parse %ls, missing "%ls"', "List %i files\n", "Gone"]


def template(source=SOURCE):
    return catalogue.template_text(["cli/A.cpp"], lambda name: source)


class Template(unittest.TestCase):
    def test_has_every_text_that_is_looked_up_and_no_other(self):
        self.assertEqual(catalogue.sources_of(template()), MESSAGES)

    def test_is_the_same_each_time_and_when_lines_move(self):
        self.assertEqual(template(), template("\n\n" + SOURCE))

    def test_is_not_made_when_the_extraction_complains(self):
        with self.assertRaisesRegex(RuntimeError, "non-ASCII"):
            template('auto a = tr(L"Grüße");')


class Merge(unittest.TestCase):
    OLD = catalogue.HEADER.format(title="Messages.", language="de") + (
        'msgid "Syntax: "\nmsgstr "Form: "\n\nmsgid "Syntax"\nmsgstr "gone"\n')

    def test_keeps_what_is_translated_and_guesses_nothing(self):
        merged = catalogue.merged_text("de", self.OLD, template())
        self.assertEqual(catalogue.translations_of(MESSAGES, merged),
                         {MESSAGES[0]: "Form: ", MESSAGES[1]: None, MESSAGES[2]: None,
                          MESSAGES[3]: None})
        self.assertNotIn("gone", merged)
        self.assertNotIn("fuzzy", merged)

    def test_changes_nothing_the_second_time(self):
        merged = catalogue.merged_text("de", self.OLD, template())
        self.assertEqual(catalogue.merged_text("de", merged, template()), merged)

    def test_begins_a_new_language(self):
        merged = catalogue.merged_text("it", "", template())
        self.assertIn('"Language: it\\n"', merged)
        self.assertEqual(set(catalogue.translations_of(MESSAGES, merged).values()), {None})

    def test_takes_a_fuzzy_translation_for_none(self):
        old = self.OLD.replace('msgid "Syntax: "', '#, fuzzy\nmsgid "Syntax: "')
        merged = catalogue.merged_text("de", old, template())
        self.assertIsNone(catalogue.translations_of(MESSAGES, merged)["Syntax: "])


class Translations(unittest.TestCase):
    RIGHT = [
        ("Syntax: ", "Form: "),
        ("Line %i: %ls", "Zeile %i: %ls"),
        ("100%", "100%"),
        ("Gone\n", "Fort\n"),
        ("\nA:\nB\n", "\nX:\nY\n"),
        ("    a * is", "    * ist"),
        ("; gone?", "\u00A0; parti\u00A0?"),
    ]
    WRONG = [
        ("Line %i: %ls", "%ls: Zeile %i"),
        ("Line %i: %ls", "Zeile %i"),
        ("Line %i: %ls", "Zeile %i: %ls %ls"),
        ("Line %i: %ls", "Zeile %d: %ls"),
        ("Line %i: %ls", "Zeile %2$i: %1$ls"),
        ("gone", "100% fort"),
        ("100%", "100"),
        ("Gone\n", "Fort"),
        ("Gone", "Fort\n*.dxf"),
        ("\nA:\nB\n", "X:\n\nY\n"),
        ("    a * is", "  * ist"),
        ("gone", " fort"),
    ]

    def test_are_compared_with_their_messages(self):
        for source, translation in self.RIGHT:
            self.assertEqual(catalogue.catalogue_problems({source: translation}), [], translation)
        for source, translation in self.WRONG:
            self.assertEqual(len(catalogue.catalogue_problems({source: translation})), 1, translation)

    def test_are_missed(self):
        self.assertEqual(catalogue.catalogue_problems({"Gone": None}),
                         ["not translated, or marked as fuzzy: 'Gone'"])


class LookUps(unittest.TestCase):
    SEEN = [
        'tr(L"a")', 'tr(\n    L"a"\n    L"b")', 'translatedError(L"%ls, (a)", name)', 'a.str(text)',
        'translatable(L"a \\" b")', '// tr(text)', 'retranslate(text)', 'L"tr(text)"',
    ]
    UNSEEN = [
        'tr(text)', 'tr(is ? L"a" : L"b")', 'translate(L"a" + text)', 'trUtf8(command.summary)',
        'qrv::tr(text)', 'tr("a" + text)', 'translatedError(\n    text, name)',
    ]

    def problems(self, code, name="cli/A.cpp"):
        return catalogue.look_up_problems([name], lambda _: "\n" + code)

    def test_take_literals(self):
        for code in self.SEEN:
            self.assertEqual(self.problems(code), [], code)
        for code in self.UNSEEN:
            self.assertEqual(len(self.problems(code)), 1, code)
            self.assertIn("cli/A.cpp:2: ", self.problems(code)[0])

    def test_may_take_a_text_that_the_file_marks(self):
        marked = 'auto a = translatable(L"a");\n'
        for code in ("tr(text)", "trUtf8(command.summary)", "tr(texts[0])"):
            self.assertEqual(self.problems(marked + code), [], code)
        for code in ('tr(is ? L"a" : L"b")', 'tr(text + L"a")', 'tr(name(L"a"))'):
            self.assertEqual(len(self.problems(marked + code)), 1, code)

    def test_may_take_something_else_where_the_table_says_so(self):
        self.assertEqual(self.problems("tr(text)", "engine/base/Translation.cpp"), [])


if __name__ == "__main__":
    unittest.main()
