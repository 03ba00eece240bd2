"""Reminders as they reach the user: a real notification server, a loudspeaker that is listened to, the real window."""

import json
import os
import signal
import socket
import subprocess
import time

from desktop import active_window, center, click, program, run, type_text, wait_active, wait_until, window, window_rect
from quillo import AgentTestCase, displayed, install_editor, install_handler, set_reminder_in, wait_notification_server
from sound import Recording

SOUND = "RemindersPlaySound"
WINDOW = "RemindersOpenMenuBar"
NOTIFICATION = "RemindersSendToNotificationCenter"


def all_history():
    """What was shown and is no longer, the newest first."""
    return [{"summary": n["summary"]["data"], "body": n["body"]["data"]}
            for n in json.loads(run("dunstctl", "history"))["data"][0]]


class DeliveryTest(AgentTestCase):
    def setUp(self):
        super().setUp()
        wait_notification_server()
        run("dunstctl", "close-all")
        self.before = len(all_history())
        self.agent = self.start_shown_agent()

    def history(self):
        """That of this test."""
        found = all_history()
        return found[:len(found) - self.before]

    def fire(self, *settings):
        """Lets a reminder come with these settings on and the others off."""
        for key in (SOUND, WINDOW, NOTIFICATION):
            self.ctl("settings", "set", key, "yes" if key in settings else "no")
        due = set_reminder_in(self.home, 3, open_window=False)
        time.sleep(max(0, due - time.time()))

    def fire_and_listen(self, *settings):
        """The bursts of sound until well after the reminder."""
        recording = Recording()
        self.fire(*settings)
        time.sleep(2.5)
        return recording.stop()

    def click_notification(self):
        # By the server's usual bindings the middle button does the action, then closes.
        click(*center(window_rect(window(window_class="^Dunst$"))), button=2)

    def test_a_notification_with_its_sound_leads_to_a_new_entry(self):
        opened = install_handler(self.home)
        bursts = self.fire_and_listen(SOUND, NOTIFICATION)
        self.assertEqual((len(bursts), displayed()), (1, 1), bursts)
        self.assertTrue(0.3 < bursts[0][1] < 2, bursts)
        self.assertFalse(self.agent.is_open())
        self.click_notification()
        wait_until(opened.exists, "the URL opened")
        self.assertEqual(opened.read_text(), "quillo://post\n")
        wait_until(lambda: displayed() == 0, "the notification gone")
        self.assertEqual(self.history()[0]["summary"], "Journal Reminder")
        self.assertIn("—", self.history()[0]["body"])

    def test_with_everything_on_one_sound_is_heard_and_a_click_saves_the_text(self):
        keyboard = active_window()
        self.assertEqual(len(self.fire_and_listen(SOUND, WINDOW, NOTIFICATION)), 1)
        self.assertEqual(displayed(), 1)
        self.assertTrue(self.agent.is_open())
        self.assertEqual(active_window(), keyboard)
        click(*center(window_rect(self.agent.window())))
        wait_active(self.agent.window())
        type_text("Reminded and written")
        self.click_notification()
        self.agent.wait_closed()
        wait_until(lambda: self.texts() == ["Reminded and written"], "the entry saved")

    def test_a_sound_server_that_hangs_holds_nothing_up(self):
        with socket.socket(socket.AF_UNIX) as server:
            # Its address cannot have a space in it.
            address = os.environ["QUILLO_DESKTOP"] + "/hanging-sound"
            server.bind(address)
            server.listen()
            server.settimeout(15)
            self.agent = self.start_shown_agent(PULSE_SERVER="unix:" + address)
            self.fire(SOUND, WINDOW)
            self.agent.window()
            # It is asked, and never answers.
            connection, _ = server.accept()
            with connection:
                for _ in range(2):
                    self.ctl("agent", "toggle")
                os.kill(self.agent.program.pid, signal.SIGTERM)
                begin = time.monotonic()
                self.assertEqual(self.agent.program.wait(), 0)
                self.assertLess(time.monotonic() - begin, 5)

    def test_a_text_that_was_not_saved_is_told_of_where_nobody_reads_what_is_printed(self):
        uuid = self.ctl("entry", "add", "before")
        file = self.journal / "Entries" / f"{uuid}.plist"
        editor = install_editor(self.home, f'echo mine >"$1"\nrm "{file}"\n')
        done = subprocess.run([program("quilloctl"), "--home", str(self.home), "open-url", f"quillo://edit?entryId={uuid}"],
                              env={**os.environ, "VISUAL": editor}, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL, timeout=30)
        self.assertEqual(done.returncode, 1)
        wait_until(lambda: displayed() == 1, "the notification")
        run("dunstctl", "close-all")
        wait_until(lambda: [n["summary"] for n in self.history()] == ["Your text was not saved"], "it closed")
        self.assertIn("/drafts/entry-", self.history()[0]["body"])
