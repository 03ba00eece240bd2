"""The main application on a real screen: found, written and deleted by keys, killed while typing, and in turns with the
agent on one entry."""

import os
import plistlib
import signal
import subprocess
from datetime import datetime
from pathlib import Path

from desktop import press, program, run, type_text, wait_active, wait_until, window, windows_named
from quillo import AgentTestCase, keep_picture
from weather_service import WeatherService

FIXES = Path(__file__).parent.parent / "data/nmea/improving.nmea"
TITLE = " — Quillo$"


class QuilloTest(AgentTestCase):
    def start_quillo(self, *urls):
        started = self.start(program("quillo"), "--home", str(self.home), *urls)
        self.window = window(TITLE)
        self.come_to_front()
        return started

    def come_to_front(self):
        run("xdotool", "windowactivate", "--sync", self.window)
        wait_active(self.window)

    def wait_text(self, expected):
        wait_until(lambda: self.texts() == sorted(expected), f"the texts {expected}, but {self.texts()}")

    def test_a_walk_by_keys(self):
        self.ctl("entry", "add", "--on", "2026-11-24T18:42", "Walked the long way home along the river #evening")
        self.ctl("entry", "add", "--on", "2026-11-13", "Rain all day, a mistke in it")
        quillo = self.start_quillo()
        press("ctrl+f")
        type_text("mistke")
        press("Return", "Return", "ctrl+End")
        type_text(", mended")
        self.wait_text(["Walked the long way home along the river #evening", "Rain all day, a mistke in it, mended"])
        keep_picture("quillo-search")
        press("ctrl+n")
        type_text("Home late #evening")
        self.wait_text(["Home late #evening", "Walked the long way home along the river #evening",
                        "Rain all day, a mistke in it, mended"])
        press("ctrl+l", "Home", "Delete")
        wait_until(lambda: len(self.texts()) == 2, "an entry in the Trash")
        press("ctrl+z")
        wait_until(lambda: len(self.texts()) == 3, "the entry back")
        keep_picture("quillo-list")
        os.kill(quillo.pid, signal.SIGTERM)
        self.assertEqual(quillo.wait(), 0)

    def test_details_by_keys(self):
        self.ctl("entry", "add", "--on", "2026-11-24T18:42", "Landed #travel")
        self.ctl("entry", "add", "--on", "2026-11-20", "Packed")
        self.start_quillo()
        wait_active(self.window)
        press("ctrl+i", *["Tab"] * 6)  # past the parts of the date
        type_text("tok")
        press("Return")
        landed = lambda: next(entry for entry in self.entries() if entry["text"].startswith("Landed"))
        wait_until(lambda: landed()["timeZone"] == "Asia/Tokyo", "the zone")
        self.assertEqual(landed()["creationDate"], datetime(2026, 11, 24, 9, 42))
        press("Tab", "End")
        type_text(", jap")
        press("Tab")
        type_text("tokyo")
        press("Return")
        wait_until(lambda: "location" in landed(), "the place")
        self.assertEqual((landed()["tags"], landed()["location"]["placeName"]), (["travel", "jap"], "Tokyo, Japan"))
        keep_picture("quillo-details")
        press("ctrl+z")
        wait_until(lambda: "location" not in landed(), "the place gone again")
        # From the strip to the text, to the list, and in it to the next.
        press("Escape", "Escape", "Down", "Return", "ctrl+End")
        type_text(", twice")
        wait_until(lambda: "Packed, twice" in self.texts(), "the other entry")

    def test_a_new_entry_gets_place_and_weather(self):
        service = WeatherService(temperature=18.4, symbol="partlycloudy_day")
        self.addCleanup(service.close)
        own = self.home / ".config/quillo/com.quilloapp.quillo.plist"
        own.parent.mkdir(parents=True, exist_ok=True)
        own.write_bytes(plistlib.dumps({"WeatherServiceURL": service.url, "LocationNMEASource": str(FIXES)}))
        self.start_quillo("quillo://post")
        type_text("Here I am")
        wait_until(lambda: any("weather" in entry for entry in self.entries()), "place and weather")
        [entry] = self.entries()
        self.assertIn("Berlin", entry["location"]["placeName"])
        self.assertEqual(entry["weather"]["temperature"], 18.4)
        keep_picture("quillo-place")

    def test_one_instance_answers_urls(self):
        identifier = self.ctl("entry", "add", "An old one").strip()
        self.ctl("entry", "add", "A newer one")
        self.start_quillo()
        second = subprocess.run([program("quillo"), "--home", str(self.home), f"quillo://edit?entryId={identifier}"], timeout=30)
        self.assertEqual(second.returncode, 0)
        self.assertEqual(len(windows_named(TITLE)), 1)
        self.come_to_front()
        press("Tab", "ctrl+l")  # whatever has the keyboard
        subprocess.run([program("quillo"), "--home", str(self.home), "quillo://post"], timeout=30, check=True)
        self.come_to_front()
        type_text("By URL")
        self.wait_text(["An old one", "A newer one", "By URL"])
        self.assertEqual(subprocess.run([program("quillo"), "quillo://nonsense"], capture_output=True, timeout=30).returncode, 2)

    def test_what_was_typed_outlives_every_end(self):
        for end, code in ((signal.SIGTERM, 0), (signal.SIGKILL, -signal.SIGKILL)):
            with self.subTest(end=end.name):
                quillo = self.start_quillo("quillo://post")
                text = f"typed before {end.name}"
                type_text(text)
                # The last key may still be on its way, and a kill leaves no time: the draft comes within two seconds.
                draft = self.home / ".local/state/quillo/UnsavedEntryOfQuillo.plist"
                wait_until(lambda: text in self.texts() or (draft.exists() and plistlib.loads(draft.read_bytes())["text"] == text),
                           "the text on disk")
                os.kill(quillo.pid, end)
                self.assertEqual(quillo.wait(), code)
                again = self.start_quillo()
                os.kill(again.pid, signal.SIGTERM)
                again.wait()
                self.assertIn(text, self.texts())

    def test_agent_and_quillo_write_one_entry_in_turns(self):
        """Each adds a word to what the other has left, by its own window, which stays as it was meanwhile."""
        agent = self.start_shown_agent()
        quillo = self.start_quillo()
        words = []
        for turn in range(int(os.environ.get("QUILLO_TURNS", "4"))):
            agent.open_window()
            press("ctrl+End")
            words.append(f"agent{turn}")
            type_text(words[-1] + " ")
            # Closing the window saves, and the next opening goes on with the entry.
            agent.click_icon()
            agent.wait_closed()
            [entry] = self.entries()
            self.assertIn(words[-1], entry["text"])
            subprocess.run([program("quillo"), "--home", str(self.home), f"quillo://edit?entryId={entry['uuid']}"], timeout=30,
                           check=True)
            self.come_to_front()
            press("ctrl+End")
            words.append(f"quillo{turn}")
            type_text(words[-1] + " ")
            wait_until(lambda: words[-1] in self.entries()[0]["text"], "Quillo's word saved")
        os.kill(quillo.pid, signal.SIGTERM)
        quillo.wait()
        self.assertEqual(sorted(" ".join(self.texts()).split()), sorted(words))


if __name__ == "__main__":
    import unittest
    unittest.main()
