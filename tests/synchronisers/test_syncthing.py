"""Two instances of Syncthing on this machine's loopback, whose link is cut and restored while both sides write."""

import json
import os
import shutil
import socket
import subprocess
import time
import unittest
import urllib.request
import xml.etree.ElementTree as ElementTree
from pathlib import Path

from machines import TwoMachinesTestCase, edits, leave_the_network

FOLDER = "journal"


def setUpModule():
    if not shutil.which("syncthing"):
        raise unittest.SkipTest("no syncthing")
    leave_the_network()


def free_port():
    with socket.socket() as listener:
        listener.bind(("127.0.0.1", 0))
        return listener.getsockname()[1]


class Instance:
    """Reaches nothing but the other one."""

    def __init__(self, home, journal):
        self.config, self.journal = home / "syncthing", journal
        self.port, self.gui = free_port(), free_port()
        self.environment = {**os.environ, "HOME": str(home), "STNORESTART": "1", "STNOUPGRADE": "1", "STNODEFAULTFOLDER": "1"}
        subprocess.run(["syncthing", "generate", "--home", self.config, "--no-default-folder"], env=self.environment, check=True, capture_output=True, timeout=60)
        self.tree = ElementTree.parse(self.config / "config.xml")
        self.device = self.tree.getroot().find("device").get("id")
        self.key = self.tree.getroot().find("gui/apikey").text

    def configure(self, other):
        root = self.tree.getroot()
        options = root.find("options")
        for name, value in {"globalAnnounceEnabled": "false", "localAnnounceEnabled": "false", "relaysEnabled": "false", "natEnabled": "false",
                            "crashReportingEnabled": "false", "urAccepted": "-1", "urSeen": "9999", "autoUpgradeIntervalH": "0", "startBrowser": "false",
                            "announceLANAddresses": "false", "stunKeepaliveStartS": "0", "reconnectionIntervalS": "1",
                            "listenAddress": f"tcp://127.0.0.1:{self.port}"}.items():
            for element in options.findall(name):
                options.remove(element)
            ElementTree.SubElement(options, name).text = value
        root.find("gui/address").text = f"127.0.0.1:{self.gui}"
        for element in root.findall("device") + root.findall("folder"):
            root.remove(element)
        for instance in (self, other):
            device = ElementTree.SubElement(root, "device", id=instance.device, name=instance.config.parent.name, compression="never")
            ElementTree.SubElement(device, "address").text = f"tcp://127.0.0.1:{instance.port}"
        folder = ElementTree.SubElement(root, "folder", id=FOLDER, path=str(self.journal), type="sendreceive", rescanIntervalS="3600",
                                        fsWatcherEnabled="true", fsWatcherDelayS="1")
        # It removes the oldest copies of a file beyond ten, as it comes.
        ElementTree.SubElement(folder, "maxConflicts").text = "-1"
        for instance in (self, other):
            ElementTree.SubElement(folder, "device", id=instance.device)
        self.tree.write(self.config / "config.xml")

    def start(self):
        self.log = open(self.config / "log", "wb")
        self.process = subprocess.Popen(["syncthing", "serve", "--home", self.config, "--no-browser", "--no-restart", "--no-upgrade"],
                                        env=self.environment, stdout=self.log, stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL)

    def stop(self):
        self.process.terminate()
        self.process.wait(60)
        self.log.close()

    def ask(self, path, post=False):
        request = urllib.request.Request(f"http://127.0.0.1:{self.gui}/rest/{path}", headers={"X-API-Key": self.key}, method="POST" if post else "GET")
        # Not through a proxy that the environment may name.
        with urllib.request.build_opener(urllib.request.ProxyHandler({})).open(request, timeout=60) as answer:
            text = answer.read()
        return json.loads(text) if text else None

    def is_running(self):
        try:
            return self.ask("system/ping")["ping"] == "pong"
        except OSError:
            return False

    def is_level_with(self, other):
        """All that was found here is there, and the other way round."""
        self.ask(f"db/scan?folder={FOLDER}", post=True)
        completion = self.ask(f"db/completion?folder={FOLDER}&device={other.device}")
        status = self.ask(f"db/status?folder={FOLDER}")
        return completion["completion"] == 100 and completion["needDeletes"] == 0 and status["state"] == "idle" and status["needTotalItems"] == 0


