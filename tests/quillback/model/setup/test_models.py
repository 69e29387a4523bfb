"""Setup of other models than the first one: two files, the settings' choice, the user's own weights."""

import hashlib
import json
import struct
import unittest

from model_server import bytes_of, cut, status
from setup_case import (ABSENT, COMPLETE, CONTENT, DONE, HTTP, USAGE, VOICE, VOICE_NAME, WRONG_FILE,
                        SetupCase)

WHISPER_HEAD = b"lmgg" + struct.pack("<I", 51865)
PARAKEET_HEAD = b"lmgg" + struct.pack("<I", 8192)
VOICE_HEAD = b"lmgg" + struct.pack("<I", 10) + b"silero-16k"


class EveryModel(SetupCase):
    def test_has_its_own_folder_and_file(self):
        self.look_at("small-q5_1")
        run = self.setup("--model", "small-q5_1")
        self.assert_ready(run)
        self.assertEqual(run.log[-1], "The weights of small-q5_1 are complete.")
        self.assertTrue(self.server.requests[0][0].endswith("/ggml-small-q5_1.bin"))

    def test_of_parakeet_is_stored_as_such_and_its_licence_is_named(self):
        self.look_at("parakeet-v3-q4_0")
        self.weights = self.folder / "ggml-parakeet-tdt-0.6b-v3-q4_0.bin"
        run = self.setup("--model", "parakeet-v3-q4_0")
        self.assert_ready(run)
        self.assertEqual(run.log[0], "parakeet-v3-q4_0: CC-BY-4.0, by NVIDIA.")
        self.assertEqual(json.loads(self.manifest.read_text())["recogniser"], "parakeet")
        self.assertEqual(
            self.server.requests[0][0],
            "/ggml-org/parakeet-GGUF/resolve/35156454d1a39de06863303dd209fd2bed6ee079/"
            "ggml-parakeet-tdt-0.6b-v3-q4_0.bin")


class VoiceDetection(SetupCase):
    PATH = ("/ggml-org/whisper-vad/resolve/9ffd54a1e1ee413ddf265af9913beaf518d1639b/" + VOICE_NAME)

    def drop_voice(self):
        """Leaves the store as a setup without voice detection did."""
        manifest = json.loads(self.manifest.read_text())
        del manifest["files"][1:]
        self.manifest.write_text(json.dumps(manifest))
        self.voice.unlink()

    def test_comes_along(self):
        self.assert_ready(self.setup())
        self.assertEqual([path for path, _ in self.server.beside_requests], [self.PATH])
        self.assertEqual(self.voice.read_bytes(), VOICE)

    def test_is_added_to_complete_weights_that_are_neither_fetched_nor_hashed(self):
        self.setup()
        self.drop_voice()
        self.assertEqual((self.state(), self.voice_seen()), (COMPLETE, ""))
        # Right in size only: a hash would show it.
        self.weights.write_bytes(bytes(len(CONTENT)))
        run = self.finish_any(self.start())
        self.assertEqual(self.weights.read_bytes(), bytes(len(CONTENT)))
        self.weights.write_bytes(CONTENT)
        self.assert_ready(run)
        self.assertEqual(len(self.server.requests), 1)
        self.assertEqual(run.progress[-1], "0.0 MB / 0.0 MB (100.0%)")

    def test_that_is_missing_or_cut_leaves_the_weights_usable_and_is_repaired(self):
        self.setup()
        for damage in (self.voice.unlink, lambda: self.voice.write_bytes(VOICE[:-1])):
            damage()
            self.assertEqual((self.state(), self.voice_seen()), (COMPLETE, ""))
            self.assert_ready(self.finish_any(self.start()))
        self.assertEqual(len(self.server.requests), 1)

    def test_is_resumed(self):
        self.server.beside_script = [cut(20_000)]
        run = self.setup()
        self.assert_ready(run)
        self.assertEqual([headers.get("Range") for _, headers in self.server.beside_requests],
                         [None, "bytes=20000-"])

    def test_with_wrong_bytes_is_refused_before_the_weights_are_fetched(self):
        self.server.beside_script = [bytes_of(bytes(len(VOICE)))]
        self.assert_ends(self.setup(), WRONG_FILE, f"not the expected {VOICE_NAME}")
        self.assertFalse(self.voice.exists())
        self.assertEqual(self.server.requests, [])
        self.assert_ready(self.setup())

    def test_that_the_server_lacks_is_named(self):
        self.server.beside_script = [status(404)]
        self.assert_ends(self.setup(), HTTP, f"HTTP status 404 instead of {VOICE_NAME}")

    def test_that_cannot_be_added_leaves_the_manifest(self):
        self.setup()
        self.drop_voice()
        self.server.beside_script = [status(404)]
        self.assertEqual(self.finish_any(self.start()).status, HTTP)
        self.assertEqual(self.state(), COMPLETE)

    def test_after_a_crash_at_any_step_is_finished_by_the_next(self):
        for step in ("voice recorded", "voice downloaded", "voice verified", "voice renamed"):
            with self.subTest(step):
                self.setUp()
                self.finish(self.start("--die-at", step))
                self.assertFalse(self.manifest.exists())
                self.assert_ready(self.setup())


