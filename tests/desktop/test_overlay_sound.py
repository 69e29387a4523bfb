"""The overlay's bars during sound, and what happens when the sound fails."""

import array
import random
import signal
import time

from harness.case import DesktopCase
from harness.pill import BARS, FULL_BAR_PT, Pill
from harness.polling import eventually, stays
from harness.sound import MICROPHONE, RATE_HZ, PipeWireServer, SoundServer, tone

HERTZ_PER_BIN = RATE_HZ / 512
# A frequency in the middle of each band's bins, and the band's number; bands 0 and 1 are one.
BANDS = {1: 1, 2: 2, 3: 3, 5: 4, 8: 5, 12: 6, 18: 7, 28: 8, 43: 9, 64: 10, 95: 11, 142: 12, 212: 13}
# A wait for a dead sound server takes seconds.
PROMPT_S = 0.5
HIGH_PT = FULL_BAR_PT - 1.0


def loudest(heights):
    """The number of the highest bar; of equal ones, the last."""
    return max(range(BARS), key=lambda number: (heights[number], number))


class SoundCase(DesktopCase):
    """A desk with a sound server and a virtual microphone."""

    server = SoundServer

    def setUp(self):
        self.sound = self.server(self.desk)
        self.addCleanup(self.sound.stop)
        self.pill = Pill(self.desk)

    def record(self, app=None):
        """The program, its engine recording and its overlay shown."""
        app = app or self.install().start_ready()
        app.engine.say("Recording...")
        self.pill.wait_until_seen()
        return app

    def end_recording(self, app):
        """Has the engine begin the transcription."""
        app.engine.say("Processing 1.5 s of audio")
        self.pill.wait_until_gone()

    def wait_for_full_bar(self, number):
        """Waits until the bar is at its full height."""
        eventually(lambda: self.pill.bars()[number] >= HIGH_PT, f"bar {number} at full height")

    def wait_for_rest(self, limit_s=5.0):
        """Waits until the bars have sunk."""
        eventually(self.pill.is_at_rest, "bars at rest", limit_s)

    def failures(self, app):
        """What the program has said about the sound."""
        return [line.split("Audio engine failed: ")[1] for line in app.output().splitlines()
                if "Audio engine failed: " in line]


class TheBars(SoundCase):
    """They follow what the microphone hears."""

    band_in_slow_source = 8  # of 1 kHz: at 16 kHz it is bin 32

    def setUp(self):
        super().setUp()
        self.sound.start()

    def test_a_tone_of_one_kilohertz_lights_the_band_that_holds_it(self):
        self.sound.play(tone(1000, 20))
        self.record()
        self.wait_for_full_bar(6)
        heights = self.pill.bars()
        self.assertEqual(loudest(heights), 6)
        # The window spreads a tone into the next bins, which are in this band and the one below.
        others = [height for number, height in enumerate(heights) if number not in (5, 6)]
        self.assertLess(max(others), 2.5, heights)

    def test_silence_sinks_the_bars(self):
        self.sound.play(tone(1000, 20))
        self.record()
        self.wait_for_full_bar(6)
        self.sound.silence()
        self.wait_for_rest()
        stays(self.pill.is_at_rest, "bars at rest", 0.3)

    def test_a_quiet_tone_stands_as_high_as_a_loud_one(self):
        self.sound.play(tone(1000, 20, amplitude=0.005))
        self.record()
        self.wait_for_full_bar(6)

    def test_a_sweep_walks_across_the_bars(self):
        self.record()
        for number, band in BANDS.items():
            player = self.sound.play(tone(number * HERTZ_PER_BIN, 20))
            self.wait_for_full_bar(band)
            eventually(lambda wanted=band: loudest(self.pill.bars()) == wanted, f"bar {band} alone")
            player.stop()

    def test_the_next_recording_begins_with_bars_at_rest(self):
        self.sound.play(tone(1000, 30))
        app = self.record()
        self.wait_for_full_bar(6)
        self.end_recording(app)
        self.sound.mute()
        self.record(app)
        stays(self.pill.is_at_rest, "bars at rest", 0.5)

    def test_the_microphone_is_open_only_while_the_overlay_is_shown(self):
        app = self.record()
        eventually(lambda: self.sound.recordings() == [MICROPHONE], "the recording")
        app.engine.say("Recording...")
        stays(lambda: self.sound.recordings() == [MICROPHONE], "one recording", 0.5)
        self.end_recording(app)
        eventually(lambda: not self.sound.recordings(), "the recording's end", 1.0)

    def test_each_recording_takes_the_default_source_of_its_moment(self):
        self.sound.add_microphone("other", rate_hz=16000)
        app = self.record()
        eventually(lambda: self.sound.recordings() == [MICROPHONE], "the recording")
        self.sound.choose("other")
        stays(lambda: self.sound.recordings() == [MICROPHONE], "the same source", 0.5)
        self.end_recording(app)
        self.record(app)
        eventually(lambda: self.sound.recordings() == ["other"], "the other source")
        self.sound.play(tone(1000, 20), "other-speaker")
        self.wait_for_full_bar(self.band_in_slow_source)

    def test_only_the_first_channel_of_a_source_is_heard(self):
        self.sound.add_microphone("stereo", channels=2)
        self.sound.choose("stereo")
        low, high = tone(28 * HERTZ_PER_BIN, 20, 0.2), tone(142 * HERTZ_PER_BIN, 20, 0.9)
        both = array.array("f", (sample for pair in zip(low, high) for sample in pair))
        self.sound.play(both, "stereo-speaker", channels=2)
        self.record()
        self.wait_for_full_bar(8)
        self.assertLess(self.pill.bars()[12], 3)

    def test_noise_moves_all_bars(self):
        noise = random.Random(1)
        self.sound.play(array.array("f", (noise.uniform(-0.5, 0.5) for _ in range(RATE_HZ * 10))))
        self.record()
        eventually(lambda: min(self.pill.bars()) > 3, "all bars up")


