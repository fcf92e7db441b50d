#!/usr/bin/python3
"""check_in_a_build_tests.py HUB PRODUCT DOCUMENT: whether the problem matcher and the hook of
docs/check-in-a-build.md do what it says, with a copy of the good product PRODUCT."""

import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

HUB, PRODUCT, DOCUMENT = (Path(sys.argv.pop(1)).resolve() for _ in range(3))
DESCRIPTION = "bin/META_INFO/alarm.server/alarm.server.xml"


def block(name):
    """The code block behind the comment `<!-- name -->`."""
    text = DOCUMENT.read_text(encoding="utf-8").split(f"<!-- {name} -->\n")[1]
    return text.split("```")[1].split("\n", 1)[1]


class InABuild(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))
        shutil.copytree(PRODUCT, self.folder / "product")

    def spoil(self):
        """Adds a dependency on an ID that does not exist."""
        file = self.folder / "product" / DESCRIPTION
        file.write_text(file.read_text(encoding="utf-8").replace("storage.server", "stroage.server"),
                        encoding="utf-8")

    def check(self, *arguments):
        return subprocess.run([HUB, "check", "--bin", "product/bin", "--ignore", "libraries",
                               *arguments], cwd=self.folder, capture_output=True, text=True,
                              check=False, timeout=60)


class Matcher(InABuild):
    def matches(self):
        pattern, = json.loads(block("matcher"))["problemMatcher"][0]["pattern"]
        found = []
        for line in self.check().stdout.splitlines():
            match = re.match(pattern["regexp"], line)
            if match:
                found.append({name: match[pattern[name]]
                              for name in ("file", "line", "column", "severity", "code")})
        return found

    def test_finds_nothing_in_the_output_of_a_good_product(self):
        self.assertEqual([], self.matches())

    def test_finds_file_line_column_severity_and_rule(self):
        self.spoil()
        self.assertEqual([{"file": f"product/{DESCRIPTION}", "line": "9", "column": "13",
                           "severity": "error", "code": "TEV301"}], self.matches())

    def test_finds_a_file_that_is_missing_as_a_whole(self):
        (self.folder / "product/bin/META_INFO/Platform.xml").unlink()
        self.assertEqual([{"file": "product/bin/META_INFO/Platform.xml", "line": None,
                           "column": None, "severity": "error", "code": "TEV101"}],
                         self.matches())


class Hook(InABuild):
    def setUp(self):
        super().setUp()
        self.environment = {
            **os.environ, "PATH": f"{HUB.parent}:{os.environ['PATH']}", "HOME": str(self.folder),
            "GIT_CONFIG_NOSYSTEM": "1", "GIT_AUTHOR_NAME": "a", "GIT_AUTHOR_EMAIL": "a@example.org",
            "GIT_COMMITTER_NAME": "a", "GIT_COMMITTER_EMAIL": "a@example.org"}
        for name in [name for name in self.environment if name.startswith("GIT_DIR")]:
            del self.environment[name]
        self.git("init", "--quiet")
        hook = self.folder / ".git" / "hooks" / "pre-commit"
        hook.parent.mkdir(exist_ok=True)
        hook.write_text(block("hook"), encoding="utf-8")
        hook.chmod(0o755)
        self.git("add", "product")

    def git(self, *arguments):
        return subprocess.run(["git", *arguments], cwd=self.folder, env=self.environment,
                              capture_output=True, text=True, check=False, timeout=60)

    def commit(self):
        return self.git("commit", "--quiet", "--message", "x")

    def test_lets_a_good_product_pass(self):
        done = self.commit()
        self.assertEqual((0, "no findings\n"), (done.returncode, done.stdout + done.stderr))

    def test_refuses_a_wrong_one(self):
        self.spoil()
        self.git("add", "product")
        done = self.commit()
        self.assertEqual(1, done.returncode)
        self.assertIn("[TEV301]", done.stdout + done.stderr)

    def test_checks_what_is_staged(self):
        self.spoil()
        self.assertEqual(0, self.commit().returncode)

    def test_checks_nothing_without_a_change_of_the_product(self):
        self.commit()
        (self.folder / "other").write_text("x", encoding="utf-8")
        self.git("add", "other")
        done = self.commit()
        self.assertEqual((0, ""), (done.returncode, done.stdout + done.stderr))


if __name__ == "__main__":
    unittest.main()
