"""The recording overlay's window: where it stands, and that it takes no clicks or focus."""

import re
import subprocess

from harness.case import DesktopCase
from harness.pill import Pill
from harness.polling import eventually, stays
from harness.screen import Rect

UNDER_THE_PILL = "-geometry", "400x300+312+300"


class OverlayCase(DesktopCase):
    """Starts the program and brings its overlay up by what the engine prints."""

    def start_recording(self, pill=None, **changes):
        """The program, ready, and then recording; returns it with the overlay."""
        app = self.install().start_ready(**changes)
        app.engine.say("Recording...")
        return app, (pill or Pill(self.desk)).wait_until_seen()

    def open_window(self, *options):
        """A window that prints what happens to it; returns its process and its id."""
        process = self.desk.spawn("stdbuf", "-oL", "xev", "-name", "beneath", *options)
        self.addCleanup(process.stop)
        found = eventually(lambda: re.search(r"Outer window is (0x[0-9a-f]+)", process.output()),
                           "a window")
        window = str(int(found[1], 16))
        self.desk.xdotool("windowactivate", "--sync", window)
        return process, window

    def active_window(self):
        """The window with the focus."""
        return self.desk.xdotool("getactivewindow").strip()


class TheOverlay:
    """The same with and without a compositing window manager."""

    def test_it_stands_at_the_bottom_centre_while_the_engine_records(self):
        app, pill = self.start_recording()
        self.assertEqual(pill.windows(), [pill.place])
        self.assertEqual(pill.place, Rect(467, 529, 90, 21))
        app.engine.say("Processing 1.5 s of audio")
        pill.wait_until_gone()

    def test_a_second_recording_line_shows_no_second_window(self):
        app, pill = self.start_recording()
        app.engine.say("Recording...")
        stays(lambda: len(pill.windows()) == 1, "one window", 0.5)
        app.engine.say("Ready.")
        pill.wait_until_gone()

    def test_it_hides_when_the_engine_dies_and_with_the_program(self):
        app, pill = self.start_recording()
        app.engine.exit(1)
        pill.wait_until_gone()
        app.stop()
        app, pill = self.start_recording()
        app.stop()
        pill.wait_until_gone()

    def test_a_click_at_its_centre_reaches_the_window_beneath(self):
        beneath, window = self.open_window(*UNDER_THE_PILL)
        _app, pill = self.start_recording()
        self.desk.click(pill.place.centre)
        self.addCleanup(self.desk.park_pointer)
        eventually(lambda: "ButtonPress event" in beneath.output(), "the click")
        self.assertEqual(self.active_window(), window)
        self.assertTrue(pill.is_seen())

    def test_the_active_window_stays_active(self):
        beneath, window = self.open_window(*UNDER_THE_PILL)
        before = beneath.output().count("FocusOut")
        app, pill = self.start_recording()
        stays(lambda: self.active_window() == window, "the focus while the overlay is shown", 0.5)
        app.engine.say("Ready.")
        pill.wait_until_gone()
        self.assertEqual(self.active_window(), window)
        self.assertEqual(beneath.output().count("FocusOut"), before)

    def test_it_stays_above_a_full_screen_window_opened_before_or_after_it(self):
        _process, window = self.open_window()
        self.make_full_screen(window)
        _app, pill = self.start_recording()
        stays(pill.is_seen, "the overlay above a full-screen window", 0.5)
        _process, window = self.open_window()
        self.make_full_screen(window)
        pill.wait_until_seen(limit_s=1.0)
        stays(pill.is_seen, "the overlay above a later full-screen window", 1.0)

    def test_it_comes_back_above_an_unmanaged_full_screen_window(self):
        _process, window = self.open_window()
        _app, pill = self.start_recording()
        for action in (["set_window", "--overrideredirect", "1", window],
                       ["windowunmap", "--sync", window], ["windowmap", "--sync", window],
                       ["windowsize", window, str(self.desk.width), str(self.desk.height)],
                       ["windowmove", window, "0", "0"], ["windowraise", window]):
            self.desk.xdotool(*action)
        pill.wait_until_seen(limit_s=1.0)

    def make_full_screen(self, window):
        """Has the window manager make the window full-screen."""
        subprocess.run(["wmctrl", "-i", "-r", window, "-b", "add,fullscreen"], check=True,
                       env=self.desk.environment)
        eventually(lambda: f"{self.desk.width}x{self.desk.height}" in self.desk.xdotool(
            "getwindowgeometry", window), "a full-screen window")

    def test_it_is_on_every_workspace(self):
        _app, pill = self.start_recording()
        for workspace in ("1", "0"):
            self.desk.xdotool("set_desktop", workspace)
            stays(pill.is_seen, f"the overlay on workspace {workspace}", 0.3)

    def test_its_corners_show_what_lies_beneath(self):
        self.open_window(*UNDER_THE_PILL)
        place = Pill(self.desk).place
        before = self.desk.screenshot().crop(place)
        _app, pill = self.start_recording()
        picture = pill.picture()
        for x, y in ((0, 0), (89, 0), (0, 20), (89, 20), (1, 1), (88, 19)):
            self.assertEqual(picture.pixel(x, y), before.pixel(x, y), f"corner {x}, {y}")

    def test_it_is_twice_as_large_on_a_screen_of_scale_two(self):
        pill = Pill(self.desk, scale=2)
        _app, pill = self.start_recording(pill, QT_SCALE_FACTOR="2")
        self.assertEqual(pill.windows(), [Rect(422, 418, 180, 42)])
        self.assertTrue(pill.is_at_rest(), pill.bars())

    def test_of_several_screens_it_takes_the_one_with_the_active_window(self):
        left, right = Rect(0, 0, 512, 640), Rect(512, 0, 512, 640)
        self.split_screen(left, right)
        self.open_window("-geometry", "300x200+600+100")
        app, pill = self.start_recording(Pill(self.desk, screen=right))
        self.assertEqual(pill.windows(), [pill.place])
        app.engine.say("Ready.")
        pill.wait_until_gone()
        self.open_window("-geometry", "300x200+100+100")
        app.engine.say("Recording...")
        Pill(self.desk, screen=left).wait_until_seen()

    def test_of_several_screens_of_scale_two_it_takes_the_one_with_the_active_window(self):
        right = Rect(512, 0, 512, 640)
        self.split_screen(Rect(0, 0, 512, 640), right)
        # In the half of the screen that a mix-up of points and pixels would miss.
        self.open_window("-geometry", "200x200+790+100")
        _app, pill = self.start_recording(Pill(self.desk, 2, right), QT_SCALE_FACTOR="2")
        self.assertEqual(pill.windows(), [pill.place])

    def split_screen(self, *screens):
        """Divides the only screen into several that stand side by side."""
        def xrandr(*arguments):
            subprocess.run(["xrandr", *arguments], check=True, env=self.desk.environment,
                           capture_output=True)

        for number, screen in enumerate(screens):
            size = f"{screen.width}/{screen.width}x{screen.height}/{screen.height}"
            xrandr("--setmonitor", f"part-{number}", f"{size}+{screen.x}+{screen.y}",
                   "screen" if number == 0 else "none")
            self.addCleanup(xrandr, "--delmonitor", f"part-{number}")


def is_half_white(colour):
    """Whether a colour is a mixture of the dark pill and a white window."""
    return 80 < min(colour) and max(colour) < 250


class TheOverlayWithoutCompositing(TheOverlay, OverlayCase):
    """Nothing can be see-through: the window itself has the shape."""

    def test_its_edge_is_the_pill_or_what_lies_beneath_and_nothing_else(self):
        self.open_window(*UNDER_THE_PILL)
        _app, pill = self.start_recording()
        picture = pill.picture()
        for x in range(8):
            for y in range(21):
                colour = picture.pixel(x, y)
                # A pixel that is hardly the pill's would be nearly black.
                self.assertTrue(min(colour) == 255 or 36 <= max(colour) < 90, f"{x}, {y}: {colour}")


class TheOverlayWithCompositing(TheOverlay, OverlayCase):
    """The window's edge is see-through."""

    desk_parts = {"compositing": True}

    def test_its_edge_fades_into_what_lies_beneath(self):
        self.open_window(*UNDER_THE_PILL)
        _app, pill = self.start_recording()
        edge = pill.picture().crop(Rect(0, 0, 11, 21))
        self.assertGreaterEqual(sum(map(is_half_white, edge.pixels())), 6)
