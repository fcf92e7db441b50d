#!/usr/bin/python3
"""check_products.py MODE --hub HUB --fixtures FOLDER --program FILE [--products N] [--seed S]
[--jobs N] [--list]

Checks random products with HUB check and compares with what happens.

    good     N products without a fault: none has a finding.
    edited   N good products with one random edit each: those whose model or start it changes have
             a finding that names the edited file, unless the edited product is as good as the one
             before. --list prints those without a finding, with the reason.
    run      N products with one to three edits: what check says of each happens in HUB model and
             HUB run: whether the frame refuses the product, which plugins fail, which never begin.

Exit status: 0, or 1 when a product is not as it should be; it is printed with its number, and left
in the folder that is named.
"""

import argparse
import json
import os
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from edits import EDITS, Untouched
from good_products import GoodProduct

LONGEST_SECONDS = 120  # of one HUB


class Hub:
    """Runs HUB on products."""

    def __init__(self, options):
        self.options = options
        suffix = f"{self.options.fixtures}/well_behaved.dll"
        self.library, self.program = Path(suffix), Path(options.program)

    def call(self, *arguments):
        return subprocess.run([self.options.hub, *arguments], capture_output=True,
                              timeout=LONGEST_SECONDS, check=False, text=True, errors="replace")

    def check(self, folder):
        done = self.call("check", "--bin", f"{folder}/bin", "--format", "json")
        if done.returncode not in (0, 1):
            raise RuntimeError(f"HUB check ended with {done.returncode}: {done.stderr}")
        return json.loads(done.stdout)

    def model(self, folder):
        """The exit status and what was handed over, as a text to compare."""
        done = self.call("model", "--bin", f"{folder}/bin")
        return done.returncode, done.stdout

    def run(self, folder):
        """The object of a run that is stopped once the product is up, or after four seconds."""
        with tempfile.TemporaryDirectory() as name:
            record = Path(name) / "run.jsonl"
            command = [self.options.hub, "run", "--bin", f"{folder}/bin", "--json",
                       "--record", str(record), "--start-timeout", "4", "--stop-timeout", "4"]
            with subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                  text=True, errors="replace") as hub:
                while hub.poll() is None:
                    if record.is_file() and b'"event":"up"' in record.read_bytes():
                        hub.send_signal(signal.SIGINT)
                        break
                    time.sleep(0.02)
                output = hub.communicate(timeout=LONGEST_SECONDS)[0]
        return json.loads(output) if output else {}

    def fresh(self, number):
        """A good product in a new folder, and its generator."""
        generator = random.Random(number)
        folder = Path(tempfile.mkdtemp(prefix=f"product{number}."))
        product = GoodProduct(generator)
        product.write(folder, self.library, self.program)
        return folder, product, generator


def shown(finding):
    return (f"{finding.get('file', '')}:{finding.get('line', '')}: {finding['severity']}: "
            f"{finding['message']} [{finding['rule']}]")


def check_good(hub, number):
    folder, _, _ = hub.fresh(number)
    findings = hub.check(folder)["findings"]
    if not findings:
        shutil.rmtree(folder)
        return []
    return [f"product {number} in {folder}:", *("  " + shown(f) for f in findings)]


def files_named(finding):
    return {finding.get("file"), *(related.get("file") for related in finding.get("related", []))}


def check_edited(hub, number):
    """(kind of edit, changed, found, line, why it is as good as before)"""
    folder, product, generator = hub.fresh(number)
    before = hub.model(folder)
    edit = generator.choice(EDITS)
    try:
        file, text, ofStart = edit(folder, product, generator, hub.options.fixtures)
    except Untouched:
        shutil.rmtree(folder)
        return None
    changed = ofStart or hub.model(folder) != before
    named = [f for f in hub.check(folder)["findings"]
             if file in files_named(f) or file in f["message"]]
    shutil.rmtree(folder)
    reason = why_good(edit.__name__, file, text)
    return edit.__name__, changed, bool(named), f"product {number}: {file}: {text}", reason


def check_run(hub, number):
    """What check says of a product with up to three edits, beside what happens in a run."""
    folder, product, generator = hub.fresh(number)
    texts = []
    for _ in range(generator.randint(1, 3)):
        try:
            file, text, _ = generator.choice(EDITS)(folder, product, generator,
                                                    hub.options.fixtures)
            texts.append(f"{file}: {text}")
        except (Untouched, FileNotFoundError):
            pass
    findings = hub.check(folder)["findings"]
    differences = compare_with_run(findings, hub.model(folder)[0] != 0, hub.run(folder))
    if differences:
        return [f"product {number} in {folder}: {'; '.join(texts)}",
                *("  " + line for line in differences), *("    " + shown(f) for f in findings)]
    shutil.rmtree(folder)
    return []


CYCLE_RULES = {"TEV306", "TEV307"}
# Rules on a library that make its plugin fail, in each run.
FATAL_LIBRARY_RULES = {"TEV401", "TEV402", "TEV403", "TEV404", "TEV405", "TEV407", "TEV408",
                       "TEV409", "TEV410", "TEV413"}
