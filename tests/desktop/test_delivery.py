"""Reminders as they reach the user: a real notification server, a loudspeaker that is listened to, the real window."""

import json
import os
import shutil
import signal
import socket
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

from desktop import (DesktopTestCase, center, click, program, run, start_part, stop_part, tray_icon, type_text,
                     wait_until, window, window_rect)
from quillo import Agent, install_handler, make_journal, quilloctl, set_reminder_in
from sound import Recording

SOUND = "RemindersPlaySound"
WINDOW = "RemindersOpenMenuBar"
NOTIFICATION = "RemindersSendToNotificationCenter"


def displayed():
    return int(run("dunstctl", "count", "displayed"))


def all_history():
    """What was shown and is no longer, the newest first."""
    return [{"summary": n["summary"]["data"], "body": n["body"]["data"]}
            for n in json.loads(run("dunstctl", "history"))["data"][0]]


def notify_as_another(summary):
    """A notification of another program that stays until it is closed."""
    run("gdbus", "call", "--session", "--dest", "org.freedesktop.Notifications", "--object-path",
        "/org/freedesktop/Notifications", "--method", "org.freedesktop.Notifications.Notify",
        "other", "0", "", summary, "", "[]", "{}", "0")


class DeliveryTest(DesktopTestCase):
    def setUp(self):
        self.home = Path(tempfile.mkdtemp(prefix="home ü "))
        self.addCleanup(shutil.rmtree, self.home, ignore_errors=True)
        self.journal = make_journal(self.home)
        wait_until(lambda: run("dunstctl", "count", check=False), "the notification server")
        run("dunstctl", "close-all")
        self.before = len(all_history())
        self.agent = Agent(self.start(program("quillo-agent"), "--home", str(self.home)))
        tray_icon("quillo-agent")

    def history(self):
        """That of this test."""
        found = all_history()
        return found[:len(found) - self.before]

    def fire(self, *settings):
        """Lets a reminder come with these settings on and the others off."""
        for key in (SOUND, WINDOW, NOTIFICATION):
            quilloctl(self.home, "settings", "set", key, "yes" if key in settings else "no")
        due = set_reminder_in(self.home, 3, open_window=False)
        time.sleep(max(0, due - time.time()))

    def texts(self):
        return [line.split("  ")[2] for line in quilloctl(self.home, "entry", "list").splitlines()]

    def click_notification(self):
        # By the server's usual bindings the middle button does the action, then closes.
        click(*center(window_rect(window(window_class="^Dunst$"))), button=2)

    def test_a_notification_with_its_sound_leads_to_a_new_entry(self):
        opened = install_handler(self.home)
        recording = Recording()
        self.fire(SOUND, NOTIFICATION)
        wait_until(lambda: displayed() == 1, "the notification")
        time.sleep(2.5)
        bursts = recording.stop()
        self.assertEqual(len(bursts), 1, bursts)
        self.assertTrue(0.3 < bursts[0][1] < 2, bursts)
        self.assertFalse(self.agent.is_open())
        self.click_notification()
        wait_until(opened.exists, "the URL opened")
        self.assertEqual(opened.read_text(), "quillo://post\n")
        wait_until(lambda: displayed() == 0, "the notification gone")
        self.assertEqual(self.history()[0]["summary"], "Journal Reminder")
        self.assertIn("—", self.history()[0]["body"])

    def test_with_everything_on_one_sound_is_heard_and_a_click_saves_the_text(self):
        recording = Recording()
        self.fire(SOUND, WINDOW, NOTIFICATION)
        identifier = self.agent.window()
        wait_until(lambda: displayed() == 1, "the notification")
        time.sleep(2.5)
        bursts = recording.stop()
        self.assertEqual(len(bursts), 1, bursts)
        x, y, width, height = window_rect(identifier)
        click(x + width // 2, y + height // 2)
        wait_until(lambda: run("xdotool", "getactivewindow", check=False).strip() == identifier, "the keyboard")
        type_text("Reminded and written")
        self.click_notification()
        self.agent.wait_closed()
        wait_until(lambda: self.texts() == ["Reminded and written"], "the entry saved")

    def test_silence_where_no_sound_is_wanted_and_no_sound_alone(self):
        recording = Recording()
        self.fire(NOTIFICATION)
        wait_until(lambda: displayed() == 1, "the notification")
        self.fire(SOUND)
        time.sleep(1)
        self.assertEqual(recording.stop(), [])

    def test_the_latest_stands_alone_beside_those_of_others(self):
        notify_as_another("Somebody else's")
        for _ in range(2):
            self.fire(NOTIFICATION)
            wait_until(lambda: displayed() == 2, "the reminder beside the other")
        wait_until(lambda: [n["summary"] for n in self.history()] == ["Journal Reminder"], "the first taken away")
        self.assertEqual(displayed(), 2)
        run("dunstctl", "close-all")
        wait_until(lambda: sorted(n["summary"] for n in self.history()) ==
                   ["Journal Reminder", "Journal Reminder", "Somebody else's"], "the other one untouched until then")

    def test_a_server_that_died_costs_the_notification_only(self):
        self.fire(NOTIFICATION)
        wait_until(lambda: displayed() == 1, "the notification")
        stop_part("notifications")
        recording = Recording()
        self.fire(SOUND, WINDOW, NOTIFICATION)
        self.agent.window()
        time.sleep(2.5)
        self.assertEqual(len(recording.stop()), 1)
        self.agent.click_icon()
        self.agent.wait_closed()

        start_part("notifications")
        wait_until(lambda: run("dunstctl", "count", check=False), "the server again")
        notify_as_another("The new server's first")
        self.fire(NOTIFICATION)
        wait_until(lambda: displayed() == 2, "the reminder from the new server")

    def test_a_sound_server_that_hangs_holds_nothing_up(self):
        with socket.socket(socket.AF_UNIX) as server:
            # Its address cannot have a space in it.
            address = os.environ["QUILLO_DESKTOP"] + "/hanging-sound"
            server.bind(address)
            server.listen()
            server.settimeout(15)
            self.agent = Agent(self.start(program("quillo-agent"), "--home", str(self.home),
                                          PULSE_SERVER="unix:" + address))
            tray_icon("quillo-agent")
            self.fire(SOUND, WINDOW)
            self.agent.window()
            # It is asked, and never answers.
            connection, _ = server.accept()
            with connection:
                for _ in range(2):
                    quilloctl(self.home, "agent", "toggle")
                os.kill(self.agent.program.pid, signal.SIGTERM)
                begin = time.monotonic()
                self.assertEqual(self.agent.program.wait(), 0)
                self.assertLess(time.monotonic() - begin, 5)

    def test_a_text_that_was_not_saved_is_told_of_where_nobody_reads_what_is_printed(self):
        uuid = quilloctl(self.home, "entry", "add", "before")
        file = self.journal / "Entries" / f"{uuid}.plist"
        editor = self.home / "notes"
        editor.write_text(f'#!/bin/sh\necho mine >"$1"\nrm "{file}"\n')
        editor.chmod(0o700)
        done = subprocess.run([program("quilloctl"), "--home", str(self.home), "open-url", f"quillo://edit?entryId={uuid}"],
                              env={**os.environ, "VISUAL": f'"{editor}"'}, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL, timeout=30)
        self.assertEqual(done.returncode, 1)
        wait_until(lambda: displayed() == 1, "the notification")
        run("dunstctl", "close-all")
        wait_until(lambda: [n["summary"] for n in self.history()] == ["Your text was not saved"], "it closed")
        self.assertIn("/drafts/entry-", self.history()[0]["body"])


if __name__ == "__main__":
    unittest.main()
