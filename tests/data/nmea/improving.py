#!/usr/bin/env python3
"""Writes improving.nmea beside this script: a receiver in the middle of Berlin that finds itself step by step.

Three fixes, 0.2 seconds apart, off by 1200, 800 and 51 metres (the dilution times twice the receiver's 5.1 metres).
"""

from functools import reduce
from pathlib import Path


def sentence(body):
    return f"${body}*{reduce(lambda sum, byte: sum ^ byte, body.encode()):02X}\r\n"


def degrees(value, digits):
    whole = int(abs(value))
    return f"{whole:0{digits}d}{(abs(value) - whole) * 60:07.4f}"


def fix(time, latitude, longitude, dilution):
    place = f"{degrees(latitude, 2)},{'N' if latitude >= 0 else 'S'},{degrees(longitude, 3)},{'E' if longitude >= 0 else 'W'}"
    return (sentence(f"GPRMC,{time},A,{place},0.0,0.0,100314,,,A")
            + sentence(f"GPGGA,{time},{place},1,08,{dilution:.2f},35.0,M,45.0,M,,"))


def main():
    fixes = (("210000.00", 52.53, 13.42, 1200 / 10.2), ("210000.20", 52.525, 13.41, 800 / 10.2), ("210000.40", 52.5219, 13.4132, 5))
    Path(__file__).with_suffix(".nmea").write_bytes("".join(fix(*values) for values in fixes).encode("ascii"))


if __name__ == "__main__":
    main()
