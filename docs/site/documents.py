#!/usr/bin/env python3
"""Holds the pages of the service's documents against what the library reads: takes each member of a
page's example away in turn, has `orvo parse` read what is left, and compares what has become of it with
the last column of the page's table. Null counts as missing, unless the row says that it does not. Every key that the library's readers know has to stand in an
example, and every member of an example in the table.

Usage: documents.py [--write] ORVO; from the top folder. Prints one line per fault, exit status 1 when
there is one; with --write it writes the column instead.
"""

import copy
import json
import pathlib
import re
import subprocess
import sys

BLOCK = re.compile(r"^```json document (\S+)([^\n]*)\n(.*?)^```\n(.*?)(?=^```json document|\Z)", re.M | re.S)
ROW = re.compile(r"^\| `([^`|]+)` \| ([^|\n]*) \| ([^|\n]*) \|$", re.M)
KEYS = re.compile(r"TextIndex k(\w*Keys)\(\s*\{([^}]*)\}", re.S)
NOTHING = "nothing"
NOT_NULL = "not null"  # what a row says of a member whose null is no missing one


def read(orvo, kind, options, document):
    """What the library reads in a document, and what it says of what cannot be used."""
    done = subprocess.run([orvo, "parse", kind, *options, "--report"], input=json.dumps(document),
                          capture_output=True, text=True, check=False, timeout=20)
    if not done.stdout:
        raise SystemExit(f"orvo parse {kind}: {done.stderr}")
    return json.loads(done.stdout), done.stderr


def members(value, path=""):
    """The paths of all members; of a list's elements the first stands for all."""
    if isinstance(value, list):
        yield from members(value[0], path + "[]") if value else ()
    elif isinstance(value, dict):
        for key, inner in value.items():
            here = f"{path}.{key}" if path else key
            yield here
            yield from members(inner, here)


def without(document, path, is_null=False):
    """The document without the member, or with a null in its place."""
    document = copy.deepcopy(document)
    steps = re.findall(r"\[\]|[^.\[\]]+", path)
    place = document
    for step in steps[:-1]:
        place = place[0] if step == "[]" else place[step]
    if is_null:
        place[steps[-1]] = None
    else:
        del place[steps[-1]]
    return document


def differences(old, new, path=""):
    if isinstance(old, dict) and isinstance(new, dict):
        for key in old:
            yield from differences(old[key], new.get(key), f"{path}.{key}" if path else key)
        for key in new.keys() - old.keys():
            yield path + "." + key, None, new[key]
    elif isinstance(old, list) and isinstance(new, list) and len(old) == len(new):
        for one, other in zip(old, new):
            yield from differences(one, other, path + "[]")
    elif old != new:
        yield path, old, new


def outcome(before, after, member):
    """In words, what became of a document that lacks a member."""
    if "error" in after:
        error = after["error"]
        words = [f"`{error[name]}`" for name in ("kind", "key") if error.get(name)]
        return f"the document fails: {' '.join(words)}"
    # A lineup's days hold the slots once more.
    found = [each for each in differences(before["ok"], after["ok"]) if not each[0].startswith("days")]
    if not found:
        return NOTHING
    prefix = found[0][0].rpartition(".")[0] + "."
    if len(found) < 2 or prefix == "." or not all(path.startswith(prefix) for path, _, _ in found):
        prefix = ""
    said = [in_words(path.removeprefix(prefix), old, new, member) for path, old, new in found]
    return (f"in `{prefix[:-1]}`: " if prefix else "") + ", ".join(said)


def in_words(path, old, new, member):
    if isinstance(old, list) and isinstance(new, list) and len(new) < len(old):
        if not new and "[]" not in member and "." not in member:
            return f"`{path}` is empty"
        return f"it is left out of `{path}`" if path else "it is left out"
    if new is None:
        return f"no `{path}`"
    shown = json.dumps(new, ensure_ascii=False)
    return f"`{path}` is `{shown}`" if len(shown) < 60 else f"`{path}` is another"


def covered(path, rows):
    """Whether a row describes the member, or one above it refers to another page."""
    return path in rows or any(path.startswith((row + ".", row + "[]")) and ".md" in text
                               for row, (text, _) in rows.items())


def check(orvo, page, writes):
    text, faults, shown = page.read_text(encoding="utf-8"), [], set()
    for kind, options, code, rest in BLOCK.findall(text):
        document = json.loads(re.sub(r"\s+//[^\n\"]*$", "", code, flags=re.M))
        before, losses = read(orvo, kind, options.split(), document)
        if "ok" not in before or losses.strip() != "orvo: nothing was left out":
            faults.append(f"{page}: the example of {kind} is not read whole: {before.get('error')} {losses}")
            continue
        rows = {row: (words, said) for row, words, said in ROW.findall(rest)}
        paths = list(dict.fromkeys(members(document)))
        shown.update(re.split(r"\W+", " ".join(paths)))
        faults += [f"{page}: no row for {path}" for path in paths if not covered(path, rows)]
        faults += [f"{page}: {row} is not in the example" for row in rows if row not in paths]
        for path in [path for path in paths if path in rows]:
            words, said = rows[path]
            after, _ = read(orvo, kind, options.split(), without(document, path))
            told = outcome(before, after, path)
            after, _ = read(orvo, kind, options.split(), without(document, path, is_null=True))
            if (outcome(before, after, path) == told) == (NOT_NULL in words):
                faults.append(f"{page}: whether null counts as missing for {path} is not as it says")
            if told == NOTHING:
                faults.append(f"{page}: the library does not read {path}")
            if writes:
                text = text.replace(f"| `{path}` | {words} | {said} |", f"| `{path}` | {words} | {told} |")
            elif told != said:
                faults.append(f"{page}: without {path}: {told}; the page says: {said}")
    if writes:
        page.write_text(text, encoding="utf-8")
    return faults, shown


def main():
    writes = "--write" in sys.argv
    orvo = sys.argv[-1]
    faults, shown, count = [], set(), 0
    for page in sorted(pathlib.Path("docs/documents").glob("*.md")):
        found, keys = check(orvo, page, writes)
        faults, shown, count = faults + found, shown | keys, count + len(keys)
    known = {key for source in pathlib.Path("OrvoAPI").rglob("*.[ch]*")
             for name, keys in KEYS.findall(source.read_text(encoding="utf-8")) if name != "EntryKeys"
             for key in re.findall(r'"(\w+)"', keys)}
    faults += [f"docs/documents: no example has \"{key}\"" for key in sorted(known - shown)]
    print("\n".join(faults) if faults else f"{len(known)} keys stand in the documents' pages")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
