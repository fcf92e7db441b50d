"""Builds changed sources against the objects of a finished build, without touching it.

`Build` is the finished build: its compile and link commands and its tests. A `Bench` is a copy of
its programs in another folder, in which one change after the other is compiled, linked and tested.
"""

import json
import os
import re
import select
import shlex
import shutil
import signal
import subprocess
import threading
import time

from . import Fault


UNOPTIMISED = ["-O0", "-g0"]  # builds in a third of the time


class Processes:
    """The running processes, each in its own process group, so that its children end with it."""

    def __init__(self):
        self._mutex = threading.Lock()
        self._running = set()  # guarded by _mutex
        self._closed = False  # guarded by _mutex

    def run(self, command, limit=None, output=subprocess.DEVNULL, **how):
        """Runs a command. Returns its exit status, or None when the time limit ended it."""
        with self._mutex:
            if self._closed:
                raise KeyboardInterrupt
            process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=output,
                                       stderr=subprocess.STDOUT, start_new_session=True, **how)
            self._running.add(process.pid)
        ended = os.pidfd_open(process.pid)
        try:
            waiting = select.poll()
            waiting.register(ended, select.POLLIN)
            in_time = waiting.poll(None if limit is None else limit * 1000)
        finally:
            os.close(ended)
            with self._mutex:
                self._end(process.pid)  # also children that it has left running
                self._running.discard(process.pid)
        status = process.wait()
        with self._mutex:
            if self._closed:
                raise KeyboardInterrupt
        return status if in_time else None

    def close(self):
        """Ends all processes and prevents new ones."""
        with self._mutex:
            self._closed = True
            for pid in self._running:
                self._end(pid)

    @staticmethod
    def _end(pid):
        try:
            os.killpg(pid, signal.SIGKILL)
        except ProcessLookupError:
            pass


class Test:
    """One test of ctest's list; it runs as a process."""

    def __init__(self, entry, build):
        properties = {p["name"]: p["value"] for p in entry.get("properties", [])}
        self.name = entry["name"]
        self.command = entry["command"]
        self.program = os.path.relpath(self.command[0], build)
        self.folder = properties.get("WORKING_DIRECTORY", str(build))
        self.environment = dict(pair.split("=", 1) for pair in properties.get("ENVIRONMENT", []))
        self.seconds = 0.0  # duration without a change


