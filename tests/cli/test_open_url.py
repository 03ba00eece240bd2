"""What quilloctl does in the main application's place: quillo: URLs, the user's editor, the agent's switch."""

import os
import plistlib
import pty
import shutil
import subprocess
import time
from pathlib import Path

from quilloctl import QUILLOCTL, QuilloctlTestCase


def wait_for(path):
    for _ in range(500):
        if path.exists():
            return
        time.sleep(0.02)


class MainApplicationTest(QuilloctlTestCase):
    def setUp(self):
        super().setUp()
        self.drafts = self.home / ".local/state/quillo/drafts"
        self.journal = self.make_journal()

    def script(self, name, body):
        """An executable of that name; its path, quoted for $VISUAL."""
        path = self.home / name
        path.write_text("#!/bin/sh\n" + body)
        path.chmod(0o700)
        return f'"{path}"'

    def install_files(self):
        """The script "files" as what opens folders."""
        launcher = self.home / ".local/share/applications/files.desktop"
        launcher.parent.mkdir(parents=True)
        launcher.write_text(f'[Desktop Entry]\nType=Application\nName=Files\nExec="{self.home}/files" %f\nMimeType=inode/directory;\n')

    def entry(self, uuid):
        return self.read_entry(self.journal, uuid)

    def kept_draft(self, result):
        """The text that a failure has left in a file, which its message names."""
        self.assertEqual(result.returncode, 1, result)
        self.assertEqual(result.stderr.count("\n"), 1)
        path = Path(result.stderr.rstrip("\n").split("; the text is in ")[1])
        self.assertEqual(path.stat().st_mode & 0o077, 0)
        text = path.read_text()
        path.unlink()
        return text

    def test_an_entry_goes_through_the_editor_and_back(self):
        uuid = self.ctl("entry", "add", "Monday #work")
        tagged = self.entry(uuid)
        tagged["tags"].append("by hand")
        tagged["unknown"] = 7
        self.write_entry(self.journal, uuid, tagged)
        seen = self.home / "seen"
        editor = self.script("notes", f'echo "$1" >"{seen}"; cat "$2" >>"{seen}"; echo "Tuesday #home" >"$2"')
        self.ctl("open-url", f"quillo://edit?entryId={uuid.lower()}", VISUAL=editor + " --wait")
        self.assertEqual(seen.read_text(), "--wait\nMonday #work")
        entry = self.entry(uuid)
        self.assertEqual(entry["text"], "Tuesday #home")
        self.assertEqual(sorted(entry["tags"]), ["by hand", "home"])
        self.assertEqual(entry["unknown"], 7)
        self.assertEqual(list(self.drafts.iterdir()), [])

    def test_nothing_is_overwritten_and_nothing_is_lost(self):
        uuid = self.ctl("entry", "add", "before")
        url = f"quillo://edit?entryId={uuid}"
        file = self.journal / "Entries" / f"{uuid}.plist"

        def edits(body):
            return self.run_ctl("open-url", url, VISUAL=self.script("notes", body))

        original = file.read_bytes()
        # A draft that nobody has written in goes, however the editor ends; true may go on in another process.
        for body, code in (("sleep 1", 0), (': >"$1"', 1), ("true", 1), ("exit 3", 1), ('echo >"$1"; exit 3', 1), ("kill -HUP $PPID; kill $$", 1)):
            result = edits(body)
            self.assertEqual((result.returncode, file.read_bytes()), (code, original), result.stderr)
            self.assertEqual(list(self.drafts.iterdir()), [], body)
        self.assertEqual(self.kept_draft(edits('echo mine >"$1"; exit 3')), "mine\n")
        result = edits('printf "in Latin-1: \\374" >"$1"')
        self.assertIn("byte 12 ", result.stderr)
        self.assertIn(str(self.drafts), result.stderr)
        next(self.drafts.iterdir()).unlink()
        self.assertEqual(file.read_bytes(), original)

        other = self.home / "other.plist"
        other.write_bytes(plistlib.dumps({**plistlib.loads(original), "text": "theirs"}))
        self.assertEqual(self.kept_draft(edits(f'echo mine >"$1"; cp "{other}" "{file}"')), "mine\n")
        self.assertEqual(self.entry(uuid)["text"], "theirs")
        self.assertEqual(self.kept_draft(edits(f'echo mine >"$1"; rm "{file}"')), "mine\n")
        self.assertFalse(file.exists())
        result = self.run_ctl("open-url", url, VISUAL="/nonexistent/notes")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(list(self.drafts.iterdir()), [])

    def test_a_new_entry_is_written_or_not(self):
        self.ctl("open-url", "quillo://post", VISUAL=self.script("notes", "sleep 1"))
        self.assertEqual(self.run_ctl("open-url", "quillo://post", VISUAL="false").returncode, 1)
        self.assertEqual((self.ctl("entry", "list"), list(self.drafts.iterdir())), ("", []))
        uuid = self.ctl("open-url", "quillo://post", VISUAL=self.script("notes", 'echo "Fresh #ink" >"$1"'))
        self.assertEqual((self.entry(uuid)["text"], self.entry(uuid)["tags"]), ("Fresh #ink", ["ink"]))

    def test_an_editor_for_terminals_gets_one(self):
        # Without a terminal around it, quilloctl starts itself again in a terminal window. A pseudo-terminal plays one.
        uuid = self.ctl("entry", "add", "before")
        editor = self.script("vim", 'test -t 0 && test -t 1 && echo "from a terminal" >"$1"')
        opened = self.home / "opened"
        self.script("x-terminal-emulator", f'printf "%s\\n" "$@" >"{opened}.new"; mv "{opened}.new" "{opened}"\n')
        for variable in ("VISUAL", "EDITOR"):
            with self.subTest(variable):
                more = {variable: editor, "PATH": f"{self.home}:{os.environ['PATH']}"}
                opened.unlink(missing_ok=True)
                self.ctl("open-url", f"quillo://edit?entryId={uuid}", **more)
                wait_for(opened)
                words = opened.read_text().splitlines()
                self.assertEqual(words[:4], ["-e", str(QUILLOCTL), "--home", str(self.home)])
                main, side = pty.openpty()
                done = subprocess.run(words[1:], env=self.environment(**more), stdin=side, stdout=side, stderr=side, timeout=30)
                os.close(side)
                os.close(main)
                self.assertEqual(done.returncode, 0)
                self.assertEqual(self.entry(uuid)["text"], "from a terminal")
                self.ctl("open-url", f"quillo://edit?entryId={uuid}", VISUAL=self.script("notes", 'echo before >"$1"'))

    def test_what_other_programs_make_is_as_their_user_wants_it(self):
        self.addCleanup(os.umask, os.umask(0o027))
        made = self.home / "made"
        makes = f'rm -f "{made}"; : >"{made}"'
        self.script("x-terminal-emulator", makes)
        self.script("files", makes)
        self.install_files()
        for url, more in (("post", {"VISUAL": self.script("notes", makes + '; echo text >"$1"')}),
                          ("post", {"EDITOR": "vi", "PATH": f"{self.home}:{os.environ['PATH']}"}), ("open", {})):
            with self.subTest(url, **more):
                made.unlink(missing_ok=True)
                self.ctl("open-url", "quillo://" + url, **more)
                wait_for(made)
                self.assertEqual(made.stat().st_mode & 0o777, 0o640)
        # Ours is for its user alone all the same.
        self.assertEqual(next((self.journal / "Entries").iterdir()).stat().st_mode & 0o777, 0o600)

    def test_the_other_urls(self):
        text = self.ctl("open-url", "quillo://preferences")
        for word in ("quilloctl settings set KEY VALUE", "RemindersPlaySound", "JournalPackageURL"):
            self.assertIn(word, text)
        self.ctl("settings", "remove", "JournalFileSharedBookmarkData")
        self.ctl("open-url", "quillo://updatebookmarks")
        self.assertTrue(self.ctl("settings", "get", "JournalFileSharedBookmarkData"))

        self.install_files()
        shown = self.home / "shown"
        self.script("files", f'printf "%s" "$1" >"{shown}.new"; mv "{shown}.new" "{shown}"')
        self.ctl("open-url", "quillo://open")
        wait_for(shown)
        self.assertEqual(shown.read_text(), str(self.journal))

        for url in ("quillo://nonsense", "quillo:edit", "https://edit", "quillo://edit", "quillo://edit?entryId=../../x",
                    "quillo://edit?entryId=%00", "", "quillo://post/deeper", "QUILLO"):
            result = self.run_ctl("open-url", url, VISUAL=self.script("notes", "true"))
            self.assertEqual((result.returncode, result.stdout), (1, ""), url)
            self.assertEqual(result.stderr.count("\n"), 1, url)

    def test_the_agents_switch(self):
        """The agent itself has no display here and ends at once; what the session would start is what counts."""
        self.assertEqual(self.ctl_json("agent", "status"), {"enabled": False, "loginItem": False, "running": []})
        autostart = self.home / ".config/autostart/com.quilloapp.quillo-agent.desktop"
        self.ctl("reminder", "on")
        self.assertIn("quillo-agent", autostart.read_text())
        self.assertEqual(self.ctl_json("agent", "status"), {"enabled": True, "loginItem": True, "running": []})
        result = self.run_ctl("agent", "enable")
        self.assertEqual((result.returncode, result.stderr), (
            1, "quilloctl: the agent starts at login but not now: there is no session bus on which it would answer\n"))
        for line in ("Hidden=true", "TryExec=/no/such/program"):
            # What would start nothing today is gone, too.
            autostart.write_text(autostart.read_text().replace("TryExec", "X-Old") + line + "\n")
            self.ctl("agent", "disable")
            self.assertFalse(autostart.exists())
            self.run_ctl("agent", "enable")
        self.ctl("agent", "disable")
        self.assertEqual(self.ctl("settings", "get", "RemindersEnabled"), "false")
        # An older setting is taken over.
        self.ctl("settings", "set", "StartAgentAtLogin", "yes", "--type", "bool")
        self.assertEqual(self.ctl_json("agent", "status"), {"enabled": True, "loginItem": True, "running": []})
        self.assertEqual(self.run_ctl("settings", "get", "StartAgentAtLogin").returncode, 1)
        result = self.run_ctl("agent", "restart")
        self.assertEqual((result.returncode, result.stderr), (1, "quilloctl: the agent is not running\n"))
        shutil.rmtree(autostart.parent)
        autostart.parent.write_text("A file in the folder's place")
        for words in (["agent", "enable"], ["reminder", "on"]):
            result = self.run_ctl(*words)
            self.assertEqual(result.returncode, 1)
            self.assertRegex(result.stderr, "could not be made a login item: the folder .*/autostart cannot be made\n$")
