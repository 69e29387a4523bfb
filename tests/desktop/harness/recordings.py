"""Recordings of people with their texts, and published weights, from the folder in VOXTREL_WHISPER_DATA."""

import array
import csv
import dataclasses
import json
import os
import subprocess
import unicodedata
import wave

FOLDER = os.environ.get("VOXTREL_WHISPER_DATA", "")
WEIGHTS = os.path.join(FOLDER, "ggml-base.bin")
RATE_HZ = 16000


@dataclasses.dataclass(frozen=True)
class Recording:
    """One person's speech: its file, its length and the text that was read."""

    name: str
    language: str
    path: str
    seconds: float
    text: str

    def samples(self):
        """Of 16 bits, at RATE_HZ."""
        with wave.open(self.path) as file:
            assert (file.getframerate(), file.getnchannels(), file.getsampwidth()) == (RATE_HZ, 1, 2)
            return array.array("h", file.readframes(file.getnframes()))


def recordings(language=None):
    """All recordings, or those in a language, the shortest first."""
    with open(os.path.join(FOLDER, "speech/clips.tsv"), encoding="utf-8") as file:
        rows = [row for row in csv.DictReader(file, delimiter="\t", quoting=csv.QUOTE_NONE)
                if language in (None, row["language"])]
    found = [Recording(row["name"], row["language"], os.path.join(FOLDER, "speech", row["name"] + ".wav"),
                       float(row["seconds"]), row["text"]) for row in rows]
    return sorted((clip for clip in found if os.path.isfile(clip.path)), key=lambda clip: clip.seconds)


def recording(name):
    """The recording of this name."""
    return next(clip for clip in recordings() if clip.name == name)


def write_wav(path, samples):
    """Writes samples as those of a recording."""
    with wave.open(str(path), "wb") as file:
        file.setnchannels(1)
        file.setsampwidth(2)
        file.setframerate(RATE_HZ)
        file.writeframes(samples.tobytes())


def plain_words(text, language=""):
    """The words without capitals and punctuation; the characters of languages that write no blanks."""
    kept = "".join(c if unicodedata.category(c)[0] in "LMN" or c == "'" else " " for c in text.casefold())
    return list(kept.replace(" ", "")) if language in ("ja", "zh") else kept.split()


def word_errors(heard, truth):
    """How many words must be changed, added or left out to make one list of words the other."""
    row = list(range(len(heard) + 1))
    for number, expected in enumerate(truth, 1):
        before, row[0] = row[0], number
        for j, word in enumerate(heard, 1):
            before, row[j] = row[j], min(row[j] + 1, row[j - 1] + 1, before + (word != expected))
    return row[-1]


def word_error_rate(heard, truth):
    """The same for two texts, per word of the truth."""
    right = plain_words(truth)
    return word_errors(plain_words(heard), right) / len(right)


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
