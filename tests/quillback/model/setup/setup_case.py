"""A home folder, a server and runs of setup, for its tests."""

import hashlib
import json
import os
import pathlib
import random
import re
import shutil
import subprocess
import tempfile
import time
import unittest

import model_server

PROGRAM = os.environ["QUILLBACK_SMALL_MODEL"]
CONTENT = random.Random(7).randbytes(3_000_000)
SHA256 = hashlib.sha256(CONTENT).hexdigest()
VOICE_NAME = "ggml-silero-v6.2.0.bin"
VOICE = random.Random(8).randbytes(50_000)
VOICE_SHA256 = hashlib.sha256(VOICE).hexdigest()
PROGRESS = re.compile(r"[\d]+\.\d MB / 3\.0 MB \([\d]+\.\d%\)")

DONE, USAGE, NETWORK, HTTP, NO_SPACE, UNWRITABLE, WRONG_FILE, LOCKED, INTERRUPTED = (
    0, 2, 3, 4, 5, 6, 7, 8, 9)
ABSENT, EMBEDDED, COMPLETE, DAMAGED = "absent", "embedded", "complete", "damaged"


class Run:
    """One finished run of setup."""

    def __init__(self, status, output, seconds):
        self.status = status
        self.lines = output.splitlines()
        self.seconds = seconds
        self.progress = [line for line in self.lines if "MB /" in line]
        self.log = [line for line in self.lines if "MB /" not in line]

    def __repr__(self):
        return f"status {self.status} after {self.seconds:.2f} s: {self.lines}"


class SetupCase(unittest.TestCase):
    def setUp(self):
        self.home = pathlib.Path(tempfile.mkdtemp(prefix="setup-"))
        self.addCleanup(shutil.rmtree, self.home, ignore_errors=True)
        self.look_at("large-v3")
        self.server = self.serve(CONTENT)

    def tearDown(self):
        self.check_promise()

    def look_at(self, model):
        """Makes this model the one that the tests and their checks are about."""
        self.model = model
        self.folder = self.home / f".local/share/quillback/weights/whisper-{model}"
        self.weights = self.folder / f"ggml-{model}.bin"
        self.part = self.folder / f"ggml-{model}.bin.part"
        self.record = self.folder / f"ggml-{model}.bin.part.json"
        self.blocks = self.folder / f"ggml-{model}.bin.part.blocks"
        self.manifest = self.folder / "manifest.json"
        self.voice = self.folder / VOICE_NAME

    def serve(self, content, **options):
        server = model_server.ModelServer(content, beside={VOICE_NAME: VOICE}, **options)
        self.addCleanup(server.close)
        return server

    def start(self, *words, whisper="on", pin=True, small_voice=True, url=None, prefix=(),
              **options):
        """Starts setup of the small model against this test's server."""
        size = []
        if small_voice:
            size += ["--voice-bytes", str(len(VOICE)), "--voice-sha256", VOICE_SHA256]
        if pin:
            size += ["--bytes", str(len(CONTENT)), "--sha256", SHA256]
        environment = {name: value for name, value in os.environ.items()
                       if not name.lower().endswith("_proxy")}
        environment["QUILLBACK_MODEL_URL"] = self.server.url if url is None else url
        process = subprocess.Popen(
            [*prefix, PROGRAM, "--home", str(self.home), "--whisper", whisper, *size,
             "--retry-ms", "5", *words],
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
            env=environment, **options)
        process.started = time.monotonic()
        self.addCleanup(self.end, process)
        return process

    @staticmethod
    def end(process):
        if process.poll() is None:
            process.kill()
            process.wait()
        process.stdout.close()

    @staticmethod
    def finish_any(process):
        """The run of setup with files of any size."""
        output, _ = process.communicate(timeout=60)
        return Run(process.returncode, output, time.monotonic() - process.started)

    def finish(self, process):
        run = self.finish_any(process)
        for line in run.progress:
            self.assertRegex(line, rf"\A{PROGRESS.pattern}\Z")
        return run

    def setup(self, *words, **options):
        return self.finish(self.start(*words, **options))

    def assert_ends(self, run, status, text=""):
        """Checks the status and the one line that says why."""
        self.assertEqual(run.status, status, run)
        if status != DONE:
            self.assertRegex(run.lines[-1], r"\ASetup (failed: |was interrupted\.)", run)
            self.assertEqual(sum("Setup " in line for line in run.lines), 1, run)
        self.assertIn(text, run.lines[-1], run)

    def assert_ready(self, run):
        """Checks that the run succeeded and the store is complete."""
        self.assert_ends(run, DONE)
        self.assertEqual(self.weights.read_bytes(), CONTENT)
        self.assertEqual(self.state(), COMPLETE)
        names = {path.name for path in self.folder.iterdir()}
        self.assertEqual(names, {self.weights.name, VOICE_NAME, "manifest.json", "setup.lock"})
        self.assertEqual(self.voice_seen(), str(self.voice))

    def inspect(self):
        """How the recogniser sees the store: a word, the weights, the voice detection."""
        output = subprocess.run(
            [PROGRAM, "--home", self.home, "--model", self.model, "--inspect", "yes"], check=True,
            capture_output=True, text=True).stdout
        return output.rstrip("\n").split("|")

    def state(self):
        kind, path, _ = self.inspect()
        if kind == COMPLETE:
            self.assertEqual(path, str(self.weights))
        return kind

    def voice_seen(self):
        return self.inspect()[2]

    def check_promise(self):
        """Checks that the files that a manifest names exist."""
        if not self.manifest.is_file():
            return
        manifest = json.loads(self.manifest.read_text())
        for entry in manifest["files"]:
            content = (self.folder / entry["name"]).read_bytes()
            self.assertEqual(hashlib.sha256(content).hexdigest(), entry["sha256"])

    def leave(self, content, record=True, sha256=SHA256, etag=model_server.ETAG,
              last_modified=model_server.LAST_MODIFIED):
        """Creates what an earlier setup leaves: a part and its record."""
        self.folder.mkdir(parents=True, exist_ok=True)
        self.part.write_bytes(content)
        if record:
            self.record.write_text(json.dumps(
                {"sha256": sha256, "etag": etag, "last_modified": last_modified}))
