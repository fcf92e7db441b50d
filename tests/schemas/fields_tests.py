#!/usr/bin/python3
"""fields_tests.py EVERY_MEMBER ROOT: whether what HUB writes, the schemas and the handbook have the
same members, in all directions, and whether what the frame reads in the model files, their schemas
and their handbook have the same names. EVERY_MEMBER is a program that prints every kind of line of a
flight record, with and without the members that may be left out; ROOT is the project's folder."""

import json
import re
import subprocess
import sys
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

EVERY_MEMBER, ROOT = sys.argv.pop(1), Path(sys.argv.pop(1))
SCHEMAS, DOCS = ROOT / "schemas", ROOT / "docs"


def schema(name):
    return json.loads((SCHEMAS / name).read_text(encoding="utf-8"))


def tables(page):
    return tables_in((DOCS / page).read_text(encoding="utf-8"))


def tables_in(text):
    """The tables of a text: the texts of the head's cells -> rows of cells' texts."""
    found = {}
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


# The model files. A name is "Name" for an element, "@Name" for an attribute, "/Name" for the root.

# File, by the name of its schema -> the functions that open it.
OPENED_BY = {"Product": {"ReadBaseProductXml"},
             "DeviceDrivers": {"ReadDriverModel"},
             "Portal": {"ReadServerPotalModel"},
             "Platform": {"ReadPlatformModel"},
             "Plugin": {"ReadDescription"},
             "ProductAddons": {"ReadAllAddonsXml"},
             "ProductTools": {"ReadAllToolsXml"},
             "InstalledProducts": {"ReadInstalledAddonsXml", "ReadInstalledToolsXml",
                                   "ReadClientInfoFromInstalledAddonsXml"},
             "AddonDescription": {"ReadSingleInstalledAddonModel"},
             "ToolDescription": {"ReadSingleInstalledToolModel"}}

# Looked up in a file that cannot have it: of a tool too it is read from an addon's root element.
NEVER_FOUND = {"ToolDescription": {"/AddonDescription", "CompatibleVersion"}}

# Required by the schema of a file, not read there.
FOR_PEOPLE = {"ToolDescription": {"ProductLogo"}}

# A section of the handbook that names the elements of an application by naming another section.
REFERS_TO = {"AddonDescription": "ProductAddons"}


class Readers:
    """The names that the frame's functions read; those of a source outside its functions by its name."""

    CONSTANT = re.compile(r'constexpr char (k\w+)\[\] = "([^"]*)"')
    FUNCTION = re.compile(r"^\w[^\n;{}=]*?\b(\w+)\([^;{}]*\)(?: const)? \{\n(.*?)^\}",
                          re.MULTILINE | re.DOTALL)
    CALL = re.compile(r"\b(\w+)(?:<\w+>)?\(")
    READ = re.compile(r'(?:\b(Text|Int|Flag|Attribute|Child|Children)\(|XmlElement(?: \w+)?\([^,;]+, )'
                      r'(?:XmlName::)?("/?\w+"|k[A-Z]\w*)')

    def __init__(self):
        folder = ROOT / "src" / "private"
        sources = {source.name: source.read_text(encoding="utf-8")
                   for source in (*folder.glob("*.h"), *folder.glob("*.cpp"))}
        common = {}
        for name, text in sources.items():
            if name.endswith(".h"):
                common.update(self.CONSTANT.findall(text))
        self.names, self.calls = {}, {}
        for name, text in sources.items():
            constants = {**common, **dict(self.CONSTANT.findall(text))}
            for function, body in self.FUNCTION.findall(text):
                self.names.setdefault(function, set()).update(self.names_in(body, constants))
                self.calls.setdefault(function, set()).update(self.CALL.findall(body))
            self.names[name] = self.names_in(self.FUNCTION.sub("", text), constants)

    def names_in(self, code, constants):
        return {("@" if call == "Attribute" else "") + constants.get(word, word.strip('"'))
                for call, word in self.READ.findall(code)}

    def functions_of(self, file):
        """The functions that open it, and those that they call, without those that open another."""
        others = set().union(*(names for other, names in OPENED_BY.items() if other != file))
        waiting, reached = set(OPENED_BY[file]), set()
        while waiting:
            function = waiting.pop()
            reached.add(function)
            waiting |= (self.calls[function] & set(self.calls)) - reached - others
        return reached

    def of_file(self, file):
        return set().union(*(self.names[function] for function in self.functions_of(file)))


