"""The agent's icon in a tray that draws icons itself and talks over the session bus. The tray comes after the agent."""

import re

from desktop import program, run, type_text, wait_until, window_rect
from quillo import AgentTestCase, set_reminder_in

ITEM = "org.kde.StatusNotifierItem"
MENU = "com.canonical.dbusmenu"


class DrawnIcon(AgentTestCase):
    def setUp(self):
        super().setUp()
        self.ctl("reminder", "off")
        self.agent = self.start_agent()
        wait_until(lambda: "There is no tray yet" in self.log(), "the agent up without a tray")
        self.start_host()

    def start_host(self):
        self.host = self.start(program("desktop_tray_host"))
        self.item = self.host.expect("item (.*)")[1]

    def call(self, path, method, *arguments):
        return run("gdbus", "call", "--session", "--dest", self.item, "--object-path", path, "--method", method,
                   "--", *arguments)

    def property(self, name):
        return self.call("/StatusNotifierItem", "org.freedesktop.DBus.Properties.Get", ITEM, name)

    def activate(self):
        self.call("/StatusNotifierItem", ITEM + ".Activate", "5", "5")

    def test_clicks_toggle_the_window_and_change_the_picture(self):
        at_rest = self.property("IconPixmap")
        self.assertIn("22, 22", at_rest)
        # Nobody tells the panel's colour: the picture has to show on black and on white.
        pixels = bytes.fromhex("".join(re.findall("0x(..)", at_rest.split("]")[0])))
        opaque = {pixels[at + 1:at + 4] for at in range(0, len(pixels), 4) if pixels[at] == 255}
        self.assertLessEqual({b"\0\0\0", b"\xff\xff\xff"}, opaque)
        run("xdotool", "mousemove", "700", "300")
        self.activate()
        x, y, width, _ = window_rect(self.agent.window())
        # Nothing tells where the icon is, but the pointer is on it.
        self.assertAlmostEqual(x + width / 2, 700, delta=1)
        self.assertAlmostEqual(y, 300 + 11 - 5, delta=1)
        # The picture follows the window a moment later.
        wait_until(lambda: self.property("IconPixmap") != at_rest, "the highlight")
        highlighted = self.property("IconPixmap")
        type_text("drawn")
        self.activate()
        self.agent.wait_closed()
        wait_until(lambda: self.property("IconPixmap") == at_rest, "the picture as before")
        self.assertEqual(self.texts(), ["drawn"])

        self.ctl("reminder", "on")
        set_reminder_in(self.home, 2)
        self.agent.window()
        wait_until(lambda: self.property("IconPixmap") not in (at_rest, highlighted), "the reminder's picture")

    def test_the_menu_and_its_end(self):
        at_rest = self.property("IconPixmap")
        menu = re.search(r"'(/[^']*)'", self.property("Menu"))[1]
        self.activate()
        self.agent.window()
        self.call(menu, MENU + ".AboutToShow", "0")
        self.agent.wait_closed()
        wait_until(lambda: self.property("IconPixmap") != at_rest, "the highlight of the menu")
        self.call(menu, MENU + ".Event", "0", "closed", "<''>", "0")
        wait_until(lambda: self.property("IconPixmap") == at_rest, "no highlight after the menu")
        # A tray that does not tell that it closed its menu.
        self.call(menu, MENU + ".AboutToShow", "0")
        wait_until(lambda: self.property("IconPixmap") == at_rest, "no highlight a while after the menu")

        layout = self.call(menu, MENU + ".GetLayout", "0", "-1", "[]")
        quit_item = re.search(r"\((\d+), \{[^}]*'Quit Quillo'", layout)[1]
        self.call(menu, MENU + ".Event", quit_item, "clicked", "<''>", "0")
        self.assertEqual(self.agent.program.wait(), 0)

    def test_the_tool_tip_has_the_next_reminder(self):
        self.assertIn("'Quillo'", self.property("ToolTip"))
        set_reminder_in(self.home, 3600)
        self.ctl("reminder", "on")
        wait_until(lambda: re.search(r"'Next Reminder: .*\d\d", self.property("ToolTip")), "the reminder in the tool tip")
        self.ctl("reminder", "off")
        wait_until(lambda: "'Quillo'" in self.property("ToolTip"), "the program's name in the tool tip")
