"""Two clones of a journal that is kept in git, each with commits that the other has not."""

import os
import plistlib
import shutil
import subprocess
import unittest

from machines import QUILLOCTL, TwoMachinesTestCase, edits


@unittest.skipUnless(shutil.which("git"), "no git")
class GitTest(TwoMachinesTestCase):
    def setUp(self):
        super().setUp()
        self.environment = {**os.environ, "HOME": str(self.folder), "GIT_CONFIG_NOSYSTEM": "1", "GIT_TERMINAL_PROMPT": "0"}
        laptop, desktop = self.machines
        self.git(self.folder, "init", "--bare", "--initial-branch=main", "shared.git")
        laptop.ctl("journal", "create", str(laptop.journal))
        self.git(laptop.journal, "init", "--initial-branch=main")
        self.git(laptop.journal, "remote", "add", "origin", "../../shared.git")
        self.set_up_clone(laptop)
        laptop.ctl("journal", "set", str(laptop.journal))
        self.edit(laptop)
        self.commit(laptop)
        self.git(laptop.journal, "push", "--set-upstream", "origin", "main")
        self.git(desktop.home, "clone", "../shared.git", desktop.journal.name)
        self.set_up_clone(desktop)
        desktop.ctl("journal", "set", str(desktop.journal))

    def set_up_clone(self, machine):
        self.git(machine.journal, "config", "user.name", machine.home.name)
        self.git(machine.journal, "config", "user.email", f"{machine.home.name}@example.org")
        self.git(machine.journal, "config", "merge.quillo.driver", f"'{QUILLOCTL}' journal merge-files %O %A %B")
        (machine.journal / ".git/info/attributes").write_text("*.plist merge=quillo\n")

    def git(self, folder, *words, fails=False):
        result = subprocess.run(["git", "-C", folder, *words], env=self.environment, capture_output=True, text=True, timeout=60)
        self.assertEqual(result.returncode != 0, fails, (words, result.stdout, result.stderr))
        return result.stdout

    def commit(self, machine):
        self.git(machine.journal, "add", "--all")
        self.git(machine.journal, "commit", "--allow-empty", "--message", "written")

    def exchange(self, machine):
        self.commit(machine)
        self.git(machine.journal, "pull", "--no-rebase", "--no-edit")
        self.git(machine.journal, "push")

    def test_no_saved_word_is_lost(self):
        for _ in range(edits()):
            self.edit(self.random.choice(self.machines))
            if self.random.random() < 0.1:
                self.exchange(self.random.choice(self.machines))
        for machine in [*self.machines, self.machines[0]]:
            self.exchange(machine)
        self.assert_equal_journals()
        self.assert_nothing_is_lost()
        for machine in self.machines:
            self.assertEqual(machine.conflicts(), [])
            self.assertIn("all readable", machine.ctl("journal", "check"))
        merges = self.git(self.machines[0].journal, "log", "--merges", "--oneline").count("\n")
        print(f"{len(self.saved)} words saved, {len(self.machines[0].uuids())} entries, {merges} merges", flush=True)
        self.assertGreater(merges, 0)
        tracked = self.git(self.machines[0].journal, "ls-files").split()
        self.assertEqual([name for name in tracked if "tmp" in name], [])

    def test_without_the_driver_an_entry_stays_whole(self):
        laptop, desktop = self.machines
        (laptop.journal / ".git/info/attributes").unlink()
        uuid = laptop.uuids()[0]
        for machine in self.machines:
            self.edit(machine, uuid)
        self.exchange(desktop)
        self.commit(laptop)
        self.git(laptop.journal, "pull", "--no-rebase", "--no-edit", fails=True)
        self.assertIn(f"Entries/{uuid}.plist", self.git(laptop.journal, "diff", "--name-only", "--diff-filter=U"))
        # Readable, without marks between its lines; and merge-files can still be asked.
        stages = []
        for number in (1, 2, 3):
            stages.append(laptop.home / f"stage{number}.plist")
            stages[-1].write_text(self.git(laptop.journal, "show", f":{number}:Entries/{uuid}.plist"))
        self.assertEqual(laptop.files()[f"{uuid}.plist"], stages[1].read_bytes())
        laptop.ctl("journal", "merge-files", *map(str, stages))
        words = set(plistlib.loads(stages[1].read_bytes())["text"].split())
        self.assertEqual(words, self.saved)
