"""The agent's icon in trays that embed it: clicks, looks, the window under it. Runs once for each kind of tray
and each edge."""

import os
from pathlib import Path

from desktop import center, click, pixel, press, run, start_part, stop_part, tray_icon, tray_icons, type_text, wait_until
from quillo import AgentTestCase, set_reminder_in

WHITE = (255, 255, 255)
# The panel is 0x20 of each; trays round while they blend.
DARKEST_HIGHLIGHT = 0x28
IS_TINT2 = "tint2" in Path(os.environ["QUILLO_DESKTOP"], "tray").read_text()


class Icon(AgentTestCase):
    def setUp(self):
        super().setUp()
        self.agent = self.start_shown_agent()

    def colours(self):
        """Of the middle of the icon, which the feather covers, and of the place beside it that the highlight covers."""
        x, y, width, height = tray_icon("quillo-agent")
        return pixel(x + width // 2, y + height // 2), pixel(x + 3, y + height // 2)

    def wait_looks(self, what, feather, is_highlighted):
        def looks():
            middle, beside = self.colours()
            return feather(middle) and (beside[0] > DARKEST_HIGHLIGHT) == is_highlighted

        wait_until(looks, f"{what}, but {self.colours()}", interval=0.05)

    def test_clicks(self):
        icon = center(tray_icon("quillo-agent"))
        # Control makes no other click of it.
        for keys in ([], ["keydown", "ctrl"]):
            run("xdotool", *keys, "mousemove", *map(str, icon), "click", "1", "keyup", "ctrl")
            self.agent.window()
            click(*icon)
            self.agent.wait_closed()

        self.agent.open_window()
        # Any other button shows the menu, in place of the window.
        for button in (3, 2):
            click(*icon, button=button)
            wait_until(self.agent.menus, f"the menu of button {button}")
            self.agent.wait_closed()
            # A click beside an open menu closes it and does nothing else, on the icon too.
            click(*icon)
            wait_until(lambda: not self.agent.menus(), "the menu closed")
            self.assertFalse(self.agent.is_open())
        self.wait_looks("no highlight", lambda c: c == WHITE, False)

    def test_looks(self):
        is_white = lambda c: c == WHITE
        is_red = lambda c: c[0] > 150 and c[1] < 90 and c[2] < 90
        self.wait_looks("at rest", is_white, False)
        self.agent.open_window()
        self.wait_looks("window shown", is_white, True)
        self.agent.click_icon(button=3)
        wait_until(self.agent.menus, "the menu")
        self.wait_looks("menu shown", is_white, True)
        press("Escape")
        self.wait_looks("menu closed", is_white, False)
        set_reminder_in(self.home, 2)
        self.agent.window()
        self.wait_looks("reminder", is_red, True)
        self.agent.click_icon()
        self.agent.wait_closed()
        self.wait_looks("at rest again", is_white, False)

    def assert_window_is_at_icon(self):
        def offsets():
            body, icon = self.agent.body(), tray_icon("quillo-agent")
            middle = abs(body[0] + body[2] / 2 - icon[0] - icon[2] / 2)
            # Above the icon of a panel at the bottom of the screen, else below it.
            is_above = icon[1] > 400
            return middle, abs(body[1] + body[3] - icon[1] - 5 if is_above else body[1] - icon[1] - icon[3] + 5)

        wait_until(lambda: max(offsets()) <= 1, f"the window at the icon, but {offsets()}")

    def test_the_window_follows_the_icon(self):
        self.agent.open_window()
        self.assert_window_is_at_icon()
        before = tray_icon("quillo-agent")
        neighbours = []
        for _ in range(2):
            neighbours.append(self.start_tray_icon())
            self.assert_window_is_at_icon()
        # The other tray puts new icons at the far side, where they move nothing.
        self.assertEqual(tray_icon("quillo-agent") != before, IS_TINT2)
        for neighbour in neighbours:
            neighbour.stop()
            self.assert_window_is_at_icon()
        wait_until(lambda: tray_icon("quillo-agent") == before, "the icon at its first place")

    def test_a_tray_that_dies_and_returns_again_and_again(self):
        for _ in range(20 if IS_TINT2 else 5):
            stop_part("tray")
            wait_until(lambda: not tray_icons("quillo-agent"), "the icon gone")
            start_part("tray")
            wait_until(lambda: tray_icons("quillo-agent"), "the icon back")
        self.agent.open_window()
        self.assert_window_is_at_icon()
        type_text("still there")
        self.agent.click_icon()
        self.agent.wait_closed()
        self.assertEqual(self.texts(), ["still there"])
