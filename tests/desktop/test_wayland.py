"""The agent and the main application in a Wayland session, in the session's kind that the desktop was started with."""

import json
import os
import signal
import subprocess
import time
import unittest
from pathlib import Path

from desktop import program, run, wait_until
from quillo import AgentTestCase, displayed, wait_notification_server
from wayland_input import MIDDLE, VirtualInput

SIZE = (1280, 800)
# The icon at the right end of the bar, and a place over the terminal that no entry window covers.
ICON = (1266, 15)
ELSEWHERE = (200, 600)
HAS_XWAYLAND = "DISPLAY" in os.environ


def views():
    """The windows, as sway has them."""
    def below(node):
        if node.get("pid") and node["type"] in ("con", "floating_con"):
            yield node
        for child in node["nodes"] + node["floating_nodes"]:
            yield from below(child)
    return list(below(json.loads(run("swaymsg", "-t", "get_tree"))))


def views_of(pid):
    return [view for view in views() if view["pid"] == pid]


def keep_picture(name):
    directory = os.environ.get("QUILLO_PICTURES")
    if directory:
        kind = "xwayland" if HAS_XWAYLAND else "wayland"
        run("grim", str(Path(directory) / f"{kind}-{name}.png"))


def icon_is_drawn():
    """The bar shows more than its own colour at its end."""
    picture = subprocess.run(["grim", "-g", f"{ICON[0] - 12},2 24x26", "-"], capture_output=True, check=True).stdout
    colours = subprocess.run(["convert", "-", "-format", "%k", "info:"], input=picture, capture_output=True, check=True)
    return int(colours.stdout) > 4


class WaylandTestCase(AgentTestCase):
    # One for all tests: see VirtualInput.
    input = None

    def setUp(self):
        super().setUp()
        if not WaylandTestCase.input:
            WaylandTestCase.input = VirtualInput(*SIZE)
        self.typed = self.home / "typed"
        # A name of its own, since sway tells of nothing that a window shows.
        self.terminal = self.start("foot", "-o", "colors.background=203040", "sh", "-c", f'stty -icanon; exec cat >"{self.typed}"')
        wait_until(lambda: views_of(self.terminal.pid), "the terminal's window")
        self.ctl("settings", "set", "KeepEntryWindowOnScreen", "yes")
        self.agent = self.start_agent().program
        # A new bar, since an old one may still show the icon of the test before.
        self.restart_bar()

    def restart_bar(self):
        desktop = Path(os.environ["QUILLO_DESKTOP"])
        # The pointer is a part of the picture.
        self.input.move(*ELSEWHERE)
        # waybar trips over an item now and then, with an exception in its log, and shows none of it; a new one does.
        for attempt in range(3):
            bar = int((desktop / "tray.pid").read_text())
            if Path(f"/proc/{bar}").exists():
                os.kill(bar, signal.SIGKILL)
            wait_until(lambda: not icon_is_drawn(), "the bar gone")
            self.start(str(desktop / "tray"))
            try:
                return wait_until(icon_is_drawn, "the icon in the bar", seconds=10)
            except AssertionError:
                if attempt == 2:
                    raise

    def open_by_icon(self):
        self.input.click(*ICON)
        return self.wait_open()

    def entry_window(self):
        found = views_of(self.agent.pid)
        return found[0] if found else None

    def wait_open(self):
        return wait_until(self.entry_window, "the entry window")

    def wait_closed(self):
        wait_until(lambda: not self.entry_window(), "the entry window closed")

    def wait_keyboard(self, pid):
        wait_until(lambda: any(view["focused"] for view in views_of(pid)), f"the keyboard with {pid}")

    def type_elsewhere(self, text):
        """Into the terminal, until it has arrived there."""
        before = self.typed.read_text() if self.typed.exists() else ""
        self.input.type(text)
        wait_until(lambda: self.typed.read_text() == before + text, f"{text} in the terminal")


