"""The Debian package as a system meets it: what is in it, what it needs, what its removal takes along."""

import os
import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

TOOLS = {"dpkg-deb": "dpkg", "dpkg-shlibdeps": "dpkg-dev", "lintian": "lintian", "desktop-file-validate": "desktop-file-utils",
         "appstreamcli": "appstream"}


def run(*command, **options):
    done = subprocess.run(command, capture_output=True, text=True, timeout=200, **options)
    if done.returncode != 0:
        raise AssertionError(f"{' '.join(map(str, command))}: {done.stdout}{done.stderr}")
    return done.stdout


@unittest.skipIf(any(shutil.which(tool) is None for tool in TOOLS), f"one of these packages is missing: {', '.join(TOOLS.values())}")
class PackageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.directory = Path(tempfile.mkdtemp())
        cls.addClassCleanup(shutil.rmtree, cls.directory)
        # A user with a strict umask gets the same package.
        run(os.environ["CPACK"], "-G", "DEB", "-B", str(cls.directory), "--config",
            os.path.join(os.environ["QUILLO_BUILD"], "CPackConfig.cmake"), umask=0o077)
        [cls.package] = cls.directory.glob("*.deb")
        cls.root = cls.directory / "root"
        run("dpkg-deb", "-x", cls.package, cls.root)

    def test_everything_is_in_its_place(self):
        modules = (f"usr/lib/quillo-agent/modules/quillo-{name}.so" for name in ("crash-stack", "grammar", "pdf", "services", "sound", "spelling"))
        for path in ("usr/bin/quillo", "usr/bin/quillo-agent", "usr/bin/quilloctl", *modules, "usr/share/applications/quillo-agent.desktop",
                     "usr/share/applications/com.quilloapp.quillo.desktop", "etc/xdg/autostart/com.quilloapp.quillo-agent.desktop",
                     "usr/share/icons/hicolor/48x48/apps/quillo-agent.png", "usr/share/man/man1/quillo.1.gz",
                     "usr/share/man/man1/quillo-agent.1.gz", "usr/share/man/man1/quilloctl.1.gz",
                     "usr/share/bash-completion/completions/quilloctl", "usr/share/zsh/vendor-completions/_quilloctl",
                     "usr/share/fish/vendor_completions.d/quilloctl.fish",
                     "usr/share/metainfo/com.quilloapp.quillo-agent.metainfo.xml", "usr/share/doc/quillo-agent/copyright"):
            self.assertTrue((self.root / path).is_file(), path)
        for path in self.root.rglob("*"):
            self.assertEqual(path.stat().st_mode & 0o777, 0o755 if path.is_dir() or path.parent.name == "bin" else 0o644, path)
        listing = run("dpkg-deb", "-c", self.package)
        self.assertTrue(all(line.split()[1] == "root/root" for line in listing.splitlines()))

    def test_the_desktop_knows_what_opens_quillo_and_starts_nothing_at_login(self):
        handler = (self.root / "usr/share/applications/com.quilloapp.quillo.desktop").read_text()
        self.assertIn("MimeType=x-scheme-handler/quillo;", handler)
        self.assertIn("Exec=quillo %u", handler)
        self.assertIn("Hidden=true", (self.root / "etc/xdg/autostart/com.quilloapp.quillo-agent.desktop").read_text())
        run("desktop-file-validate", *self.root.rglob("*.desktop"))
        run("appstreamcli", "validate", "--no-net", *self.root.rglob("*.metainfo.xml"))

    def test_it_needs_what_it_is_linked_with_and_removal_touches_nothing_else(self):
        depends = run("dpkg-deb", "-f", self.package, "Depends")
        for package in ("libc6", "libqt6widgets6", "libqt6dbus6", "libqt6multimedia6", "libqt6network6", "libqt6positioning6",
                        "libhunspell-1.7-0", "libdw1", "libicu72", "libxcb1", "qt6-qpa-plugins", "libqt6sql6-sqlite"):
            self.assertIn(package, depends)
        # No script runs when it is removed: the user's journal and settings are not the package's.
        control = self.directory / "control"
        run("dpkg-deb", "-e", self.package, control)
        self.assertLessEqual({p.name for p in control.iterdir()}, {"control", "md5sums", "conffiles"})

    def test_lintian_finds_no_error(self):
        found = subprocess.run(["lintian", "--fail-on", "none", "--tag-display-limit", "0", self.package], capture_output=True,
                               text=True, timeout=200).stdout
        self.assertEqual(re.findall("^E: .*$", found, re.MULTILINE), [])


if __name__ == "__main__":
    unittest.main()
