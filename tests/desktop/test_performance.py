"""An engine that prints as fast as it can."""

import time

from harness.case import DesktopCase

FLOOD_BYTES = 1_000_000_000
# Ten million lines, each of which changes the state: far beyond what any engine prints.
STATES_BYTES = 100_000_000
# A recording costs more: each shows the overlay and hides it again.
RECORDINGS_BYTES = 100_000
MOST_GROWTH_MIB = 32
SLOWEST_ANSWER_S = 0.2


class Flood(DesktopCase):
    """The menu stays usable, memory stays bounded, and nothing at the end is lost."""

    def check_flood(self, start_flood):
        """Starts the flood and reads the menu until the line behind the flood shows."""
        app = self.install().start_ready()
        started = time.monotonic()
        app.reset_peak_memory()
        before_mib = app.peak_memory_mib()
        start_flood(app.engine, '[gpu-decode] text: "after the flood"')
        slowest_s = app.slowest_menu_answer_s(
            until=lambda: app.item.texts()[1] == "Last: after the flood")
        growth_mib = app.peak_memory_mib() - before_mib
        print(f"{time.monotonic() - started:.1f} s, grew by {growth_mib:.1f} MiB, "
              f"slowest answer {slowest_s * 1000:.0f} ms ... ", end="")
        self.assertLess(growth_mib, MOST_GROWTH_MIB)
        self.assertLess(slowest_s, SLOWEST_ANSWER_S)
        app.engine.say("Recording...")
        app.item.wait_for_status("Recording...")

    def test_a_gigabyte_of_lines_that_mean_nothing(self):
        line = "loading layer 17 of 32 onto the device, 123.4 MiB"
        self.check_flood(lambda engine, then: engine.flood(FLOOD_BYTES, line, then))

    def test_ten_million_state_changes(self):
        lines = ("Processing audio", "Ready.", "Ready.")
        self.check_flood(lambda engine, then: engine.flood_of_states(STATES_BYTES, lines, then))

    def test_five_thousand_recordings(self):
        lines = ("Recording...", "Ready.")
        self.check_flood(lambda engine, then: engine.flood_of_states(RECORDINGS_BYTES, lines, then))
