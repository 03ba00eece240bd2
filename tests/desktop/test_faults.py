"""Faults around the running agent: rivals of the same moment, settings that turn into something else, few descriptors."""

import os
import shutil
import subprocess

from desktop import press, program, tray_icons, type_text, wait_until
from quillo import LIST, Agent, AgentTestCase

ROUNDS = int(os.environ.get("ROUNDS", "5"))


class FaultsTest(AgentTestCase):
    def test_of_agents_that_start_at_the_same_moment_one_stays(self):
        for count in (2, 3) * ROUNDS:
            started = [self.start_agent().program for _ in range(count)]
            wait_until(lambda: sum(agent.is_running for agent in started) <= 1, "the others ended")
            wait_until(lambda: len(tray_icons("quillo-agent")) == 1, "one icon")
            self.ctl("agent", "toggle")
            left = [agent for agent in started if agent.is_running]
            self.assertEqual(len(left), 1)
            Agent(left[0]).window()
            left[0].stop()

    def test_settings_that_cannot_be_read_cost_no_word_and_are_left_alone(self):
        agent = self.start_shown_agent()
        settings = self.home / LIST
        good = settings.read_bytes()

        def garbage():
            settings.write_bytes(os.urandom(5000))

        def huge():
            with open(settings, "wb") as file:
                file.truncate(2 << 30)

        texts = []
        for fault in (garbage, settings.mkdir, lambda: os.mkfifo(settings), lambda: settings.symlink_to("/dev/zero"), huge):
            settings.unlink()
            fault()
            before = settings.lstat()
            for text in (f"in trouble {len(texts)}", f"and again {len(texts)}"):
                for notice in ("ReminderSettings", "JournalPackagePath"):
                    self.ctl("post", f"com.quilloapp.Quillo{notice}DidChangeNotification")
                self.ctl("agent", "toggle")
                wait_until(agent.is_active, "the entry window with the keyboard")
                type_text(text)
                press("ctrl+Return")
                agent.wait_closed()
                texts.append(text)
                if text.startswith("in trouble"):
                    after = settings.lstat()
                    self.assertEqual((after.st_mode, after.st_size, after.st_mtime_ns),
                                     (before.st_mode, before.st_size, before.st_mtime_ns))
                    shutil.rmtree(settings) if settings.is_dir() else settings.unlink()
                    settings.write_bytes(good)
        self.assertEqual(self.texts(), sorted(texts))
        self.assertEqual(settings.read_bytes(), good)

    def test_more_descriptors_are_taken_and_too_few_are_said(self):
        def limited(limits):
            return "prlimit", f"--nofile={limits}", program("quillo-agent"), "--home", str(self.home)

        done = subprocess.run(limited("20:20"), stderr=subprocess.PIPE, text=True, timeout=10)
        self.assertEqual((done.returncode, done.stderr.count("\n")), (1, 1), done.stderr)
        agent = Agent(self.start(*limited("20:200")))
        agent.open_window()
        type_text("enough")
        agent.program.stop()
        self.assertEqual(self.texts(), ["enough"])
