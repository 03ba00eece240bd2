"""What follows on a command line: as the program tells it, and as bash gets it."""

import re
import shlex
import subprocess
import tempfile
from pathlib import Path

from quilloctl import QUILLOCTL, QuilloctlTestCase

COMPLETION = Path(__file__).parents[2] / "quilloctl/completion/quilloctl.bash"


class CompletionTest(QuilloctlTestCase):
    def offered(self, *words):
        lines = self.ctl("complete", "quilloctl", *words).splitlines()
        return [line.split("\t")[0] for line in lines]

    def in_bash(self, line):
        """What bash would offer at the end of the line, which it splits into words as it does."""
        line = line.replace("quilloctl", self.program, 1)
        words = [word for part in line.split(" ") for word in re.split("([:=])", part) if word or not part]
        script = (f'source "{COMPLETION}"; COMP_LINE={shlex.quote(line)}; COMP_POINT=${{#COMP_LINE}}; '
                  f'COMP_WORDS=({shlex.join(words)}); COMP_CWORD={len(words) - 1}; _quilloctl; printf "%s\n" "${{COMPREPLY[@]}}"')
        return subprocess.run(["bash", "-c", script], capture_output=True, text=True,
                              check=True).stdout.splitlines()

    def test_every_command_is_offered(self):
        def commands(*words):
            listed = self.ctl(*words, "--help").split("Subcommands:\n")[1].split("\n\n")[0]
            return {name for line in listed.splitlines() if line.startswith("  ") and line[2] != " "
                    for name in re.sub("[(),]", " ", line[2:].split("  ")[0]).split()}
        self.assertIn("entry", commands())
        for words in [[], *([command] for command in commands() - {"open-url", "post", "setup", "export", "import"})]:
            self.assertEqual(set(self.offered(*words, "")), commands(*words), words)

    def test_words_that_can_follow(self):
        self.make_journal()
        first = self.ctl("entry", "add", "Monday #work #ümlaut", "--on", "2020-01-01")
        second = self.ctl("entry", "add", "Tuesday\n#work", "--on", "2020-01-02")
        self.ctl("settings", "set", "Odd key", "1", "--force")
        cases = [
            (["entry", "show", ""], [second, first]), (["entry", "rm", first[:9].lower()], [first]), (["entry", "show", "x"], []),
            (["entry", "show", "--json", first[:9]], [first]), (["entry", "list", "--limit", "1", "--r"], ["--reverse"]),
            (["entry", "list", "--tag", ""], ["work", "ümlaut"]), (["entry", "search", "x", "tag:w"], ["tag:work"]), (["entry", "search", "#ü"], ["#ümlaut"]),
            (["entry", "list", "--on", "ye"], ["yesterday"]), (["settings", "get", "remindersplay"], ["RemindersPlaySound"]),
            (["settings", "remove", "Odd"], ["Odd key"]), (["settings", "set", "RemindersEnabled", "t"], ["true"]),
            (["journal", "set", ""], [":directories"]), (["journal", "conflicts", "--resolve", "m"], ["merge"]), (["--home", ""], [":directories"]), (["settings", "set", "K", "1", "--type", "b"], ["bool"]),
            (["setup", "--journal", ""], [":directories"]), (["setup", "--re"], ["--remind"]), (["journal", "move", ""], [":directories"]), (["open-url", "quillo://p"], ["quillo://preferences", "quillo://post"]), (["reminder", "next", "--b"], ["--batch"]), (["nonsense", "x"], []),
            (["export", "ma"], ["markdown", "markdown-folder"]), (["export", "json", "tag:w"], ["tag:work"]), (["export", "json", "-o", ""], [":files"]),
            (["import", ""], ["json", "markdown", "text", "csv", "jrnl", "rednotebook"]), (["import", "json", ""], [":files"]), (["import", "/etc/"], [":files"]), (["import", "--u"], ["--undo"]),
        ]
        for words, expected in cases:
            with self.subTest(words):
                self.assertEqual(self.offered(*words), expected)
        self.assertIn("2020-01-02 Tuesday #work", self.ctl("complete", "quilloctl", "entry", "show", ""))
        # The home of the command line that is typed.
        elsewhere = self.run_ctl("complete", "quilloctl", "entry", "--home", "/", "show", "")
        self.assertNotIn(first, elsewhere.stdout)

    def test_bash_gets_whole_words(self):
        self.make_journal()
        self.ctl("entry", "add", "#work #walk")
        # A program of one word, whatever the folders of this machine are called.
        folder = Path(self.enterContext(tempfile.TemporaryDirectory()))
        (folder / "quilloctl").write_text(f'#!/bin/sh\nexec {shlex.quote(str(QUILLOCTL))} --home {shlex.quote(str(self.home))} "$@"')
        (folder / "quilloctl").chmod(0o700)
        self.program = f"{folder}/quilloctl"
        for line, expected in (("quilloctl jour", ["journal"]), ("quilloctl entry search tag:w", ["walk", "work"]), ("quilloctl entry search tag:", ["walk", "work"]),
                               ("quilloctl open-url quillo://p", ["//preferences", "//post"]), ("quilloctl open-url quillo://edit?entryId=", [""]),
                               ("quilloctl settings list --a", ["--all"]), (f"quilloctl journal set {COMPLETION.parent.parent}/compl", [f"{COMPLETION.parent}"]),
                               (f"quilloctl import json {COMPLETION.parent}/quilloctl.b", [f"{COMPLETION}"])):
            self.assertEqual(self.in_bash(line), expected, line)
