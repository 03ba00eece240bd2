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
DESKTOP = ROOT / "scripts" / "desktop"
COUNT = 100
AGENT_KEY, FLOOR_KEY = 36, 37  # J and K for the kernel

sys.path.insert(0, str(DESKTOP))


def percentile(values, share):
    ordered = sorted(values)
    return ordered[min(len(ordered) - 1, round(share * (len(ordered) - 1)))]


def report(agent, floor):
    print(f"{'milliseconds from the press':30} {'agent':>8} {'floor':>8} {'ratio':>6}")
    for index, what in enumerate(("window mapped", "first painted frame")):
        for name, value in (("median", statistics.median), ("99th percentile", lambda v: percentile(v, 0.99))):
            own, other = (1000 * value([times[index] for times in presses]) for presses in (agent, floor))
            print(f"{what + ', ' + name:37} {own:8.2f} {other:8.2f} {own / other:6.2f}".replace("     ", "", 1))
    print(f"{len(agent)} presses each")


def measure():
    """On the private desktop: [(seconds until the window was mapped, until it was painted)] of the agent and the bare
    window, which took turns."""
    from desktop import Program, press, program, tray_icon, window_rect
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
            sys.exit(f"bench_hotkey_driver failed: {done.stderr.strip()}")
        times = {AGENT_KEY: [], FLOOR_KEY: []}
        # The first few warm up.
        for line in done.stdout.splitlines()[10:]:
            code, mapped, painted = map(int, line.split())
            times[code].append((mapped / 1e6, painted / 1e6))
        return times[AGENT_KEY], times[FLOOR_KEY]
    finally:
        if floor:
            floor.stop()
        agent.program.stop()
        shutil.rmtree(home, ignore_errors=True)


def main():
    if "QUILLO_DESKTOP" in os.environ:
        return report(*measure())
    build = Path(sys.argv[1] if len(sys.argv) > 1 else ROOT / "build" / "release").resolve()
    environment = {**os.environ, "QUILLO_BIN": str(build / "bin")}
    sys.exit(subprocess.run([DESKTOP / "desktop", *sys.argv[2:], "--", sys.executable, "-B", __file__], env=environment,
                            stderr=subprocess.DEVNULL if not os.environ.get("VERBOSE") else None).returncode)


if __name__ == "__main__":
    main()
