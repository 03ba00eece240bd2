"""The agent beside other programs with an icon in the tray: start, memory, idle wake-ups, hot key."""

import os
import shutil
import time
from pathlib import Path

import hotkey_latency
from compare_table import duration, mebibytes
from desktop import Program, program, wait_until
from quillo import make_journal, set_reminder_in

OURS, FLOOR = "quillo-agent", "bare icon"
LONGEST_START = 20  # seconds
QUIET = 0.5  # seconds without use of the processor after which a program counts as idle
LOOK = 0.005


class Contender:
    """A program with an icon, in a home of its own."""

    def __init__(self, name, command, home):
        self.name = name
        self._command = command
        self._home = home
        self.program = None
        self.begin = 0

    def start(self):
        home = str(self._home)
        environment = {"HOME": home, "XDG_CONFIG_HOME": home + "/.config", "XDG_DATA_HOME": home + "/.local/share",
                       "XDG_CACHE_HOME": home + "/.cache", "XDG_STATE_HOME": home + "/.local/state"}
        self.begin = time.monotonic()
        self.program = Program(*self._command, **environment)

    def stop(self):
        self.program.stop()
        # Helpers that it has started end on their own, a moment later.
        wait_until(lambda: not Path(f"/proc/{self.program.pid}").exists(), f"{self.name} gone")

    def processes(self):
        """Itself and its descendants, which do its work too."""
        parents = {}
        for directory in Path("/proc").glob("[0-9]*"):
            try:
                parents[int(directory.name)] = int((directory / "stat").read_text().rpartition(")")[2].split()[1])
            except OSError:
                continue  # it has just ended
        found = [self.program.pid]
        for process in found:  # grows; a process has one parent, so each is added once
            found += [child for child, parent in parents.items() if parent == process]
        return found


def read(path):
    """Nothing where the process has just ended."""
    try:
        return Path(path).read_text()
    except OSError:
        return ""


def tasks(processes):
    return [task for process in processes for task in Path(f"/proc/{process}/task").glob("*")]


def processor_time(processes):
    """Nanoseconds that all threads have run."""
    return sum(int((read(task / "schedstat") or "0").split()[0]) for task in tasks(processes))


def main_thread_is_blocked(pid):
    return read(f"/proc/{pid}/stat").rpartition(")")[2].split()[:1] == ["S"]


def proportional_size(processes):
    size = 0
    for process in processes:
        for line in read(f"/proc/{process}/smaps_rollup").splitlines():
            if line.startswith("Pss:"):
                size += int(line.split()[1]) * 1024
    return size


def switches(processes):
    """{thread: (its name, its voluntary context switches)}"""
    found = {}
    for task in tasks(processes):
        status = read(task / "status")
        if "\nvoluntary_ctxt_switches:" in status:
            found[task.name] = (status.split("\n")[0].partition("\t")[2],
                                int(status.split("\nvoluntary_ctxt_switches:")[1].split()[0]))
    return found


def wait_idle(contender):
    """When it came to rest: the first look that found its main thread blocked and after which, for QUIET seconds, none of
    its threads ran at all. The kernel counts nanoseconds, so that nothing is too short to be seen."""
    end = time.monotonic() + LONGEST_START
    last = since = None
    processes, listed = contender.processes(), time.monotonic()
    while time.monotonic() < end:
        now = time.monotonic()
        if now - listed > 0.1:  # going through all processes of the machine takes a while
            processes, listed = contender.processes(), now
        used = processor_time(processes)
        if used != last or not main_thread_is_blocked(contender.program.pid):
            last, since = used, now
        elif now - since >= QUIET:
            return since
        time.sleep(LOOK)
    raise AssertionError(f"{contender.name} is not idle after {LONGEST_START} s")


def wait_icon(contender, watch):
    """When the tray took its icon in."""
    while True:  # ends: expect() fails once nothing came for LONGEST_START, and nobody else shows icons here
        try:
            taken = watch.expect(r"(\d+) (\d+)", LONGEST_START)
        except AssertionError:
            raise AssertionError(f"{contender.name} has no icon in the tray after {LONGEST_START} s") from None
        if int(taken[1]) in contender.processes():
            return int(taken[2]) / 1e9


