"""Finding, showing and changing entries: questions to the journal, identifiers, the editor, what a terminal gets."""

import datetime
import fcntl
import json
import os
import pty
import re
import struct
import subprocess
import termios

from quilloctl import QUILLOCTL, QuilloctlTestCase

TODAY = datetime.date.today()


class EntriesTest(QuilloctlTestCase):
    def setUp(self):
        super().setUp()
        self.journal = self.make_journal()

    def add(self, text, on):
        return self.ctl("entry", "add", text, "--on", str(on))

    def texts(self, *words):
        return [entry["text"] for entry in self.ctl_json("entry", *words)]

    def test_an_entry_of_another_day(self):
        for on, created in (("2014-03-10", "2014-03-10T12:00:00Z"), ("2014-03-10T21:30", "2014-03-10T21:30:00Z"), ("2014-03-10T21:30:00+01:00", "2014-03-10T20:30:00Z"),
                            ("yesterday", f"{TODAY - datetime.timedelta(1)}T12:00:00Z")):
            self.assertEqual(self.ctl_json("entry", "add", "text", "--on", on)["creationDate"], created)
        before = self.ctl("entry", "list")
        for on in ("2014-03", "2014-02-30", "soon", "2014-03-10T25:00", "0000-01-01", "12014-01-01"):
            self.assert_fails("entry", "add", "text", "--on", on, says=on)
        self.assertEqual(self.ctl("entry", "list"), before)
        self.assertEqual(self.run_ctl("entry", "add", "text", "--on", "").returncode, 2)

    def test_a_list_has_what_is_asked_for(self):
        for day, text in (("2023-12-31", "a #work"), ("2024-02-28", "b #Home"), ("2024-02-29", "c #work #home"), ("2024-03-01", "d")):
            self.add(text, day)
        cases = [
            ([], "dcba"), (["--reverse"], "abcd"), (["--limit", "2"], "dc"), (["--reverse", "--limit", "1"], "a"), (["--on", "2024-02-29"], "c"),
            (["--on", "2024-02"], "cb"), (["--on", "2024"], "dcb"), (["--since", "2024-02-29"], "dc"), (["--before", "2024-02-29"], "ba"), (["--before", "2024"], "a"),
            (["--since", "2024-02", "--before", "2024-03"], "cb"), (["--on", "2024-02", "--since", "2024-02-29"], "c"), (["--since", "2025", "--before", "2024"], ""),
            (["--tag", "WORK"], "ca"), (["--tag", "#home"], "cb"), (["--tag", "work", "--tag", "home"], "c"), (["--tag", "wor"], ""),
        ]
        for words, expected in cases:
            with self.subTest(words):
                self.assertEqual("".join(text[0] for text in self.texts("list", *words)), expected)
                self.assertEqual(len(self.ctl("entry", "ls", *words).splitlines()), len(expected))
        self.assertIn("\n\n    c #work #home\n\n", self.ctl("entry", "list", "--long"))
        self.assert_fails("entry", "list", "--on", "someday", says="someday")
        self.assertEqual(self.ctl("entry", "tags"), "2  home\n2  work")
        self.assertEqual(self.ctl_json("entry", "tags", "--limit", "1"), [{"tag": "home", "entries": 2}])

    def test_a_search_shows_what_matched(self):
        self.add("Rain over the harbour, and a café by the water " + "and so on " * 100 + "Harbours at last #sea", "2024-05-01")
        self.add("No rain\non the quay", "2024-05-02")
        self.assertEqual(len(self.texts("search", "rain")), 2)
        for words, count in ((["harb"], 1), (["CAFE", "water"], 1), (['"rain on"'], 1), (["rain tag:sea"], 1), (["--", "rain", "-harbour"], 1), (["rain", "since:2024-05-02"], 1),
                             (["nowhere"], 0), (["--limit", "1", "rain"], 1)):
            self.assertEqual(len(self.texts("search", *words)), count, words)
        found = self.ctl_json("entry", "search", "harbours")[0]
        matched = [found["text"][match["start"]:match["start"] + match["length"]] for match in found["matches"]]
        self.assertEqual(matched, ["Harbours"])
        self.assertIn("Harbours at last", found["excerpt"])
        lines = self.ctl("entry", "search", "rain").splitlines()
        self.assertEqual((len(lines), lines[1]), (4, "    No rain on the quay"))
        self.assertRegex(self.ctl("entry", "search", "harbours"), r"#sea\n    ….*Harbours at last")
        for query in ("on:someday", "tag:", "before:2024 since:2025", "?!"):
            self.assert_fails("entry", "search", query)
        self.assertEqual(self.run_ctl("entry", "search").returncode, 2)
        # The files are what counts, whatever the index knows.
        file = next((self.journal / "Entries").iterdir())
        file.write_bytes(b"torn")
        result = self.run_ctl("entry", "search", "rain")
        self.assertEqual((result.returncode, len(result.stdout.splitlines()), result.stderr.count("\n")), (0, 2, 1), result)
        self.assertIn(file.name, result.stderr)

    def test_this_day_and_all_the_days(self):
        day = datetime.date(2023, 3, 1)
        self.assertEqual(self.ctl_json("journal", "stats")["longestStreak"], {"days": 0, "first": None, "last": None})
        for distance, text in ((0, "one two"), (1, "three 日本 😀"), (2, "four's"), (2, "five"), (40, "six")):
            self.add(text, day + datetime.timedelta(distance))
        stats = self.ctl_json("journal", "stats")
        self.assertEqual({key: stats[key] for key in ("entries", "words", "days")}, {"entries": 5, "words": 9, "days": 4})
        self.assertEqual(stats["longestStreak"], {"days": 3, "first": "2023-03-01", "last": "2023-03-03"})
        self.assertEqual([(month["month"], month["entries"]) for month in stats["months"]], [("2023-03", 4), ("2023-04", 1)])
        self.add("long before", "1999-12-31")
        lines = self.ctl("journal", "stats").splitlines()
        self.assertEqual([line[:7] for line in lines[5:]], ["1999-12", "  ...", "2023-03", "2023-04"])
        bars = [line.count("█") for line in lines[5:]]
        self.assertTrue(bars[2] > 3 * bars[3] > 0, bars)

        self.assertEqual(self.texts("on-this-day"), [])
        last_leap_year = next(year for year in range(TODAY.year - 1, 0, -1) if year % 4 == 0)
        self.add("that day", TODAY.replace(year=last_leap_year))
        self.add("the day before", TODAY.replace(year=last_leap_year) - datetime.timedelta(1))
        self.add("today", TODAY)
        self.assertEqual(self.texts("on-this-day"), ["that day"])

    def test_an_identifier_is_as_long_as_needed(self):
        names = ["4D2A0000-0000-4000-8000-000000000000", "4D2B0000-0000-4000-8000-000000000000", "4D2B1000-0000-4000-8000-000000000000"]
        for number, name in enumerate(names):
            self.write_entry(self.journal, name, {"text": str(number), "creationDate": datetime.datetime(2020, 1, 3 - number)})
        for word, text in (("4D2A", "0"), ("4d2a", "0"), ("4d2b0", "1"), (names[2], "2"), ("-1", "0")):
            self.assertEqual(self.ctl_json("entry", "show", word)["text"], text, word)
        self.assertEqual(self.assert_fails("entry", "show", "4d2b"), f'quilloctl: "4d2b" is the beginning of 2 entries: {names[1]}, {names[2]}\n')
        for word in ("5", "4D2A0000-0000-4000-8000-00000000000F", "g", "", "../Journal", "4D2A*", names[0] + "0", "-2"):
            self.assert_fails("entry", "show", word)
        for words in ([], ["-1", "4d2a"], ["4d2a", "4d2b0"]):
            self.assertEqual(self.run_ctl("entry", "show", *words).returncode, 2, words)
        (self.journal / "Entries" / f"{names[0]}.plist").write_bytes(b"torn")
        self.ctl("entry", "rm", "4d2a", "--permanently")
        self.ctl("entry", "delete", "-1", "--permanently")
        self.assertEqual(self.texts("list"), ["2"])
        self.assertEqual(self.run_ctl("open-url", "quillo://edit?entryId=4d2b1", VISUAL="true").returncode, 1)

        editor = self.home / "edit"
        editor.write_text('#!/bin/sh\ngrep -q "^2$" "$1" && echo "after #tag" >"$1"')
        editor.chmod(0o700)
        for variable in ("VISUAL", "EDITOR"):
            self.write_entry(self.journal, names[2], {"text": "2"})
            self.assertEqual(json.loads(self.ctl("--json", "entry", "edit", "4d2b", **{variable: f'"{editor}"'}))["tags"], ["tag"])
            self.assertEqual(self.texts("list"), ["after #tag"])

    def test_a_mistyped_command_is_told_which_was_meant(self):
        for words, meant in ((["entyr"], "entry"), (["entry", "serch", "x"], "search"), (["journal", "stat"], "stats"), (["entry", "deltee"], "delete")):
            result = self.run_ctl(*words)
            self.assertEqual(result.returncode, 2)
            self.assertIn(f"did you mean {meant}?", result.stderr)
        self.assertNotIn("did you mean", self.run_ctl("fortnight").stderr + self.run_ctl("complet").stderr)

    def on_terminal(self, *words, rows=10, **more):
        """What a terminal of that many rows gets, and what the error stream."""
        main, side = pty.openpty()
        fcntl.ioctl(side, termios.TIOCSWINSZ, struct.pack("HHHH", rows, 80, 0, 0))
        done = subprocess.Popen([QUILLOCTL, "--home", self.home, *words], env=self.environment(**{"TERM": "xterm", **more}), stdin=side, stdout=side,
                                stderr=subprocess.PIPE)
        os.close(side)
        seen = b""
        try:
            while piece := os.read(main, 4096):
                seen += piece
        except OSError:
            pass  # so a terminal's end is told
        os.close(main)
        _, error = done.communicate(timeout=30)
        self.assertEqual((done.returncode, error), (0, b""))
        return seen.decode().replace("\r\n", "\n")

    def test_a_terminal_gets_colours_and_a_pager_where_it_is_too_short(self):
        for number in range(12):
            self.add(f"rain {number} " + "x" * (200 if number == 0 else 0), f"2024-05-{number + 1:02}")
        pager = self.home / "pager"
        pager.write_text('#!/bin/sh\necho "paged $1"; cat')
        pager.chmod(0o700)
        paged = {"PAGER": f'"{pager}" -x'}
        for words, rows, is_paged in ((["list"], 10, True), (["list", "--limit", "3"], 10, False), (["search", "rain", "--limit", "3"], 7, False),
                                      (["search", "rain", "--limit", "3"], 6, True), (["list", "--json", "--limit", "1"], 10, True), (["tags"], 10, False)):
            seen = self.on_terminal("entry", *words, rows=rows, **paged)
            self.assertEqual(seen.startswith("paged -x\n"), is_paged, (words, rows, seen))
        whole = self.ctl("entry", "list") + "\n"
        plain = re.sub("\x1b\\[[0-9;]*m", "", self.on_terminal("entry", "list", **paged))
        self.assertEqual(plain, "paged -x\n" + whole)
        for none in ("", "/nonexistent/pager"):
            self.assertEqual(self.on_terminal("entry", "list", NO_COLOR="1", PAGER=none), whole)
        # A pager that is left, or closes its input, early.
        self.assertEqual(self.on_terminal("entry", "list", "--long", PAGER="true"), "")

        self.assertIn("\x1b[1;31mrain\x1b[m", self.on_terminal("entry", "search", "rain", "--limit", "1", **paged))
        for quiet in ({"NO_COLOR": "1"}, {"TERM": "dumb"}):
            self.assertNotIn("\x1b", self.on_terminal("entry", "search", "rain", **{**paged, **quiet}))
