#!/usr/bin/python3
"""shown_output.py [--write] --hub HUB --site FOLDER --fixtures FOLDER DOCUMENT...

Compares every output of HUB that the documents show with what HUB prints; with --write puts what it
prints in its place. A code block shows the output of

    - the command of the comment before it, `<!-- $ COMMAND -->`, or
    - the command in its own first line, `$ COMMAND`; that of a comment runs before it.

A command is one of the shell, with HUB, $SITE (a copy of the sample product, made for the block),
$FIXTURES (the plugins of the tests) and $DOCS (the document's folder). The commands of one document run one after the other in one
folder of their own. HUB runs the copy, shown as the folder that --bin names; a product that an
earlier command has made is run itself. A `HUB run` that does not stop by itself is stopped by a
SIGINT once the product is up.

What differs from run to run, such as times, is what RULES name; anything else has to be the same,
blanks and the columns of a table included. --write leaves a line as it is unless more differs.

Exit status: 0 when all is as shown, or was made so; 1 when a block differs, shows what HUB prints
without naming a command, or a document shows no output; each is named on standard error.
"""

import argparse
import difflib
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

LONGEST_SECONDS = 120  # of one command

# What differs from run to run, and what stands for it in both when they are compared. A cell of a
# table keeps its width.
RULES = [
    (r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}[+-]\d\d:\d\d", "TIME"),
    (r"\[(\d)\] \[\d+\] \[", r"[\1] [THREAD] ["),
    (r"\bpid \d+ on \S+,", "pid PID on HOST,"),
    (r"\bpid \d+", "pid PID"),
    (r"(?<=\S ) *\d+ ms",
     lambda found: "MS" if found[0][0] != " " else "MS".rjust(len(found[0]))),
    (r"^\d+ ms\b", "MS"),
    (r"^up \d+$", "up MS"),
    (r"\b\d+\.\d s\b", "S"),
    (r"\(\d+\.\d%\)", "(P%)"),
    (r"(?<=\S )\d+\.\d(?![.\w])", "N"),
    (r" +\d+\.\d(?![.\w])%?", lambda found: "N".rjust(len(found[0]))),
    (r"\d+ of (\d+) started(?:, \d+ failed)?; waiting", r"N of \1 started; waiting"),
]

# A line that only HUB prints.
PRINTED = re.compile(r"\S+ +(started|stopped) in \d+ ms$|-{40,}$|\S+ \S+ \[\d\] \[\d+\] \[host\] |"
                     r"HUB: |(error|warning|note): |(up|degraded|failed): ")


def comparable(line):
    for pattern, name in RULES:
        line = re.sub(pattern, name, line)
    return line


class Block:
    """A code block: its lines without the indent, and the commands whose output it shows."""

    def __init__(self, begin, indent, lines, comment):
        self.begin = begin  # the index of its first line
        self.indent = indent
        self.lines = lines
        self.commands = [comment] if comment else []
        self.shown_from = 0
        if lines and lines[0].startswith("$ "):
            self.commands.append(lines[0][2:])
            self.shown_from = 1

    def shown(self):
        return self.lines[self.shown_from:]


def blocks_of(lines):
    """The code blocks of a document, fenced or indented by four blanks."""
    found, comment, at = [], None, 0
    while at < len(lines):
        line = lines[at]
        if line.startswith("<!-- $ "):
            end = at
            while "-->" not in lines[end]:
                end += 1
            text = "\n".join(part.strip() for part in lines[at:end + 1])
            comment = text[len("<!-- $ "):text.index("-->")].strip()
            at = end + 1
            continue
        fence = line.startswith("```")
        if fence or (line.startswith("    ") and line.strip() and not lines[at - 1].strip()):
            begin = at + 1 if fence else at
            at = begin
            if fence:
                while not lines[at].startswith("```"):
                    at += 1
                end = at
                at += 1
            else:
                while at < len(lines) and (lines[at].startswith("    ") or not lines[at].strip()):
                    at += 1
                end = at
                while not lines[end - 1].strip():
                    end -= 1
            indent = "" if fence else "    "
            found.append(Block(begin, indent, [text[len(indent):] for text in lines[begin:end]],
                               comment))
            comment = None
            continue
        if line.strip():
            comment = None
        at += 1
    return found


def merged(shown, printed):
    """What was printed, each line as it was shown where only what RULES name differs."""
    matcher = difflib.SequenceMatcher(None, [comparable(line) for line in shown],
                                      [comparable(line) for line in printed], autojunk=False)
    lines = []
    for kind, i, k, j, m in matcher.get_opcodes():
        lines += shown[i:k] if kind == "equal" else printed[j:m]
    return lines


