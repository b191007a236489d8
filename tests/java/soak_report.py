#!/usr/bin/env python3
"""Writes what a soak's table says: soak_report.py TABLE DOCS SYSTEM writes DOCS/soak.md and DOCS/soak.svg."""

import datetime
import pathlib
import sys
import textwrap

import matplotlib

matplotlib.use('svg')
import matplotlib.pyplot as plt  # noqa: E402  (the back end comes first)

import soak_verdict  # noqa: E402

LINE = {'color': 'tab:red', 'linewidth': 1}


def draw(rows, judged, path):
    matplotlib.rcParams['svg.hashsalt'] = 'soak'  # the same figures give the same file
    rates = [(after['jobs'] - before['jobs']) / (after['seconds'] - before['seconds'])
             for before, after in zip(rows, rows[1:])]
    figure, axes = plt.subplots(len(judged) + 1, sharex=True, figsize=(9, 1.7 * (len(judged) + 1)))
    for axis, series in zip(axes, judged):
        axis.plot([x / 60 for x in series.seconds], series.values, '.', markersize=2, color='tab:gray')
        axis.plot([x / 60 for x, _ in series.late], [y for _, y in series.late], **LINE)
        axis.set_ylabel(series.title.replace(', ', '\n'), fontsize=7)
        low, high = min(series.values), max(series.values)
        # No less than twice what counts as no growth, or noise would fill the picture.
        room = max(2 * series.grain - (high - low), 0) / 2 + 0.05 * (high - low)
        axis.set_ylim(low - room, high + room)
    axes[-1].plot([row['seconds'] / 60 for row in rows[1:]], rates, '.', markersize=2, color='tab:blue')
    axes[-1].set_ylim(bottom=0)
    axes[-1].set_ylabel('jobs per second', fontsize=7)
    axes[-1].set_xlabel('minutes; red: the line through the second half')
    for axis in axes:
        axis.tick_params(labelsize=7)
        axis.grid(color='whitesmoke')
    figure.tight_layout()
    figure.savefig(path, metadata={'Date': None})
    plt.close(figure)


def paragraph(text):
    return textwrap.fill(' '.join(text.split()), 120, break_long_words=False, break_on_hyphens=False) + '\n\n'


def describe(rows, judged, system):
    last = rows[-1]
    good = all(series.flat for series in judged) and all(row['ledger'] == 0 for row in rows)
    held = max(row['ledger'] for row in rows)
    text = '# Soak\n\n' + paragraph(f'''Sixteen threads of one Windows JVM go through all native methods for
        {last["seconds"] / 60:.0f} minutes, in jobs of a few calls each; what every job answers is compared with what
        one thread alone was answered before. Every five seconds all threads rest, the Java heap is collected, and one
        sample is taken. Written by `scripts/soak.sh` on {datetime.date.today()}, with {system}; natives are checked
        (`-Xcheck:jni`), and the Java heap has 256 MiB.''')
    text += paragraph(f'''**Verdict: {"flat" if good else "NOT flat"}.** {last["jobs"]:,} jobs,
        {last["jobs"] / last["seconds"]:,.0f} per second, {len(rows)} samples. What the threads held by their own
        account was {held} at every rest.''')
    text += '''| | at first | in the end | growth in the second half | scatter | counts as none | |
|---|---|---|---|---|---|---|
'''
    for series in judged:
        text += (f'| {series.title} | {series.values[0]:,.2f} | {series.values[-1]:,.2f} '
                 f'| {series.growth:,.2f} | {series.scatter:,.2f} | {series.grain:g} '
                 f'| {series.finding} |\n')
    text += '\n' + paragraph('''Growth is that of the line by least squares through the second half; scatter is the
        width of the band about it that holds nine tenths of the samples. Flat is what has grown by no more than its
        scatter, or by less than counts as growth at all: memory comes from the system by the piece, and the JVM's own
        threads come and go.''')
    text += paragraph(f'''Memory is what the system has committed to the process, without the
        {last["left on purpose"]:,} bytes that failed launches left behind on purpose; the JVM accounted for
        {last["JVM bytes"] / soak_verdict.MIB:,.0f} MiB as its own. Handles are counted in the system's table of all
        handles, JNI global references by the JVM. Local references end with each native method; checked mode warns of
        one that makes too many, and such a warning fails the run.''')
    return text + '![The figures over time](soak.svg)\n'


def main():
    table, docs, system = sys.argv[1:]
    rows = soak_verdict.read(table)
    judged = soak_verdict.series(rows)
    draw(rows, judged, pathlib.Path(docs, 'soak.svg'))
    pathlib.Path(docs, 'soak.md').write_text(describe(rows, judged, system), encoding='utf-8')


if __name__ == '__main__':
    main()
