#!/usr/bin/env python3
"""Checks that the code that the documents show is code that is built: a block that begins with
```cpp examples/NAME.cpp stands, line by line, in that file. The first program, which a test builds as
README shows it, is the same wherever it is shown.

Usage: check_snippets.py ROOT; prints one line per fault, exit status 1 when there is one.
"""

import pathlib
import re
import sys

FIRST_PROGRAM = re.compile(r"^```cpp first-program\n(.*?)^```$", re.M | re.S)
BLOCK = re.compile(r"^```cpp (examples/\S+)\n(.*?)^```$", re.M | re.S)


def main():
    root = pathlib.Path(sys.argv[1])
    faults, blocks, first_programs = [], 0, set()
    for document in [root / "README.md", *sorted((root / "docs").rglob("*.md"))]:
        text = document.read_text(encoding="utf-8")
        first_programs.update(FIRST_PROGRAM.findall(text))
        for name, code in BLOCK.findall(text):
            blocks += 1
            file = root / name
            if not file.is_file():
                faults.append(f"{document.name}: there is no {name}")
            elif "\n" + code not in "\n" + file.read_text(encoding="utf-8"):
                faults.append(f"{document.name}: {name} does not hold the code that is shown")
    if len(first_programs) != 1:
        faults.append(f"there are {len(first_programs)} different first programs")
    if not blocks:
        faults.append("no document shows any example")
    print("\n".join(faults) if faults else f"{blocks} blocks stand in the examples")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
