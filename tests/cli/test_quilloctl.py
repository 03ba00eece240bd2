"""quilloctl's settings, shortcuts, journals, entries and reminders."""

import datetime
import json
import plistlib
import shutil

from quilloctl import QuilloctlTestCase


class QuilloctlTest(QuilloctlTestCase):
    def test_help_and_version(self):
        for words in (["--help"], ["settings", "--help"], ["entry", "add", "--help"], ["--version"]):
            self.assertTrue(self.ctl(*words))
        for words in ([], ["settings"], ["nonsense"], ["settings", "set", "K"], ["settings", "set", "K", "1", "--type", "odd"],
                      ["entry", "list", "--limit", "x"]):
            self.assertEqual(self.run_ctl(*words).returncode, 2, words)
        for words, says in ((["nonsense"], "nonsense"), (["agent", "nonsense"], "nonsense"), (["entry", "list", "--limit", "0"], "from 1"),
                            (["settings", "get"], "KEY"), (["\x1b[31m\x9b"], "\ufffd[31m\ufffd")):
            error = self.run_ctl(*words).stderr
            self.assertRegex(error, r"\Aquilloctl: .{,200}\n\Z")
            self.assertIn(says, error)
        self.assertFalse(self.list.exists())

    def test_the_common_options_stand_anywhere(self):
        path = f"{self.make_journal()}"
        for words in (["--json", "journal", "path"], ["journal", "--json", "path"], ["journal", "path", "--json"]):
            self.assertEqual(json.loads(self.ctl(*words)), path)
        other = self.home / "other"
        other.mkdir()
        self.assert_fails("journal", "path", "--home", str(other), says="no journal")
        self.assertEqual(self.run_ctl("journal", "path", "--home", "").returncode, 2)

    def test_settings_take_the_keys_own_kind(self):
        cases = [
            # key, words, what plistlib reads, what `get` prints
            ("RemindersEnabled", ["yes"], True, "true"),
            ("RemindersInterval", ["18446744073709551615"], 2**64 - 1, "18446744073709551615"),
            ("RemindersValidPeriod", ["28800"], 28800.0, "28800"),
            ("RemindersBaseDate", ["2014-03-10T21:00:00+01:00"], datetime.datetime(2014, 3, 10, 20), "2014-03-10T20:00:00Z"),
            ("JournalFileSharedBookmarkData", ["AAEC"], b"\0\1\2", "AAEC"),
            ("MenuEntryGlobalShortcut", ['{"keyCode": 38, "modifierFlags": 768}'], {"keyCode": 38, "modifierFlags": 768},
             '{"keyCode":38,"modifierFlags":768}'),
            ("QLServerURL", ["https://x.example/ü"], "https://x.example/ü", "https://x.example/ü"),
            ("Unknown", ["text", "--force"], "text", "text"),
            ("Unknown2", ["-5", "--type", "int", "--force"], -5, "-5"),
            ("Unknown3", ["[1, 2.5, true, \"x\"]", "--type", "json", "--force"], [1, 2.5, True, "x"], '[1,2.5,true,"x"]'),
            ("Lines", ["a\nb", "--force"], "a\nb", "a\\nb"),
        ]
        for key, words, stored, printed in cases:
            with self.subTest(key):
                self.ctl("settings", "set", key, *words)
                self.assertEqual(self.read_list()[key], stored)
                self.assertIs(type(self.read_list()[key]), type(stored))
                self.assertEqual(self.ctl("settings", "get", key), printed)
        listed = self.ctl_json("settings", "list")
        self.assertEqual(listed["RemindersEnabled"], True)
        self.assertEqual(listed["RemindersBaseDate"], "2014-03-10T20:00:00Z")
        self.ctl("settings", "remove", "Unknown")
        self.assert_fails("settings", "get", "Unknown", says="no setting \"Unknown\"")

    def test_a_setting_that_is_not_set_reads_as_its_default(self):
        for key, printed, value in (("AddLocationAutomatically", "true", True), ("RemindersPlaySound", "false", False), ("RemindersEnabled", "true", True),
                                    ("RemindersInterval", "0", 0), ("QLServerURL", "https://quilloapp.example", "https://quilloapp.example")):
            self.assertEqual(self.ctl("settings", "get", key), printed)
            self.assertEqual(self.ctl_json("settings", "list", "--all")[key], value)
        for key in ("JournalPackageURL", "FontSize"):
            self.assert_fails("settings", "get", key, says=key + " is not set")
        self.assertEqual(self.ctl("settings", "list"), "")
        self.assertIn("nothing is sent anywhere", self.ctl("settings", "set", "SendUsageData", "no"))
        lines = self.ctl("settings", "list", "--all").splitlines()
        for line in ("SendUsageData = false", "AddLocationAutomatically = true (default)", "JournalPackageURL is not set; no journal is configured", "FontSize is not set"):
            self.assertIn(line, lines)

    def test_bad_settings_change_nothing(self):
        self.ctl("settings", "set", "K", "1", "--force")
        before = self.list.read_bytes()
        for words, says in [
            (["RemindersEnabled", "perhaps"], "true or false"),
            (["RemindersInterval", "1.5"], "whole number"),
            (["RemindersInterval", "18446744073709551616"], "whole number"),
            (["RemindersBaseDate", "2014-03-10T21:00:00"], "date"),
            (["MenuEntryGlobalShortcut", "[1]"], "JSON object"),
            (["K", "{", "--type", "json", "--force"], "JSON"),
            (["JournalPackageURL", ""], "absolute path"),
            (["RemindersEnable", "yes"], "the nearest is RemindersEnabled; --force"),
            (["playsound", "yes"], "RemindersPlaySound"),
            (["QLServerURL", " "], "absolute URL"),
            (["JournalFileBookmarkData", "AAEC"], "not a shared setting"),
            (["", "x"], "empty"),
        ]:
            self.assert_fails("settings", "set", *words, says=says)
        self.assert_fails("settings", "remove", "RemindersEnable", says="RemindersEnabled")
        self.assertEqual(self.list.read_bytes(), before)

    def test_a_shortcut_is_read_in_every_spelling_without_a_display(self):
        cmd, shift, opt, ctrl = 0x100, 0x200, 0x800, 0x1000
        cases = [
            # words, key code, modifiers, what is printed
            ("cmd+shift+J", 38, cmd | shift, "⌘⇧J"), ("⌘⇧J", 38, cmd | shift, "⌘⇧J"), ("⇧ ⌘ j", 38, cmd | shift, "⌘⇧J"),
            ("⌘+shift+j", 38, cmd | shift, "⌘⇧J"), ("super+f13", 105, cmd, "⌘F13"), ("Win + F1", 122, cmd, "⌘F1"),
            ("CTRL+Alt+space", 49, ctrl | opt, "⌥⌃Space"), ("control+option+command+shift+k", 40, cmd | opt | ctrl | shift, "⌘⌥⌃⇧K"),
            ("meta+return", 36, cmd, "⌘↩"), ("⌘↩", 36, cmd, "⌘↩"), ("opt+page up", 116, opt, "⌥Page Up"), ("opt+PgUp", 116, opt, "⌥Page Up"),
            ("cmd+pad 7", 89, cmd, "⌘Pad 7"), ("cmd+pad +", 69, cmd, "⌘Pad +"), ("cmd+=", 24, cmd, "⌘="), ("cmd+-", 27, cmd, "⌘-"),
            ("shift+←", 123, shift, "⇧←"), ("shift+left", 123, shift, "⇧←"), ("cmd+cmd+j", 38, cmd, "⌘J"), ("cmd+<", 10, cmd, "⌘<"),
        ]
        for words, code, modifiers, printed in cases:
            with self.subTest(words):
                in_words, _, in_signs = self.ctl("shortcut", "set", words).partition("  ")
                self.assertEqual(in_signs, printed)
                self.assertEqual(self.read_list()["MenuEntryGlobalShortcut"], {"keyCode": code, "modifierFlags": modifiers})
                self.assertTrue(in_words.isascii())
                self.assertEqual(self.ctl("shortcut", "set", in_words), f"{in_words}  {printed}")
        self.assertEqual(self.ctl_json("shortcut", "set", "cmd+opt+ctrl+shift+↩"),
                         {"keyCode": 36, "modifierFlags": cmd | opt | ctrl | shift, "text": "⌘⌥⌃⇧↩", "words": "Super+Alt+Ctrl+Shift+Return"})

        before = self.list.read_bytes()
        for words, says in [("J", "\"J\" alone would be lost for typing"), ("shift+j", "lost for typing"), ("shift+space", "lost for typing"), ("F13", "alone"), ("cmd", "no key in it"), ("⌘⇧", "no key in it"),
                            ("", "no key in it"), (" + ", "no key"), ("cmd+", "no key in it"), ("cmd+foo", "no key \"foo\""), ("cmd+j+k", "no key \"j+k\""),
                            ("hyper+j", "no key \"hyper+j\""), ("cmd+right ⌘", "is a modifier"), ("cmd+\ufffd", "no key"), ("cmd+" + "x" * 100000, "no key"),
                            ("⌘" * 40000, "no key in it")]:
            self.assert_fails("shortcut", "set", words, says=says)
        self.assertEqual(self.list.read_bytes(), before)

        self.assertEqual(self.ctl("shortcut", "clear"), "(None)")
        self.assertNotIn("MenuEntryGlobalShortcut", self.read_list())
        self.assertEqual(self.ctl("--json", "shortcut", "show"), "null")
        # What somebody else has written is shown as the agent takes it.
        for stored, printed in (({"keyCode": 2**32 + 38, "modifierFlags": -1}, "Super+Alt+Ctrl+Shift+J  ⌘⌥⌃⇧J"), ({"keyCode": "38", "modifierFlags": 0}, "(None)"), ({}, "(None)")):
            self.write_list({"MenuEntryGlobalShortcut": stored}, plistlib.FMT_XML)
            self.assertEqual(self.ctl("shortcut", "show"), printed)
        self.assert_fails("agent", "toggle", says="quilloctl: no agent is running in this session\n")
        self.assert_fails("post", "Anything", says="session bus")
        self.assert_fails("post", "", says="cannot be empty")

    def test_other_writers_values_survive_a_set(self):
        content = {f"key {i} ü": value for i, value in enumerate([
            True, 0, -1, 127, 128, 65535, 65536, 2**32, 2**63 - 1, 2**63, 2**64 - 1, -2**63, 0.0, 1.0, -0.5, 1e-300, 1e300, float("inf"),
            "", "ümlaut 😀", " lead and trail ", "<&>\"'", "tab\tline\nend", "x" * 5000, b"", bytes(range(256)), datetime.datetime(2001, 1, 1),
            datetime.datetime(1582, 10, 15), datetime.datetime(9999, 12, 31, 23, 59, 59), [], {}, [[]], {"a": []}, [1, "1", 1.0, True],
            {"ü": {"n": [1, [2, [3]]]}}, list(range(1000)), {str(i): i for i in range(300)}, ["same"] * 300, "123", "a" * 14, "a" * 15,
            "é" * 15, {"": "empty key"}, "\u2028", "\ufeffbom"])}
        for fmt in (plistlib.FMT_XML, plistlib.FMT_BINARY):
            with self.subTest(fmt):
                self.write_list(content, fmt)
                self.ctl("settings", "set", "mine", "1", "--type", "int", "--force")
                raw = self.list.read_bytes()
                self.assertEqual(raw.startswith(b"bplist00"), fmt == plistlib.FMT_BINARY)
                after = plistlib.loads(raw)
                self.assertEqual(after.pop("mine"), 1)
                self.assertEqual(after, content)
                for key, value in content.items():
                    self.assertIs(type(after[key]), type(value), key)

    def test_a_bad_list_is_one_line_and_stays(self):
        self.list.parent.mkdir(parents=True)
        for bad in (b"<plist><dict><key>torn", b"bplist00", b"{ unfinished"):
            self.list.write_bytes(bad)
            self.assert_fails("settings", "set", "RemindersEnabled", "yes", says="cannot be read")
            self.assert_fails("settings", "list", says=f"cannot be read - {self.list}: ")
            self.assertEqual(self.list.read_bytes(), bad)

    def test_a_setter_that_cannot_save_says_why_and_does_nothing_else(self):
        journal = self.ctl("journal", "create", str(self.home / "J"))
        # Read, but written by nobody.
        unwritable = b"{ Name = old; }"
        self.list.parent.mkdir(parents=True, exist_ok=True)
        self.list.write_bytes(unwritable)
        self.assertEqual(self.ctl("settings", "get", "Name"), "old")
        for words in (["settings", "set", "Name", "new", "--force"], ["settings", "remove", "Name"], ["shortcut", "set", "cmd+j"],
                      ["journal", "set", journal], ["reminder", "set", "--every", "day"], ["reminder", "on"], ["reminder", "off"]):
            reason = self.assert_fails(*words, says=f"not saved - {self.list}: ")
            self.assertIn("OpenStep", reason)
        self.assertEqual(self.list.read_bytes(), unwritable)
        self.assertFalse((self.home / ".config").exists(), "a login item or a bookmark of what was not saved")

    def test_journal_and_entries(self):
        self.assert_fails("journal", "path", says="no journal")
        self.assert_fails("entry", "add", "x", says="")
        for words in (["create", ""], ["set", ""]):
            self.assert_fails("journal", *words, says="cannot be empty")
        journal = self.make_journal()
        self.assertEqual(journal.suffix, ".quillojournal")
        self.assertEqual(self.ctl("journal", "path"), str(journal))
        self.assertEqual(self.list.stat().st_mode & 0o077, 0)

        first = self.ctl("entry", "add", "Walked home #evening #Evening #ümlaut")
        second = self.ctl("entry", "add", "-", stdin="from\nstandard input #x\n")
        for blank in ("", " \n\t"):
            self.assert_fails("entry", "add", blank, stdin="not read", says="no text to add")
            self.assert_fails("entry", "add", stdin=blank, says="no text to add")
        shown = self.ctl_json("entry", "show", first)
        self.assertEqual(shown["text"], "Walked home #evening #Evening #ümlaut")
        self.assertEqual(shown["tags"], ["evening", "ümlaut"])
        self.assertIn("standard input", self.ctl("entry", "show", second))
        stored = self.read_entry(journal, first)
        self.assertEqual(stored["uuid"], first)
        self.write_entry(journal, first, {**stored, "creationDate": datetime.datetime(2014, 3, 10), "timeZone": "Asia/Kathmandu"})
        self.assertIn("2014-03-10T05:45:00+05:45 Asia/Kathmandu\n", self.ctl("entry", "show", first))
        self.assertIn(f"{first}  2014-03-10T05:45:00+05:45  Walked", self.ctl("entry", "list"))
        self.assertEqual([entry["uuid"] for entry in self.ctl_json("entry", "list")], [second, first])
        self.assertEqual(len(self.ctl("entry", "list", "--limit", "1").splitlines()), 1)
        self.assertIn("2 entries", self.ctl("journal", "check"))

        self.ctl("entry", "delete", first)
        trashed = list((self.home / ".local/share/Trash/files").iterdir())
        self.assertEqual([p.name for p in trashed], [f"{first}.plist"])
        self.ctl("entry", "delete", second, "--permanently")
        self.assertEqual(len(list((self.home / ".local/share/Trash/files").iterdir())), 1)
        self.assertEqual(self.ctl_json("entry", "list"), [])
        self.assert_fails("entry", "show", first, says=first)
        self.assert_fails("entry", "delete", "../../etc/passwd", says="passwd")
        self.assert_fails("entry", "show", "../Journal", says="Journal")
        self.ctl("settings", "set", "ShouldAddHashtags", "2")
        entry = self.ctl("entry", "add", "no #tags")
        self.assertEqual(self.ctl_json("entry", "show", entry)["tags"], [])

    def test_bad_journals_name_the_path_and_the_reason(self):
        journal = self.make_journal()
        plain = self.home / "plain"
        plain.mkdir()
        newer = self.home / "newer.quillojournal"
        shutil.copytree(journal, newer)
        content = plistlib.loads((newer / "Journal.plist").read_bytes())
        version_key = next(k for k in content if "ersion" in k)
        content[version_key] = 99
        (newer / "Journal.plist").write_bytes(plistlib.dumps(content))
        for path, reason in [(self.home / "gone", ""), (plain, ""), (newer, "newer")]:
            with self.subTest(path):
                self.assertIn(reason, self.assert_fails("journal", "set", str(path), says=str(path)))
        self.assertEqual(self.ctl("journal", "path"), str(journal))
        self.assert_fails("journal", "create", str(journal), says=str(journal))
        in_new_folder = self.home / "Documents" / "K.quillojournal"
        self.assertEqual(self.ctl("journal", "create", str(in_new_folder)), str(in_new_folder))
        self.assert_fails("journal", "create", str(self.home / "a" / "b" / "L"), says="b")
        (journal / "Entries" / "00000000-0000-4000-8000-000000000000.plist").write_bytes(b"torn")
        self.assert_fails("journal", "check", says="00000000-0000-4000-8000-000000000000")
        # No folder of entries is an empty journal; one that cannot be read is a failure.
        shutil.rmtree(journal / "Entries")
        self.assertEqual(self.ctl("entry", "list"), "")
        (journal / "Entries").write_text("")
        for words in (["entry", "list"], ["--json", "entry", "list"]):
            self.assert_fails(*words, says=str(journal / "Entries"))

    def test_reminders(self):
        self.assert_fails("reminder", "show", says="no reminder is set")
        said = self.ctl("reminder", "set", "--every", "3 hours", "--from", "09:00", "--until", "17:00",
                        "--starting", "2014-03-10T21:00", "--zone", "Europe/Berlin")
        self.assertIn("Every 3 hours between 09:00 and 17:00, next: ", said)
        # On a fresh home they are on, and nothing delivers them; a sound alone does not.
        self.assertNotIn("reminders are off", said)
        self.ctl("settings", "set", "RemindersPlaySound", "yes")
        for words in (["show"], ["on"], ["set", "--every", "day"]):
            self.assertIn("settings set RemindersOpenMenuBar yes", self.ctl("reminder", *words), words)
        shown = self.ctl_json("reminder", "show")
        self.assertTrue(shown["RemindersEnabled"])
        self.assertFalse(shown["RemindersOpenMenuBar"] or shown["RemindersSendToNotificationCenter"])
        self.ctl("settings", "set", "RemindersSendToNotificationCenter", "yes")
        self.assertNotIn("delivery", self.ctl("reminder", "show") + self.ctl("reminder", "on"))
        self.ctl("reminder", "set", "--every", "3 hours", "--from", "09:00", "--until", "17:00",
                 "--starting", "2014-03-10T21:00", "--zone", "Europe/Berlin")
        stored = self.read_list()
        self.assertEqual((stored["RemindersFrequency"], stored["RemindersInterval"], stored["RemindersValidPeriod"]), (32, 3, 28800))
        self.assertEqual(stored["RemindersBaseDate"], datetime.datetime(2014, 3, 10, 8))
        self.assertEqual(stored["RemindersBaseDateTimezone"], "Europe/Berlin")
        self.assertIn("Every day at 21:00", self.ctl("reminder", "set", "--every", "day", "--starting", "2014-03-10T21:00",
                                                     "--zone", "UTC"))
        shown = self.ctl_json("reminder", "show")
        self.assertEqual((shown["RemindersFrequency"], shown["RemindersInterval"], len(shown["next"])), (16, 1, 3))
        self.assertEqual(len(self.ctl("reminder", "next", "-n", "5", "--after", "2014-03-20T22:30:00Z").splitlines()), 5)
        before = self.list.read_bytes()
        for words in (["--every", "fortnight"], ["--every", "0 days"], ["--every", "day", "--zone", "Nowhere/Land"],
                      ["--every", "day", "--starting", "soon"], ["--every", "day", "--from", "09:00", "--until", "10:00"],
                      ["--every", "hour", "--from", "17:00", "--until", "09:00"]):
            self.assert_fails("reminder", "set", *words)
        self.assertEqual(self.list.read_bytes(), before)
        self.ctl("reminder", "off")
        self.assertIn("reminders are off", self.ctl("reminder", "show"))
        self.ctl("reminder", "on")
        self.assertEqual(self.read_list()["RemindersEnabled"], True)
