"""Several versions of an entry, and what is mended in a journal, from a terminal."""

import datetime
import os
import plistlib
import time

from quilloctl import QuilloctlTestCase

SYNCTHING = "{}.sync-conflict-20260309-140559-ABCDEF2.plist"
DROPBOX = "{} (laptop's conflicted copy 2026-03-09).plist"
DAY = datetime.datetime(2026, 3, 9, 12)


class ConflictsTest(QuilloctlTestCase):
    def setUp(self):
        super().setUp()
        self.journal = self.make_journal()
        self.entries = self.journal / "Entries"
        self.trash = self.home / ".local/share/Trash/files"

    def write(self, name, text, **more):
        content = {"text": text, "creationDate": DAY, "modificationDate": DAY, "timeZone": "UTC", **more}
        (self.entries / name).write_bytes(plistlib.dumps(content))

    def make_conflict(self, own="at the sea", copy="at the lake"):
        uuid = self.ctl("entry", "add", own)
        self.write(SYNCTHING.format(uuid), copy)
        return uuid

    def trashed(self):
        return sorted(plistlib.loads(path.read_bytes())["text"] for path in self.trash.iterdir()) if self.trash.exists() else []

    def files(self):
        return sorted(path.name for path in self.entries.iterdir())

    def test_versions_are_listed_and_found(self):
        self.assertEqual(self.ctl("journal", "conflicts"), "")
        uuid = self.make_conflict()
        self.write(DROPBOX.format(uuid), "at the pond", tags=["trip"])
        (self.entries / f"{uuid} 2.plist").write_bytes(b"half of an ent")
        lines = self.ctl("journal", "conflicts").splitlines()
        self.assertEqual((lines[0], len(lines)), (uuid, 5))
        self.assertRegex(lines[1], r"^  1  this entry  .*  at the sea$")
        self.assertEqual(lines[2], "  2  Dropbox, laptop  2026-03-09T12:00:00Z  at the pond")
        self.assertEqual(lines[3], "  3  another program  damaged")
        self.assertIn("  4  Syncthing, ABCDEF2  ", lines[4])
        listed = self.ctl_json("journal", "conflicts")[0]
        self.assertEqual((listed["uuid"], [version["version"] for version in listed["versions"]]), (uuid, [1, 2, 3, 4]))
        self.assertEqual(listed["versions"][1]["tags"], ["trip"])
        self.assertEqual(listed["versions"][3]["made"], "2026-03-09T14:05:59")
        self.assertEqual(listed["merged"], {"text": "at the sea\nat the pond\nat the lake", "clash": True})
        self.assertEqual([entry["uuid"] for entry in self.ctl_json("entry", "search", "lake")], [uuid])
        self.assertIn("1 with several versions", self.ctl("journal", "check"))
        self.assertEqual(self.ctl_json("journal", "check")["conflicts"], 1)
        self.assertEqual(self.ctl("complete", "quilloctl", "journal", "conflicts", ""), f"{uuid}\tat the sea")

    def test_a_version_is_kept_and_the_others_go_to_the_trash(self):
        cases = [(["this"], "at the sea", ["at the lake"], []), (["that"], "at the lake", ["at the sea"], []),
                 (["merge"], "at the sea\nat the lake", ["at the lake", "at the sea"], []),
                 (["both"], "at the sea", [], ["at the lake"]),
                 (["that", "--version", "2"], "at the lake", ["at the sea"], [])]
        for words, kept, trashed, added in cases:
            with self.subTest(words):
                uuid = self.make_conflict()
                before, known = self.trashed(), set(self.files())
                self.assertIn(uuid, self.ctl("journal", "conflicts", "--resolve", *words, uuid[:13].lower()))
                self.assertEqual(self.read_entry(self.journal, uuid)["text"], kept)
                self.assertEqual(sorted(before + trashed), self.trashed())
                new = [self.read_entry(self.journal, name[:36])["text"] for name in set(self.files()) - known]
                self.assertEqual(new, added)
                self.assertEqual(self.ctl("journal", "conflicts"), "")

    def test_what_is_not_clear_is_refused(self):
        uuid = self.make_conflict()
        self.write(DROPBOX.format(uuid), "at the pond")
        before = self.files()
        self.assert_fails("journal", "conflicts", "--resolve", "that", uuid, says="name one with --version")
        self.assert_fails("journal", "conflicts", "--resolve", "that", "--version", "9", uuid, says="no version 9")
        self.assert_fails("journal", "conflicts", "--resolve", "this", "ffffffff", says="there is no entry ffffffff")
        for words in (["--resolve", "nothing"], ["--version", "1"], ["--resolve", "this", "--version", "2"]):
            self.assertEqual(self.run_ctl("journal", "conflicts", *words).returncode, 2)
        self.assertEqual(self.files(), before)
        self.ctl("journal", "conflicts", "--resolve", "that", "--version", "2")
        self.assertEqual(self.read_entry(self.journal, uuid)["text"], "at the pond")
        self.assertEqual(self.trashed(), ["at the lake", "at the sea"])

    def test_a_deleted_entry_takes_its_versions_along(self):
        uuid = self.make_conflict()
        self.ctl("entry", "delete", uuid)
        self.assertEqual(self.files(), [])
        self.assertEqual(self.trashed(), ["at the lake", "at the sea"])

    def test_what_can_be_mended_is_mended(self):
        same = self.ctl("entry", "add", "same")
        content = self.read_entry(self.journal, same)
        self.write(SYNCTHING.format(same), "same", creationDate=content["creationDate"], timeZone=content["timeZone"], tags=["trip"])
        damaged = self.make_conflict("to be damaged", "whole")
        (self.entries / f"{damaged}.plist").write_bytes(b"half of an ent")
        orphan = "0A1B2C3D-0000-4000-8000-00000000000F"
        self.write(SYNCTHING.format(orphan), "alone")
        undecided = self.make_conflict()
        for name in (f".{same}.plist.999999999.1.tmp", f".syncthing.{same}.plist.tmp", f"{same}_BASE_4711.plist"):
            (self.entries / name).write_bytes(plistlib.dumps({"text": name}))
        os.utime(self.entries / f".syncthing.{same}.plist.tmp", (1e9, 1e9))
        (self.journal / "Journal.plist").unlink()
        self.assert_fails("journal", "check", says="Journal.plist is not here yet")

        # A copy is left alone for some seconds, since a synchroniser may be about to put the entry beside it.
        lines, deadline = [], time.monotonic() + 60
        while not (self.entries / f"{orphan}.plist").exists() and time.monotonic() < deadline:
            lines += self.ctl("journal", "check", "--repair").splitlines()
        done = "\n".join(lines)
        for said in ("Journal.plist: it was missing; a new one was made", f"{same}.plist: merged with", f"{damaged}.plist: it was damaged and is in the Trash",
                     f"{orphan}.plist: it was missing", "left by a program that was ended", "left by another program, now in the Trash"):
            self.assertEqual(done.count(said), 1, (said, done))
        texts = {uuid: self.read_entry(self.journal, uuid)["text"] for uuid in (same, damaged, orphan, undecided)}
        self.assertEqual(texts, {same: "same", damaged: "whole", orphan: "alone", undecided: "at the sea"})
        self.assertEqual(self.read_entry(self.journal, same)["tags"], ["trip"])
        self.assertEqual(self.files(), sorted([f"{uuid}.plist" for uuid in texts] + [SYNCTHING.format(undecided), f"{same}_BASE_4711.plist"]))
        self.assertEqual(self.ctl("journal", "check", "--repair").splitlines(), [f"{self.journal}: 4 entries, all readable", "1 with several versions; see quilloctl journal conflicts"])

    def test_a_copy_of_the_journals_properties_takes_their_place(self):
        self.ctl("entry", "add", "somewhere")
        identifier = self.ctl_json("journal", "check")["identifier"]
        os.rename(self.journal / "Journal.plist", self.journal / "Journal (conflicted copy 2026-03-09 140559).plist")
        self.assertIn("has taken its place", self.ctl("journal", "check", "--repair"))
        self.assertEqual(self.ctl_json("journal", "check")["identifier"], identifier)
        # A damaged one goes to the Trash; and what is no journal is left alone.
        (self.journal / "Journal.plist").write_bytes(b"half of a prop")
        self.assertIn("it was damaged and is in the Trash", self.ctl("journal", "check", "--repair"))
        self.assertEqual((self.trash / "Journal.plist").read_bytes(), b"half of a prop")
        (self.journal / "Journal.plist").write_bytes(plistlib.dumps({"formatVersion": 99}))
        self.assert_fails("journal", "check", "--repair", says="newer version")
        (self.journal / "Journal.plist").unlink()
        next(self.entries.iterdir()).unlink()
        self.assert_fails("journal", "check", "--repair", says="not a journal")

    def test_files_for_synchronisers_go_along(self):
        names = {".stignore", ".gitignore", ".gitattributes", ".sync-exclude.lst"}
        self.assertEqual({path.name for path in self.journal.iterdir()}, names | {"Journal.plist", "Entries"})
        (self.home / "Elsewhere").mkdir()
        moved = self.ctl("journal", "move", str(self.home / "Elsewhere"))
        self.assertEqual({path for path in os.listdir(moved)}, names | {"Journal.plist", "Entries"})
        # One of an older version has none, and gets none.
        for name in names:
            os.remove(os.path.join(moved, name))
        self.ctl("entry", "add", "somewhere")
        self.ctl("journal", "check", "--repair")
        self.assertEqual(set(os.listdir(moved)), {"Journal.plist", "Entries"})
