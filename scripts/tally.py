#!/usr/bin/env python3
"""Adds up test results in JUnit's XML form and prints "N passed, N failed, N skipped".

Usage: tally.py [--gate NAME=STATUS]... FOLDER

A gate is a check without an XML file of its own; any STATUS but 0 counts as a failed test. Each failed and skipped
test is named above the total. The exit code is 1 when something failed, or when no test ran at all.
"""
import argparse
import pathlib
import sys
import xml.etree.ElementTree as ElementTree


def read_report(path):
    """Yields (suite, test, outcome) for every test case of a report."""
    try:
        root = ElementTree.parse(path).getroot()
    except ElementTree.ParseError as error:
        yield path.stem, f"unreadable results ({error})", "failed"
        return
    for case in root.iter("testcase"):
        name = f'{case.get("classname", "")}.{case.get("name", "")}'
        if case.find("failure") is not None or case.find("error") is not None:
            yield path.stem, name, "failed"
        elif case.find("skipped") is not None or case.get("status") == "notrun":
            yield path.stem, name, "skipped"
        else:
            yield path.stem, name, "passed"


def read_results(folder):
    """Yields (suite, test, outcome) for every test case below the folder."""
    for path in sorted(pathlib.Path(folder).rglob("*.xml")):
        yield from read_report(path)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder")
    parser.add_argument("--gate", action="append", default=[], metavar="NAME=STATUS")
    arguments = parser.parse_args()

    results = list(read_results(arguments.folder))
    for gate in arguments.gate:
        name, _, status = gate.rpartition("=")
        results.append(("gate", name, "passed" if status == "0" else "failed"))

    counts = {"passed": 0, "failed": 0, "skipped": 0}
    for suite, name, outcome in results:
        counts[outcome] += 1
        if outcome != "passed":
            print(f"{outcome}: {suite}: {name}")
    print("{passed} passed, {failed} failed, {skipped} skipped".format(**counts))
    return 1 if counts["failed"] or not counts["passed"] else 0


if __name__ == "__main__":
    sys.exit(main())
