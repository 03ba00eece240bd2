"""What desktop tests do: start programs, look at windows, press buttons and keys. Runs inside scripts/desktop/desktop.

Every wait is for a condition and ends with a failure that says what did not happen.
"""

import os
import re
import signal
import subprocess
import threading
import time
import unittest

WAIT_SECONDS = 30


PACKAGES = {"xdotool": "xdotool", "xwininfo": "x11-utils", "import": "imagemagick", "gdbus": "libglib2.0-bin",
            "xterm": "xterm", "setxkbmap": "x11-xkb-utils", "xmodmap": "x11-xserver-utils", "xset": "x11-xserver-utils"}


def run(*command, check=True):
    """The output of a short command."""
    try:
        done = subprocess.run(command, capture_output=True, text=True, timeout=30)
    except FileNotFoundError:
        package = PACKAGES.get(command[0], "that has it")
        raise AssertionError(f"{command[0]} is missing, install the package {package}") from None
    if check and done.returncode != 0:
        raise AssertionError(f"{' '.join(command)} failed ({done.returncode}): {done.stderr.strip()}")
    return done.stdout


def wait_until(condition, what, seconds=WAIT_SECONDS, interval=0.01):
    """The first true answer of condition()."""
    end = time.monotonic() + seconds
    while True:
        answer = condition()
        if answer:
            return answer
        if time.monotonic() > end:
            raise AssertionError(f"after {seconds} s still not: {what}")
        time.sleep(interval)


def program(name):
    """The path of a program of the build under test."""
    return os.path.join(os.environ["QUILLO_BIN"], name)


class Program:
    """A running program whose standard output is read a line at a time."""

    def __init__(self, *command, **environment):
        self._lines = []
        self._taken = 0
        self._changed = threading.Condition()
        self._process = subprocess.Popen(
            command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True, env={**os.environ, **environment})
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

    def _read(self):
        for line in self._process.stdout:
            with self._changed:
                self._lines.append(line.rstrip("\n"))
                self._changed.notify_all()

    @property
    def pid(self):
        return self._process.pid

    @property
    def is_running(self):
        return self._process.poll() is None

    @property
    def unread(self):
        """The lines that no expect() has passed yet."""
        with self._changed:
            return self._lines[self._taken:]

    def send(self, line):
        self._process.stdin.write(line + "\n")
        self._process.stdin.flush()

    def expect(self, pattern, seconds=WAIT_SECONDS):
        """The match of the next line that matches wholly. Lines before it are passed over."""
        end = time.monotonic() + seconds
        with self._changed:
            while True:
                for index in range(self._taken, len(self._lines)):
                    match = re.fullmatch(pattern, self._lines[index])
                    if match:
                        self._taken = index + 1
                        return match
                if not self._changed.wait(end - time.monotonic()):
                    raise AssertionError(f"no line '{pattern}' after {seconds} s, but {self._lines[self._taken:]}")

    def ask(self, line, pattern):
        """Sends a line and answers the match of the line that replies."""
        self.send(line)
        return self.expect(pattern)

    def wait(self, seconds=WAIT_SECONDS):
        """The exit code."""
        code = self._process.wait(seconds)
        self._reader.join(seconds)
        return code

    def stop(self):
        if self.is_running:
            self._process.terminate()
            try:
                self._process.wait(3)
            except subprocess.TimeoutExpired:
                self._process.kill()
                self._process.wait()
        self._reader.join(3)
        self._process.stdin.close()
        self._process.stdout.close()


class DesktopTestCase(unittest.TestCase):
    """Ends the programs that a test has started."""

    def start(self, *command, **environment):
        started = Program(*command, **environment)
        self.addCleanup(started.stop)
        return started

    def start_probe(self, *words, command=None, **environment):
        """The program of platform services; some do not work before a command."""
        probe = self.start(program("desktop_probe"), *words, **environment)
        probe.expect("ready")
        if command:
            probe.send(command)
        return probe

    def start_tray_icon(self):
        """The probe with an icon that has come into the tray."""
        probe = self.start_probe(command="tray")
        probe.expect(r"moved \d.*")
        return probe


# Windows and pixels. Rectangles are (x, y, width, height) in pixels of the screen.


def window_tree():
    # It walks the windows one by one, and fails half-way when one goes meanwhile.
    for _ in range(20):
        try:
            return run("xwininfo", "-root", "-tree")
        except AssertionError as failure:
            reason = failure
    raise reason


