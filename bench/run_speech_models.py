"""Whisper on recordings of people, the engine's way beside the library's own (the whole encoder, greedy,
after the sound has ended): the same weights and threads, in turn. VOXTREL_WHISPER_DATA names a folder
with ggml-base.bin, ggml-silero-v6.2.0.bin and speech/clips.tsv; without it nothing is measured.

run_speech_models.py PROGRAMS [PART...], or VOXTREL_BENCH_PARTS: base and q8_0 (the recordings), engine (its
start and its idling with base); these by default, in more than 10 minutes on two cores. small, turbo and
parakeet make weights of their own that have the true shape, and take some minutes each: a few recordings.

Ratios are ours / the library's; word error rates are percent of the spoken words."""

import array
import collections
import os
import pathlib
import re
import statistics
import subprocess
import sys
import tempfile
import time

TESTS = os.path.join(os.path.dirname(__file__), "..", "tests")
sys.path[:0] = [os.path.join(TESTS, "desktop"), os.path.join(TESTS, "support")]

# pylint: disable=wrong-import-position
import made_weights
from harness.desk import Desk
from harness.polling import eventually
from harness.recordings import (FOLDER, RATE_HZ, WEIGHTS, Recording, plain_words, recording, recordings,
                                run_quillback, word_errors, write_wav)
from harness.sound import SoundServer
from run_tray import pss_mib, wake_ups

DEFAULT_PARTS = ("base", "q8_0", "engine")
LONG_SECONDS = 20
ROUNDS = 5
IDLE_S = 30.0
UNLOAD_S = 5
PAUSE_SAMPLES = RATE_HZ * 6 // 10
# Of 5.7, 11 and 26.7 seconds.
FEW = ("en_lj001_0006", "en_jfk", "en_michael_talk")
FIFTEEN = "es_mls_austen"
# What is said before a long recording, so that its pieces end elsewhere: where they do is chance.
BEFORE = {"es_veneno_long": ("es_veneno_c", "es_css10", FIFTEEN),
          "en_michael_talk": ("en_jfk", "en_lj001_0006", "en_libri_2412_153948_0000")}
UNSAID = ("Quorvex", "Blenwick")
# What people say in the recordings, and is not recognised without them.
SAID = ("Joanis", "Wentworth", "Hanake", "Alcuten", "Bradamano", "Ariel", "pillangok")
GROUPS = ("en", "de", "fr", "es", "others")
# What weights of a true shape say: as many words as people in those recordings, and none of them twice.
SPOKEN = (" My friend told us about some old books which they found under that big tree near her house last"
          " summer because nobody wanted them when we came home after work with two bags full of apples while"
          " rain kept falling on every street outside")

Spoken = collections.namedtuple("Spoken", "way name seconds text")


