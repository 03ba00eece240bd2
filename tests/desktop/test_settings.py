"""Each setting that is changed in the window of preferences, and what the running agent makes of it."""

import json
import threading
import time
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from pathlib import Path

from desktop import pixels, press, tray_icon, type_text, wait_active, wait_until, window
from preferences_window import OWN, PreferencesTestCase
from quillo import LIST, agent_of, displayed, keep_picture, set_own_defaults, wait_notification_server
from sound import Recording
from weather_service import WeatherService

FIXES = (Path(__file__).parent.parent / "data/nmea/improving.nmea").resolve()
# The line of place and weather, and the text, in points from the frame's top left: x, y, width, height.
METADATA, TEXT = (12, 184, 300, 14), (12, 60, 300, 60)
# The middle of the text's first word.
WORD = (30, 74)
SCREEN_WIDTH = 1280


class GrammarServer:
    """A double that finds nothing, and keeps what it was asked about."""

    def __init__(self):
        self.texts = []
        server = self

        class Handler(BaseHTTPRequestHandler):
            def do_GET(self):
                self.answer([{"code": "en"}])

            def do_POST(self):
                server.texts.append(self.rfile.read(int(self.headers["Content-Length"])).decode())
                self.answer({"matches": []})

            def answer(self, value):
                body = json.dumps(value).encode()
                self.send_response(200)
                self.send_header("Content-Length", str(len(body)))
                self.end_headers()
                self.wfile.write(body)

            def log_message(self, *_):
                pass

        self._server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self._server.daemon_threads = True
        threading.Thread(target=self._server.serve_forever, daemon=True).start()
        self.url = f"http://127.0.0.1:{self._server.server_address[1]}"

    def close(self):
        self._server.shutdown()
        self._server.server_close()


