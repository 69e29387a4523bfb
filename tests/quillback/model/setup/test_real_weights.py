"""`setup --model base` with the published files and their pins, from a loopback server. The files come
from the folder in VOXTREL_WHISPER_DATA; without it nothing is tried, which the exit status says."""

import json
import os
import pathlib
import sys
import time
import unittest

from model_server import cut, stall
from setup_case import COMPLETE, DONE, INTERRUPTED, VOICE_NAME, WRONG_FILE, SetupCase

NOT_RUN = 77
DATA = pathlib.Path(os.environ.get("VOXTREL_WHISPER_DATA") or "/nonexistent")
if not (DATA / "ggml-base.bin").is_file() or not (DATA / VOICE_NAME).is_file():
    print("not run: VOXTREL_WHISPER_DATA names no folder with", VOICE_NAME, "and ggml-base.bin")
    sys.exit(NOT_RUN)
WEIGHTS = (DATA / "ggml-base.bin").read_bytes()
REAL_VOICE = (DATA / VOICE_NAME).read_bytes()


class RealBase(SetupCase):
    def setUp(self):
        super().setUp()
        self.look_at("base")
        self.server = self.serve(WEIGHTS)
        self.server.beside = {VOICE_NAME: REAL_VOICE}

    def start_real(self, *words):
        """Starts setup with the program's own pins."""
        return self.start("--model", "base", *words, pin=False, small_voice=False)

    def setup_real(self, *words):
        return self.finish_any(self.start_real(*words))

    @staticmethod
    def wait_until(holds):
        deadline = time.monotonic() + 60
        while not holds():
            assert time.monotonic() < deadline, "it never came to that"
            time.sleep(0.01)

    def assert_real(self, run):
        self.assert_ends(run, DONE)
        self.assertEqual(run.log[-1], "The weights of base are complete.")
        self.assertEqual(self.weights.read_bytes(), WEIGHTS)
        self.assertEqual(self.voice.read_bytes(), REAL_VOICE)
        self.assertEqual(self.inspect(), [COMPLETE, str(self.weights), str(self.voice)])
        names = [entry["name"] for entry in json.loads(self.manifest.read_text())["files"]]
        self.assertEqual(names, ["ggml-base.bin", VOICE_NAME])

    def test_from_nothing(self):
        run = self.setup_real()
        self.assert_real(run)
        self.assertEqual(run.progress[-1], "147.9 MB / 147.9 MB (100.0%)")
        self.assertEqual(self.server.ranges(), [None])
        again = self.setup_real()
        self.assertEqual(again.lines, ["The weights of base are complete already; nothing to do."])

    def test_resumed_after_a_lost_connection_and_after_an_interruption(self):
        self.server.script = [cut(40_000_000), stall(30_000_000)]
        process = self.start_real()
        self.wait_until(lambda: self.part.is_file() and self.part.stat().st_size == 70_000_000)
        process.terminate()
        run = self.finish_any(process)
        self.assert_ends(run, INTERRUPTED)
        self.assertFalse(self.manifest.exists())
        self.assert_real(self.setup_real())
        self.assertEqual(self.server.ranges(), [None, "bytes=40000000-", "bytes=70000000-"])

    def test_with_one_flipped_bit_is_refused(self):
        flipped = bytearray(WEIGHTS)
        flipped[100_000_000] ^= 1
        self.server.content = bytes(flipped)
        self.assert_ends(self.setup_real(), WRONG_FILE, "not the expected ggml-base.bin")
        self.assertFalse(self.weights.exists() or self.part.exists() or self.manifest.exists())

    def test_with_one_flipped_bit_in_the_voice_detection_is_refused(self):
        flipped = bytearray(REAL_VOICE)
        flipped[500_000] ^= 1
        self.server.beside = {VOICE_NAME: bytes(flipped)}
        self.assert_ends(self.setup_real(), WRONG_FILE, f"not the expected {VOICE_NAME}")
        self.assertFalse(self.voice.exists() or self.manifest.exists())

    def test_from_a_file(self):
        run = self.setup_real("--file", str(DATA / "ggml-base.bin"))
        self.assert_real(run)
        self.assertEqual(self.server.requests, [])


if __name__ == "__main__":
    unittest.main()
