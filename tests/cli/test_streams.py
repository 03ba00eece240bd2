"""quilloctl's standard streams: whatever comes in comes in whole, and what could not go out is told."""

import json
import os
import plistlib
import pty
import subprocess
import time
import tty

from quilloctl import QUILLOCTL, QuilloctlTestCase

MEBIBYTE = 1024 * 1024


class StreamsTest(QuilloctlTestCase):
    def setUp(self):
        super().setUp()
        self.journal = self.make_journal()

    def start(self, *words, **more):
        return subprocess.Popen([QUILLOCTL, "--home", self.home, *words], env=self.environment(NO_COLOR="1"), stderr=subprocess.PIPE, **more)

    def run_shell(self, script):
        return subprocess.run(["sh", "-c", script, "sh", QUILLOCTL, self.home], env=self.environment(), capture_output=True, timeout=30)

    def entries(self):
        return self.ctl_json("entry", "list")

    def text_of(self, uuid):
        return self.read_entry(self.journal, uuid)["text"]

    def test_an_entry_comes_whole_in_whatever_pieces(self):
        adder = self.start("entry", "add", "-", stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        for piece in (b"part one ", b"part \xc3", b"\xbc", b"\n" + b"x" * 300_000 + b"\n"):
            adder.stdin.write(piece)
            adder.stdin.flush()
            time.sleep(0.05)
        out, error = adder.communicate(timeout=30)
        self.assertEqual((adder.returncode, error), (0, b""))
        self.assertEqual(self.text_of(out.decode().strip()), "part one part ü\n" + "x" * 300_000)

        main, side = pty.openpty()
        adder = self.start("entry", "add", stdin=side, stdout=subprocess.PIPE)
        for piece in (b"typed\n", b"in lines\n", b"\x04"):
            os.write(main, piece)
            time.sleep(0.05)
        out, error = adder.communicate(timeout=30)
        os.close(side)
        os.close(main)
        self.assertEqual((adder.returncode, self.text_of(out.decode().strip())), (0, "typed\nin lines"))

    def test_what_cannot_be_an_entry_is_refused_and_none_is_made(self):
        for stdin, words, says in ((b"good \xff bad", ["-"], b"byte 5 "), (b"\xed\xa0\x80", ["-"], b"byte 0 "), (b"x" * 70_000 + b"\xc3", ["-"], b"byte 70000 "),
                                   (b"x" * (64 * MEBIBYTE + 1), ["-"], b"longer than 64 MiB"), (b"", [b"a\xc3"], b"byte 1 ")):
            adder = self.start("entry", "add", *words, stdin=subprocess.PIPE)
            _, error = adder.communicate(stdin, timeout=30)
            self.assertEqual((adder.returncode, error.count(b"\n")), (1, 1), error)
            self.assertIn(says, error)
        for unreadable in ("<&-", "</"):
            for command in ("entry add", "reminder next --batch"):
                result = self.run_shell(f'"$1" --home "$2" {command} {unreadable}')
                self.assertEqual((result.returncode, result.stderr.count(b"\n")), (1, 1), (command, unreadable, result.stderr))
        self.assertEqual(self.entries(), [])

    def test_a_batch_answers_each_line_in_order_whatever_the_others_hold(self):
        question = b'{"unit": 16, "count": 1, "base": "2014-03-10T20:00:00Z", "after": "2014-03-20T21:30:00Z", "base_zone": "Europe/Berlin", "zone": "Europe/Berlin"}'
        odd = (b"", b"\0", b"\xff" * 100, question + question, question[:-9], b"[" * 100_000, b'"' + b"9" * 1_000_000 + b'"')
        lines = [line for broken in odd for line in (broken, question + b" " * 100_000, b"\t" + question + b"\r")]
        batch = self.start("reminder", "next", "--batch", stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        out, error = batch.communicate(b"\n".join(lines), timeout=30)
        self.assertEqual((batch.returncode, error), (0, b""))
        answers = [json.loads(line) for line in out.splitlines()]
        self.assertEqual([list(answer) for answer in answers], [["error"], ["next"], ["next"]] * len(odd))
        self.assertEqual({str(answer["next"]) for answer in answers if "next" in answer}, {"['2014-03-21T20:00:00Z']"})

    def test_output_that_could_not_be_written_is_a_failure(self):
        self.ctl("entry", "add", "x" * 20_000)
        for command in ("--help", "--version", "entry list", "entry list --json", "settings get RemindersEnabled", "settings list --all", "shortcut show",
                        "entry add kept"):
            for full in (">/dev/full", ">&-"):
                result = self.run_shell(f'"$1" --home "$2" {command} {full}')
                self.assertEqual((result.returncode, result.stderr.count(b"\n")), (1, 1), (command, full, result.stderr))
                self.assertIn(b"the output could not be written - ", result.stderr)
            # Nobody reads: not worth a word.
            self.assertEqual(self.run_shell(f'"$1" --home "$2" {command} | true').stderr, b"")
        # A pipe whose reader has gone is told by an error, too, where the signal is ignored.
        self.assertEqual(self.run_shell('trap "" PIPE; { sleep 0.2; "$1" --home "$2" entry list --json; echo $? >&2; } | true').stderr, b"0\n")
        # What a command was to do is done all the same, and the settings are no output.
        self.assertEqual([entry["text"] for entry in self.entries()].count("kept"), 3)
        self.assertEqual(self.ctl("journal", "path"), str(self.journal))

    def test_a_terminal_gets_no_control_characters(self):
        text = "csi \x9b2J delete \x7f\ttab\nline"
        uuid = self.ctl("entry", "add", text)
        self.write_list({"Odd \x1b": "red \x1b[31m bell \x07 " + text, **self.read_list()}, plistlib.FMT_BINARY)

        def on_terminal(*words):
            main, side = pty.openpty()
            tty.setraw(side)
            done = self.start(*words, stdout=side)
            os.close(side)
            seen = b""
            try:
                while piece := os.read(main, 4096):
                    seen += piece
            except OSError:
                pass  # so a terminal's end is told
            os.close(main)
            done.communicate(timeout=30)
            return seen.decode()

        for words in (["entry", "show", uuid], ["entry", "list"], ["entry", "list", "--json"], ["settings", "list"], ["settings", "get", "Odd \x1b"]):
            self.assertNotRegex(on_terminal(*words), r"[\x00-\x08\x0b-\x1f\x7f-\x9f]", words)
        self.assertIn("\ttab\nline\n", on_terminal("entry", "show", uuid))
        # A file gets the text to the letter, and a list, which is for people, is clean everywhere.
        self.assertIn(text, self.ctl("entry", "show", uuid))
        self.assertEqual(self.entries()[0]["text"], text)
        self.assertNotIn("\x9b", self.ctl("entry", "list"))
