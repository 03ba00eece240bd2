"""Entries go out of the main application and come into it through its windows, and what came is taken back."""

import json

from desktop import click, press, program, run, type_text, wait_active, wait_until, window, window_rect, windows_named
from quillo import AgentTestCase, keep_picture

TITLE = " — Quillo$"


class ExchangeTest(AgentTestCase):
    def start_quillo(self):
        self.ctl("entry", "add", "--on", "2026-11-24T18:42", "Walked home #evening")
        self.ctl("entry", "add", "--on", "2026-11-13", "Rain all day")
        self.start(program("quillo"), "--home", str(self.home))
        self.window = window(TITLE)
        run("xdotool", "windowactivate", "--sync", self.window)
        wait_active(self.window)

    def open_dialog(self, keys, name):
        press(keys)
        wait_active(window(name))

    def click_notice(self):
        """Its button, at the right end of the lower edge."""
        x, y, width, height = window_rect(self.window)
        click(x + width - 50, y + height - 14)

    def wait_back(self, dialog):
        wait_until(lambda: not windows_named(dialog), f"the end of {dialog}")
        wait_active(self.window)

    def test_out_and_in_and_back(self):
        self.start_quillo()
        page, out = self.home / "page.html", self.home / "out.json"
        for path, format_key in ((page, "w"), (out, "j")):
            self.open_dialog("ctrl+shift+e", "^Export$")
            press("Tab", format_key, "Tab", "ctrl+a")
            type_text("~/" + path.name)
            keep_picture("export-" + path.suffix[1:])
            press("Return")
            self.wait_back("^Export$")
        self.assertIn("Walked home", page.read_text())
        self.assertEqual(len(json.loads(out.read_text())["entries"]), 2)
        keep_picture("exported")

        notes = self.home / "notes"
        notes.mkdir()
        for day in (1, 2, 3):
            (notes / f"2025-03-0{day}.md").write_text(f"Note {day}\n")
        before = self.texts()
        self.open_dialog("ctrl+shift+i", "^Import$")
        press("shift+Tab", "ctrl+a")
        type_text("~/notes")
        press("Return")
        # The button can be pressed once the folder has been looked at.
        wait_until(lambda: not windows_named("^Import$") or press("Return"), "the import", interval=0.2)
        wait_active(self.window)
        self.assertEqual(self.texts(), sorted(before + ["Note 1", "Note 2", "Note 3"]))
        keep_picture("imported")
        self.click_notice()
        wait_until(lambda: self.texts() == before, "the three in the Trash")
        keep_picture("taken-back")

    def test_a_backup_that_failed_is_told_of(self):
        folder = self.home / ".local/share/quillo/Backup"
        folder.parent.mkdir(parents=True)
        folder.write_text("in its place")
        run(program("quilloctl"), "--home", str(self.home), "backup", "make", check=False)
        self.start_quillo()
        wait_until(lambda: windows_named("^Preferences$") or self.click_notice(), "the preferences", interval=0.5)
        keep_picture("backup-failed")
