#!/usr/bin/env python3
"""How long it takes from the key to the window, against a bare window that the same grab shows.

    hotkey_latency.py [BUILD [OPTION...]]      BUILD: a build directory with QUILLO_BENCH=ON (build/release)
                                               OPTION: of the desktop, such as --compositor

Starts a private desktop, opens each of the two windows a hundred times in turn, and prints medians, 99th percentiles
and their ratio.
"""

import os
import shutil
import statistics
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
DESKTOP = ROOT / "tests" / "desktop"
COUNT = 100
AGENT_KEY, FLOOR_KEY = 36, 37  # J and K for the kernel

sys.path.insert(0, str(DESKTOP))


def percentile(values, share):
    ordered = sorted(values)
    return ordered[min(len(ordered) - 1, round(share * (len(ordered) - 1)))]


def report(lines):
    times = {AGENT_KEY: ([], []), FLOOR_KEY: ([], [])}
    for line in lines:
        code, mapped, painted = map(int, line.split())
        times[code][0].append(mapped / 1000)
        times[code][1].append(painted / 1000)
    print(f"{'milliseconds from the press':30} {'agent':>8} {'floor':>8} {'ratio':>6}")
    for index, what in enumerate(("window mapped", "first painted frame")):
        for name, value in (("median", statistics.median), ("99th percentile", lambda v: percentile(v, 0.99))):
            agent, floor = value(times[AGENT_KEY][index]), value(times[FLOOR_KEY][index])
            print(f"{what + ', ' + name:37} {agent:8.2f} {floor:8.2f} {agent / floor:6.2f}".replace("     ", "", 1))
    print(f"{len(times[AGENT_KEY][0])} presses each")


def inside():
    from desktop import Program, press, program, tray_icon, wait_until, window_rect
    from quillo import Agent, make_journal, quilloctl

    home = tempfile.mkdtemp()
    make_journal(home)
    quilloctl(home, "shortcut", "set", "cmd+shift+J")
    agent = Agent(Program(program("quillo-agent"), "--home", home))
    floor = None
    try:
        tray_icon("quillo-agent")
        press("super+shift+j")
        x, y, width, height = window_rect(agent.window())
        press("super+shift+j")
        agent.wait_closed()
        floor = Program(program("bench_hotkey_window"), str(x), str(y), str(width), str(height))
        floor.expect("ready")
        done = subprocess.run([program("bench_hotkey_driver"), str(COUNT + 5), str(x + width // 2), str(y + height // 2),
                               str(AGENT_KEY), str(FLOOR_KEY)], capture_output=True, text=True)
        if done.returncode != 0:
            sys.exit(done.stderr.strip())
        # The first few warm up.
        report(done.stdout.splitlines()[10:])
    finally:
        if floor:
            floor.stop()
        agent.program.stop()
        shutil.rmtree(home, ignore_errors=True)


def main():
    if "QUILLO_DESKTOP" in os.environ:
        return inside()
    build = Path(sys.argv[1] if len(sys.argv) > 1 else ROOT / "build" / "release").resolve()
    environment = {**os.environ, "QUILLO_BIN": str(build / "bin")}
    sys.exit(subprocess.run([DESKTOP / "desktop", *sys.argv[2:], "--", sys.executable, "-B", __file__], env=environment,
                            stderr=subprocess.DEVNULL if not os.environ.get("VERBOSE") else None).returncode)


if __name__ == "__main__":
    main()
