"""The engine's program with published weights and recordings of people, from the folder that
VOXTREL_WHISPER_DATA names; without it nothing is tried, which the exit status says."""

import json
import os
import shutil
import signal
import subprocess
import unittest

from engine_program import EXECUTABLE, EngineProgram, die_with_parent
from harness.buses import Bus
from harness.monitor import BusMonitor
from harness.polling import eventually, stays
from harness.recordings import recording
from real_model import RUNS, RealModelCase, children_of, peak_kilobytes


def count_threads(pid):
    """0 if the process has ended."""
    try:
        return len(os.listdir(f"/proc/{pid}/task"))
    except OSError:
        return 0


class Words(RealModelCase):
    """What is printed."""

    def test_transcribe_prints_the_words_and_only_them(self):
        for name, words in (("en_jfk", "country"), ("de_thorsten_04", "Plan"), ("fr_leopard", "consulat")):
            done = self.transcribe(name)
            self.assertEqual(done.returncode, 0, done)
            self.assertIn(words, done.stdout)
            self.assertEqual(len(done.stdout.splitlines()), 1)
            self.assertRegex(done.stderr, rf"\A{RUNS}\Z")

    def test_names_of_the_settings_are_spelled_as_there(self):
        self.settings('[model]\nlanguage = "fr"\n')
        self.assertNotIn("Joanis", self.transcribe("fr_joanis_a").stdout)
        self.settings('[model]\nlanguage = "fr"\nwords = ["Joanis", "CNRC"]\n')
        self.assertIn("Joanis", self.transcribe("fr_joanis_a").stdout)

    def test_replacements_are_for_what_is_inserted_not_for_what_is_printed(self):
        self.settings('[output]\nreplace = { "country" = "land" }\n')
        done = self.transcribe("en_jfk")
        self.assertIn("country", done.stdout)
        self.assertNotIn("land", done.stdout)

    def test_the_list_of_models_shows_which_is_here_and_how_long_it_takes(self):
        shown = json.loads(self.run_program("models", "--json").stdout)
        base = next(model for model in shown["models"] if model["name"] == "base")
        self.assertTrue(base["here"] and base["in_use"])
        self.assertGreater(base["seconds_for_5_s_of_speech"], 0)
        self.assertEqual([m["name"] for m in shown["models"] if m["here"]], ["base"])
        self.assertIn(f"It runs in {shown['runs_on']}.\n", self.transcribe("en_rear_left").stderr)

    def test_as_many_threads_compute_as_the_settings_say(self):
        for threads in (1, 3):
            self.settings(f"[model]\nthreads = {threads}\n")
            most, notes = self.most_threads("en_libri_2412_153948_0000")
            self.assertEqual(most, threads)
            self.assertIn(f", {threads} thread", notes)

    def most_threads(self, name):
        """How many threads the recogniser has at most, and what is printed beside the words."""
        program = subprocess.Popen([EXECUTABLE, "transcribe", recording(name).path], env=self.environment,
                                   text=True, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                                   preexec_fn=die_with_parent)
        most = 0
        while True:
            try:
                program.wait(0.02)
                break
            except subprocess.TimeoutExpired:
                most = max([most, *map(count_threads, children_of(program.pid))])
        self.assertEqual(program.returncode, 0)
        with program.stderr:
            return most, program.stderr.read()


class Kept(RealModelCase):
    """`retry` with a recording that an engine has left."""

    def test_a_killed_recogniser_costs_no_word(self):
        folder = self.keep(["en_jfk"])
        program = subprocess.Popen([EXECUTABLE, "retry"], env=self.environment, text=True,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   preexec_fn=die_with_parent)
        # Once it uses so much memory, it has loaded most of the weights.
        child = eventually(lambda: next((pid for pid in children_of(program.pid)
                                         if peak_kilobytes(pid) > 150_000), None),
                           "the recogniser's process", 60)
        os.kill(child, signal.SIGKILL)
        words, notes = program.communicate(timeout=120)
        self.assertEqual(program.returncode, 0, notes)
        self.assertIn("country", words)
        self.assertEqual(list(folder.iterdir()), [])


class Advice(RealModelCase):
    """The model of the application's window, where it is too slow for this machine."""

    def setUp(self):
        super().setUp()
        # Complete as far as the store can tell; its content is that of a faster one.
        store = self.store.with_name("whisper-large-v3")
        shutil.rmtree(store)  # a note for the application's window
        self.store.rename(store)
        (store / "ggml-base.bin").rename(store / "ggml-large-v3.bin")
        manifest = json.loads((store / "manifest.json").read_text())
        manifest["model"] = "large-v3"
        manifest["files"][0]["name"] = "ggml-large-v3.bin"
        (store / "manifest.json").unlink()
        (store / "manifest.json").write_text(json.dumps(manifest))
        (self.home / ".config/quillback/config.toml").unlink()
        bus = Bus("session", str(self.home), self.environment)
        self.addCleanup(bus.stop)
        self.messages = BusMonitor(bus)
        self.addCleanup(self.messages.close)
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address
        self.marker = self.home / ".local/share/quillback/advice-shown"

    def start(self):
        """An engine that is ready."""
        program = EngineProgram("run", home=str(self.home), environment=self.environment)
        self.addCleanup(program.close)
        program.wait_for_line("Ready.", 60)
        return program

    def advices(self):
        """The notifications that give it."""
        return [call for call in self.messages.calls("Notify")
                if str(call.arguments[3]) == "The speech model is slow on this machine"]

    def test_is_given_once(self):
        program = self.start()
        number = program.wait_for_line("large-v3 takes about", 20)
        line = program.texts()[number]
        self.assertRegex(line, r"run: quillback setup --model (\S+) && quillback use \1$")
        eventually(self.advices, "the notification", 20)
        self.assertEqual(self.marker.read_text(), line)
        self.assertEqual(program.end()[0], 0)
        again = self.start()
        stays(lambda: not any("takes about" in text for text in again.texts()), "silence", 1.0)
        self.assertEqual(len(self.advices()), 1)

    def test_is_not_given_for_a_model_that_the_user_chose(self):
        path = self.home / ".config/quillback/config.toml"
        path.write_text('[engine]\nmodel = "large-v3"\n')
        program = self.start()
        stays(lambda: not any("takes about" in text for text in program.texts()), "silence", 1.0)
        self.assertFalse(self.marker.exists())


if __name__ == "__main__":
    unittest.main()
