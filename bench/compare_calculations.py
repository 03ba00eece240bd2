"""Property lists, a settings write and the next reminder beside what others take for them.

bench_contenders measures one contender at a time when it is asked; those written in Python are measured here, likewise:
seconds of the processor that one call takes.
"""

import datetime
import os
import plistlib
import statistics
import time

from compare_table import duration
from desktop import Program, program

SECONDS_OF_TURN = 0.02
LONGEST = 120  # seconds that a contender may take


def seconds_of_call(call):
    calls, batch, seconds = 0, 1, 0
    begin = time.process_time()
    while seconds < SECONDS_OF_TURN:
        for _ in range(batch):
            call()
        calls += batch
        batch *= 2
        seconds = time.process_time() - begin
    return seconds / calls


class Contenders:
    def __init__(self, scratch, runs):
        self._program = Program(program("bench_contenders"), str(scratch))
        self._runs = runs
        self.rules = []
        while True:
            line = self._program.expect(r"ready|rule (\w+) (\S+) (\d+) (\d+)", LONGEST)
            if line[0] == "ready":
                break
            self.rules.append((line[1], line[2], int(line[3]), int(line[4])))

    def stop(self):
        self._program.stop()

    def _seconds(self, contender):
        if callable(contender):
            return seconds_of_call(contender)
        self._program.send(contender)
        return float(self._program.expect(r".*", LONGEST)[0])

    def by_turns(self, *contenders):
        """The seconds of each, a list for each. A contender is a name for bench_contenders or a function."""
        taken = [[] for _ in contenders]
        for run in range(-1, self._runs):  # the first warms up
            for contender, values in zip(contenders, taken):
                seconds = self._seconds(contender)
                if run >= 0:
                    values.append(seconds)
        return taken


def settings(table, contenders):
    table.add("write of one of 60 settings, against its system calls",
              *contenders.by_turns("settings/ours", "settings/system calls"), duration)


def lists(table, contenders, scratch):
    forms = {"xml": plistlib.FMT_XML, "binary": plistlib.FMT_BINARY}
    for size, label in (("small", "60 keys"), ("large", "10 MiB")):
        for form, number in forms.items():
            file = (scratch / f"{size}.{form}").read_bytes()
            value = plistlib.loads(file)
            python = {"read": lambda file=file: plistlib.loads(file),
                      "write": lambda value=value, number=number: plistlib.dumps(value, fmt=number)}
            for action, call in python.items():
                table.progress(f"lists: {action} {label} as {form}")
                name = f"{action}/{size}/{form}"
                ours, libplist, plistlib_times = contenders.by_turns(f"{name}/ours", f"{name}/libplist", call)
                table.add(f"{action} {label} as {form}, against libplist", ours, libplist, duration, ("<", 1))
                table.add(f"{action} {label} as {form}, against plistlib", ours, plistlib_times, duration, ("<", 1))


def dateutil_rules(rules, table):
    """{name: a function that calculates the reminder}, none where dateutil is missing."""
    try:
        from dateutil import rrule, tz
    except ImportError:
        table.note("python-dateutil is left out: it is not installed.")
        return {}
    berlin = tz.gettz("Europe/Berlin")
    calls = {}
    for name, recurrence, moment, expected in rules:
        after = datetime.datetime.fromtimestamp(moment, berlin)
        rule = rrule.rrulestr(recurrence, dtstart=datetime.datetime(after.year - 10, 3, 10, 9, tzinfo=berlin))
        if rule.after(after).timestamp() != expected:
            table.note(f"python-dateutil has another next reminder for {name}.")
        calls[name] = lambda rule=rule, after=after: rule.after(after)
    return calls


def reminders(table, contenders):
    """A row for each other: the rule that is worst for us."""
    table.progress("reminders")
    others = {"libical, jumping": 0.1, "libical, walking": 0.1, "python-dateutil": 1}
    dateutil = dateutil_rules(contenders.rules, table)
    worst = {}
    for name, *_ in contenders.rules:
        kept = [f"reminder/{name}/ours", f"reminder/{name}/libical, jumping", f"reminder/{name}/libical, walking"]
        ours, *theirs = contenders.by_turns(*kept, *([dateutil[name]] if name in dateutil else []))
        for other, values in zip(others, theirs):
            ratio = statistics.median(ours) / statistics.median(values)
            if other not in worst or ratio > worst[other][0]:
                worst[other] = (ratio, name, ours, values)
    for other, (_, name, ours, values) in worst.items():
        goal = ("<=" if others[other] < 1 else "<", others[other])
        table.add(f"next reminder, against {other} ({name.replace('_', ' ')})", ours, values, duration, goal)
    table.note(f"Reminders: of {len(contenders.rules)} rules that began ten years ago, the one in brackets is the worst for us.")
    table.note("libical starts at the moment asked about (jumping) or at the rule's first date (walking).")


def measure(table, scratch, parts, runs):
    if not os.path.exists(program("bench_contenders")):
        table.note("Settings, lists and reminders are left out: bench_contenders is not built (libical-dev, libplist-dev).")
        return
    contenders = Contenders(scratch, runs)
    try:
        if "settings" in parts:
            table.progress("settings")
            settings(table, contenders)
        if "lists" in parts:
            lists(table, contenders, scratch)
        if "reminders" in parts:
            reminders(table, contenders)
    finally:
        contenders.stop()
