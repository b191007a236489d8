#!/usr/bin/env python3
"""Breaks the library in one place at a time and runs the native tests: what no test notices is a survivor.

Usage: mutants.py [--count N] [--seed S] [--check] [--build FOLDER] [ROOM...]

FOLDER is a build folder of its own. Results are added to mutants.csv in its folder mutants as they come; a second run
goes on where the first one ended, and tries again what survived and is not accepted. --check only looks at
tests/mutants/accepted.txt: is each survivor that was accepted still to be found in the sources?
"""
import argparse
import collections
import csv
import os
import pathlib
import random
import re
import sys
import time

import building
import judging
import places

ROOT = pathlib.Path(__file__).resolve().parents[2]
FIELDS = ["room", "file", "function", "line", "name", "number", "verdict", "by", "program", "test", "seconds"]
# How many mutants of a room come between two looks at whether the tests still pass without any.
STRETCH = 20


def read_accepted(file):
    """The survivors that cannot matter: key -> reason. Four lines each: place, text of the line, change, reason."""
    text = re.sub(r"^#.*\n", "", file.read_text("utf-8"), flags=re.MULTILINE).strip()
    accepted = {}
    for entry in re.split(r"\n\n+", text) if text else []:
        place, line, change, reason = (part.strip() for part in entry.split("\n"))
        name, function = place.split(": ")
        accepted[name, function, line, change] = reason
    return accepted


def key_of(row):
    return row["file"], row["function"], row["line"], row["name"]


class Results:
    """The CSV file, one row for each mutant."""

    def __init__(self, file):
        self.file = file
        self.rows = {}
        if file.exists():
            with file.open(newline="", encoding="utf-8") as stream:
                self.rows = {key_of(row): row for row in csv.DictReader(stream)}

    def add(self, mutation, verdict, killer, seconds):
        row = {field: getattr(mutation, field) for field in FIELDS[:6]}
        row |= {"verdict": verdict, "seconds": f"{seconds:.1f}", **(killer or {})}
        self.rows[mutation.key] = row
        self.write()
        print(f"{verdict:10} {mutation.file}:{mutation.number}: {mutation.name}  "
              f"{row.get('program', '')} {row.get('test', '')}", flush=True)

    def forget(self, keys):
        for key in keys:
            self.rows.pop(key, None)
        self.write()

    def write(self):
        # In one step: a run may be ended at any time.
        fresh = self.file.with_suffix(".new")
        with fresh.open("w", newline="", encoding="utf-8") as stream:
            writer = csv.DictWriter(stream, FIELDS)
            writer.writeheader()
            writer.writerows(self.rows.values())
        fresh.replace(self.file)


class Campaign:
    """Tries a sample of the mutations, room by room in stretches."""

    def __init__(self, builder, judge, results):
        self.builder, self.judge, self.results = builder, judge, results

    def try_one(self, mutation):
        begin = time.monotonic()
        verdict, killer = self.builder.make(mutation), None
        if verdict == "built":
            killer = self.judge.killer(mutation)
            verdict = "killed" if killer else "survived"
        self.results.add(mutation, verdict, killer, time.monotonic() - begin)
        return verdict in ("killed", "survived")

    def stretch(self, waiting, wanted):
        """Tries some of one room. Returns how many of them were mutants."""
        mutants = []
        while waiting and len(mutants) < wanted:
            mutation = waiting.pop()
            if self.try_one(mutation):
                mutants.append(mutation)
        self.builder.restore()
        if not mutants or self.judge.still_sound({self.judge.order(mutation)[0] for mutation in mutants}):
            return len(mutants)
        self.judge.renew_prefix()
        if len(mutants) == 1:
            self.results.add(mutants[0], "killed", {"by": "room", "test": "spoils the Wine prefix"}, 0)
            return 1
        print("one of these has spoiled the Wine prefix: each by itself", flush=True)
        self.results.forget(mutation.key for mutation in mutants)
        return sum(self.stretch([mutation], 1) for mutation in mutants)

    def run(self, samples, wanted):
        while any(wanted[room] and samples[room] for room in samples):
            for room, waiting in samples.items():
                wanted[room] -= self.stretch(waiting, min(wanted[room], STRETCH))


