"""The table that bench/compare prints. Ratios are ours to the other's: less is better."""

import operator
import statistics
import sys

GOALS = {"<=": operator.le, "<": operator.lt}


def duration(seconds):
    for unit, factor in (("s", 1), ("ms", 1e3), ("us", 1e6)):
        if seconds * factor >= 1:
            break
    else:
        unit, factor = "ns", 1e9
    value = seconds * factor
    return f"{value:.0f} {unit}" if value >= 100 else f"{value:.3g} {unit}"


def mebibytes(size):
    return f"{size / 2**20:.1f} MiB"


class Table:
    def __init__(self):
        self._rows = []
        self._notes = []

    def note(self, text):
        """A line below the table."""
        self._notes.append(text)

    def progress(self, text):
        """What is being measured, for somebody who waits."""
        print(text, file=sys.stderr, flush=True)

    def add(self, name, ours, theirs, form, goal=None):
        """A row of two lists of values and how to write one; goal: a comparison and a ratio, such as ("<=", 1.25)."""
        self.add_values(name, statistics.median(ours), statistics.median(theirs), form, goal)

    def add_values(self, name, own, other, form, goal=None):
        if goal:
            verdict = "met" if GOALS[goal[0]](own / other, goal[1]) else "missed"
            goal = f"{goal[0]} {goal[1]:.2f}"
        self._rows.append((name, form(own), form(other), f"{own / other:.3f}", goal or "-", verdict if goal else "-"))

    def add_counts(self, name, own, other):
        """A row of which ours is to be nought."""
        self._rows.append((name, str(own), str(other), f"{own / other:.3f}" if other else "-", "ours 0",
                           "missed" if own else "met"))

    def print(self):
        heads = ("name", "ours", "the other", "ratio", "goal", "")
        widths = [max(len(row[i]) for row in (heads, *self._rows)) for i in range(len(heads))]
        for row in (heads, tuple("-" * width for width in widths), *self._rows):
            print("  ".join(cell.ljust(width) if i in (0, 4, 5) else cell.rjust(width)
                            for i, (cell, width) in enumerate(zip(row, widths))).rstrip())
        for note in self._notes:
            print(note)
