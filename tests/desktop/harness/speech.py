"""The base of the tests with people's speech: a microphone, an editor, and an engine that uses the published
weights of Whisper's model base."""

import os
import shutil
import signal
import subprocess
import unittest

from .case import PROGRAMS, DesktopCase
from .dictation import Dictating, Editor, Speaker
from .polling import stays
from .recordings import WEIGHTS, is_available, plain_words, recording, run_quillback
from .sound import SoundServer

STORE = ".local/share/quillback/weights"
# Hangs only: it takes a second where nothing else computes.
ANSWER_LIMIT_S = 120.0


@unittest.skipUnless(is_available(PROGRAMS), "no VOXTREL_WHISPER_DATA, or built without Whisper")
class SpeechCase(DesktopCase):
    """A desk with a microphone, an editor that has the focus, and an engine that is ready."""

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
        self.play(name)

    def play(self, name):
        """Plays it into the microphone, until the last of it has passed the server."""
        self.speaker.play(recording(name))
        stays(self.app.engine_pids, "an engine", 0.3)

    def hold_up_the_recogniser(self):
        """Stops its process, so that no words come before it is continued or killed; returns its id."""
        pid, = self.app.recogniser_pids()
        os.kill(pid, signal.SIGSTOP)
        return pid

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