class ChosenModel(SetupCase):
    """What the application's window starts where the settings choose another model."""

    def setup_chosen(self, *words, chosen="base", **options):
        return self.setup("--model", "large-v3", "--chosen", chosen, *words, **options)

    def note(self):
        self.look_at("large-v3")
        return json.loads(self.manifest.read_text())

    def test_is_set_up_and_named_in_the_folder_that_the_window_looks_at(self):
        run = self.setup_chosen()
        self.assertEqual(run.log[0],
                         "The settings choose base; it is set up in place of large-v3.")
        self.assertEqual(run.progress[-1], "3.0 MB / 3.0 MB (100.0%)")
        self.assertEqual(self.note(), {
            "format": 1, "model": "large-v3", "recogniser": "pocketsphinx", "files": [],
            "chosen": "base", "written_by": "quillback 0.0.1"})
        self.assertEqual(self.state(), ABSENT)
        self.look_at("base")
        self.assert_ready(run)
        self.assertTrue(self.server.requests[0][0].endswith("/ggml-base.bin"))

    def test_that_is_complete_is_only_named(self):
        self.setup("--model", "base")
        self.setup_chosen()
        self.assertEqual(self.note()["chosen"], "base")
        self.assertEqual(len(self.server.requests), 1)

    def test_that_cannot_be_fetched_is_not_named(self):
        self.server.script = [status(404)]
        self.assert_ends(self.setup_chosen(), HTTP)
        self.assertFalse(self.manifest.exists())

    def test_replaces_an_earlier_choice(self):
        self.setup_chosen()
        self.setup_chosen(chosen="tiny")
        self.assertEqual(self.note()["chosen"], "tiny")

    def test_leaves_complete_weights_and_their_manifest(self):
        self.setup()
        before = self.manifest.read_bytes()
        self.setup_chosen()
        self.assertEqual(self.manifest.read_bytes(), before)
        self.assertEqual(self.state(), COMPLETE)

    def test_that_is_the_windows_model_is_fetched_in_place_of_the_note(self):
        self.setup_chosen()
        run = self.setup_chosen(chosen="large-v3")
        self.look_at("large-v3")
        self.assert_ready(run)

    def test_does_not_count_where_another_model_is_asked_for(self):
        self.look_at("tiny")
        self.assert_ready(self.setup("--model", "tiny", "--chosen", "base"))
        self.look_at("large-v3")
        self.assertFalse(self.manifest.exists())

    def test_that_is_asked_for_by_its_name_is_named_for_the_window_too(self):
        self.setup("--model", "base", "--chosen", "base")
        self.assertEqual(self.note()["chosen"], "base")

    def test_that_is_unknown_is_named_in_the_failure(self):
        self.assert_ends(self.setup_chosen(chosen="huge"), USAGE, 'unknown model "huge"')

    def test_is_of_no_use_to_a_build_without_whisper(self):
        self.assert_ends(self.setup_chosen(whisper="off"), DONE)
        self.assertNotIn("chosen", self.note())


