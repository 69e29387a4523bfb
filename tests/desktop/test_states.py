"""What the tray shows in each of the engine's states."""

import itertools
import os
import shutil

from harness.case import DesktopCase

READY = "Ready — hold Right Cmd"
STOPPED = "Voxtrel stopped — click Restart"
ICONS = os.path.join(os.path.dirname(__file__), "..", "..", "packaging", "linux", "icons")
# How many of an icon's 900 pixels must stand out: the thinnest drawing covers more than this.
LEAST_VISIBLE_PIXELS = 40
LEAST_DIFFERENT_PIXELS = 12
# The minimum contrast of graphics with their surroundings.
LEAST_CONTRAST = 3.0


def luminance(colour):
    """Relative luminance of an sRGB colour, 0 (black) to 1 (white)."""
    def linear(value):
        value /= 255
        return value / 12.92 if value <= 0.04045 else ((value + 0.055) / 1.055) ** 2.4

    red, green, blue = (linear(value) for value in colour)
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue


def contrast(one, two):
    """The ratio of two colours' luminances, 1 (none) to 21 (black on white)."""
    darker, lighter = sorted((luminance(one), luminance(two)))
    return (lighter + 0.05) / (darker + 0.05)


def visible_pixels(icon):
    """How many pixels of the icon stand out from the panel, whose colour the corner shows."""
    background = icon.pixel(0, 0)
    return sum(contrast(colour, background) >= LEAST_CONTRAST for colour in icon.pixels())


class TheTray(DesktopCase):
    """The icon and the first row follow the engine."""

    def walk_through_states(self, app):
        """Yields the name of each state while the program shows it."""
        engine, item = app.engine, app.item
        item.wait_for_status("Loading model...")
        yield "loading"
        engine.say("Ready.")
        item.wait_for_status(READY)
        yield "idle"
        engine.say("Recording...")
        item.wait_for_status("Recording...")
        yield "recording"
        engine.say("Processing 1.5 s of audio")
        item.wait_for_status("Transcribing...")
        yield "processing"
        # Directly: the panel might still be showing a state in between.
        engine.exit(0)
        item.wait_for_status(STOPPED)
        yield "stopped"

    def icons_of_all_states(self, dark):
        """The picture of each state's icon in a light or a dark panel."""
        self.desk.panel.set_dark(dark)
        empty = self.desk.panel.settled_icon()
        app = self.install()
        app.start_in_tray()
        icons, previous = {}, empty
        for state in self.walk_through_states(app):
            icons[state] = previous = self.desk.panel.settled_icon(unlike=previous)
        app.stop()
        return icons

    def check(self, icons):
        """Every icon is visible, and all differ."""
        for state, icon in icons.items():
            self.assertGreaterEqual(visible_pixels(icon), LEAST_VISIBLE_PIXELS, state)
        for (one, first), (two, second) in itertools.combinations(icons.items(), 2):
            self.assertGreaterEqual(
                first.differing_pixels(second), LEAST_DIFFERENT_PIXELS, f"{one} and {two}")

    def test_each_state_has_its_own_icon_visible_on_light_and_dark_panels(self):
        """The drawings compiled into the program."""
        for dark in (False, True):
            with self.subTest(dark=dark):
                self.check(self.icons_of_all_states(dark))

    def test_icons_of_the_installed_theme_are_as_visible_and_different(self):
        """The drawings as the package installs them, tinted by the panel."""
        theme = self.desk.path("data/icons")
        shutil.copytree(ICONS, theme)
        self.addCleanup(shutil.rmtree, theme)
        for dark in (False, True):
            with self.subTest(dark=dark):
                self.check(self.icons_of_all_states(dark))

    def test_an_engine_line_with_encode_means_ready(self):
        app = self.install().start_in_tray()
        app.engine.say("encode=120ms decode=340ms")
        app.item.wait_for_status(READY)

    def test_the_last_transcription_stays_through_all_states(self):
        app = self.install().start_in_tray()
        self.assertEqual(app.item.texts()[1], "Last: —")
        app.engine.say('[gpu-decode] text: "nice to meet you"')
        app.item.wait_for_last_text("Last: nice to meet you")
        for _state in self.walk_through_states(app):
            self.assertEqual(app.item.texts()[1], "Last: nice to meet you")

    def test_an_error_line_shows_only_once_the_engine_has_stopped(self):
        app = self.install().start_ready()
        app.engine.say("[quillback] ERROR no space left")
        app.engine.say("Recording...")
        app.item.wait_for_status("Recording...")
        app.engine.exit(0)
        app.item.wait_for_status("Error: [quillback] ERROR no space left")

    def test_without_an_engine_the_first_row_says_so(self):
        self.assertFalse(os.path.exists("/usr/local/bin/quillback"),
                         "this machine has an engine where the program looks for one")
        app = self.install(with_engine=False)
        app.start()
        item = self.desk.tray.wait_for_item(app.process.pid)
        item.wait_for_status("Error: quillback binary not found")
        app.wait_for_output("quillback binary not found at /usr/local/bin/quillback")
        item.click("Restart")
        item.wait_for_status("Error: quillback binary not found")
        self.assertEqual(self.bodies(), [])
