#!/usr/bin/python3
"""Tests of shown_output.py: which blocks it finds, what it takes as the same, what it rewrites."""

import argparse
import contextlib
import io
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent))
from shown_output import blocks_of, check, comparable, merged


class Blocks(unittest.TestCase):
    def found(self, text):
        return [(block.begin, block.commands, block.shown())
                for block in blocks_of(text.splitlines())]

    def test_are_indented_or_fenced_with_a_command_before_or_in_them(self):
        self.assertEqual(
            [(2, [], ["plain"]),
             (6, ["HUB model"], ["{", "", "  1", "}"]),
             (15, ["HUB run |\nsed '1d; 2d'"], ["fenced", "    deep"]),
             (21, ["HUB run > out", "cat out"], ["shown"])],
            self.found("text\n\n    plain\n\n<!-- $ HUB model -->\n\n    {\n\n      1\n    }\n\n"
                       "<!-- $ HUB run |\n     sed '1d; 2d' -->\n\n```\nfenced\n    deep\n```\n\n"
                       "<!-- $ HUB run > out -->\n\n    $ cat out\n    shown\n"))

    def test_have_no_command_that_stands_before_other_text(self):
        self.assertEqual([(4, [], ["plain"])],
                         self.found("<!-- $ HUB model -->\n\ntext\n\n    plain\n"))


class Comparison(unittest.TestCase):
    def same(self, one, other):
        return comparable(one) == comparable(other)

    def test_passes_over_what_differs_from_run_to_run(self):
        for one, other in (
                ("a.server   started in 0 ms", "a.server   started in 1512 ms"),
                ("a   started       0 ms   stopped   12 ms",
                 "a   started    1503 ms   stopped    0 ms"),
                ("2026-11-21 19:52:43.548+00:00 [3] [25180] [host] pid 25180 …",
                 "2027-01-02 03:04:05.678-11:30 [3] [1] [host] pid 1 …"),
                ("  15 of 20 started, 2 failed; waiting for a (1.0 s)",
                 "  1 of 20 started; waiting for a (12.3 s)"),
                ("1515 ms a.server", "3 ms a.server"), ("up 1", "up 2670"),
                ("wall 2605.4 ms = look 9.1 (42.0%)", "wall 5.4 ms = look 1093.1 (3.0%)"),
                ("   12.5    1.0%  a.server", " 1234.5   99.0%  a.server")):
            self.assertTrue(self.same(one, other), one)

    def test_passes_over_nothing_else(self):
        for one, other in (
                ("a   started       0 ms", "a  started       0 ms"),
                ("a   started       0 ms", "a   started        0 ms"),
                ("   12.5  a.server", "   1234.5  a.server"), ("version 1.0.0", "version 1.1.0"),
                ("18 of 20 plugins started", "14 of 20 plugins started"),
                ("1 of 20 started; waiting", "1 of 21 started; waiting"), ("x ", "x"),
                ("T [3] [1] [host] ", "T [4] [1] [host] "), ('"ms": 1', '"ms": 2')):
            self.assertFalse(self.same(one, other), one)

    def test_keeps_shown_lines_that_differ_in_times_alone(self):
        self.assertEqual(["a started in 0 ms", "c started in 9 ms", "up 3"],
                         merged(["a started in 0 ms", "b started in 0 ms", "up 3"],
                                ["a started in 7 ms", "c started in 9 ms", "up 8"]))


class Documents(unittest.TestCase):
    """With plain commands in place of HUB."""

    def checked(self, text, write=False):
        with tempfile.TemporaryDirectory() as folder:
            document = Path(folder) / "page.md"
            document.write_text(text, encoding="utf-8")
            site = Path(folder) / "site"
            site.mkdir()
            (site / "file").write_text("of the product")
            options = argparse.Namespace(hub="HUB", site=site, fixtures=folder, write=write)
            with contextlib.redirect_stdout(io.StringIO()):
                faults, _ = check(document, options)
            return ([fault.replace(folder + "/", "") for fault in faults],
                    document.read_text(encoding="utf-8"))

    def test_that_show_what_is_printed_are_well(self):
        text = ("<!-- $ echo $SITE --bin …/site/bin; cat $SITE/file; rm $SITE/file -->\n\n"
                "    …/site --bin …/site/bin\n    of the product\n\n"
                "<!-- $ cat $SITE/file > copy -->\n\n```\n$ cat copy\nof the product\n```\n")
        self.assertEqual(([], text), self.checked(text))

    def test_that_show_something_else_have_it_named_or_rewritten(self):
        text = "<!-- $ printf 'a\\n\\nc\\n' -->\n\n    a\n    b\n\ntext\n"
        self.assertEqual((["--- page.md:3 shows\n+++ HUB prints\n@@ -1,2 +1,3 @@\n a\n-b\n+\n+c"],
                          text), self.checked(text))
        self.assertEqual(([], "<!-- $ printf 'a\\n\\nc\\n' -->\n\n    a\n\n    c\n\ntext\n"),
                         self.checked(text, write=True))

    def test_whose_command_prints_nothing_are_faults_and_stay(self):
        text = "<!-- $ true -->\n\n    a\n"
        for write in (False, True):
            self.assertEqual((["page.md:3: prints nothing: true"], text), self.checked(text, write))

    def test_that_show_what_hub_prints_without_a_command_are_faults(self):
        text = "<!-- $ echo a -->\n\n    a\n\ntext\n\n    {}\n"
        for line in ("a.server   started in 0 ms", "error: x: y", "HUB: the process ends: x",
                     "-" * 40, "D T [3] [7] [host] text", "degraded: 18 of 20 plugins started"):
            self.assertEqual(["page.md:7: looks like what HUB prints, but names no command"],
                             self.checked(text.format(line))[0], line)

    def test_that_show_no_output_are_faults(self):
        self.assertEqual((["page.md: shows no output of HUB"], "text\n"), self.checked("text\n"))


if __name__ == "__main__":
    unittest.main()