class WaylandTest(WaylandTestCase):
    def test_a_click_opens_words_are_saved_by_a_click_elsewhere_and_a_middle_click_does_nothing(self):
        self.open_by_icon()
        self.wait_keyboard(self.agent.pid)
        self.input.type("hello wayland")
        keep_picture("entry")
        self.input.click(*ELSEWHERE)
        self.wait_closed()
        wait_until(lambda: self.texts() == ["hello wayland"], "the entry")
        self.wait_keyboard(self.terminal.pid)

        # So soon after a click elsewhere, one on the icon might be the same click to the agent; and waybar takes two for
        # three.
        time.sleep(0.6)
        self.open_by_icon()
        time.sleep(0.6)
        self.input.click(*ICON)
        self.wait_closed()
        time.sleep(0.6)
        self.input.click(*ICON, button=MIDDLE)
        # The next click is served after the middle one.
        self.assertEqual(self.open_by_icon()["name"], "Quillo")
        self.assertEqual(len(views_of(self.agent.pid)), 1)

    def test_a_reminder_leaves_the_keyboard_to_who_is_typing(self):
        wait_notification_server()
        self.ctl("settings", "set", "RemindersOpenMenuBar", "yes")
        self.ctl("reminder", "set", "--every", "1 day")
        self.input.click(*ELSEWHERE)
        self.wait_keyboard(self.terminal.pid)
        self.type_elsewhere("abc")
        run("gdbus", "call", "--session", "--dest", f"com.quilloapp.quillo-agent.p{self.agent.pid}",
            "--object-path", "/com/quilloapp/Application", "--method", "com.quilloapp.Application.Remind")
        if HAS_XWAYLAND:
            shown = self.wait_open()
            self.type_elsewhere("def")
            keep_picture("reminder")
            rect = shown["rect"]
            self.input.click(rect["x"] + rect["width"] // 2, rect["y"] + rect["height"] // 2)
        else:
            wait_until(displayed, "the notification that stands for the window")
            self.type_elsewhere("def")
            self.assertIsNone(self.entry_window())
            keep_picture("reminder")
            run("dunstctl", "action")
            self.wait_open()
        self.wait_keyboard(self.agent.pid)
        self.input.type("remembered")
        self.ctl("agent", "toggle")
        wait_until(lambda: self.texts() == ["remembered"], "the entry")
        self.assertEqual(self.typed.read_text(), "abcdef")

    def test_the_portal_claims_the_key_and_its_press_opens_the_window(self):
        portal = self.start(program("desktop_portal"))
        portal.expect("ready")
        self.ctl("shortcut", "set", "cmd+shift+J")
        portal.expect(r"bind key-38-768 \| SHIFT\+LOGO\+j \| Write a journal entry")
        self.assertEqual(self.shortcut_problems(), [])
        portal.ask("press", "ok")
        self.wait_open()
        portal.ask("press", "ok")
        self.wait_closed()

    def test_the_icon_comes_back_with_the_bar(self):
        for _ in range(3):
            self.restart_bar()
        self.open_by_icon()

    def test_the_main_application_opens_a_window(self):
        quillo = self.start(program("quillo"), "--home", str(self.home))
        view = wait_until(lambda: views_of(quillo.pid), "the journal's window")[0]
        self.assertIn("Quillo", view["name"])
        keep_picture("journal")


class WaylandEndTest(WaylandTestCase):
    """Last, as it ends the session."""

    def test_the_compositors_end_ends_the_agent_with_its_text_kept(self):
        self.open_by_icon()
        self.wait_keyboard(self.agent.pid)
        self.input.type("written")
        # The draft tells that the agent has it.
        draft = self.home / ".local/state/quillo/UnsavedEntry.plist"
        wait_until(lambda: draft.exists() and b"written" in draft.read_bytes(), "the draft")
        self.input.type(" at the end")
        WaylandTestCase.input.close()
        WaylandTestCase.input = None
        run("swaymsg", "exit", check=False)
        self.agent.wait()
        # The last keys may still have been on their way.
        self.assertEqual(len(self.texts()), 1)
        self.assertTrue("written at the end".startswith(self.texts()[0]), self.texts())


def load_tests(loader, _tests, _pattern):
    return unittest.TestSuite(loader.loadTestsFromTestCase(case) for case in (WaylandTest, WaylandEndTest))
