#!/usr/bin/env python3
"""Prints what another reader of the zone files makes of them, for random dates in every zone.

Lines: `offset ZONE INSTANT SECONDS` and `instant ZONE READING INSTANT`, all in seconds since 1970; a reading is its
digits read as if in UTC. The seed is fixed.
"""
import random
import zoneinfo
from datetime import datetime, timedelta, timezone

EPOCH = datetime(1970, 1, 1)
FIRST = int((datetime(1, 1, 3) - EPOCH).total_seconds())
LAST = int((datetime(9999, 12, 29) - EPOCH).total_seconds())
WEEK = 7 * 86400


def year_start(year):
    return int((datetime(year, 1, 1) - EPOCH).total_seconds())


def offset(zone, instant):
    utc = (EPOCH + timedelta(seconds=instant)).replace(tzinfo=timezone.utc)
    return int(utc.astimezone(zone).utcoffset().total_seconds())


def instant_of(zone, reading):
    wall = (EPOCH + timedelta(seconds=reading)).replace(tzinfo=zone)
    return reading - int(wall.utcoffset().total_seconds())


def changes(zone, year):
    """The instants at which the clock is changed in `year`."""
    before = year_start(year)
    while before < year_start(year + 1):
        after = before + WEEK
        if offset(zone, before) != offset(zone, after):
            low, high = before, after
            while high - low > 1:
                middle = (low + high) // 2
                if offset(zone, middle) == offset(zone, before):
                    low = middle
                else:
                    high = middle
            yield high
        before = after


def main():
    chance = random.Random(20140310)
    for name in sorted(zoneinfo.available_timezones()):
        zone = zoneinfo.ZoneInfo(name)
        instants = [chance.randint(FIRST, LAST) for _ in range(6)]
        instants += [chance.randint(year_start(1850), year_start(2110)) for _ in range(12)]
        readings = list(instants)
        for year in (chance.randint(1900, 2037), chance.randint(2000, 2037), chance.randint(2038, 9998)):
            for change in changes(zone, year):
                instants += [change - 1, change]
                wall = change + offset(zone, change - 1)
                readings += [wall + by for by in (-5400, -1800, -1, 0, 1, 1799, 1800, 3599, 3600, 5400, 40000)]
        for instant in instants:
            print("offset", name, instant, offset(zone, instant))
        for reading in readings:
            print("instant", name, reading, instant_of(zone, reading))


main()
