#!/usr/bin/env python3
"""The sample list that the tests share with Python's plistlib.

sample.py write            writes sample.xml.plist and sample.binary.plist beside this script
sample.py check FILE...    fails unless plistlib reads the sample, with the same types, from every file
"""

import datetime
import pathlib
import plistlib
import sys

SAMPLE = {
    "array": [1, True, "two", 3.5, [], {}],
    "bytes": bytes(range(64)),
    "date": datetime.datetime(2014, 3, 10, 20, 0, 0),
    "dict": {"a & b": "<tag>", "nested": {"empty": "", "emptyData": b""}},
    "false": False,
    "int8": 255,
    "int16": 65535,
    "int32": 4294967295,
    "int64": 9223372036854775807,
    "minimum": -9223372036854775808,
    "negative": -1,
    "real": 0.1,
    "text": "Gr\u00fc\u00dfe \U0001f642",
    "true": True,
    "unsigned": 18446744073709551615,
}


def same(a, b):
    """Equal, and of equal types: to Python, True == 1 == 1.0."""
    if type(a) is not type(b):
        return False
    if isinstance(a, dict):
        return a.keys() == b.keys() and all(same(a[key], b[key]) for key in a)
    if isinstance(a, list):
        return len(a) == len(b) and all(map(same, a, b))
    return a == b


def main(command, *files):
    if command == "write":
        here = pathlib.Path(__file__).parent
        (here / "sample.xml.plist").write_bytes(plistlib.dumps(SAMPLE, fmt=plistlib.FMT_XML))
        (here / "sample.binary.plist").write_bytes(plistlib.dumps(SAMPLE, fmt=plistlib.FMT_BINARY))
        return None
    for file in files:
        found = plistlib.loads(pathlib.Path(file).read_bytes())
        if not same(found, SAMPLE):
            return f"{file}: {found}"
    return None


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
