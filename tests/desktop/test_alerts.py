"""The permission gate on a desktop that protects the microphone and the keyboard."""

import os
import signal
import time
import urllib.parse

from harness import case
from harness.case import DesktopCase
from harness.opener import Opener
from harness.polling import eventually, stays
from harness.portal import Portal
from harness.window import Window

TITLE = "Voxtrel"
MICROPHONE = [
    "Microphone Permission Required",
    "Voxtrel needs microphone access to capture audio for speech-to-text. Please grant access in "
    "System Settings > Privacy & Security > Microphone, then relaunch the app."]
ACCESSIBILITY = [
    "Accessibility Permission Required",
    "Voxtrel needs Accessibility permission to detect the push-to-talk hotkey. Please grant access "
    "in System Settings > Privacy & Security > Accessibility, then relaunch the app."]


class AlertCase(DesktopCase):
    """The base: a program that the desktop may refuse something."""

    desk_parts = {"accessibility": True}

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        # The help pages, where an installed program finds them: beside its own folder.
        os.symlink(os.path.join(os.path.dirname(case.PROGRAMS), "share"), cls.desk.path("share"))

    def setUp(self):
        super().setUp()
        self.app = self.install(program="guarded-voxtrel")
        self.opener = None

    def begin(self, hangs=False, **changes):
        """Starts the program with a double of xdg-open."""
        self.opener = Opener(os.path.join(os.path.dirname(self.app.home), "bin"), hangs)
        self.addCleanup(self.opener.stop)
        changes.setdefault("PATH", self.opener.path(self.desk.environment))
        self.app.start(QT_QPA_PLATFORM="xcb", **changes)

    def refuse_microphone(self, *options, **changes):
        """Starts the program in a sandbox whose portal replies as `options` say."""
        portal = Portal(self.desk, *options or ("--microphone", "1"))
        self.addCleanup(portal.stop)
        marker = os.path.join(self.app.home, "sandbox")
        with open(marker, "w", encoding="ascii"):
            pass
        self.begin(GUARDED_SANDBOX_MARKER=marker, **changes)
        return portal

    def refuse_keyboard(self, **changes):
        """Starts the program in a session where the engine cannot see the key."""
        self.app.hide_key()
        self.begin(XDG_SESSION_TYPE="wayland", **changes)

    def alert(self, texts, limit_s=15.0):
        """The alert, which must be complete."""
        self.desk.accessibility.wait_for_window(self.app.process.pid, TITLE, limit_s)
        window = Window(self.desk, self.app, TITLE).wait_until_active()
        self.assertEqual([node.name for node in window.node.all("label") if node.name], texts)
        buttons = sorted(window.node.all("push button"), key=lambda node: node.place.x)
        self.assertEqual([button.name for button in buttons], ["Open Settings", "Quit"])
        self.assertEqual(["default" in button.states for button in buttons], [True, False])
        self.assertEqual(window.node.role, "alert")
        return window

    def assert_ended(self, opened=None):
        """The program has ended without starting an engine, and `opened` is open."""
        self.assertEqual(self.app.process.exit_status(), 0)
        self.assertEqual(self.app.engine.starts(), [])
        if opened is None:
            self.assertEqual(self.opener.opened(), [])
            return
        page = urllib.parse.urlparse(self.opener.wait_for_one())
        path = urllib.parse.unquote(page.path)
        self.assertEqual((page.scheme, os.path.basename(path)), ("file", opened))
        self.assertTrue(os.path.isfile(path), path)

    def assert_one_start(self):
        """The gate has opened, once."""
        self.app.wait_until_in_tray()
        self.app.engine.stays_running(0.7)
        self.assertEqual(len(self.app.engine.starts()), 1)
        self.assertEqual(self.desk.accessibility.windows_of(self.app.process.pid), [])

    @staticmethod
    def button(window, name):
        """One of the alert's buttons."""
        return window.node.find("push button", name)


