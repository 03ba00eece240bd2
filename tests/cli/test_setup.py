"""The first start from a terminal: by options, and by questions on a terminal of its own."""

import os
import plistlib
import pty
import select
import time

from quilloctl import QUILLOCTL, QuilloctlTestCase

# There is no session, so the agent cannot start: everything else is done.
NO_AGENT = "all of it is saved, but the agent does not run: there is no session bus on which it would answer\n"


class SetupTest(QuilloctlTestCase):
    def settings(self):
        return plistlib.loads(self.list.read_bytes()) if self.list.exists() else {}

    def assert_nothing_written(self):
        self.assertEqual(self.settings(), {})
        self.assertFalse((self.home / "Documents").exists())

    def in_terminal(self, *words, answers, ends=True):
        """What the program says to these answers, each given when it asks, and its exit code. `ends` is the end of the
        input after the last one."""
        process, terminal = pty.fork()
        if process == 0:
            os.execve(QUILLOCTL, ["quilloctl", "--home", str(self.home), "setup", *words], self.environment())
        said, left, deadline = b"", list(answers), time.monotonic() + 20
        while time.monotonic() < deadline and select.select([terminal], [], [], 20)[0]:
            try:
                data = os.read(terminal, 4096)
            except OSError:
                break
            said += data
            if said.endswith(b"]: "):
                os.write(terminal, (left.pop(0) + "\n").encode() if left else b"\x04")
        os.close(terminal)
        return said.decode(), os.waitstatus_to_exitcode(os.waitpid(process, 0)[1])

    def test_by_options(self):
        result = self.run_ctl("setup", "--journal", str(self.home / "new/Mine"), "--remind", "every 3 hours", "--from", "9:00", "--until", "17:00",
                              "--by", "window,sound", "--shortcut", "cmd+shift+K", "--no-login")
        self.assertEqual((result.returncode, result.stderr), (1, "quilloctl: " + NO_AGENT))
        self.assertEqual(self.ctl("journal", "path"), str(self.home / "new/Mine.quillojournal"))
        self.assertEqual(self.ctl("reminder", "show").split(",")[0], "Every 3 hours between 09:00 and 17:00")
        settings = self.settings()
        self.assertEqual({key: settings[key] for key in ("RemindersEnabled", "RemindersOpenMenuBar", "RemindersSendToNotificationCenter", "RemindersPlaySound",
                                                         "KeepEntryWindowOnScreen", "EscapeClosesEntryWindow", "AgentEnabled", "MenuEntryGlobalShortcut")},
                         {"RemindersEnabled": True, "RemindersOpenMenuBar": True, "RemindersSendToNotificationCenter": False, "RemindersPlaySound": True,
                          "KeepEntryWindowOnScreen": True, "EscapeClosesEntryWindow": True, "AgentEnabled": False,
                          "MenuEntryGlobalShortcut": {"keyCode": 40, "modifierFlags": 768}})

    def test_what_is_not_said_is_skipped_or_proposed(self):
        self.assertEqual(self.ctl_json("setup", "--remind", "every week at 20:00"),
                         {"journal": None, "created": False, "reminders": "Every week at 20:00.", "shortcut": None})
        self.assertNotIn("JournalPackageURL", self.settings())
        self.assertNotIn("AgentEnabled", self.settings())
        self.run_ctl("setup", "--yes")
        self.assertEqual(self.ctl("journal", "path"), str(self.home / "Documents/Journal.quillojournal"))
        self.assertTrue(self.settings()["AgentEnabled"])
        # Once more: what is there is taken, and nothing is made a second time.
        self.ctl("entry", "add", "kept")
        self.run_ctl("setup", "--yes")
        self.assertEqual(len(self.ctl_json("entry", "list")), 1)
        self.assertEqual([path.name for path in (self.home / "Documents").iterdir()], ["Journal.quillojournal"])
        self.assertEqual(self.ctl("reminder", "show").split(",")[0], "Every week at 20:00")

    def test_what_is_wrong_writes_nothing(self):
        (self.home / "taken.quillojournal").mkdir()
        for words, code, said in (
                ([], 2, "no terminal"), (["--by", "window"], 2, "--remind"), (["--from", "9:00", "--remind", "hour"], 2, "--until"),
                (["--journal", "a", "--existing", "b"], 2, "excludes"), (["--login", "--no-login"], 2, "excludes"), (["--journal", ""], 2, "a path is expected"),
                (["--journal", str(self.home / "taken")], 1, "something already"), (["--existing", str(self.home)], 1, "not a journal"),
                (["--remind", "sometimes"], 1, "is no reminder"), (["--remind", "every hour at 9:00"], 1, "for steps of days"),
                (["--remind", "day", "--from", "9:00", "--until", "10:00"], 1, "for steps of hours"), (["--remind", "every 0 days"], 1, "is no reminder"),
                (["--remind", "day", "--by", "smoke"], 1, "no way of reminding"), (["--remind", "day", "--by", ","], 1, "some way"),
                (["--shortcut", "J"], 1, "would be lost"), (["--yes", "--shortcut", "nothing"], 1, "no key")):
            with self.subTest(words):
                result = self.run_ctl("setup", *words)
                self.assertEqual(result.returncode, code, result.stderr)
                self.assertIn(said, result.stderr)
                self.assertEqual(result.stderr.count("\n"), 1)
                self.assert_nothing_written()

    def test_by_questions(self):
        # Stopped at the last question, or denied there.
        for last in ([], ["no"]):
            said, code = self.in_terminal(answers=["", "", "", "", "", *last])
            self.assertEqual(code, 1, said)
            self.assertIn("nothing was changed", said)
            self.assert_nothing_written()
        said, code = self.in_terminal(answers=["~/Mine", "every fortnight", "every 2 hours from 9:00 to 17:00", "sound", "-", "maybe", "no", "yes"])
        self.assertEqual(code, 1, said)
        self.assertIn('"every fortnight" is no reminder', said)
        self.assertIn("~/Documents/Journal.quillojournal]", said)
        self.assertIn(NO_AGENT.strip(), said)
        self.assertEqual(self.ctl("journal", "path"), str(self.home / "Mine.quillojournal"))
        settings = self.settings()
        self.assertEqual((settings["RemindersInterval"], settings["RemindersPlaySound"], settings["RemindersOpenMenuBar"]), (2, True, False))
        self.assertNotIn("MenuEntryGlobalShortcut", settings)
        # What an option says is not asked.
        said, _ = self.in_terminal("--existing", str(self.home / "Mine.quillojournal"), "--login", answers=["-", "-", "no"])
        self.assertEqual(said.count("]: "), 3, said)