class Build:
    """A finished CMake build in the Ninja format."""

    def __init__(self, folder, root, left_out):
        self.folder = folder
        self.root = root
        if not (folder / "build.ninja").is_file():
            raise Fault(f"{folder} holds no Ninja build; build it first: make build")
        self.compiles = {}  # object -> its entry of the compile commands
        for entry in json.loads((folder / "compile_commands.json").read_text()):
            entry["words"] = shlex.split(entry["command"])
            entry["file"] = os.path.relpath(entry["file"], root)
            output = entry.get("output") or entry["words"][entry["words"].index("-o") + 1]
            entry["output"] = os.path.relpath(folder / output, folder)
            self.compiles[entry["output"]] = entry
        self.links = {}  # program, library or archive -> its commands, as words
        for entry in json.loads(self._ninja("-t", "compdb")):
            if entry["command"].startswith(": && "):
                self._add_link(entry)
        self.inputs = {output: self._inputs(output) for output in self.links}
        self.loads = self._loads()
        self.headers = self._headers()
        self.tests = self._tests(left_out)

    def _ninja(self, *arguments):
        return self._output(["ninja", "-C", str(self.folder), *arguments])

    @staticmethod
    def _output(command):
        result = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True,
                                check=False)
        if result.returncode != 0:
            raise Fault(f"{shlex.join(command)} failed:\n{result.stdout}{result.stderr}")
        lines = result.stdout.splitlines(keepends=True)
        return "".join(line for line in lines if not line.startswith("ninja: Entering"))

    def _add_link(self, entry):
        steps = [step.strip() for step in entry["command"].split(" && ")]
        steps = [step for step in steps if re.search(r" -o \S+|^\S*ar qc |^\S*ranlib ", step)]
        if steps:  # quoted for the shell: "\$ORIGIN"
            self.links[entry["output"]] = [
                [word.replace("\\$", "$") for word in shlex.split(step)] for step in steps]

    def _inputs(self, output):
        return [word for step in self.links[output] for word in step
                if word != output and (word in self.compiles or word in self.links)]

    def _loads(self):
        """Output -> the programs and libraries that it starts or loads: those built before it."""
        loads, current = {}, None
        for line in self._ninja("-t", "query", *self.links).splitlines():
            if not line[:1].isspace():
                current = loads.setdefault(line.rstrip(":"), set())
            elif line.strip().startswith("|| ") and line.strip()[3:] in self.links:
                current.add(line.strip()[3:])
        return loads

    def _headers(self):
        """Object -> the files of the project from which it was compiled."""
        headers, current = {}, None
        root = str(self.root) + os.sep
        for line in self._ninja("-t", "deps").splitlines():
            if line and not line[0].isspace():
                current = headers.setdefault(line.split(":", 1)[0], set())
            elif line.strip():
                path = os.path.normpath(os.path.join(self.folder, line.strip()))
                if path.startswith(root):
                    current.add(path[len(root):])
        return headers

    def _tests(self, left_out):
        listed = json.loads(self._output(
            ["ctest", "--test-dir", str(self.folder), "--show-only=json-v1"]))
        tests = {}  # program -> its tests
        for entry in listed["tests"]:
            if not left_out or not re.search(left_out, entry["name"]):
                if "command" in entry:
                    test = Test(entry, self.folder)
                    tests.setdefault(test.program, []).append(test)
        return {program: found for program, found in tests.items() if program in self.links}

    def is_sanitized(self):
        return any(word.startswith("-fsanitize") for entry in self.compiles.values()
                   for word in entry["words"])

    def check_fresh(self, programs):
        """Raises Fault unless these programs were built from the current sources."""
        for output in sorted(set().union(programs, *(self.used(p, loaded=True) for p in programs))):
            parts = {output, *self.contents(output)}
            for part in sorted(parts - {output}):
                self._check_newer(part, [self.root / f for f in self.headers.get(part, ())])
            self._check_newer(output, [self.folder / part for part in parts])

    def _check_newer(self, output, inputs):
        built = self.folder / output
        if not built.is_file():
            raise Fault(f"{built} is not built; build it first: make build")
        for path in inputs:
            if path.is_file() and path.stat().st_mtime > built.stat().st_mtime:
                raise Fault(f"{built} is older than {path}; build it first: make build")

    def objects_of(self, path, paths):
        """The objects of those sources below `paths` that are, or include, the file at `path`."""
        return sorted(output for output, entry in self.compiles.items()
                      if path in self.headers.get(output, ()) and below(entry["file"], paths))

    def objects_with(self, path, program):
        """The objects of the program whose source is, or includes, the file at `path`."""
        return sorted(output for output in self.contents(program)
                      if output in self.compiles and path in self.headers.get(output, ()))

    def definitions(self, output):
        """The macros that the object's command defines, as far as its sources name them."""
        files = self.headers.get(output, ())
        text = "\n".join((self.root / f).read_text(encoding="utf-8") for f in files)
        return [word for word in self.compiles[output]["words"] if word.startswith("-D")
                and re.search(rf"\b{re.escape(word[2:].split('=')[0])}\b", text)]

    def contents(self, output):
        """Objects and archives from which an output is linked, directly or through archives."""
        return self._reached(output, lambda name: [
            part for part in self.inputs.get(name, ()) if not is_library(part)])

    def used(self, output, loaded):
        """The programs and libraries that an output needs to run, including itself; with `loaded`
        also those that it starts or loads."""
        found = self._reached(output, lambda name: [
            *self.inputs.get(name, ()), *(self.loads.get(name, ()) if loaded else ())])
        return {output, *(name for name in found if name in self.links and not name.endswith(".a"))}

    @staticmethod
    def _reached(output, parts_of):
        found, waiting = set(), [output]
        while waiting:
            for name in parts_of(waiting.pop()):
                if name not in found:
                    found.add(name)
                    waiting.append(name)
        return found

    def programs_of(self, objects, loaded):
        """The test programs that run code of these objects."""
        holders = {o for o in self.links if self.contents(o) & set(objects)}
        return sorted(p for p in self.tests if self.used(p, loaded) & holders)


