"""Hot keys where the desktop portal claims them, on a portal that does what the test says."""

import os
import signal

from desktop import program, wait_until
from quillo import AgentTestCase

SESSION = "/org/freedesktop/portal/desktop/session/"


class PortalTest(AgentTestCase):
    def portal(self):
        portal = self.start(program("desktop_portal"))
        portal.expect("ready")
        return portal

    def probe(self):
        return self.start_probe("--no-window", command="keys portal")

    def claim(self, probe, key=38, number=7):
        return probe.ask(f"claim {key} 768 {number}", r"claimed 0 (\d+) pending")[1]

    def test_a_claim_is_pending_then_active_and_its_presses_arrive(self):
        portal, probe = self.portal(), self.probe()
        portal.ask("answer silent", "ok")
        ref = self.claim(probe)
        portal.expect("application probe")
        session = portal.expect("session (.*)")[1]
        self.assertTrue(session.startswith(SESSION))
        portal.expect(r"bind key-38-768 \| SHIFT\+LOGO\+j \| Probe it")
        portal.ask("yes", "ok")
        probe.expect(f"state {ref} active")
        # With what lets a program that is started now take the keyboard.
        for word in ("press", "release", "press"):
            portal.ask(word, "ok")
        probe.expect("pressed 7 token-1")
        probe.expect("released 7")
        probe.expect("pressed 7 token-1")

        probe.ask(f"unclaim {ref}", "unclaimed 0")
        portal.expect(f"closed {session}")
        portal.ask("press", "ok")
        # Another is claimed and heard; the old one was not.
        self.claim(probe, 40, 8)
        portal.expect(r"bind key-40-768 \| SHIFT\+LOGO\+k \| Probe it")
        portal.ask("yes", "ok")
        probe.expect(r"state \d+ active")
        portal.ask("press", "ok")
        probe.expect("pressed 8 token-1")
        self.assertEqual(probe.unread, [])
        self.assertFalse([line for line in portal.unread if line.startswith("unknown")])

    def test_a_refusal_is_told_once(self):
        portal, probe = self.portal(), self.probe()
        for answer, reason in (("cancel", "it was declined"), ("other", "the desktop did not grant it"), ("nothing", "it was declined")):
            with self.subTest(answer):
                portal.ask(f"answer {answer}", "ok")
                ref = self.claim(probe)
                probe.expect(f"state {ref} refused {reason}")
                probe.ask(f"unclaim {ref}", "unclaimed 0")
                portal.expect("closed .*")
        # Granted, and taken back.
        portal.ask("answer accept", "ok")
        ref = self.claim(probe)
        probe.expect(f"state {ref} active")
        portal.ask("close", "ok")
        probe.expect(f"state {ref} refused the desktop has taken it back")
        portal.ask("press", "ok")
        self.assertEqual(probe.ask("unclaim 99", "unclaimed .*")[0], "unclaimed -9879")
        self.assertEqual(probe.unread, [])

    def test_a_press_counts_though_the_portal_listed_no_shortcut(self):
        portal, probe = self.portal(), self.probe()
        portal.ask("answer nothing", "ok")
        ref = self.claim(probe)
        probe.expect(f"state {ref} refused it was declined")
        portal.ask("press", "ok")
        probe.expect(f"state {ref} active")
        probe.expect("pressed 7 token-1")

    def test_without_a_portal_it_is_unsupported_until_one_comes_and_asked_again_after_a_restart(self):
        probe = self.probe()
        ref = self.claim(probe)
        probe.expect(rf"state {ref} unsupported this desktop lets no program claim keys \(.*\)")
        for _ in range(2):
            portal = self.portal()
            probe.expect(f"state {ref} active")
            portal.ask("press", "ok")
            probe.expect("pressed 7 token-1")
            os.kill(portal.pid, signal.SIGKILL)
            portal.wait()
            probe.expect(rf"state {ref} unsupported .*")
        self.assertTrue(probe.is_running)

    def test_the_agent_reports_refusal_and_absence_in_one_line_each(self):
        self.ctl("shortcut", "set", "cmd+shift+J")
        agent = self.start_agent(QT_QPA_PLATFORM="offscreen")
        complaints = self.shortcut_problems
        wait_until(complaints, "the absence of a portal in the log")
        self.assertEqual(len(complaints()), 1, complaints())
        self.assertIn("The shortcut ⌘⇧J is not available: this desktop lets no program claim keys", complaints()[0])
        portal = self.portal()
        portal.expect(r"bind key-38-768 .*Write a journal entry")
        portal.ask("answer cancel", "ok")
        self.ctl("shortcut", "set", "cmd+F12")
        portal.expect(r"bind key-111-256 \| LOGO\+F12 .*")
        wait_until(lambda: len(complaints()) > 1, "the refusal in the log")
        self.assertEqual(complaints()[1:], ["The shortcut ⌘F12 is not available: it was declined"])
        self.assertTrue(agent.program.is_running)
