"""Writes what the table of growth says: growth_report.py TABLE DOCS SYSTEM writes DOCS/growth.md and .svg."""

import collections
import csv
import datetime
import math
import pathlib
import statistics
import sys
import textwrap

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt  # noqa: E402  (the back end comes first)

CONTENDERS = {"library": "tab:red", "bare": "tab:gray"}
ITEMS = {"directory": "entries of a directory", "registry key": "values of a key", "processes": "processes"}
# An exponent of 1 is a straight line; so much above it the noise of a machine makes of one.
STRAIGHT = 1.1


def read(path):
    """Job, contender and number of items, each with its rounds."""
    rounds = collections.defaultdict(list)
    with open(path, newline="", encoding="utf-8") as file:
        for row in csv.DictReader(file):
            rounds[row["job"], row["contender"], int(row["items"])].append(row)
    return rounds


def figure_of(rows, column, best):
    return best(float(row[column]) for row in rows)


def series(rounds, job, contender, column, best):
    """The sizes of a job and, for each, one figure of the rounds."""
    sizes = sorted(items for other, name, items in rounds if (other, name) == (job, contender))
    return sizes, [figure_of(rounds[job, contender, items], column, best) for items in sizes]


def exponent(sizes, times):
    """The power of the number of items that a whole pass grows with: the slope in the logarithms of both."""
    xs = [math.log(size) for size in sizes]
    ys = [math.log(size * time) for size, time in zip(sizes, times)]
    return statistics.linear_regression(xs, ys).slope


def draw(rounds, path):
    matplotlib.rcParams["svg.hashsalt"] = "growth"  # the same figures give the same file
    figure, axes = plt.subplots(2, len(ITEMS), figsize=(10, 5.5), sharex="col")
    for column, (job, items) in enumerate(ITEMS.items()):
        for contender, colour in CONTENDERS.items():
            axes[0][column].plot(*series(rounds, job, contender, "us per item", min), "o-", color=colour,
                                 markersize=4, label=contender)
            axes[1][column].plot(*series(rounds, job, contender, "peak KiB", statistics.median), "o-", color=colour,
                                 markersize=4)
        axes[0][column].set_title(items, fontsize=9)
        axes[1][column].set_xlabel("how many", fontsize=8)
        for row in (0, 1):
            axes[row][column].set_xscale("log")
            axes[row][column].grid(color="whitesmoke")
            axes[row][column].tick_params(labelsize=7)
        axes[0][column].set_ylim(bottom=0)
        axes[1][column].set_ylim(bottom=-20, top=max(1024, axes[1][column].get_ylim()[1]))
    axes[0][0].set_ylabel("us per item", fontsize=8)
    axes[1][0].set_ylabel("native memory at the peak (KiB)", fontsize=8)
    axes[0][0].legend(fontsize=8)
    figure.tight_layout()
    figure.savefig(path, metadata={"Date": None})


def paragraph(text):
    return textwrap.fill(" ".join(text.split()), 120, break_long_words=False, break_on_hyphens=False) + "\n\n"


def row_of(rounds, job, items):
    library, bare = rounds[job, "library", items], rounds[job, "bare", items]
    time, floor = (figure_of(rows, "us per item", min) for rows in (library, bare))
    memory, memory_floor = (figure_of(rows, "peak KiB", statistics.median) for rows in (library, bare))
    left = figure_of(library, "left KiB of Java", statistics.median)
    return (f"| {ITEMS[job]} | {items:,} | {time:,.2f} | {floor:,.2f} | {time / floor:.2f} | {memory:,.0f} "
            f"| {memory_floor:,.0f} | {left:,.1f} |\n")


def describe(rounds, system):
    text = "# How the cost grows\n\n" + paragraph(
        f"""What a listing costs for each item, with the library and with the same system calls in a C++ loop without
        Java (`bare`), as the listed things become more. Written by `scripts/growth.sh` on {datetime.date.today()}, with
        {system}; times are the best of five rounds, memory is the median.""")
    text += ("| | how many | library, us per item | bare, us per item | library / bare "
             "| library, KiB at the peak | bare, KiB at the peak | Java heap left, KiB |\n"
             "|---|---|---|---|---|---|---|---|\n")
    for job in ITEMS:
        for items in series(rounds, job, "library", "us per item", min)[0]:
            text += row_of(rounds, job, items)
    text += "\n"
    for job, items in ITEMS.items():
        own, floor = (exponent(*series(rounds, job, contender, "us per item", min)) for contender in CONTENDERS)
        how = "a straight line" if own <= STRAIGHT else (
            "more than a straight line, by the system's own calls" if own <= floor + STRAIGHT - 1
            else "**more than a straight line, by the library's own doing**")
        text += paragraph(f"""- {items}: the time of a pass grows with their number to the power of {own:.2f}
            ({floor:.2f} bare): {how}.""").rstrip() + "\n"
    return text + "\n" + paragraph(
        """Memory is what the process holds beyond what it held before the passes; while a directory is listed, and a key by
        the library, it is looked at every thousand items. The collector drops what it is handed, so that what is left of the
        Java heap is the listing's own.""") + "![Time and memory for each item](growth.svg)\n"


def main():
    table, docs, system = sys.argv[1:]
    rounds = read(table)
    draw(rounds, pathlib.Path(docs, "growth.svg"))
    pathlib.Path(docs, "growth.md").write_text(describe(rounds, system), encoding="utf-8")


if __name__ == "__main__":
    main()
