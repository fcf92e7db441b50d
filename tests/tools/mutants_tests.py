#!/usr/bin/python3
"""Tests of tools/mutants: which changes it finds in a source, which it chooses, what it excepts."""

import sys
import tempfile
import textwrap
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))
from mutating import Fault
from mutating.building import Build
from mutating.choosing import choose, read_equivalents
from mutating.sources import Source


def changes_of(text):
    """Each change as "operator: line before => line after"."""
    return [f"{c.operator}: {c.before} => {c.after}" for c in Source("a.cpp", text).changes()]


def in_function(body):
    return changes_of("void F() {\n" + textwrap.dedent(body) + "\n}\n")


class Operators(unittest.TestCase):
    maxDiff = None

    def test_relations_and_constants(self):
        self.assertEqual(
            ["relation: const bool a = b < 3; => const bool a = b <= 3;",
             "relation: const bool a = b < 3; => const bool a = b > 3;",
             "constant: const bool a = b < 3; => const bool a = b < 4;",
             "relation: const bool c = d == e; => const bool c = d != e;",
             "constant: int f = 10'000; => int f = 10001;",
             "constant: int g = 0x1F; => int g = 0x20;",
             "constant: double h = 0.5; => double h = 1.5;",
             "constant: bool i = true; => bool i = false;",
             "constant: char j = '\\n'; => char j = 'x';"],
            changes_of("const bool a = b < 3;\nconst bool c = d == e;\nint f = 10'000;\n"
                       "int g = 0x1F;\ndouble h = 0.5;\nbool i = true;\nchar j = '\\n';\n"))

    def test_conditions_are_negated_unless_one_relation_says_the_same(self):
        self.assertEqual(
            ["condition: if (a && b) { => if (!(a && b)) {",
             "logic: if (a && b) { => if (a || b) {",
             "statement dropped: G(); => {}",
             "relation: } else if (c == d) { => } else if (c != d) {",
             "statement dropped: H(); => {}",
             "condition: while (e) I(); => while (!(e)) I();",
             "statement dropped: while (e) I(); => while (e) {}",
             "condition: for (int j = k; l; ++j) { => for (int j = k; !(l); ++j) {",
             "condition: int m = n ? o : p; => int m = !(n) ? o : p;"],
            in_function("""\
                if (a && b) {
                  G();
                } else if (c == d) {
                  H();
                }
                while (e) I();
                for (int j = k; l; ++j) {
                }
                int m = n ? o : p;"""))

    def test_brackets_and_references_are_no_operators(self):
        self.assertEqual([], changes_of(
            "template <typename T>\nstd::vector<T> F(T&& a, const std::map<T, T>& b);\n"
            "bool operator==(const T& a, const T& b);\nvirtual void G() = 0;\n"))

    def test_a_letter_of_each_piece_of_a_text(self):
        self.assertEqual(
            ['text: const char* a = "/Plugin/ID"; => const char* a = "/Pluxin/ID";',
             'text: const char* a = "/Plugin/ID"; => const char* a = "/Plugin/Ix";',
             'text: const char* b = ""; => const char* b = "x";',
             'text: const char* c = "%d\\n"; => const char* c = "%d\\nx";',
             'text: const char* d = R"(say "no")"; => const char* d = R"(sxy "no")";'],
            changes_of('const char* a = "/Plugin/ID";\nconst char* b = "";\n'
                       'const char* c = "%d\\n";\nconst char* d = R"(say "no")";\n'
                       '// "comment"\n#include "file.h"\n'))

    def test_statements(self):
        self.assertEqual(
            ["condition: if (a) return; => if (!(a)) return;",
             "statement dropped: if (a) return; => if (a) {}",
             "statements swapped: b.Add(c); b.Clear(); => b.Clear(); b.Add(c);",
             "statement dropped: b.Add(c); => {}",
             "statements swapped: b.Clear(); d.e = f; => d.e = f; b.Clear();",
             "statement dropped: b.Clear(); => {}",
             "statement dropped: d.e = f; => {}",
             "statement dropped: d.g = h; => {}"],
            in_function("""\
                if (a) return;
                b.Add(c);
                b.Clear();
                d.e = f;
                d.g = h;
                const int i = j;
                std::vector<int> k(l);"""))

    def test_the_return_that_a_function_needs_stays(self):
        self.assertEqual([], changes_of("int F() {\n  return a;\n}\n"))

    def test_arguments_that_may_have_one_type(self):
        self.assertEqual(
            ["arguments swapped: int a = f(b, c.d(e)); => int a = f(c.d(e), b);",
             'arguments swapped: int g = f("", b); => int g = f(b, "");'],
            [change for change in changes_of(
                'int a = f(b, c.d(e));\nint g = f("", b);\nint h = f("", 1);\n'
                'int i = LOG(b, "");\nint j(int k, std::string l);\nint m = std::min(b, c);\n')
             if change.startswith("arguments")])

    def test_a_lock_is_released_at_once(self):
        self.assertEqual(
            ["lock shortened: const std::lock_guard<std::mutex> lock(m_mutex); => "
             "{ const std::lock_guard<std::mutex> lock(m_mutex); }"],
            in_function("const std::lock_guard<std::mutex> lock(m_mutex);"))

    def test_a_change_names_its_place(self):
        (change,) = Source("a.cpp", "// one\nint a = 1;  // two\n").changes()
        self.assertEqual(("a.cpp", 2, "1", "2"),
                         (change.path, change.line, "1", change.replacement))
        self.assertEqual(("a.cpp", "int a = 1; // two", "int a = 2; // two"), change.keys()[0])


