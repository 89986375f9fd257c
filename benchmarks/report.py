#!/usr/bin/env python3
"""Makes tables of the rows that the benchmarks print on standard input, or of a run that was kept.

usage: report.py [--since SECONDS] [--json FILE] [--page FILE] [KEPT_RUN]

A row is a line of ten fields parted by tabs: name, unit, ours, peer, theirs, ratio, "<=" or ">=",
the bound of the goal, and between what the ratio lies as far as the rounds tell; "nan" stands for
what there is none of. A line "subject" and a name parted by a tab says what the next rows belong
to. Any other line is passed on.

--json keeps the run, with what it ran on and how long since SECONDS (of the epoch) it took. --page
writes it into a Markdown file, between lines "[//]: # (rows: SUBJECT...)", or "[//]: # (run)", and
"[//]: # (end)", which no reader sees; what was not measured stays as it is. KEPT_RUN is a file that
--json wrote.
"""

import argparse
import json
import math
import os
import pathlib
import re
import subprocess
import sys
import time


def number(text):
    value = float(text)
    return None if math.isnan(value) else value


def shown(value):
    if value is None:
        return ""
    if value != 0 and (abs(value) < 0.01 or abs(value) >= 1e9):
        return f"{value:.2e}"
    if value == round(value):
        return f"{value:,.0f}"
    return f"{value:,.2f}" if abs(value) < 100 else f"{value:,.0f}"


def verdict(judged, goal, low, high):
    direction, bound = goal
    met = judged <= bound if direction == "<=" else judged >= bound
    word = "met" if met else "MISSED"
    # Other rounds might have ended on the other side.
    is_doubtful = low is not None and min(low, high) < bound < max(low, high)
    return met, word + (", within the noise" if is_doubtful else "")


def row_of(fields, subject):
    name, unit, ours, peer, theirs, ratio, direction, bound, low, high = fields
    row = {"subject": subject, "name": name, "unit": unit, "ours": number(ours),
           "peer": peer or None, "theirs": number(theirs), "ratio": number(ratio),
           "low": number(low), "high": number(high), "goal": None, "met": None, "verdict": ""}
    if (limit := number(bound)) is not None:
        judged = row["ours"] if row["ratio"] is None else row["ratio"]
        row["goal"] = f"{direction} {limit:g}"
        row["met"], row["verdict"] = verdict(judged, (direction, limit), row["low"], row["high"])
    return row


def cells(row):
    ratio = shown(row["ratio"])
    if row["low"] is not None and shown(row["low"]) != shown(row["high"]):
        ratio += f" ({shown(row['low'])}–{shown(row['high'])})"
    return [row["name"], row["unit"], shown(row["ours"]), row["peer"] or "", shown(row["theirs"]),
            ratio, row["goal"] or "", row["verdict"]]


HEADINGS = ["work", "unit", "ours", "peer", "theirs", "ratio", "goal", ""]
LAYOUT = "{:<50} {:<12} {:>11} {:<26} {:>11} {:>18} {:>8} {}"


def first_line(*command):
    try:
        done = subprocess.run(command, capture_output=True, text=True, check=True)
    except (OSError, subprocess.CalledProcessError):
        return "unknown"
    return (done.stdout or done.stderr).splitlines()[0].strip()


def machine():
    facts = pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8")
    model = re.search(r"^model name\s*:\s*(.*)$", facts, re.MULTILINE)
    wide = ", with AVX-512" if " avx512bw" in facts else ", with AVX2" if " avx2" in facts else ""
    guest = ", a virtual machine" if " hypervisor" in facts else ""
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30
    system = re.search(r'^PRETTY_NAME="?([^"\n]*)',
                       pathlib.Path("/etc/os-release").read_text(encoding="utf-8"), re.MULTILINE)
    kernel = ".".join(os.uname().release.split(".")[:2])
    version = r"\d+\.\d+[.\d]*"
    versions = {"g++": first_line("g++", "-dumpfullversion"),
                "libcurl": first_line("pkg-config", "--modversion", "libcurl"),
                "OpenSSL": first_line("pkg-config", "--modversion", "openssl"),
                "simdjson": first_line("pkg-config", "--modversion", "simdjson"),
                "nginx": (re.findall(version, first_line("nginx", "-v")) or ["unknown"])[0]}
    return (f"{os.cpu_count()} cores of {model[1] if model else 'a processor'}{wide}{guest}; "
            f"{memory:.0f} GB; {system[1] if system else 'Linux'}, Linux {kernel}; "
            + ", ".join(f"{name} {number}" for name, number in versions.items()))


