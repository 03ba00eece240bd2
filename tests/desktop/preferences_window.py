"""The window of preferences by keys alone."""

import plistlib

from desktop import press, program, run, wait_active, wait_until, window, windows_named
from quillo import LIST, AgentTestCase

# The agent's own settings, below the home.
OWN = ".config/quillo/com.quilloapp.quillo-agent.plist"
PAGES = ["General", "Journal", "Backup", "Reminders", "Place and Weather", "Writing", "Advanced"]


class PreferencesTestCase(AgentTestCase):
    def open_preferences(self):
        quillo = self.start(program("quillo"), "--home", str(self.home), "quillo://preferences")
        self.window = window("^Preferences$")
        self.come_to_front()
        return quillo

    def come_to_front(self):
        run("xdotool", "windowactivate", "--sync", self.window)
        wait_active(self.window)

    def go(self, page, tabs):
        """To a field of a page, from the list of pages, which Escape and a new request put the keyboard into."""
        self.come_to_front()
        press("Escape")
        wait_until(lambda: not windows_named("^Preferences$"), "the window closed")
        run(program("quillo"), "--home", str(self.home), "quillo://preferences")
        self.window = window("^Preferences$")
        self.come_to_front()
        press("Home", *["Down"] * PAGES.index(page), *["Tab"] * tabs)

    def stored(self, key, path=LIST):
        file = self.home / path
        return plistlib.loads(file.read_bytes()).get(key) if file.exists() else None

    def wait_stored(self, key, value, path=LIST):
        wait_until(lambda: self.stored(key, path) == value, f"{key} is {value}, but {self.stored(key, path)}")
