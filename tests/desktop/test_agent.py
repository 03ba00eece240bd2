"""The whole agent on a real desktop: tray, window, keyboard, session bus, two processes, signals."""

import json
import os
import plistlib
import shutil
import signal
import tempfile
import time
import unittest
from pathlib import Path

from desktop import (DesktopTestCase, press, program, run, start_part, stop_part, tray_icon, type_text,
                     wait_until)
from quillo import Agent, make_journal, quilloctl, set_reminder_in

LIST = "Library/Group Containers/Q7R2KX9M4P.quilloapp/Data/Preferences/quillo.plist"
LOGS = "Library/Group Containers/Q7R2KX9M4P.quilloapp/Data/Logs/Agent"


class AgentTest(DesktopTestCase):
    def setUp(self):
        # A home that a person could have: a space, and letters beyond ASCII.
        self.home = Path(tempfile.mkdtemp(prefix="home ü "))
        self.addCleanup(shutil.rmtree, self.home, ignore_errors=True)

    def agent(self, **environment):
        return Agent(self.start(program("quillo-agent"), "--home", str(self.home), **environment))

    def entries(self, journal):
        return sorted((plistlib.loads(p.read_bytes()) for p in (journal / "Entries").glob("*.plist")), key=lambda e: e["text"])

    def texts(self, journal):
        return [entry["text"] for entry in self.entries(journal)]

    def log(self):
        return "".join(p.read_text() for p in sorted((self.home / LOGS).glob("*.log")))

    def test_a_click_opens_the_window_and_what_is_typed_is_saved(self):
        journal = make_journal(self.home)
        agent = self.agent()
        agent.open_window()
        type_text("Typed for real #desktop")
        agent.click_icon()
        agent.wait_closed()
        self.assertEqual(self.texts(journal), ["Typed for real #desktop"])
        self.assertEqual(self.entries(journal)[0]["tags"], ["desktop"])

        # Opened again, the same entry goes on; Escape does not dismiss; Ctrl+Return finishes it.
        agent.open_window()
        press("Escape", "ctrl+End")
        type_text(" again")
        press("ctrl+Return")
        agent.wait_closed()
        self.assertEqual(self.texts(journal), ["Typed for real #desktop again"])
        agent.open_window()
        type_text("A new one")
        press("ctrl+Return")
        agent.wait_closed()
        self.assertEqual(self.texts(journal), ["A new one", "Typed for real #desktop again"])

        lines = [line for line in self.log().splitlines() if " App " in line]
        self.assertIn("**** NEW SESSION ****", lines[0])
        self.assertIn("Log file: ", lines[2])
        for path in self.home.rglob("*"):
            self.assertEqual(path.stat().st_mode & 0o077, 0, path)

    def test_a_fast_double_click_closes_again(self):
        make_journal(self.home)
        agent = self.agent()
        agent.click_icon(times=2)
        agent.open_window()

    def test_a_secondary_click_opens_the_menu_and_quit_quits(self):
        journal = make_journal(self.home)
        agent = self.agent()
        agent.open_window()
        type_text("kept by the menu")
        agent.click_icon(button=3)
        agent.wait_closed()
        # The last item of the menu.
        press("Up", "Return")
        self.assertEqual(agent.program.wait(), 0)
        self.assertEqual(self.texts(journal), ["kept by the menu"])

    def test_the_newest_agent_ends_the_one_before(self):
        journal = make_journal(self.home)
        first = self.agent()
        first.open_window()
        type_text("unsaved when the second came")
        second = self.agent()
        self.assertEqual(first.program.wait(), 0)
        self.assertEqual(self.texts(journal), ["unsaved when the second came"])
        second.open_window()
        self.assertTrue(second.program.is_running)

    def test_what_is_switched_off_and_on_again_runs(self):
        def running():
            return json.loads(quilloctl(self.home, "--json", "agent", "status"))["running"]
        self.addCleanup(quilloctl, self.home, "agent", "disable")
        for _ in range(3):
            quilloctl(self.home, "agent", "enable")
            wait_until(running, "the agent that was enabled")
            quilloctl(self.home, "agent", "disable")
            self.assertEqual(running(), [])

    def test_a_signal_saves_the_text(self):
        journal = make_journal(self.home)
        for number, text in ((signal.SIGTERM, "before the term"), (signal.SIGINT, "before the interrupt")):
            agent = self.agent()
            agent.open_window()
            type_text(text)
            os.kill(agent.program.pid, number)
            self.assertEqual(agent.program.wait(), 0)
            self.assertIn(text, self.texts(journal))

    def test_the_journal_can_move_while_the_agent_runs(self):
        agent = self.agent()
        agent.click_icon()
        agent.window()
        agent.click_icon()
        agent.wait_closed()
        # None was configured until now; the running agent hears of each by notification.
        for name in ("First", "Second"):
            journal = make_journal(self.home, name)
            wait_until(lambda: self.writes(agent, journal, "into " + name), f"an entry in {name}")
        self.assertEqual(self.texts(self.home / "First.quillojournal"), ["into First"])

    def writes(self, agent, journal, text):
        """Whether an entry written now lands in the journal; the notification may still be under way."""
        agent.open_window()
        type_text(text)
        # Closed by the icon: with no editor shown, the save button's key does nothing.
        press("ctrl+Return")
        time.sleep(0.3)
        if agent.is_open():
            agent.click_icon()
        agent.wait_closed()
        return text in self.texts(journal)

    def test_the_icon_appears_when_the_tray_comes_late(self):
        make_journal(self.home)
        stop_part("tray")
        agent = self.agent()
        wait_until(lambda: "There is no tray yet" in self.log(), "the agent up without a tray")
        start_part("tray")
        agent.open_window()

    def test_in_a_wayland_session_it_takes_x11_where_there_is_one(self):
        make_journal(self.home)
        # Nobody listens at that socket: it is not to be asked.
        agent = self.agent(WAYLAND_DISPLAY="wayland-7", XDG_SESSION_TYPE="wayland")
        agent.open_window()
        self.assertIn("Display: X11 through Xwayland", self.log())

    def test_a_reminder_set_elsewhere_comes_on_the_dot_and_leaves_the_keyboard_alone(self):
        make_journal(self.home)
        agent = self.agent()
        tray_icon("quillo-agent")
        before = run("xdotool", "getactivewindow", check=False)
        due = set_reminder_in(self.home, 4)
        agent.window()
        self.assertAlmostEqual(time.time(), due, delta=0.5)
        self.assertEqual(run("xdotool", "getactivewindow", check=False), before)
        agent.click_icon()
        agent.wait_closed()

        # Switched off in time, the next one does not come.
        due = set_reminder_in(self.home, 3)
        quilloctl(self.home, "reminder", "off")
        time.sleep(due + 0.5 - time.time())
        self.assertFalse(agent.is_open())

    def test_without_a_bus_it_works_alone(self):
        journal = make_journal(self.home)
        agent = self.agent(DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent")
        agent.open_window()
        type_text("no bus")
        press("ctrl+Return")
        agent.wait_closed()
        self.assertEqual(self.texts(journal), ["no bus"])

    def test_an_unreadable_list_is_no_reason_not_to_start(self):
        (self.home / LIST).parent.mkdir(parents=True)
        (self.home / LIST).write_bytes(b"garbage {")
        agent = self.agent()
        agent.click_icon()
        agent.window()
        self.assertTrue(agent.program.is_running)
        self.assertIn("Unable to initialize group property list - (null)", self.log())
        self.assertEqual((self.home / LIST).read_bytes(), b"garbage {")

    def test_nothing_wakes_it_while_idle(self):
        make_journal(self.home)
        set_reminder_in(self.home, 3600)
        agent = self.agent()
        tray_icon("quillo-agent")

        def wake_ups():
            """Voluntary context switches of all threads."""
            tasks = Path(f"/proc/{agent.program.pid}/task").glob("*/status")
            return sum(int(t.read_text().split("\nvoluntary_ctxt_switches:")[1].split()[0]) for t in tasks)

        def quiet(seconds):
            before = wake_ups()
            time.sleep(seconds)
            return wake_ups() - before

        wait_until(lambda: quiet(0.5) == 0, "half a second without a wake-up")
        # Long enough to see a thread that looks around every ten seconds.
        self.assertLessEqual(quiet(11), 1)


if __name__ == "__main__":
    unittest.main()
