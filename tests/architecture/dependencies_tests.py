#!/usr/bin/python3
"""Checks what the frame's sources and headers include in the end, by the compiler's own lists.

dependencies_tests.py BUILD: reads the lists that Ninja keeps of the build in BUILD, one for each
object: every file that the compiler opened for it. The headers of src/ have an object each, which
is the header alone.
"""

import re
import subprocess
import sys
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent

# Folder, the folders of ours that its files may reach, the libraries that they may reach.
RULES = {
    "src/PluginFrame": (["src/PluginFrame", "src/lock", "src/model", "src/private", "sdk"], ["boost"]),
    "src/private": (["src/private", "src/model", "sdk"], []),
    "src/model": (["src/model"], []),
    "src/lock": (["src/lock", "sdk"], []),
}
# libxml2's headers include those of ICU.
RULES_OF_FILES = {"src/private/XmlProto.cpp": (RULES["src/private"][0], ["libxml2", "unicode"])}

# What stands behind "include/" or "include-fixed/" in the path of a header of the compiler, the C
# library or Windows.
OF_THE_SYSTEM = re.compile(r"[^/]+$|(c\+\+|x86_64-linux-gnu|asm|asm-generic|linux|sys|sec_api|"
                           r"psdk_inc|sdks)/")

OBJECT = re.compile(r"(?:src/CMakeFiles/tev_frame_objects\.dir/(?P<source>.*\.cpp)"
                    r"|tests/CMakeFiles/tev_headers_alone\.dir/headers/(?P<header>src/.*\.h)\.cpp)"
                    r"\.(?:o|obj)$")


def known_dependencies(build):
    """{"src/model/AddonModel.h": [Path, ...], ...} of the frame's sources and headers."""
    text = subprocess.run(["ninja", "-C", build, "-t", "deps"], check=True, text=True,
                          stdout=subprocess.PIPE).stdout
    found = {}
    for block in text.split("\n\n"):
        name, *files = [line.strip() for line in block.splitlines()
                        if line and not line.startswith("ninja: ")] or [""]
        match = OBJECT.match(name.split(": ")[0])
        if match:
            source = match["header"] or "src/" + match["source"]
            paths = [(Path(build) / file).resolve() for file in files]
            made = (Path(build) / "tests/headers").resolve()
            found[source] = [path for path in paths if made not in path.parents]
    return found


def library_of(path):
    """The library that a header outside of our tree belongs to; None for the system's own."""
    behind = re.split("/include(?:-fixed)?/", path.as_posix())[-1]
    return None if OF_THE_SYSTEM.match(behind) else behind.split("/")[0]


def offences(source, files):
    folders, libraries = RULES_OF_FILES.get(source) or RULES["/".join(source.split("/")[:2])]
    for file in files:
        if ROOT in file.parents and ROOT / "build" not in file.parents:
            path = file.relative_to(ROOT).as_posix()
            if not path.startswith(tuple(folder + "/" for folder in folders)):
                yield f"{source} reaches {path}"
        elif library_of(file) not in [None, *libraries]:
            yield f"{source} reaches {file}"


class Dependencies(unittest.TestCase):
    known = {}

    def test_are_known_of_every_source_and_header(self):
        files = [path.relative_to(ROOT).as_posix() for path in (ROOT / "src").rglob("*")
                 if path.suffix in (".h", ".cpp")]
        own = ["src/lock/RecursiveMutexTable.cpp"]  # an object of the library's alone
        self.assertEqual(sorted(set(files) - set(own)), sorted(set(self.known) & set(files)))

    def test_keep_to_the_folders_and_libraries_of_their_rule(self):
        self.assertEqual([], [offence for source, files in sorted(self.known.items())
                              for offence in offences(source, files)])

    def test_only_the_xml_access_knows_the_parser(self):
        self.assertEqual(["src/private/XmlProto.cpp"],
                         [source for source, files in sorted(self.known.items())
                          if any("/libxml/" in file.as_posix() for file in files)])


if __name__ == "__main__":
    Dependencies.known = known_dependencies(sys.argv.pop(1))
    unittest.main()