def is_library(name):
    return ".so" in os.path.basename(name)


def below(path, folders):
    return any(path == folder or path.startswith(folder.rstrip("/") + "/") for folder in folders)


class Bench:
    """A folder in which changes are compiled, linked and tested, one after the other.

    Used by one thread at a time; several benches may work at once on one build.
    """

    def __init__(self, build, folder, processes):
        self.build = build
        self.folder = folder
        self.mirror = folder / "build"
        self.overlay = folder / "source"
        self._processes = processes
        self._changed = {}  # object -> the changed object to link instead of it
        self._version = None  # the change that the changed objects contain
        self._built = {}  # output -> the objects linked instead of the build's, and their change
        self._moved = {}  # object -> the one compiled with this bench's paths, not the build's

    def prepare(self):
        """Copies all files that programs and tests open: everything but objects and archives.
        Programs and libraries are only linked: a new one replaces the link, none is modified."""
        shutil.rmtree(self.folder, ignore_errors=True)
        for folder in (self.overlay, self.folder / "objects", self.folder / "temporary"):
            folder.mkdir(parents=True)
        for path, folders, files in os.walk(self.build.folder):
            folders[:] = [f for f in folders if f not in ("CMakeFiles", "Testing", "_deps")]
            here = self.mirror / os.path.relpath(path, self.build.folder)
            here.mkdir(parents=True, exist_ok=True)
            for name in files:
                if name.startswith(".ninja") or name.endswith((".a", ".ninja", ".cmake")):
                    continue
                linked = os.path.basename(path) == "bin"
                (os.link if linked else shutil.copy2)(os.path.join(path, name), here / name)

    def move(self, programs, objects):
        """Compiles objects again whose options name a part of the build folder that this bench has
        its own copy of: an output with these objects, or a folder, into which a test may write."""
        own = {o for o in self.build.links if self.build.contents(o) & set(objects)}
        shared = {f"{self.build.folder}/{o}" for o in self.build.links
                  if not self.build.used(o, loaded=True) & own}
        for output in sorted(set().union(*map(self.build.contents, programs))):
            entry = self.build.compiles.get(output)
            if entry is None or not self._names_own(self.build.definitions(output), shared):
                continue
            words = self._moved_words(entry["words"])
            source = self.build.root / entry["file"]
            target = self._object_path(output, "moved")
            if not self._compile_to(source, target, words, UNOPTIMISED):
                raise Fault(f"{output} does not build; see {self.folder}/compile.log")
            self._moved[output] = target

    def _moved_words(self, words):
        return [self._here(word) if word.startswith("-D") else word for word in words]

    def _names_own(self, definitions, shared):
        build = re.escape(str(self.build.folder))
        named = [path for word in definitions for path in re.findall(build + r'/[^"\\;]+', word)]
        return any(path not in shared for path in named)

    def _here(self, word):
        return word.replace(str(self.build.folder) + "/", str(self.mirror) + "/")

    def _object_path(self, output, kind):
        return self.folder / "objects" / kind / output.replace("/", "_")

    # Compiling.

    def change(self, version, path=None, text=None):
        """Begins a change: sources compiled from now on see `text` as the file at `path`."""
        shutil.rmtree(self.overlay, ignore_errors=True)
        self._changed.clear()
        self._version = version
        if path:
            changed = self.overlay / path
            changed.parent.mkdir(parents=True)
            # Log lines contain the source file: keep the original's path.
            changed.write_text(f'#line 1 "{self.build.root / path}"\n{text}', encoding="utf-8")

    def compile(self, outputs, includes):
        """Compiles the objects with the change. False when that does not build."""
        for output in outputs:
            entry = self.build.compiles[output]
            changed = self.overlay / entry["file"]
            source = changed if changed.is_file() else self.build.root / entry["file"]
            target = self._object_path(output, "changed")
            words = without_cache(entry["words"])
            if output in self._moved:
                words = self._moved_words(words)
            words[1:1] = ["-I" + str(self.overlay)]
            extra = [*UNOPTIMISED, *includes.get(output, ())]
            if not self._compile_to(source, target, words, extra):
                return False
            self._changed[output] = target
        return True

    def _compile_to(self, source, target, words, extra):
        target.parent.mkdir(parents=True, exist_ok=True)
        target.unlink(missing_ok=True)
        words = list(words)
        for option in ("-MF", "-MT"):
            if option in words:
                at = words.index(option)
                del words[at : at + 2]
        words = [word for word in words if word not in ("-MD", "-MMD")]
        words[words.index("-o") + 1] = str(target)
        words[words.index("-c") + 1] = str(source)
        words[words.index("-c"):words.index("-c")] = extra
        with open(self.folder / "compile.log", "w", encoding="utf-8") as log:
            return self._processes.run(words, cwd=self.build.folder, output=log, limit=300) == 0

    # Linking.

    def link(self, program):
        """Links the program and the libraries that it loads, if they contain changed objects. False
        when that fails."""
        return all(map(self._materialise, sorted(self.build.used(program, loaded=True))))

    def _materialise(self, output):
        held = self.build.contents(output)
        content = frozenset(
            (name, self._version if name in self._changed else None) for name in held
            if name in self._changed or name in self._moved)
        if self._built.get(output, frozenset()) == content:
            return True
        archives = [name for name in self.build.inputs[output] if name.endswith(".a")]
        if not all(self._materialise(name) for name in archives):
            return False
        target = self.mirror / output
        target.unlink(missing_ok=True)
        target.parent.mkdir(parents=True, exist_ok=True)
        for step in self.build.links[output]:
            words = [self._linked(word, output) for word in step]
            with open(self.folder / "link.log", "w", encoding="utf-8") as log:
                if self._processes.run(words, cwd=self.build.folder, output=log, limit=300) != 0:
                    self._built.pop(output, None)
                    return False
        self._built[output] = content
        return True

    def _linked(self, word, output):
        if word == output:
            return str(self.mirror / output)
        if word in self._changed:
            return str(self._changed[word])
        if word in self._moved:
            return str(self._moved[word])
        if word.endswith(".a") and self._built.get(word):
            return str(self.mirror / word)
        return word

    # Testing.

    def run(self, test, limit):
        """Runs the test. Returns its duration in seconds; None if it failed or took too long."""
        temporary = self.folder / "temporary"
        environment = {**os.environ, **test.environment, "TMPDIR": str(temporary)}
        begin = time.monotonic()
        status = self._processes.run([self._here(word) for word in test.command], limit=limit,
                                     cwd=self._here(test.folder + "/"), env=environment)
        seconds = time.monotonic() - begin
        for left in os.listdir(temporary):
            shutil.rmtree(temporary / left, ignore_errors=True)
        return seconds if status == 0 else None


