"""What the engine does while the screen is locked, and where copied words are shown."""

import sys

from harness.case import DesktopCase, PROGRAMS
from harness.dictation import KEY_CODE, Dictating, Editor, Speaker
from harness.polling import eventually, stays
from harness.processes import Process
from harness.sound import SoundServer

GRABBER = """
import ctypes, sys, time
x = ctypes.CDLL("libX11.so.6")
x.XOpenDisplay.restype = ctypes.c_void_p
x.XDefaultRootWindow.argtypes = [ctypes.c_void_p]
x.XDefaultRootWindow.restype = ctypes.c_ulong
x.XGrabKeyboard.argtypes = [ctypes.c_void_p, ctypes.c_ulong] + [ctypes.c_int] * 3 + [ctypes.c_ulong]
display = x.XOpenDisplay(None)
status = x.XGrabKeyboard(display, x.XDefaultRootWindow(display), 0, 1, 1, 0)
print("grabbed" if status == 0 else "refused", flush=True)
time.sleep(3600)
"""
LOCKED = "The screen was locked"


class LockCase(DesktopCase):
    """A ready engine, an editor with the focus, and a screen that the test locks."""

    settings = None

    def setUp(self):
        super().setUp()
        self.sound = SoundServer(self.desk).start()
        self.addCleanup(self.sound.stop)
        type(self).installations += 1
        self.app = Dictating(self.desk, PROGRAMS, f"dictating{self.installations}")
        self.addCleanup(self._check_reports, self.app)
        self.addCleanup(self.app.stop)
        if self.settings:
            self.app.configure(self.settings)
        self.editor = Editor(self.desk, f"letter{self.installations}")
        self.addCleanup(self.editor.close)
        self.app.start_dictating()
        self.speaker = Speaker(self.desk, self.sound, self.app)
        self.addCleanup(self.speaker.release)
        self.addCleanup(self.desk.login_manager.lock, False)

    def grab_keyboard(self):
        """What a lock screen does under X11; returns what ends it."""
        log = self.desk.path(f"logs/grabber{self.installations}.log")
        grabber = Process([sys.executable, "-c", GRABBER], self.desk.environment, log)
        self.addCleanup(grabber.stop)
        eventually(lambda: "grabbed" in grabber.output(), "the grab")
        return grabber.kill

    def records_nothing(self):
        """A press of the key has no effect."""
        before = self.app.count("Recording...")
        self.desk.xdotool("keydown", KEY_CODE)
        stays(lambda: self.app.count("Recording...") == before and not self.sound.recordings(),
              "no recording", 1.0)
        self.speaker.release()

    def assert_told_once(self):
        """One line says that the screen was locked; then dictation works."""
        eventually(lambda: self.app.count(LOCKED) == 1, "the line", 5)
        self.speaker.dictate("how are you today")
        self.editor.wait_for_text("how are you today")
        self.assertEqual(self.app.count(LOCKED), 1)


class Locked(LockCase):
    """Nothing is recorded or typed."""

    def test_by_the_login_manager_no_recording_begins(self):
        self.desk.login_manager.lock(True)
        self.records_nothing()
        self.assertEqual(self.app.count(LOCKED), 0)
        self.desk.login_manager.lock(False)
        self.assert_told_once()

    def test_by_the_login_manager_a_recording_is_dropped(self):
        self.speaker.press()
        self.app.item.wait_for_status("Recording...")
        self.speaker.keep_holding(0.5)
        self.desk.login_manager.lock(True)
        eventually(lambda: not self.sound.recordings(), "the microphone to be closed")
        self.speaker.speak("nice to meet you")
        self.speaker.release()
        stays(lambda: not self.app.count("[gpu-decode]"), "no words", 1.0)
        self.desk.login_manager.lock(False)
        self.assert_told_once()

    def test_by_a_keyboard_grab_no_recording_begins(self):
        release = self.grab_keyboard()
        self.records_nothing()
        self.assertEqual(self.app.count(LOCKED), 0)
        release()
        self.assert_told_once()


class Copied(LockCase):
    """Words that are copied are in no command line and in no notification."""

    settings = '[output]\ninsert = "clipboard"\n'

    def test_the_notification_does_not_show_the_words_and_replaces_the_one_before(self):
        self.speaker.dictate("how are you today")
        first, = self.notifications(1)
        self.assertIn("Copied", first.title)
        self.assertEqual(first.body, "")
        self.speaker.dictate("nice to meet you")
        second = self.notifications(2)[1]
        # One that comes much later does not replace the first, which is closed before it.
        if second.identifier != first.identifier:
            closed = [int(call.arguments[0]) for call in self.desk.messages.calls("CloseNotification")]
            self.assertIn(first.identifier, closed)


class CopiedAndShown(LockCase):
    """The user may ask for the words."""

    settings = '[output]\ninsert = "clipboard"\nnotify_text = true\n'

    def test_the_notification_shows_the_words(self):
        self.speaker.dictate("how are you today")
        shown, = self.notifications(1)
        self.assertEqual(shown.body, "how are you today")
