"""Whisper on recordings of people, the engine's way beside the library's own (the whole encoder, greedy,
after the sound has ended): the same weights and threads, in turn. VOXTREL_WHISPER_DATA names a folder
with ggml-base.bin, ggml-silero-v6.2.0.bin and speech/clips.tsv; without it nothing is measured.

Ratios are ours / the library's; word error rates are percent of the spoken words."""

import collections
import os
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "tests", "desktop"))

# pylint: disable=wrong-import-position
from harness.recordings import FOLDER, plain_words, recordings, word_errors

LONG_SECONDS = 20


INPUT = [f"{FOLDER}/ggml-base.bin", f"{FOLDER}/ggml-silero-v6.2.0.bin", f"{FOLDER}/speech/clips.tsv"]


def run(program, *options):
    """The program's lines as lists."""
    lines = subprocess.run([program, *INPUT, *options], check=True, stdout=subprocess.PIPE,
                           text=True).stdout.splitlines()
    return [line.split("\t") for line in lines]


def memory_of(program, way):
    """The most memory of a run of its own, in MB: a child's, so it starts as small as any."""
    code = ("import resource, subprocess, sys; subprocess.run(sys.argv[1:], check=True,"
            " stdout=subprocess.DEVNULL);"
            "print(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss // 1024)")
    return int(subprocess.run(
        [sys.executable, "-c", code, program, *INPUT, way], check=True, stdout=subprocess.PIPE,
        text=True).stdout)


def main(programs):
    program = f"{programs}/speech_models"
    if not FOLDER or not os.path.exists(program):
        print("speech models: not measured, VOXTREL_WHISPER_DATA names no folder")
        return
    spoken = {clip.name: clip for clip in recordings()}
    for title, options in (("language set", ()), ("language found", ("auto",))):
        times = collections.Counter()
        wrong, words = collections.Counter(), collections.Counter()
        for way, name, _, _, _, seconds, _, _, heard in run(program, *options):
            if name == "load":
                continue
            clip = spoken[name]
            right = plain_words(clip.text, clip.language)
            kind = "long" if clip.seconds >= LONG_SECONDS else "short"
            times[way, kind] += float(seconds)
            wrong[way, kind] += word_errors(plain_words(heard, clip.language), right)
            words[way, kind] += len(right)
        for kind in ("short", "long"):
            ratio = times["ours", kind] / times["library", kind]
            print(f"{kind} speech, {title}, key up to text, ours / library: {ratio:.2f}")
            rates = [100 * wrong[way, kind] / words[way, kind] for way in ("ours", "library")]
            print(f"{kind} speech, {title}, words wrong, ours and library: "
                  f"{rates[0]:.1f} % {rates[1]:.1f} %")
    ours, library = (memory_of(program, way) for way in ("ours", "library"))
    print(f"memory, ours / library: {ours / library:.2f} ({ours} MB, {library} MB)")


main(sys.argv[1])
