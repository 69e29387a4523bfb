"""People's speech, through the virtual microphone and Whisper with published weights, into an editor."""

import os
import shutil
import signal
import subprocess
import time
import unittest

from harness.case import PROGRAMS, DesktopCase
from harness.dictation import Dictating, Editor, Speaker
from harness.polling import eventually, stays
from harness.processes import alive
from harness.recordings import (WEIGHTS, is_available, plain_words, recording, run_quillback,
                                word_error_rate)
from harness.sound import SoundServer

STORE = ".local/share/quillback/weights"
# Hangs only: it takes a second where nothing else computes.
ANSWER_LIMIT_S = 120.0
QUIT_LIMIT_S = 2.1
# Of the 70 seconds of Spanish the model hears one word in ten otherwise.
MOST_ERRORS = 0.2


@unittest.skipUnless(is_available(PROGRAMS), "no VOXTREL_WHISPER_DATA, or built without Whisper")
class RealSpeech(DesktopCase):
    """A desk with a microphone, an editor that has the focus, and an engine that uses the model base;
    what happens to words between key and editor."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.model_home = cls.desk.path("model-home")
        cls.quillback(os.path.join(PROGRAMS, "quillback"), cls.model_home,
                      "setup", "--model", "base", "--file", WEIGHTS)

    @classmethod
    def quillback(cls, executable, home, *arguments):
        """The output of one of the engine's commands, which must end well."""
        done = run_quillback(executable, home, *arguments, environment=cls.desk.environment)
        if done.returncode != 0:
            raise AssertionError(f"{arguments}: {done.returncode}, {done.stdout}{done.stderr}")
        return done.stdout

    def setUp(self):
        super().setUp()
        self.sound = SoundServer(self.desk).start()
        self.addCleanup(self.sound.stop)
        subprocess.run(["setxkbmap", "us"], env=self.desk.environment, check=True)
        type(self).installations += 1
        self.app = Dictating(self.desk, PROGRAMS, f"speaking{self.installations}", with_model=False)
        self.addCleanup(self._check_reports, self.app)
        self.addCleanup(self.app.stop)
        shutil.copytree(os.path.join(self.model_home, STORE), os.path.join(self.app.home, STORE),
                        copy_function=os.link)
        self.quillback(self.app.engine.executable, self.app.home, "use", "base")
        self.editor = Editor(self.desk, f"speech{self.installations}")
        self.addCleanup(self.editor.close)
        self.app.start_dictating()
        self.assertEqual(len(self.app.recogniser_pids()), 1)
        self.speaker = Speaker(self.desk, self.sound, self.app)
        self.addCleanup(self.speaker.release)

    # Steps ---------------------------------------------------------------------------------------

    def say(self, name):
        """Holds the key and plays the recording; at the return the key is up and the engine recognises."""
        self.start_saying(name)
        self.speaker.release()
        self.app.wait_for_count("Processing", self.processings + 1)

    def start_saying(self, name):
        """The same with the key still held."""
        self.processings = self.app.count("Processing")
        self.speaker.press()
        self.speaker.play(recording(name))
        # Until the last of it has passed the server.
        stays(self.app.engine_pids, "an engine", 0.3)

    def wait_for_texts(self, count, limit_s=ANSWER_LIMIT_S):
        """Waits until so many texts were printed and inserted; returns them."""
        self.app.wait_for_count("[gpu-decode]", count, limit_s)
        self.app.wait_until_inserted(limit_s)
        return self.app.texts()

    def assert_written(self, *names):
        """The editor holds the words of these recordings, as the engine has printed them."""
        self.editor.wait_for_text(" ".join(self.app.texts()), ANSWER_LIMIT_S)
        self.assertEqual(plain_words(self.editor.text()),
                         plain_words(" ".join(recording(name).text for name in names)))

    # Tests ---------------------------------------------------------------------------------------

    def test_the_words_arrive_in_the_editor(self):
        self.say("en_jfk")
        self.wait_for_texts(1)
        self.assert_written("en_jfk")

    def test_two_dictations_of_which_the_second_begins_before_the_words_of_the_first(self):
        self.say("en_jfk")
        self.say("en_harvard_spk1_snt3")
        self.wait_for_texts(2)
        lines = [line for line in self.app.lines()
                 if "Recording..." in line or "[gpu-decode]" in line]
        self.assertIn("Recording...", lines[1], "the first words came before the second key press")
        self.assert_written("en_jfk", "en_harvard_spk1_snt3")

    def test_quit_in_the_middle_of_a_recognition(self):
        self.say("en_libri_2412_153948_0000")
        processes = [self.app.process.pid, *self.app.engine_pids(), *self.app.recogniser_pids()]
        self.assertEqual(len(processes), 3)
        started = time.monotonic()
        self.app.item.click("Quit Voxtrel")
        eventually(lambda: not self.app.process.running() and not any(map(alive, processes[1:])),
                   "the end of all processes", QUIT_LIMIT_S)
        print(f"ended after {time.monotonic() - started:.2f} s")
        self.assertEqual(self.app.process.exit_status(), 0)
        self.assertEqual(self.app.texts(), [], "the recognition was over before")
        self.assertEqual(len(self.app.kept_recordings()), 1)

    def test_the_words_come_although_the_recogniser_is_killed(self):
        self.say("en_jfk")
        first, = self.app.recogniser_pids()
        os.kill(first, signal.SIGKILL)
        self.assertEqual(self.app.texts(), [], "the recognition was over before")
        self.wait_for_texts(1)
        second, = self.app.recogniser_pids()
        self.assertNotEqual(first, second)
        self.assert_written("en_jfk")

    def test_retry_prints_the_words_of_a_killed_engine(self):
        self.say("en_jfk")
        first, = self.app.engine_pids()
        os.kill(first, signal.SIGKILL)
        eventually(lambda: self.app.engine_pids() not in ([], [first]), "another engine", 20)
        self.app.wait_for_count("Ready.", 2)
        self.assertEqual(self.app.texts(), [], "the recognition was over before")
        self.assertEqual(len(self.app.kept_recordings()), 1)
        words = self.quillback(self.app.engine.executable, self.app.home, "retry")
        self.assertEqual(plain_words(words), plain_words(recording("en_jfk").text))
        self.assertEqual(self.app.kept_recordings(), [])
        self.assertEqual(self.editor.text(), "")

    def test_seventy_seconds_of_speech_arrive_whole(self):
        truth = recording("es_veneno_long").text
        self.start_saying("es_veneno_long")
        self.speaker.release()
        released = time.monotonic()
        self.app.wait_for_count("[gpu-decode]", 1, ANSWER_LIMIT_S)
        print(f"words {time.monotonic() - released:.2f} s after the release")
        text, = self.wait_for_texts(1)
        print(f"inserted {time.monotonic() - released:.2f} s after the release")
        self.editor.wait_for_text(text, ANSWER_LIMIT_S)
        errors = word_error_rate(text, truth)
        print(f"{len(plain_words(text))} of {len(plain_words(truth))} words, error rate {errors:.3f}")
        self.assertLess(errors, MOST_ERRORS)
        for part in ("real academia española", "hace algunas semanas", "ya está la obra escrita",
                     "sabes cuánto te quiere", "septiembre de 1881"):
            self.assertIn(part, " ".join(plain_words(text)))

    def test_escape_during_a_long_take_writes_nothing_and_the_next_words_come(self):
        self.speaker.press()
        self.sound.play_file(recording("es_veneno_long").path)
        self.app.item.wait_for_status("Recording...")
        # So long that the first piece is recognised meanwhile.
        self.speaker.keep_holding(20.0)
        self.speaker.escape()
        self.app.wait_until_ready()
        self.speaker.release()
        self.sound.silence()
        self.say("en_jfk")
        self.wait_for_texts(1)
        self.assertEqual(self.app.count("Processing"), 1)
        self.assert_written("en_jfk")
