"""Interactive deletion of an entry, answered on the keyboard."""

from desktop import press, wait_active, window
from quillo import AgentTestCase


class Deletion(AgentTestCase):
    def test_asks_and_moves_to_the_trash(self):
        uuid = self.ctl("entry", "add", "to be deleted")
        file = self.journal / "Entries" / f"{uuid}.plist"
        data = self.home / "data"
        probe = self.start_probe(XDG_DATA_HOME=str(data))

        def answer(key):
            probe.send(f"delete {uuid} {self.journal}")
            wait_active(window(name="^Quillo$"))
            press(key)

        answer("Escape")
        probe.expect("deleted no")
        self.assertTrue(file.exists())
        answer("Return")
        probe.expect("deleted yes")
        self.assertFalse(file.exists())
        self.assertTrue((data / "Trash/files" / file.name).exists())