class OwnFile(SetupCase):
    def setUp(self):
        super().setUp()
        self.own = self.home / "own" / "my weights.bin"
        self.own.parent.mkdir()
        self.bytes = WHISPER_HEAD + CONTENT[:500_000]
        self.own.write_bytes(self.bytes)

    def setup_own(self, *words, name="mine", **options):
        self.look_at(name)
        return self.finish_any(self.start("--model", name, "--file", str(self.own), *words,
                                          **options))

    def files(self):
        return {path.name for path in self.folder.iterdir()}

    def test_is_copied_with_a_manifest_that_has_its_hash(self):
        run = self.setup_own()
        self.assert_ends(run, DONE)
        self.assertEqual(self.weights.read_bytes(), self.bytes)
        self.assertEqual(self.own.read_bytes(), self.bytes)
        manifest = json.loads(self.manifest.read_text())
        self.assertTrue(manifest["custom"])
        self.assertEqual(manifest["recogniser"], "whisper")
        self.assertEqual(manifest["files"][0],
                         {"name": "ggml-mine.bin", "size": len(self.bytes),
                          "sha256": hashlib.sha256(self.bytes).hexdigest()})
        self.assertEqual(self.files(), {"ggml-mine.bin", VOICE_NAME, "manifest.json", "setup.lock"})
        self.assertEqual(self.server.requests, [])
        self.assertIn("0.5 MB / 0.5 MB (100.0%)", run.progress)

    def test_of_parakeet_is_known_by_its_head(self):
        self.own.write_bytes(PARAKEET_HEAD + CONTENT[:1000])
        self.assert_ends(self.setup_own(), DONE)
        self.assertEqual(json.loads(self.manifest.read_text())["recogniser"], "parakeet")

    def test_takes_the_voice_detection_from_beside_it(self):
        (self.own.parent / VOICE_NAME).write_bytes(VOICE)
        self.assert_ends(self.setup_own(), DONE)
        self.assertEqual(self.voice_seen(), str(self.voice))
        self.assertEqual(self.server.beside_requests, [])

    def test_does_not_take_wrong_voice_detection_from_beside_it(self):
        (self.own.parent / VOICE_NAME).write_bytes(bytes(len(VOICE)))
        self.assert_ends(self.setup_own(), DONE)
        self.assertEqual(self.voice.read_bytes(), VOICE)
        self.assertEqual(len(self.server.beside_requests), 1)

    def test_is_set_up_without_voice_detection_where_that_cannot_be_fetched(self):
        run = self.setup_own(url="http://127.0.0.1:1")
        self.assert_ends(run, DONE)
        self.assertTrue(any(line.startswith("The voice detection was not added: ")
                            for line in run.log), run)
        self.assertEqual((self.state(), self.voice_seen()), (COMPLETE, ""))
        # Without the file; it adds the rest.
        run = self.finish_any(self.start("--model", "mine"))
        self.assert_ends(run, DONE)
        self.assertEqual(self.voice_seen(), str(self.voice))
        self.assertTrue(json.loads(self.manifest.read_text())["custom"])

    def test_that_is_complete_is_known_by_its_name(self):
        self.setup_own()
        run = self.finish_any(self.start("--model", "mine"))
        self.assertEqual(run.lines, ["The weights of mine are complete already; nothing to do."])

    def test_that_was_damaged_later_must_be_brought_again(self):
        self.setup_own()
        self.weights.write_bytes(b"short")
        run = self.finish_any(self.start("--model", "mine"))
        self.assert_ends(run, USAGE, '"quillback setup --model mine --file PATH"')
        self.assert_ends(self.setup_own(), DONE)
        self.assertEqual(self.state(), COMPLETE)

    def test_that_does_not_load_is_refused_and_removed(self):
        run = self.setup_own("--unloadable", "it is nonsense")
        self.assert_ends(run, WRONG_FILE, "my weights.bin cannot be loaded (it is nonsense).")
        self.assertEqual(self.files(), {"setup.lock"})

    def test_that_does_not_load_leaves_the_earlier_one(self):
        self.setup_own()
        self.own.write_bytes(WHISPER_HEAD + b"other")
        self.assert_ends(self.setup_own("--unloadable", "no"), WRONG_FILE)
        self.assertEqual(self.state(), COMPLETE)
        self.assertEqual(self.weights.read_bytes(), self.bytes)

    def test_that_holds_no_recogniser_is_refused(self):
        for content in (b"", b"lmgg", b"GGUF" + bytes(100), VOICE_HEAD, bytes(100)):
            self.own.write_bytes(content)
            self.assert_ends(self.setup_own(), USAGE, "my weights.bin cannot be used: it holds ")
            self.assertEqual(self.files(), {"setup.lock"})

    def test_that_is_no_file_is_refused(self):
        self.own.unlink()
        self.assert_ends(self.setup_own(), USAGE, "No such file or directory")
        self.own.mkdir()
        self.assert_ends(self.setup_own(), USAGE, "not a regular file")

    def test_needs_a_name_that_can_be_a_folders(self):
        for name in ("a/b", "..", ".hidden", "", "ü", "a b", "advised", "x" * 65):
            run = self.finish_any(self.start("--model", name, "--file", str(self.own)))
            self.assert_ends(run, USAGE, "cannot name a model")

    def test_under_a_known_name_must_be_the_known_file(self):
        self.assert_ends(self.setup_own(name="base"), WRONG_FILE, "is not the file of base")
        self.assertEqual(self.files(), {"setup.lock"})

    def test_under_a_known_name_is_that_model(self):
        # The pin's bytes, with a head that can be weights.
        self.look_at("base")
        run = self.finish_any(self.start(
            "--model", "base", "--file", str(self.own), "--bytes", str(len(self.bytes)),
            "--sha256", hashlib.sha256(self.bytes).hexdigest(), pin=False))
        self.assert_ends(run, DONE)
        self.assertNotIn("custom", json.loads(self.manifest.read_text()))
        self.assertEqual(self.state(), COMPLETE)

    def test_is_of_no_use_to_a_build_without_whisper(self):
        self.assert_ends(self.setup_own(whisper="off"), USAGE, "no Whisper")

    def test_may_be_the_settings_choice(self):
        self.setup_own()
        run = self.finish_any(self.start("--model", "large-v3", "--chosen", "mine"))
        self.assert_ends(run, DONE)
        self.look_at("large-v3")
        self.assertEqual(json.loads(self.manifest.read_text())["chosen"], "mine")

    def test_after_a_crash_at_any_step_is_finished_by_the_next(self):
        for step in ("locked", "copied", "renamed", "voice renamed", "manifest"):
            with self.subTest(step):
                self.setUp()
                self.setup_own("--die-at", step)
                self.check_promise()
                self.assertEqual(self.manifest.exists(), step == "manifest")
                self.assert_ends(self.setup_own(), DONE)
                self.assertEqual(self.state(), COMPLETE)


if __name__ == "__main__":
    unittest.main()
