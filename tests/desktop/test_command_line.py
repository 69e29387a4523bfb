"""The command line's options, and a second start."""

import os
import shutil
import subprocess
import tempfile

from harness import case
from harness.case import DesktopCase
from harness.polling import eventually, stays

READY = "Ready — hold Right Cmd"


class Memory(DesktopCase):
    """Other programs of the user cannot look at it."""

    def test_it_is_its_own(self):
        # Root may look at everything, so it runs as another user. What nobody may look at is root's.
        user = 65534 if os.geteuid() == 0 else os.geteuid()
        for variable, owner in ((None, 0), ("VOXTREL_CORE", user)):
            with tempfile.TemporaryDirectory() as home:
                os.chmod(home, 0o777)
                program = shutil.copy(os.path.join(case.PROGRAMS, "voxtrel"), home)
                environment = {"HOME": home, "PATH": os.environ["PATH"], "QT_QPA_PLATFORM": "offscreen",
                               "DBUS_SESSION_BUS_ADDRESS": f"unix:path={home}/no-bus",
                               **({variable: "1"} if variable else {})}
                log = os.path.join(home, "log")
                with open(log, "wb") as output, subprocess.Popen(
                        [program], env=environment, user=user, stdout=output, stderr=output) as child:
                    try:
                        eventually(lambda: "Voxtrel launching" in self._text(log), "the program", 20)
                        self.assertEqual(os.stat(f"/proc/{child.pid}/environ").st_uid, owner)
                    finally:
                        child.kill()

    @staticmethod
    def _text(path):
        with open(path, encoding="utf-8") as file:
            return file.read()


class CommandLine(DesktopCase):
    """--help and --version work without a desktop."""

    @staticmethod
    def ask(*arguments):
        """Runs the program without any display."""
        environment = {k: v for k, v in os.environ.items()
                       if k not in ("DISPLAY", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS")}
        return subprocess.run([os.path.join(case.PROGRAMS, "voxtrel"), *arguments], check=False,
                              env=environment, capture_output=True, text=True, timeout=20)

    def test_version(self):
        answer = self.ask("--version")
        self.assertEqual((answer.returncode, answer.stderr), (0, ""))
        self.assertRegex(answer.stdout, r"^voxtrel \d+\.\d+\.\d+\n$")

    def test_help(self):
        answer = self.ask("--help")
        self.assertEqual((answer.returncode, answer.stderr), (0, ""))
        for word in ("Usage:", "--settings", "--restart", "--quit", "--help", "--version",
                     "VOXTREL_LOG"):
            self.assertIn(word, answer.stdout)

    def test_an_unknown_argument_is_named_on_standard_error_with_status_2(self):
        for argument in ("--frobnicate", "run", "-h", ""):
            answer = self.ask(argument)
            self.assertEqual((answer.returncode, answer.stdout), (2, ""))
            self.assertIn(f'"{argument}"', answer.stderr)

    def test_a_second_start_hands_over_and_exits_with_0(self):
        app = self.install().start_ready()
        second = self.install()
        second.start()
        self.assertEqual(second.process.exit_status(), 0)
        self.assertEqual(second.output(), "")
        self.assertEqual(second.engine.starts(), [])
        app.item.wait_for_status(READY)
        self.assertEqual(len(app.engine.running()), 1)

    def test_of_two_simultaneous_starts_one_stays(self):
        apps = [self.install() for number in range(2)]
        for app in apps:
            app.start()
        eventually(lambda: sum(app.process.running() for app in apps) == 1, "one to hand over")
        stays(lambda: sum(app.process.running() for app in apps) == 1, "the other", for_s=1.0)
        first = next(app for app in apps if app.process.running())
        first.engine.wait_for_starts(1)
        self.assertEqual(sum(len(app.engine.starts()) for app in apps), 1)


class Requests(DesktopCase):
    """What a start passes on to the program that runs."""

    def request(self, *arguments, **changes):
        """Starts the program a second time, with options; returns its exit status and its output."""
        second = self.install()
        second.start(*arguments, **changes)
        return second.process.exit_status(), second.output()

    def has_settings(self):
        """Whether the settings window is on the screen."""
        return bool(self.desk.xdotool_or_nothing("search", "--onlyvisible", "--name",
                                                 "^Voxtrel Settings$"))

    def test_settings_opens_the_window_of_the_program_that_runs(self):
        app = self.install().start_ready()
        self.assertEqual(self.request("--settings"), (0, ""))
        eventually(self.has_settings, "the settings")
        self.assertEqual(len(app.engine.starts()), 1)

    def test_settings_starts_the_program_if_none_runs(self):
        app = self.install()
        app.start("--settings")
        app.wait_until_in_tray()
        eventually(self.has_settings, "the settings")

    def test_restart_restarts_the_engine(self):
        app = self.install().start_ready()
        self.assertEqual(self.request("--restart"), (0, ""))
        app.engine.wait_for_starts(2)

    def test_quit_returns_when_the_program_has_gone_so_that_it_can_be_started_again(self):
        app = self.install().start_ready()
        app.engine.ignore_sigterm()  # the end takes its two seconds
        self.assertEqual(self.request("--quit"), (0, ""))
        self.assertEqual(app.process.exit_status(0.5), 0)
        self.assertEqual(app.engine.running(), [])
        self.install().start_ready()

    def test_restart_and_quit_need_no_display(self):
        app = self.install().start_ready()
        self.assertEqual(self.request("--restart", DISPLAY=None), (0, ""))
        app.engine.wait_for_starts(2)
        self.assertEqual(self.request("--quit", DISPLAY=None), (0, ""))
        self.assertEqual(app.process.exit_status(), 0)

    def test_restart_and_quit_say_so_with_status_1_if_none_runs(self):
        for argument in ("--restart", "--quit"):
            status, output = self.request(argument)
            self.assertEqual((status, output), (1, "voxtrel: it is not running in this session\n"))
            status, output = self.request(
                argument, DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent/session-bus")
            self.assertEqual((status, output), (1, "voxtrel: it is not running in this session\n"))


class Logging(DesktopCase):
    """Each message is one line on standard error; the engine's lines only at level debug."""

    def test_engine_lines_are_logged_only_when_asked_for(self):
        for level, expected in ((None, 0), ("debug", 1)):
            app = self.install().start_ready(VOXTREL_LOG=level)
            app.engine.say("a line that means nothing")
            app.engine.say("Recording...")
            app.item.wait_for_status("Recording...")
            app.item.click("Quit Voxtrel")
            self.assertEqual(app.process.exit_status(), 0)
            self.assertEqual(app.output().count("a line that means nothing"), expected)

    def test_dictated_words_are_logged_only_when_asked_for(self):
        for level, expected in (("debug", 0), ("debug,words", 1)):
            app = self.install().start_ready(VOXTREL_LOG=level)
            app.engine.say('[gpu-decode] text: "a secret of mine"')
            app.engine.say("Recording...")
            app.item.wait_for_status("Recording...")
            app.item.click("Quit Voxtrel")
            self.assertEqual(app.process.exit_status(), 0)
            self.assertEqual(app.output().count("a secret of mine"), expected)
            self.assertEqual(app.output().count("[gpu-decode] text:"), 1)

    def test_the_life_cycle_is_logged_in_order(self):
        app = self.install().start_ready()
        app.item.click("Quit Voxtrel")
        self.assertEqual(app.process.exit_status(), 0)
        places = [app.output().index(text) for text in (
            "Voxtrel launching", "StatusBarController initialized", "Voxtrel terminating")]
        self.assertEqual(places, sorted(places))
