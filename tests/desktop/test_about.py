"""The status menu and the About window under a real mouse."""

from desktop import click, press, wait_active, wait_until, window, window_rect, windows_named
from quillo import SCALE, AgentTestCase, install_handler, keep_picture

# Points in the window, from its top left.
LOGO = (142, 62)
PRODUCT = (142, 177)
LEGAL = (142, 229)


class AboutTest(AgentTestCase):
    def click_point(self, identifier, point):
        x, y, _, _ = window_rect(identifier)
        click(x + round(point[0] * SCALE), y + round(point[1] * SCALE))

    def test_about_opens_by_mouse_and_leads_to_pages_and_legal_text(self):
        opened = install_handler(self.home, "com.example.browser", "x-scheme-handler/https;")
        self.ctl("reminder", "set", "--every", "day", "--starting", "2014-03-10T21:00", "--zone", "UTC")
        agent = self.start_shown_agent()
        for _ in range(2):
            agent.choose("About Quillo")
            about = window("^About Quillo$")
        self.assertEqual(windows_named("^About Quillo$"), [about])
        wait_active(about)
        keep_picture("about")

        for point, url in ((LOGO, "https://quilloapp.example/"), (PRODUCT, "https://social.example/quilloapp")):
            opened.unlink(missing_ok=True)
            self.click_point(about, point)
            wait_until(opened.exists, "the page " + url)
            self.assertEqual(opened.read_text().strip(), url)

        self.click_point(about, LEGAL)
        sheet = window("^Acknowledgements$")
        keep_picture("legal")
        press("Escape")
        wait_until(lambda: sheet not in windows_named("^Acknowledgements$"), "the sheet gone")
        press("Escape")
        wait_until(lambda: not windows_named("^About Quillo$"), "the window gone")
        self.assertTrue(agent.program.is_running)
