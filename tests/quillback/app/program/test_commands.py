"""The engine's commands, without a desktop."""

import os
import subprocess
import tempfile

from engine_program import (EXECUTABLE, ProgramCase, bare_environment, die_with_parent, run_command,
                            virtual_display, write_settings)
from harness.polling import eventually


class CommandLine(ProgramCase):
    """What it prints and how it exits."""

    def run_to_end(self, *words):
        """Runs a command in a home folder of its own."""
        return run_command(*words, environment=bare_environment(self.make_home()))

    def test_help_names_the_commands(self):
        done = self.run_to_end("--help")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        for word in ("run", "setup", "transcribe", "retry", "--version"):
            self.assertIn(word, done.stdout)

    def test_the_version_is_one_line(self):
        done = self.run_to_end("--version")
        self.assertEqual(done.returncode, 0)
        self.assertRegex(done.stdout, r"\Aquillback \d+\.\d+\.\d+\n\Z")

    def test_what_cannot_be_written_is_no_success(self):
        with tempfile.TemporaryDirectory() as home, open("/dev/full", "wb") as full:
            wav = os.path.join(home, "voice.wav")
            subprocess.run(["espeak-ng", "-v", "en-us+edward", "-s", "165", "-w", wav,
                            "how are you today"], check=True, timeout=20)
            for status, arguments in ((6, ["transcribe", wav]), (1, ["--help"]), (1, ["--version"])):
                done = subprocess.run([EXECUTABLE, *arguments], env=bare_environment(home), stdout=full,
                                      stderr=subprocess.PIPE, check=False, timeout=20)
                self.assertEqual(done.returncode, status, arguments)

    def test_mistakes_exit_with_2_and_one_clear_line(self):
        for arguments in ([], ["walk"], ["run", "now"], ["setup", "base"], ["transcribe"],
                          ["retry", "x"], ["--version", "x"]):
            done = self.run_to_end(*arguments)
            self.assertEqual((done.returncode, done.stdout), (2, ""), arguments)
            self.assertRegex(done.stderr, r"\Aquillback: .+\nTry \"quillback --help\"\.\n\Z")


class Check(ProgramCase):
    """`quillback check`: whether the key can be seen."""

    def check(self, **variables):
        """Runs the command with these variables."""
        return run_command("check", environment={**bare_environment(self.make_home()), **variables})

    def test_without_a_desktop_the_key_is_not_seen_and_it_says_why(self):
        done = self.check(DISPLAY=":97531")
        lines = done.stdout.splitlines()
        if lines[0] == "key: yes, the right Super key by the keyboards in /dev/input":
            self.assertTrue(os.path.isdir("/dev/input"), "there are none")
            self.assertEqual((done.returncode, done.stderr), (0, ""))
        else:
            self.assertEqual((done.returncode, done.stderr), (1, ""))
            self.assertRegex(lines[0], "^key: no, the right Super key .*no X server.*/dev/input")
        self.assertIn("session: X11", lines)

    def test_an_x_server_shows_the_key(self):
        with virtual_display() as display:
            done = self.check(DISPLAY=display)
        self.assertEqual(done.returncode, 0)
        self.assertRegex(done.stdout.splitlines()[0], "^key: yes, the right Super key by ")

    def test_a_wayland_session_does_not_ask_the_x_server(self):
        done = self.check(DISPLAY=":97531", WAYLAND_DISPLAY="wayland-97531")
        self.assertNotIn("X server", done.stdout)
        self.assertIn("session: Wayland", done.stdout.splitlines())

    def test_a_desktop_that_has_called_the_command_shows_the_key(self):
        environment = {**bare_environment(self.make_home()), "WAYLAND_DISPLAY": "wayland-97531"}
        for command, status in (("check", 1), ("key press", 1), ("check", 0)):
            done = run_command(*command.split(), environment=environment)
            self.assertEqual(done.returncode, status, done)
        self.assertRegex(done.stdout, '^key: yes, .* by the command "quillback key"')

    def test_each_line_names_its_thing(self):
        for line in self.check().stdout.splitlines():
            self.assertRegex(line, "^(key|session|words): ")

    def test_what_the_settings_say_about_words_counts(self):
        home = self.make_home()
        write_settings(home, '[output]\ninsert = "none"\n')
        done = run_command("check", environment=bare_environment(home))
        self.assertIn("words: only printed, as the settings say", done.stdout.splitlines())


