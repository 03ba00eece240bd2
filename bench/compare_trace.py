"""What the agent and the bare icon ask of the kernel from their start until they are idle."""

import collections
import os
import re
import shutil
import signal
import sys
import time
from pathlib import Path

from compare_programs import FLOOR, OURS, prepare_agent
from desktop import Program, program, tray_icons, wait_until

KINDS = (("libraries", r"\.so"), ("plugins", r"/plugins/"), ("fonts", r"/fonts?/|fontconfig"),
         ("themes", r"/icons/|/themes/"), ("locale and zones", r"locale|zoneinfo"), ("own", r"Library|quillo"))


def traced(trace, home, name):
    options = ["--home", str(home)] if name == OURS else []
    tracer = Program("strace", "-f", "-qq", "-o", str(trace), program(name), *options)
    try:
        wait_until(lambda: tray_icons(name), "the icon", interval=0.05)
        time.sleep(1)
    finally:
        # The tracer's only child.
        children = Path(f"/proc/{tracer.pid}/task/{tracer.pid}/children").read_text().split()
        os.kill(int(children[0]), signal.SIGTERM)
        tracer.wait()


def counted(trace):
    calls, opened = collections.Counter(), set()
    missing = 0
    for line in trace.read_text(errors="replace").splitlines():
        call = re.match(r"\d+ +(\w+)\(", line)
        if not call:
            continue
        calls[call[1]] += 1
        if call[1] in ("open", "openat"):
            path = re.search(r'"([^"]*)"', line)
            if "= -1" in line:
                missing += 1
            elif path:
                opened.add(path[1])
    return calls, opened, missing


def report(scratch):
    if not shutil.which("strace"):
        sys.exit("compare: strace is missing, install the package strace")
    seen = {}
    for label, name in ((FLOOR, "bench_bare_tray_icon"), (OURS, "quillo-agent")):
        home = scratch / name
        home.mkdir()
        if label == OURS:
            prepare_agent(home)
        traced(scratch / "trace", home, name)
        calls, opened, missing = seen[label] = counted(scratch / "trace")
        print(f"{label}: {sum(calls.values())} system calls: " + ", ".join(f"{n} {call}" for call, n in calls.most_common(8)))
        print(f"  {len(opened)} files opened, {missing} times a file was not there: " +
              ", ".join(f"{len([path for path in opened if re.search(form, path)])} {kind}" for kind, form in KINDS))
    print(f"Only {OURS} opens:")
    for path in sorted(seen[OURS][1] - seen[FLOOR][1]):
        if not path.startswith("/proc/"):
            print("  " + path)
