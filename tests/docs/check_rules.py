#!/usr/bin/python3
"""check_rules.py [--write] --hub HUB --lay-out PROGRAM DOCUMENT

Compares the sections on the rules in docs/check.md, below the line RULES_BEGIN, with what HUB says
of its rules and prints for the first bad product of each; with --write puts those there.

Exit status: 0 when they are the same, or were made so; 1 when they differ.
"""

import argparse
import difflib
import json
import os
import subprocess
import sys
import tempfile
import textwrap
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

RULES_BEGIN = "<!-- The rest is written by `make docs`. -->"
AREAS = {"1": "Files", "2": "Plugins", "3": "Dependencies", "4": "Libraries", "5": "Catalogue",
         "6": "Portal"}
COLUMNS = 100
INDENT = "    "


def call(*arguments):
    return subprocess.run(arguments, capture_output=True, text=True, check=False, timeout=120)


def rules_of(hub):
    with tempfile.TemporaryDirectory() as folder:
        report = json.loads(call(hub, "check", "--bin", folder, "--format", "sarif").stdout)
    return report["runs"][0]["tool"]["driver"]["rules"]


def printed(options, rule):
    """What HUB check prints of the findings of this rule in its first bad product."""
    with tempfile.TemporaryDirectory() as folder:
        done = call(options.lay_out, rule, folder)
        if done.returncode != 0:
            return done.stderr
        module, _, on_windows = done.stdout.partition("\n")
        if on_windows:
            return "On Windows:\n\n" + textwrap.indent(on_windows, INDENT)
        arguments = ["--bin", f"{folder}/bin", "--module", module, "--select", rule]
        text = call(options.hub, "check", *arguments).stdout
        root = os.path.realpath(folder) + "/"
    return textwrap.indent(text.replace(root, "").rsplit("\n", 2)[0] + "\n", INDENT)


def section(rule, output):
    help_of = rule["help"]["text"]
    text = [f"### {rule['id']}: {rule['shortDescription']['text']}", "",
            textwrap.fill(f"*{rule['defaultConfiguration']['level'].capitalize()}.* "
                          + rule["fullDescription"]["text"], COLUMNS), ""]
    remedy = help_of[help_of.rindex("Remedy: ") + len("Remedy: "):].strip()
    text += ["Remedy: " + remedy if len(remedy) < COLUMNS - 8 else
             textwrap.fill("Remedy: " + remedy, COLUMNS), ""]
    return "\n".join(text) + "\n" + output


def sections(options):
    rules = rules_of(options.hub)
    with ThreadPoolExecutor(2) as pool:
        outputs = list(pool.map(lambda rule: printed(options, rule["id"]), rules))
    text, area = "", ""
    for rule, output in zip(rules, outputs):
        if rule["id"][3] != area:
            area = rule["id"][3]
            text += f"\n## {AREAS[area]}\n"
        text += "\n" + section(rule, output)
    return text


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--write", action="store_true")
    parser.add_argument("--hub", required=True)
    parser.add_argument("--lay-out", required=True)
    parser.add_argument("document", type=Path)
    options = parser.parse_args()
    text = options.document.read_text(encoding="utf-8")
    head, begin, shown = text.partition(RULES_BEGIN + "\n")
    wanted = sections(options)
    if shown == wanted:
        return 0
    if options.write:
        options.document.write_text(head + begin + wanted, encoding="utf-8")
        return 0
    print("\n".join(difflib.unified_diff(shown.splitlines(), wanted.splitlines(),
                                         f"{options.document} shows", "HUB has", lineterm="")))
    return 1


if __name__ == "__main__":
    sys.exit(main())
