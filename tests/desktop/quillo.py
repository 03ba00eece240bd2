"""Quillo's own programs on the private desktop: the agent's icon and window, quilloctl."""

import os
import time
from pathlib import Path

from desktop import center, click, program, run, tray_icon, wait_until, window_rect

SCALE = int(os.environ.get("QT_SCALE_FACTOR", "1"))
# The frame of the entry window without the shadow around it, in points.
FRAME_WIDTH = 328


def quilloctl(home, *words):
    return run(program("quilloctl"), "--home", str(home), *words).rstrip("\n")


def make_journal(home, name="Journal"):
    path = quilloctl(home, "journal", "create", str(Path(home) / name))
    quilloctl(home, "journal", "set", path)
    return Path(path)


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
        # Exactly the title: a menu or an alert has others.
        # All of the conditions: by default one is enough.
        found = run("xdotool", "search", "--all", "--onlyvisible", "--pid", str(self.program.pid), "--name", "^Quillo$", check=False)
        return found.split()

    def window(self):
        """The identifier of the entry window, once it is shown."""
        return wait_until(self._windows, "the entry window shown")[0]

    def is_open(self):
        return bool(self._windows())

    def wait_closed(self):
        wait_until(lambda: not self._windows(), "the entry window closed")

    def _is_active(self, identifier):
        return run("xdotool", "getactivewindow", check=False).strip() == identifier

    def open_window(self):
        """Clicks the icon and waits until the window has the keyboard; answers the rectangle of its body and arrow."""
        self.click_icon()
        identifier = self.window()
        wait_until(lambda: self._is_active(identifier), "the entry window with the keyboard")
        return self.body()

    def body(self):
        """The rectangle of the window's body and arrow. With a shadow, the arrow has to be above."""
        x, y, width, height = window_rect(self.window())
        shadow = (width - round(FRAME_WIDTH * SCALE)) // 2
        return x + shadow, y, width - 2 * shadow, height - shadow