def read_rows(lines):
    """The rows, and what was measured, which may have none."""
    rows, subjects, subject = [], [], ""
    print(LAYOUT.format(*HEADINGS).rstrip(), flush=True)
    for line in lines:
        fields = line.rstrip("\n").split("\t")
        if len(fields) == 2 and fields[0] == "subject":
            subject = fields[1]
            subjects.append(subject)
        elif len(fields) != 10:
            print(line, end="", flush=True)
        else:
            rows.append(row_of(fields, subject))
            print(LAYOUT.format(*cells(rows[-1])).rstrip(), flush=True)
    return rows, subjects


def score(rows):
    judged = [row for row in rows if row["met"] is not None]
    return f"{sum(row['met'] for row in judged)} of {len(judged)} goals met"


def escaped(text):
    return text.replace("<", "&lt;").replace("|", "\\|")  # a header's name is no tag


def table(rows):
    lines = ["| " + " | ".join(HEADINGS) + " |", "|---|---|---:|---|---:|---:|---:|---|"]
    lines += ["| " + " | ".join(escaped(cell) for cell in cells(row)) + " |" for row in rows]
    return "\n".join(lines)


def summary(run):
    minutes, seconds = divmod(round(run["seconds"] or 0), 60)
    took = f" It took {minutes} min {seconds} s, with the build." if run["seconds"] else ""
    missed = [row for row in run["rows"] if row["met"] is False]
    lines = [f"{run['machine']}.{took} {score(run['rows'])}."]
    if missed:
        lines += ["", "Missed:", ""]
        lines += [f"- {escaped(row['name'])}" + (f", {row['unit']}" if row["unit"] else "")
                  + (f", beside {escaped(row['peer'])}" if row["peer"] else "")
                  + f": {shown(row['ours'] if row['ratio'] is None else row['ratio'])}"
                  + f" (goal {escaped(row['goal'])})"
                  + (", within the noise" if "noise" in row["verdict"] else "") for row in missed]
    return "\n".join(lines)


def write_page(file, run):
    page = pathlib.Path(file)
    text = page.read_text(encoding="utf-8")
    measured = set(run["subjects"])
    asked = set(" ".join(re.findall(r"^\[//\]: # \(rows: (.*?)\)$", text, re.MULTILINE)).split())

    def filled(match):
        subjects = set(match[1].split()[1:])
        if not (subjects or asked) <= measured:
            return match[0]  # not measured this time
        rows = [row for row in run["rows"] if row["subject"] in subjects]
        made = table(rows) if subjects else summary(run)
        return f"[//]: # ({match[1]})\n\n{made}\n\n[//]: # (end)"

    pattern = r"^\[//\]: # \((run|rows: .*?)\)$.*?^\[//\]: # \(end\)$"
    text = re.sub(pattern, filled, text, flags=re.DOTALL | re.MULTILINE)
    page.write_text(text, encoding="utf-8")


def main():
    options = argparse.ArgumentParser()
    options.add_argument("--since", type=float)
    options.add_argument("--json")
    options.add_argument("--page")
    options.add_argument("kept", nargs="?")
    options = options.parse_args()
    if options.kept:
        run = json.loads(pathlib.Path(options.kept).read_text(encoding="utf-8"))
    else:
        rows, subjects = read_rows(sys.stdin)
        seconds = time.time() - options.since if options.since else None
        run = {"machine": machine(), "seconds": seconds, "subjects": subjects, "rows": rows}
        print(f"\n{score(rows)}")
    if options.json:
        text = json.dumps(run, indent=1, ensure_ascii=False) + "\n"
        pathlib.Path(options.json).write_text(text, encoding="utf-8")
    if options.page:
        write_page(options.page, run)


if __name__ == "__main__":
    main()
