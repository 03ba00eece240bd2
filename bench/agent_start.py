"""Runs inside tests/desktop/desktop; see bench/agent_start."""

import collections
import os
import re
import shutil
import signal
import statistics
import tempfile
import time
from pathlib import Path

from desktop import Program, program, tray_icons, wait_until
from quillo import make_journal


def cpu_seconds(pid):
    fields = Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def start_to_icon(home):
    """(seconds until the icon has its place in the tray, CPU seconds until then)"""
    begin = time.monotonic()
    agent = Program(program("quillo-agent"), "--home", home)
    try:
        wait_until(lambda: tray_icons("quillo-agent"), "the icon", interval=0.001)
        return time.monotonic() - begin, cpu_seconds(agent.pid)
    finally:
        agent.stop()
        wait_until(lambda: not tray_icons("quillo-agent"), "the icon gone")


def traced(home):
    """What the agent asks of the kernel until it is idle."""
    trace = os.path.join(home, "trace")
    agent = Program("strace", "-f", "-qq", "-o", trace, program("quillo-agent"), "--home", home)
    try:
        wait_until(lambda: tray_icons("quillo-agent"), "the icon", interval=0.01)
        time.sleep(1)
    finally:
        # The tracer's only child.
        children = Path(f"/proc/{agent.pid}/task/{agent.pid}/children").read_text().split()
        os.kill(int(children[0]), signal.SIGTERM)
        agent.wait()
    calls = collections.Counter()
    opened = collections.Counter()
    missing = 0
    for line in Path(trace).read_text(errors="replace").splitlines():
        call = re.match(r"\d+ +(\w+)\(", line)
        if not call:
            continue
        calls[call[1]] += 1
        if call[1] in ("open", "openat"):
            path = re.search(r'"([^"]*)"', line)
            if "= -1" in line:
                missing += 1
            elif path:
                opened[path[1]] += 1
    print(f"{sum(calls.values())} system calls: " + ", ".join(f"{n} {name}" for name, n in calls.most_common(8)))
    print(f"{sum(opened.values())} files opened ({missing} more were not there):")
    for label, form in (("libraries", r"\.so"), ("plugins", r"/plugins/"), ("fonts", r"/fonts?/|fontconfig"), ("themes", r"/icons/|/themes/"),
                        ("locale and zones", r"locale|zoneinfo"), ("own", r"Library|quillo")):
        found = [path for path in opened if re.search(form, path)]
        print(f"  {len(found):4} {label}")


def main():
    home = tempfile.mkdtemp(prefix="quillo-start-")
    try:
        make_journal(home)
        start_to_icon(home)
        times = [start_to_icon(home) for _ in range(int(os.environ["RUNS"]))]
        wall = sorted(t[0] for t in times)
        cpu = statistics.median(t[1] for t in times)
        print(f"start to icon: median {statistics.median(wall) * 1000:.0f} ms, {wall[0] * 1000:.0f} to {wall[-1] * 1000:.0f} ms "
              f"in {len(wall)} starts; {cpu * 1000:.0f} ms of the processor")
        if shutil.which("strace"):
            traced(home)
    finally:
        shutil.rmtree(home, ignore_errors=True)


if __name__ == "__main__":
    main()
