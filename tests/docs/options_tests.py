#!/usr/bin/python3
"""options_tests.py HUB DOCS: whether the tables of options in hub.md, check.md, report.md, replay.md
and shake.md of the folder DOCS have the options of the commands' help with their values, no more and
no fewer."""

import re
import subprocess
import sys
import unittest
from pathlib import Path

HUB, DOCS = sys.argv.pop(1), Path(sys.argv.pop(1))


def of_help(command):
    text = subprocess.run([HUB, command, "--help"], capture_output=True, text=True, check=True,
                          timeout=60).stdout
    return re.findall(r"^  (?:-\w,)?(--[a-z-]+(?: [A-Z]+)?)", text, re.MULTILINE)


def of_tables(document):
    """The options of each table whose head names them."""
    section = (DOCS / document).read_text(encoding="utf-8").split("\n## Options\n")[1].split("\n## ")[0]
    return [re.findall(r"^\| `(--[^`]+)` ", table, re.MULTILINE)
            for table in section.split("| option |")[1:]]


class Options(unittest.TestCase):
    def test_of_both_commands_are_in_the_first_table(self):
        self.assertEqual(sorted(of_help("model")), sorted([*of_tables("hub.md")[0], "--help"]))

    def test_of_run_are_in_both_tables(self):
        self.assertEqual(sorted(of_help("run")), sorted([*sum(of_tables("hub.md"), []), "--help"]))

    def test_of_check_are_in_its_table(self):
        self.assertEqual(sorted(of_help("check")), sorted([*of_tables("check.md")[0], "--help"]))

    def test_of_report_are_in_its_table(self):
        self.assertEqual(sorted(of_help("report")), sorted([*of_tables("report.md")[0], "--help"]))

    def test_of_why_are_in_the_second_table(self):
        self.assertEqual(sorted(of_help("why")), sorted([*of_tables("report.md")[1], "--help"]))

    def test_of_shake_are_in_its_table(self):
        self.assertEqual(sorted(of_help("shake")), sorted([*of_tables("shake.md")[0], "--help"]))

    def test_of_replay_are_in_its_table(self):
        self.assertEqual(sorted(of_help("replay")), sorted([*of_tables("replay.md")[0], "--help"]))


if __name__ == "__main__":
    unittest.main()
