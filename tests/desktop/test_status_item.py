"""The status item in a tray that embeds windows, with real clicks."""

import unittest

from desktop import (DesktopTestCase, center, click, pixel, press, program, start_part, stop_part, tray_icon,
                     wait_until, window, window_rect)


class StatusItem(DesktopTestCase):
    def start_probe(self):
        probe = self.start(program("desktop_probe"))
        probe.expect("ready")
        probe.send("tray")
        probe.expect(r"moved \d.*")
        tray_icon()
        return probe

    def geometry(self, probe):
        match = probe.ask("geometry", r"geometry (\S+) (\S+) (\S+) (\S+)")
        return tuple(float(number) for number in match.groups())

    def assert_geometry_is_right(self, probe):
        def largest_difference():
            return max(abs(mine - real) for mine, real in zip(self.geometry(probe), tray_icon()))

        wait_until(lambda: largest_difference() <= 1, f"{self.geometry(probe)} is {tray_icon()}")

    def test_tells_where_it_is(self):
        self.assert_geometry_is_right(self.start_probe())

    def test_each_press_of_the_main_button_is_a_click(self):
        probe = self.start_probe()
        click(*center(tray_icon()))
        probe.expect("click")
        # The pause makes these two a pair of their own.
        press("Shift_L")
        click(*center(tray_icon()), times=2)
        probe.expect("click")
        probe.expect("click")
        self.assertEqual(probe.ask("geometry", "geometry .*") and probe.unread, [])

    def test_secondary_click_shows_the_menu_and_nothing_else(self):
        probe = self.start_probe()
        click(*center(tray_icon()), button=3)
        probe.expect("menu")
        menu = window_rect(window(window_class="desktop_probe"))
        self.assertNotIn("click", probe.unread)
        click(*center(menu))
        probe.expect("chosen")

    def test_follows_when_a_neighbour_comes_and_goes(self):
        probe = self.start_probe()
        before = self.geometry(probe)
        neighbour = self.start_probe()
        probe.expect(r"moved \d.*", seconds=3)
        self.assertNotEqual(self.geometry(probe), before)
        self.assert_geometry_is_right(probe)
        neighbour.stop()
        probe.expect(r"moved \d.*", seconds=3)
        wait_until(lambda: self.geometry(probe) == before, "the icon at its first place")

    def test_comes_back_after_the_tray_died(self):
        probe = self.start_probe()
        before = self.geometry(probe)
        for _ in range(2):
            stop_part("tray")
            probe.expect("moved nowhere")
            start_part("tray")
            probe.expect(r"moved \d.*")
            wait_until(lambda: self.geometry(probe) == before, "the icon at its place")
            click(*center(tray_icon()))
            probe.expect("click")

    def test_appears_when_the_tray_comes_late(self):
        stop_part("tray")
        probe = self.start(program("desktop_probe"))
        probe.expect("ready")
        probe.send("tray")
        probe.ask("geometry", "geometry nowhere")
        # Without a tray: the corner where one would be.
        probe.ask("anchor", "anchor 1258 0 22 22")
        start_part("tray")
        probe.expect(r"moved \d.*")
        self.assert_geometry_is_right(probe)
        click(*center(tray_icon()))
        probe.expect("click")

    def test_template_and_highlight_can_be_seen(self):
        probe = self.start_probe()
        x, y, _, _ = tray_icon()
        inside, edge = center(tray_icon()), (x + 2, y + 11)
        wait_until(lambda: pixel(*inside) == (255, 255, 255), "a white template on the dark panel")
        self.assertEqual(pixel(*edge), (0x20, 0x20, 0x20))
        probe.send("template off")
        wait_until(lambda: pixel(*inside) == (0xcc, 0, 0), "the image in its own colour")
        probe.send("highlight on")
        # How light it is differs among trays: this one blends it twice.
        wait_until(lambda: pixel(*edge)[0] > 0x28, "the highlight")
        probe.send("highlight off")
        wait_until(lambda: pixel(*edge) == (0x20, 0x20, 0x20), "the highlight gone")


if __name__ == "__main__":
    unittest.main()
