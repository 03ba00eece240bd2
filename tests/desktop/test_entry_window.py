"""The entry window by mouse and keyboard: its buttons, reminders, clicks elsewhere, and text that outlives a kill."""

import os
import plistlib
import shutil
import signal
import tempfile
import time
import unittest
from pathlib import Path

from desktop import (DesktopTestCase, click, press, program, run, tray_icon, type_text, wait_until)
from quillo import Agent, make_journal, quilloctl

DRAFT = ".cache/quillo/UnsavedEntry.plist"
# Centres of the controls, in points from the frame's top left.
SAVE, SETTINGS, CLOSE = (269, 232), (277, 32), (306, 32)
SNOOZE_2, TEXT, RECONNECT = (274, 75), (160, 150), (164, 232)


class EntryWindowTest(DesktopTestCase):
    def setUp(self):
        self.home = Path(tempfile.mkdtemp(prefix="home ü "))
        self.addCleanup(shutil.rmtree, self.home, ignore_errors=True)
        self.journal = make_journal(self.home)
        quilloctl(self.home, "settings", "set", "AddLocationAutomatically", "no")

    def agent(self):
        return Agent(self.start(program("quillo-agent"), "--home", str(self.home)))

    def entries(self):
        return [plistlib.loads(p.read_bytes()) for p in sorted((self.journal / "Entries").glob("*.plist"))]

    def texts(self):
        return [entry["text"] for entry in self.entries()]

    def remind(self, unit):
        """Reminders by that calendar unit, the first of them now."""
        stamp = time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(time.time() + 2))
        for key, value in (("RemindersOpenMenuBar", "yes"), ("RemindersFrequency", unit), ("RemindersInterval", "1"),
                           ("RemindersBaseDateTimezone", "UTC"), ("RemindersBaseDate", stamp)):
            quilloctl(self.home, "settings", "set", key, str(value))
        quilloctl(self.home, "reminder", "on")

    def test_one_entry_from_first_word_to_save(self):
        agent = self.agent()
        agent.open_window()
        type_text("Walked home #evening")
        agent.push(CLOSE)
        agent.wait_closed()
        agent.open_window()
        press("ctrl+End")
        type_text(" slowly")
        agent.push(SAVE)
        agent.wait_closed()
        self.assertEqual([(e["text"], e["tags"]) for e in self.entries()], [("Walked home #evening slowly", ["evening"])])
        first = self.entries()[0]["uuid"]

        # Emptied and closed, an entry is gone; the next text is another.
        agent.open_window()
        type_text("a mistake")
        agent.click_icon()
        agent.wait_closed()
        self.assertEqual(len(self.entries()), 2)
        mistake = next(e["uuid"] for e in self.entries() if e["uuid"] != first)
        agent.open_window()
        press("ctrl+a", "Delete")
        agent.click_icon()
        agent.wait_closed()
        self.assertEqual([e["uuid"] for e in self.entries()], [first])
        quilloctl(self.home, "settings", "set", "ShouldAddHashtags", "2")
        agent.open_window()
        type_text("no #tag")
        press("ctrl+Return")
        agent.wait_closed()
        last = next(e for e in self.entries() if e["uuid"] != first)
        self.assertNotEqual(last["uuid"], mistake)
        self.assertEqual((last["text"], last.get("tags", [])), ("no #tag", []))

    def test_a_journal_that_is_unplugged_and_comes_back(self):
        agent = self.agent()
        agent.open_window()
        type_text("kept through it all")
        away = self.journal.with_name("away")
        self.journal.rename(away)
        agent.push(SAVE)
        # Once from the button and once from the close.
        for _ in range(2):
            alert = agent.alert()
            press("Return")
            wait_until(lambda: agent.alert_now() != alert, "the alert answered")
        agent.wait_closed()
        self.assertTrue((self.home / DRAFT).exists())

        agent.click_icon()
        agent.window()
        agent.push(RECONNECT)
        panel = wait_until(lambda: run("xdotool", "search", "--onlyvisible", "--name", "^Choose Quillo Journal Location$",
                                       check=False).split(), "the panel")[0]
        away.rename(self.journal)
        run("xdotool", "windowactivate", "--sync", panel)
        # It stands at the configured place.
        press("Return")
        wait_until(lambda: not run("xdotool", "search", "--onlyvisible", "--name", "^Choose Quillo", check=False).split(),
                   "the panel closed")
        press("ctrl+Return")
        agent.wait_closed()
        self.assertEqual(self.texts(), ["kept through it all"])
        self.assertFalse((self.home / DRAFT).exists())

    def test_clicks_elsewhere_and_on_what_is_the_agents_own(self):
        agent = self.agent()
        agent.open_window()
        type_text("dismissed")
        x, y, width, height = agent.body()
        # Another button, the window itself and its menu are no reasons to go.
        click(20, y + height + 100, button=2)
        agent.push(TEXT)
        agent.push(SETTINGS)
        wait_until(lambda: agent.menu_is_open(), "the menu")
        press("Escape")
        self.assertTrue(agent.is_open())
        click(20, round(y + height + 100))
        agent.wait_closed()
        self.assertEqual(self.texts(), ["dismissed"])
        # The icon's own click is not taken for one elsewhere: the window opens and stays.
        agent.open_window()
        time.sleep(0.3)
        self.assertTrue(agent.is_open())

    def test_reminders_snooze_and_stay(self):
        agent = self.agent()
        tray_icon("quillo-agent")
        self.remind(32)
        agent.window()
        x, y, width, height = agent.body()
        click(20, round(y + height + 100))
        time.sleep(0.3)
        self.assertTrue(agent.is_open())
        # One click and the keyboard is the window's.
        agent.push(TEXT)
        wait_until(lambda: agent.is_active(), "the keyboard")
        type_text("in time")
        click(20, round(y + height + 100))
        time.sleep(0.3)
        self.assertTrue(agent.is_open())
        agent.click_icon()
        agent.wait_closed()
        self.assertEqual(self.texts(), ["in time"])

        self.remind(64)
        agent.window()
        agent.push(SNOOZE_2)
        agent.wait_closed()
        # Ten minutes from now instead of the next minute.
        self.assertEqual(self.texts(), ["in time"])
        self.assertTrue(agent.program.is_running)

    def test_text_outlives_a_kill(self):
        for round_ in range(2):
            agent = self.agent()
            agent.open_window()
            type_text(f"almost lost {round_}")
            wait_until(lambda: (self.home / DRAFT).exists(), "the draft", seconds=3)
            self.assertEqual((self.home / DRAFT).stat().st_mode & 0o777, 0o600)
            os.kill(agent.program.pid, signal.SIGKILL)
            agent.program.wait()
            again = self.agent()
            again.open_window()
            press("ctrl+Return")
            again.wait_closed()
            self.assertIn(f"almost lost {round_}", self.texts())
            self.assertFalse((self.home / DRAFT).exists())
            again.program.stop()


if __name__ == "__main__":
    unittest.main()
