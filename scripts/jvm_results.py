#!/usr/bin/env python3
"""Puts what the end-to-end suite came to in the JVMs of some versions into docs/jvms.csv, where others keep their rows.

Usage: jvm_results.py RESULTS VERSION...   (WINUTIL_CACHE names the folder of the runtimes)
"""
import argparse
import csv
import os
import pathlib
import re

import tally

TABLE = pathlib.Path(__file__).resolve().parents[1] / "docs" / "jvms.csv"
COLUMNS = ["Java", "runtime", "tests passed", "tests failed", "tests skipped", "checks of the run passed",
           "checks of the run failed"]


def counts(report):
    """How many cases of a JUnit report passed, failed, and were skipped."""
    outcomes = [outcome for _, _, outcome in tally.read_report(report)]
    return [outcomes.count(outcome) for outcome in ("passed", "failed", "skipped")]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("results", type=pathlib.Path)
    parser.add_argument("versions", nargs="+")
    arguments = parser.parse_args()

    rows = {}
    if TABLE.exists():
        with TABLE.open(newline="", encoding="utf-8") as file:
            rows = {row["Java"]: row for row in csv.DictReader(file)}
    for version in arguments.versions:
        release = pathlib.Path(os.environ["WINUTIL_CACHE"], f"windows-java-{version}", "release").read_text("utf-8")
        runtime = re.search(r'^JAVA_VERSION="(.+)"', release, re.MULTILINE)[1]
        tests = counts(arguments.results / f"java-endtoend-{version}.xml")
        checks = counts(arguments.results / f"java-endtoend-{version}-gate.xml")
        rows[version] = dict(zip(COLUMNS, [version, runtime, *tests, *checks[:2]]))
    with TABLE.open("w", newline="", encoding="utf-8") as file:
        writer = csv.DictWriter(file, COLUMNS, lineterminator="\n")
        writer.writeheader()
        writer.writerows(rows[version] for version in sorted(rows, key=int))


if __name__ == "__main__":
    main()
