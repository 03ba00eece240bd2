"""The agent on a desktop whose panel is at the bottom of the screen."""

import shutil
import tempfile
import unittest
from pathlib import Path

from desktop import DesktopTestCase, program, tray_icon, type_text
from quillo import Agent, make_journal, quilloctl


class IconAtTheBottom(DesktopTestCase):
    def test_the_window_stands_above_the_icon(self):
        home = Path(tempfile.mkdtemp(prefix="home"))
        self.addCleanup(shutil.rmtree, home, ignore_errors=True)
        make_journal(home)
        agent = Agent(self.start(program("quillo-agent"), "--home", str(home)))
        x, y, width, height = agent.open_window()
        icon = tray_icon("quillo-agent")
        self.assertAlmostEqual(x + width / 2, icon[0] + icon[2] / 2, delta=1)
        self.assertAlmostEqual(y + height, icon[1] + 5, delta=1)
        type_text("written above")
        agent.click_icon()
        agent.wait_closed()
        self.assertIn("written above", quilloctl(home, "entry", "list"))


if __name__ == "__main__":
    unittest.main()
