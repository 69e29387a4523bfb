"""Words on Plasma: pasted by its portal's double from the clipboard of a real compositor, in which virtual
keyboards are hidden, because Plasma has none."""

import base64
import os
import subprocess
import unittest

from engine_program import EngineProgram, run_command
from harness.polling import eventually
from harness.sound import SoundServer
from harness.sway import SwayDesk
from harness.wayland_filter import WaylandFilter
from words_case import TEXTS, THEIRS, CompositorCase, Talker

KEYBOARDS = {"zwp_virtual_keyboard_manager_v1"}
PICTURE = base64.b64decode("iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJRU5E"
                           "rkJggg==")
KEYBOARD = os.path.join(os.environ.get("VOXTREL_PROGRAMS", ""), "wayland-keyboard")
SPOKEN = "how are you today"


class PlasmaCase(CompositorCase):
    """One compositor a class, one portal a test."""

    @classmethod
    def setUpClass(cls):
        cls.desk = SwayDesk(login_manager=False, xwayland=False)
        cls.enterClassContext(cls.desk)
        cls.filter = WaylandFilter(cls.desk.path("filtered"), cls.desk.environment["WAYLAND_DISPLAY"],
                                   KEYBOARDS)
        cls.addClassCleanup(cls.filter.close)

    def setUp(self):
        super().setUp()
        self.environment["WAYLAND_DISPLAY"] = self.filter.path


class Plasma6(PlasmaCase):
    """With tokens."""

    def test_any_text_arrives_exactly_and_the_old_clipboard_comes_back(self):
        inserter, plasma = self.start()
        self.inserts(inserter, plasma, TEXTS)
        eventually(lambda: plasma.clipboard() == THEIRS, "the old clipboard")

    def test_a_picture_comes_back_too(self):
        self.copy(PICTURE, "--type", "image/png")
        inserter, plasma = self.start()
        inserter.send(b"words\0")
        self.assertEqual(plasma.pasted(1)[0], "words")

        def picture():
            return subprocess.run(["wl-paste", "--type", "image/png"], env=self.desk.environment,
                                  capture_output=True, check=False, timeout=20).stdout
        eventually(lambda: picture() == PICTURE, "the picture")

    def test_sixty_characters_arrive_in_time(self):
        self.arrives_in_time(*self.start())

    def test_a_program_that_watches_the_clipboard_is_not_taken_for_the_window(self):
        self.desk.spawn("wl-paste", "--watch", "sh", "-c", "cat > /dev/null")
        inserter, plasma = self.start()
        for number, text in enumerate(("one", " two", " three"), 1):
            inserter.send(text.strip().encode() + b"\0")
            self.assertEqual(plasma.pasted(number)[0], text)
            eventually(lambda: plasma.clipboard() == THEIRS, "the old clipboard")

    def test_where_no_window_takes_the_words_they_stay_in_the_clipboard_and_a_notification_says_so(self):
        inserter, plasma = self.start()
        plasma.do("deaf")
        shown = len(self.desk.notifications.shown())
        inserter.send(b"words\0")
        inserter.wait_for("inserted")
        self.assertEqual(plasma.clipboard(), "words")
        eventually(lambda: len(self.desk.notifications.shown()) > shown, "the notification")
        last = self.desk.notifications.shown()[-1]
        self.assertIn("no window has taken it", last.body)
        self.assertNotIn("words", last.body.replace("What was not typed", ""))

    def test_the_paste_key_is_where_the_layout_has_it(self):
        keyboard = Talker(KEYBOARD, environment=self.desk.environment)
        self.addCleanup(keyboard.stop)
        keyboard.send(b"us\n")
        keyboard.wait_for("done")
        inserter, plasma = self.start()
        for count, (layout, key) in enumerate(((b"us dvorak", 52), (b"us", 47)), 1):
            keyboard.send(layout + b"\n")
            keyboard.wait_for("done", count + 1)
            inserter.send(b"words\0")
            plasma.wait_for(f"pressed 29 {key}")
            inserter.wait_for("inserted", count)

    def test_terminals_get_their_own_key(self):
        inserter, plasma = self.start()
        plasma.do("terminal")
        for number, text in enumerate(("ls", " -l"), 1):
            inserter.send(text.strip().encode() + b"\0")
            self.assertEqual(plasma.pasted(number)[0], text)
        self.assertEqual(plasma.lines("pressed 29 47"), [])

    def test_words_in_another_window_begin_without_a_space(self):
        inserter, plasma = self.start()
        for number, text in enumerate(("one", " two"), 1):
            inserter.send(text.strip().encode() + b"\0")
            self.assertEqual(plasma.pasted(number)[0], text)
        plasma.do("window")
        inserter.send(b"three\0")
        self.assertEqual(plasma.pasted(3)[0], "three")

    def test_the_compositors_script_is_written_once_and_goes_with_the_program(self):
        inserter, plasma = self.start()
        script = self.state("focused-app.js")
        written = []
        for number, text in enumerate(("one", "two"), 1):
            inserter.send(text.encode() + b"\0")
            plasma.pasted(number)
            written.append(os.stat(script).st_ino)
        self.assertEqual(written[0], written[1])
        os.unlink(script)
        inserter.send(b"three\0")
        plasma.pasted(3)
        plasma.do("terminal")
        inserter.send(b"four\0")
        self.assertEqual(plasma.pasted(4)[0], " four")
        self.assertTrue(os.path.exists(script))
        inserter.stop()
        self.assertFalse(os.path.exists(script))

    def test_nothing_wakes_the_idle_program(self):
        inserter, plasma = self.start()
        inserter.send(b"words\0")
        plasma.pasted(1)
        eventually(lambda: plasma.clipboard() == THEIRS, "the old clipboard")
        self.sleeps(inserter.pid)

    def test_the_check_names_the_way(self):
        self.plasma()
        done = run_command("check", environment=self.environment)
        self.assertIn("words: pasted by the desktop's portal with Ctrl+V", done.stdout.splitlines())