class Microphone(AlertCase):
    """The portal refuses the microphone."""

    def test_open_settings_by_mouse_opens_the_microphones_page_and_ends(self):
        portal = self.refuse_microphone()
        window = self.alert(MICROPHONE)
        self.assertEqual(portal.asked(), ["microphone"])
        window.click(self.button(window, "Open Settings"))
        self.assert_ended("microphone.html")
        self.assertIn("Microphone permission denied", self.app.output())

    def test_quit_by_mouse_ends(self):
        self.refuse_microphone()
        window = self.alert(MICROPHONE)
        window.click(self.button(window, "Quit"))
        self.assert_ended()

    def test_return_chooses_the_first_button(self):
        self.refuse_microphone()
        self.alert(MICROPHONE).keys("Return")
        self.assert_ended("microphone.html")

    def test_escape_and_the_close_box_choose_the_last_button(self):
        self.refuse_microphone()
        self.alert(MICROPHONE).keys("Escape")
        self.assert_ended()
        self.app.start(QT_QPA_PLATFORM="xcb",
                       GUARDED_SANDBOX_MARKER=os.path.join(self.app.home, "sandbox"),
                       PATH=self.opener.path(self.desk.environment))
        self.alert(MICROPHONE).close_by_box()
        self.assert_ended()

    def test_assistive_technology_can_press_the_buttons(self):
        self.refuse_microphone()
        window = self.alert(MICROPHONE)
        self.button(window, "Open Settings").press()
        self.assert_ended("microphone.html")

    def test_the_first_button_stands_left_on_every_desktop(self):
        self.refuse_microphone(XDG_CURRENT_DESKTOP="GNOME")
        self.alert(MICROPHONE).keys("Escape")
        self.assert_ended()
        for desktop in ("KDE", "X-Unknown"):
            self.app.start(QT_QPA_PLATFORM="xcb", XDG_CURRENT_DESKTOP=desktop,
                           GUARDED_SANDBOX_MARKER=os.path.join(self.app.home, "sandbox"),
                           PATH=self.opener.path(self.desk.environment))
            self.alert(MICROPHONE).keys("Escape")
            self.assert_ended()

    def test_a_page_opener_that_hangs_delays_nothing(self):
        self.refuse_microphone(hangs=True)
        window = self.alert(MICROPHONE)
        started = time.monotonic()
        window.click(self.button(window, "Open Settings"))
        self.assertEqual(self.app.process.exit_status(), 0)
        self.assertLess(time.monotonic() - started, 5.0)
        self.assertEqual(os.path.basename(self.opener.wait_for_one()), "microphone.html")

    def test_without_any_page_opener_it_still_ends(self):
        self.refuse_microphone(PATH=self.app.home)
        window = self.alert(MICROPHONE)
        window.click(self.button(window, "Open Settings"))
        self.assert_ended()

    def test_a_request_to_end_takes_the_alert_away_unanswered(self):
        self.refuse_microphone()
        self.alert(MICROPHONE)
        self.app.process.send(signal.SIGTERM)
        self.assert_ended()

    def test_granted_it_goes_straight_on(self):
        self.refuse_microphone("--microphone", "0")
        self.assert_one_start()

    def test_a_question_that_is_never_answered_holds_the_start_but_not_the_end(self):
        portal = self.refuse_microphone("--silent")
        eventually(portal.asked, "the question")
        pid = self.app.process.pid
        stays(lambda: not self.app.engine.starts()
              and not self.desk.accessibility.windows_of(pid), "waiting", for_s=1.5)
        self.app.process.send(signal.SIGTERM)
        self.assert_ended()


class Keyboard(AlertCase):
    """The push-to-talk key cannot be seen."""

    def test_it_waits_30_seconds_and_open_settings_opens_the_keyboards_page(self):
        self.refuse_keyboard()
        started = time.monotonic()
        self.notifications(1)
        self.assertFalse(self.app.engine.starts())
        window = self.alert(ACCESSIBILITY, limit_s=60)
        self.between(time.monotonic() - started, 28.0, 45.0, "seconds to the alert")
        self.assertEqual(len(self.bodies()), 1, "one prompt only")
        window.click(self.button(window, "Open Settings"))
        self.assert_ended("accessibility-wayland.html")

    def test_quit_ends_after_the_30_seconds_too(self):
        self.refuse_keyboard()
        window = self.alert(ACCESSIBILITY, limit_s=60)
        window.click(self.button(window, "Quit"))
        self.assert_ended()

    def test_the_notification_says_why_and_what_helps_on_this_desktop(self):
        self.refuse_keyboard(XDG_CURRENT_DESKTOP="GNOME")
        for count, (desktop, word) in enumerate((("GNOME", "quillback key toggle"),
                                                 ("KDE", "xdg-desktop-portal-kde"),
                                                 ("sway", "quillback key press")), 1):
            if count > 1:
                self.app.start(XDG_SESSION_TYPE="wayland", QT_QPA_PLATFORM="xcb",
                               XDG_CURRENT_DESKTOP=desktop,
                               PATH=self.opener.path(self.desk.environment))
            self.notifications(count)
            body = self.bodies()[-1]
            self.assertTrue(body.endswith(" Right Cmd cannot be seen: a double forbids it."), body)
            self.assertIn(word, body)
            self.assertNotIn("Privacy", body)
            self.app.process.send(signal.SIGTERM)
            self.assert_ended()

    def test_an_engine_that_sees_the_key_meanwhile_opens_the_gate(self):
        self.refuse_keyboard()
        self.notifications(1)
        stays(lambda: not self.app.engine.starts(), "the closed gate", for_s=1.5)
        self.app.show_key()
        self.assert_one_start()

    def test_an_engine_that_sees_the_key_from_the_start_opens_it_at_once_without_a_word(self):
        self.app.show_key()
        started = time.monotonic()
        self.begin(XDG_SESSION_TYPE="wayland")
        self.app.engine.wait_for_starts(1)
        self.assertEqual(len(self.app.check.starts()), 1)
        print(f"{(time.monotonic() - started) * 1000:.0f} ms ... ", end="")
        self.assert_one_start()
        self.assertEqual(self.bodies(), [])

    def test_an_engine_that_does_not_know_the_question_counts_as_seeing_it(self):
        self.begin(XDG_SESSION_TYPE="wayland")
        self.assert_one_start()
        self.assertEqual(self.bodies(), [])

    def test_an_engine_that_does_not_end_at_the_question_counts_too_and_is_ended(self):
        self.app.check.at_start("ignore-term", "wait")
        self.begin(XDG_SESSION_TYPE="wayland")
        self.app.engine.wait_for_starts(1, limit_s=20)
        self.assert_one_start()
        eventually(lambda: not self.app.check.running(), "the end of the engines that were asked", 15)

    def test_a_request_to_end_while_it_waits_is_obeyed(self):
        self.refuse_keyboard()
        self.notifications(1)
        self.app.process.send(signal.SIGTERM)
        self.assert_ended()

    def test_in_an_x11_session_the_key_is_seen_without_asking_anybody(self):
        self.begin(XDG_SESSION_TYPE="x11")
        self.assert_one_start()
        self.assertEqual(self.bodies(), [])
