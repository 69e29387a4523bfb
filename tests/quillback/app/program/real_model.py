"""A home whose engine uses the published weights of base, from the folder that VOXTREL_WHISPER_DATA names."""

import json
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

from engine_program import EXECUTABLE, bare_environment
from harness.recordings import WEIGHTS, recording

# The line that says what runs.
RUNS = (r"Using Whisper\. It runs in whisper\.cpp \S+ on .+, \d+ threads?, "
        r"(native code|code as installed|code for \w+), with voice detection\.\n")
STORE = ".local/share/quillback/weights/whisper-base"


def children_of(pid):
    """The ids of the process's children, which any of its threads may have started."""
    found = []
    for path in pathlib.Path(f"/proc/{pid}/task").glob("*/children"):
        try:
            found += [int(word) for word in path.read_text().split()]
        except OSError:
            pass  # the thread has ended
    return found


def peak_kilobytes(pid):
    """The most memory that the process has used; 0 if it has ended."""
    try:
        status = pathlib.Path(f"/proc/{pid}/status").read_text()
    except OSError:
        return 0
    found = re.search(r"VmHWM:\s*(\d+) kB", status)
    return int(found.group(1)) if found else 0


@unittest.skipUnless(os.path.isfile(WEIGHTS), "VOXTREL_WHISPER_DATA names no folder with ggml-base.bin")
class RealModelCase(unittest.TestCase):
    """A home with the model, made by setup once for all tests."""

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="quillback-model-")
        cls.addClassCleanup(folder.cleanup)
        cls.model_home = pathlib.Path(folder.name)
        for words in (["setup", "--model", "base", "--file", WEIGHTS], ["use", "base"]):
            done = subprocess.run([EXECUTABLE, *words], env=bare_environment(folder.name), text=True,
                                  capture_output=True, check=False, timeout=60)
            assert done.returncode == 0, done

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="quillback-test-")
        self.addCleanup(folder.cleanup)
        self.home = pathlib.Path(folder.name)
        # The weights are shared until a test damages them.
        shutil.copytree(self.model_home, self.home, copy_function=os.link, dirs_exist_ok=True)
        self.store = self.home / STORE
        self.weights = self.store / "ggml-base.bin"
        self.environment = {**bare_environment(str(self.home)),
                            "XDG_RUNTIME_DIR": str(self.home / "run")}

    def settings(self, text):
        """The settings' text, after the choice of the model."""
        path = self.home / ".config/quillback/config.toml"
        path.unlink()
        path.write_text('[engine]\nmodel = "base"\n' + text, encoding="utf-8")

    def run_program(self, *words, **options):
        """Runs a command until it ends."""
        return subprocess.run([EXECUTABLE, *words], env=self.environment, text=True,
                              capture_output=True, check=False, timeout=300, **options)

    def transcribe(self, name, **options):
        """The run that prints the words of a recording."""
        return self.run_program("transcribe", recording(name).path, **options)

    def own_weights(self):
        """A copy of the weights, for a test that damages them."""
        self.weights.unlink()
        shutil.copyfile(WEIGHTS, self.weights)
        self.weights.chmod(0o644)

    def keep(self, names):
        """Recordings as an engine that crashed leaves them."""
        folder = self.home / "run/quillback"
        folder.mkdir(parents=True)
        for number, name in enumerate(names, 1):
            shutil.copyfile(recording(name).path, folder / f"take-{number}.wav")
        return folder

    def note_size(self):
        """Lets the manifest agree with the file's size, so that only its content is wrong."""
        path = self.store / "manifest.json"
        manifest = json.loads(path.read_text())
        manifest["files"][0]["size"] = self.weights.stat().st_size
        path.unlink()
        path.write_text(json.dumps(manifest))
