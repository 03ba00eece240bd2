"""Backups of the journal from a terminal."""

import json
import os
import random
import shutil
import signal
import subprocess
import time
import uuid
from pathlib import Path

from quilloctl import QUILLOCTL, QuilloctlTestCase

# More of them by hand: they take about a quarter of a second each.
KILLS = int(os.environ.get("BACKUP_KILLS", "12"))


def tree(folder):
    return {path.relative_to(folder): path.read_bytes() for path in folder.rglob("*") if path.is_file()}


class BackupTest(QuilloctlTestCase):
    def setUp(self):
        super().setUp()
        self.journal = self.make_journal()
        self.folder = self.home / ".local/share/quillo/Backup"

    def fill(self, count):
        chance = random.Random(1)
        for _ in range(count):
            name = str(uuid.UUID(int=chance.getrandbits(128), version=4)).upper()
            self.write_entry(self.journal, name, {"uuid": name, "text": str(chance.getrandbits(4000))})

    def make(self, *words):
        return Path(self.ctl_json("backup", "make", *words)["path"])

    def names(self):
        return sorted(path.name for path in self.folder.iterdir())

    def test_it_is_made_listed_verified_and_restored(self):
        self.assertIn("there is no backup yet", self.ctl("backup", "list"))
        self.assert_fails("backup", "verify", says="there is no backup yet")
        self.ctl("entry", "add", "before")
        path = self.make()
        self.assertEqual(path.parent, self.folder)
        self.assertRegex(path.name, r"^J-\d{4}-\d\d-\d\d-\d{6}\.quillojournal\.tar\.zst$")
        before = tree(self.journal)
        self.ctl("entry", "add", "after")

        listed = self.ctl_json("backup", "list")
        self.assertEqual([one["path"] for one in listed["backups"]], [str(path)])
        self.assertEqual((listed["backups"][0]["entries"], listed["backups"][0]["journal"]), (1, "J"))
        self.assertEqual((listed["last"]["path"], listed["last"]["failure"]), (str(path), None))
        self.assertRegex(self.ctl("backup", "list"), rf"^\d{{4}}-\d\d-\d\d \d\d:\d\d +1 entry +\S+ \S+ +{path.name}$")
        self.assertEqual(self.ctl_json("backup", "verify")["entries"], 1)
        self.assertIn("whole, 1 entry", self.ctl("backup", "verify", path.name))

        # Beside the journal, by a name that is free.
        restored = self.ctl_json("backup", "restore")
        self.assertEqual(restored, {"path": str(self.home / "J 2.quillojournal"), "entries": 1, "set": False})
        self.assertEqual(tree(self.home / "J 2.quillojournal"), before)
        self.assertEqual(self.ctl("journal", "path"), str(self.journal))
        self.assert_fails("backup", "restore", path.name, "--to", str(self.journal), says="there is something already")
        self.ctl("backup", "restore", str(path), "--to", str(self.home / "Other"), "--set")
        self.assertEqual(self.ctl("journal", "path"), str(self.home / "Other.quillojournal"))
        self.assertEqual(len(self.ctl_json("entry", "list")), 1)

    def test_it_comes_back_where_the_journal_was_lost(self):
        self.ctl("entry", "add", "not lost")
        self.make()
        shutil.rmtree(self.journal)
        self.assert_fails("backup", "make", says="no such folder")
        self.assertIn("the last backup failed, on 2", self.run_ctl("backup", "list").stderr)
        self.ctl("backup", "restore")
        self.assertEqual(len(self.ctl_json("entry", "search", "lost")), 1)
        self.make()
        self.assertEqual(self.run_ctl("backup", "list").stderr, "")

    def test_tar_and_sha256sum_read_it(self):
        self.fill(20)
        path = self.make()
        folder = self.home / "by hand"
        folder.mkdir()
        subprocess.run(["tar", "-xf", path, "-C", folder], check=True)
        subprocess.run(["sha256sum", "--quiet", "--strict", "-c", "SHA256SUMS"], cwd=folder, check=True)
        self.assertEqual(tree(folder / "J.quillojournal"), tree(self.journal))

    def test_as_many_stay_as_the_setting_says(self):
        self.ctl("settings", "set", "AutoBackupMaxCount", "2")
        made = [self.make() for _ in range(4)]
        self.assertEqual(self.names(), sorted(path.name for path in made[2:]))

    def test_what_is_damaged_is_found(self):
        self.fill(20)
        path = self.make()
        whole = path.read_bytes()
        for place in range(0, len(whole), max(1, len(whole) // 25)):
            with self.subTest(place=place):
                path.write_bytes(whole[:place] + bytes([whole[place] ^ 0x55]) + whole[place + 1:])
                verified = self.run_ctl("backup", "verify", str(path))
                restored = self.run_ctl("backup", "restore", str(path), "--to", str(self.home / "New"))
                # A bit that nobody reads may be another: then all the same comes out.
                self.assertEqual(verified.returncode, restored.returncode, verified.stderr + restored.stderr)
                if restored.returncode == 0:
                    self.assertEqual(tree(self.home / "New.quillojournal"), tree(self.journal))
                    shutil.rmtree(self.home / "New.quillojournal")
                self.assertFalse([name for name in os.listdir(self.home) if "New" in name])

    def test_a_signal_stops_it_and_leaves_nothing(self):
        self.fill(2000)
        first = self.make()
        run = subprocess.Popen([QUILLOCTL, "--home", self.home, "backup", "make"], env=self.environment(),
                               stderr=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        while not any(name.endswith(".tmp") for name in os.listdir(self.folder)) and run.poll() is None:
            time.sleep(0.001)
        run.send_signal(signal.SIGINT)
        output, errors = run.communicate(timeout=60)
        # It may have been done already.
        if run.returncode != 0:
            self.assertEqual((errors, output), ("quilloctl: stopped; there is no new backup\n", ""))
            self.assertEqual(self.names(), [first.name])

    def test_killed_at_any_moment_it_leaves_the_older_one_and_no_half(self):
        self.fill(1500)
        begun = time.monotonic()
        first = self.make()
        duration = time.monotonic() - begun
        chance = random.Random()
        for number in range(KILLS):
            run = subprocess.Popen([QUILLOCTL, "--home", self.home, "backup", "make"], env=self.environment(),
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            time.sleep(chance.random() * duration)
            run.kill()
            run.wait(timeout=60)
            whole = [one["path"] for one in self.ctl_json("backup", "list")["backups"]]
            with self.subTest(kill=number):
                self.assertIn(str(first), whole)
                for path in whole:
                    self.assertEqual(self.run_ctl("backup", "verify", path).returncode, 0, path)
                self.assertTrue(all(name.startswith(".") for name in set(self.names()) - {Path(path).name for path in whole}))
        self.make()
        self.assertFalse([name for name in self.names() if name.startswith(".")])

    def test_a_full_disk_leaves_the_older_one_and_no_half(self):
        self.fill(1500)
        disk = self.home / "disk"
        disk.mkdir()
        # A disk of memory that these processes see alone.
        def on_disk(size, script):
            return subprocess.run(["unshare", "--mount", "sh", "-c", f"mount -t tmpfs -o size={size} tmpfs '{disk}' || exit 99; {script}"],
                                  env=self.environment(), capture_output=True, text=True, timeout=60)
        ctl = f"'{QUILLOCTL}' --home '{self.home}'"
        if on_disk("1m", "").returncode != 0:
            self.skipTest("no disk of memory can be mounted here")
        size = self.make().stat().st_size
        # From so small that nothing fits to where the second one nearly does.
        for part in (0.05, 1.02, 1.3, 1.6, 1.9):
            with self.subTest(part=part):
                script = f"""{ctl} backup make --to '{disk}'
                    ls -A '{disk}' >'{self.home}/before'
                    {ctl} backup make --to '{disk}'
                    code=$?
                    ls -A '{disk}' >'{self.home}/after'
                    [ -s '{self.home}/after' ] && {{ {ctl} backup verify '{disk}'/* || exit 98; }}
                    exit $code"""
                result = on_disk(int(size * part), script)
                self.assertEqual(result.returncode, 1, result.stderr)
                self.assertIn("No space left on device", result.stderr)
                before = (self.home / "before").read_text()
                self.assertEqual((self.home / "after").read_text(), before)
                self.assertEqual(before.count("\n"), 0 if part < 1 else 1)

    def test_two_at_once_do_not_meet(self):
        self.fill(500)
        runs = [subprocess.Popen([QUILLOCTL, "--home", self.home, "--json", "backup", "make"], env=self.environment(),
                                 stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True) for _ in range(4)]
        made = []
        for run in runs:
            output, errors = run.communicate(timeout=60)
            if run.returncode == 0:
                made.append(Path(json.loads(output)["path"]).name)
            else:
                self.assertIn("another backup is being made there", errors)
        self.assertTrue(made)
        self.assertEqual(self.names(), sorted(made))

    def test_the_scheduled_one_is_quiet_until_it_is_time_and_notes_a_failure(self):
        self.ctl("backup", "make", "--scheduled")
        self.assertFalse(self.folder.exists())
        self.ctl("settings", "set", "AutoBackupEnabled", "yes")
        self.ctl("backup", "make", "--scheduled")
        self.assertEqual(len(self.names()), 1)
        self.assertEqual(self.ctl("backup", "make", "--scheduled"), "")
        self.assertEqual(len(self.names()), 1)
        # The journal is gone, and a failure is tried again.
        self.journal.rename(self.home / "away")
        (self.home / ".local/state/quillo/Backup.plist").unlink()
        self.assert_fails("backup", "make", "--scheduled", says="no such folder")
        self.assertIn("no such folder", self.ctl_json("backup", "list")["last"]["failure"])
        (self.home / "away").rename(self.journal)
        self.ctl("backup", "make", "--scheduled")
        self.assertIsNone(self.ctl_json("backup", "list")["last"]["failure"])

    def test_the_schedule_is_kept_below_the_home_that_is_given(self):
        units = self.home / ".config/systemd/user"
        self.assertRegex(self.ctl("backup", "schedule", "show"), r"^Off; at most 40 stay; in .*/Backup$")
        elsewhere = self.home / "Stick"
        elsewhere.mkdir()
        result = self.run_ctl("backup", "schedule", "on", "--every", "6 hours", "--keep", "7", "--folder", str(elsewhere))
        self.assertEqual((result.returncode, result.stdout), (0, f"Every 6 hours; at most 7 stay; in {elsewhere}\n"))
        self.assertIn("do not start by themselves yet", result.stderr)
        service = (units / "quillo-backup.service").read_text()
        self.assertIn(f'ExecStart="{QUILLOCTL}" "--home" "{self.home}" "backup" "make" "--scheduled"\n', service)
        self.assertTrue((units / "timers.target.wants/quillo-backup.timer").is_symlink())
        shown = self.ctl_json("backup", "schedule", "show")
        self.assertEqual((shown["enabled"], shown["every"], shown["keep"], shown["installed"], shown["next"]),
                         (True, "6 hours", 7, True, None))
        # What the unit calls.
        self.ctl("backup", "make", "--scheduled")
        self.assertEqual(len(list(elsewhere.iterdir())), 1)

        # A disk that is not connected is a failure, and not a backup somewhere else.
        shutil.rmtree(elsewhere)
        self.assert_fails("backup", "make", says="Stick")
        self.assertEqual(self.run_ctl("backup", "list").returncode, 1)
        self.assertFalse(self.folder.exists())
        self.run_ctl("backup", "schedule", "set", "--default-folder")
        self.make()
        self.assertEqual(len(self.names()), 1)

        for words in (("on", "--every", "3 minutes"), ("on", "--every", "0 days"), ("set", "--folder", str(self.home / "no"))):
            self.assert_fails("backup", "schedule", *words)
        self.assertEqual(self.run_ctl("backup", "schedule", "set").returncode, 2)
        # The setting alone does the same.
        self.ctl("settings", "set", "AutoBackupEnabled", "no")
        self.assertEqual([path for path in units.rglob("*") if not path.is_dir()], [])
        self.run_ctl("settings", "set", "AutoBackupEnabled", "yes")
        self.assertTrue((units / "quillo-backup.timer").exists())