class SettingsTest(PreferencesTestCase):
    def setUp(self):
        super().setUp()
        self.ctl("settings", "set", "KeepEntryWindowOnScreen", "yes")

    def start_both(self):
        agent = self.start_shown_agent()
        self.open_preferences()
        return agent

    def change(self, page, tabs, key, value, *keys, path=LIST):
        self.go(page, tabs)
        press(*(keys or ("space",)))
        self.wait_stored(key, value, path)

    def write(self, agent, text):
        """The entry that is saved with this text."""
        before = self.entries()
        agent.open_window()
        type_text(text)
        press("ctrl+Return")
        agent.wait_closed()
        (new,) = [entry for entry in self.entries() if entry not in before]
        return new

    def area(self, agent, part):
        x, y, _, _ = agent.body()
        return pixels(x + part[0], y + part[1], part[2], part[3])

    def has_red(self, agent):
        colours = self.area(agent, TEXT)
        return any(red > 170 and green < 110 and blue < 110 for red, green, blue in colours)

    def agent_log(self):
        return "".join(file.read_text() for file in sorted(self.home.rglob("Logs/Agent/*.log")))

    def test_where_the_window_comes_and_what_is_logged(self):
        self.ctl("settings", "remove", "KeepEntryWindowOnScreen")
        agent = self.start_both()
        x, _, width, _ = agent.open_window()
        self.assertGreater(x + width, SCREEN_WIDTH)
        press("ctrl+Return")
        agent.wait_closed()
        self.change("Advanced", 1, "KeepEntryWindowOnScreen", True)
        x, _, width, _ = agent.open_window()
        self.assertLessEqual(x + width, SCREEN_WIDTH)
        press("ctrl+Return")
        agent.wait_closed()
        self.assertNotIn("The entry window", self.agent_log())
        self.change("Advanced", 3, "QLVerboseLogging", True)
        wait_until(lambda: "Everything is logged from now on" in self.agent_log(), "the agent's log")
        agent.open_window()
        wait_until(lambda: "The entry window opens" in self.agent_log(), "what it does in its log")
        press("ctrl+Return")
        agent.wait_closed()
        wait_until(lambda: "The entry window closes" in self.agent_log(), "what it does in its log")
        self.change("Advanced", 3, "QLVerboseLogging", False)
        time.sleep(0.3)
        before = self.agent_log()
        agent.open_window()
        time.sleep(0.3)
        self.assertEqual(self.agent_log(), before)

    def test_the_agent_itself_and_its_reminders(self):
        self.ctl("settings", "set", "QLVerboseLogging", "yes")
        self.open_preferences()

        def status():
            return json.loads(self.ctl("--json", "agent", "status"))

        def one_runs():
            return len(status()["running"]) == 1

        self.addCleanup(lambda: self.ctl("agent", "disable"))
        self.change("General", 1, "AgentEnabled", True)
        wait_until(one_runs, "an agent")
        self.assertTrue(status()["loginItem"])
        tray_icon("quillo-agent")
        first = status()["running"]
        self.go("General", 2)
        press("space")
        wait_until(lambda: not status()["loginItem"], "no start at login")
        wait_until(lambda: one_runs() and status()["running"] != first, "another for this session")
        self.go("General", 2)
        press("space")
        wait_until(lambda: status()["loginItem"], "the start at login")

        # The alarm is set as the rule says, each time.
        def due():
            return self.agent_log().count("The next reminder is due at ")

        self.change("Reminders", 1, "RemindersInterval", 1)
        wait_until(lambda: due() > 0, "the alarm set")
        for key, digits in (("RemindersInterval", 3), ("RemindersInterval", 4)):
            before = due()
            self.go("Reminders", 2)
            press("ctrl+a")
            type_text(str(digits))
            press("Tab")
            self.wait_stored(key, digits)
            wait_until(lambda: due() > before, "the alarm set anew")

        self.change("General", 1, "AgentEnabled", False)
        wait_until(lambda: not status()["running"], "no agent")
        self.assertFalse(self.stored("RemindersEnabled"))

    def test_the_ways_of_a_reminder(self):
        wait_notification_server()
        agent = self.start_both()
        self.addCleanup(lambda: self.ctl("agent", "disable"))
        self.change("Reminders", 1, "RemindersEnabled", True)
        # From the button at the end: the sound, the notification, the window.
        self.go("Reminders", 1)
        press("shift+Tab", "shift+Tab", "shift+Tab", "space")
        self.wait_stored("RemindersPlaySound", True)
        press("shift+Tab", "shift+Tab", "space")
        self.wait_stored("RemindersOpenMenuBar", False)
        agent = agent_of(self.home)
        recording = Recording()
        press("Tab", "Tab", "Tab", "space")
        wait_until(lambda: displayed() == 1, "a notification")
        time.sleep(2)
        self.assertEqual(len(recording.stop()), 1)
        self.assertFalse(agent.is_open())
        # The other way round.
        press("shift+Tab", "space", "shift+Tab", "space", "shift+Tab", "space")
        self.wait_stored("RemindersOpenMenuBar", True)
        self.wait_stored("RemindersSendToNotificationCenter", False)
        self.wait_stored("RemindersPlaySound", False)
        press("Tab", "Tab", "Tab", "space")
        agent.window()

    def test_place_and_weather(self):
        service = WeatherService(temperature=18.4, symbol="partlycloudy_day")
        self.addCleanup(service.close)
        set_own_defaults(self.home, WeatherServiceURL=service.url, LocationNMEASource=str(FIXES))
        agent = self.start_both()

        def shown():
            """The line of the window, once it has come."""
            agent.open_window()
            looks = []

            def settled():
                looks.append(self.area(agent, METADATA))
                # A line without a text has next to no colours.
                return len(set(looks[-1])) > 20 and len(looks) > 10 and all(look == looks[-1] for look in looks[-10:])

            wait_until(settled, "place and weather", interval=0.1)
            keep_picture("settings-place")
            press("ctrl+Return")
            agent.wait_closed()
            return looks[-1]

        celsius = shown()
        self.assertEqual(shown(), celsius)
        self.change("Place and Weather", 2, "UseFahrenheitTempScale", True, "End")
        self.assertNotEqual(shown(), celsius)
        self.assertIn("location", self.write(agent, "placed"))
        self.change("Place and Weather", 1, "AddLocationAutomatically", False)
        self.assertNotIn("location", self.write(agent, "nowhere"))

    def test_writing(self):
        grammar = GrammarServer()
        self.addCleanup(grammar.close)
        agent = self.start_both()
        # Spelling, in a window that is open already.
        agent.open_window()
        type_text("the xqzt ")
        wait_until(lambda: self.has_red(agent), "the underline")
        self.change("Writing", 1, "EditorSpellCheckEnabled", False, path=OWN)
        wait_until(lambda: not self.has_red(agent), "no underline")
        self.change("Writing", 1, "EditorSpellCheckEnabled", True, path=OWN)
        wait_until(lambda: self.has_red(agent), "the underline again")
        agent.push(WORD)
        press("ctrl+Return")
        agent.wait_closed()
        # Its correction.
        self.assertEqual(self.write(agent, "teh one ")["text"], "the one ")
        self.change("Writing", 2, "EditorCorrectSpellingEnabled", False, path=OWN)
        self.assertEqual(self.write(agent, "teh two ")["text"], "teh two ")
        # Grammar, by the server that is named.
        self.go("Writing", 4)
        type_text(grammar.url)
        press("Return")
        self.wait_stored("GrammarServerURL", grammar.url, OWN)
        self.change("Writing", 3, "EditorGrammarCheckEnabled", True, path=OWN)
        agent.open_window()
        type_text("This are wrong. ")
        wait_until(lambda: any("This" in text for text in grammar.texts), "the server asked")
        press("ctrl+Return")
        agent.wait_closed()
        # Hashtags.
        self.assertEqual(self.write(agent, "first #harbour")["tags"], ["harbour"])
        self.change("Writing", 5, "ShouldAddHashtags", 2)
        self.assertEqual(self.write(agent, "second #harbour").get("tags", []), [])
        # Markdown.
        for is_on in (False, True):
            if is_on:
                self.change("Writing", 6, "MarkdownEnabled", True, path=OWN)
            agent.open_window()
            type_text(f"bold{is_on:d}")
            press("ctrl+a", "ctrl+b", "ctrl+Return")
            agent.wait_closed()
        self.assertEqual([text for text in self.texts() if "bold" in text], ["**bold1**", "bold0"])

    def test_the_journal(self):
        agent = self.start_both()
        self.write(agent, "in the first")
        self.go("Journal", 3)
        press("space")
        wait_active(window("^Create Quillo Journal$"))
        press("ctrl+a")
        type_text("Second")
        press("Return")
        second = self.home / "Second.quillojournal"
        self.wait_stored("JournalPackageURL", str(second))
        agent.open_window()
        type_text("in the second")
        press("ctrl+Return")
        agent.wait_closed()
        self.assertEqual(self.texts(second), ["in the second"])
        self.assertEqual(self.texts(), ["in the first"])

    def test_what_is_switched_in_the_agents_menus_shows_in_the_open_window(self):
        agent = self.start_both()
        self.addCleanup(lambda: self.ctl("agent", "disable"))
        self.change("Reminders", 1, "RemindersEnabled", True)
        agent = agent_of(self.home)
        agent.choose("Disable Reminders")
        self.wait_stored("RemindersEnabled", False)
        # A switch that showed what was before would switch them off again.
        self.come_to_front()
        time.sleep(0.5)
        keep_picture("settings-reminders-off")
        press("space")
        self.wait_stored("RemindersEnabled", True)

        self.go("Writing", 1)
        agent.open_window()
        agent.push(WORD)
        press("Menu")
        wait_until(agent.menu_is_open, "the text's menu")
        keep_picture("settings-text-menu")
        # Up from the end: Format, then Spelling and Grammar, whose first line is about spelling.
        press("Up", "Up", "Right", "Return")
        self.wait_stored("EditorSpellCheckEnabled", False, OWN)
        self.wait_stored("EditorSpellCheckEnabled", False, ".config/quillo/com.quilloapp.quillo.plist")
        self.come_to_front()
        press("space")
        self.wait_stored("EditorSpellCheckEnabled", True, OWN)


if __name__ == "__main__":
    import unittest
    unittest.main()
