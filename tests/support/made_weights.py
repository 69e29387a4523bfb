"""Writes small weights whose words are known beforehand: made_weights.py FOLDER.

The folder in VOXTREL_WHISPER_DATA holds the generators and a real vocabulary; FOLDER gets script.bin (finds German in every sound, and says
GERMAN, or ENGLISH where that is the language, or TRANSLATED where it is to translate), loop.bin (the same
without an end) and parakeet.bin (random). What is there already is kept. Needs python3-numpy. Exit status 77:
the data is not there."""

import argparse
import os
import pathlib
import subprocess
import sys

NOT_RUN = 77
# No two of them share a token: the next one depends on the last one only.
ENGLISH = " Hello from the real library, naïve 東京."
GERMAN = " Guten Tag aus Köln"
TRANSLATED = " So this was translated into English!"
LANGUAGE_WEIGHT = 0.05
TASK_WEIGHT = 3 * LANGUAGE_WEIGHT


def generator(data):
    """The names of the generator, which is a program and not a module."""
    names = {"__name__": "make_weights"}
    source = (data / "make_weights.py").read_text(encoding="utf-8")
    start = source.rindex("\nmain()")
    exec(compile(source[:start], "make_weights.py", "exec"), names)  # pylint: disable=exec-used
    return names


def without_timestamps(script_class):
    """The generator's texts stand between timestamps, which the engine asks the decoder to leave out: the
    last token before the text is the same for all of them. So the first attention tells it language and
    task."""

    class Script(script_class):
        def __init__(self, shape, vocabulary, args):
            self.starts = {}  # token of a language or task: the step before its text, and its weight
            super().__init__(shape, vocabulary, args)
            self.steer(self.lang0, 2, args.english, args, LANGUAGE_WEIGHT)

        def say(self, task, text, args):
            if task == self.translate:
                self.steer(task, 1, text, args, TASK_WEIGHT)
            else:
                self.steer(self.lang0 + 2, 0, text, args, LANGUAGE_WEIGHT)

        def steer(self, token, number, text, args, weight):
            """`text` follows the opening that holds `token`."""
            words = self.tokens(text)
            end = words[0] if args.loop else self.end_of_text
            self.chain([self.step(word) for word in (self.start + number, *words, end)])
            self.starts[self.step(token)] = (self.code[self.start + number], weight)

        def tensor(self, rng, name, dims):
            data = super().tensor(rng, name, dims)
            part = name.removeprefix("decoder.blocks.0.attn.")
            if part not in ("query.weight", "value.weight", "out.weight"):
                return data
            data[:] = 0  # without a query it attends to all tokens alike
            for step, (start, weight) in self.starts.items():
                if part == "value.weight":
                    data[step, step] = 1
                elif part == "out.weight":
                    data[start, step] = weight
            return data

    return Script


def write_script(data, out, loops, model="tiny", english=ENGLISH):
    """The shape of one of Whisper's models, by default the smallest."""
    names = generator(data)
    shape, vocabulary = names["SHAPES"][model], names["vocabulary"](data / "ggml-base.bin")
    args = argparse.Namespace(text=GERMAN, english=english, translated=TRANSLATED, lang="de",
                              loop=loops)
    script = without_timestamps(names["Script"])(shape, vocabulary, args)
    rng = names["np"].random.default_rng(1)
    writer = names["Writer"](out, shape, vocabulary)
    for name, dims in names["tensor_shapes"](shape):
        writer.tensor(name, script.tensor(rng, name, dims))
    writer.file.close()


def write_parakeet(data, out):
    """Two layers of the true shape; quick to load, and as deep as the library's code."""
    subprocess.run([sys.executable, data / "make_parakeet.py", "--layers", "2", out], check=True)


def main():
    """Each file gets its name when it is complete."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("folder", type=pathlib.Path)
    folder = parser.parse_args().folder
    data = pathlib.Path(os.environ.get("VOXTREL_WHISPER_DATA") or "/nonexistent")
    if not (data / "make_weights.py").is_file():
        print("not run: VOXTREL_WHISPER_DATA names no folder with make_weights.py")
        return NOT_RUN
    folder.mkdir(parents=True, exist_ok=True)
    writers = {"script.bin": lambda out: write_script(data, out, False),
               "loop.bin": lambda out: write_script(data, out, True),
               "parakeet.bin": lambda out: write_parakeet(data, out)}
    newest = max(os.stat(path).st_mtime
                 for path in (__file__, data / "make_weights.py", data / "make_parakeet.py"))
    for name, write in writers.items():
        path = folder / name
        if path.is_file() and path.stat().st_mtime > newest:
            continue
        part = path.with_suffix(".part")
        write(part)
        part.rename(path)
    return 0


if __name__ == "__main__":
    sys.exit(main())
