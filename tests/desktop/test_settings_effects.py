"""Effects of the settings: a download if the model is missing, and a start at login."""

import os
import shutil

from harness.forms import DOWNLOAD_TITLE, FIRST_LINE, DownloadForm
from harness.polling import eventually, stays
from harness.processes import without_privilege
from test_settings import FIRST_FILE, SettingsCase


class WithoutTheModel(SettingsCase):
    """Saving while the model is missing leads to its download."""

    def save_without_model(self, *script):
        """Saves; returns the download window, the engine being stopped."""
        form = self.begin()
        self.app.setup.at_start(*script)
        self.app.remove_model()
        form.keys("Return")
        form.wait_until_closed()
        download = DownloadForm(self.desk, self.app, DOWNLOAD_TITLE)
        self.wait_for_file(FIRST_FILE)
        self.app.setup.wait_for_starts(1)
        eventually(lambda: not self.app.engine.running(), "the engine's end")
        self.assertEqual(len(self.app.engine.starts()), 1)
        return download

    def test_the_engine_is_stopped_and_a_download_that_succeeds_starts_it(self):
        download = self.save_without_model()
        download.wait_for_log(FIRST_LINE)
        content = download.content
        self.assertEqual((content.width, content.height), (420, 340))
        self.app.setup.make_weights("large-v3")
        self.app.setup.exit(0)
        download.wait_until_closed()
        self.app.engine.wait_for_starts(2)
        self.app.engine.stays_running(0.5)

    def test_skip_after_a_failure_starts_it_too(self):
        download = self.save_without_model("exit 7")
        eventually(download.retry, "the retry button")
        self.assertIn("Setup failed (exit code 7). Check internet connection.", download.labels())
        download.click(download.skip())
        download.wait_until_closed()
        self.app.engine.wait_for_starts(2)
        self.app.engine.stays_running(0.5)

    def test_closed_by_its_box_it_leaves_the_engine_stopped_until_the_setup_ends_well(self):
        download = self.save_without_model()
        download.wait_until_active()
        download.close_by_box()
        download.wait_until_closed()
        stays(lambda: not self.app.engine.running(), "the engine to rest", for_s=1.0)
        self.assertEqual(len(self.app.setup.running()), 1)
        self.app.setup.exit(0)
        self.app.engine.wait_for_starts(2)
        self.app.engine.stays_running(0.5)


