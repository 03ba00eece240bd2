"""Homes of their own for the same journal, written to through quilloctl, and an account of what was saved."""

import ctypes
import fcntl
import json
import os
import plistlib
import random
import shutil
import socket
import struct
import subprocess
import tempfile
import unittest
from pathlib import Path

QUILLOCTL = (Path(os.environ["QUILLO_BIN"]) / "quilloctl").resolve()

# In place of a person: a word before or behind what is there.
EDITOR = """#!/bin/sh
if [ "$PLACE" = before ]; then text=$(cat "$1"; echo .); printf '%s %s' "$WORD" "${text%.}" > "$1"; else printf ' %s' "$WORD" >> "$1"; fi
"""


def edits():
    return int(os.environ.get("QUILLO_SYNC_EDITS", 40))


def leave_the_network():
    """From here on this process and its children reach nothing but each other. Where that may not be, they are told to."""
    new_user, new_network = 0x10000000, 0x40000000
    user, group = os.getuid(), os.getgid()
    if ctypes.CDLL(None).unshare(new_network | (new_user if user else 0)) != 0:
        return
    if user:
        Path("/proc/self/setgroups").write_text("deny")
        Path("/proc/self/uid_map").write_text(f"{user} {user} 1")
        Path("/proc/self/gid_map").write_text(f"{group} {group} 1")
    get_flags, set_flags, is_up = 0x8913, 0x8914, 1
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as loopback:
        try:
            flags = struct.unpack("16sH", fcntl.ioctl(loopback, get_flags, struct.pack("16sH14x", b"lo", 0))[:18])[1]
            fcntl.ioctl(loopback, set_flags, struct.pack("16sH14x", b"lo", flags | is_up))
        except PermissionError as error:
            raise unittest.SkipTest(f"no loopback of its own: {error}")


class Machine:
    def __init__(self, home):
        self.home = home
        self.journal = home / "J.quillojournal"
        self.entries = self.journal / "Entries"
        home.mkdir()
        (home / "editor").write_text(EDITOR)
        (home / "editor").chmod(0o755)

    def run(self, *words, **more):
        environment = {**os.environ, "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent", "VISUAL": str(self.home / "editor"), **more}
        return subprocess.run([QUILLOCTL, "--home", self.home, *words], env=environment, capture_output=True, text=True, timeout=60)

    def ctl(self, *words, **more):
        result = self.run(*words, **more)
        if result.returncode != 0:
            raise AssertionError(f"{words}: {result.stderr}")
        return result.stdout.rstrip("\n")

    def uuids(self):
        return sorted(path.stem for path in self.entries.glob("[!.]*.plist") if len(path.stem) == 36)

    def files(self):
        return {path.name: path.read_bytes() for path in self.entries.glob("[!.]*.plist")}

    def conflicts(self):
        return json.loads(self.ctl("--json", "journal", "conflicts"))

    def words(self):
        """Of all versions, and of what is in the Trash."""
        found = set()
        for path in [*self.entries.glob("[!.]*.plist"), *(self.home / ".local/share/Trash/files").glob("*")]:
            found |= set(plistlib.loads(path.read_bytes())["text"].split())
        return found


class TwoMachinesTestCase(unittest.TestCase):
    def setUp(self):
        folder = Path(tempfile.mkdtemp(prefix="quillo-two-"))
        self.addCleanup(shutil.rmtree, folder)
        self.folder = folder
        self.machines = [Machine(folder / name) for name in ("laptop", "desktop")]
        self.random = random.Random(int(os.environ.get("QUILLO_SYNC_SEED", 23)))
        self.saved = set()

    def edit(self, machine, uuid=None):
        """One save of one new word, in an entry that is there or a new one."""
        word = f"w{len(self.saved) + 1}"
        uuids = machine.uuids()
        if uuid is None and (len(uuids) < 8 or self.random.random() < 0.03):
            machine.ctl("entry", "add", word)
        else:
            result = machine.run("entry", "edit", uuid or self.random.choice(uuids), WORD=word, PLACE=self.random.choice(["before", "behind"]))
            # The synchroniser may have taken the entry away in between.
            if result.returncode != 0:
                self.assertIn("there is no entry", result.stderr)
                return
        self.saved.add(word)

    def resolve(self, machine):
        """All conflicts, each in one of the ways."""
        machine.ctl("journal", "check", "--repair")
        for conflict in machine.conflicts():
            versions = [str(version["version"]) for version in conflict["versions"] if "damage" not in version]
            words = self.random.choice([["this"], ["that", "--version", self.random.choice(versions)], ["both"], ["merge"]])
            machine.ctl("journal", "conflicts", "--resolve", *words, conflict["uuid"])

    def assert_nothing_is_lost(self):
        found = set().union(*(machine.words() for machine in self.machines))
        self.assertEqual(sorted(self.saved - found), [])

    def assert_equal_journals(self):
        files = [machine.files() for machine in self.machines]
        self.assertEqual(sorted(files[0]), sorted(files[1]))
        self.assertEqual(files[0], files[1])
