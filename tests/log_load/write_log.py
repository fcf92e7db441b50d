#!/usr/bin/python3
"""write_log.py FILE [--mib N] [--plugins N] [--every N] [--form hub|other]

Writes a log of N MiB in which every Nth line is the frame's: runs of N plugins, one after the other,
with lines of the plugins between. `other` writes the lines as a host without threads would.
"""

import argparse

FRAME = "platform.PluginFrame"


def frame(function, text):
    return FRAME, f"[PluginFrame::{function}]{text}[..\\..\\src\\PluginFrame\\PluginFrame.cpp(1)]"


def run(plugins):
    """The frame's lines of a run, each with the number of its thread."""
    yield 1, *frame("Frame_Init", "[Frame_Init]----KPX_Init end, cost time [1]ms.----")
    yield 1, *frame("Frame_Init", "[1.Init]----!Frame_Init end.success! cost time [9]ms.----")
    yield 2, *frame("Start", "[PluginManager start]Plugins init start...")
    for i in range(plugins):
        name, thread = f"plugin{i}.server", 10 + i % 64
        for text in (f"[Plugin Load]Plugin [{name}] SinglePluginLoad Begin.",
                     f"[Plugin]start frame plugin Being path= [/srv/site/bin/{name}.dll]",
                     f"[Plugin]start frame plugin end success.path= [/srv/site/bin/{name}.dll]",
                     f"[Plugin Load]Plugin Init begin.[{name}]",
                     f"[Plugin Load]Plugin Init end. [{name}] cost time [3]ms",
                     f"[Plugin Load]Plugin [{name}] SinglePluginLoad End. count[{i + 1}]."):
            yield thread, *frame("SinglePluginLoad", text)
    yield 2, *frame("Start", "[PluginManager start]Plugins init end. Total cost time [900]ms.")


def lines(plugins, every):
    number = 0
    while True:
        for thread, module, text in run(plugins):
            for _ in range(every - 1):
                number += 1
                yield (100 + number % 50, "video.server",
                       f"channel [{number % 64}] frame {number} took [{number % 977}] us, queue [3]")
            yield thread, module, text


def stamp(number):
    seconds, millisecond = divmod(number // 50, 1000)  # 50 lines in a millisecond
    return (f"2026-11-23 {10 + seconds // 3600:02}:{seconds // 60 % 60:02}:{seconds % 60:02}"
            f".{millisecond:03}")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("file")
    parser.add_argument("--mib", type=int, default=100)
    parser.add_argument("--plugins", type=int, default=900)
    parser.add_argument("--every", type=int, default=40)
    parser.add_argument("--form", choices=["hub", "other"], default="hub")
    arguments = parser.parse_args()
    left = arguments.mib << 20
    with open(arguments.file, "w", encoding="utf-8", newline="\n") as log:
        for number, (thread, module, text) in enumerate(lines(arguments.plugins, arguments.every)):
            fields = f"+01:00 [3] [{thread}] [{module}]" if arguments.form == "hub" else " INFO"
            left -= log.write(f"{stamp(number)}{fields} {text}\n")
            if left <= 0:
                return


if __name__ == "__main__":
    main()
