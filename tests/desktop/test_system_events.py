"""The running agent follows the system's clock and time zone without a restart. Real events: a zone file exchanged in an
/etc of the agent's own, and a clock set by a nanosecond. Left out where the user may not do that."""

import ctypes
import os
import plistlib
import re
import struct
import subprocess
import time
from datetime import datetime, timedelta
from pathlib import Path
from zoneinfo import ZoneInfo

from desktop import program, run, tray_icon, wait_until
from quillo import LIST, AgentTestCase


def next_reading(hour, zone):
    """The seconds since 1970 at which a clock in the zone next shows this hour."""
    now = datetime.now(ZoneInfo(zone))
    due = now.replace(hour=hour, minute=0, second=0, microsecond=0)
    return round((due if due > now else due + timedelta(days=1)).timestamp())


def armed(pid):
    """When the kernel will wake the process by its wall clock. The timer that only waits for clock changes is not counted."""
    found = []
    for path in Path(f"/proc/{pid}/fdinfo").iterdir():
        try:
            value = re.search(r"clockid: 0\n(?:.*\n)*?it_value: \((\d+), (\d+)\)", path.read_text())
        except OSError:
            continue  # just closed
        if value and (0, 0) != (seconds := int(value[1]), int(value[2])) and seconds < 1e9:
            found.append(round(time.time() + seconds + int(value[2]) / 1e9))
    return found


def move_clock(nanoseconds):
    """False where this user may not."""
    set_offset, in_nanoseconds = 0x0100, 0x2000
    change = bytearray(256)
    struct.pack_into("i", change, 0, set_offset | in_nanoseconds)
    struct.pack_into("qq", change, 72, -1 if nanoseconds < 0 else 0, nanoseconds % 1_000_000_000)
    clock_realtime = 0
    libc = ctypes.CDLL(None)
    return libc.clock_adjtime(clock_realtime, (ctypes.c_char * len(change)).from_buffer(change)) >= 0


class SystemEventsTest(AgentTestCase):
    def setUp(self):
        super().setUp()
        self.ctl("reminder", "set", "--every", "1 day", "--starting", "2014-03-10T09:00", "--zone", "Europe/Berlin")
        # Not by "reminder on", which would start an agent of its own.
        self.ctl("settings", "set", "RemindersEnabled", "yes")

    def agent(self, *before):
        agent = self.start("env", "-u", "TZ", *before, program("quillo-agent"), "--home", str(self.home))
        tray_icon("quillo-agent")
        return agent

    def wait_armed(self, agent, due):
        wait_until(lambda: len(found := armed(agent.pid)) == 1 and abs(found[0] - due) <= 1,
                   f"armed for {due}, but for {armed(agent.pid)}")

    def test_a_new_time_zone(self):
        own_mounts = ["unshare", "--mount", "--propagation", "private"]
        if subprocess.run([*own_mounts, "true"], capture_output=True, check=False).returncode != 0:
            self.skipTest("this user may not have mounts of its own")
        etc = self.home / "etc"
        run("cp", "-a", "/etc", str(etc))

        def move_to(zone):
            (etc / "new").symlink_to(f"/usr/share/zoneinfo/{zone}")
            os.replace(etc / "new", etc / "localtime")

        move_to("Europe/Berlin")
        agent = self.agent(*own_mounts, "sh", "-c", 'mount --bind "$1" /etc && shift && exec "$@"', "sh", str(etc))
        self.wait_armed(agent, next_reading(9, "Europe/Berlin"))
        for zone in ("Asia/Kolkata", "America/New_York"):
            move_to(zone)
            self.wait_armed(agent, next_reading(9, zone))

    def test_a_clock_that_was_set(self):
        agent = self.agent()
        # The icon comes first.
        here = wait_until(lambda: armed(agent.pid), "a reminder armed")
        self.assertEqual(len(here), 1)
        # Another writer changes the rule and says nothing: only the clock makes the agent look again.
        path = self.home / LIST
        settings = plistlib.loads(path.read_bytes())
        settings["RemindersBaseDate"] += timedelta(hours=3)
        path.write_bytes(plistlib.dumps(settings))
        if not move_clock(1):
            self.skipTest("this user may not set the clock")
        self.addCleanup(move_clock, -1)
        wait_until(lambda: (now := armed(agent.pid)) and abs(now[0] - here[0]) % 86400 > 3600, "another reminder armed")
        self.assertAlmostEqual((armed(agent.pid)[0] - here[0]) % 86400, 3 * 3600, delta=1)
