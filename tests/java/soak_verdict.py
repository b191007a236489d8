"""Judges the table of a soak: whether what a process holds goes on growing."""

import csv
import dataclasses
import statistics

MIB = 1 << 20
FEWEST_SAMPLES = 8
# What comes and goes at any moment of a run of any length: memory that the system hands out by the piece, and threads
# of the JVM's compiler and collector. Less than this is no growth.
GRAIN_BYTES = MIB
GRAIN_HANDLES = 12


@dataclasses.dataclass
class Series:
    """One figure over the time of a run, in its second half: its slope, and how far it lies from that line."""

    name: str
    unit: str
    grain: float
    seconds: list
    values: list

    def __post_init__(self):
        begin = self.seconds[-1] / 2
        late = [(x, y) for x, y in zip(self.seconds, self.values) if x >= begin]
        self.slope, start = statistics.linear_regression(*zip(*late))
        rest = sorted(y - start - self.slope * x for x, y in late)
        # Without the outermost ones: a single peak must not hide what grows below it.
        outer = len(rest) // 20
        self.scatter = rest[-1 - outer] - rest[outer]
        self.growth = self.slope * (late[-1][0] - late[0][0])
        self.late = [(x, start + self.slope * x) for x, _ in late]

    @property
    def title(self):
        return f'{self.name}, {self.unit}' if self.unit else self.name

    @property
    def flat(self):
        """A leak grows beyond the scatter about its own line; what only settles down, or comes and goes, does not."""
        return self.growth <= max(self.scatter, self.grain)

    @property
    def finding(self):
        if self.growth <= self.scatter:
            return 'flat within its scatter'
        return 'beyond its scatter, but less than counts as growth' if self.flat else '**NOT flat**'

    @property
    def verdict(self):
        return (f'{self.title}: {self.values[0]:,.2f} at first, {self.values[-1]:,.2f} in the end, grown by '
                f'{self.growth:,.2f} in the second half, scatter {self.scatter:,.2f}: {self.finding}')


def read(path):
    """The table's rows, as numbers."""
    with open(path, newline='', encoding='utf-8') as file:
        return [{name: int(value) for name, value in row.items()} for row in csv.DictReader(file)]


def series(rows):
    """What must be flat."""
    seconds = [row['seconds'] for row in rows]
    columns = [
        ('memory of the process', 'MiB', GRAIN_BYTES / MIB,
         [(row['private bytes'] - row['left on purpose']) / MIB for row in rows]),
        ('Java heap', 'MiB', GRAIN_BYTES / MIB, [row['Java heap'] / MIB for row in rows]),
        ('handles', '', GRAIN_HANDLES, [row['handles'] for row in rows]),
        ('JNI global references', '', GRAIN_HANDLES, [row['global references'] for row in rows]),
    ]
    return [Series(name, unit, grain, seconds, values) for name, unit, grain, values in columns]
