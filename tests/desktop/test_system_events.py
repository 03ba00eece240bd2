"""The running agent follows the system's time zone without a restart: a zone file is exchanged in an /etc of the agent's
own. Left out where the user may not have one."""

import os
import re
import subprocess
import time
from datetime import datetime, timedelta
from pathlib import Path
from zoneinfo import ZoneInfo

from desktop import program, run, tray_icon, wait_until
from quillo import AgentTestCase


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