def tray_icons(program_name="desktop_probe"):
    """The icons of a program in the tray, from left to right. An icon that no tray has taken stands at 0,0."""
    form = re.compile(
        rf'^ *0x[0-9a-f]+ "{re.escape(program_name)}": \("[^"]*" "[^"]*"\) +(\d+)x(\d+)\+-?\d+\+-?\d+ +\+(-?\d+)\+(-?\d+)$')
    found = []
    for line in window_tree().splitlines():
        match = form.match(line)
        if match and 16 <= int(match[1]) <= 64 and 16 <= int(match[2]) <= 64 and (match[3], match[4]) != ("0", "0"):
            found.append((int(match[3]), int(match[4]), int(match[1]), int(match[2])))
    return sorted(found)


def tray_icon(program_name="desktop_probe"):
    """The leftmost icon of a program, as soon as it keeps its place: trays show an icon first and then move it."""
    looks = []

    def settled():
        looks.append(tray_icons(program_name))
        return len(looks) > 5 and looks[-1] and all(look == looks[-1] for look in looks[-6:])

    wait_until(settled, f"{program_name} at a place in the tray", interval=0.03)
    return looks[-1][0]


def windows_named(name, search_by="--name"):
    """The X identifiers of all that are shown and whose title (or class) matches a regular expression."""
    return run("xdotool", "search", "--onlyvisible", search_by, name, check=False).split()


def window(name=None, window_class=None):
    """The first of them, once there is one."""
    what = (name, "--name") if name else (window_class, "--class")
    return wait_until(lambda: windows_named(*what), f"a window {what}")[0]


def active_window():
    return run("xdotool", "getactivewindow", check=False).strip()


def wait_active(identifier):
    wait_until(lambda: active_window() == identifier, "the window with the keyboard")


def window_rect(identifier):
    info = run("xwininfo", "-id", identifier)

    def number(label):
        return int(re.search(rf"{label}: +(-?\d+)", info)[1])

    return (number("Absolute upper-left X"), number("Absolute upper-left Y"), number("Width"), number("Height"))


def screenshot(path):
    """Once the screen stands still, but for a cursor that blinks."""
    before = None
    for _ in range(10):
        run("import", "-silent", "-window", "root", str(path))
        with open(path, "rb") as file:
            now = file.read()
        if now == before:
            return
        before = now
        time.sleep(0.1)


def pixels(x, y, width, height):
    """(red, green, blue) of each, 0 to 255, line by line."""
    command = ["import", "-silent", "-window", "root", "-crop", f"{width}x{height}+{x}+{y}", "-depth", "8", "rgb:-"]
    raw = subprocess.run(command, capture_output=True, check=True, timeout=30).stdout
    return list(zip(raw[::3], raw[1::3], raw[2::3]))


def pixel(x, y):
    return pixels(x, y, 1, 1)[0]


# Mouse and keyboard.


def center(rect):
    return rect[0] + rect[2] // 2, rect[1] + rect[3] // 2


def click(x, y, button=1, times=1):
    """Presses and releases; several times fast enough for a double click."""
    run("xdotool", "mousemove", str(x), str(y), "click", "--repeat", str(times), "--delay", "60", str(button))


def type_text(text):
    run("xdotool", "type", "--delay", "8", text)


def press(*keys):
    run("xdotool", "key", *keys)


# The desktop's own parts.


def _pid_file(part):
    return os.path.join(os.environ["QUILLO_DESKTOP"], part + ".pid")


def stop_part(part):
    """Ends "tray", "bus" or "notifications", and waits until it is gone."""
    wait_until(lambda: os.path.exists(_pid_file(part)), f"the {part} started")
    with open(_pid_file(part)) as file:
        pid = int(file.read())
    os.kill(pid, signal.SIGTERM)
    wait_until(lambda: not _is_alive(pid), f"the {part} gone")
    os.remove(_pid_file(part))


def _is_alive(pid):
    try:
        with open(f"/proc/{pid}/stat") as file:
            # One that has ended and not been waited for is still listed.
            return file.read().rpartition(")")[2].split()[0] != "Z"
    except OSError:
        return False


def start_part(part):
    """Starts "tray", "bus" or "notifications" again, without waiting until it works. It ends with the desktop."""
    directory = os.environ["QUILLO_DESKTOP"]
    # Through a shell that leaves at once, so that it is no child of the test, which would have to wait for it.
    subprocess.run(["sh", "-c", 'setsid "$1" >>"$2" 2>&1 </dev/null &', "sh", os.path.join(directory, part),
                    os.path.join(directory, "log", part + "-again.log")], check=True, timeout=30)