DROP_RULES = {"TEV204", "TEV209"}


def compare_with_run(findings, refused, run):
    """What check says and the run contradicts, or the run shows and check does not say."""
    says = {rule: {f.get("plugin") for f in findings if f["rule"] == rule}
            for rule in {f["rule"] for f in findings}}
    says_refused = any("the frame refuses the product" in f["message"] for f in findings)
    if refused or says_refused:
        same = refused == says_refused
        return [] if same else [f"refused: {refused}, check says {says_refused}"]
    states = {plugin["id"]: plugin["state"] for plugin in run.get("plugins", [])
              if plugin["kind"] in ("server", "platform")}
    says_failed = set().union(*(says.get(rule, set()) for rule in FATAL_LIBRARY_RULES))
    if "TEV213" in says:  # a sub platform without an ID, for which the frame loads .dll
        says_failed.add("")
    if run.get("status") == "crashed":  # by a library that is cut short
        loading = {plugin for plugin, state in states.items() if state == "loading"}
        return [] if loading & says_failed else [f"crashed in {loading}, check says {says_failed}"]
    differences = []
    waits = any(state == "waiting" for state in states.values())
    says_cycle = bool(CYCLE_RULES & set(says))
    if waits != says_cycle:
        differences.append(f"plugins wait for ever: {waits}, check says {says_cycle}")
    failed = {plugin for plugin, state in states.items() if state in ("not-loaded", "init-failed")}
    started = {plugin for plugin, state in states.items() if state != "waiting"}
    for plugin in sorted((failed ^ says_failed) & started):
        differences.append(f"{plugin} fails: {plugin in failed}, check says {plugin in says_failed}")
    for rule in DROP_RULES:
        for plugin in sorted(says.get(rule, set()) & set(states), key=str):
            differences.append(f"{plugin} is started, check says by {rule} that it is dropped")
    return differences


def without_faults(hub, options, numbers, look, sentence):
    """Whether `look` has nothing to say of any product; prints what it says."""
    faults = [line for lines in options.pool.map(lambda n: look(hub, n), numbers) for line in lines]
    if faults:
        print("\n".join(faults[:200]))
    bad = sum(line.startswith("product") for line in faults)
    print(sentence.format(len(numbers), bad))
    return bad == 0


def runs_agree(hub, options, numbers):
    return without_faults(hub, options, numbers, check_run,
                          "{} products with edits, {} that run otherwise than check says")


def all_good(hub, options, numbers):
    return without_faults(hub, options, numbers, check_good,
                          "{} good products, {} with a finding")


def why_good(kind, file, text):
    """Why a product with such an edit is as good as before; empty when it is not."""
    if kind == "edge_added":
        return "one dependency more, on a plugin that starts and does not wait for this one"
    if kind == "attribute_dropped" and text == "<Plugin> has no Version any more" and \
            file.startswith("bin/META_INFO/"):
        return "a dependency may name no version"
    if kind == "value_changed":
        return "a value like the one before"
    return ""


def edits_found(hub, options, numbers):
    kinds = {}
    missed = []
    for result in options.pool.map(lambda n: check_edited(hub, n), numbers):
        if result is None or not result[1]:
            continue
        kind, _, found, line, reason = result
        count = kinds.setdefault(kind, [0, 0, 0])
        count[0] += 1
        count[1] += found
        count[2] += not found and bool(reason)
        if not found:
            missed.append(f"{kind}: {line}{': as good: ' + reason if reason else ''}")
    if options.list:
        print("\n".join(sorted(missed)))
    for kind, (changed, found, good) in sorted(kinds.items()):
        print(f"{kind:24} {found:4} of {changed:4}, {good:4} as good as before")
    # A changed value tells nothing: hardly any value is contradicted by another one.
    counted = [count for kind, count in kinds.items() if kind != "value_changed"]
    changed, found, good = (sum(count[i] for count in counted) for i in range(3))
    percent = 100 * found / max(changed - good, 1)
    print(f"{found} of {changed} edits of names, files and libraries that change the model or the "
          f"start have a finding, {good} of the others are as good as before: {percent:.1f} %")
    return percent >= options.least


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("mode", choices=["good", "edited", "run"])
    for name in ("hub", "fixtures", "program"):
        parser.add_argument(f"--{name}", required=True, type=os.path.abspath)
    parser.add_argument("--products", type=int, default=1000)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--least", type=float, default=95, help="per cent of the edits found")
    parser.add_argument("--list", action="store_true", help="print the edits without a finding")
    options = parser.parse_args()
    hub = Hub(options)
    numbers = range(options.seed * 100000, options.seed * 100000 + options.products)
    with ThreadPoolExecutor(options.jobs) as pool:
        options.pool = pool
        modes = {"good": all_good, "edited": edits_found, "run": runs_agree}
        good = modes[options.mode](hub, options, numbers)
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
