#!/usr/bin/python3
"""check_cost.py --hub HUB --fixtures FOLDER [--plugins N] [--entries N] [--rounds N]

Measures HUB check on a product of N plugins with libraries, beside the time that Frame_Init takes
for it by the frame's own log, and by how much HUB run waits for its findings before the start.
Prints the medians of all rounds. Then the same check when one list has N entries more.
"""

import argparse
import json
import os
import re
import shutil
import statistics
import subprocess
import tempfile
import time
from pathlib import Path

DESCRIPTION = """<?xml version="1.0" encoding="UTF-8"?>
<Plugin>
  <Type>2</Type>
  <ID>{id}</ID>
  <Name>{id}</Name>
  <Version>1.0.0</Version>
  <IsDistributed>0</IsDistributed>
  <DependencyList>
{dependencies}
  </DependencyList>
</Plugin>
"""


def write_product(folder, count, library):
    meta = folder / "bin" / "META_INFO"
    meta.mkdir(parents=True)
    ids = [f"plugin{i}.server" for i in range(count)]
    entries = "\n".join(f'    <Plugin ID="{i}" Version="1.0.0"/>' for i in ids)
    (folder / "Product.xml").write_text(
        f"<ProductDescription>\n  <Product>NVX</Product>\n  <Version>2.7.1</Version>\n"
        f"  <Plugins>\n{entries}\n  </Plugins>\n</ProductDescription>\n", encoding="utf-8")
    for name, root in (("DeviceDrivers", "DAMDrivers"), ("Portal", "PortalDescription"),
                       ("Platform", "Platform")):
        (meta / f"{name}.xml").write_text(f"<{root}/>\n", encoding="utf-8")
    for i, identity in enumerate(ids):
        (meta / identity).mkdir()
        others = ids[max(0, i - 4):i]
        (meta / identity / f"{identity}.xml").write_text(DESCRIPTION.format(
            id=identity, dependencies="\n".join(f'    <Plugin ID="{o}"/>' for o in others)),
            encoding="utf-8")
        shutil.copy(library, folder / "bin" / f"{identity}.dll")


def seconds_of(*arguments):
    begin = time.monotonic()  # without a limit, for which subprocess polls every 50 ms
    subprocess.run(arguments, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
    return time.monotonic() - begin


def frame_init_seconds(hub, folder):
    """From the frame's own line on Frame_Init's cost."""
    log = folder / "model.log"
    log.unlink(missing_ok=True)
    seconds_of(hub, "model", "--bin", folder / "bin", "--log", log)
    found = re.search(r"1\.Init.*cost time \[(\d+)\]ms", log.read_text(errors="replace"))
    return int(found[1]) / 1000


def seconds_before_start(hub, folder):
    """From the end of Frame_Init to the call of Frame_Start, by the flight record."""
    record = folder / "run.jsonl"
    record.unlink(missing_ok=True)
    seconds_of(hub, "run", "--bin", folder / "bin", "--record", record,
               "--start-timeout", "2", "--stop-timeout", "0.1")
    times = {}
    for line in record.read_text(encoding="utf-8").splitlines():
        event = json.loads(line)
        if event["record"] == "event":
            times.setdefault((event["event"], event.get("phase")), event["ns"])
    return (times["phase-begin", "platform-start"] - times["phase-end", "frame-init"]) / 1e9


def add_entries(folder, count):
    """To the list of dependencies of the last plugin."""
    last = sorted(folder.glob("bin/META_INFO/*/*.xml"))[-1]
    added = "".join(f'    <Plugin ID="absent{i}.server"/>\n' for i in range(count))
    last.write_text(last.read_text().replace("  </DependencyList>", added + "  </DependencyList>"))


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--hub", required=True, type=os.path.abspath)
    parser.add_argument("--fixtures", required=True, type=Path)
    parser.add_argument("--plugins", type=int, default=900)
    parser.add_argument("--entries", type=int, default=20000)
    parser.add_argument("--rounds", type=int, default=7)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        write_product(folder, options.plugins, options.fixtures / "well_behaved.dll")
        rounds = range(options.rounds)
        check = statistics.median(seconds_of(options.hub, "check", "--bin", folder / "bin")
                                  for _ in rounds)
        init = statistics.median(frame_init_seconds(options.hub, folder) for _ in rounds)
        start = statistics.median(seconds_before_start(options.hub, folder) for _ in rounds)
        add_entries(folder, options.entries)
        long = seconds_of(options.hub, "check", "--bin", folder / "bin")
    print(f"{options.plugins} plugins: HUB check {check:.3f} s, Frame_Init {init:.3f} s: "
          f"{check / init:.2f} times; HUB run is {start:.3f} s between Frame_Init and Frame_Start")
    print(f"{options.entries} entries more in one list: HUB check {long:.2f} s")


if __name__ == "__main__":
    main()
