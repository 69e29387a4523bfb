"""The settings window: opened from the menu, changed by hand, saved, and what follows."""

import os
import time

from harness.case import DesktopCase
from harness.forms import SETTINGS_TITLE, SettingsForm
from harness.polling import eventually, stays

DEFAULTS = ("Right Command", "Auto-detect", "Original language")
FIRST_FILE = """
[model]
translate = false
language = "auto"
whisper_model = "large-v3"

[audio]
hotkey = 'right_cmd'
hotkey_code = 54"""
CHANGED_FILE = """
[model]
translate = true
language = "de"
whisper_model = "large-v3"

[audio]
hotkey = 'f5'
hotkey_code = 96"""
USERS_FILE = """# mine
[model]
  language="de"  # note
whisper_model = "medium"
beam = 5\r

[audio]
# keep = "this"
device = "hw:1"
hotkey = "f7"

[other]
language = "fr"
"""
USERS_FILE_CHANGED = """# mine
[model]
translate = false
language = "yue"
whisper_model = "large-v3"
beam = 5\r

[audio]
hotkey_code = 42
# keep = "this"
device = "hw:1"
hotkey = 'shift+\\'

[other]
language = "fr"
"""


class SettingsCase(DesktopCase):
    """The base: a running program and its settings window."""

    desk_parts = {"accessibility": True}

    def begin(self, configuration=None, **options):
        """Starts the program with a configuration file, and opens the window."""
        self.app = self.install(**options)
        if configuration is not None:
            self.app.configure(configuration)
        self.app.start_ready()
        return self.open()

    def open(self):
        """Chooses "Settings..." from the menu."""
        self.app.item.click("Settings...")
        return SettingsForm(self.desk, self.app).wait_until_active()

    def file(self):
        """The configuration file's bytes, or None."""
        try:
            with open(self.app.configuration, "rb") as file:
                return file.read()
        except FileNotFoundError:
            return None

    def wait_for_file(self, text):
        """Waits until the file holds exactly this."""
        eventually(lambda: self.file() is not None, "the configuration file")
        self.assertEqual(self.file().decode(), text)

    def assert_restarted_after_the_write(self):
        """The engine was ended and started once more, with the new file in place."""
        self.app.engine.wait_for_starts(2)
        self.app.engine.wait_for_one_running()
        self.assertEqual(len(self.app.engine.starts()), 2)
        offset_s = time.time() - time.monotonic()
        written_s = os.stat(self.app.configuration).st_mtime - offset_s
        self.assertLess(written_s, self.app.engine.starts()[1].time_s + 0.005)


class ByHand(SettingsCase):
    """Every change with keys alone, or with the mouse alone."""

    def test_saving_untouched_defaults_writes_the_nine_lines(self):
        form = self.begin()
        self.assertEqual(form.selections(), DEFAULTS)
        form.keys("Return")
        form.wait_until_closed()
        self.wait_for_file(FIRST_FILE)
        self.assert_restarted_after_the_write()

    def test_everything_is_changed_by_keyboard_alone(self):
        form = self.begin()
        form.wait_until_focused(form.combo("Hotkey:"))
        form.keys("Down", "Down", "Down", "Down", "Down")
        form.wait_for_selection("Hotkey:", "F5")
        form.keys("Tab")
        form.wait_until_focused(form.combo("Input Language:"))
        form.keys("g", "e")
        form.wait_for_selection("Input Language:", "German")
        form.keys("Tab")
        form.wait_until_focused(form.combo("Output:"))
        form.keys("End")
        form.wait_for_selection("Output:", "Translate to English")
        form.keys("Tab", "Tab")
        form.wait_until_focused(form.save_button())
        form.keys("space")
        form.wait_until_closed()
        self.wait_for_file(CHANGED_FILE)
        self.assert_restarted_after_the_write()

    def test_everything_is_changed_by_mouse_alone(self):
        form = self.begin()
        form.choose_by_mouse("Hotkey:", "F5")
        form.choose_by_mouse("Input Language:", "German")
        form.choose_by_mouse("Output:", "Translate to English")
        form.click(form.save_button())
        form.wait_until_closed()
        self.wait_for_file(CHANGED_FILE)
        self.assert_restarted_after_the_write()

    def test_the_lists_hold_every_row_in_order(self):
        form = self.begin()
        self.assertEqual(form.rows("Hotkey:"), [
            "Right Command", "Right Shift", "Right Control", "Right Option", "Shift + \\", "F5",
            "F6", "F7", "F8"])
        languages = form.rows("Input Language:")
        self.assertEqual((len(languages), languages[0], languages[2], languages[22]),
                         (23, "Auto-detect", "Chinese (Mandarin)", "Cantonese (v3 only)"))
        self.assertEqual(form.rows("Output:"), ["Original language", "Translate to English"])

    def test_the_open_language_list_fits_the_screen_and_its_last_row_can_be_clicked(self):
        form = self.begin()
        form.choose_by_mouse("Input Language:", "Cantonese (v3 only)")
        self.assertEqual(form.shown("Input Language:"), "Cantonese (v3 only)")

    def test_return_saves_with_the_keyboard_in_any_control(self):
        for tabs in range(5):
            form = self.begin()
            form.keys(*["Tab"] * tabs, "Return")
            form.wait_until_closed()
            self.wait_for_file(FIRST_FILE)
            self.app.engine.wait_for_starts(2)
            self.app.stop()

    def test_return_in_an_open_list_chooses_a_row_and_saves_nothing(self):
        form = self.begin()
        form.keys("space")
        eventually(lambda: form.open_list("Hotkey:"), "the list to open")
        self.desk.xdotool("key", "--delay", "50", "Down", "Down", "Return")
        form.wait_for_selection("Hotkey:", "Right Control")
        stays(form.node.showing, "the window", for_s=0.5)
        self.assertIsNone(self.file())
        self.assertEqual(len(self.app.engine.starts()), 1)

    def test_escape_closes_and_saves_nothing(self):
        form = self.begin()
        form.keys("Down", "Escape")
        form.wait_until_closed()
        self.assertIsNone(self.file())
        self.app.engine.stays_running(0.5)

    def test_the_close_box_closes_and_saves_nothing(self):
        form = self.begin(USERS_FILE)
        form.keys("Down")
        form.close_by_box()
        form.wait_until_closed()
        self.assertEqual(self.file().decode(), USERS_FILE)
        self.app.engine.stays_running(0.5)


