"""The whole agent on a real desktop: tray, window, keyboard, session bus, two processes, signals."""

import json
import os
import shutil
import subprocess
import time
import unittest
from pathlib import Path

from desktop import press, program, run, type_text, wait_until
from quillo import AgentTestCase, make_journal, set_reminder_in


class AgentTest(AgentTestCase):
    def test_what_is_written_is_for_the_user_alone(self):
        agent = self.start_agent()
        agent.open_window()
        type_text("Typed for real")
        agent.click_icon()
        agent.wait_closed()
        self.assertEqual(self.texts(), ["Typed for real"])

        for path in self.home.rglob("*"):
            self.assertEqual(path.stat().st_mode & 0o077, 0, path)

    def test_a_fast_double_click_closes_again_and_no_task_bar_shows_the_window(self):
        agent = self.start_agent()
        agent.click_icon(times=2)
        agent.open_window()
        # It was hidden in between, which takes a window's state away.
        wait_until(lambda: "_STATE_SKIP_TASKBAR" in run("xprop", "-id", agent.window(), "_NET_WM_STATE"), "it out of the task bar")

    def status(self):
        return json.loads(self.ctl("--json", "agent", "status"))

    def test_starting_and_restarting_leave_the_login_alone(self):
        self.addCleanup(self.ctl, "agent", "disable")
        for enabled in (False, True):
            if enabled:
                self.ctl("agent", "enable")
            self.ctl("agent", "start")
            first = self.status()["running"]
            self.ctl("agent", "start")
            self.assertEqual(self.status(), {"enabled": enabled, "loginItem": enabled, "running": first})
            self.ctl("agent", "restart")
            second = self.status()["running"]
            self.assertEqual(self.status()["loginItem"], enabled)
            self.assertEqual(len(second), 1)
            self.assertNotEqual(first, second)
            # Started by hand or as a login item, it ends.
            self.ctl("agent", "disable")
            self.assertEqual(self.status(), {"enabled": False, "loginItem": False, "running": []})

    def test_an_agent_that_does_not_come_is_said_at_once(self):
        self.addCleanup(self.ctl, "agent", "disable")
        begin = time.monotonic()
        for command, what in (("start", "did not come"), ("enable", "starts at login but not now")):
            result = subprocess.run([program("quilloctl"), "--home", self.home, "agent", command], capture_output=True,
                                    text=True, env={**os.environ, "DISPLAY": ":none"})
            self.assertEqual(result.returncode, 1)
            self.assertRegex(result.stderr, f"^quilloctl: the agent {what}: it ended at once; .*/quillo-agent says why\n$")
        self.assertLess(time.monotonic() - begin, 10)

    def test_the_journal_can_move_while_the_agent_runs(self):
        shutil.rmtree(self.home)
        self.home.mkdir(0o700)
        agent = self.start_agent()
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

    def test_in_a_wayland_session_it_takes_x11_where_there_is_one(self):
        # Nobody listens at that socket: it is not to be asked.
        agent = self.start_agent(WAYLAND_DISPLAY="wayland-7", XDG_SESSION_TYPE="wayland")
        agent.open_window()
        self.assertIn("Display: X11 through Xwayland", self.log())

    def test_without_a_bus_it_works_alone(self):
        agent = self.start_agent(DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent")
        agent.open_window()
        type_text("no bus")
        press("ctrl+Return")
        agent.wait_closed()
        self.assertEqual(self.texts(), ["no bus"])

    @unittest.skipIf("TSAN_OPTIONS" in os.environ, "the sanitizer has a thread that wakes by itself")
    def test_nothing_wakes_it_while_idle(self):
        set_reminder_in(self.home, 3600)
        agent = self.start_shown_agent()

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
