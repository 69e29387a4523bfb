"""The engine's program with weights that are damaged or gone. Without VOXTREL_WHISPER_DATA nothing is tried,
which the exit status says."""

import hashlib
import os
import pathlib
import resource
import shutil
import unittest

from harness.recordings import WEIGHTS
from real_model import RealModelCase

FALLBACK = "From now on the embedded English recogniser is used."


class Damage(RealModelCase):
    """Weights that are not as they were: one line, and the embedded recogniser works meanwhile."""

    def falls_back(self, line, **options):
        """Checks the words of the embedded recogniser and the one line about the model."""
        done = self.transcribe("en_goforward", **options)
        self.assertEqual(done.returncode, 0, done)
        self.assertIn("forward", done.stdout.lower())
        errors = [text for text in done.stderr.splitlines() if "ERROR" in text]
        self.assertEqual(len(errors), 1, done.stderr)
        self.assertRegex(errors[0], line)
        self.assertIn('"quillback setup --model base"', done.stderr)

    def test_cut(self):
        self.own_weights()
        os.truncate(self.weights, 100_000_000)
        self.falls_back("The weights of base are damaged")
        self.note_size()
        self.falls_back(f"within its weights.*{FALLBACK}")

    def test_flipped_bits_in_the_header(self):
        for place in (4, 12, 40):
            self.own_weights()
            with open(self.weights, "r+b") as file:
                file.seek(place)
                byte = file.read(1)[0]
                file.seek(place)
                file.write(bytes([byte ^ 0x40]))
            self.falls_back(FALLBACK)

    def test_the_voice_detection_in_the_models_place(self):
        self.weights.unlink()
        shutil.copyfile(self.store / "ggml-silero-v6.2.0.bin", self.weights)
        self.falls_back("The weights of base are damaged")
        self.note_size()
        self.falls_back("no model of Whisper")

    def test_gone(self):
        self.weights.unlink()
        self.falls_back("The weights of base are damaged")

    def test_too_little_memory(self):
        enough_for_the_embedded_one = 300 << 20
        self.falls_back(FALLBACK, preexec_fn=lambda: resource.setrlimit(
            resource.RLIMIT_AS, (enough_for_the_embedded_one,) * 2))

    def test_a_missing_voice_detection_is_named_and_words_are_heard(self):
        (self.store / "ggml-silero-v6.2.0.bin").unlink()
        done = self.transcribe("en_goforward")
        self.assertEqual(done.returncode, 0)
        self.assertIn("voice detection is missing", done.stderr)
        self.assertIn("forward", done.stdout.lower())

    def test_setup_mends_it(self):
        self.own_weights()
        os.truncate(self.weights, 1000)
        done = self.run_program("setup", "--model", "base", "--file", WEIGHTS)
        self.assertEqual(done.returncode, 0, done.stdout)
        self.assertEqual(hashlib.sha256(self.weights.read_bytes()).digest(),
                         hashlib.sha256(pathlib.Path(WEIGHTS).read_bytes()).digest())


if __name__ == "__main__":
    unittest.main()