class Microphone(ProgramCase):
    """How the engine looks for a microphone, with sound servers of the test's own."""

    def search(self, *modules):
        """The exit status, with a server that has these modules; no recording may begin meanwhile."""
        home = self.make_home()
        socket = os.path.join(home, "socket")
        environment = {**bare_environment(home), "XDG_RUNTIME_DIR": home}
        loaded = [f"module-native-protocol-unix auth-anonymous=1 socket={socket}", *modules]
        server = subprocess.Popen(
            ["pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no",
             "--disable-shm=yes", *(word for module in loaded for word in ("-L", module))],
            env=environment, stderr=subprocess.DEVNULL, preexec_fn=die_with_parent)
        try:
            environment["PULSE_SERVER"] = "unix:" + socket
            eventually(lambda: self.pactl(environment, "info").returncode == 0, "the server", 20)
            return self.search_unheard(environment, os.path.join(home, "events"))
        finally:
            server.kill()
            server.wait()

    def search_unheard(self, environment, log):
        """Runs the search while all that happens in the server is written down."""
        def events():
            with open(log, encoding="utf-8") as file:
                return file.read()
        with open(log, "wb") as output, subprocess.Popen(
                ["pactl", "subscribe"], env=environment, stdout=output,
                preexec_fn=die_with_parent) as watcher:
            try:
                eventually(lambda: self.pactl(environment, "info") and "client" in events(),
                           "the server's events", 20)
                seen = len(events())
                status = run_command("microphone", environment=environment).returncode
                eventually(lambda: "'remove' on client" in events()[seen:], "its end", 20)
                self.assertNotIn("source-output", events())
                return status
            finally:
                watcher.kill()

    @staticmethod
    def pactl(environment, *words):
        """Asks the server."""
        return subprocess.run(["pactl", *words], env=environment, text=True, capture_output=True,
                              check=False, timeout=20)

    def test_without_a_server_it_says_so(self):
        environment = bare_environment(self.make_home())
        self.assertEqual(run_command("microphone", environment=environment).returncode, 3)

    def test_what_the_server_plays_is_no_microphone(self):
        self.assertEqual(self.search(), 4)
        self.assertEqual(self.search("module-null-sink sink_name=speaker"), 4)

    def test_a_source_is_found_and_not_opened(self):
        self.assertEqual(self.search("module-null-sink sink_name=speaker",
                                     "module-remap-source source_name=microphone "
                                     "master=speaker.monitor"), 0)


class Retry(ProgramCase):
    """`quillback retry` with a run-time folder that an engine may have left."""

    def setUp(self):
        self.environment, self.folder = self.make_runtime_folder()
        os.mkdir(self.folder)

    def speak(self, name, words):
        """A kept recording."""
        subprocess.run(["espeak-ng", "-v", "en-us+edward", "-s", "165", "-w",
                        os.path.join(self.folder, name), words], check=True, timeout=20)

    def retry(self, **options):
        """Runs the command."""
        return run_command("retry", environment=self.environment, **options)

    def test_it_prints_the_words_of_kept_recordings_once(self):
        self.speak("take-10.wav", "how are you today")
        self.speak("take-9.wav", "nice to meet you")
        done = self.retry()
        self.assertEqual((done.returncode, done.stdout), (0, "nice to meet you\nhow are you today\n"))
        self.assertEqual(os.listdir(self.folder), [])
        done = self.retry()
        self.assertEqual((done.returncode, done.stdout, done.stderr),
                         (5, "", "There is nothing to retry.\n"))

    def test_without_a_run_time_folder_it_says_so(self):
        del self.environment["XDG_RUNTIME_DIR"]
        done = self.retry()
        self.assertEqual((done.returncode, done.stdout), (5, ""))
        self.assertIn("XDG_RUNTIME_DIR", done.stderr)

    def test_words_that_cannot_be_written_stay(self):
        self.speak("take-1.wav", "how are you today")
        with open("/dev/full", "wb") as full:
            self.assertEqual(self.retry(stdout=full).returncode, 6)
        self.assertEqual(os.listdir(self.folder), ["take-1.wav"])


class Key(ProgramCase):
    """`quillback key`: the push-to-talk key by command."""

    def setUp(self):
        self.environment, folder = self.make_runtime_folder()
        self.socket = os.path.join(folder, "key")

    def command(self, *words):
        """Runs a command beside the engine."""
        return run_command(*words, environment=self.environment)

    def test_a_press_reaches_the_running_engine(self):
        self.assertEqual(self.command("key", "press").returncode, 1)
        program = self.start(environment=self.environment)
        program.wait_for_line("Ready.")
        done = self.command("key", "press")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))
        # There is no sound server here, so the recording fails at once.
        program.wait_for_line("Audio capture failed")
        self.assertEqual(self.command("key", "release").returncode, 0)
        self.ends_well(program)
        self.assertFalse(os.path.exists(self.socket))

    def test_the_newest_engine_gets_the_commands_and_keeps_them(self):
        old = self.start(environment=self.environment)
        old.wait_for_line("Ready.")
        new = self.start(environment=self.environment)
        new.wait_for_line("Ready.")
        self.ends_well(old)
        self.assertEqual(self.command("key", "toggle").returncode, 0)
        new.wait_for_line("Audio capture failed")
        self.ends_well(new)
