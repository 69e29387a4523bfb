"""What the overlay costs and leaves behind, counted from within."""

import os
import re
import time

from harness.application import SANITIZER_REPORT
from harness.case import PROGRAMS, DesktopCase
from harness.driver import OverlayDriver
from harness.polling import eventually, stays
from harness.sound import SoundServer

CYCLES = 200
FRAMES_PER_SECOND, TOLERANCE_FPS = 60.0, 0.5
PACED_S = 10.0
LEAKED_MEMORY_MIB = 8


class Upkeep(DesktopCase):
    """The overlay alone, with a sound server."""

    def setUp(self):
        self.sound = SoundServer(self.desk)
        self.addCleanup(self.sound.stop)
        self.sound.start()
        self.driver = OverlayDriver(self.desk, PROGRAMS, self.desk.path("logs/driver.log"))
        self.addCleanup(self.end_driver)

    def end_driver(self):
        """It must exit normally and without sanitizer reports (leaks are reported at the end)."""
        self.assertEqual(self.driver.quit(), 0, self.driver.output())
        self.assertIsNone(SANITIZER_REPORT.search(self.driver.output()), self.driver.output())

    def memory_mib(self):
        """Its physical memory."""
        with open(f"/proc/{self.driver.pid}/status", encoding="ascii") as status:
            return int(re.search(r"VmRSS:\s+(\d+)", status.read())[1]) / 1024

    def test_it_is_redrawn_sixty_times_a_second_and_not_at_all_while_hidden(self):
        self.driver.show()
        eventually(lambda: self.driver.stats()["frames"] > 10, "the first frames")
        before, started = self.driver.stats(), time.monotonic()
        stays(self.driver.is_running, "the overlay", PACED_S)
        after, ended = self.driver.stats(), time.monotonic()
        rate = (after["frames"] - before["frames"]) / (ended - started)
        self.between(rate, FRAMES_PER_SECOND - TOLERANCE_FPS, FRAMES_PER_SECOND + TOLERANCE_FPS,
                     "frames a second")
        self.driver.hide()
        frames = self.driver.stats()["frames"]
        stays(lambda: self.driver.stats()["frames"] == frames, "no frame while hidden", 0.5)

    def test_it_takes_blocks_of_512_frames_at_the_rate_of_the_source(self):
        self.sound.add_microphone("slow", rate_hz=16000)
        self.sound.choose("slow")
        self.driver.show()
        eventually(lambda: self.driver.stats()["blocks"] > 0, "the first block")
        before, started = self.driver.stats(), time.monotonic()
        stays(self.driver.is_running, "the overlay", 3)
        after, ended = self.driver.stats(), time.monotonic()
        self.assertEqual(after["rate"], 16000)
        self.between((after["blocks"] - before["blocks"]) / (ended - started), 30.0, 32.5,
                     "blocks a second")

    def test_two_hundred_showings_leave_nothing_behind(self):
        def cycle():
            frames = self.driver.stats()["frames"]
            self.driver.show()
            eventually(lambda: self.driver.stats()["frames"] > frames, "a frame")
            self.driver.hide()

        for _ in range(20):  # what is made once and kept
            cycle()
        before, memory = self.driver.stats(), self.memory_mib()
        for _ in range(CYCLES):
            cycle()
        after = self.driver.stats()
        for what in ("descriptors", "threads", "windows"):
            self.assertEqual(after[what], before[what], what)
        self.assertEqual(after["windows"], 0)
        self.assertGreaterEqual(after["frames"] - before["frames"], CYCLES)
        if "asan" not in PROGRAMS:  # which keeps freed memory; it reports leaks at the end
            self.assertLess(self.memory_mib() - memory, LEAKED_MEMORY_MIB)

    def test_showings_too_short_for_the_sound_to_open_leave_nothing_behind(self):
        before = self.driver.stats()
        for number in range(CYCLES):
            self.driver.show()
            self.driver.hide()
            if number % 20 == 0:  # the server takes only so many connections at a time
                eventually(lambda: self.sound.clients() <= 2, "the connections' end")
        after = self.driver.stats()
        self.assertLessEqual(after["descriptors"], before["descriptors"] + 1)
        self.assertEqual(after["threads"], before["threads"])
        eventually(lambda: not self.sound.recordings(), "no recording")
        self.assertNotIn("Audio engine failed", self.driver.output())

    def test_showing_and_hiding_never_wait_for_the_sound(self):
        shows, hides = [], []
        for _ in range(30):
            blocks = self.driver.stats()["blocks"]
            shows.append(self.driver.show())
            eventually(lambda before=blocks: self.driver.stats()["blocks"] > before, "a block")
            hides.append(self.driver.hide())
        limit_s = 0.05 if os.environ.get("VOXTREL_SLOW") else 0.02
        self.assertLess(sorted(shows)[15], limit_s)
        self.assertLess(sorted(hides)[15], limit_s)
