"""Moving the journal from a terminal."""

import signal
import subprocess
import time

from quilloctl import QUILLOCTL, QuilloctlTestCase


class JournalMoveTest(QuilloctlTestCase):
    def setUp(self):
        super().setUp()
        self.journal = self.make_journal()
        self.ctl("entry", "add", "somewhere")
        self.folder = self.home / "Elsewhere"
        self.folder.mkdir()

    def test_it_moves_and_is_configured(self):
        self.assertEqual(self.ctl("journal", "move", str(self.folder)), str(self.folder / "J.quillojournal"))
        self.assertEqual(self.ctl("journal", "path"), str(self.folder / "J.quillojournal"))
        self.assertEqual(len(self.ctl_json("entry", "search", "somewhere")), 1)
        self.assertFalse(self.journal.exists())
        self.assertTrue((self.home / ".local/share/Trash/files/J.quillojournal/Journal.plist").exists())
        # Back, and this time the other one stays.
        self.assertEqual(self.ctl_json("journal", "move", "--keep", str(self.home)), {"path": str(self.journal)})
        self.assertTrue((self.folder / "J.quillojournal/Journal.plist").exists())
        self.assert_fails("journal", "move", str(self.folder), says="there is something already")
        self.assert_fails("journal", "move", str(self.home / "nowhere"), says="no such folder")
        self.assertEqual(self.ctl("journal", "path"), str(self.journal))

    def test_a_signal_leaves_it_where_it_is(self):
        # Large enough to be stopped in the middle.
        (self.journal / "film").write_bytes(b"x" * 300_000_000)
        move = subprocess.Popen([QUILLOCTL, "--home", self.home, "journal", "move", self.folder], env=self.environment(),
                                stderr=subprocess.PIPE, text=True)
        while not list(self.folder.iterdir()):
            time.sleep(0.001)
        move.send_signal(signal.SIGINT)
        self.assertEqual((move.communicate(timeout=60)[1], move.returncode), ("quilloctl: stopped; the journal is where it was\n", 1))
        self.assertEqual(list(self.folder.iterdir()), [])
        self.assertEqual(self.ctl("journal", "path"), str(self.journal))
