#!/usr/bin/env python3
"""Checks the imports of every Java source: the static ones, a blank line, all others, either group in ASCII order.

Usage: java_imports.py [--fix]

With --fix, puts them into this order; whatever else stands between imports goes.
"""
import argparse
import os
import pathlib
import re
import subprocess
import sys


def sorted_imports(text):
    """The source with its imports in order."""
    lines = re.findall(r"^import .+;$", text, re.MULTILINE)
    if not lines:
        return text
    # Without the semicolon, which would put a class behind the ones nested in it.
    order = sorted(line.removesuffix(";") for line in set(lines))
    groups = [[line for line in order if line.startswith("import static ") == static] for static in (True, False)]
    block = "\n\n".join("\n".join(f"{line};" for line in group) for group in groups if group)
    begin, end = text.index(lines[0]), text.rindex(lines[-1]) + len(lines[-1])
    return text[:begin] + block + text[end:]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--fix", action="store_true")
    fix = parser.parse_args().fix
    os.chdir(pathlib.Path(__file__).resolve().parents[1])

    command = ["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard", "--", "*.java"]
    files = [pathlib.Path(name) for name in subprocess.check_output(command, text=True).split("\0") if name]
    wrong = 0
    for file in filter(pathlib.Path.exists, files):
        text = file.read_text("utf-8")
        wanted = sorted_imports(text)
        if wanted != text and fix:
            file.write_text(wanted, "utf-8")
        elif wanted != text:
            wrong += 1
            print(f"{file}: imports are not in order")
    return 1 if wrong or not files else 0


if __name__ == "__main__":
    sys.exit(main())
