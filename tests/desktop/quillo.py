"""Quillo's own programs on the private desktop: the agent's icon and window, quilloctl."""

import os
import plistlib
import re
import stat
import time
from pathlib import Path

from desktop import center, click, program, run, screenshot, tray_icon, wait_until, window_rect, window_tree

SCALE = int(os.environ.get("QT_SCALE_FACTOR", "1"))
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


def set_reminder_in(home, seconds, open_window=True):
    """A daily reminder whose first is so many seconds away; answers when that is."""
    if open_window:
        quilloctl(home, "settings", "set", "RemindersOpenMenuBar", "yes")
    due = int(time.time()) + seconds
    stamp = time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(due))
    for key, value in (("RemindersFrequency", "16"), ("RemindersInterval", "1"), ("RemindersBaseDateTimezone", "UTC"),
                       ("RemindersBaseDate", stamp)):
        quilloctl(home, "settings", "set", key, value)
    return due


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
        return run("xdotool", "getactivewindow", check=False).strip() in self._windows()

    def alert_now(self):
        """The identifier of an alert that has the keyboard, or None. Its title is the entry window's."""
        active = run("xdotool", "getactivewindow", check=False).strip()
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
    def menu(self):
        """Opens the menu with the mouse; answers its rectangle."""
        self.click_icon(button=3)

        def found():
            popups = run("xdotool", "search", "--all", "--onlyvisible", "--pid", str(self.program.pid), "--class", "quillo-agent",
                         check=False)
            rects = [window_rect(identifier) for identifier in popups.split()]
            return [rect for rect in rects if rect[2] > 100 * SCALE and 100 * SCALE < rect[3] < 200 * SCALE]
        return wait_until(found, "the menu")[0]

    def choose(self, title):
        x, y, width, height = self.menu()
        keep_picture("menu")
        click(x + width // 2, y + height - round(MENU_ITEMS[title] * SCALE))
