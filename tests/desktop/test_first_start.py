"""The first start as somebody meets it who has just installed Quillo: from the empty home to the first entry."""

import os
import shutil
import signal
import subprocess
import tempfile
from pathlib import Path

from desktop import DesktopTestCase, press, program, run, tray_icon, type_text, wait_active, wait_until, window, windows_named
from quillo import agent_of, keep_picture, quilloctl, walk_through_first_start


class FirstStartTest(DesktopTestCase):
    def setUp(self):
        self.home = Path(tempfile.mkdtemp(prefix="home ü "))
        self.addCleanup(shutil.rmtree, self.home, ignore_errors=True)

    def ctl(self, *words):
        return quilloctl(self.home, *words)

    def test_from_an_empty_home_to_the_first_entry(self):
        quillo = self.start(program("quillo"), "--home", str(self.home))
        walk_through_first_start()
        agent = agent_of(self.home)
        self.addCleanup(agent.program.stop)
        tray_icon("quillo-agent")
        agent.window()
        wait_until(agent.is_active, "the entry window with the keyboard")
        keep_picture("first-start-entry")
        type_text("The first of many")
        # The keys that were set on the way: Escape saves, and the shortcut opens it again.
        press("Escape")
        agent.wait_closed()
        self.assertIn("The first of many", self.ctl("entry", "list"))
        press("super+shift+j")
        agent.window()
        press("Escape")
        agent.wait_closed()
        self.assertTrue((self.home / ".config/autostart/com.quilloapp.quillo-agent.desktop").exists())
        # The main application is there, too, and ends without it.
        window(" — Quillo$")
        os.kill(quillo.pid, signal.SIGTERM)
        self.assertEqual(quillo.wait(), 0)
        self.assertTrue(agent.program.is_running)

    def test_closed_in_the_middle_it_comes_again(self):
        quillo = self.start(program("quillo"), "--home", str(self.home))
        first_start = window("^Welcome to Quillo$")
        run("xdotool", "windowactivate", "--sync", first_start)
        wait_active(first_start)
        # A second start brings the same one in front.
        subprocess.run([program("quillo"), "--home", str(self.home), "quillo://preferences"], timeout=30, check=True)
        press("Return", "Escape")
        self.assertEqual(quillo.wait(), 0)
        self.assertEqual(list(self.home.rglob("*")), [])
        self.start(program("quillo"), "--home", str(self.home))
        window("^Welcome to Quillo$")
        self.assertEqual(windows_named(" — Quillo$"), [])
