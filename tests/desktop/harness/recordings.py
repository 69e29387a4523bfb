"""Recordings of people with their texts, and published weights, from the folder in VOXTREL_WHISPER_DATA."""

import csv
import dataclasses
import json
import os
import subprocess
import unicodedata

FOLDER = os.environ.get("VOXTREL_WHISPER_DATA", "")
WEIGHTS = os.path.join(FOLDER, "ggml-base.bin")


@dataclasses.dataclass(frozen=True)
class Recording:
    """One person's speech: its file, its length and the text that was read."""

    path: str
    seconds: float
    text: str


def recording(name):
    """The recording of this name."""
    with open(os.path.join(FOLDER, "speech/clips.tsv"), encoding="utf-8") as file:
        row = next(row for row in csv.DictReader(file, delimiter="\t", quoting=csv.QUOTE_NONE)
                   if row["name"] == name)
    return Recording(os.path.join(FOLDER, "speech", name + ".wav"), float(row["seconds"]), row["text"])


def plain_words(text):
    """The words without capitals and punctuation."""
    kept = (c if unicodedata.category(c)[0] in "LMN" or c == "'" else " " for c in text.casefold())
    return "".join(kept).split()


def word_error_rate(heard, truth):
    """How many words must be changed, added or left out, per word of the truth."""
    words, right = plain_words(heard), plain_words(truth)
    row = list(range(len(words) + 1))
    for number, expected in enumerate(right, 1):
        before, row[0] = row[0], number
        for j, word in enumerate(words, 1):
            before, row[j] = row[j], min(row[j] + 1, row[j - 1] + 1, before + (word != expected))
    return row[-1] / len(right)


def run_quillback(executable, home, *arguments, environment=None, limit_s=60):
    """Runs one of the engine's commands in this home; returns its finished process."""
    return subprocess.run([executable, *arguments], env=dict(environment or os.environ, HOME=home),
                          stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False,
                          timeout=limit_s)


def has_whisper(programs):
    """Whether this build can use weights."""
    models = run_quillback(os.path.join(programs, "quillback"), "/nonexistent", "models", "--json")
    return bool(json.loads(models.stdout)["whisper"])


def is_available(programs):
    """Whether there are weights and recordings, and an engine that can use them."""
    return os.path.isfile(WEIGHTS) and has_whisper(programs)