class Choice(unittest.TestCase):
    possible = {"a": Source("a", "int i = 1;\n" * 90).changes(),
                "b": Source("b", "int i = 1;\n" * 9).changes(),
                "c": Source("c", "int i = 1;\n").changes(),
                "d": []}

    def shares(self, count):
        chosen = [change.path for change in choose(self.possible, count, 1)]
        return {path: chosen.count(path) for path in "abcd"}

    def test_is_even_with_one_at_least(self):
        self.assertEqual({"a": 45, "b": 4, "c": 1, "d": 0}, self.shares(50))
        self.assertEqual({"a": 1, "b": 1, "c": 1, "d": 0}, self.shares(1))

    def test_of_none_or_more_than_there_are_is_all(self):
        self.assertEqual({"a": 90, "b": 9, "c": 1, "d": 0}, self.shares(0))
        self.assertEqual({"a": 90, "b": 9, "c": 1, "d": 0}, self.shares(1000))

    def test_depends_on_the_seed_alone(self):
        self.assertEqual(choose(self.possible, 20, 1), choose(self.possible, 20, 1))
        self.assertNotEqual(choose(self.possible, 20, 1), choose(self.possible, 20, 2))


class Equivalents(unittest.TestCase):
    def read(self, text):
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "list"
            path.write_text(text, encoding="utf-8")
            return read_equivalents(path)

    def test_are_read_with_their_reasons(self):
        self.assertEqual(
            {("a.cpp", "if (b < 1)", "if (b <= 1)"): "b is never 1, as C says",
             ("d.cpp", "e();", "{}"): "twice",
             ("d.cpp", "f();", None): "never run"},
            self.read("# a list\n\na.cpp\n- if (b < 1)\n+ if (b <= 1)\n= b is never 1,\n  as C says\n"
                      "\nd.cpp\n- e();\n+ {}\n= twice\n\nd.cpp\n- f();\n= never run\n"))

    def test_are_one_change_of_a_line_or_all(self):
        change, *others = Source("a.cpp", "void F() {\n  if (a == 1) b();\n}\n").changes()
        self.assertIn(("a.cpp", "if (a == 1) b();", "if (a != 1) b();"), change.keys())
        for other in others:
            self.assertEqual({("a.cpp", "if (a == 1) b();", None)},
                             {*change.keys()} & {*other.keys()})

    def test_of_the_project_are_possible_changes(self):
        root = Path(__file__).resolve().parents[2]
        entries = {*read_equivalents(root / "tools" / "mutants.equivalent")}
        possible = {key for path in {entry[0] for entry in entries}
                    for change in Source(path, (root / path).read_text(encoding="utf-8")).changes()
                    for key in change.keys()}
        self.assertEqual(set(), entries - possible)

    def test_without_a_reason_are_refused(self):
        with self.assertRaisesRegex(Fault, "list: not an entry .*\na.cpp\n- b\n\\+ c"):
            self.read("a.cpp\n- b\n+ c\n")


class Definitions(unittest.TestCase):
    def test_are_those_that_the_objects_sources_name(self):
        with tempfile.TemporaryDirectory() as folder:
            build = Build.__new__(Build)
            build.root = Path(folder)
            (build.root / "a.cpp").write_text('#include "a.h"\nF(TEV_OWN);\nF(TEV_OTHERS);\n')
            (build.root / "a.h").write_text("int i = TEV_NUMBER;\n")
            build.headers = {"a.o": {"a.cpp", "a.h"}}
            build.compiles = {"a.o": {"words": ["g++", "-DTEV_OWN=1", "-DTEV_OTHER=2",
                                                "-DTEV_NUMBER", "-DNDEBUG", "-c", "a.cpp"]}}
            self.assertEqual(["-DTEV_OWN=1", "-DTEV_NUMBER"], build.definitions("a.o"))


if __name__ == "__main__":
    unittest.main()
