"""People's speech, through the virtual microphone and Whisper with published weights, into an editor."""

import os
import signal
import time

from harness.polling import eventually
from harness.processes import alive
from harness.recordings import plain_words, recording
from harness.speech import SpeechCase

QUIT_LIMIT_S = 2.1
SHORT = "en_harvard_spk1_snt3"


class RealSpeech(SpeechCase):
    """What happens to words between key and editor."""

    def test_the_words_arrive_in_the_editor(self):
        self.say("en_jfk")
        self.wait_for_texts(1)
        self.assert_written("en_jfk")

    def test_two_dictations_of_which_the_second_begins_before_the_words_of_the_first(self):
        self.start_saying("en_jfk")
        recogniser = self.hold_up_the_recogniser()
        self.speaker.release()
        self.app.wait_for_count("Processing", 1)
        self.speaker.press()
        os.kill(recogniser, signal.SIGCONT)
        self.play(SHORT)
        self.speaker.release()
        self.wait_for_texts(2)
        lines = [line for line in self.app.lines()
                 if "Recording..." in line or "[gpu-decode]" in line]
        self.assertIn("Recording...", lines[1], "the first words came before the second key press")
        self.assert_written("en_jfk", SHORT)

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

    def test_sleep_in_the_middle_of_a_recognition(self):
        logind = self.desk.login_manager
        eventually(logind.inhibitors, "the delay lock")
        self.say("en_libri_2412_153948_0000")
        processes = [*self.app.engine_pids(), *self.app.recogniser_pids()]
        self.assertEqual(len(processes), 2)
        started = time.monotonic()
        logind.announce_sleep()
        eventually(lambda: not logind.inhibitors() and not any(map(alive, processes)),
                   "the engine's end, and leave to sleep", QUIT_LIMIT_S)
        print(f"may sleep after {time.monotonic() - started:.2f} s")
        self.assertEqual(self.app.texts(), [], "the recognition was over before")
        logind.announce_wake()
        self.app.wait_for_count("Ready.", 2)
        words = self.quillback(self.app.engine.executable, self.app.home, "retry")
        self.assertIn("antecedents", words)

    def test_the_words_come_although_the_recogniser_is_killed(self):
        self.start_saying(SHORT)
        first = self.hold_up_the_recogniser()
        self.speaker.release()
        self.app.wait_for_count("Processing", 1)
        os.kill(first, signal.SIGKILL)
        self.wait_for_texts(1)
        second, = self.app.recogniser_pids()
        self.assertNotEqual(first, second)
        self.assert_written(SHORT)

    def test_retry_prints_the_words_of_a_killed_engine(self):
        self.start_saying(SHORT)
        self.hold_up_the_recogniser()
        self.speaker.release()
        self.app.wait_for_count("Processing", 1)
        first, = self.app.engine_pids()
        os.kill(first, signal.SIGKILL)
        eventually(lambda: self.app.engine_pids() not in ([], [first]), "another engine", 20)
        self.app.wait_for_count("Ready.", 2)
        self.assertEqual(self.app.texts(), [])
        self.assertEqual(len(self.app.kept_recordings()), 1)
        words = self.quillback(self.app.engine.executable, self.app.home, "retry")
        self.assertEqual(plain_words(words), plain_words(recording(SHORT).text))
        self.assertEqual(self.app.kept_recordings(), [])
        self.assertEqual(self.editor.text(), "")
