"""Entries on their way in: what a trial tells, all or nothing, and nothing twice."""

import json

from quilloctl import QuilloctlTestCase


class ImportTest(QuilloctlTestCase):
    def setUp(self):
        super().setUp()
        self.journal = self.make_journal()

    def count(self):
        return len(list((self.journal / "Entries").glob("*.plist")))

    def test_a_trial_then_all_or_nothing(self):
        notes = self.home / "notes"
        notes.mkdir()
        (notes / "2024-02-29 2130 a.md").write_text("One #tag")
        (notes / "b.md").write_text("---\ndate: 2024-03-01\n---\nTwo")
        (notes / "c.md").write_text("---\ndate: soon\n---\nThree")
        fault = f"quilloctl: {notes}/c.md:2: \"soon\" is no date; one is written as 2014-03-10T21:00:00+01:00\n"
        trial = self.run_ctl("import", "markdown", str(notes), "--dry-run")
        self.assertEqual((trial.returncode, trial.stdout, trial.stderr), (1, "2 entries from 2024-02-29 to 2024-03-01: 2 to be added, 1 that cannot be read\n", fault))
        refused = self.run_ctl("import", "markdown", str(notes))
        self.assertEqual((refused.returncode, refused.stdout, self.count()), (1, "", 0))
        self.assertTrue(refused.stderr.startswith(fault))
        self.assertEqual(self.ctl("import", "markdown", str(notes), "--keep-going"), "2 entries from 2024-02-29 to 2024-03-01: 2 added, 1 that cannot be read")
        (notes / "c.md").unlink()
        (notes / "b.md").write_text("---\ndate: 2024-03-01\n---\nTwo more")
        told = json.loads(self.ctl("--json", "import", "markdown", str(notes)))
        self.assertEqual({key: told[key] for key in ("added", "same", "differing", "unreadable", "dryRun")}, {"added": 0, "same": 1, "differing": 1, "unreadable": 0, "dryRun": False})
        self.assertEqual(self.ctl("import", "markdown", str(notes), "--replace").split(": ")[1], "1 replaced, 1 there already")
        found = self.ctl_json("entry", "list", "--reverse")
        self.assertEqual([(entry["text"], entry["creationDate"], entry["tags"]) for entry in found], [("One #tag", "2024-02-29T21:30:00Z", ["tag"]), ("Two more", "2024-03-01T12:00:00Z", [])])

    def test_what_a_list_prints_comes_back(self):
        for day in ("2020-01-01", "2020-01-02"):
            self.ctl("entry", "add", f"Of {day} #x", "--on", day)
        listed = self.home / "list.json"
        listed.write_text(self.ctl("--json", "entry", "list"))
        self.assertEqual(self.ctl("import", "json", str(listed)), "2 entries from 2020-01-01 to 2020-01-02: 2 there already")
        elsewhere = self.ctl("journal", "create", str(self.home / "K"))
        self.ctl("journal", "set", elsewhere)
        self.ctl("import", "json", str(listed))
        self.assertEqual(self.ctl("--json", "entry", "list"), listed.read_text())
        self.assert_fails("import", "json", str(self.home / "nowhere"), says="nowhere")
        for words in ([], ["json"], ["pdf", str(listed)], ["json", ""], ["--undo", str(listed)], ["--undo", "--replace"]):
            self.assertEqual(self.run_ctl("import", *words).returncode, 2, words)

    def test_the_last_import_is_taken_back(self):
        self.assert_fails("import", "--undo", says="no import")
        notes = self.home / "2024-05-01 diary.txt"
        notes.write_text("[2024-05-01 09:00] One\n[2024-05-02 09:00] Two @x\n")
        # Without a word of its format.
        self.assertEqual(self.ctl("import", str(notes)), "2 entries from 2024-05-01 to 2024-05-02: 2 added")
        changed = self.ctl_json("entry", "list")[0]["uuid"]
        trial = self.run_ctl("import", "--undo", "--dry-run")
        self.assertEqual((trial.returncode, trial.stdout.split(": ")[1], self.count()), (0, "2 entries to be moved to the Trash\n", 2))
        file = self.journal / "Entries" / f"{changed}.plist"
        file.write_text(file.read_text().replace("Two", "Three"))
        told = self.run_ctl("--json", "import", "--undo")
        self.assertEqual(told.stderr, f"quilloctl: {changed} stays, it was changed after the import\n")
        counts = json.loads(told.stdout)
        self.assertEqual({key: counts[key] for key in ("source", "format", "removed", "changed", "putBack", "gone")}, {"source": str(notes), "format": "jrnl", "removed": 1, "changed": 1, "putBack": 0, "gone": 0})
        self.assertEqual([entry["text"] for entry in self.ctl_json("entry", "list")], ["Three @x"])
        self.assertEqual(len(list((self.home / ".local/share/Trash/files").iterdir())), 1)
        self.assert_fails("import", "--undo", says="no import")
        unclear = self.home / "unclear"
        unclear.write_text("Words")
        self.assert_fails("import", str(unclear), says="name it")
