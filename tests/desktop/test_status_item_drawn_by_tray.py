"""The status item in a tray that draws icons itself and talks over the session bus."""

import re
import unittest

from desktop import DesktopTestCase, program, run


class DrawnStatusItem(DesktopTestCase):
    def setUp(self):
        host = self.start(program("desktop_tray_host"))
        host.expect("ready")
        self.probe = self.start(program("desktop_probe"))
        self.probe.expect("ready")
        self.probe.send("tray")
        self.item = host.expect("item (.*)")[1]

    def call(self, path, method, *arguments):
        return run("gdbus", "call", "--session", "--dest", self.item, "--object-path", path, "--method", method,
                   "--", *arguments)

    def property(self, name):
        return self.call("/StatusNotifierItem", "org.freedesktop.DBus.Properties.Get", "org.kde.StatusNotifierItem", name)

    def test_click_and_place(self):
        self.probe.ask("geometry", "geometry nowhere")
        run("xdotool", "mousemove", "700", "300")
        for _ in range(2):
            self.call("/StatusNotifierItem", "org.kde.StatusNotifierItem.Activate", "5", "5")
            self.probe.expect("click")
        self.assertEqual(self.probe.unread, [])
        self.probe.ask("anchor", "anchor 689 289 22 22")

    def test_the_tray_gets_the_menu_and_its_choice_arrives(self):
        menu = re.search(r"'(/[^']*)'", self.property("Menu"))[1]
        layout = self.call(menu, "com.canonical.dbusmenu.GetLayout", "0", "-1", "[]")
        entry = re.search(r"\((\d+), \{[^}]*'Choose'", layout)[1]
        self.call(menu, "com.canonical.dbusmenu.AboutToShow", "0")
        self.call(menu, "com.canonical.dbusmenu.Event", entry, "clicked", "<''>", "0")
        self.probe.expect("chosen")
        self.assertNotIn("click", self.probe.unread)

    def test_the_tray_gets_the_picture(self):
        pixels = self.property("IconPixmap")
        icon_name = self.property("IconName")
        self.assertTrue("22, 22" in pixels or "/" in icon_name, (pixels[:100], icon_name))


if __name__ == "__main__":
    unittest.main()
