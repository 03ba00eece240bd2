"""The shortcut on a real X server: from another program's window, with locks, layouts, menus and rivals."""

import json
import os
import signal
import subprocess
import time

from desktop import active_window, press, program, run, type_text, wait_active, wait_until, window
from quillo import AgentTestCase

SHORTCUT = "super+shift+j"


class HotKeyTest(AgentTestCase):
    def setUp(self):
        super().setUp()
        self.addCleanup(run, "setxkbmap", "us")

    def agent(self):
        self.ctl("shortcut", "set", "cmd+shift+J")
        return self.start_shown_agent()

    def terminal(self):
        """A window of another program, which has the keyboard; answers the file that gets what is typed there."""
        typed = self.home / "typed"
        self.start("xterm", "-e", f"stty -icanon -echo; cat >'{typed}'")
        wait_active(window(window_class="xterm"))
        wait_until(typed.exists, "xterm listening")
        return typed

    def rival(self):
        return self.start_probe(command="keys x11")

    def toggles(self, agent, *keys):
        press(*keys)
        agent.window()
        press(*keys)
        agent.wait_closed()

    def does_nothing(self, agent, *keys):
        """Proved by a press that comes after it and does something."""
        press(*keys)
        self.ctl("agent", "toggle")
        wait_active(agent.window())
        self.ctl("agent", "toggle")
        agent.wait_closed()

    def test_it_toggles_from_another_programs_window_and_takes_the_keyboard(self):
        agent = self.agent()
        typed = self.terminal()
        press(SHORTCUT)
        identifier = agent.window()
        wait_active(identifier)
        type_text("by key")
        press(SHORTCUT)
        agent.wait_closed()
        self.assertEqual(self.texts(), ["by key"])
        wait_until(lambda: active_window() not in ("", identifier), "xterm with the keyboard again")
        type_text("x")
        wait_until(lambda: typed.read_text() == "x", "nothing but what was typed there in xterm")

    def test_a_new_shortcut_takes_the_place_of_the_old_at_once(self):
        agent = self.agent()
        self.terminal()
        self.toggles(agent, SHORTCUT)
        self.ctl("shortcut", "set", "⌃⌥M")
        self.toggles(agent, "ctrl+alt+m")
        self.does_nothing(agent, SHORTCUT)
        self.ctl("shortcut", "clear")
        self.does_nothing(agent, "ctrl+alt+m")
        # Free for others from that moment.
        self.assertEqual(self.rival().ask("claim 38 768 1", "claimed (.*)")[1], "0 1 active")

    def test_what_another_program_has_claimed_is_refused_and_said(self):
        rival = self.rival()
        ref = rival.ask("claim 38 768 1", r"claimed 0 (\d+) active")[1]
        self.assertEqual(rival.ask("claim 38 768 2", "claimed (.*)")[1], "-9878 0 refused")
        # No such key; one beyond what X numbers; no known modifier.
        for claim in ("52 768 3", "63 768 3", "38 1024 3"):
            self.assertEqual(rival.ask(f"claim {claim}", "claimed (.*)")[1], "-9879 0 refused")
        agent = self.agent()
        wait_until(self.shortcut_problems, "the refusal in the log")
        self.assertEqual(self.shortcut_problems(), ["The shortcut ⌘⇧J is not available: another program has claimed it"])
        self.does_nothing(agent, SHORTCUT)
        rival.expect("pressed 1")
        self.ctl("shortcut", "set", "cmd+shift+K")
        self.toggles(agent, "super+shift+k")
        # Free again, and set once more.
        rival.ask(f"unclaim {ref}", "unclaimed 0")
        self.ctl("shortcut", "set", "cmd+shift+J")
        self.toggles(agent, SHORTCUT)
        self.assertEqual(len(self.shortcut_problems()), 1)

    def test_locks_do_not_matter(self):
        agent = self.agent()
        self.terminal()
        for locks in (["Caps_Lock"], ["Num_Lock"], ["Caps_Lock", "Num_Lock"]):
            with self.subTest(locks):
                press(*locks)
                try:
                    self.toggles(agent, SHORTCUT)
                finally:
                    press(*locks)

    def test_a_key_that_is_held_is_one_press(self):
        run("xset", "r", "rate", "150", "40")
        self.addCleanup(run, "xset", "r", "rate", "500", "30")
        typed = self.terminal()
        # The server repeats keys at all.
        run("xdotool", "keydown", "a", "sleep", "0.4", "keyup", "a")
        wait_until(lambda: typed.read_text().count("a") > 3, "a repeated key")
        probe = self.rival()
        probe.ask("claim 38 768 1", "claimed 0 .*")
        for _ in range(2):
            run("xdotool", "keydown", "super", "keydown", "shift", "keydown", "j", "sleep", "0.6", "keyup", "j", "keyup", "shift", "keyup", "super")
        for line in ("pressed 1", "released 1") * 2:
            probe.expect(line)
        self.assertEqual(probe.unread, [])
        # As fast as can be: not one is taken for a repetition.
        run("xdotool", "key", "--repeat", "50", "--delay", "1", SHORTCUT)
        wait_until(lambda: probe.unread.count("released 1") == 50, "the fiftieth release")
        self.assertEqual(probe.unread, ["pressed 1", "released 1"] * 50)

    def test_its_own_menu_is_no_obstacle(self):
        agent = self.agent()
        agent.click_icon(button=3)
        wait_until(agent.menus, "the menu")
        press(SHORTCUT)
        identifier = agent.window()
        wait_until(lambda: not agent.menus(), "nothing but the window")
        wait_active(identifier)
        type_text("after the menu")
        press(SHORTCUT)
        agent.wait_closed()
        self.assertEqual(self.texts(), ["after the menu"])

    def test_a_press_counts_whose_forerunner_was_released_in_another_window(self):
        agent = self.agent()
        self.terminal()
        other = active_window()
        # Within the time in which the keyboard would repeat.
        run("xset", "r", "off")
        self.addCleanup(run, "xset", "r", "on")
        agent.click_icon(button=3)
        wait_until(agent.menus, "the menu")
        run("xdotool", "keydown", "super", "keydown", "shift", "keydown", "j")
        wait_active(agent.window())
        run("xdotool", "windowfocus", "--sync", other, "keyup", "j", "keyup", "shift", "keyup", "super", "key", SHORTCUT)
        agent.wait_closed()

    def test_layouts_are_followed_without_a_restart(self):
        run("setxkbmap", "de")
        agent = self.start_shown_agent()
        self.terminal()
        rival = self.rival()
        # The key between T and U: Z on a German keyboard, Y on the others.
        rival.ask("claim 16 256 1", r"claimed 0 (\d+) active")
        for layout, name in (("de", "⌘Z"), ("us", "⌘Y"), ("fr", "⌘Y"), ("de", "⌘Z")):
            run("setxkbmap", layout)
            count = len(self.shortcut_problems())
            self.assertEqual(self.ctl("shortcut", "set", "cmd+" + name[1]), f"Super+{name[1]}  {name}")
            wait_until(lambda: len(self.shortcut_problems()) > count, "the refusal in the log")
            self.assertEqual(self.shortcut_problems()[-1], f"The shortcut {name} is not available: another program has claimed it")
        # A key stays where it is when the layout changes: that between Tab and S.
        run("setxkbmap", "fr")
        self.ctl("shortcut", "set", "cmd+q")
        self.toggles(agent, "super+q")
        run("setxkbmap", "us")
        self.toggles(agent, "super+a")
        # Num Lock on another modifier than before.
        run("xmodmap", "-e", "remove mod2 = Num_Lock", "-e", "add mod3 = Num_Lock")
        wait_until(lambda: self.toggles_with_num_lock(agent), "the grabs following the keyboard map")

    def toggles_with_num_lock(self, agent):
        press("Num_Lock", "super+a", "Num_Lock")
        time.sleep(0.2)
        if not agent.is_open():
            return False
        press("super+a")
        agent.wait_closed()
        return True

    def test_the_death_of_the_x_server_ends_it(self):
        receiver, sender = os.pipe()
        server = subprocess.Popen(["Xvfb", "-displayfd", str(sender), "-nolisten", "tcp", "-noreset"], pass_fds=[sender],
                                  stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(server.wait)
        self.addCleanup(server.kill)
        os.close(sender)
        with os.fdopen(receiver) as numbers:
            display = ":" + numbers.readline().strip()
        self.ctl("shortcut", "set", "cmd+shift+J")
        agent = self.start(program("quillo-agent"), "--home", str(self.home), DISPLAY=display)
        # Its first windows come while Qt still gets to know the display, and gives up in its own way.
        wait_until(lambda: json.loads(self.ctl("--json", "agent", "status"))["running"], "the agent on its display")
        os.kill(server.pid, signal.SIGKILL)
        self.assertEqual(agent.wait(), 1)
