"""The engine's program with published weights and recordings of people, from the folder that
VOXTREL_WHISPER_DATA names; without it nothing is tried, which the exit status says."""

import array
import itertools
import json
import os
import shutil
import signal
import subprocess
import threading
import unittest

from engine_program import EXECUTABLE, EngineProgram, die_with_parent
from harness.buses import Bus
from harness.monitor import BusMonitor
from harness.polling import eventually, stays
from harness.recordings import (RATE_HZ, plain_words, recordings, word_error_rate, word_errors,
                                write_wav)
from real_model import RealModelCase, children_of, peak_kilobytes


class Words(RealModelCase):
    """What is printed."""

    def test_transcribe_prints_the_words_and_only_them(self):
        for name, words in (("en_jfk", "country"), ("de_thorsten_04", "Plan"), ("fr_leopard", "consulat")):
            done = self.transcribe(name)
            self.assertEqual(done.returncode, 0, done)
            self.assertIn(words, done.stdout)
            self.assertEqual(len(done.stdout.splitlines()), 1)
            self.assertEqual(done.stderr, "Using Whisper.\n")

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
        self.assertTrue(shown["runs_on"].startswith("whisper.cpp "))


class Kept(RealModelCase):
    """`retry` with the recordings that an engine has left."""

    def test_eight_takes_give_their_words_in_order(self):
        clips = [clip for clip in recordings("en") if clip.seconds >= 1.5][7::-1]
        folder = self.keep([clip.name for clip in clips])
        done = self.run_program("retry")
        self.assertEqual(done.returncode, 0, done)
        lines = done.stdout.splitlines()
        self.assertEqual(len(lines), 8, lines)
        for line, clip in zip(lines, clips):
            self.assertLessEqual(word_error_rate(line, clip.text), 1 / 3, (clip.name, line))
        self.assertEqual(list(folder.iterdir()), [])

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


class FiveMinutes(RealModelCase):
    """Speech for as long as a take may be."""

    # Measured: 350 MB. The model's own figure is 390 MB.
    MOST_KILOBYTES = 550_000

    def measured(self, path):
        """The run, and the most memory that it and its recogniser have used."""
        program = subprocess.Popen([EXECUTABLE, "transcribe", path], env=self.environment, text=True,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   preexec_fn=die_with_parent)
        peaks = {}
        ended = threading.Event()

        def watch():
            while not ended.wait(0.05):
                for pid in (program.pid, *children_of(program.pid)):
                    peaks[pid] = max(peaks.get(pid, 0), peak_kilobytes(pid))

        watcher = threading.Thread(target=watch)
        watcher.start()
        try:
            words, notes = program.communicate(timeout=400)
        finally:
            ended.set()
            watcher.join()
        self.assertEqual((program.returncode, notes), (0, "Using Whisper.\n"))
        return words, sum(peaks.values())

    def test_no_word_is_lost_or_doubled_and_the_memory_is_bounded(self):
        self.settings('[model]\nlanguage = "en"\n')
        clips = [clip for clip in recordings("en") if clip.seconds >= 2.5]
        self.keep([clip.name for clip in clips])
        single = self.run_program("retry").stdout.splitlines()
        self.assertEqual(len(single), len(clips))
        truths = [plain_words(clip.text) for clip in clips]
        alone = [word_errors(plain_words(line), words) for line, words in zip(single, truths)]
        pause = array.array("h", bytes(RATE_HZ))  # half a second
        speech, truth, errors = array.array("h"), [], 0
        for clip, words, wrong in itertools.cycle(zip(clips, truths, alone)):
            speech += clip.samples() + pause
            truth += words
            errors += wrong
            if len(speech) >= 300 * RATE_HZ:
                break
        write_wav(self.home / "long.wav", speech)
        words, peak = self.measured(str(self.home / "long.wav"))
        heard = plain_words(words)
        rate, alone_rate = word_errors(heard, truth) / len(truth), errors / len(truth)
        print(f"{len(speech) / RATE_HZ:.0f} s: {rate:.3f} of the words are wrong, {alone_rate:.3f} one "
              f"by one; {peak} kB at most")
        self.assertLessEqual(rate, alone_rate + 0.05, words)
        self.assertLess(peak, self.MOST_KILOBYTES)


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