def available(scratch, table):
    """All that can be started here, ours first, then the floor."""
    found = []
    for name, command, prepare in ((OURS, [program("quillo-agent"), "--home", str(scratch / OURS)], prepare_agent),
                                   (FLOOR, [program("bench_bare_tray_icon")], None),
                                   ("CopyQ", ["copyq"], None), ("KeePassXC", ["keepassxc"], prepare_keepassxc)):
        if not shutil.which(command[0]):
            table.note(f"{name} is left out: it is not installed.")
            continue
        home = scratch / name.replace(" ", "-")
        (home / ".config").mkdir(parents=True)
        if prepare:
            prepare(home)
        found.append(Contender(name, command, home))
    return found


def prepare_agent(home):
    """A journal and an alarm that is armed. By its settings, as switching reminders on would start an agent by itself."""
    make_journal(home)
    set_reminder_in(home, 24 * 3600, open_window=False)


def prepare_keepassxc(home):
    settings = home / ".config" / "keepassxc" / "keepassxc.ini"
    settings.parent.mkdir(parents=True)
    settings.write_text("[General]\nUpdateCheckMessageShown=true\n\n[GUI]\nCheckForUpdates=false\nShowTrayIcon=true\n"
                        "MinimizeOnStartup=true\nMinimizeToTray=true\n")


def starts(table, programs, runs):
    icon, idle, size = ({contender.name: [] for contender in programs} for _ in range(3))
    watch = Program(program("bench_tray_watch"))
    try:
        watch.expect("ready")
        for run in range(-1, runs):  # the first warms up: files come into memory, programs make their settings
            table.progress(f"start: run {run + 1} of {runs}" if run >= 0 else "start: warming up")
            for contender in programs:
                contender.start()
                try:
                    shown = wait_icon(contender, watch)
                    rest = wait_idle(contender)
                    if run >= 0:
                        icon[contender.name].append(shown - contender.begin)
                        idle[contender.name].append(rest - contender.begin)
                        size[contender.name].append(proportional_size(contender.processes()))
                finally:
                    contender.stop()
    finally:
        watch.stop()
    table.note("PSS shares the pages of libraries among all that have them loaded: other Qt programs make it less.")
    for values, what, form, goal in ((icon, "start to icon in the tray", duration, 1.25),
                                     (idle, "start to idle", duration, 1.25),
                                     (size, "memory when idle (PSS)", mebibytes, 1.3)):
        for contender in programs[1:]:
            table.add(f"{what}, against {contender.name}", values[OURS], values[contender.name], form,
                      ("<=", goal) if contender.name == FLOOR else ("<", 1))


def idle(table, programs, seconds):
    woken = {}
    for contender in programs:
        table.progress(f"idle: {contender.name}, {seconds:.0f} s")
        contender.start()
        try:
            wait_idle(contender)
            time.sleep(1)
            before = switches(contender.processes())
            time.sleep(seconds)
            after = switches(contender.processes())
            woken[contender.name] = {}
            for thread, (name, count) in after.items():
                count -= before.get(thread, (name, 0))[1]
                if count:
                    woken[contender.name][name] = woken[contender.name].get(name, 0) + count
        finally:
            contender.stop()
    for contender in programs[1:]:
        table.add_counts(f"wake-ups in {seconds:.0f} idle seconds, against {contender.name}",
                         sum(woken[OURS].values()), sum(woken[contender.name].values()))
    for thread, count in woken[OURS].items():
        table.note(f"The agent's idle thread {thread} woke {count} times.")


def hot_key(table):
    if not os.path.exists(program("bench_hotkey_driver")):
        table.note("The hot key is left out: bench_hotkey_driver is not built.")
        return
    table.progress("hotkey")
    agent, floor = hotkey_latency.measure()
    table.add("hot key to first frame, against a bare window", [painted for _, painted in agent],
              [painted for _, painted in floor], duration)