class SyncthingTest(TwoMachinesTestCase):
    def setUp(self):
        super().setUp()
        laptop, desktop = self.machines
        laptop.ctl("journal", "create", str(laptop.journal))
        laptop.ctl("journal", "set", str(laptop.journal))
        desktop.journal.mkdir()
        self.instances = [Instance(machine.home, machine.journal) for machine in self.machines]
        for instance, other in (self.instances, self.instances[::-1]):
            instance.configure(other)
        for machine, instance in zip(self.machines, self.instances):
            # How Syncthing knows a folder that is there from one that is not mounted.
            (machine.journal / ".stfolder").mkdir()
            instance.start()
            self.addCleanup(instance.stop)
        self.wait_until(lambda: all(instance.is_running() for instance in self.instances))

    def wait_until(self, condition, seconds=120):
        deadline = time.monotonic() + seconds
        while not condition():
            if time.monotonic() > deadline:
                logs = "\n".join(Path(instance.config / "log").read_text()[-3000:] for instance in self.instances)
                self.fail(f"it has not come:\n{logs}")
            time.sleep(0.1)

    def link(self, is_linked):
        for instance, other in (self.instances, self.instances[::-1]):
            instance.ask(f"system/{'resume' if is_linked else 'pause'}?device={other.device}", post=True)

    def settle(self):
        """Until both have the same files, twice in a row."""
        level = 0

        def is_level():
            nonlocal level
            first, second = self.instances
            files = [{name for name in os.listdir(machine.entries) if not name.startswith(".")} if machine.entries.exists() else None for machine in self.machines]
            is_same = first.is_level_with(second) and second.is_level_with(first) and files[0] == files[1] and self.machines[0].files() == self.machines[1].files()
            level = level + 1 if is_same else 0
            return level > 1
        self.wait_until(is_level)

    def test_no_saved_word_is_lost(self):
        laptop, desktop = self.machines
        self.edit(laptop)
        self.wait_until(lambda: (desktop.journal / "Journal.plist").exists() and desktop.uuids() == laptop.uuids())
        desktop.ctl("journal", "set", str(desktop.journal))
        self.assertFalse([path for path in desktop.journal.iterdir() if path.name == ".stignore"], "which stays on its machine")

        # The link is cut, both write, it is restored, and both go on writing while files are on their way.
        self.settle()
        number = 0
        while number < edits():
            self.link(False)
            for _ in range(self.random.randint(5, 25)):
                self.edit(self.random.choice(self.machines))
                number += 1
            self.link(True)
            for _ in range(self.random.randint(0, 15)):
                self.edit(self.random.choice(self.machines))
                number += 1
            if self.random.random() < 0.8:
                self.settle()
            # Sometimes a person looks after it in between, on either side.
            if self.random.random() < 0.1:
                self.resolve(self.random.choice(self.machines))
        self.link(True)
        self.settle()
        copies = sum(len(conflict["versions"]) - 1 for conflict in laptop.conflicts())
        print(f"{len(self.saved)} words saved, {len(laptop.uuids())} entries, {copies} conflict copies", flush=True)
        self.assertGreater(copies, 0)
        self.assert_nothing_is_lost()

        self.resolve(laptop)
        self.settle()
        for machine in self.machines:
            self.assertEqual(machine.conflicts(), [])
            self.assertIn("all readable", machine.ctl("journal", "check"))
        self.assert_equal_journals()
        self.assert_nothing_is_lost()
