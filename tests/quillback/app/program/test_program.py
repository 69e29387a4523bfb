"""The engine's command line, its start and its end, without a desktop."""

import fcntl
import os
import resource
import shutil
import signal
import struct
import subprocess
import tempfile
import time
import unittest

from engine_program import (EXECUTABLE, EngineProgram, bare_environment, die_with_parent,
                            catches)
from harness.polling import eventually, stays
from harness.processes import is_sanitized

F_SETPIPE_SZ = 1031
# The documented limit; sanitizers are slower.
PROMPT_S = 3.0 if is_sanitized(EXECUTABLE) else 0.5
ERROR_MARKERS = ("[quillback] ERROR", "[quillback] Failed", "Audio capture failed", "Accessibility",
                 "Microphone permission")


class Case(unittest.TestCase):
    """Starts engines that end with the test."""

    def start(self, *arguments, **options):
        """An engine with its own home folder."""
        program = EngineProgram(*(arguments or ("run",)), **options)
        self.addCleanup(program.close)
        return program

    def run_to_end(self, *arguments):
        """Runs a command until it ends."""
        with tempfile.TemporaryDirectory() as home:
            return subprocess.run([EXECUTABLE, *arguments], env=bare_environment(home), text=True,
                                  capture_output=True, check=False, timeout=20)

    def ends_well(self, program, number=signal.SIGTERM):
        """Checks that it ends at once with status 0."""
        status, took_s = program.end(number)
        self.assertEqual(status, 0)
        self.assertLess(took_s, PROMPT_S)


class CommandLine(Case):
    """What it prints and how it exits."""

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


class Check(unittest.TestCase):
    """`quillback check`: whether the key can be seen."""

    def check(self, **variables):
        """Runs the command with these variables."""
        with tempfile.TemporaryDirectory() as home:
            return subprocess.run([EXECUTABLE, "check"], env={**bare_environment(home), **variables},
                                  text=True, capture_output=True, check=False, timeout=20)

    def test_without_a_desktop_the_key_is_not_seen_and_it_says_why(self):
        done = self.check(DISPLAY=":97531")
        if os.path.isdir("/dev/input"):
            self.skipTest("this machine has keyboards")
        self.assertEqual((done.returncode, done.stderr), (1, ""))
        lines = done.stdout.splitlines()
        self.assertRegex(lines[0], "^key: no, the right Super key .*no X server.*/dev/input")
        self.assertIn("session: X11", lines)

    def test_an_x_server_shows_the_key(self):
        theirs, ours = os.pipe()
        with subprocess.Popen(["Xvfb", "-displayfd", str(ours), "-screen", "0", "64x48x24"],
                              pass_fds=[ours], preexec_fn=die_with_parent, stderr=subprocess.DEVNULL,
                              stdout=subprocess.DEVNULL) as server:
            self.addCleanup(os.close, theirs)
            os.close(ours)
            try:
                display = ":" + os.read(theirs, 16).decode().strip()
                done = self.check(DISPLAY=display)
            finally:
                server.terminate()
        self.assertEqual(done.returncode, 0)
        self.assertRegex(done.stdout.splitlines()[0], "^key: yes, the right Super key by ")

    def test_a_wayland_session_does_not_ask_the_x_server(self):
        done = self.check(DISPLAY=":97531", WAYLAND_DISPLAY="wayland-97531")
        self.assertNotIn("X server", done.stdout)
        self.assertIn("session: Wayland", done.stdout.splitlines())

    def test_a_desktop_that_has_called_the_command_shows_the_key(self):
        with tempfile.TemporaryDirectory() as home:
            environment = {**bare_environment(home), "WAYLAND_DISPLAY": "wayland-97531"}
            for command, status in (("check", 1), ("key press", 1), ("check", 0)):
                done = subprocess.run([EXECUTABLE, *command.split()], env=environment, text=True,
                                      capture_output=True, check=False, timeout=20)
                self.assertEqual(done.returncode, status, done)
            self.assertRegex(done.stdout, '^key: yes, .* by the command "quillback key"')

    def test_each_line_names_its_thing(self):
        for line in self.check().stdout.splitlines():
            self.assertRegex(line, "^(key|session|words): ")

    def test_what_the_settings_say_about_words_counts(self):
        with tempfile.TemporaryDirectory() as home:
            folder = os.path.join(home, ".config", "quillback")
            os.makedirs(folder)
            with open(os.path.join(folder, "config.toml"), "w", encoding="utf-8") as file:
                file.write('[output]\ninsert = "none"\n')
            done = subprocess.run([EXECUTABLE, "check"], env=bare_environment(home), text=True,
                                  capture_output=True, check=False, timeout=20)
            self.assertIn("words: only printed, as the settings say", done.stdout.splitlines())


