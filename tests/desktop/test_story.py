"""A day with the product, all of it real: installed, set up from a terminal, a reminder that is answered, and the end."""

import json
import os
import subprocess
import time
from pathlib import Path
from types import SimpleNamespace

from desktop import pixel, press, program, tray_icon, type_text, wait_active, wait_until, window
from quillo import Agent, AgentTestCase, displayed, install_editor, keep_picture, wait_notification_server
from sound import Recording

# The middle of the snooze button that a minute's rule has, in points from the frame's top left.
SNOOZE = (274, 75)


def install(root):
    """Puts the program below `root` as a package would: from the package QUILLO_DEB, else from the build under test."""
    package = os.environ.get("QUILLO_DEB")
    if package:
        subprocess.run(["dpkg-deb", "-x", package, str(root)], check=True, timeout=60)
    else:
        build = Path(os.environ["QUILLO_BIN"]).parent
        subprocess.run(["cmake", "--install", str(build), "--prefix", "/usr"], check=True, timeout=60, capture_output=True,
                       env={**os.environ, "DESTDIR": str(root)})


def icon_is_red():
    x, y, width, height = tray_icon("quillo-agent")
    colours = [pixel(x + dx, y + dy) for dx in range(3, width, 4) for dy in range(3, height, 4)]
    return any(red > 120 and red > 2 * green and red > 2 * blue for red, green, blue in colours)


class Story(AgentTestCase):
    def setUp(self):
        super().setUp()
        self.root = self.home / "root"
        install(self.root)
        before = dict(os.environ)
        self.addCleanup(lambda: (os.environ.clear(), os.environ.update(before)))
        os.environ["QUILLO_BIN"] = str(self.root / "usr/bin")
        os.environ["PATH"] = os.environ["QUILLO_BIN"] + ":" + os.environ["PATH"]
        os.environ["XDG_DATA_DIRS"] = f"{self.root}/usr/share:/usr/share"

    def agent_status(self):
        return json.loads(self.ctl("--json", "agent", "status"))

    def test_from_the_installation_to_quit(self):
        for key in ("RemindersPlaySound", "RemindersOpenMenuBar", "RemindersSendToNotificationCenter"):
            self.ctl("settings", "set", key, "yes")
        self.ctl("reminder", "set", "--every", "minute")
        self.ctl("shortcut", "set", "cmd+shift+J")
        self.assertEqual(self.agent_status(), {"enabled": False, "loginItem": False, "running": []})

        self.ctl("agent", "enable")
        wait_until(lambda: len(self.agent_status()["running"]) == 1, "the agent started")
        status = self.agent_status()
        self.addCleanup(lambda: [self.ctl("agent", "disable")] if self.agent_status()["running"] else None)
        self.assertTrue(status["enabled"] and status["loginItem"])
        entry = (self.home / ".config/autostart/com.quilloapp.quillo-agent.desktop").read_text()
        self.assertIn(str(self.root / "usr/bin/quillo-agent"), entry)
        agent = Agent(SimpleNamespace(pid=status["running"][0]))
        tray_icon("quillo-agent")
        wait_until(lambda: not icon_is_red(), "the icon as it is at rest")
        wait_notification_server()

        # On the next full minute.
        recording = Recording()
        wait_until(agent.is_open, "the reminder", seconds=70)
        wait_until(lambda: displayed() == 1, "the notification")
        wait_until(icon_is_red, "the icon red")
        keep_picture("story-reminder")
        time.sleep(2)
        bursts = recording.stop()
        self.assertEqual(len(bursts), 1, bursts)

        # Not now; the icon is as before.
        agent.push(SNOOZE)
        agent.wait_closed()
        wait_until(lambda: not icon_is_red(), "the icon as before")
        self.assertEqual(self.ctl("entry", "list"), "")

        press("super+shift+j")
        wait_active(agent.window())
        type_text("A line a minute #story")
        press("ctrl+Return")
        agent.wait_closed()
        entries = self.ctl("entry", "list").splitlines()
        self.assertEqual(len(entries), 1)
        self.assertTrue(entries[0].endswith("A line a minute #story"), entries)
        self.ctl("reminder", "off")

        agent.choose("About Quillo")
        wait_active(window("^About Quillo$"))
        keep_picture("story-about")
        press("Escape")

        # The main application edits the entry; Quit ends both, and what was written is kept.
        editor = install_editor(
            self.home, 'trap "exit 0" TERM\nprintf " and one more" >>"$1"\n: >"$1.open"\nwhile :; do sleep 0.05; done\n')
        uuid = entries[0].split()[0]
        main_application = self.start(program("quilloctl"), "--home", str(self.home), "open-url",
                                      f"quillo://edit?entryId={uuid}", VISUAL=editor)
        drafts = self.home / ".local/state/quillo/drafts"
        wait_until(lambda: list(drafts.glob("*.open")), "the editor open")
        agent.choose("Quit Quillo")
        self.assertEqual(main_application.wait(), 0)
        wait_until(lambda: not self.agent_status()["running"], "the agent ended")
        self.assertIn("A line a minute #story and one more", self.ctl("entry", "show", uuid))
        self.assertEqual(list(drafts.glob("*.txt")), [])
