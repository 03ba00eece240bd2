"""However the agent is ended, and whatever it shows just then: it ends at once, and no word is lost."""

import os
import plistlib
import signal
import sys

from desktop import press, run, type_text, wait_until, window, windows_named
from quillo import AgentTestCase, set_own_defaults

STATE = ".local/state/quillo"
SAVE, RECONNECT = (269, 232), (164, 232)
PANEL = "^Choose Quillo Journal Location$"


class EndingTest(AgentTestCase):
    def setUp(self):
        super().setUp()
        self.ctl("settings", "set", "AddLocationAutomatically", "no")

    # What is on the screen when the end comes; each has typed a text.

    def editor(self, agent, text):
        agent.open_window()
        type_text(text)
        # The last key may still be on its way to the window.
        wait_until(lambda: text in self.kept(), "the draft")

    def alert(self, agent, text):
        self.editor(agent, text)
        self.journal.rename(self.journal.with_name("away"))
        agent.push(SAVE)
        agent.alert()

    def alert_whose_window_was_replaced(self, agent, text):
        self.alert(agent, text)
        self.ctl("journal", "set", self.ctl("journal", "create", str(self.home / text)))
        # The alert goes with its window; the text is in the next one, and saved into the new journal at the end.
        agent.wait_closed()

    def open_panel(self, agent, text):
        self.alert(agent, text)
        for _ in range(2):
            alert = agent.alert()
            press("Return")
            wait_until(lambda: agent.alert_now() != alert, "the alert answered")
        agent.wait_closed()
        agent.click_icon()
        agent.window()
        agent.push(RECONNECT)
        window(PANEL)

    def menu(self, agent, text):
        self.editor(agent, text)
        agent.click_icon(button=3)
        wait_until(agent.menus, "the menu")

    def about(self, agent, text):
        self.editor(agent, text)
        agent.choose("About Quillo")
        window("^About Quillo$")

    # The ends.

    def term(self, agent):
        os.kill(agent.program.pid, signal.SIGTERM)

    def interrupt(self, agent):
        os.kill(agent.program.pid, signal.SIGINT)

    def newer_copy(self, agent):
        self.newer = self.start_agent()

    def quit_in_menu(self, agent):
        agent.choose("Quit Quillo")

    def end_of_session(self, agent):
        self.session.ask("end", "saved")

    def start_in_session(self):
        self.session = self.start(sys.executable, "-B", os.path.join(os.path.dirname(__file__), "session_manager.py"))
        return self.start_shown_agent(SESSION_MANAGER=self.session.expect(".*:.*")[0])

    def kept(self):
        """Every text in a journal or a draft of this home."""
        drafts = (self.home / STATE).glob("UnsavedEntry.plist*")
        files = [*self.home.glob("*/Entries/*.plist"), *drafts]
        return [plistlib.loads(file.read_bytes())["text"] for file in files]

    def test_it_ends_and_keeps_the_text(self):
        for shown, end in ((self.alert, self.term), (self.alert, self.newer_copy), (self.alert, self.quit_in_menu),
                           (self.alert, self.end_of_session),
                           (self.alert_whose_window_was_replaced, self.term),
                           (self.alert_whose_window_was_replaced, self.newer_copy),
                           (self.open_panel, self.term), (self.open_panel, self.end_of_session),
                           (self.menu, self.term), (self.menu, self.newer_copy),
                           (self.about, self.term), (self.about, self.end_of_session),
                           (self.editor, self.end_of_session), (self.editor, self.term), (self.editor, self.interrupt),
                           (self.editor, self.newer_copy), (self.editor, self.quit_in_menu)):
            text = f"{shown.__name__} {end.__name__}".replace("_", " ")
            with self.subTest(text):
                agent = self.start_in_session() if end == self.end_of_session else self.start_shown_agent()
                shown(agent, text)
                end(agent)
                self.assertEqual(agent.program.wait(5), 0)
                self.assertEqual(self.kept().count(text), 1, self.kept())
            # The next round begins as this one did.
            for program in (agent.program, getattr(self, "newer", agent).program):
                program.stop()
            for draft in (self.home / STATE).glob("*"):
                draft.unlink()
            away = self.journal.with_name("away")
            if away.exists():
                away.rename(self.journal)
            self.ctl("journal", "set", str(self.journal))
