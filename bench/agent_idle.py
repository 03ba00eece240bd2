"""Runs inside tests/desktop/desktop; see bench/agent_idle."""

import os
import shutil
import tempfile
import time
from pathlib import Path

from desktop import Program, program, tray_icon
from quillo import make_journal, quilloctl


def switches(pid):
    """{thread: (its name, its voluntary context switches)}"""
    found = {}
    for task in Path(f"/proc/{pid}/task").iterdir():
        try:
            status = (task / "status").read_text()
        except OSError:
            continue  # it has just ended
        found[int(task.name)] = (status.split()[1], int(status.split("\nvoluntary_ctxt_switches:")[1].split()[0]))
    return found


def measure(home, seconds):
    agent = Program(program("quillo-agent"), "--home", home)
    try:
        begin = time.monotonic()
        tray_icon("quillo-agent")
        # The tests that watch the tray ask the X server, which does not wake the agent.
        time.sleep(1)
        before = last = switches(agent.pid)
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            time.sleep(0.25)
            now = switches(agent.pid)
            for thread in sorted(set(last) | set(now)):
                name = now.get(thread, last.get(thread))[0]
                if thread not in now:
                    print(f"  {time.monotonic() - begin:5.1f} s after the start: thread {name} ended")
                elif thread not in last:
                    print(f"  {time.monotonic() - begin:5.1f} s after the start: thread {name} began")
                elif now[thread] != last[thread]:
                    print(f"  {time.monotonic() - begin:5.1f} s after the start: {name} woke {now[thread][1] - last[thread][1]} times")
            last = now
        return [(name, count - before[thread][1], thread == agent.pid) for thread, (name, count) in last.items() if thread in before]
    finally:
        agent.stop()


def main():
    home = tempfile.mkdtemp(prefix="quillo-idle-")
    try:
        make_journal(home)
        quilloctl(home, "reminder", "set", "--every", "1 day", "--starting", "2014-03-10T12:00", "--zone", "UTC")
        quilloctl(home, "reminder", "on")
        seconds = float(os.environ["SECONDS_IDLE"])
        for run in range(int(os.environ["RUNS"])):
            threads = measure(home, seconds)
            main_thread = next(count for _, count, is_main in threads if is_main)
            others = ", ".join(f"{name} {count}" for name, count, is_main in threads if not is_main)
            print(f"run {run + 1}: main thread {main_thread} wake-ups in {seconds:.0f} s; other threads: {others}", flush=True)
    finally:
        shutil.rmtree(home, ignore_errors=True)


if __name__ == "__main__":
    main()
