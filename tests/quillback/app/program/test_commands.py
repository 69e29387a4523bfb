"""The engine's commands, without a desktop."""

import os
import subprocess
import tempfile

from engine_program import (EXECUTABLE, ProgramCase, bare_environment, die_with_parent, run_command,
                            virtual_display, write_settings)
from harness.polling import eventually, stays
from sound_server import MICROPHONE, SPEAKER, SoundServer


def open_lines(path, start):
    """The lines of a file that begin so."""
    with open(path, encoding="ascii") as file:
        return [line for line in file if line.startswith(start)]


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

    def start_server(self, *modules):
        """A server that has these modules, and the environment of its clients."""
        server = SoundServer(self.make_home(), modules).start()
        self.addCleanup(server.stop)
        return server, {**bare_environment(self.make_home()), "PULSE_SERVER": server.address}

    def search(self, *modules):
        """The exit status; no recording may begin meanwhile."""
        _, environment = self.start_server(*modules)
        return self.search_unheard(environment, os.path.join(environment["HOME"], "events"))

    def wait(self, environment, parent):
        """The command as the engine runs it to wait for a source."""
        waiting = subprocess.Popen([EXECUTABLE, "microphone", str(parent)], env=environment,
                                   preexec_fn=die_with_parent)
        self.addCleanup(waiting.wait)
        self.addCleanup(waiting.kill)
        return waiting

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
        self.assertEqual(self.search(SPEAKER), 4)

    def test_a_source_is_found_and_not_opened(self):
        self.assertEqual(self.search(SPEAKER, MICROPHONE), 0)

    def test_a_source_that_comes_is_waited_for_without_polling(self):
        server, environment = self.start_server(SPEAKER)
        waiting = self.wait(environment, os.getpid())
        eventually(lambda: "quillback check" in server.control("list", "clients").stdout, "its question")
        eventually(lambda: self.sleeps(waiting.pid, 1), "a second without a step", 20)
        server.load(MICROPHONE)
        self.assertEqual(waiting.wait(10), 0)

    def test_a_server_that_ends_is_not_waited_for(self):
        server, environment = self.start_server(SPEAKER)
        waiting = self.wait(environment, os.getpid())
        eventually(lambda: "quillback check" in server.control("list", "clients").stdout, "its question")
        server.stop()
        self.assertEqual(waiting.wait(10), 3)

    def test_nothing_is_waited_for_without_the_parent(self):
        _, environment = self.start_server(SPEAKER)
        self.assertEqual(self.wait(environment, 1).wait(10), 0)

    @staticmethod
    def sleeps(pid, for_s):
        """Whether no thread of it ran in the meantime."""
        def switches():
            return [open_lines(f"/proc/{pid}/task/{task}/status", "voluntary_ctxt_switches")
                    for task in sorted(os.listdir(f"/proc/{pid}/task"))]
        before = switches()
        stays(lambda: True, "time", for_s)
        return switches() == before


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
        program.wait_for_line("Recording...")
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
        new.wait_for_line("Recording...")
        self.ends_well(new)
