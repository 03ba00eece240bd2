"""Quillo's own programs on the private desktop: the agent's icon and window, quilloctl."""

import json
import os
import plistlib
import re
import shutil
import signal
import stat
import tempfile
import time
from pathlib import Path

from desktop import (DesktopTestCase, active_window, center, click, press, program, run, screenshot, tray_icon, wait_active,
                     wait_until, window, window_rect, window_tree, windows_named)

SCALE = int(os.environ.get("QT_SCALE_FACTOR", "1"))
# The shared settings, below the home.
LIST = "Library/Group Containers/Q7R2KX9M4P.quilloapp/Data/Preferences/quillo.plist"
# The frame of the entry window without the shadow around it, in points.
FRAME_WIDTH, FRAME_HEIGHT = 328, 268
# Where the middles of the menu's items are, in points from its lower edge.
MENU_ITEMS = {"Quit Quillo": 10, "About Quillo": 34, "Preferences...": 58, "Disable Reminders": 82}


def quilloctl(home, *words):
    return run(program("quilloctl"), "--home", str(home), *words).rstrip("\n")


def make_journal(home, name="Journal"):
    path = quilloctl(home, "journal", "create", str(Path(home) / name))
    quilloctl(home, "journal", "set", path)
    return Path(path)


def set_own_defaults(home, **values):
    """Settings of the agent's own; it reads them when it starts."""
    path = Path(home) / ".config/quillo/com.quilloapp.quillo-agent.plist"
    path.parent.mkdir(parents=True, exist_ok=True)
    known = plistlib.loads(path.read_bytes()) if path.exists() else {}
    path.write_bytes(plistlib.dumps({**known, **values}))


def set_reminder_in(home, seconds, open_window=True, frequency="16"):
    """A reminder, daily by default, whose first is so many seconds away; answers when that is. A machine on which the
    setting takes longer than that gets a later one."""
    if open_window:
        quilloctl(home, "settings", "set", "RemindersOpenMenuBar", "yes")
    for key, value in (("RemindersFrequency", frequency), ("RemindersInterval", "1"), ("RemindersBaseDateTimezone", "UTC")):
        quilloctl(home, "settings", "set", key, value)
    while True:
        due = int(time.time()) + seconds
        stamp = time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(due))
        quilloctl(home, "settings", "set", "RemindersBaseDate", stamp)
        if time.time() < due - 0.5:
            return due
        seconds *= 2


def keep_picture(name):
    """Where somebody wants to look at what a test saw."""
    directory = os.environ.get("QUILLO_PICTURES")
    if directory:
        screenshot(Path(directory) / f"{name}.png")


def install_handler(home, name="com.example.main", mime_type="x-scheme-handler/quillo;"):
    """A program of that home that opens that kind of URL and writes what it was given into a file; answers the file."""
    written = home / (name + ".arguments")
    script = home / (name + ".sh")
    script.write_text(f'#!/bin/sh\nprintf "%s\\n" "$@" >"{written}.new"\nmv "{written}.new" "{written}"\n')
    script.chmod(stat.S_IRWXU)
    launcher = home / ".local/share/applications" / (name + ".desktop")
    launcher.parent.mkdir(parents=True, exist_ok=True)
    launcher.write_text(f'[Desktop Entry]\nType=Application\nName={name}\nExec="{script}" %u\nMimeType={mime_type}\n')
    return written


def install_editor(home, script):
    """A program for VISUAL that does this with the file that it is given."""
    editor = home / "notes"
    editor.write_text("#!/bin/sh\n" + script)
    editor.chmod(stat.S_IRWXU)
    return f'"{editor}"'


def displayed():
    """How many notifications are shown."""
    return int(run("dunstctl", "count", "displayed"))


def wait_notification_server():
    wait_until(lambda: run("dunstctl", "count", check=False), "the notification server")


