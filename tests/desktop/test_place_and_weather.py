"""Place and weather as they come in while the window is open: a receiver that finds itself, a service that may fail."""

import json
import time
from pathlib import Path

from desktop import press, type_text, wait_until
from quillo import AgentTestCase, set_own_defaults
from weather_service import MODIFIED, WeatherService

FIXES = Path(__file__).parent.parent / "data/nmea/improving.nmea"
TOGGLE = (49, 232)


class PlaceAndWeatherTest(AgentTestCase):
    def setUp(self):
        super().setUp()
        self.service = WeatherService(temperature=18.4, symbol="partlycloudy_day")
        self.addCleanup(self.service.close)
        set_own_defaults(self.home, WeatherServiceURL=self.service.url, LocationNMEASource=str(FIXES))

    @property
    def kept(self):
        return self.home / ".cache/quillo/Weather.json"

    def write(self, agent, text):
        """The entry that is saved with this text."""
        type_text(text)
        press("ctrl+Return")
        agent.wait_closed()
        return next(entry for entry in self.entries() if entry["text"] == text)

    def test_one_request_and_both_in_the_entry(self):
        agent = self.start_agent()
        agent.open_window()
        wait_until(lambda: self.service.requests, "a request for the weather")
        time.sleep(1)
        # Of the fix that was good enough, not of the first; cut to four decimals.
        self.assertEqual(self.service.requests, [("52.5250", "13.4100")])
        entry = self.write(agent, "with both")
        self.assertIn("Berlin", entry["location"]["placeName"])
        self.assertEqual(entry["weather"]["temperature"], 18.4)
        self.assertEqual(entry["weather"]["symbolCode"], "partlycloudy_day")

        # Switched off, this entry has neither, and nothing is asked.
        agent.open_window()
        agent.push(TOGGLE)
        entry = self.write(agent, "with neither")
        self.assertNotIn("location", entry)
        self.assertNotIn("weather", entry)
        self.ctl("settings", "set", "AddLocationAutomatically", "no")
        agent.open_window()
        time.sleep(1)
        agent.click_icon()
        agent.wait_closed()
        self.assertEqual(len(self.service.requests), 1)

    def test_what_the_service_told_outlives_the_agent(self):
        def weather_of_a_new_agent(number):
            agent = self.start_agent()
            agent.open_window()
            time.sleep(2.5)
            weather = self.write(agent, f"entry {number}").get("weather")
            agent.program.stop()
            return weather

        self.service.lifetime = 600
        for number in range(3):
            self.assertEqual(weather_of_a_new_agent(number)["temperature"], 18.4)
        self.assertEqual(self.service.conditions, [None])
        self.assertEqual(self.kept.stat().st_mode & 0o777, 0o600)
        # As it is when the time has come.
        kept = json.loads(self.kept.read_text())
        for answer in kept["answers"].values():
            answer["expires"] = answer["received"]
        self.kept.write_text(json.dumps(kept))
        self.service.lifetime = 0
        self.assertEqual(weather_of_a_new_agent(3)["temperature"], 18.4)
        self.assertEqual(self.service.conditions, [None, MODIFIED])
        self.service.mode = "503"
        for number in (4, 5):
            self.assertIsNone(weather_of_a_new_agent(number))
        self.assertEqual(len(self.service.requests), 3)

    def test_a_service_that_fails_costs_the_weather_only(self):
        for mode in ("403", "429", "503", "500", "garbage", "hang"):
            with self.subTest(mode):
                self.service.mode = mode
                # Or the silence that was asked for would be kept.
                self.kept.unlink(missing_ok=True)
                agent = self.start_agent()
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
