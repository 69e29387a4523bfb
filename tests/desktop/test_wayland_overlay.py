"""The recording overlay under a Wayland compositor with layers."""

import re

from harness.case import WaylandCase
from harness.pill import BARS, Pill
from harness.polling import eventually, stays
from harness.screen import Rect
from harness.sway import LayerlessDesk, SwayDesk


class SwayCase(WaylandCase):
    """One compositor a class."""

    desk_kind = SwayDesk

    def open_window(self):
        """A window with the focus."""
        process = self.desk.spawn("stdbuf", "-oL", "xev", "-name", "beneath")
        self.addCleanup(process.stop)
        eventually(lambda: self.desk.focused() == "beneath", "a window with the focus")
        return process


class TheOverlay(SwayCase):
    """On an output of scale 1."""

    def test_it_is_painted_at_the_bottom_centre_and_nowhere_else(self):
        pill = Pill(self.desk)
        app, before = self.start_recording(pill)
        self.assertEqual(pill.place, Rect(467, 529, 90, 21))
        self.assertEqual(self.desk.screenshot().difference_box(before), pill.place)
        self.assertEqual(len(pill.bars()), BARS)
        self.assertTrue(pill.is_at_rest(), pill.bars())
        self.assertGreater(min(pill.bars()), 1.0)
        app.engine.say("Processing 1.5 s of audio")
        eventually(lambda: self.desk.screenshot().rgb == before.rgb, "the overlay's end")

    def test_it_is_not_a_window_of_the_x_server(self):
        pill = Pill(self.desk)
        self.start_recording(pill)
        self.assertEqual(pill.windows(), [])

    def test_it_comes_back_with_each_recording_and_goes_with_the_program(self):
        pill = Pill(self.desk)
        app, before = self.start_recording(pill)
        for _attempt in range(5):
            app.engine.say("Ready.")
            eventually(lambda: not pill.is_seen(), "the overlay's end")
            app.engine.say("Recording...")
            pill.wait_until_seen()
        app.process.kill()
        eventually(lambda: self.desk.screenshot().rgb == before.rgb, "the overlay's end")

    def test_it_takes_neither_focus_nor_clicks(self):
        beneath = self.open_window()
        pill = Pill(self.desk)
        self.start_recording(pill)
        stays(lambda: self.desk.focused() == "beneath", "the focus", 0.5)
        self.assertNotIn("FocusOut", beneath.output())
        self.desk.click(pill.place.centre)
        eventually(lambda: "ButtonPress event" in beneath.output(), "the click")
        self.assertTrue(pill.is_seen())

    def test_it_stays_above_a_full_screen_window_opened_before_or_after_it(self):
        pill = Pill(self.desk)
        self.open_window()
        self.desk.sway("fullscreen", "enable")
        self.start_recording(pill)
        stays(pill.is_seen, "the overlay above a full-screen window", 0.5)
        self.desk.sway("fullscreen", "disable")
        self.open_window()
        self.desk.sway("fullscreen", "enable")
        stays(pill.is_seen, "the overlay above a later full-screen window", 0.5)

    def test_its_edge_fades_into_what_lies_beneath(self):
        pill = Pill(self.desk)
        _app, before = self.start_recording(pill)
        picture, ground = pill.picture(), before.crop(pill.place)
        for x, y in ((0, 0), (89, 0), (0, 20), (89, 20)):
            self.assertEqual(picture.pixel(x, y), ground.pixel(x, y))
        blues = {picture.pixel(x, y)[2] for x in range(11) for y in range(21)}
        mixed = [blue for blue in blues if 60 < blue < 145]  # between the pill's 51 and the ground's 153
        self.assertGreaterEqual(len(mixed), 4, blues)


class SecondOutput:
    """The desk as a pill sees it that stands on the second output."""

    width, height = 800, 600

    def __init__(self, desk):
        self._desk = desk

    def screenshot(self):
        """What the second output shows."""
        return self._desk.screenshot("HEADLESS-2")


class SeveralOutputs(SwayCase):
    """Two, side by side."""

    def test_of_several_outputs_it_takes_the_one_with_the_focus(self):
        self.desk.sway("create_output")
        self.desk.sway("output", "HEADLESS-2", "resolution", "800x600", "position", "1024", "0")
        self.desk.sway("focus", "output", "HEADLESS-2")
        second = Pill(SecondOutput(self.desk))
        app, before = self.start_recording(second)
        self.assertEqual(self.desk.screenshot().rgb, before.rgb)
        app.engine.say("Ready.")
        eventually(lambda: not second.is_seen(), "the overlay's end")
        self.desk.sway("focus", "output", "HEADLESS-1")
        app.engine.say("Recording...")
        Pill(self.desk).wait_until_seen()
        self.assertFalse(second.is_seen())


class TheOverlayOfScaleTwo(SwayCase):
    """On an output whose points are four pixels each."""

    desk_parts = {"scale": 2}

    def test_it_is_twice_as_large_and_drawn_in_the_outputs_own_pixels(self):
        pill = Pill(self.desk, scale=2)
        _app, before = self.start_recording(pill)
        self.assertEqual(pill.place, Rect(422, 418, 180, 42))
        self.assertEqual(self.desk.screenshot().difference_box(before), pill.place)
        self.assertTrue(pill.is_at_rest(), pill.bars())
        self.assertGreater(pill.unequal_pairs(), 30)


class WithoutAnXServer(SwayCase):
    """Layers need none."""

    desk_parts = {"xwayland": False}

    def test_the_overlay_is_the_same(self):
        pill = Pill(self.desk)
        app, before = self.start_recording(pill)
        self.assertEqual(self.desk.screenshot().difference_box(before), pill.place)
        self.assertFalse(re.search("No overlay", app.output()), app.output())


class WithoutLayersAndWithoutAnXServer(SwayCase):
    """The overlay needs one of them."""

    desk_kind = LayerlessDesk

    def test_nothing_is_shown_and_the_log_says_so_once(self):
        app = self.start_ready()
        for _recording in range(3):
            app.engine.say("Recording...")
            app.engine.say("Ready.")
        app.wait_for_output("No overlay")
        app.process.send(15)
        self.assertEqual(app.process.exit_status(), 0)
        self.assertEqual(app.output().count("No overlay"), 1, app.output())
