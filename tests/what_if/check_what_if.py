#!/usr/bin/python3
"""check_what_if.py --hub HUB --figures PROGRAM --libraries FOLDER [--products N] [--seed S] [--jobs N]
[--keep] [--option=OPTION]...

Random products whose plugins sleep or keep a core busy for known times. Each is run and recorded,
changed (other workers, or a plugin with another time), and run again:

  - the first record, scheduled anew, takes as long as it did, within its resolution;
  - the second run takes as long as was predicted from the first, within 5 % and 5 ms.

Both hold for start and stop. A frame that sleeps its whole time finds a plugin 200 ms later when it
ends a moment later: a run that is not as predicted, but as predicted for plugins that all take 5 %
less or more, is counted as "by a look". When the machine let the frame or a plugin sleep 5 ms too long in
one of the runs, both are run again, five times at most; then the prediction is not judged. Prints what does
not hold and how far all are off. Exit status: 0, or 1 when a record is not reproduced or a prediction
is wrong.
"""

import argparse
import json
import random
import shutil
import signal
import statistics
import subprocess
import sys
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

LONGEST_SECONDS = 120  # of one HUB
MILLISECOND = 1_000_000
LATEST = 5 * MILLISECOND  # that a thread wakes up on a machine that is not overloaded
ATTEMPTS = 5
STOP_MILLISECONDS = 15  # of each plugin's UnInit


class Product:
    """A random product in a new folder."""

    def __init__(self, generator, libraries):
        self.generator, self.libraries = generator, libraries
        self.folder = Path(tempfile.mkdtemp(prefix="whatif."))
        self.library = {f"p{number:02}.server": generator.choice(libraries)
                        for number in range(generator.randint(1, 14))}
        ids = list(self.library)
        self.depends_on = {}
        for number, plugin in enumerate(ids):
            count = min(number, generator.choice([0, 0, 1, 1, 2, 3]))
            self.depends_on[plugin] = generator.sample(ids[:number], count)
        listed = generator.sample(ids, len(ids))
        entries = "".join(f'<Plugin ID="{p}" Version="1.0.0"/>' for p in listed)
        self.put("Product.xml", "<ProductDescription><Product>NVX</Product><Version>2.7.1</Version>"
                 f"<Plugins>{entries}</Plugins></ProductDescription>")
        for name, root in [("DeviceDrivers", "DAMDrivers"), ("Platform", "Platform"),
                           ("Portal", "PortalDescription")]:
            self.put(f"bin/META_INFO/{name}.xml", f"<{root}/>")
        for plugin in ids:
            others = "".join(f'<Plugin ID="{o}" DependentType="1"/>'
                             for o in self.depends_on[plugin])
            self.put(f"bin/META_INFO/{plugin}/{plugin}.xml",
                     f"<Plugin><Type>2</Type><ID>{plugin}</ID><Version>1.0.0</Version>"
                     f"<DependencyList>{others}</DependencyList></Plugin>")
            self.set_library(plugin, self.library[plugin])

    def put(self, name, text):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text('<?xml version="1.0" encoding="UTF-8"?>\n' + text + "\n")

    def set_library(self, plugin, library):
        self.library[plugin] = library
        shutil.copy(library, self.folder / "bin" / f"{plugin}.dll")

    def change(self):
        """Changes the product, or the options of its next run; returns (options, what-if)."""
        if self.generator.random() < 0.5:
            workers = self.generator.randint(1, 5)
            return [f"--workers={workers}"], f"workers={workers}"
        plugin = self.generator.choice(list(self.library))
        library = self.generator.choice(self.libraries)
        self.set_library(plugin, library)
        return None, f"{plugin}={library.stem.rpartition('_')[2]}"


def run(hub, product, name, options):
    """The record of a run that is stopped once the product is up."""
    record = product.folder / name
    command = [hub, "run", "--bin", f"{product.folder}/bin", "--record", str(record), *options]
    with subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as process:
        end = time.monotonic() + LONGEST_SECONDS
        while process.poll() is None and time.monotonic() < end:
            if record.is_file() and b'"event":"up"' in record.read_bytes():
                break
            time.sleep(0.02)
        process.send_signal(signal.SIGINT)
        process.wait(LONGEST_SECONDS)
    return record


def excess(record, library):
    """How much longer than it should the slowest Init or UnInit took, in nanoseconds."""
    most = 0
    for line in record.read_text().splitlines():
        event = json.loads(line)
        if event.get("event") == "init-end":
            most = max(most, event["ms"] - int(library[event["plugin"]].stem.rpartition("_")[2]))
        elif event.get("event") == "uninit-end":
            most = max(most, event["ms"] - STOP_MILLISECONDS)
    return most * MILLISECOND


