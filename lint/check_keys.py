#!/usr/bin/env python3
"""Checks that parsers read every key that they look for: a key that stands in a `TextIndex` but is
read through no `JSONMembers` of it costs time and tells readers of a member that nothing uses. (The
other way round does not compile.)

Usage: check_keys.py ROOT; prints one line per fault, exit status 1 when there is one.
"""

import pathlib
import re
import sys

TABLE = re.compile(r'^(\s*)[\w\s]*\b(?:detail::)?TextIndex (k\w+)\(\s*\{([^}]*)\}\);', re.M)
TYPE = r"(?:detail::)?JSONMembers<(k\w+)>"
READ = re.compile(r'(?:\b(\w+)|%s\([^()]*\))\["(\w+)"\]' % TYPE)


def chunks(text):
    """The functions and classes at the top level, each with what stands before it."""
    return re.split(r"(?<=^\})[^\n]*\n", text, flags=re.M)


def unread_keys(sources):
    """One line per fault in the sources, a dictionary from name to text."""
    tables, aliases, members, reads = {}, {}, {}, {}
    parts = [(name, n, chunk) for name, text in sources.items() if "TextIndex" in text or '["' in text
             for n, chunk in enumerate(chunks(re.sub(r"//[^\n]*", "", text)))]
    for name, n, chunk in parts:
        for indent, table, keys in TABLE.findall(chunk):
            place = (name, n) if indent.strip("\n") else None if name.endswith(".h") else (name,)
            tables[(place, table)] = re.findall(r'"(\w+)"', keys)
        for alias, table in re.findall(r"using (\w+) = %s;" % TYPE, chunk):
            aliases[alias] = table
        for table, member in re.findall(TYPE + r" (\w+_);", chunk):
            for reader in re.findall(r"^class (\w+)", chunk, re.M)[-1:]:
                members[(reader, member)] = table
    for name, n, chunk in parts:
        bound = {variable: table for table, variable in re.findall(TYPE + r"&? (\w+)", chunk)}
        for alias, table in aliases.items():
            bound |= {variable: table for variable in re.findall(r"\b%s&? (\w+)" % alias, chunk)}
        for (reader, member), table in members.items():
            if re.search(r"\b%s\b" % reader, chunk):
                bound[member] = table
        for variable, temporary, key in READ.findall(chunk):
            table = temporary or bound.get(variable)
            for place in ((name, n), (name,), None):
                if (place, table) in tables:
                    reads.setdefault((place, table), set()).add(key)
                    break
    return [f'{(place or ["a header"])[0]}: nothing reads "{key}" of {table}'
            for (place, table), keys in tables.items() for key in keys
            if key not in reads.get((place, table), ())]


def library_sources(root):
    return {path.relative_to(root).as_posix(): path.read_text(encoding="utf-8")
            for pattern in ("*.h", "*.cpp") for path in sorted((root / "OrvoAPI").rglob(pattern))}


if __name__ == "__main__":
    faults = unread_keys(library_sources(pathlib.Path(sys.argv[1])))
    print("\n".join(faults) if faults else "every key is read")
    sys.exit(1 if faults else 0)
