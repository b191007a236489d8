#!/usr/bin/env python3
"""Keeps what README.md repeats from elsewhere: the methods, from WindowsUtil.java, the speed, from docs/benchmark.csv,
and the JVMs that the end-to-end suite has run in, from docs/jvms.csv.

Usage: readme_tables.py --check | --write

--check fails, and shows the difference, when README.md says something else; --write puts it right.
"""
import argparse
import csv
import decimal
import difflib
import os
import pathlib
import re
import sys
import textwrap

README = pathlib.Path("README.md")
JAVA = pathlib.Path("java/src/com/qarvo/kel/util/WindowsUtil.java")
FIGURES = pathlib.Path("docs/benchmark.csv")
JVMS = pathlib.Path("docs/jvms.csv")


def methods():
    """The native methods by the headings that they stand under in the class; overloads are one name."""
    families = {}
    for line in JAVA.read_text("utf-8").splitlines():
        if heading := re.fullmatch(r"    // (.+)", line):
            names = families.setdefault(heading[1], [])
        elif native := re.match(r" +[a-z ]*\bnative [^(]+ (\w+)\(", line):
            if native[1] not in names:
                names.append(native[1])
    rows = [f"| {family} | {', '.join(f'`{name}`' for name in names)} |" for family, names in families.items()]
    return ["| family | methods |", "|---|---|", *rows]


def speed():
    """The table of the jobs that have a floor, then what memory and loading came to."""
    times, ratios, others = {}, {}, {}
    with FIGURES.open(newline="", encoding="utf-8") as file:
        for row in csv.DictReader(file):
            value = decimal.Decimal(row["median"]).quantize(decimal.Decimal("0.01"), decimal.ROUND_HALF_UP)
            if row["unit"] == "x":
                ratios.setdefault(row["job"], {})[row["what"]] = value
            elif row["unit"].startswith("us per "):
                times.setdefault(row["job"], {})[row["what"]] = f"{value} {row['unit']}"
            else:
                others[row["job"], row["what"]] = value
    table = ["| job | WinUtil64 | bare | lean | time of this library over that of others |", "|---|---|---|---|---|"]
    for job, values in ratios.items():
        if "bare" in values:
            rest = ", ".join(f"{what} {value}" for what, value in values.items() if what not in ("bare", "lean"))
            table.append(f"| {job} | {times[job]['WinUtil64']} | {values['bare']} | {values['lean']} | {rest} |")
    memory = "memory of a long listing"
    text = (
        f"At its peak a listing of 200,000 entries holds {others[memory, 'native peak above bare']} MiB of native memory"
        f" more than the bare loop does; it leaves {others[memory, 'live Java heap, more']} MiB of Java objects and"
        f" {others[memory, 'handles left'].normalize():f} handles behind. Loading the DLL in a fresh JVM takes"
        f" {ratios['load in a fresh JVM']['empty DLL']} of what an empty DLL with the same imports takes."
    )
    return [*table, "", *textwrap.wrap(text, 120)]


def jvms():
    """The table as it is."""
    with JVMS.open(newline="", encoding="utf-8") as file:
        header, *rows = csv.reader(file)
    return [f"| {' | '.join(row)} |" for row in (header, ["---"] * len(header), *rows)]


def replaced(text, name, lines):
    """The text with the lines between the two comments that name a block."""
    begin, end = f"<!-- {name}: written by scripts/readme_tables.py -->\n", f"<!-- end of {name} -->\n"
    if text.count(begin) != 1 or text.count(end) != 1:
        sys.exit(f"{README} must have a block \"{name}\", once")
    head, rest = text.split(begin)
    return head + begin + "\n".join(lines) + "\n" + end + rest.split(end)[1]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    action = parser.add_mutually_exclusive_group(required=True)
    action.add_argument("--check", action="store_true")
    action.add_argument("--write", action="store_true")
    arguments = parser.parse_args()
    os.chdir(pathlib.Path(__file__).resolve().parents[1])

    text = README.read_text("utf-8")
    wanted = text
    for name, lines in (("methods", methods()), ("speed", speed()), ("jvms", jvms())):
        wanted = replaced(wanted, name, lines)
    if arguments.write:
        README.write_text(wanted, "utf-8")
        return 0
    difference = difflib.unified_diff(text.splitlines(), wanted.splitlines(), "README.md", "as it should be", n=0,
                                      lineterm="")
    lines = list(difference)
    print("\n".join(lines), end="\n" if lines else "")
    return 1 if lines else 0


if __name__ == "__main__":
    sys.exit(main())
