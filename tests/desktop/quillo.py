"""Quillo's own programs on the private desktop: the agent's icon and window, quilloctl."""

import os
import plistlib
import re
import time
from pathlib import Path

from desktop import center, click, program, run, tray_icon, wait_until, window_rect

SCALE = int(os.environ.get("QT_SCALE_FACTOR", "1"))
# The frame of the entry window without the shadow around it, in points.
FRAME_WIDTH, FRAME_HEIGHT = 328, 268


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


def set_reminder_in(home, seconds):
    """A daily reminder whose first is so many seconds away; answers when that is."""
    due = int(time.time()) + seconds
    stamp = time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(due))
    for key, value in (("RemindersOpenMenuBar", "yes"), ("RemindersFrequency", "16"), ("RemindersInterval", "1"),
                       ("RemindersBaseDateTimezone", "UTC"), ("RemindersBaseDate", stamp)):
        quilloctl(home, "settings", "set", key, value)
    return due


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
        tree = run("xwininfo", "-root", "-tree")
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
