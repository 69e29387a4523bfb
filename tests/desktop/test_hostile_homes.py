"""Broken home folders and settings files: nothing crashes, nothing hangs."""

import os
import pwd
import shlex
import time

from harness.case import DesktopCase
from harness.forms import DOWNLOAD_TITLE, FIRST_LINE, SETUP_TITLE, DownloadForm, SettingsForm
from harness.namespaces import can_mount, in_own_mounts
from harness.polling import eventually, stays
from harness.processes import without_privilege

DEFAULTS = ("Right Command", "Auto-detect", "Original language")
GERMAN = '[model]\nlanguage = "de"\ntranslate = true\n[audio]\nhotkey = "f6"\n'
GERMAN_SHOWN = ("F6", "German", "Translate to English")
DEFAULT_FILE = """
[model]
translate = false
language = "auto"
whisper_model = "large-v3"

[audio]
hotkey = 'right_cmd'
hotkey_code = 54"""


class HostileCase(DesktopCase):
    """The base: opens the settings, saves them, and looks at what is left."""

    desk_parts = {"accessibility": True}

    def setUp(self):
        super().setUp()
        self.app = self.install()

    def open(self):
        """Chooses "Settings..." from the menu."""
        self.app.item.click("Settings...")
        return SettingsForm(self.desk, self.app)

    def shows_and_saves(self, expected, **changes):
        """The program starts, shows `expected`, saves, and its engine is started again."""
        self.app.start_ready(**changes)
        form = self.open()
        self.assertEqual(form.selections(), expected)
        self.save(form)

    def save(self, form):
        """Saves; the engine is started again even if the file was not written."""
        starts = len(self.app.engine.starts())
        form.keys("Return")
        form.wait_until_closed()
        self.app.engine.wait_for_starts(starts + 1)
        self.app.engine.stays_running(0.3)

    def seen(self, path):
        """The outside path of a path as the program sees it."""
        return f"/proc/{self.app.process.pid}/root{path}"

    def read(self, path=None):
        """A file as the program sees it, by default the configuration; None where there is none."""
        try:
            with open(self.seen(path or self.app.configuration), "rb") as file:
                return file.read()
        except FileNotFoundError:
            return None

    def files_beside(self):
        """What lies in the configuration's folder, as the program sees it."""
        return sorted(os.listdir(self.seen(os.path.dirname(self.app.configuration))))


