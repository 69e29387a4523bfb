"""The engine's own commands about models, as a user runs them."""

import json
import os
import subprocess
import unittest

from model_server import bytes_of
from setup_case import DONE, HTTP, USAGE, SetupCase

ENGINE = os.environ["QUILLBACK_ENGINE"]


class Commands(SetupCase):
    def setUp(self):
        super().setUp()
        # The real pins fit nothing that a test serves.
        self.server.default = bytes_of(b"", 404)
        self.server.beside = {}
        self.config = self.home / ".config/quillback/config.toml"

    def run_engine(self, *words, **environment):
        """Status, lines and errors of the engine's command."""
        done = subprocess.run(
            [ENGINE, *words], stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=60,
            env={"HOME": str(self.home), "PATH": "/usr/bin:/bin",
                 "QUILLBACK_MODEL_URL": self.server.url, **environment})
        return done.returncode, done.stdout.splitlines(), done.stderr.splitlines()

    def json(self):
        status, lines, errors = self.run_engine("models", "--json")
        self.assertEqual((status, len(lines), errors), (DONE, 1, []))
        return json.loads(lines[0])

    def test_models_is_a_table_or_says_that_there_is_no_whisper(self):
        status, lines, errors = self.run_engine("models")
        self.assertEqual((status, errors), (DONE, []))
        if self.json()["whisper"]:
            self.assertTrue(any(line.startswith("Name ") for line in lines[:2]), lines)
            self.assertGreater(len(lines), 15)
        else:
            self.assertEqual(len(lines), 1)
            self.assertIn("only its embedded recogniser", lines[0])

    def test_use_is_what_the_commands_obey(self):
        self.config.parent.mkdir(parents=True)
        self.config.write_text("[model]\nwhisper_model = \"large-v3\"\n")
        self.assertEqual(self.run_engine("use", "base")[0], DONE)
        self.assertEqual(self.config.read_text(), "[model]\nwhisper_model = \"large-v3\"\n\n"
                                                  "[engine]\nmodel = \"base\"\n")
        self.assertEqual(self.json()["in_use"], "base")
        status, lines, _ = self.run_engine("remove", "base")
        self.assertEqual(status, USAGE)
        self.assertIn("quillback use NAME", lines[-1])
        self.assertEqual(self.run_engine("remove", "large-v3")[0], DONE)

    def test_setup_without_a_name_is_about_the_settings_model(self):
        self.config.parent.mkdir(parents=True)
        self.config.write_text("[model]\nwhisper_model = \"base\"\n")
        self.folders_expected = 1
        self.check_setup("base")
        self.assertEqual(self.run_engine("use", "tiny")[0], DONE)
        self.check_setup("tiny")

    def check_setup(self, model):
        """Without a name, setup works in this model's folder."""
        self.look_at(model)
        self.assertFalse(self.folder.exists())
        status, lines, _ = self.run_engine("setup")
        self.assertEqual(status, HTTP if self.json()["whisper"] else DONE, lines)
        self.assertTrue(self.folder.exists())
        self.assertEqual(len(list(self.folder.parent.iterdir())), self.folders_expected)
        self.folders_expected += 1

    def test_setup_of_the_advised_model_is_no_unknown_name(self):
        status, lines, _ = self.run_engine("setup", "--model", "advised")
        self.assertNotEqual(status, USAGE, lines)

    def test_wrong_arguments_are_told_on_standard_error(self):
        for words in (("use",), ("remove",), ("models", "x"), ("setup", "base")):
            status, lines, errors = self.run_engine(*words)
            self.assertEqual((status, lines), (USAGE, []))
            self.assertEqual(errors[-1], 'Try "quillback --help".')


if __name__ == "__main__":
    unittest.main()
