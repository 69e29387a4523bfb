"""Light and dark: the windows follow the desktop, from the start and while they are open."""

from harness.case import DesktopCase
from harness.forms import HINT, DownloadForm, SettingsForm
from harness.polling import eventually
from harness.portal import Portal
from harness.screen import Rect
from harness.window import Window

READABLE = 4.5  # the least contrast of text with what is behind it


def luminance(colour):
    """The relative luminance of a colour, 0 to 1."""
    linear = [value / 255 / 12.92 if value <= 10 else ((value / 255 + 0.055) / 1.055) ** 2.4
              for value in colour]
    return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]


def contrast(one, two):
    """The contrast of two colours, 1 to 21."""
    low, high = sorted((luminance(one), luminance(two)))
    return (high + 0.05) / (low + 0.05)


class Style(DesktopCase):
    """Every text of every window is readable in both styles."""

    desk_parts = {"accessibility": True}

    def open_settings(self):
        """The settings window."""
        app = self.install().start_ready()
        app.item.click("Settings...")
        return SettingsForm(self.desk, app)

    def open_setup(self):
        """The set-up window with an error, which shows most colours."""
        app = self.install(with_model=False)
        app.setup.at_start("print No route to host", "exit 1")
        app.start()
        form = DownloadForm(self.desk, app)
        form.wait_for_label(HINT)
        return form

    def open_progress(self):
        """The set-up window with its progress."""
        app = self.install(with_model=False)
        app.setup.at_start("progress 812 3094")
        app.start()
        form = DownloadForm(self.desk, app)
        form.wait_for_label("812.0 MB / 3094.0 MB")
        return form

    def open_alert(self):
        """The microphone's alert."""
        app = self.install(program="guarded-voxtrel")
        app.start(GUARDED_SANDBOX_MARKER=app.engine.executable)
        return Window(self.desk, app, "Voxtrel")

    def portal(self, *options):
        """A portal that also refuses the microphone."""
        portal = Portal(self.desk, "--microphone", "1", *options)
        self.addCleanup(portal.stop)
        return portal

    def is_dark(self, window):
        """Whether the window's own ground is dark."""
        content = window.content
        ground = self.desk.screenshot().pixel(content.x + 3, content.y + 3)
        return luminance(ground) < 0.2

    def worst_contrast(self, window):
        """(contrast, part) of the part whose text stands out least."""
        screen = self.desk.screenshot()
        found = []
        for part in window.node.all():
            # Disabled parts may have less contrast.
            if part.role in ("label", "push button", "combo box", "check box", "text") \
                    and part.name and "enabled" in part.states:
                place = part.place
                inner = Rect(place.x + 3, place.y + 2, place.width - 6, place.height - 4)
                found.append((self.text_contrast(screen.crop(inner)), repr(part)))
        self.assertGreater(len(found), 3)
        return min(found)

    @staticmethod
    def text_contrast(picture):
        """The contrast of the most common colour with the one farthest from it."""
        pixels = picture.pixels()
        ground = max(set(pixels), key=pixels.count)
        return max(contrast(ground, colour) for colour in set(pixels))

    def assert_style(self, window, dark):
        """The window takes on the style, and every text of it is readable."""
        eventually(lambda: self.is_dark(window) == dark, f"dark to be {dark}", 10)
        eventually(lambda: self.worst_contrast(window)[0] >= READABLE,
                   f"readable texts; dark: {dark}; worst: {self.worst_contrast(window)}", 3)

    def in_both_styles(self, opens):
        """From the start in one style and then changed, each way round."""
        for options, dark in (((), False), (("--dark",), True)):
            portal = self.portal(*options)
            window = opens()
            self.assert_style(window, dark)
            portal.set_dark(not dark)
            self.assert_style(window, not dark)
            self.doCleanups()

    def test_the_settings_are_readable_in_both(self):
        self.in_both_styles(self.open_settings)

    def test_the_setup_is_readable_in_both_with_an_error(self):
        self.in_both_styles(self.open_setup)

    def test_the_setup_is_readable_in_both_with_its_progress(self):
        self.in_both_styles(self.open_progress)

    def test_an_alert_is_readable_in_both(self):
        self.in_both_styles(self.open_alert)

    def test_without_a_portal_it_is_light(self):
        self.assert_style(self.open_settings(), dark=False)

    def test_a_portal_that_comes_later_is_followed(self):
        window = self.open_settings()
        self.assert_style(window, dark=False)
        portal = self.portal("--dark")
        portal.set_dark(True)
        self.assert_style(window, dark=True)
