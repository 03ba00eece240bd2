"""The entry window by mouse and keyboard: reminders, clicks elsewhere, and text that outlives a kill."""

import os
import signal
import time

from desktop import active_window, click, press, run, type_text, wait_until, window
from quillo import AgentTestCase, set_reminder_in

DRAFT = ".local/state/quillo/UnsavedEntry.plist"
# Centres of the controls, in points from the frame's top left.
SETTINGS, CLOSE = (277, 32), (306, 32)
TITLE, TEXT = (90, 32), (160, 150)


class EntryWindowTest(AgentTestCase):
    def setUp(self):
        super().setUp()
        self.ctl("settings", "set", "AddLocationAutomatically", "no")

    def click_elsewhere(self, agent, button=1):
        _, y, _, height = agent.body()
        click(20, round(y + height + 100), button)

    def test_clicks_elsewhere_and_on_what_is_the_agents_own(self):
        agent = self.start_agent()
        agent.open_window()
        type_text("dismissed")
        # Another button, the window itself and its menu are no reasons to go.
        self.click_elsewhere(agent, button=2)
        agent.push(TEXT)
        agent.push(SETTINGS)
        wait_until(lambda: agent.menu_is_open(), "the menu")
        press("Escape")
        self.assertTrue(agent.is_open())
        self.click_elsewhere(agent)
        agent.wait_closed()
        self.assertEqual(self.texts(), ["dismissed"])
        # The icon's own click is not taken for one elsewhere: the window opens and stays.
        agent.open_window()
        time.sleep(0.3)
        self.assertTrue(agent.is_open())

    def test_a_hashtag_is_completed_with_those_of_the_journal(self):
        self.ctl("entry", "add", "#workshop #workshop")
        agent = self.start_agent()
        agent.open_window()
        type_text("at the #wor")
        # Another process has looked, and is gone.
        wait_until(lambda: list((self.home / ".cache/quillo/index").glob("*.sqlite")) and
                   not run("pgrep", "-P", str(agent.program.pid), check=False), "the tags")
        time.sleep(0.5)
        press("Tab")
        agent.push(CLOSE)
        agent.wait_closed()
        self.assertEqual(self.texts(), ["#workshop #workshop", "at the #workshop"])

    def test_a_window_that_a_reminder_opened_stays(self):
        agent = self.start_agent()
        agent.open_window()
        agent.push(CLOSE)
        agent.wait_closed()
        self.start("xev", "-geometry", "100x100+20+600")
        other = window("^Event Tester$")
        run("xdotool", "windowactivate", "--sync", other)
        self.ctl("reminder", "on")
        set_reminder_in(self.home, 2, frequency="32")
        agent.window()
        # A window that took the keyboard when the user opened it leaves it alone now.
        time.sleep(0.3)
        self.assertEqual(active_window(), other)
        self.click_elsewhere(agent)
        time.sleep(0.3)
        self.assertTrue(agent.is_open())
        # One click anywhere in it, and the keyboard is the text's.
        agent.push(TITLE)
        wait_until(lambda: agent.is_active(), "the keyboard")
        type_text("in time")
        self.click_elsewhere(agent)
        time.sleep(0.3)
        self.assertTrue(agent.is_open())
        agent.click_icon()
        agent.wait_closed()
        self.assertEqual(self.texts(), ["in time"])

    def test_text_outlives_a_kill(self):
        for round_ in range(2):
            agent = self.start_agent()
            agent.open_window()
            type_text(f"almost lost {round_}")
            wait_until(lambda: (self.home / DRAFT).exists(), "the draft", seconds=3)
            self.assertEqual((self.home / DRAFT).stat().st_mode & 0o777, 0o600)
            os.kill(agent.program.pid, signal.SIGKILL)
            agent.program.wait()
            again = self.start_agent()
            again.open_window()
            press("ctrl+Return")
            again.wait_closed()
            self.assertIn(f"almost lost {round_}", self.texts())
            self.assertFalse((self.home / DRAFT).exists())
            again.program.stop()