class ModelFiles(unittest.TestCase):
    """File -> the names that the frame reads, that the schema allows, that the handbook explains."""

    READERS = Readers()

    @staticmethod
    def of_schema(file):
        xs = "{http://www.w3.org/2001/XMLSchema}"
        types = ElementTree.parse(SCHEMAS / "Types.xsd").getroot()
        shared = {kind.get("name"): kind for kind in types.findall(xs + "complexType")}
        schema_root = ElementTree.parse(SCHEMAS / f"{file}.xsd").getroot()
        roots = schema_root.findall(xs + "element")
        parts = list(schema_root.iter())
        for kind in {part.get("type") for part in parts} & set(shared):
            parts += shared[kind].iter()
        mark = {xs + "element": "", xs + "attribute": "@"}
        return ({"/" + root.get("name") for root in roots} |
                {mark[part.tag] + part.get("name") for part in parts
                 if part.tag in mark and part not in roots})

    @staticmethod
    def of_handbook():
        """File -> the names that its section explains, and those that it says are not read."""
        explained, not_read = {}, {}
        text = (DOCS / "model-files.md").read_text(encoding="utf-8")
        for section in re.split(r"^## ", text, flags=re.MULTILINE):
            found = re.search(r"\*Schema:\* `(\w+)\.xsd`\.$", section, re.MULTILINE)
            if not found:
                continue
            root = re.search(r"```xml \w+\n<\?xml[^>]*>\n<(\w+)", section)[1]
            names, others = {root}, set()
            for head, rows in tables_in(section).items():
                if not head.startswith(("element", "attribute")):
                    continue
                names |= ModelFiles.names_of(head)
                for row in sum(rows, []):
                    (others if row[1].startswith("is not read") else names).update(
                        ModelFiles.names_of(row[0]))
            explained[found[1]], not_read[found[1]] = names, others - names
        return explained, not_read

    @staticmethod
    def names_of(cell):
        return {name for path in re.findall(r"`([\w/]+)`", cell) for name in path.split("/")}

    @staticmethod
    def plain(names):
        return {name.lstrip("@/") for name in names}

    def test_have_each_a_reader_a_schema_and_a_section(self):
        self.assertEqual({schema.stem for schema in SCHEMAS.glob("*.xsd")} - {"Types"}, set(OPENED_BY))
        self.assertEqual(set(self.of_handbook()[0]), set(OPENED_BY))

    def test_have_each_name_that_any_function_reads(self):
        reached = set().union(*(self.READERS.functions_of(file) for file in OPENED_BY))
        self.assertEqual({}, {function: names for function, names in self.READERS.names.items()
                              if names and function not in reached})

    def test_have_each_name_that_is_read_in_the_schema(self):
        for file in OPENED_BY:
            with self.subTest(file):
                self.assertEqual(set(), self.READERS.of_file(file) - NEVER_FOUND.get(file, set()) -
                                 self.of_schema(file))

    def test_have_no_name_in_the_schema_that_is_not_read(self):
        for file in OPENED_BY:
            with self.subTest(file):
                self.assertEqual(FOR_PEOPLE.get(file, set()),
                                 self.of_schema(file) - self.READERS.of_file(file))

    def test_have_each_name_of_the_schema_in_the_handbook(self):
        explained = self.of_handbook()[0]
        for file in OPENED_BY:
            with self.subTest(file):
                self.assertEqual(set(), self.plain(self.of_schema(file)) - explained[file] -
                                 explained.get(REFERS_TO.get(file), set()))

    def test_have_no_name_in_the_handbook_that_the_schema_refuses(self):
        explained, not_read = self.of_handbook()
        for file in OPENED_BY:
            with self.subTest(file):
                allowed = self.plain(self.of_schema(file))
                self.assertEqual(set(), explained[file] - allowed)
                self.assertEqual(set(), not_read[file] & allowed)


if __name__ == "__main__":
    unittest.main()