def sample(mutations, rooms, count, seed):
    """Each room's mutations in an order that the seed decides, and how many of them are wanted."""
    by_room = collections.defaultdict(list)
    for mutation in mutations:
        by_room[mutation.room].append(mutation)
    chosen = {room: by_room[room] for room in rooms or sorted(by_room)}
    total = sum(map(len, chosen.values()))
    wanted = {room: round(count * len(of_room) / total) for room, of_room in chosen.items()}
    for room, of_room in chosen.items():
        random.Random(f"{seed} {room}").shuffle(of_room)
    return chosen, wanted


def already_done(samples, wanted, results, accepted):
    """Leaves out what the results have; survivors are tried again, but for the accepted ones."""
    for room, of_room in samples.items():
        known = [results.rows[mutation.key] for mutation in of_room if mutation.key in results.rows]
        done = {key_of(row) for row in known if row["verdict"] != "survived" or key_of(row) in accepted}
        counted = sum(key_of(row) in done and row["verdict"] in ("killed", "survived") for row in known)
        wanted[room] = max(0, wanted[room] - counted)
        # The next one is taken from the end.
        of_room[:] = [mutation for mutation in reversed(of_room) if mutation.key not in done]


def report(rows, accepted):
    """Prints the table of the rooms and the survivors that nobody has accepted. Returns how many these are."""
    print("| room | mutants | killed by its tests | by others | by the fault matrix | accepted | survivors | killed |")
    print("|---|---|---|---|---|---|---|---|")
    tried = [row for row in rows if row["verdict"] in ("killed", "survived")]
    survivors = [row for row in tried if row["verdict"] == "survived" and key_of(row) not in accepted]
    for room in [*sorted({row["room"] for row in tried}), "all"]:
        mine = [row for row in tried if room in ("all", row["room"])]
        by = collections.Counter(row.get("by", "") for row in mine if row["verdict"] == "killed")
        left = sum(room in ("all", row["room"]) for row in survivors)
        print(f"| {room} | {len(mine)} | {by['room']} | {by['others']} | {by['matrix']} | "
              f"{len(mine) - by.total() - left} | {left} | {100 * by.total() / len(mine):.1f} % |")
    for row in survivors:
        print(f"\n{row['file']}: {row['function']}\n    {row['line']}\n    {row['name']}\n    (line {row['number']})")
    verdicts = collections.Counter(row["verdict"] for row in rows)
    print(f"{verdicts['killed']} killed, {verdicts['survived'] - len(survivors)} accepted, {len(survivors)} survivors; "
          f"{verdicts['stillborn']} did not compile, {verdicts['equivalent']} gave the same code")
    return len(survivors)


def stale(accepted, mutations):
    """Prints what was accepted and is not in the sources any more. Returns how much that is."""
    gone = accepted.keys() - {mutation.key for mutation in mutations}
    for file, function, line, name in sorted(gone):
        print(f"accepted, but not to be found: {file}: {function}: {line!r}: {name}")
    return len(gone)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build/mutants", metavar="FOLDER")
    parser.add_argument("rooms", nargs="*", metavar="ROOM")
    parser.add_argument("--count", type=int, default=520)
    parser.add_argument("--seed", default="1")
    parser.add_argument("--check", action="store_true")
    arguments = parser.parse_args()

    mutations = places.find_mutations(ROOT / "src")
    accepted = read_accepted(ROOT / "tests/mutants/accepted.txt")
    if arguments.check:
        print(f"{len(mutations)} places to break, {len(accepted)} accepted survivors")
        return 1 if stale(accepted, mutations) or not mutations else 0

    if unknown := set(arguments.rooms) - {mutation.room for mutation in mutations}:
        parser.error(f"no such room: {' '.join(sorted(unknown))}")
    samples, wanted = sample(mutations, arguments.rooms, arguments.count, arguments.seed)
    build = arguments.build.resolve()
    work = build / "mutants"
    work.mkdir(exist_ok=True)
    results = Results(work / "mutants.csv")
    judge = judging.Judge(build, work, pathlib.Path(os.environ["WINEPREFIX"]))
    builder = building.Builder(ROOT / "src", build, work)
    builder.prepare(judge.programs)
    try:
        judge.renew_prefix()
        judge.measure()
        already_done(samples, wanted, results, accepted)
        Campaign(builder, judge, results).run(samples, wanted)
    finally:
        builder.restore()
        judge.end_prefix()
    keys = {mutation.key for mutation in mutations}
    rows = [row for key, row in results.rows.items() if key in keys and row["room"] in samples]
    return 1 if report(rows, accepted) else 0


if __name__ == "__main__":
    sys.exit(main())