class Weights:
    """One file of weights, and the program that runs it both ways."""

    def __init__(self, programs, title, path, *options, table=f"{FOLDER}/speech/clips.tsv"):
        self.title = title
        self._command = [f"{programs}/speech_models", path, f"{FOLDER}/ggml-silero-v6.2.0.bin", table,
                         *options]

    def run(self, *options, clips=()):
        """What was recognised, and the loads, which have the name "load"."""
        lines = subprocess.run([*self._command, *options, *(f"clip={name}" for name in clips)], check=True,
                               stdout=subprocess.PIPE, text=True).stdout.splitlines()
        return [Spoken(way, name, float(seconds), text)
                for way, name, _, _, _, seconds, _, _, text in (line.split("\t") for line in lines)]

    def memory_mb(self, way):
        """The most memory of a run of its own: a child's, so it starts as small as any."""
        code = ("import resource, subprocess, sys; subprocess.run(sys.argv[1:], check=True,"
                " stdout=subprocess.DEVNULL);"
                "print(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss // 1024)")
        return int(subprocess.run(
            [sys.executable, "-c", code, *self._command, way, *(f"clip={name}" for name in FEW)],
            check=True, stdout=subprocess.PIPE, text=True).stdout)

    def show(self, what, value):
        """Prints one figure."""
        print(f"{self.title}, {what}: {value}", flush=True)

    # Figures -------------------------------------------------------------------------------------

    def measure_speech(self):
        """Times and words of all recordings, with the language set and found."""
        spoken = {clip.name: clip for clip in recordings()}
        for title, options in (("language set", ()), ("language found", ("auto",))):
            found = [each for each in self.run(*options) if each.name != "load"]
            for kind in ("short", "long"):
                some = [each for each in found
                        if (spoken[each.name].seconds >= LONG_SECONDS) == (kind == "long")]
                times = collections.Counter()
                for each in some:
                    times[each.way] += each.seconds
                self.show(f"{kind} speech, {title}, key up to text",
                          f"{times['ours'] / times['library']:.2f}")
                self._show_words(f"{kind} speech, {title}", some, spoken)
            ours = {each.name: each.seconds for each in found if each.way == "ours"}
            longest = max(seconds for name, seconds in ours.items()
                          if spoken[name].seconds >= LONG_SECONDS)
            self.show(f"{title}, the longest wait of long speech / that of 15 s",
                      f"{longest / ours[FIFTEEN]:.2f} ({longest:.2f} s, {ours[FIFTEEN]:.2f} s)")

    def _show_words(self, what, some, spoken):
        wrong, words = collections.Counter(), collections.Counter()
        for each in some:
            clip = spoken[each.name]
            right = plain_words(clip.text, clip.language)
            errors = word_errors(plain_words(each.text, clip.language), right)
            group = clip.language if clip.language in GROUPS else "others"
            for key in ((each.way, "all"), (each.way, group)):
                wrong[key] += errors
                words[key] += len(right)

        def rate(way, group):
            return 100 * wrong[way, group] / words[way, group]

        rates = [f"{rate('ours', group):.1f} {rate('library', group):.1f}"
                 for group in ("all", *GROUPS) if words["ours", group]]
        names = [group for group in ("all", *GROUPS) if words["ours", group]]
        self.show(f"{what}, words wrong in percent, ours and library's",
                  "; ".join(f"{name} {pair}" for name, pair in zip(names, rates)))

    def measure_joined(self, clips):
        """The words of recordings that are not in the usual table."""
        found = [each for each in self.run() if each.name != "load"]
        self._show_words(f"{len(clips)} times long speech after short speech", found,
                         {clip.name: clip for clip in clips})

    def measure_finding(self):
        """What it costs to find the language, both ways in turn."""
        clips = [clip.name for clip in recordings()
                 if clip.seconds < LONG_SECONDS and clip.language in ("de", "fr", "es", "it")]
        times = {(): [], ("auto",): []}
        for _ in range(ROUNDS):
            for options, rounds in times.items():
                rounds.append(sum(each.seconds for each in self.run("ours", *options, clips=clips)
                                  if each.name != "load"))
        known, found = map(statistics.median, times.values())
        self.show(f"{len(clips)} short recordings, language found / set", f"{found / known:.2f}")

    def measure_expected_words(self, title, words):
        """What words in the settings change in all recordings."""
        spoken = {clip.name: clip for clip in recordings()}
        found = [{each.name: each for each in self.run("ours", *options) if each.name != "load"}
                 for options in ((), [f"word={word}" for word in words])]
        without, told = found
        changed = [name for name in without if without[name].text != told[name].text]
        heard = [sum(word.casefold() in plain_words(each.text) for word in words
                     for each in some.values()) for some in found]
        errors = [sum(word_errors(plain_words(each.text, spoken[name].language),
                                  plain_words(spoken[name].text, spoken[name].language))
                      for name, each in some.items()) for some in found]
        seconds = [sum(each.seconds for each in some.values()) for some in found]
        self.show(title, f"heard {heard[0]} times without and {heard[1]} with them; {len(changed)} of "
                         f"{len(told)} recordings have another text: {' '.join(changed)}; {errors[0]} words "
                         f"wrong without, {errors[1]} with; time {seconds[1] / seconds[0]:.2f}")

    def measure_costs(self):
        """Memory, loading, and the first dictation."""
        ours, library = (self.memory_mb(way) for way in ("ours", "library"))
        self.show("memory", f"{ours / library:.2f} ({ours} MB, {library} MB)")
        rounds = {way: [self.run(way, clips=["en_jfk", "en_jfk"]) for _ in range(ROUNDS)]
                  for way in ("ours", "library")}
        loads = {way: statistics.median(run[0].seconds for run in runs) for way, runs in rounds.items()}
        self.show("loading", f"{loads['ours'] / loads['library']:.2f} ({loads['ours']:.2f} s, "
                             f"{loads['library']:.2f} s)")
        first, second = (statistics.median(run[at].seconds for run in rounds["ours"]) for at in (1, 2))
        self.show("first dictation / second", f"{first / second:.2f} ({first:.2f} s, {second:.2f} s)")

    def measure_few(self):
        """A few recordings; what weights without content hear does not count."""
        found = self.run(clips=FEW)
        for name in FEW:
            ours, library = (next(each.seconds for each in found if (each.way, each.name) == (way, name))
                             for way in ("ours", "library"))
            self.show(f"{name}, key up to text", f"{ours / library:.2f} ({ours:.2f} s, {library:.2f} s)")
        ours, library = (self.memory_mb(way) for way in ("ours", "library"))
        self.show("memory", f"{ours / library:.2f} ({ours} MB, {library} MB)")


# The engine --------------------------------------------------------------------------------------


def processes_of(engine):
    """The engine and its recogniser's process."""
    children = set()
    for task in os.listdir(f"/proc/{engine}/task"):
        with open(f"/proc/{engine}/task/{task}/children", encoding="ascii") as file:
            children.update(int(word) for word in file.read().split())
    return [engine, *children]