class Shell:
    """Runs the commands of one document."""

    def __init__(self, options, folder, document):
        self._options = options
        self._folder = Path(folder)
        bin_folder = self._folder / "path"
        bin_folder.mkdir()
        hub = bin_folder / "HUB"
        hub.write_text(f'#!/bin/sh\nexec "{os.path.realpath(__file__)}" --as-hub "$@"\n')
        hub.chmod(0o755)
        (self._folder / "work").mkdir()
        self._shown_site = "/srv/site"
        self._environment = {
            **os.environ, "PATH": f"{bin_folder}:{os.environ['PATH']}",
            "REAL_HUB": os.path.realpath(options.hub), "SITE": str(self._folder / "site"),
            "FIXTURES": os.path.realpath(options.fixtures),
            "DOCS": str(document.resolve().parent),
            "XDG_STATE_HOME": str(self._folder / "state"), "LC_ALL": "C.UTF-8"}

    def printed(self, commands):
        """What the last of the commands prints, as lines."""
        site = self._folder / "site"
        shutil.rmtree(site, ignore_errors=True)
        shutil.rmtree(self._folder / "state", ignore_errors=True)
        shutil.copytree(self._options.site, site)
        output = ""
        for command in commands:
            done = subprocess.run(["sh", "-c", command], cwd=self._folder / "work",
                                  env=self._environment, capture_output=True, text=True,
                                  stdin=subprocess.DEVNULL, timeout=LONGEST_SECONDS, check=False)
            output = done.stdout
            for named in re.findall(r"--bin (\S+)/bin\b", command):
                if not (self._folder / "work" / named).is_dir():
                    self._shown_site = named
        for path, name in ((self._environment["SITE"], self._shown_site),
                           (self._environment["REAL_HUB"], "HUB")):
            output = output.replace(path, name)
        return output.splitlines()


def check(document, options):
    """What is wrong with one document, as texts; with --write it is mended instead."""
    lines = document.read_text(encoding="utf-8").splitlines()
    faults, replaced, shows = [], [], False
    with tempfile.TemporaryDirectory() as folder:
        shell = Shell(options, folder, document)
        for block in blocks_of(lines):
            place = f"{document}:{block.begin + 1}"
            if not block.commands:
                if any(PRINTED.match(line.strip()) for line in block.lines):
                    faults.append(f"{place}: looks like what HUB prints, but names no command")
                continue
            shows = True
            shown, printed = block.shown(), shell.printed(block.commands)
            if not printed:
                faults.append(f"{place}: prints nothing: {block.commands[-1]}")
                continue
            wanted = merged(shown, printed)
            if wanted == shown:
                continue
            replaced.append((block, wanted))
            faults.append("\n".join(difflib.unified_diff(
                shown, wanted, f"{place} shows", "HUB prints", lineterm="")))
    if options.write:
        for block, wanted in reversed(replaced):
            begin = block.begin + block.shown_from
            lines[begin:begin + len(block.shown())] = [
                block.indent + line if line else "" for line in wanted]
        if replaced:
            document.write_text("\n".join(lines) + "\n", encoding="utf-8")
        return [f for f in faults if not f.startswith("---")], len(replaced)
    return faults if shows else [*faults, f"{document}: shows no output of HUB"], 0


def run_as_hub(arguments):
    """HUB as a document's command sees it: the copy of the product in place of the one it names,
    unless the document has made that, and somebody who stops it."""
    named = "--bin" in arguments
    at = arguments.index("--bin") if named else len(arguments)
    is_of_document = named and Path(arguments[at + 1]).is_dir()
    if not is_of_document and (named or arguments[0] not in ("report", "replay")):
        arguments[at:at + 2] = ["--bin", os.environ["SITE"] + "/bin"]
    with tempfile.TemporaryDirectory() as folder:
        record = Path(folder) / "run.jsonl"
        stops = arguments[0] == "run" and not {"--seconds", "--until-up"} & set(arguments)
        if stops and "--record" in arguments:
            record = Path(arguments[arguments.index("--record") + 1])
        elif stops:
            arguments += ["--record", str(record)]
        with subprocess.Popen([os.environ["REAL_HUB"], *arguments]) as hub:
            while stops and hub.poll() is None:
                if record.is_file() and b'"event":"up"' in record.read_bytes():
                    hub.send_signal(signal.SIGINT)
                    break
                time.sleep(0.02)
            status = hub.wait()
    return status if status >= 0 else 128 - status


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--write", action="store_true")
    for name in ("hub", "site", "fixtures"):
        parser.add_argument(f"--{name}", required=True)
    parser.add_argument("documents", nargs="+", type=Path)
    options = parser.parse_args()
    with ThreadPoolExecutor(2) as pool:
        results = list(pool.map(lambda document: check(document, options), options.documents))
    for faults, replaced in results:
        for fault in faults:
            print(fault, file=sys.stderr)
    count = sum(replaced for _, replaced in results)
    if options.write:
        print(f"{count} {'block' if count == 1 else 'blocks'} rewritten")
    return 1 if any(faults for faults, _ in results) else 0


if __name__ == "__main__":
    sys.exit(run_as_hub(sys.argv[2:]) if sys.argv[1:2] == ["--as-hub"] else main())
