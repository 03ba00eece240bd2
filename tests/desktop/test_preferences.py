"""The window of preferences by keys alone, and the running agent, which hears of each change."""

import plistlib
import time
from pathlib import Path

from desktop import press, program, run, type_text, wait_active, wait_until, window, windows_named
from quillo import LIST, AgentTestCase, keep_picture
from weather_service import WeatherService

OWN = ".config/quillo/com.quilloapp.quillo-agent.plist"
FIXES = (Path(__file__).parent.parent / "data/nmea/improving.nmea").resolve()
PAGES = ["General", "Journal", "Backup", "Reminders", "Place and Weather", "Writing", "Advanced"]


class PreferencesTest(AgentTestCase):
    def open_preferences(self):
        self.start(program("quillo"), "--home", str(self.home), "quillo://preferences")
        self.window = window("^Preferences$")
        self.come_to_front()

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

    def test_the_running_agent_hears_of_each_change(self):
        agent = self.start_shown_agent()
        self.open_preferences()
        keep_picture("preferences-general")

        # The key from anywhere, which works at once.
        self.go("General", 2)
        press("space")
        press("ctrl+shift+k")
        self.wait_stored("MenuEntryGlobalShortcut", {"keyCode": 40, "modifierFlags": 0x1200})
        press("ctrl+shift+k")
        wait_until(agent.is_open, "the entry window by the key")
        press("ctrl+shift+k")
        agent.wait_closed()

        # Escape closes the entry window from then on.
        self.go("Advanced", 2)
        press("space")
        self.wait_stored("EscapeClosesEntryWindow", True)
        agent.open_window()
        press("Escape")
        agent.wait_closed()

        # A reminder that is tried opens it.
        self.go("Reminders", 1)
        press("space")
        self.wait_stored("RemindersOpenMenuBar", True)
        self.wait_stored("RemindersInterval", 1)
        keep_picture("preferences-reminders")
        press("shift+Tab", "shift+Tab", "space")
        wait_until(agent.is_open, "the entry window by a reminder")
        keep_picture("preferences-reminder-tried")
        press("ctrl+shift+k")
        agent.wait_closed()

        # The agent's own settings, which it has in memory: it goes on with those, and loses none when it writes itself.
        self.go("Writing", 3)
        press("space")
        self.wait_stored("EditorGrammarCheckEnabled", True, OWN)
        agent.open_window()
        type_text("mistke ")
        press("Escape")
        agent.wait_closed()
        self.assertEqual(self.stored("EditorGrammarCheckEnabled", OWN), True)

    def test_a_running_agent_asks_the_services_that_are_named_here(self):
        service = WeatherService(temperature=18.4, symbol="partlycloudy_day")
        self.addCleanup(service.close)
        agent = self.start_shown_agent()
        # It has looked for the desktop's location service before.
        agent.open_window()
        agent.click_icon()
        agent.wait_closed()
        self.open_preferences()
        self.go("Place and Weather", 4)
        type_text(service.url)
        press("Return")
        self.wait_stored("WeatherServiceURL", service.url, OWN)
        self.go("Place and Weather", 3)
        # The field of the receiver comes with the choice, and has the keyboard.
        press("End")
        type_text(str(FIXES))
        press("Return")
        self.wait_stored("LocationNMEASource", str(FIXES), OWN)
        agent.open_window()
        wait_until(lambda: service.requests, "a request for the weather")
        time.sleep(1)
        type_text("with both")
        press("ctrl+Return")
        agent.wait_closed()
        entry = next(entry for entry in self.entries() if entry["text"] == "with both")
        self.assertIn("Berlin", entry["location"]["placeName"])
        self.assertEqual(entry["weather"]["temperature"], 18.4)

    def test_what_another_program_changes_shows_in_the_open_window(self):
        self.start(program("quillo"), "--home", str(self.home))
        self.window = window(" — Quillo$")
        self.come_to_front()
        press("ctrl+comma")
        self.window = window("^Preferences$")
        self.go("Reminders", 0)
        self.ctl("reminder", "set", "--every", "3 hours", "--from", "09:00", "--until", "17:00")
        # A Space on the switch now keeps that rule; the suggestion would take its place where it was not shown.
        press("Tab", "space")
        self.wait_stored("RemindersEnabled", False)
        self.assertEqual(self.stored("RemindersInterval"), 3)
        self.assertEqual(self.stored("RemindersFrequency"), 32)


if __name__ == "__main__":
    import unittest
    unittest.main()
