#!/usr/bin/env python3
"""Makes a table of the rows that the benchmarks print on standard input.

usage: report.py [--json FILE] [--markdown FILE]

A row is a line of eight fields parted by tabs: name, unit, ours, peer, theirs, ratio, "<=" or ">=",
and the bound of the goal; "nan" stands for what there is none of. Any other line is passed on.
"""

import argparse
import json
import math
import sys


def number(text):
    value = float(text)
    return None if math.isnan(value) else value


def shown(value):
    if value is None:
        return ""
    if value != 0 and (abs(value) < 0.01 or abs(value) >= 1e9):
        return f"{value:.2e}"
    return f"{value:,.2f}" if abs(value) < 100 else f"{value:,.0f}"


def row_of(fields):
    name, unit, ours, peer, theirs, ratio, direction, bound = fields
    row = {"name": name, "unit": unit, "ours": number(ours), "peer": peer or None,
           "theirs": number(theirs), "ratio": number(ratio), "goal": None, "met": None}
    if (limit := number(bound)) is not None:
        judged = row["ours"] if row["ratio"] is None else row["ratio"]
        row["goal"] = f"{direction} {limit:g}"
        row["met"] = judged <= limit if direction == "<=" else judged >= limit
    return row


def cells(row):
    met = {True: "met", False: "MISSED", None: ""}[row["met"]]
    return [row["name"], row["unit"], shown(row["ours"]), row["peer"] or "",
            shown(row["theirs"]), shown(row["ratio"]), row["goal"] or "", met]


HEADINGS = ["work", "unit", "ours", "peer", "theirs", "ratio", "goal", ""]
LAYOUT = "{:<50} {:<12} {:>11} {:<26} {:>11} {:>8} {:>8} {}"


def main():
    options = argparse.ArgumentParser()
    options.add_argument("--json")
    options.add_argument("--markdown")
    options = options.parse_args()
    rows = []
    print(LAYOUT.format(*HEADINGS).rstrip(), flush=True)
    for line in sys.stdin:
        fields = line.rstrip("\n").split("\t")
        if len(fields) != 8:
            print(line, end="", flush=True)
            continue
        rows.append(row_of(fields))
        print(LAYOUT.format(*cells(rows[-1])).rstrip(), flush=True)
    judged = [row for row in rows if row["met"] is not None]
    missed = [row["name"] for row in judged if not row["met"]]
    print(f"\n{len(judged) - len(missed)} of {len(judged)} goals met")
    if options.json:
        with open(options.json, "w", encoding="utf-8") as file:
            json.dump(rows, file, indent=1, ensure_ascii=False)
            file.write("\n")
    if options.markdown:
        with open(options.markdown, "w", encoding="utf-8") as file:
            file.write("| " + " | ".join(HEADINGS) + " |\n")
            file.write("|---|---|---:|---|---:|---:|---:|---|\n")
            for row in rows:
                line = " | ".join(cells(row)).replace("<", "&lt;")  # a header's name is no tag
                file.write(f"| {line} |\n")


if __name__ == "__main__":
    main()
