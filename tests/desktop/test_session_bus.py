"""Notifications and requests to end, between processes on a real session bus that may go away."""

import os
import subprocess
import tempfile
import unittest
from pathlib import Path

from desktop import DesktopTestCase, program, run, start_part, stop_part, wait_until
from quillo import install_handler

BUNDLE = "com.quilloapp.probe"


class SessionBus(DesktopTestCase):
    def start_probe(self, **environment):
        return super().start_probe("--no-window", **environment)

    def test_everybody_hears_a_notification_once_the_sender_too(self):
        first, second = self.start_probe(), self.start_probe()
        first.ask("post com.example.One", "posted yes")
        for probe in (first, second):
            probe.expect("received com.example.One")
        second.ask("post com.example.Two", "posted yes")
        for probe in (first, second):
            probe.expect("received com.example.Two")
            self.assertEqual(probe.unread, [])

    def test_a_sender_that_exits_at_once_is_heard(self):
        listener = self.start_probe()
        for number in range(50):
            self.assertEqual(subprocess.call([program("desktop_probe"), "--post", f"Name{number}"]), 0)
        for number in range(50):
            listener.expect(f"received Name{number}")

    def test_a_flood_is_heard_as_few_and_its_last_for_certain(self):
        sender, listener = self.start_probe(), self.start_probe()
        count = 3000
        for _ in range(count):
            sender.send("post com.example.Flood")
            sender.send("post com.example.Other")
        for _ in range(2 * count):
            sender.expect("posted yes")
        # After the last was sent.
        sender.expect("received com.example.Flood")
        sender.ask("post com.example.Last", "posted yes")
        wait_until(lambda: "received com.example.Last" in listener.unread, "the name behind the flood")
        heard = listener.unread
        self.assertEqual(heard[:2], ["received com.example.Flood", "received com.example.Other"])
        self.assertLess(len(heard), count / 2)

    def test_names_that_no_notification_has_are_dropped(self):
        listener = self.start_probe()
        listener.ask("post " + "x" * 256, "posted no")
        emit = ["gdbus", "emit", "--session", "--object-path", "/com/quilloapp/DistributedNotifications", "--signal",
                "com.quilloapp.DistributedNotifications.Posted"]
        for arguments in (["'line\\nbreak'"], ["''"], ["'" + "x" * 100000 + "'"], ["7"], ["'a'", "'b'"], ["'good'"]):
            run(*emit, *arguments)
        self.assertEqual(listener.expect("received.*")[0], "received good")
        self.assertEqual(listener.unread, [])

    def test_ends_another_program_politely(self):
        asker, other, unrelated = self.start_probe(), self.start_probe(), self.start_probe()
        other.ask("register " + BUNDLE, "registered yes")
        unrelated.ask(f"register {BUNDLE}-agent", "registered yes")
        asker.ask("running " + BUNDLE, f"running {other.pid}")
        asker.ask("terminate " + BUNDLE, "terminated 1")
        other.expect("terminate")
        self.assertEqual(other.wait(), 0)
        asker.ask("running " + BUNDLE, "running ")
        asker.ask("terminate " + BUNDLE, "terminated 0")
        self.assertTrue(unrelated.is_running)

    def test_of_two_copies_the_older_ends(self):
        older, newer = self.start_probe(), self.start_probe()
        older.ask("register " + BUNDLE, "registered yes")
        newer.ask("register " + BUNDLE, "registered yes")
        older.ask("terminate " + BUNDLE, "terminated 1")
        older.expect("terminate")
        self.assertEqual(older.wait(), 0)
        newer.ask("terminate " + BUNDLE, "terminated 0")
        self.assertTrue(newer.is_running)

    def test_the_request_is_answered_before_the_program_ends(self):
        other = self.start_probe()
        other.ask("register " + BUNDLE, "registered yes")
        run("gdbus", "call", "--session", "--dest", f"{BUNDLE}.p{other.pid}", "--object-path",
            "/com/quilloapp/Application", "--method", "com.quilloapp.Application.Terminate")
        self.assertEqual(other.wait(), 0)

    @unittest.skipIf(os.getuid() != 0, "only root can call as somebody else")
    def test_another_user_on_the_bus_can_ask_for_nothing(self):
        directory = self.enterContext(tempfile.TemporaryDirectory())
        os.chmod(directory, 0o755)
        address = f"unix:path={directory}/bus"
        with open(os.path.join(directory, "bus.conf"), "w") as file:
            file.write(f"""<busconfig><type>session</type><listen>{address}</listen><auth>EXTERNAL</auth>
                <policy context="default"><allow user="*"/><allow send_destination="*" eavesdrop="true"/>
                <allow eavesdrop="true"/><allow own="*"/></policy></busconfig>""")
        self.start("dbus-daemon", f"--config-file={directory}/bus.conf", "--nofork", "--nopidfile")
        wait_until(lambda: os.path.exists(os.path.join(directory, "bus")), "the open bus")
        probe = self.start_probe(DBUS_SESSION_BUS_ADDRESS=address)
        probe.ask("register " + BUNDLE, "registered yes")
        for method in ("Terminate", "Toggle"):
            call = subprocess.run(["setpriv", "--reuid=65534", "--clear-groups", "gdbus", "call", "--address", address,
                                   "--dest", f"{BUNDLE}.p{probe.pid}", "--object-path", "/com/quilloapp/Application",
                                   "--method", f"com.quilloapp.Application.{method}"], capture_output=True, text=True)
            self.assertIn("requests of its own user only", call.stderr, method)
        probe.ask("running " + BUNDLE, f"running {probe.pid}")
        self.assertEqual(probe.unread, [])

    def test_works_on_when_the_bus_goes_and_with_it_when_it_returns(self):
        first, second = self.start_probe(), self.start_probe()
        first.ask("register " + BUNDLE, "registered yes")
        stop_part("bus")
        wait_until(lambda: first.ask("post One", "posted (yes|no)")[1] == "no", "the bus missed")
        first.ask("running " + BUNDLE, "running ")
        start_part("bus")
        # One that only listens is back by itself.
        wait_until(lambda: second.ask("post Two", "posted (yes|no)")[1] == "yes", "the bus found again")
        wait_until(lambda: second.ask("running " + BUNDLE, "running ?(.*)")[1] == str(first.pid), "the listener again")
        second.ask("post Three", "posted yes")
        for probe in (first, second):
            probe.expect("received Three")
        wait_until(lambda: first.ask("running " + BUNDLE, "running ?(.*)")[1] == str(first.pid), "its name again")
        self.assertEqual(second.ask("terminate " + BUNDLE, "terminated .*")[0], "terminated 1")
        self.assertEqual(first.wait(), 0)

    def test_opens_a_url_only_where_a_program_takes_it_and_starts_another_by_its_identifier(self):
        probe = self.start_probe()
        url = "quillo://edit?entryId=A-1&x='; touch ~/no;%20"
        probe.ask("open " + url, "opened no")
        written = install_handler(Path(os.environ["HOME"]))
        probe.ask("open " + url, "opened yes")
        wait_until(written.exists, "the program started")
        self.assertEqual(written.read_text(), "quillo://edit?entryId=A-1&x=';%20touch%20~/no;%20\n")
        # Another by its identifier.
        probe.ask("launch com.example.other", "launched no")
        written = install_handler(Path(os.environ["HOME"]), "com.example.other", "")
        probe.ask("launch com.example.other", "launched yes")
        wait_until(written.exists, "the program started")
