#!/usr/bin/env python3
"""The check of quotations sees each of its faults."""

import unittest

import check_quotes

SOURCES = {"cpp": ["int one() {\n    return 1;\n}\nint two();\n"], "text": ["made\nfile\n"]}


def problems(*blocks):
    document = "".join(f"Words.\n\n```{kind}\n{text}```\n" for kind, text in blocks)
    return check_quotes.problems(document, SOURCES)


class Quotations(unittest.TestCase):
    def test_whole_lines_are_quoted_rightly(self):
        self.assertEqual(problems(("cpp", "    return 1;\n}\n"), ("text", "made\nfile\n")), [])

    def test_a_changed_line_is_found(self):
        self.assertEqual(problems(("cpp", "    return 2;\n")), ["stands in no file:     return 2;"])

    def test_lines_that_do_not_follow_each_other_are_found(self):
        self.assertEqual(problems(("cpp", "int one() {\n}\n")), ["stands in no file: int one() {"])

    def test_a_part_of_a_line_is_found(self):
        self.assertEqual(problems(("cpp", "return 1;\n")), ["stands in no file: return 1;"])
        self.assertEqual(problems(("text", "mad\n")), ["stands in no file: mad"])

    def test_a_file_of_another_kind_does_not_count(self):
        self.assertEqual(problems(("text", "int two();\n")), ["stands in no file: int two();"])

    def test_a_kind_that_is_not_known_is_found(self):
        self.assertEqual(problems(("ccp", "int two();\n")),
                         ["a block of ccp, of which no file is known"])

    def test_a_document_without_quotations_is_found(self):
        self.assertEqual(problems(("sh", "make\n")), ["quotes nothing"])


if __name__ == "__main__":
    unittest.main()
