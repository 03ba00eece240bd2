"""Place and weather as they come in while the window is open: a receiver that finds itself, a service that may fail."""

import plistlib
import shutil
import tempfile
import time
import unittest
from pathlib import Path

from desktop import DesktopTestCase, press, program, type_text, wait_until
from quillo import Agent, make_journal, quilloctl, set_own_defaults
from weather_service import WeatherService

FIXES = Path(__file__).parent.parent / "data/nmea/improving.nmea"
TOGGLE = (49, 232)


class PlaceAndWeatherTest(DesktopTestCase):
    def setUp(self):
        self.home = Path(tempfile.mkdtemp(prefix="home ü "))
        self.addCleanup(shutil.rmtree, self.home, ignore_errors=True)
        self.journal = make_journal(self.home)
        self.service = WeatherService(temperature=18.4, symbol="partlycloudy_day")
        self.addCleanup(self.service.close)
        set_own_defaults(self.home, WeatherServiceURL=self.service.url, LocationNMEASource=str(FIXES))

    def agent(self):
        return Agent(self.start(program("quillo-agent"), "--home", str(self.home)))

    def write(self, agent, text):
        """The entry that is saved with this text."""
        type_text(text)
        press("ctrl+Return")
        agent.wait_closed()
        entries = [plistlib.loads(p.read_bytes()) for p in (self.journal / "Entries").glob("*.plist")]
        return next(entry for entry in entries if entry["text"] == text)

    def test_one_request_and_both_in_the_entry(self):
        agent = self.agent()
        agent.open_window()
        wait_until(lambda: self.service.requests, "a request for the weather")
        time.sleep(1)
        self.assertEqual(len(self.service.requests), 1)
        # Of the fix that was good enough, not of the first; cut to four decimals.
        asked = self.service.requests[0]
        self.assertEqual((asked["latitude"], asked["longitude"]), ("52.5250", "13.4100"))
        entry = self.write(agent, "with both")
        self.assertIn("Berlin", entry["location"]["placeName"])
        self.assertEqual(entry["weather"]["temperature"], 18.4)
        self.assertEqual(entry["weather"]["symbolCode"], "partlycloudy_day")

        # Switched off, this entry has neither, and nothing is asked.
        asked = len(self.service.requests)
        agent.open_window()
        agent.push(TOGGLE)
        entry = self.write(agent, "with neither")
        self.assertNotIn("location", entry)
        self.assertNotIn("weather", entry)
        quilloctl(self.home, "settings", "set", "AddLocationAutomatically", "no")
        agent.open_window()
        time.sleep(1)
        agent.click_icon()
        agent.wait_closed()
        self.assertEqual(len(self.service.requests), asked)

    def test_a_service_that_fails_costs_the_weather_only(self):
        for mode in ("403", "429", "500", "garbage", "hang"):
            with self.subTest(mode):
                self.service.mode = mode
                agent = self.agent()
                before = len(self.service.requests)
                agent.open_window()
                wait_until(lambda: len(self.service.requests) > before, "a request for the weather")
                time.sleep(0.3)
                begun = time.monotonic()
                entry = self.write(agent, f"while {mode}")
                self.assertLess(time.monotonic() - begun, 2)
                self.assertIn("location", entry)
                self.assertNotIn("weather", entry)
                agent.program.stop()


if __name__ == "__main__":
    unittest.main()
