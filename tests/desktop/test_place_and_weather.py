"""Place and weather as they come in while the window is open: a receiver that finds itself, a service that is asked."""

import time
from pathlib import Path

from desktop import press, type_text, wait_until
from quillo import AgentTestCase, set_own_defaults
from weather_service import WeatherService

FIXES = Path(__file__).parent.parent / "data/nmea/improving.nmea"


class PlaceAndWeatherTest(AgentTestCase):
    def setUp(self):
        super().setUp()
        self.service = WeatherService(temperature=18.4, symbol="partlycloudy_day")
        self.addCleanup(self.service.close)
        set_own_defaults(self.home, WeatherServiceURL=self.service.url, LocationNMEASource=str(FIXES))

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
