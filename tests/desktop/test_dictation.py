"""Hold the key, speak, and the words arrive: the application with its real engine."""

import json
import os
import signal
import subprocess
import time

from harness.application import MODEL
from harness.case import PROGRAMS, DesktopCase
from harness.dictation import PHRASES, Dictating, Editor, Speaker
from harness.polling import eventually, stays
from harness.processes import is_sanitized, network_sockets
from harness.recordings import has_whisper
from harness.sound import SoundServer


class DictationCase(DesktopCase):
    """A desk with a microphone, an editor that has the focus, and a ready engine."""

    layout = "us"
    with_model = True

    def setUp(self):
        super().setUp()
        self.sound = SoundServer(self.desk).start()
        self.addCleanup(self.sound.stop)
        subprocess.run(["setxkbmap", self.layout], env=self.desk.environment, check=True)
        type(self).installations += 1
        self.app = Dictating(self.desk, PROGRAMS, f"dictating{self.installations}", self.with_model)
        self.addCleanup(self._check_reports, self.app)
        self.addCleanup(self.app.stop)
        self.editor = Editor(self.desk, f"letter{self.installations}")
        self.addCleanup(self.editor.close)
        self.app.start_dictating()
        self.speaker = Speaker(self.desk, self.sound, self.app)
        self.addCleanup(self.speaker.release)


class Words(DictationCase):
    """The spoken words are typed."""

    def test_nine_phrases_arrive_word_for_word(self):
        for number, phrase in enumerate(PHRASES, 1):
            self.speaker.dictate(phrase)
            self.editor.wait_for_text(" ".join(PHRASES[:number]))


class WordsInGerman(Words):
    """With a German keyboard, on which the same keys write other characters."""

    layout = "de"


class WordsInFrench(Words):
    """With a French keyboard."""

    layout = "fr"


class FirstStart(DictationCase):
    """Nothing is there yet: the engine's own setup makes it ready."""

    with_model = False

    def test_the_first_words_arrive(self):
        with open(os.path.join(self.app.home, MODEL, "manifest.json"), encoding="utf-8") as file:
            self.assertEqual(json.load(file)["files"], [])
        self.editor.focus()
        self.speaker.dictate(PHRASES[1])
        self.editor.wait_for_text(PHRASES[1])


# Where Whisper is built in, the first start downloads a model from the network.
if has_whisper(PROGRAMS):
    del FirstStart


class Mishaps(DictationCase):
    """After a failure the next dictation works."""

    def works_now(self, written=""):
        """One more dictation arrives."""
        self.speaker.dictate("how are you today")
        self.editor.wait_for_text((written + " how are you today").strip())

    def test_escape_drops_what_was_said(self):
        self.speaker.press()
        self.speaker.speak("nice to meet you")
        self.speaker.escape()
        self.app.wait_until_ready()
        self.speaker.release()
        stays(lambda: not self.app.count("[gpu-decode]"), "no text", 1.0)
        self.assertEqual(self.app.count("Processing"), 0)
        self.works_now()

    def test_a_tap_of_the_key_writes_nothing(self):
        self.desk.xdotool("keydown", "134", "keyup", "134")
        self.app.wait_for_count("Ready.", 2)
        self.assertEqual(self.app.count("Processing"), 0)
        self.works_now()

    def test_silence_writes_nothing(self):
        self.speaker.press()
        self.app.item.wait_for_status("Recording...")
        self.speaker.keep_holding(1.0)
        self.speaker.release()
        self.app.wait_for_count("Ready.", 2)
        self.assertEqual(self.app.count("[gpu-decode]"), 0)
        self.works_now()

    def test_the_microphone_vanishes_while_the_key_is_held(self):
        self.speaker.press()
        self.app.item.wait_for_status("Recording...")
        self.speaker.keep_holding(0.3)
        self.sound.remove_microphone()
        self.app.wait_for_count("Audio capture failed", 1)
        self.app.wait_until_ready()
        self.speaker.release()
        self.sound.add_microphone()
        self.sound.choose("microphone")
        self.works_now()

    def test_the_sound_server_is_gone_and_comes_back(self):
        self.sound.kill()
        self.speaker.press()
        self.app.wait_for_count("Audio capture failed", 1)
        self.app.wait_until_ready()
        self.speaker.release()
        self.sound.start()
        self.works_now()

    def test_a_killed_engine_comes_back_and_the_next_dictation_works(self):
        self.speaker.press()
        self.app.item.wait_for_status("Recording...")
        self.speaker.keep_holding(0.3)
        first = self.app.engine_pids()
        self.assertEqual(len(first), 1)
        os.kill(first[0], signal.SIGKILL)
        eventually(lambda: self.app.engine_pids() not in ([], first), "another engine", 20)
        self.app.wait_for_count("Ready.", 2)
        self.speaker.release()
        self.app.wait_until_ready()
        self.works_now()


class Endings(DictationCase):
    """It ends within half a second in every state, with the microphone closed and no key pressed."""

    def ends_promptly(self):
        """SIGTERM to the engine only; for the application that is an exit by itself."""
        pid = self.app.engine_pids()[0]
        begun = time.monotonic()
        os.kill(pid, signal.SIGTERM)
        eventually(lambda: pid not in self.app.engine_pids(), "the engine's end", 3.0)
        took_s = time.monotonic() - begun
        # A sanitizer takes its own time at the end.
        self.assertLess(took_s, 3.0 if is_sanitized(self.app.engine.executable) else 0.5)
        eventually(lambda: "quillback" not in self.sound.client_names(), "the closed microphone")

    def test_while_it_records(self):
        self.speaker.press()
        self.sound.say(PHRASES[0])
        eventually(lambda: "quillback" in self.sound.client_names(), "the open microphone")
        self.app.item.wait_for_status("Recording...")
        self.speaker.keep_holding(0.5)
        self.ends_promptly()

    def test_while_it_transcribes(self):
        self.speaker.press()
        self.speaker.speak(PHRASES[0])
        self.speaker.release()
        self.app.wait_for_count("Processing", 1)
        self.ends_promptly()

    def test_no_socket_of_a_network_is_open_while_it_works(self):
        self.speaker.press()
        self.app.item.wait_for_status("Recording...")
        self.assertEqual(self.network_sockets(), [])
        self.speaker.speak(PHRASES[0])
        self.speaker.release()
        eventually(lambda: self.network_sockets() or self.app.count("encode="), "words or a socket", 20)
        self.assertEqual(self.network_sockets(), [])

    def network_sockets(self):
        """Those of the program, its engine and its recogniser."""
        pids = [self.app.process.pid, *self.app.engine_pids(), *self.app.recogniser_pids()]
        self.assertGreaterEqual(len(pids), 2)
        return [socket for pid in pids for socket in network_sockets(pid)]

    def test_no_microphone_is_open_while_it_waits(self):
        self.assertNotIn("quillback", self.sound.client_names())
        self.speaker.dictate(PHRASES[1])
        self.assertNotIn("quillback", self.sound.client_names())