def figures(program, record, *changes):
    done = subprocess.run([program, record, *changes], capture_output=True, check=True, text=True)
    return [json.loads(line) for line in done.stdout.splitlines()]


def is_near(predicted, took):
    return abs(predicted - took) <= 0.05 * took + 5 * MILLISECOND


class Result:
    """What became of one product: start and stop."""

    def __init__(self, number, folder, change):
        self.number, self.folder, self.change = number, folder, change
        self.faults, self.misses = [], []  # of the reproduction, of the prediction
        self.reproduced, self.predicted = [], []
        self.by_a_look, self.attempts, self.late = 0, 1, 0

    def is_judged(self):
        return self.late <= LATEST

    def lines(self):
        return [*self.faults, *(self.misses if self.is_judged() else [])]

    def add(self, before, after):
        phase = before["phase"]
        self.late = max(self.late, before["resolution"], after["resolution"])
        off = before["reproduced"] - before["recorded"]
        self.reproduced.append((abs(off), before["resolution"], before["worstPlugin"]))
        if before["unknown"] or after["unknown"]:
            self.faults.append(f"{phase}: {before['unknown'] or after['unknown']}")
            return
        took = after["recorded"]
        self.predicted.append(abs(before["predicted"] - took))
        if is_near(before["predicted"], took):
            return
        if is_near(before["shortest"], took) or is_near(before["longest"], took):
            self.by_a_look += 1
            return
        self.misses.append(f"{phase} after {self.change}: {before['predicted'] / 1e6:.2f} ms "
                           f"predicted, {took / 1e6:.2f} ms taken, {before['recorded'] / 1e6:.2f} "
                           "ms before")


def attempt(options, number):
    generator = random.Random(f"{options.seed}.{number}")
    product = Product(generator, sorted(Path(options.libraries).glob("*.dll")))
    limit = generator.choice([[], [], ["--workers=1"], ["--workers=2"], ["--workers=4"]])
    first = run(options.hub, product, "first.jsonl", [*limit, *options.option])
    late = excess(first, product.library)
    changed, what_if = product.change()
    changed = limit if changed is None else changed
    second = run(options.hub, product, "second.jsonl", [*changed, *options.option])
    result = Result(number, product.folder, what_if)
    result.late = max(late, excess(second, product.library))
    for before, after in zip(figures(options.figures, first, what_if),
                             figures(options.figures, second)):
        result.add(before, after)
    return result


def check(options, number):
    for attempts in range(1, ATTEMPTS + 1):
        result = attempt(options, number)
        result.attempts = attempts
        if not (options.keep or result.lines()):
            shutil.rmtree(result.folder)
        if result.faults or result.is_judged():
            break
    return result


def in_ms(values):
    values = sorted(v / MILLISECOND for v in values) or [0]
    return f"median {statistics.median(values):.3f} ms, most {values[-1]:.3f} ms"


def main():
    parser = argparse.ArgumentParser()
    for name in ["hub", "figures", "libraries"]:
        parser.add_argument(f"--{name}", required=True)
    parser.add_argument("--products", type=int, default=200)
    parser.add_argument("--seed", default="1")
    parser.add_argument("--jobs", type=int, default=3)
    parser.add_argument("--keep", action="store_true")
    parser.add_argument("--option", action="append", default=[], help="of each HUB run")
    options = parser.parse_args()
    with ThreadPoolExecutor(options.jobs) as pool:
        results = list(pool.map(lambda number: check(options, number), range(options.products)))
    faults = [r for r in results if r.lines()]
    for result in faults:
        print(f"product {result.number} in {result.folder}: " + "; ".join(result.lines()))
    judged = [r for r in results if r.is_judged()]
    reproduced = [values for r in results for values in r.reproduced]
    predicted = [off for r in judged for off in r.predicted]
    print(f"{len(results)} products, {len(faults)} with a fault; "
          f"{sum(r.attempts > 1 for r in results)} run again, {len(results) - len(judged)} of them "
          "not judged")
    print(f"{len(reproduced)} phases scheduled anew: off by {in_ms(v[0] for v in reproduced)}; "
          f"plugins by {in_ms(v[2] for v in reproduced)}; resolution "
          f"{in_ms(v[1] for v in reproduced)}")
    print(f"{len(predicted)} phases predicted: off by {in_ms(predicted)}; "
          f"{sum(r.by_a_look for r in judged)} by a look")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