def without_cache(words):
    """A compile command without the compiler cache, which never contains a changed source."""
    return list(words[1:] if os.path.basename(words[0]) == "ccache" else words)


def precompile(build, outputs, folder, processes):
    """Precompiles the system's headers that these objects' sources include; returns the options
    that use them, by object. Objects with the same options share them; none when that does not
    build."""
    options, groups = {}, {}
    for output in outputs:
        words = build.compiles[output]["words"]
        key = tuple(w for w in words if w.startswith(("-D", "-I", "-f", "-W", "-std", "-isystem")))
        groups.setdefault(key, []).append(output)
    for number, group in enumerate(groups.values()):
        files = {f for output in group for f in build.headers.get(output, ())}
        lines = sorted({line for f in files for line in re.findall(
            r"^#include <[^>]+>", (build.root / f).read_text(encoding="utf-8"), re.MULTILINE)})
        header = folder / f"system{number}.h"
        header.parent.mkdir(parents=True, exist_ok=True)
        header.write_text("\n".join(lines) + "\n")
        words = without_cache(build.compiles[group[0]]["words"])
        words = words[: words.index("-MD")] if "-MD" in words else words[: words.index("-o")]
        command = [*words, *UNOPTIMISED, "-x", "c++-header", str(header), "-o", f"{header}.gch"]
        made = processes.run(command, cwd=build.folder, limit=300) == 0
        for output in group:
            options[output] = ["-include", str(header)] if made else []
    return options