class Agent:
    """A running agent, started by the caller."""

    def __init__(self, started):
        self.program = started

    def click_icon(self, button=1, times=1):
        click(*center(tray_icon("quillo-agent")), button=button, times=times)

    def _windows(self):
        # Exactly the title: a menu has another. All of the conditions: by default one is enough.
        found = run("xdotool", "search", "--all", "--onlyvisible", "--pid", str(self.program.pid), "--name", "^Quillo$", check=False)
        return found.split()

    def window(self):
        """The identifier of the entry window, once it is shown."""
        return wait_until(self._windows, "the entry window shown")[0]

    def is_open(self):
        return bool(self._windows())

    def wait_closed(self):
        wait_until(lambda: not self._windows(), "the entry window closed")

    def is_active(self):
        return active_window() in self._windows()

    def alert_now(self):
        """The identifier of an alert that has the keyboard, or None. Its title is the entry window's."""
        active = active_window()
        if active not in self._windows():
            return None
        return active if window_rect(active)[3] < FRAME_HEIGHT * SCALE else None

    def alert(self):
        return wait_until(self.alert_now, "an alert")

    def menu_is_open(self):
        # Menus have the program's name for a title, and so have some windows of a few pixels.
        tree = window_tree()
        return bool(re.search(r'"quillo-agent": \("quillo-agent" "quillo-agent"\) +\d{3,}x\d{2,}', tree))

    def body(self):
        """The rectangle of the window's body and arrow. With a shadow, the arrow has to be above."""
        x, y, width, height = window_rect(self.window())
        shadow = (width - round(FRAME_WIDTH * SCALE)) // 2
        return x + shadow, y, width - 2 * shadow, height - shadow

    def push(self, control):
        """Clicks on a control, given in points from the frame's top left."""
        x, y, _, _ = self.body()
        click(round(x + control[0] * SCALE), round(y + control[1] * SCALE))

    def open_window(self):
        """Clicks the icon and waits until the window has the keyboard; answers its body."""
        self.click_icon()
        self.window()
        wait_until(self.is_active, "the entry window with the keyboard")
        return self.body()

    def shown(self):
        """All of its windows that are shown, the icon in the tray too."""
        return run("xdotool", "search", "--all", "--onlyvisible", "--pid", str(self.program.pid), "--class", "quillo-agent",
                   check=False).split()

    def menus(self):
        """The rectangle of the icon's menu, while it is shown."""
        return [rect for rect in map(window_rect, self.shown())
                if rect[2] > 100 * SCALE and 100 * SCALE < rect[3] < 200 * SCALE]

    def choose(self, title):
        self.click_icon(button=3)
        x, y, width, height = wait_until(self.menus, "the menu")[0]
        keep_picture("menu")
        click(x + width // 2, y + height - round(MENU_ITEMS[title] * SCALE))


class FoundProgram:
    """A process that another program has started, by its identifier."""

    def __init__(self, pid):
        self.pid = pid

    @property
    def is_running(self):
        try:
            return Path(f"/proc/{self.pid}/stat").read_text().rpartition(")")[2].split()[0] != "Z"
        except FileNotFoundError:
            return False

    def stop(self):
        if self.is_running:
            os.kill(self.pid, signal.SIGTERM)
        wait_until(lambda: not self.is_running, "the end of the process")


def agent_of(home):
    """The agent that somebody has started for that home, once it answers."""
    running = wait_until(lambda: json.loads(quilloctl(home, "--json", "agent", "status"))["running"], "the agent")
    return Agent(FoundProgram(running[-1]))


def walk_through_first_start(picture=None):
    """Takes in the window of the first start, which is to come, what it proposes."""
    first_start = window("^Welcome to Quillo$")
    run("xdotool", "windowactivate", "--sync", first_start)
    wait_active(first_start)
    if picture:
        time.sleep(0.5)
        screenshot(picture)
    # The journal, the reminders, the key.
    press("Return", "Return", "Return")
    wait_until(lambda: not windows_named("^Welcome to Quillo$"), "the end of the first start", seconds=30)


class AgentTestCase(DesktopTestCase):
    """A home with a journal, and agents that use it."""

    def setUp(self):
        # A home that a person could have: a space, and letters beyond ASCII.
        self.home = Path(tempfile.mkdtemp(prefix="home ü "))
        self.addCleanup(shutil.rmtree, self.home, ignore_errors=True)
        self.journal = make_journal(self.home)

    def ctl(self, *words):
        return quilloctl(self.home, *words)

    def start_agent(self, **environment):
        return Agent(self.start(program("quillo-agent"), "--home", str(self.home), **environment))

    def start_shown_agent(self, **environment):
        """An agent whose icon is in the tray."""
        agent = self.start_agent(**environment)
        tray_icon("quillo-agent")
        return agent

    def entries(self, journal=None):
        files = ((journal or self.journal) / "Entries").glob("*.plist")
        return sorted((plistlib.loads(file.read_bytes()) for file in files), key=lambda entry: entry["text"])

    def texts(self, journal=None):
        return [entry["text"] for entry in self.entries(journal)]

    def log(self):
        return "".join(file.read_text() for file in sorted(self.home.rglob("*.log")))

    def shortcut_problems(self):
        return [line.split("] ", 1)[1] for line in self.log().splitlines() if "shortcut" in line]