class Retry(Case):
    """`quillback retry` with a run-time folder that an engine may have left."""

    def setUp(self):
        home = tempfile.TemporaryDirectory()
        self.addCleanup(home.cleanup)
        self.environment = bare_environment(home.name)
        self.environment["XDG_RUNTIME_DIR"] = os.path.join(home.name, "run")
        self.folder = os.path.join(home.name, "run", "quillback")
        os.makedirs(self.folder)

    def speak(self, name, words):
        """A kept recording."""
        subprocess.run(["espeak-ng", "-v", "en-us+edward", "-s", "165", "-w",
                        os.path.join(self.folder, name), words], check=True, timeout=20)

    def retry(self, **options):
        """Runs the command."""
        wanted = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **options}
        return subprocess.run([EXECUTABLE, "retry"], env=self.environment, text=True, check=False,
                              timeout=20, **wanted)

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


class Key(Case):
    """`quillback key`: the push-to-talk key by command."""

    def setUp(self):
        home = tempfile.TemporaryDirectory()
        self.addCleanup(home.cleanup)
        self.environment = bare_environment(home.name)
        self.environment["XDG_RUNTIME_DIR"] = os.path.join(home.name, "run")
        self.socket = os.path.join(home.name, "run", "quillback", "key")
        os.makedirs(self.environment["XDG_RUNTIME_DIR"])

    def command(self, *words):
        """Runs a command beside the engine."""
        return subprocess.run([EXECUTABLE, *words], env=self.environment, text=True,
                              capture_output=True, check=False, timeout=20)

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


class LargeFiles(Case):
    """`quillback transcribe` with more sound than memory."""

    def setUp(self):
        self.home = tempfile.TemporaryDirectory()
        self.addCleanup(self.home.cleanup)

    def silence(self, sample_bytes, channels, rate_hz, seconds):
        """A file of floating point zeros, or of integers where a sample has fewer bytes; without its bytes on
        the disk."""
        encoding, frame = 3 if sample_bytes == 8 else 1, sample_bytes * channels
        path = os.path.join(self.home.name, "silence.wav")
        with open(path, "wb") as file:
            file.write(b"RIFF\0\0\0\0WAVEfmt " + struct.pack(
                "<IHHIIHH4sI", 16, encoding, channels, rate_hz, rate_hz * frame, frame,
                8 * sample_bytes, b"data", frame * rate_hz * seconds))
            file.truncate(44 + frame * rate_hz * seconds)
        return path

    def transcribe(self, path, most_megabytes=None):
        def limit():
            size = int(most_megabytes * 2**20)
            resource.setrlimit(resource.RLIMIT_AS, (size, size))
        with subprocess.Popen([EXECUTABLE, "transcribe", path], env=bare_environment(self.home.name),
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                              preexec_fn=limit if most_megabytes else None) as process:
            output, errors = process.communicate(timeout=100)
            self.assertEqual(output, "")
            return process.returncode, errors

    def peak_megabytes(self, path):
        """The most memory that recognising the file took."""
        command = [EXECUTABLE, "transcribe", path]
        child = os.posix_spawn(EXECUTABLE, command, bare_environment(self.home.name), file_actions=[
            (os.POSIX_SPAWN_OPEN, 2, "/dev/null", os.O_WRONLY, 0)])
        _, status, usage = os.wait4(child, 0)
        self.assertEqual(os.waitstatus_to_exitcode(status), 0)
        return usage.ru_maxrss / 1024

    def test_of_many_hours_is_refused_with_one_line(self):
        status, errors = self.transcribe(self.silence(1, 1, 1000, 100_000))
        self.assertEqual(status, 7)
        self.assertRegex(errors, r"\ACannot read \".+\": its sound is 28 hours long; the limit is 12 hours\n\Z")

    def test_takes_no_more_memory_than_a_small_one(self):
        small = self.peak_megabytes(self.silence(2, 1, 16000, 1))
        large = self.peak_megabytes(self.silence(4, 4, 192000, 60))
        self.assertLess(large - small, 64)

    @unittest.skipIf(is_sanitized(EXECUTABLE), "a sanitizer reserves all memory there is")
    def test_without_memory_ends_with_one_line_and_a_status(self):
        missing = os.path.join(self.home.name, "missing.wav")
        little, enough = 1, 500
        while enough - little > 0.25:
            middle = (little + enough) / 2
            if self.transcribe(missing, middle)[0] == 3:
                enough = middle
            else:
                little = middle
        # A block of this file takes a megabyte more.
        status, errors = self.transcribe(self.silence(8, 32, 16000, 10), enough)
        self.assertEqual(status, 12, errors)
        self.assertEqual(errors.splitlines()[-1], "quillback: there is not enough memory.")


