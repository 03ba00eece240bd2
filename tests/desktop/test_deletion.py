"""Interactive deletion of an entry, answered on the keyboard."""

import os
import shutil
import tempfile
import unittest
from pathlib import Path

from desktop import DesktopTestCase, press, program, run, wait_until, window
from quillo import make_journal, quilloctl


class Deletion(DesktopTestCase):
    def test_asks_and_moves_to_the_trash(self):
        home = Path(tempfile.mkdtemp(prefix="home"))
        self.addCleanup(shutil.rmtree, home, ignore_errors=True)
        journal = make_journal(home)
        uuid = quilloctl(home, "entry", "add", "to be deleted")
        file = journal / "Entries" / f"{uuid}.plist"
        probe = self.start(program("desktop_probe"))
        probe.expect("ready")

        def answer(key):
            probe.send(f"delete {uuid} {journal}")
            alert = window(name="^Quillo$")
            wait_until(lambda: run("xdotool", "getactivewindow", check=False).strip() == alert, "the alert active")
            press(key)

        answer("Escape")
        probe.expect("deleted no")
        self.assertTrue(file.exists())
        answer("Return")
        probe.expect("deleted yes")
        self.assertFalse(file.exists())
        self.assertTrue(Path(os.environ["HOME"], ".local/share/Trash/files", file.name).exists())


if __name__ == "__main__":
    unittest.main()