class Plasma5(PlasmaCase):
    """Without tokens and without a question."""

    def test_words_are_pasted_and_the_old_clipboard_comes_back(self):
        plasma = self.plasma("plasma5")
        inserter = self.inserter()
        plasma.do("terminal")
        self.open_without_token(inserter, plasma, "started")
        self.assertEqual(plasma.wait_for("devices"), "1 persist 0")
        self.copy(THEIRS.encode())
        inserter.send(b"words\0")
        plasma.wait_until_pasted(" words")
        eventually(lambda: plasma.clipboard() == THEIRS, "the old clipboard")

    def test_a_session_that_ended_is_opened_with_the_next_words(self):
        plasma = self.plasma("plasma5")
        inserter = self.inserter()
        plasma.wait_for("started")
        plasma.do("close")
        plasma.wait_for("left down")
        inserter.send(b"words\0")
        inserter.wait_for("inserted")
        eventually(lambda: plasma.clipboard() == "words", "the copy")
        self.assertEqual(plasma.lines("pasted"), [])

        def is_started_again():
            # The first words may have come before the program knew that the session has ended.
            inserted = len(inserter.lines("inserted"))
            inserter.send(b"more\0")
            inserter.wait_for("inserted", inserted + 1)
            return len(plasma.lines("started")) == 2
        eventually(is_started_again, "the second session", 20)


class WithoutPortal(PlasmaCase):
    """Words are copied."""

    def test_six_copies_leave_one_notification(self):
        inserter = self.inserter()
        for number in range(1, 7):
            inserter.send(b"words\0")
            inserter.wait_for("inserted", number)
        eventually(lambda: any(n.title.startswith("Copied") for n in self.desk.notifications.shown()),
                   "a notification")
        self.desk.notifications.wait_until_displayed(1)


class Engine(PlasmaCase):
    """The whole engine."""

    def test_spoken_words_end_in_the_text_field(self):
        sound = SoundServer(self.desk).start()
        self.addCleanup(sound.stop)
        self.environment["PULSE_SERVER"] = self.desk.environment["PULSE_SERVER"]
        self.environment["PULSE_COOKIE"] = self.desk.environment["PULSE_COOKIE"]
        plasma = self.plasma()
        engine = EngineProgram("run", home=self.environment["HOME"], environment=self.environment,
                               hears=False)
        self.addCleanup(engine.close)
        engine.wait_for_line("Ready.", 30)
        self.wait_until_open(plasma)
        for number in (1, 2):
            run_command("key", "press", environment=self.environment)
            engine.wait_for_line("Recording...", after=len(engine.texts()) - 1)
            sound.say(SPOKEN, latency_ms=500).exit_status(30)
            run_command("key", "release", environment=self.environment)
            self.assertEqual(plasma.pasted(number)[0].strip(), SPOKEN)
            eventually(lambda: plasma.clipboard() == THEIRS, "the old clipboard")
        self.assertEqual(engine.end()[0], 0)


if __name__ == "__main__":
    unittest.main()
