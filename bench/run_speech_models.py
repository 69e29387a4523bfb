"""Whisper on recordings of people, the engine's way beside the library's own (the whole encoder, greedy,
after the sound has ended): the same weights and threads, in turn. VOXTREL_WHISPER_DATA names a folder
with ggml-base.bin, ggml-silero-v6.2.0.bin and speech/clips.tsv; without it nothing is measured.

Ratios are ours / the library's; word error rates are percent of the spoken words."""

import collections
import os
import subprocess
import sys
import unicodedata

LONG_SECONDS = 20


def plain(text, language):
    """The words of a text; for scripts without blanks its characters. Digits stay digits."""
    kept = "".join(c if c.isalnum() or c == "'" or unicodedata.category(c)[0] == "M" else " "
                   for c in unicodedata.normalize("NFC", text.lower()))
    return list(kept.replace(" ", "")) if language in ("ja", "zh") else kept.split()


def errors(heard, spoken):
    """How many words must be changed, added or left out."""
    row = list(range(len(heard) + 1))
    for i, right in enumerate(spoken, 1):
        before, row[0] = row[0], i
        for j, word in enumerate(heard, 1):
            changed = before + (right != word)
            before = row[j]
            row[j] = min(row[j] + 1, row[j - 1] + 1, changed)
    return row[-1]


def run(program, data, *options):
    """The program's lines as lists, and the most memory that it had, in MB."""
    lines = subprocess.run(
        [program, f"{data}/ggml-base.bin", f"{data}/ggml-silero-v6.2.0.bin", f"{data}/speech/clips.tsv",
         *options], check=True, stdout=subprocess.PIPE, text=True).stdout.splitlines()
    return [line.split("\t") for line in lines]


def memory_of(program, data, way):
    """The most memory of a run of its own, in MB: a child's, so it starts as small as any."""
    code = ("import resource, subprocess, sys; subprocess.run(sys.argv[1:], check=True,"
            " stdout=subprocess.DEVNULL);"
            "print(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss // 1024)")
    return int(subprocess.run(
        [sys.executable, "-c", code, program, f"{data}/ggml-base.bin",
         f"{data}/ggml-silero-v6.2.0.bin", f"{data}/speech/clips.tsv", way],
        check=True, stdout=subprocess.PIPE, text=True).stdout)


def main(programs):
    data = os.environ.get("VOXTREL_WHISPER_DATA")
    program = f"{programs}/speech_models"
    if not data or not os.path.exists(program):
        print("speech models: not measured, VOXTREL_WHISPER_DATA names no folder")
        return
    spoken = {}
    with open(f"{data}/speech/clips.tsv", encoding="utf-8") as table:
        for line in list(table)[1:]:
            name, language, seconds, text = line.split("\t")[:4]
            spoken[name] = language, float(seconds), plain(text, language)
    for title, options in (("language set", ()), ("language found", ("auto",))):
        times = collections.Counter()
        wrong, words = collections.Counter(), collections.Counter()
        for way, name, _, _, _, seconds, _, _, heard in run(program, data, *options):
            if name == "load":
                continue
            language, length, right = spoken[name]
            kind = "long" if length >= LONG_SECONDS else "short"
            times[way, kind] += float(seconds)
            wrong[way, kind] += errors(plain(heard, language), right)
            words[way, kind] += len(right)
        for kind in ("short", "long"):
            ratio = times["ours", kind] / times["library", kind]
            print(f"{kind} speech, {title}, key up to text, ours / library: {ratio:.2f}")
            rates = [100 * wrong[way, kind] / words[way, kind] for way in ("ours", "library")]
            print(f"{kind} speech, {title}, words wrong, ours and library: "
                  f"{rates[0]:.1f} % {rates[1]:.1f} %")
    ours, library = (memory_of(program, data, way) for way in ("ours", "library"))
    print(f"memory, ours / library: {ours / library:.2f} ({ours} MB, {library} MB)")


main(sys.argv[1])