def measure_engine(programs):
    """From the start to "Ready.", wake-ups of the idle engine, and the memory that it gives back."""
    executable = os.path.join(programs, "quillback")
    with Desk(panel=False, notifications=False) as desk:
        sound = SoundServer(desk).start()
        home = desk.environment["HOME"]
        for words in (("setup", "--model", "base", "--file", WEIGHTS), ("use", "base")):
            done = run_quillback(executable, home, *words, environment=desk.environment)
            assert done.returncode == 0, done
        started = time.monotonic()
        engine = desk.spawn(executable, "run")
        eventually(lambda: "Ready." in engine.output(), "a ready engine", 20)
        print(f"engine with base, start to Ready: {time.monotonic() - started:.2f} s")
        time.sleep(3)
        pids = processes_of(engine.pid)
        before = sum(map(wake_ups, pids))
        time.sleep(IDLE_S)
        woke = sum(map(wake_ups, pids)) - before
        print(f"engine with base, wake-ups of its {len(pids)} processes in {IDLE_S:.0f} s: {woke}")
        print(f"engine with base, PSS: {sum(map(pss_mib, pids)):.0f} MiB", flush=True)
        engine.stop()
        path = os.path.join(home, ".config/quillback/config.toml")
        with open(path, encoding="utf-8") as file:
            text = file.read()
        with open(path, "w", encoding="utf-8") as file:
            file.write(re.sub(r"(?m)^(\[engine\])$", rf"\1\nunload_after = {UNLOAD_S}", text))
        engine = desk.spawn(executable, "run")
        eventually(lambda: "Ready." in engine.output(), "a ready engine", 20)
        eventually(lambda: len(processes_of(engine.pid)) == 1, "the end of the recogniser", UNLOAD_S + 5)
        print(f"engine after unload_after, PSS: {pss_mib(engine.pid):.0f} MiB", flush=True)
        engine.stop()
        sound.stop()


# Parts -------------------------------------------------------------------------------------------


def joined(folder):
    """Writes the long recordings of BEFORE, each after each of its short ones; returns them and their table."""
    clips = []
    for name, earlier in BEFORE.items():
        last = recording(name)
        for first in map(recording, earlier):
            path = os.path.join(folder, f"{name}-{first.name}.wav")
            samples = first.samples() + array.array("h", bytes(2 * PAUSE_SAMPLES)) + last.samples()
            write_wav(path, samples)
            clips.append(Recording(pathlib.Path(path).stem, last.language, path, len(samples) / RATE_HZ,
                                   f"{first.text} {last.text}"))
    table = os.path.join(folder, "joined.tsv")
    with open(table, "w", encoding="utf-8") as file:
        file.write("name\tlanguage\n")
        file.writelines(f"{clip.name}\t{clip.language}\n" for clip in clips)
    return clips, table


def quantized(program, path, kind):
    """Smaller weights of the same content, beside the file."""
    smaller = f"{path.removesuffix('.bin')}-{kind}.bin"
    subprocess.run([program, path, smaller, kind], check=True, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL)
    return smaller


def measure(part, programs, folder):
    """Prints the figures of one part."""
    if part == "engine":
        measure_engine(programs)
    elif part in ("base", "q8_0"):
        path = os.path.join(folder, "base.bin")
        os.symlink(WEIGHTS, path)
        if part == "q8_0":
            path = quantized(f"{programs}/quantize_weights", path, part)
        weights = Weights(programs, "base" if part == "base" else "base q8_0", path)
        weights.measure_speech()
        weights.measure_costs()
        weights.measure_finding()
        if part == "base":
            weights.measure_expected_words("words that nobody says", UNSAID)
            weights.measure_expected_words("words that somebody says", SAID)
            clips, table = joined(folder)
            Weights(programs, "base", path, table=table).measure_joined(clips)
    elif part in ("small", "turbo"):
        shape = {"turbo": "large-v3-turbo"}.get(part, part)
        path = os.path.join(folder, f"{shape}.bin")
        made_weights.write_script(pathlib.Path(FOLDER), path, False, shape, SPOKEN)
        Weights(programs, f"shape of {shape}", path).measure_few()
    elif part == "parakeet":
        path = os.path.join(folder, "parakeet.bin")
        subprocess.run([sys.executable, f"{FOLDER}/make_parakeet.py", path], check=True)
        for kind in ("q8_0", "q4_0"):
            smaller = quantized(f"{programs}/quantize_parakeet", path, kind)
            Weights(programs, f"shape of parakeet-v3-{kind}", smaller, "parakeet").measure_few()
    else:
        sys.exit(f"unknown part {part}")


def main(programs, parts):
    """Runs the parts one after the other."""
    if not FOLDER or not os.path.exists(f"{programs}/speech_models"):
        print("speech models: not measured, VOXTREL_WHISPER_DATA names no folder")
        return
    for part in parts:
        started = time.monotonic()
        with tempfile.TemporaryDirectory(prefix="speech-models-") as folder:
            measure(part, programs, folder)
        print(f"{part}: {time.monotonic() - started:.0f} s", file=sys.stderr, flush=True)


main(sys.argv[1], sys.argv[2:] or os.environ.get("VOXTREL_BENCH_PARTS", "").split() or DEFAULT_PARTS)
