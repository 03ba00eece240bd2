"""The status item on a fine screen (two pixels per point) with a light panel."""

from desktop import DesktopTestCase, center, click, pixel, tray_icon, wait_until


class FineStatusItem(DesktopTestCase):
    def test_is_placed_in_points_and_drawn_dark(self):
        probe = self.start_tray_icon()
        icon = tray_icon()
        self.assertEqual(icon[2:], (44, 44))
        match = probe.ask("geometry", r"geometry (\S+) (\S+) (\S+) (\S+)")
        self.assertEqual([float(number) for number in match.groups()], [length / 2 for length in icon])

        wait_until(lambda: pixel(*center(icon)) == (0, 0, 0), "a black template on the light panel")
        # An edge of the fine image: half a point inside the coarse one's.
        self.assertEqual(pixel(icon[0] + 8, icon[1] + 22), (0, 0, 0))
        self.assertEqual(pixel(icon[0] + 7, icon[1] + 22), (0xf0, 0xf0, 0xf0))
        click(*center(icon))
        probe.expect("click")