class LaunchAtLogin(SettingsCase):
    """The check box takes effect at once, and shows what the desktop says."""

    def entry(self):
        """The autostart entry's lines, or None."""
        path = os.path.join(self.app.home, ".config/autostart/org.voxtrel.Voxtrel.desktop")
        try:
            with open(path, encoding="utf-8") as file:
                return file.read().splitlines()
        except (FileNotFoundError, NotADirectoryError):
            return None

    def wait_for_login(self, form, checked):
        """Waits until the box is in that state."""
        eventually(lambda: form.login_checked() == checked, f"the box to be {checked}")

    def is_on(self):
        """Whether the desktop would start the program."""
        lines = self.entry()
        return bool(lines) and "Hidden=true" not in lines

    def test_checked_by_mouse_it_writes_an_entry_and_unchecked_by_key_takes_it_away(self):
        form = self.begin()
        self.assertFalse(form.login_checked())
        form.click(form.login())
        self.wait_for_login(form, True)
        eventually(self.is_on, "the entry")
        lines = self.entry()
        self.assertEqual(lines[0], "[Desktop Entry]")
        self.assertIn("Type=Application", lines)
        self.assertIn(f"TryExec={self.app.executable}", lines)
        self.assertIn(self.app.executable,
                      next(line for line in lines if line.startswith("Exec=")))
        form.wait_until_focused(form.login())
        form.keys("space")
        self.wait_for_login(form, False)
        eventually(lambda: not self.is_on(), "the entry to go")
        self.assertIsNone(self.file(), "it is not part of the save")

    def test_a_fresh_form_shows_what_the_desktop_says(self):
        form = self.begin()
        form.click(form.login())
        eventually(self.is_on, "the entry")
        form.close_by_escape()
        form = self.open()
        self.assertTrue(form.login_checked())
        form.close_by_escape()
        shutil.rmtree(os.path.join(self.app.home, ".config/autostart"))
        form = self.open()
        self.wait_for_login(form, False)

    def write_entry(self, *lines):
        """An autostart entry of the user's own; returns its lines."""
        folder = os.path.join(self.app.home, ".config/autostart")
        os.makedirs(folder, exist_ok=True)
        written = ["[Desktop Entry]", "Type=Application", "Name=Mine", "Exec=env A=b /bin/sh", *lines]
        with open(os.path.join(folder, "org.voxtrel.Voxtrel.desktop"), "w", encoding="ascii") as file:
            file.write("\n".join(written) + "\n")
        return written

    def remember_launch_at_login(self):
        """What a checked box leaves for the next start."""
        folder = os.path.join(self.app.home, ".config/voxtrel")
        os.makedirs(folder)
        with open(os.path.join(folder, "voxtrel.conf"), "w", encoding="ascii") as file:
            file.write("[General]\nlaunchAtLogin=true\n")

    def test_the_users_own_entry_is_shown_and_not_rewritten(self):
        self.app = self.install()
        own = self.write_entry()
        self.app.start_ready()
        self.wait_for_login(self.open(), True)
        self.assertEqual(self.entry(), own)

    def test_an_entry_that_the_desktop_turned_off_stays_off(self):
        self.app = self.install()
        off = self.write_entry("Hidden=true")
        self.remember_launch_at_login()
        self.app.start_ready()
        self.assertEqual(self.entry(), off)
        self.wait_for_login(self.open(), False)
        self.assertEqual(self.entry(), off)

    def test_an_entry_that_was_lost_comes_back_with_the_next_start(self):
        form = self.begin()
        form.click(form.login())
        eventually(self.is_on, "the entry")
        self.app.item.click("Quit Voxtrel")
        self.assertEqual(self.app.process.exit_status(), 0)
        shutil.rmtree(os.path.join(self.app.home, ".config/autostart"))
        self.app.start()
        eventually(self.is_on, "the entry again")

    def test_switched_off_it_stays_off_with_the_next_start(self):
        form = self.begin()
        form.click(form.login())
        eventually(self.is_on, "the entry")
        form.click(form.login())
        eventually(lambda: not self.is_on(), "the entry to go")
        self.app.item.click("Quit Voxtrel")
        self.assertEqual(self.app.process.exit_status(), 0)
        self.app.start()
        self.app.engine.wait_for_starts(2)
        self.assertFalse(self.is_on())

    def test_where_no_entry_can_be_written_it_springs_back(self):
        self.app = self.install()
        os.makedirs(os.path.join(self.app.home, ".config"))
        with open(os.path.join(self.app.home, ".config/autostart"), "w", encoding="ascii"):
            pass  # a file where the folder would be
        self.app.start_ready()
        form = self.open()
        form.click(form.login())
        form.wait_until_focused(form.login())
        self.wait_for_login(form, False)
        stays(lambda: not form.login_checked(), "unchecked", for_s=0.5)
        self.assertIsNone(self.entry())

    def test_in_a_read_only_folder_it_springs_back_to_what_it_was(self):
        self.app = self.install()
        self.app.wrapper = without_privilege()
        folder = os.path.join(self.app.home, ".config/autostart")
        os.makedirs(folder)
        os.chmod(folder, 0o555)
        self.app.start_ready()
        form = self.open()
        form.click(form.login())
        form.wait_until_focused(form.login())
        stays(lambda: not form.login_checked(), "unchecked", for_s=0.5)
        self.assertIsNone(self.entry())
        os.chmod(folder, 0o755)
        form.click(form.login())
        self.wait_for_login(form, True)
        eventually(self.is_on, "the entry")
        os.chmod(folder, 0o555)
        form.click(form.login())
        stays(form.login_checked, "checked", for_s=0.5)
        self.assertTrue(self.is_on())
        os.chmod(folder, 0o755)