class WhatIsInTheFile(SettingsCase):
    """What the form reads from the file, and what it leaves unchanged."""

    def test_the_users_own_lines_are_kept_to_the_byte(self):
        form = self.begin(USERS_FILE)
        # The reader knows no comments, so the language is one that is not in the list.
        self.assertEqual(form.selections(), ("F7", "Auto-detect", "Original language"))
        form.keys("Up", "Up", "Up", "Tab", "End")
        form.wait_for_selection("Hotkey:", "Shift + \\")
        form.wait_for_selection("Input Language:", "Cantonese (v3 only)")
        form.keys("Return")
        form.wait_until_closed()
        # The model was another one when the program started; this one is there.
        self.app.engine.wait_for_starts(2)
        self.wait_for_file(USERS_FILE_CHANGED)

    def begin(self, configuration=None, **options):
        """The file may name another model, which must not make the program fetch it."""
        self.app = self.install(**options)
        self.app.start_ready()
        if configuration is not None:
            self.app.configure(configuration)
        return self.open()

    def test_values_that_are_in_no_list_show_as_the_first_row_and_are_overwritten(self):
        form = self.begin('[model]\nlanguage = "en-US"\n[audio]\nhotkey = "capslock"\n')
        self.assertEqual(form.selections(), DEFAULTS)
        form.keys("Return")
        form.wait_until_closed()
        self.app.engine.wait_for_starts(2)
        self.assertEqual(self.file().decode(),
                         '[model]\ntranslate = false\nwhisper_model = "large-v3"\nlanguage = "auto"\n'
                         "[audio]\nhotkey_code = 54\nhotkey = 'right_cmd'\n")

    def test_saving_twice_changes_nothing_more(self):
        form = self.begin(USERS_FILE)
        form.keys("Return")
        form.wait_until_closed()
        self.app.engine.wait_for_starts(2)
        first = self.file()
        form = self.open()
        form.keys("Return")
        form.wait_until_closed()
        self.app.engine.wait_for_starts(3)
        self.assertEqual(self.file(), first)


class TheWindow(SettingsCase):
    """One window, whatever is asked for."""

    def test_opened_twice_it_is_one_window_that_comes_to_the_front(self):
        form = self.begin()
        form.keys("Down")
        self.app.item.click("Check for Updates...")
        eventually(lambda: not form.active(), "another window in front")
        self.app.item.click("Settings...")
        form.wait_until_active()
        windows = [window.name for window in
                   self.desk.accessibility.windows_of(self.app.process.pid)]
        self.assertEqual(windows.count(SETTINGS_TITLE), 1)
        self.assertEqual(form.shown("Hotkey:"), "Right Shift", "the open form is kept")

    def test_after_closing_it_is_a_fresh_form_from_the_file(self):
        form = self.begin()
        form.keys("Down", "Tab", "Down")
        form.close_by_escape()
        self.app.configure('[model]\nlanguage = "uk"\ntranslate = true\n[audio]\nhotkey_code = 97\n')
        form = self.open()
        self.assertEqual(form.selections(), ("F6", "Ukrainian", "Translate to English"))
        self.app.engine.stays_running(0.3)

    def test_it_is_as_large_as_it_should_be_and_centred_and_cannot_be_resized(self):
        form = self.begin()
        content = form.content
        self.assertEqual((content.width, content.height), (420, 280))
        across, down = form.frame.centre
        self.assertLess(abs(across - self.desk.width // 2), 20)
        self.assertLess(abs(down - self.desk.height // 2), 50)
        hints = form.property("WM_NORMAL_HINTS")
        self.assertIn("minimum size: 420 by 280", hints)
        self.assertIn("maximum size: 420 by 280", hints)

    def test_the_program_keeps_working_beside_it(self):
        self.begin()
        self.app.engine.say("Processing 2.0 s of audio")
        self.app.item.wait_for_status("Transcribing...")
        self.app.item.click("Quit Voxtrel")
        self.assertEqual(self.app.process.exit_status(), 0)