class TheBarsUnderPipeWire(TheBars):
    """Debian's default beside GNOME."""

    server = PipeWireServer
    band_in_slow_source = 6  # all of its sources have the rate of its graph


class FailingSound(SoundCase):
    """Failing sound: one line in the log, and everything else still works."""

    def assert_usable(self, app):
        """The overlay stays, the menu answers at once, and the overlay hides and shows again."""
        self.assertTrue(self.pill.is_seen())
        started = time.monotonic()
        app.item.rows()
        self.assertLess(time.monotonic() - started, PROMPT_S)
        self.end_recording(app)

    def expect_one_failure(self, app, text, limit_s=2.0):
        """Waits for the line in the log; there must be no other."""
        eventually(lambda: self.failures(app), "the failure in the log", limit_s)
        stays(lambda: self.failures(app) == [text], f"only {text!r}: {self.failures(app)}", 0.5)
        self.wait_for_rest()

    def test_without_a_sound_server(self):
        app = self.install().start_ready()
        self.sound.start()
        self.sound.kill()
        self.record(app)
        self.expect_one_failure(app, "Connection refused")
        self.assert_usable(app)

    def test_without_a_source(self):
        self.sound.start(microphone=False)
        app = self.record()
        self.expect_one_failure(app, "No such entity")
        self.assert_usable(app)

    def test_the_server_dies_while_the_overlay_is_shown(self):
        self.sound.start().play(tone(1000, 20))
        app = self.record()
        self.wait_for_full_bar(6)
        self.sound.kill()
        self.expect_one_failure(app, "Connection terminated")
        self.assert_usable(app)

    def test_the_source_vanishes_and_no_other_takes_its_place(self):
        self.sound.start().add_microphone("other")
        self.sound.play(tone(1000, 20))
        app = self.record()
        self.wait_for_full_bar(6)
        self.sound.remove_microphone()
        self.expect_one_failure(app, "Entity killed")
        self.assertEqual(self.sound.recordings(), [])
        self.assert_usable(app)

    def test_a_server_that_hangs_from_the_start(self):
        self.sound.start()
        app = self.install().start_ready()
        self.sound.send(signal.SIGSTOP)
        self.addCleanup(self.sound.send, signal.SIGCONT)
        self.record(app)
        self.assertLess(app.slowest_menu_answer_s(lambda: self.failures(app), 10), PROMPT_S)
        self.expect_one_failure(app, "Timeout")
        self.assert_usable(app)

    def test_a_server_that_hangs_while_the_overlay_is_shown(self):
        self.sound.start().play(tone(1000, 20))
        app = self.record()
        self.wait_for_full_bar(6)
        self.sound.send(signal.SIGSTOP)
        self.addCleanup(self.sound.send, signal.SIGCONT)
        self.expect_one_failure(app, "Timeout", 10)
        self.assert_usable(app)

    def test_hiding_does_not_wait_for_a_server_that_hangs(self):
        self.sound.start()
        app = self.record()
        self.sound.send(signal.SIGSTOP)
        self.addCleanup(self.sound.send, signal.SIGCONT)
        self.end_recording(app)
        self.assertEqual(self.failures(app), [])

    def test_the_next_recording_tries_again(self):
        app = self.install().start_ready()
        self.record(app)
        self.expect_one_failure(app, "Connection refused")
        self.end_recording(app)
        self.sound.start().play(tone(1000, 20))
        self.record(app)
        self.wait_for_full_bar(6)