class BeginningAndEnd(Case):
    """`quillback run` where there is nothing to work with."""

    def test_it_can_gain_no_rights(self):
        program = self.start()
        program.wait_for_line("Ready.")
        with open(f"/proc/{program.child.pid}/status", encoding="ascii") as status:
            self.assertIn("NoNewPrivs:\t1\n", status.readlines())

    def test_other_programs_cannot_look_at_it(self):
        # Root may look at everything, so the engine runs as another user. What nobody may look at is root's.
        user = 65534 if os.geteuid() == 0 else os.geteuid()
        with tempfile.TemporaryDirectory() as home:
            os.chmod(home, 0o777)
            # That user may not be let into the folder of the build.
            executable = shutil.copy(EXECUTABLE, home)
            for variable, owner in ((None, 0), ("VOXTREL_CORE", user)):
                environment = bare_environment(home)
                environment.pop("VOXTREL_CORE", None)
                if variable:
                    environment[variable] = "1"
                program = self.start(home=home, environment=environment, user=user,
                                     executable=executable)
                program.wait_for_line("Ready.")
                self.assertEqual(os.stat(f"/proc/{program.child.pid}/environ").st_uid, owner)
                program.close()

    def test_it_is_ready_and_stays_without_anything(self):
        program = self.start()
        program.wait_for_line("Ready.")
        program.stays_alive(0.3)
        self.ends_well(program)

    @unittest.skipIf(os.path.isdir("/dev/input") and os.geteuid() == 0, "keyboards may be read here")
    def test_without_a_key_source_it_says_what_to_do_and_stays(self):
        program = self.start()
        number = program.wait_for_line("Accessibility")
        line = program.texts()[number]
        self.assertIn("usermod -aG input", line)
        program.wait_for_line("Ready.")
        # A build with Whisper also says that it has no weights.
        errors = [text for text in program.texts()
                  if any(marker in text for marker in ERROR_MARKERS) and "weights" not in text]
        self.assertEqual(errors, [line])
        self.ends_well(program)

    @unittest.skipIf(os.path.isdir("/dev/input") and os.geteuid() == 0, "keyboards may be read here")
    def test_the_x_server_of_a_wayland_session_is_no_key_source(self):
        reading, writing = os.pipe()
        server = subprocess.Popen(["Xvfb", "-displayfd", str(writing), "-nolisten", "tcp"],
                                  pass_fds=(writing,), stderr=subprocess.DEVNULL,
                                  preexec_fn=die_with_parent)
        os.close(writing)
        self.addCleanup(server.wait, 10)
        self.addCleanup(server.terminate)
        with os.fdopen(reading) as announced:
            display = ":" + announced.readline().strip()
        for session, is_source in (("x11", True), ("wayland", False)):
            with self.subTest(session), tempfile.TemporaryDirectory() as home:
                environment = {**bare_environment(home), "DISPLAY": display,
                               "XDG_SESSION_TYPE": session}
                program = self.start(home=home, environment=environment)
                program.wait_for_line("Ready.")
                says_so = any("Accessibility" in text for text in program.texts())
                self.assertNotEqual(says_so, is_source, program.texts())
                self.ends_well(program)

    def test_every_stopping_signal_ends_it(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            program = self.start()
            program.wait_for_line("Ready.")
            self.ends_well(program, number)

    def test_it_ends_whenever_it_is_asked_while_it_loads(self):
        for delay_ms in (0, 10, 30, 60, 100, 150, 200, 300, 400):
            program = self.start()
            program.wait_until_signals_are_caught()
            program.stays_alive(delay_ms / 1000)
            self.ends_well(program)

    def test_it_ends_while_its_output_is_not_read(self):
        ours, theirs = os.pipe()
        self.addCleanup(os.close, ours)
        fcntl.fcntl(theirs, F_SETPIPE_SZ, 4096)
        os.write(theirs, b"x" * 4096)
        program = self.start(stdout=theirs)
        os.close(theirs)
        program.stays_alive(1.0)
        self.ends_well(program)

    def test_it_keeps_running_when_its_output_is_closed_by_the_reader(self):
        ours, theirs = os.pipe()
        os.close(ours)
        program = self.start(stdout=theirs)
        os.close(theirs)
        program.stays_alive(1.0)
        self.ends_well(program)

    def test_it_runs_with_its_standard_descriptors_closed(self):
        with tempfile.TemporaryDirectory() as home:
            child = subprocess.Popen(
                ["/bin/sh", "-c", 'exec "$0" run 0<&- 1>&- 2>&-', EXECUTABLE],
                env=bare_environment(home), preexec_fn=die_with_parent)
            stays(lambda: child.poll() is None, "the engine", 1.0)
            child.send_signal(signal.SIGTERM)
            self.assertEqual(child.wait(5), 0)

    def test_it_ends_when_its_parent_has_ended(self):
        ours, theirs = os.pipe()
        with tempfile.TemporaryDirectory() as home, os.fdopen(ours, "rb") as lines:
            # The engine is the parent's child and holds the pipe's other end.
            parent = subprocess.Popen(["/bin/sh", "-c", '"$0" run & wait', EXECUTABLE],
                                      env=bare_environment(home), stdout=theirs, stderr=theirs,
                                      preexec_fn=die_with_parent)
            os.close(theirs)
            while b"Ready." not in lines.readline():
                pass
            begun = time.monotonic()
            parent.kill()
            parent.wait()
            self.assertEqual(lines.read(), b"")  # until the engine has ended as well
            self.assertLess(time.monotonic() - begun, PROMPT_S)

    def test_a_signal_that_it_inherited_as_ignored_does_not_end_it(self):
        with tempfile.TemporaryDirectory() as home:
            child = subprocess.Popen(["/bin/sh", "-c", 'trap "" HUP; exec "$0" run', EXECUTABLE],
                                     env=bare_environment(home), stdout=subprocess.DEVNULL,
                                     preexec_fn=die_with_parent)
            eventually(lambda: catches(child.pid, signal.SIGTERM), "the engine's main function", 10)
            child.send_signal(signal.SIGHUP)
            stays(lambda: child.poll() is None, "the engine", 0.3)
            child.send_signal(signal.SIGTERM)
            self.assertEqual(child.wait(5), 0)


class Settings(Case):
    """Its lines about the settings file."""

    def start_with(self, text):
        """An engine whose settings are `text`."""
        home = tempfile.TemporaryDirectory()
        self.addCleanup(home.cleanup)
        folder = os.path.join(home.name, ".config", "quillback")
        os.makedirs(folder)
        with open(os.path.join(folder, "config.toml"), "w", encoding="utf-8") as file:
            file.write(text)
        program = self.start(home=home.name)
        program.wait_for_line("Ready.")
        return [line for line in program.texts() if "ERROR" in line and "config.toml" in line]

    def test_good_settings_are_not_mentioned(self):
        self.assertEqual(self.start_with("[audio]\nhotkey = 'shift+\\'\nhotkey_code = 42\n"), [])

    def test_each_mistake_is_one_line_that_names_its_place(self):
        lines = self.start_with("[audio]\nhotkey_code = 1\n[output]\ninsert = 3\n")
        self.assertEqual(len(lines), 2)
        for line, number in zip(lines, (2, 4)):
            self.assertTrue(line.startswith("[quillback] ERROR"), line)
            self.assertIn(f"line {number}", line)

    def test_a_file_that_is_not_toml_is_one_line(self):
        lines = self.start_with("[model\n")
        self.assertEqual(len(lines), 1)
        self.assertIn("line 1", lines[0])
