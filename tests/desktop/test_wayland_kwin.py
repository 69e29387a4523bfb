"""The recording overlay under Plasma's compositor, where that is installed."""

from harness.case import WaylandCase
from harness.kwin import KWinDesk
from harness.pill import BARS, Pill
from harness.polling import eventually
from harness.screen import Rect


class KWinCase(WaylandCase):
    """One compositor a class."""

    desk_kind = KWinDesk

    def shows_only_the_pill(self, pill, before):
        """Nothing but the pill has changed since then."""
        eventually(lambda: self.desk.screenshot().difference_box(before) == pill.place,
                   "the overlay and nothing else")

    def is_as_before(self, before):
        """Nothing of the overlay is left."""
        eventually(lambda: self.desk.screenshot().rgb == before.rgb, "the overlay's end")


class TheOverlay(KWinCase):
    """On an output of scale 1."""

    def test_it_is_painted_at_the_bottom_centre_and_nowhere_else(self):
        pill = Pill(self.desk)
        app, before = self.start_recording(pill)
        self.assertEqual(pill.place, Rect(467, 529, 90, 21))
        self.shows_only_the_pill(pill, before)
        self.assertEqual(len(pill.bars()), BARS)
        self.assertTrue(pill.is_at_rest(), pill.bars())
        app.engine.say("Processing 1.5 s of audio")
        self.is_as_before(before)

    def test_it_comes_back_with_each_recording_and_goes_with_the_program(self):
        pill = Pill(self.desk)
        app, before = self.start_recording(pill)
        for _attempt in range(3):
            app.engine.say("Ready.")
            self.is_as_before(before)
            app.engine.say("Recording...")
            pill.wait_until_seen()
        app.process.kill()
        self.is_as_before(before)

    def test_it_takes_neither_focus_nor_clicks(self):
        pill = Pill(self.desk)
        app = self.start_ready()
        field = self.desk.open_field("editor")
        self.addCleanup(field.close)
        field.press("a")
        app.engine.say("Recording...")
        field.press("b")
        pill.wait_until_seen()
        field.press("c", "Home")
        # Below its text, a click brings the field's cursor to the end.
        self.desk.click(pill.place.centre)
        self.desk.park_pointer()
        field.press("d")
        field.wait_for("abcd")
        self.assertTrue(pill.is_seen())


class TheOverlayOfScaleTwo(KWinCase):
    """On an output whose points are four pixels each."""

    desk_parts = {"scale": 2}

    def test_it_is_twice_as_large_and_drawn_in_the_outputs_own_pixels(self):
        pill = Pill(self.desk, scale=2)
        _app, before = self.start_recording(pill)
        self.assertEqual(pill.place, Rect(422, 418, 180, 42))
        self.shows_only_the_pill(pill, before)
        self.assertGreater(pill.unequal_pairs(), 30)