class ConfigurationFile(HostileCase):
    """A home that is in order, but for the file."""

    def make_folder(self):
        """The folder of the file; returns the file's path."""
        os.makedirs(os.path.dirname(self.app.configuration))
        return self.app.configuration

    def is_replaced_by_the_defaults(self, **changes):
        """The file reads as nothing, and saving puts a good one in its place."""
        self.shows_and_saves(DEFAULTS, **changes)
        self.assertEqual(self.read().decode(), DEFAULT_FILE)
        self.assertFalse(os.path.islink(self.app.configuration))
        self.assertEqual(self.files_beside(), ["config.toml"])

    def test_a_folder_in_its_place_is_replaced_with_all_that_is_in_it(self):
        path = self.make_folder()
        os.makedirs(os.path.join(path, "deeper"))
        with open(os.path.join(path, "deeper/file"), "w", encoding="ascii") as file:
            file.write("x")
        self.is_replaced_by_the_defaults()

    def test_a_dangling_link_is_replaced_and_its_target_not_made(self):
        path = self.make_folder()
        target = os.path.join(self.app.home, "elsewhere.toml")
        os.symlink(target, path)
        self.is_replaced_by_the_defaults()
        self.assertFalse(os.path.exists(target))

    def test_a_link_to_a_file_is_read_and_then_replaced_its_target_stays(self):
        path = self.make_folder()
        target = os.path.join(self.app.home, "elsewhere.toml")
        with open(target, "w", encoding="utf-8") as file:
            file.write(GERMAN)
        os.symlink(target, path)
        self.shows_and_saves(GERMAN_SHOWN)
        self.assertFalse(os.path.islink(path))
        with open(target, encoding="utf-8") as file:
            self.assertEqual(file.read(), GERMAN)

    def test_an_unreadable_file_is_replaced(self):
        self.app.configure(GERMAN)
        os.chmod(self.app.configuration, 0)
        self.app.wrapper = without_privilege()
        self.is_replaced_by_the_defaults()

    def test_a_file_that_is_not_utf_8_is_replaced(self):
        self.app.configure(GERMAN.encode() + b"# caf\xe9\n")
        self.is_replaced_by_the_defaults()

    def test_a_pipe_in_its_place_does_not_hang_anything(self):
        os.mkfifo(self.make_folder())
        self.is_replaced_by_the_defaults()

    def test_a_file_of_100_mb_is_read_and_edited(self):
        filler = b"# a comment of the user's, forty bytes..\n" * 2_500_000
        self.app.configure(filler + GERMAN.encode())
        started = time.monotonic()
        self.shows_and_saves(GERMAN_SHOWN)
        self.assertLess(time.monotonic() - started, 60)
        written = self.read()
        self.assertTrue(written.startswith(filler))
        self.assertEqual(written[len(filler):].decode(), (
            '[model]\nwhisper_model = "large-v3"\nlanguage = "de"\ntranslate = true\n'
            "[audio]\nhotkey_code = 97\nhotkey = 'f6'\n"))

    def test_in_a_folder_that_cannot_be_written_the_file_stays_as_it_is(self):
        self.app.configure(GERMAN)
        os.chmod(os.path.dirname(self.app.configuration), 0o555)
        self.app.wrapper = without_privilege()
        self.shows_and_saves(GERMAN_SHOWN)
        self.assertEqual(self.read().decode(), GERMAN)
        self.assertEqual(self.files_beside(), ["config.toml"])
        os.chmod(os.path.dirname(self.app.configuration), 0o755)

    def test_a_pipe_where_the_temporary_file_would_be_does_not_hang_anything(self):
        self.app.configure(GERMAN)
        os.mkfifo(self.app.configuration + ".tmp")
        self.shows_and_saves(GERMAN_SHOWN)

    def test_a_file_where_the_folder_would_be_leaves_the_defaults(self):
        os.makedirs(os.path.join(self.app.home, ".config"))
        place = os.path.join(self.app.home, ".config/quillback")
        with open(place, "w", encoding="ascii") as file:
            file.write("mine")
        self.shows_and_saves(DEFAULTS)
        with open(place, encoding="ascii") as file:
            self.assertEqual(file.read(), "mine")


