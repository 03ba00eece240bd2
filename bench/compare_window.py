"""The journal's window in a large journal, beside a bare window with a list of twenty rows."""

import os
import signal
import subprocess
import time
from pathlib import Path

from compare_programs import proportional_size
from compare_table import duration, mebibytes
from desktop import program, wait_until
from quillo import quilloctl

ENTRIES = 100_000
MOST_MEMORY = 120 * 2**20
# Shares of the window's width between which both have their list.
LIST = ("20", "50")
LONGEST_WAIT = 300  # seconds


def first_frame(*command):
    """(process, seconds from the start until the list shows text)"""
    done = subprocess.run([program("bench_first_frame"), *LIST, *command], capture_output=True, text=True)
    process, _, painted = map(int, done.stdout.split())
    if painted < 0:
        raise AssertionError(f"{command[0]} shows no list")
    return process, painted / 1e6


def stop(process):
    """It is not a child of ours, as what started it has ended."""
    os.kill(process, signal.SIGTERM)
    wait_until(lambda: not Path(f"/proc/{process}").exists(), "the window's program gone")


def settled_size(process):
    """Once all files have been compared: nothing has changed for two seconds."""
    seen, since, end = None, time.monotonic(), time.monotonic() + LONGEST_WAIT
    while time.monotonic() < end:
        used = Path(f"/proc/{process}/schedstat").read_text(), proportional_size([process])
        if used != seen:
            seen, since = used, time.monotonic()
        elif time.monotonic() - since > 2:
            break
        time.sleep(0.2)
    return seen[1]


def measure(table, scratch, runs):
    if not os.path.exists(program("bench_first_frame")):
        table.note("The window is left out: bench_first_frame is not built.")
        return
    folder = scratch / "window"
    home = folder / "home"
    home.mkdir(parents=True)
    table.progress(f"window: making a journal of {ENTRIES} entries")
    subprocess.run([program("bench_JournalIndexBench"), "make", str(folder), str(ENTRIES)], check=True, capture_output=True)
    quilloctl(home, "journal", "set", str(folder / "Sample.quillojournal"))
    table.progress("window: making its index")
    subprocess.run([program("quilloctl"), "--home", str(home), "entry", "search", "nothing"], check=True, capture_output=True)
    ours, bare, size = [], [], []
    for run in range(-1, runs):
        table.progress(f"window: run {run + 1} of {runs}" if run >= 0 else "window: warming up")
        for times, command in ((ours, [program("quillo"), "--home", str(home)]), (bare, [program("bench_bare_list_window")])):
            process, painted = first_frame(*command)
            try:
                if run >= 0:
                    times.append(painted)
                if run == 0 and times is ours:
                    size.append(settled_size(process))
            finally:
                stop(process)
    table.add(f"start to the newest of {ENTRIES} entries, against a bare list", ours, bare, duration, ("<=", 2))
    table.add(f"memory with {ENTRIES} entries (PSS), against the most allowed", size, [MOST_MEMORY], mebibytes, ("<", 1))
    table.progress("window: searching and scrolling")
    done = subprocess.run([program("bench_JournalWindowBench"), str(folder)], capture_output=True, text=True)
    for line in done.stdout.splitlines():
        table.note(f"window: {line.strip()}")
