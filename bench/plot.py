"""Draws the ratios of the benchmark: plot.py results.csv benchmark.svg"""

import csv
import sys

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt  # noqa: E402  (the back end comes first)

ROW_HEIGHT = 0.22  # inches


def read_ratios(path):
    with open(path, newline="", encoding="utf-8") as file:
        return [row for row in csv.DictReader(file) if row["unit"] == "x"]


def draw(rows, path):
    matplotlib.rcParams["svg.hashsalt"] = "benchmark"  # the same figures give the same file
    figure, axes = plt.subplots(figsize=(9, 1.5 + ROW_HEIGHT * len(rows)))
    for position, row in enumerate(rows):
        median = float(row["median"])
        lower, upper = median - float(row["lower quartile"]), float(row["upper quartile"]) - median
        colour = {"yes": "tab:green", "no": "tab:red"}.get(row["met"], "tab:gray")
        axes.errorbar(median, position, xerr=[[lower], [upper]], fmt="o", markersize=4, color=colour, capsize=2)
        if row["aim"]:
            axes.plot(float(row["aim"]), position, marker="|", markersize=11, color="black")
    axes.set_yticks(range(len(rows)), [f"{row['job']} / {row['what']}" for row in rows], fontsize=7)
    axes.set_ylim(len(rows), -1)
    axes.set_xscale("log")
    axes.set_xticks([0.1, 0.2, 0.5, 1, 2, 5], ["0.1", "0.2", "0.5", "1", "2", "5"])
    axes.axvline(1, color="lightgray", zorder=0)
    axes.grid(axis="x", color="whitesmoke", zorder=0)
    axes.set_xlabel("time of the library / time of the other: median and quartiles; | is the aim")
    figure.tight_layout()
    figure.savefig(path, metadata={"Date": None})


if __name__ == "__main__":
    draw(read_ratios(sys.argv[1]), sys.argv[2])
