"""quilloctl as a user and a script meet it: real processes, a home of its own, no display and no bus."""

import json
import os
import plistlib
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

# As the program knows itself, also in a checkout that is reached through a symbolic link.
QUILLOCTL = (Path(os.environ["QUILLO_BIN"]) / "quilloctl").resolve()
LIST = "Library/Group Containers/Q7R2KX9M4P.quilloapp/Data/Preferences/quillo.plist"
NOT_PASSED_ON = ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "VISUAL", "EDITOR", "XDG_DATA_HOME", "XDG_CONFIG_HOME")


class QuilloctlTestCase(unittest.TestCase):
    def setUp(self):
        # A home that a person could have: a space, and letters beyond ASCII.
        self.home = Path(tempfile.mkdtemp(prefix="quillo ü "))
        self.addCleanup(shutil.rmtree, self.home)
        self.list = self.home / LIST

    def environment(self, **more):
        kept = {key: value for key, value in os.environ.items() if key not in NOT_PASSED_ON}
        return {**kept, "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent", **more}

    def run_ctl(self, *words, stdin="", **more):
        return subprocess.run([QUILLOCTL, "--home", self.home, *words], input=stdin, env=self.environment(**more),
                              capture_output=True, text=True, timeout=30)

    def ctl(self, *words, **more):
        result = self.run_ctl(*words, **more)
        self.assertEqual(result.returncode, 0, result.stderr)
        return result.stdout.rstrip("\n")

    def ctl_json(self, *words):
        return json.loads(self.ctl("--json", *words))

    def assert_fails(self, *words, says="", **more):
        """With one line, which it answers."""
        result = self.run_ctl(*words, **more)
        self.assertEqual((result.returncode, result.stdout), (1, ""), (words, result.stderr))
        self.assertEqual(result.stderr.count("\n"), 1, result.stderr)
        self.assertIn(says, result.stderr)
        return result.stderr

    def make_journal(self):
        path = self.ctl("journal", "create", str(self.home / "J"))
        self.ctl("journal", "set", path)
        return Path(path)

    def read_entry(self, journal, uuid):
        return plistlib.loads((journal / "Entries" / f"{uuid}.plist").read_bytes())

    def write_entry(self, journal, uuid, content):
        (journal / "Entries" / f"{uuid}.plist").write_bytes(plistlib.dumps(content))

    def read_list(self):
        return plistlib.loads(self.list.read_bytes())

    def write_list(self, content, fmt):
        self.list.parent.mkdir(parents=True, exist_ok=True)
        self.list.write_bytes(plistlib.dumps(content, fmt=fmt))