class Homes(HostileCase):
    """Homes that are missing, or not what they should be."""

    def skip_unless_mounts_work(self):
        """Some of these tests need private mounts for the program."""
        if not can_mount():
            self.skipTest("this user may not mount anything, not even in a private namespace")

    def test_without_the_variable_the_home_is_the_user_databases(self):
        self.skip_unless_mounts_work()
        for value in (None, "", "relative/home"):
            self.app.configure(GERMAN)
            self.app.wrapper = self.in_user_database(self.app.home)
            self.shows_and_saves(GERMAN_SHOWN, HOME=value)
            self.assertIn(b"hotkey_code = 97", self.read())
            self.app.stop()
            self.app = self.install()

    def in_user_database(self, home):
        """A wrapper under which the user database names another home."""
        lines = []
        for entry in pwd.getpwall():
            place = home if entry.pw_uid == os.getuid() else entry.pw_dir
            lines.append(":".join([entry.pw_name, "x", str(entry.pw_uid), str(entry.pw_gid),
                                   "", place, entry.pw_shell]))
        database = os.path.join(self.app.home, "..", "passwd")
        with open(database, "w", encoding="utf-8") as file:
            file.write("\n".join(lines) + "\n")
        return in_own_mounts(f"mount --bind {shlex.quote(database)} /etc/passwd")

    def test_without_any_home_it_runs_on_defaults(self):
        self.skip_unless_mounts_work()
        self.app.wrapper = self.in_user_database("/proc/nonexistent")
        self.goes_on_after_skip(HOME=None)
        form = self.checked_form()
        form.keys("Return")
        form.wait_until_closed()
        download = DownloadForm(self.desk, self.app, DOWNLOAD_TITLE)
        eventually(download.retry, "the retry button")
        download.skip().press()
        self.app.engine.wait_for_starts(2)
        self.app.engine.stays_running(0.3)

    def test_a_home_that_does_not_exist_is_made_when_saving(self):
        home = os.path.join(self.app.home, "not/yet/there")
        self.goes_on_after_skip(HOME=home)
        form = self.checked_form()
        self.app.setup.at_start("exit 0")
        form.keys("Return")
        form.wait_until_closed()
        path = os.path.join(home, ".config/quillback/config.toml")
        eventually(lambda: self.read(path) == DEFAULT_FILE.encode(), "the file in the new home")

    def test_a_home_that_is_a_file_runs_on_defaults(self):
        home = os.path.join(self.app.home, "file")
        with open(home, "w", encoding="ascii") as file:
            file.write("mine")
        self.goes_on_after_skip(HOME=home)
        self.checked_form()
        with open(home, encoding="ascii") as file:
            self.assertEqual(file.read(), "mine")

    def goes_on_after_skip(self, **changes):
        """There is no model in such a home: the set-up fails and is skipped."""
        self.app.setup.at_start("exit 1")
        self.app.start(XDG_CONFIG_HOME=None, **changes)
        setup = DownloadForm(self.desk, self.app, SETUP_TITLE)
        eventually(setup.retry, "the retry button")
        self.assertEqual(setup.log(), [FIRST_LINE])
        setup.skip().press()
        setup.wait_until_closed()
        self.app.wait_until_in_tray()

    def checked_form(self):
        """The settings, which show the defaults."""
        form = self.open()
        self.assertEqual(form.selections(), DEFAULTS)
        return form

    def test_on_a_read_only_file_system_nothing_is_lost(self):
        self.skip_unless_mounts_work()
        self.app.configure(GERMAN)
        home = shlex.quote(self.app.home)
        self.app.wrapper = in_own_mounts(
            f"mount --bind {home} {home}", f"mount -o remount,bind,ro {home}")
        self.app.start_ready()
        form = self.open()
        self.assertEqual(form.selections(), GERMAN_SHOWN)
        form.keys("Down")
        form.wait_for_selection("Hotkey:", "F7")
        form.click(form.login())
        form.wait_until_focused(form.login())
        stays(lambda: not form.login_checked(), "unchecked", for_s=0.5)
        self.save(form)
        self.assertEqual(self.read().decode(), GERMAN)
        self.assertEqual(self.open().selections(), GERMAN_SHOWN)

    def test_on_a_full_file_system_the_configuration_is_lost_and_the_engine_runs(self):
        self.skip_unless_mounts_work()
        folder = os.path.dirname(self.app.configuration)
        os.makedirs(folder)
        original = os.path.join(self.app.home, "original.toml")
        with open(original, "w", encoding="utf-8") as file:
            file.write(GERMAN)
        place = shlex.quote(folder)
        self.app.wrapper = in_own_mounts(
            f"mount -t tmpfs -o size=64k tmpfs {place}",
            f"cp {shlex.quote(original)} {place}/config.toml",
            f"dd if=/dev/zero of={place}/filler bs=4k count=64 2>/dev/null || true")
        self.shows_and_saves(GERMAN_SHOWN)
        self.assertIsNone(self.read(), "what could not be written took the old file along")
        self.assertEqual(self.files_beside(), ["filler"])
        self.assertEqual(self.open().selections(), DEFAULTS)
