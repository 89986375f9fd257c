#!/usr/bin/env python3
"""Checks the written rules about the layout of the sources: which file may include which, where
system and third-party headers may stand, what library code must not call, how long files and functions
may be, and that the umbrella header is complete.

Usage: check_layout.py ROOT; prints one line per fault, exit status 1 when there is one.
"""

import graphlib
import pathlib
import re
import sys

# Includes run one way: a file may include its own folder and the folders before it.
ORDER = ["Base", "Queues", "Platform", "HTTP", "Futures", "Parsing", "Logging", "Storage",
         "Network", "Model", "Configuration", "Linear", "Context", "Integration"]
RANK = {folder: rank for rank, folder in enumerate(ORDER)}

# Three places stand where a reader looks for them although the order would put them elsewhere.
LEAVES = {"Context/Environment", "Context/Client", "Context/URLService"}  # any folder may include them
ABOVE_LINEAR = {"Storage/AppStore"}
ABOVE_CONTEXT = "Linear/LinearProgramGuideMonitor"  # with everything named after it

# Public headers that the umbrella leaves out, with the reason.
OPT_IN = {
    "Futures/Coroutine.h": "needs <coroutine>, for those who use it",
    "Integration/GLib.h": "needs GLib, for those who use it",
    "Integration/Qt.h": "needs Qt, for those who use it",
}

# What the library's own tests may set beyond the interface, with the reason.
SEAMS = {"Queues/detail/QueuePatience.h": "waits of seconds, which tests do not have"}

# Files that may print or stop the process, with the reason.
MAY_PRINT_OR_STOP = {
    "Base/Fatal.cpp": "the one place that stops the process for a programming error",
    "Platform/ConsoleSink.cpp": "the settable sink of the two stated console lines",
}

# Folders whose sources and private headers may include system and third-party headers.
SYSTEM_FOLDERS = {"Base", "Platform", "Queues", "HTTP"}

# System or third-party headers outside these and the JSON reader, with the reason.
FOREIGN = {
    ("Futures/AnyError.cpp", "cxxabi.h"): "the compiler's own, to name a type readably",
    **{("Integration/GLib.h", header): "the loop that it is for"
       for header in ("glib.h", "glib-unix.h")},
    **{("Integration/Qt.h", header): "the loop that it is for"
       for header in ("QAbstractEventDispatcher", "QObject", "QPointer", "QSocketNotifier",
                      "QThread")},
}

TOO_HEAVY_FOR_HEADERS = {"future", "iostream", "regex"}

# Everything that is compiled beside the library.
OTHER_FOLDERS = ["testing", "tool", "demo", "tests", "support", "examples", "benchmarks", "fuzz",
                 "soak"]

# How many lines a file and a function may have.
MOST_LINES = {".h": 200, ".cpp": 400}
MOST_IN_FUNCTION = 40

# Files and functions that have more, with the reason.
LONG_FILES = {
    "OrvoAPI/Context/Context.h": "one class: what it knows, its fetches, its capabilities",
    "OrvoAPI/Futures/Future.h": "one class and its contract; its operations are templates",
    "soak/FaultyServer.h": "one table of faults and the server that makes them",
    "soak/sim.cpp": "one program: what can happen to a fetch, and how it must end",
}
LONG_FUNCTIONS = {
    ("OrvoAPI/HTTP/CurlErrors.cpp", "errorCode"): "a table of libcurl's codes",
    ("benchmarks/documents_bad.cpp", "lists"): "a table of documents",
    ("benchmarks/documents_peers.cpp", "configuration"): "a document, key by key",
    ("benchmarks/support/Documents.cpp", "configurationDocument"): "a document, key by key",
    ("soak/FaultyServer.h", "faults"): "a table of faults",
    ("soak/sim.cpp", "Round::answer"): "a table of faults",
    ("soak/sim.cpp", "Round::call"): "a table of fetches",
}

INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*([<"])([^>"]+)[>"]', re.M)
TEXT = re.compile(r'//[^\n]*|/\*.*?\*/|R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"'
                  r"|(?<![0-9A-Fa-f])'(?:\\.|[^'\\\n])+'", re.S)
PRINTS_OR_STOPS = re.compile(
    r"\b(?:printf|fprintf|vprintf|vfprintf|puts|fputs|putchar|putc|fputc|fwrite|perror"
    r"|abort|_?exit|_Exit|quick_exit|terminate|assert)\s*\(|\bstd::(?:cout|cerr|clog)\b"
    r"|\b(?:stdout|stderr)\b")

# What begins a block that is not a function; clang-format's indentation tells where it ends.
NO_FUNCTION = re.compile(r"(?:\} )?(?:if|for|while|switch|do|else|try|catch|case|default|return"
                         r"|namespace|struct|class|enum|union)\b")


def functions(source):
    """The functions of a formatted source: their names, and how many lines they have."""
    lines = source.splitlines()
    depths = [len(line) - len(line.lstrip()) if line and line[0] != "#" else 1000
              for line in lines]
    for end, line in enumerate(lines):
        if line.strip() != "}":
            continue
        begin = end - 1
        while begin >= 0 and depths[begin] > depths[end]:
            begin -= 1
        head = lines[begin].strip() if begin >= 0 else ""
        if "(" in head and not NO_FUNCTION.match(head):
            yield re.split(r"[\s*&]", head.split("(")[0])[-1], end - begin + 1


def includes(source):
    # Without comments only: an include's name looks like a literal.
    return INCLUDE.findall(TEXT.sub(
        lambda match: "" if match.group().startswith(("//", "/*")) else match.group(), source))


def rank_of(name):
    """Where a library file, named like Folder/File.h, stands in the order."""
    stem = name.rsplit(".", 1)[0]
    if name == "Version.h" or stem == "Version":
        return -1
    if stem in LEAVES:
        return RANK["Futures"]
    if stem in ABOVE_LINEAR:
        return RANK["Linear"] + 0.5
    if stem.startswith(ABOVE_CONTEXT):
        return RANK["Context"] + 1
    if "/" not in name:
        return len(ORDER) + 1  # the umbrella
    return RANK[name.split("/")[0]]


def is_private(name):
    return name.endswith("Internal.h")


def is_detail(name):
    """Installed because public headers show it, but no interface."""
    return "/detail/" in name


class Layout:
    def __init__(self, root):
        self.root = pathlib.Path(root)
        self.faults = []
        library = self.root / "OrvoAPI"
        self.sources = {path.relative_to(library).as_posix(): path.read_text(encoding="utf-8")
                        for pattern in ("*.h", "*.cpp") for path in library.rglob(pattern)}
        self.headers = {name for name in self.sources if name.endswith(".h")}
        self.headers |= {path.name.removesuffix(".in") for path in library.glob("*.h.in")}
        self.others = {path.relative_to(self.root).as_posix(): path.read_text(encoding="utf-8")
                       for folder in OTHER_FOLDERS for pattern in ("*.h", "*.cpp")
                       for path in sorted((self.root / folder).rglob(pattern))}

    def fault(self, path, text):
        self.faults.append(f"{path}: {text}")

    def check(self):
        for name in sorted(self.sources):
            folder = name.split("/")[0]
            if "/" in name and folder not in RANK:
                self.fault(f"OrvoAPI/{name}", f"{folder} is no folder of the library")
                continue
            self.check_library_file(name)
        users = [name for name, source in self.sources.items() if "simdjson.h>" in source]
        if len(users) > 1:
            self.fault("OrvoAPI", f"simdjson.h is included by more than one source: {users}")
        self.check_cycles()
        self.check_umbrella()
        self.check_users()
        self.check_lengths()
        return self.faults

    def check_library_file(self, name):
        path, source = f"OrvoAPI/{name}", self.sources[name]
        if name.endswith(".h") and "#pragma once" not in source:
            self.fault(path, "no #pragma once")
        for mark, target in includes(source):
            if mark == '"':
                self.fault(path, f'"{target}" is included in quotation marks')
            elif target.startswith("OrvoAPI/"):
                self.check_own_include(name, target.removeprefix("OrvoAPI/"))
            else:
                self.check_foreign_include(name, target)
        if name not in MAY_PRINT_OR_STOP:
            for call in PRINTS_OR_STOPS.findall(TEXT.sub(" ", source)):
                self.fault(path, f"library code must not call {call.rstrip('( ')}")

    def check_own_include(self, name, target):
        path = f"OrvoAPI/{name}"
        if target.startswith("Testing/") or target not in self.headers:
            self.fault(path, f"<OrvoAPI/{target}> is no header of the library")
            return
        if name.endswith(".h") and not is_private(name) and is_private(target):
            self.fault(path, f"an installed header includes the private {target}")
        if target.rsplit(".", 1)[0] not in LEAVES and rank_of(target) > rank_of(name):
            self.fault(path, f"includes {target}, which stands after it in the order")

    def check_foreign_include(self, name, target):
        path = f"OrvoAPI/{name}"
        if re.fullmatch("[a-z_]+", target):  # the standard library's
            if name.endswith(".h") and target in TOO_HEAVY_FOR_HEADERS:
                self.fault(path, f"<{target}> is too heavy for a header")
            return
        below = name.split("/")[0] in SYSTEM_FOLDERS and (not name.endswith(".h") or is_private(name))
        reader = name.startswith("Parsing/") and name.endswith(".cpp") and target == "simdjson.h"
        if not below and not reader and (name, target) not in FOREIGN:
            self.fault(path, f"<{target}> is allowed in the sources of {', '.join(sorted(SYSTEM_FOLDERS))} only")

    def check_cycles(self):
        graph = {name: [target.removeprefix("OrvoAPI/") for _, target in includes(source)
                        if target.startswith("OrvoAPI/")]
                 for name, source in self.sources.items()}
        try:
            graphlib.TopologicalSorter(graph).prepare()
        except graphlib.CycleError as error:
            self.fault("OrvoAPI", "files include each other: " + " -> ".join(error.args[1]))

    def check_umbrella(self):
        listed = {target.removeprefix("OrvoAPI/")
                  for _, target in includes(self.sources.get("OrvoAPI.h", ""))}
        public = {name for name in self.headers
                  if not is_private(name) and not is_detail(name) and name not in OPT_IN
                  and name != "OrvoAPI.h"}
        for name in sorted(public - listed):
            self.fault("OrvoAPI/OrvoAPI.h", f"{name} is missing")
        for name in sorted(name for name in listed if is_detail(name)):
            self.fault("OrvoAPI/OrvoAPI.h", f"{name} is no interface")
        for name in sorted(listed & set(OPT_IN)):
            self.fault("OrvoAPI/OrvoAPI.h", f"{name} is for those who ask for it")

    def check_users(self):
        kit = {path.relative_to(self.root / "testing").as_posix()
               for path in (self.root / "testing").rglob("*.h")}
        for name, source in self.others.items():
            for _, target in includes(source):
                if "OrvoAPI/" not in target:
                    continue
                header = target.removeprefix("OrvoAPI/")
                if target not in kit and (header not in self.headers or is_private(header)):
                    self.fault(name, f"<{target}> is no installed header")
                elif header in SEAMS and name.startswith("tests/"):
                    continue
                elif is_detail(header) and not (target in kit and name.startswith("testing/")):
                    self.fault(name, f"<{target}> is no interface")

    def check_lengths(self):
        long_files, long_functions = set(), set()
        library = {f"OrvoAPI/{name}": source for name, source in self.sources.items()}
        for name, source in {**library, **self.others}.items():
            count, most = source.count("\n"), MOST_LINES[pathlib.PurePath(name).suffix]
            if count > most:
                long_files.add(name)
                if name not in LONG_FILES:
                    self.fault(name, f"has {count} lines, where {most} are the limit")
            for function, lines in functions(source):
                if lines <= MOST_IN_FUNCTION:
                    continue
                long_functions.add((name, function))
                if (name, function) not in LONG_FUNCTIONS:
                    self.fault(name, f"{function} has {lines} lines, where {MOST_IN_FUNCTION} are"
                                     " the limit")
        for name in sorted(set(LONG_FILES) - long_files):
            self.fault(name, "needs no exception from the limits")
        for name, function in sorted(set(LONG_FUNCTIONS) - long_functions):
            self.fault(name, f"{function} needs no exception from the limits")


if __name__ == "__main__":
    found = Layout(sys.argv[1]).check()
    print("\n".join(found) if found else "layout: no fault")
    sys.exit(1 if found else 0)
