"""The next reminder, against a calculator of its own on Python's zoneinfo: random rules, bases, questions and zones.

Wall readings that do not exist or occur twice are passed over here: which one is meant is fixed in the unit tests.
"""

import calendar
import json
import os
import random
import subprocess
import unittest
import zoneinfo
from datetime import datetime, timedelta, timezone
from zoneinfo import ZoneInfo

from quilloctl import QUILLOCTL

CASES = int(os.environ.get("QUILLO_ORACLE_CASES", "40000"))
ZONES = sorted(zoneinfo.available_timezones())
YEAR, MONTH, DAY, HOUR, MINUTE, SECOND, WEEK, WEEKDAY, ORDINAL, QUARTER = 4, 8, 16, 32, 64, 128, 256, 512, 1024, 2048
# About how many seconds a step has: only where the search begins.
SECONDS = {YEAR: 31557000, MONTH: 2629800, QUARTER: 7889400, DAY: 86400, WEEKDAY: 86400, WEEK: 604800, ORDINAL: 604800, SECOND: 1}


class Unclear(Exception):
    """A reading that the clock jumps over or shows twice."""


def instant(reading, zone):
    first, second = (reading.replace(tzinfo=zone, fold=fold) for fold in (0, 1))
    if first.utcoffset() != second.utcoffset():
        raise Unclear
    return first.astimezone(timezone.utc)


def reading(moment, zone):
    return moment.astimezone(zone).replace(tzinfo=None)


def plus(base, base_reading, unit, count, zone):
    if unit == SECOND:
        return base + timedelta(seconds=count)
    if unit in (DAY, WEEKDAY):
        return instant(base_reading + timedelta(days=count), zone)
    if unit in (WEEK, ORDINAL):
        return instant(base_reading + timedelta(weeks=count), zone)
    months = count * {YEAR: 12, QUARTER: 3, MONTH: 1}[unit]
    year, month = divmod(base_reading.year * 12 + base_reading.month - 1 + months, 12)
    day = min(base_reading.day, calendar.monthrange(year, month + 1)[1])
    return instant(base_reading.replace(year=year, month=month + 1, day=day), zone)


def clock_step(case, base_zone, zone):
    after, step = case["after"], timedelta(hours=1) if case["unit"] == HOUR else timedelta(minutes=1)
    base = reading(case["base"], base_zone)
    end = reading(case["base"] + timedelta(seconds=case["period"]), base_zone)
    midnight = reading(after, zone).replace(hour=0, minute=0, second=0, microsecond=0)
    whole_day = case["period"] == 0
    start_reading = midnight if whole_day else midnight.replace(hour=base.hour, minute=base.minute)
    start = instant(start_reading, zone)
    tomorrow = instant(start_reading + timedelta(days=1), zone)
    close = tomorrow if whole_day else instant(midnight.replace(hour=end.hour, minute=end.minute), zone)
    if start > after:
        return start
    if after >= close:
        return tomorrow
    candidate = start + step * case["count"]
    while candidate <= after:
        candidate += step * case["count"]
    return tomorrow if candidate > close else candidate


def next_reminder(case):
    base_zone, zone = ZoneInfo(case["base_zone"]), ZoneInfo(case["zone"])
    base_reading = reading(case["base"], base_zone)
    base = instant(base_reading, zone)
    if base > case["after"]:
        return base
    if case["unit"] in (HOUR, MINUTE):
        return clock_step(case, base_zone, zone)
    step = case["count"]
    count = max(0, int((case["after"] - base).total_seconds() / SECONDS[case["unit"]]) // step - 2) * step
    while True:
        candidate = plus(base, base_reading, case["unit"], count, zone)
        if candidate > case["after"]:
            return candidate
        count += step


def random_case(chance):
    # Half of them where clocks are changed now; the others from local mean times to the rules for years to come.
    year, years = chance.choice([(1995, 30), (1850, 400)])
    base = datetime(year, 1, 1, tzinfo=timezone.utc) + timedelta(seconds=chance.randrange(years * 365 * 86400))
    if chance.random() < 0.5:
        base = base.replace(second=0)
    unit = chance.choice([YEAR, MONTH, DAY, HOUR, MINUTE, SECOND, WEEK, WEEKDAY, ORDINAL, QUARTER, HOUR, MINUTE])
    after = base + timedelta(seconds=chance.randrange(-10 * 86400, 10 * 365 * 86400))
    return {"unit": unit, "count": chance.choice([1, 1, 2, 3, 5, 10, 15, 30, 45, 90]), "base": base,
            "base_zone": chance.choice(ZONES), "period": chance.choice([0, 0, 3600, 28800, 30000, 43200, 86400]),
            "after": after, "zone": chance.choice(ZONES)}


def iso(moment):
    return moment.strftime("%Y-%m-%dT%H:%M:%SZ")


class ReminderOracleTest(unittest.TestCase):
    def test_agrees_on_random_rules(self):
        chance = random.Random(20140310)
        cases, expected = [], []
        while len(cases) < CASES:
            case = random_case(chance)
            try:
                answer = next_reminder(case)
            except Unclear:
                continue
            cases.append(case)
            expected.append(iso(answer))
        lines = "\n".join(json.dumps({**c, "base": iso(c["base"]), "after": iso(c["after"])}) for c in cases) + "\n"
        output = subprocess.run([QUILLOCTL, "reminder", "next", "--batch"], input=lines, capture_output=True, text=True, check=True).stdout
        answers = [json.loads(line) for line in output.splitlines()]
        self.assertEqual(len(answers), len(cases))
        wrong = [(c, want, got) for c, want, got in zip(cases, expected, answers) if got != {"next": [want]}]
        self.assertEqual(wrong[:3], [], f"{len(wrong)} differ")
