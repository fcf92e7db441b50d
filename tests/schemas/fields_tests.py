#!/usr/bin/python3
"""fields_tests.py EVERY_MEMBER SCHEMAS DOCS: whether what HUB writes, the schemas and the handbook
have the same members, in all directions. EVERY_MEMBER is a program that prints every kind of line of
a flight record, with and without the members that may be left out."""

import json
import re
import subprocess
import sys
import unittest
from pathlib import Path

EVERY_MEMBER, SCHEMAS, DOCS = sys.argv.pop(1), Path(sys.argv.pop(1)), Path(sys.argv.pop(1))


def schema(name):
    return json.loads((SCHEMAS / name).read_text(encoding="utf-8"))


def tables(page):
    """The tables of a page: the texts of the head's cells -> rows of cells' texts."""
    found = {}
    text = (DOCS / page).read_text(encoding="utf-8")
    for head, body in re.findall(r"^(\|.*\|)\n\|[-|]+\|\n((?:\|.*\|\n)+)", text, re.MULTILINE):
        cells = [[cell.strip() for cell in re.split(r"(?<!\\)\|", row)[1:-1]]
                 for row in body.splitlines()]
        found.setdefault(" | ".join(cell.strip() for cell in head.split("|")[1:-1]), []).append(cells)
    return found


def names_in(cell):
    return re.findall(r"`([A-Za-z_-]+)`", cell)


def members(cell):
    """The members that a cell names: (always, only when they apply)."""
    optional = set(re.findall(r"\(`([A-Za-z_]+)`\)", cell))
    return set(names_in(cell)) - optional, optional


def members_of_rows(rows):
    always, optional = set(), set()
    for row in rows:
        one, other = members(row[0])
        always |= one
        optional |= other
    return always, optional


class Record(unittest.TestCase):
    """Line -> the members that it has always, and those that it may have."""

    maxDiff = None
    COMMON = {"record", "event", "ns", "thread"}

    def written(self):
        printed = subprocess.run([EVERY_MEMBER], capture_output=True, text=True, check=True,
                                 timeout=60).stdout
        names = {}
        for line in printed.splitlines():
            document = json.loads(line)
            names.setdefault(document.get("event", document["record"]), []).append(set(document))
        return {line: (set.intersection(*found), set.union(*found) - set.intersection(*found))
                for line, found in names.items()}

    def of_schema(self):
        lines = {}
        for definition in schema("record.schema.json")["definitions"].values():
            if "properties" not in definition:
                continue
            always, own = set(definition["required"]), definition["properties"]
            kind = own["event"] if "event" in own else own["record"]
            for line in kind.get("enum", [kind.get("const")]):
                lines[line] = (always, set(own) - always)
        return lines

    def of_handbook(self):
        found = tables("record.md")
        head, plugin, details = found["member | holds"]
        lines = {}
        for line, rows in (("head", head), ("plugin", plugin)):
            always, optional = members_of_rows(rows)
            lines[line] = (always | {"record"}, optional)
        for row in found["event | further members | happens when"]:
            for cells in row:
                always, optional = members(cells[1])
                lines[names_in(cells[0])[0]] = (always | self.COMMON, optional)
        return lines, details

    def test_is_as_its_schema_says(self):
        self.assertEqual(self.written(), self.of_schema())

    def test_is_as_the_handbook_says(self):
        self.assertEqual(self.written(), self.of_handbook()[0])

    def test_has_each_further_member_explained(self):
        lines, details = self.of_handbook()
        further = set().union(*(always | optional for line, (always, optional) in lines.items()
                                if line not in ("head", "plugin"))) - self.COMMON
        self.assertEqual(further, set.union(*members_of_rows(details)))

    def test_has_the_totals_that_the_handbook_names(self):
        row = [row for row in self.of_handbook()[1] if row[0] == "`totals`"]
        totals = schema("record.schema.json")["definitions"]["end"]["properties"]["totals"]
        self.assertEqual(set(names_in(row[0][1])), set(totals["properties"]))


class Run(unittest.TestCase):
    """schemas.run.* check what HUB writes against the schema, which allows no other member."""

    maxDiff = None

    def setUp(self):
        self.schema = schema("run.schema.json")
        self.tables = tables("run-json.md")

    def test_has_every_member_always(self):
        def check(place, part):
            if isinstance(part, dict):
                if "properties" in part and "required" in part:
                    self.assertEqual((set(part["properties"]), False),
                                     (set(part["required"]), part["additionalProperties"]), place)
                for name, inner in part.items():
                    check(f"{place}/{name}", inner)
            elif isinstance(part, list):
                for inner in part:
                    check(place, inner)

        check("", self.schema)

    def test_is_as_the_handbook_says(self):
        rows = {row[0].strip("`"): row[1] for row in self.tables["member | holds"][0]}
        self.assertEqual(set(self.schema["properties"]), set(rows))
        for name in ("product", "totals", "Timing", "findings"):
            inner = self.members_of(name)
            self.assertEqual(inner, inner & set(names_in(rows[name])), name)

    def members_of(self, name):
        part = self.schema["properties"][name]
        while "properties" not in part:
            if "$ref" in part:
                part = self.schema["definitions"][part["$ref"].rsplit("/", 1)[1]]
            else:
                part = part["items"]
        return set(part["properties"])

    def test_has_the_plugins_members_that_the_handbook_names(self):
        self.assertEqual(self.members_of("plugins"),
                         set.union(*members_of_rows(self.tables["member of a plugin | holds"][0])))

    def test_has_the_phases_members_that_the_handbook_names(self):
        text = (DOCS / "run-json.md").read_text(encoding="utf-8")
        sentence = re.search(r"^A phase has (.*?)\. ", text, re.MULTILINE | re.DOTALL)[1]
        self.assertEqual(self.members_of("phases"),
                         set(names_in(re.sub(r"\([^)]*\)", "", sentence))))

    def test_has_the_states_that_the_handbook_names(self):
        states = self.schema["definitions"]["plugin"]["properties"]["state"]
        names = {name for row in self.tables["`state` | the plugin, when the run ended"][0]
                 for name in names_in(row[0])}
        self.assertEqual({state for state in states["enum"] if state}, names)


if __name__ == "__main__":
    unittest.main()
