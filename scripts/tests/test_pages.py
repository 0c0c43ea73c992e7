"""The pages: samples stand in them byte for byte, and the manual is made of them."""

import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))

import check_samples
import manual_sources


def reader(files):
    """Reads from a dictionary instead of the disk."""
    return lambda name: files[name]


class Samples(unittest.TestCase):
    PAGE = "docs/formats/a.md"
    SAMPLE = "tests/a.sample"

    def problems(self, page, sample, **more):
        files = {self.PAGE: page, self.SAMPLE: sample, **more}
        return check_samples.problems(list(files), reader(files))

    def page(self, block):
        return f"# A\n\nAs read ([a.sample](../../tests/a.sample)):\n\n```json\n{block}```\n"

    def test_a_block_is_the_file_with_or_without_its_last_line_feed(self):
        self.assertEqual(self.problems(self.page("{\n}\n"), "{\n}"), [])
        self.assertEqual(self.problems(self.page("{\n}\n"), "{\n}\n"), [])

    def test_each_other_byte_counts(self):
        for sample in ("{\n} ", "{\r\n}", "{\n}\n\n", "{ \n}", "{", "{\n}\n}"):
            found = self.problems(self.page("{\n}\n"), sample)
            self.assertEqual(len(found), 1, sample)
            self.assertIn(f"differs from {self.SAMPLE}", found[0])

    def test_the_line_is_named(self):
        self.assertEqual(self.problems(self.page("a\nb\n"), "a\nc\n"),
                         [f"{self.PAGE}:7: differs from {self.SAMPLE}:2"])

    def test_a_page_needs_a_block_and_a_sample_needs_a_page(self):
        self.assertEqual(self.problems("# A\n", "x"),
                         [f"{self.PAGE}: shows no sample", f"{self.SAMPLE}: no page in docs/formats/ names it"])

    def test_a_link_to_nothing_is_found(self):
        text = self.page("x\n") + "See [b](../../tests/b.sample).\n"
        self.assertEqual(self.problems(text, "x\n"),
                         [f"{self.PAGE}: links to tests/b.sample, which is not there"])


class ManualSources(unittest.TestCase):
    def test_signs_mean_themselves(self):
        for text, expected in [
            ("50 % of <b> \\n a@b #1", r"50 \% of \<b\> \\n a\@b \#1"),
            ('"%ls" takes <T>', r'"%ls" takes \<T\>'),
            ("`%ls` takes `<T>`", "`%%ls` takes `<T>`"),
            ('`f(L"%ls")` at 5 %', r'`f(L"%ls")` at 5 \%'),
        ]:
            self.assertEqual(manual_sources.escaped(text), expected)

    def test_a_header_keeps_its_lines_and_loses_what_needs_no_words(self):
        text = ("/// <T> first.\n///     code<T>();\nclass A {\n    A(const A&) = default;\n    A(A&&);\n"
                "    A& operator=(const A& other);\n    /// Said.\n    A(A) = delete;\n    A(B&&);\n"
                "    int b;  ///< 5 %\n};\n")
        self.assertEqual(
            manual_sources.header(text),
            "/// \\<T\\> first.\n///     code<T>();\nclass A {\n\n\n\n    /// Said.\n    A(A) = delete;\n"
            "    A(B&&);\n    int b;  ///< 5 \\%\n};\n")

    def test_links_name_pages_and_other_files_become_text(self):
        page = ("# A <b>\n[b](b.md#part), [c](../src/c.cpp), [d](https://d.org/)\n\n"
                "    [e](b.md)\n```\n[f](b.md) <g>\n```\n")
        self.assertEqual(
            manual_sources.page("docs/a.md", page, {"docs/a.md", "docs/b.md"}),
            '# A \\<b\\> {#page_docs_a}\n@ref page_docs_b "b", c, [d](https://d.org/)\n\n'
            "    [e](b.md)\n```{.unparsed}\n[f](b.md) <g>\n```\n")

    def test_dead_links_are_found(self):
        files = {
            "docs/a.md": "# A\n[b](b.md) [c](../cli/) [d](#part) [e](http://e.org)\n```\n[f](f.md)\n```\n",
            "README.md": "# R\n[a](docs/a.md)\n", "cli/Main.cpp": "", "common/base/Expected.h": "int a;\n",
            "common/base/AInternal.h": ""}
        texts, problems = manual_sources.copies(list(files), reader(files))
        self.assertEqual(problems, ["docs/a.md: links to b.md, which is not there"])
        self.assertEqual(sorted(texts), ["README.md", "common/base/Expected.h", "docs/a.md"])


if __name__ == "__main__":
    unittest.main()
