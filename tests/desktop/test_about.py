"""The status menu and the About window under a real mouse."""

import shutil
import tempfile
import unittest
from pathlib import Path

from desktop import DesktopTestCase, click, press, program, run, tray_icon, wait_until, window, window_rect
from quillo import SCALE, Agent, install_handler, keep_picture, quilloctl

# Points in the window, from its top left.
LOGO = (142, 62)
PRODUCT = (142, 177)
LEGAL = (142, 229)


class AboutTest(DesktopTestCase):
    def setUp(self):
        self.home = Path(tempfile.mkdtemp(prefix="home ü "))
        self.addCleanup(shutil.rmtree, self.home, ignore_errors=True)
        self.agent = Agent(self.start(program("quillo-agent"), "--home", str(self.home)))
        tray_icon("quillo-agent")

    def click_point(self, identifier, point):
        x, y, _, _ = window_rect(identifier)
        click(x + round(point[0] * SCALE), y + round(point[1] * SCALE))

    def test_about_opens_by_mouse_and_leads_to_pages_and_legal_text(self):
        opened = install_handler(self.home, "com.example.browser", "x-scheme-handler/https;")
        quilloctl(self.home, "reminder", "set", "--every", "day", "--starting", "2014-03-10T21:00", "--zone", "UTC")
        for _ in range(2):
            self.agent.choose("About Quillo")
            about = window("^About Quillo$")
        found = run("xdotool", "search", "--onlyvisible", "--name", "^About Quillo$").split()
        self.assertEqual(len(found), 1)
        wait_until(lambda: run("xdotool", "getactivewindow", check=False).strip() == about, "the keyboard")
        keep_picture("about")

        for point, url in ((LOGO, "https://quilloapp.example/"), (PRODUCT, "https://social.example/quilloapp")):
            opened.unlink(missing_ok=True)
            self.click_point(about, point)
            wait_until(opened.exists, "the page " + url)
            self.assertEqual(opened.read_text().strip(), url)

        self.click_point(about, LEGAL)
        sheet = window("^Acknowledgements$")
        keep_picture("legal")
        press("Escape")
        wait_until(lambda: sheet not in run("xdotool", "search", "--onlyvisible", "--name", "^Acknowledgements$", check=False).split(),
                   "the sheet gone")
        self.assertTrue(self.agent.program.is_running)
        press("Escape")
        wait_until(lambda: not run("xdotool", "search", "--onlyvisible", "--name", "^About Quillo$", check=False).split(),
                   "the window gone")
        self.assertTrue(self.agent.program.is_running)


if __name__ == "__main__":
    unittest.main()
