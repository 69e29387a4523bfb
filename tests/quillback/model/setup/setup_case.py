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
        self.folder = self.home / ".local/share/quillback/weights/whisper-large-v3"
        self.weights = self.folder / "ggml-large-v3.bin"
        self.part = self.folder / "ggml-large-v3.bin.part"
        self.record = self.folder / "ggml-large-v3.bin.part.json"
        self.manifest = self.folder / "manifest.json"
        self.server = self.serve(CONTENT)

    def tearDown(self):
        self.check_promise()

    def serve(self, content, **options):
        server = model_server.ModelServer(content, **options)
        self.addCleanup(server.close)
        return server

    def start(self, *words, whisper="on", pin=True, url=None, prefix=(), **options):
        """Starts setup of the small model against this test's server."""
        size = ["--bytes", str(len(CONTENT)), "--sha256", SHA256] if pin else []
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

    def finish(self, process):
        output, _ = process.communicate(timeout=60)
        run = Run(process.returncode, output, time.monotonic() - process.started)
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
        self.assertEqual(names, {"ggml-large-v3.bin", "manifest.json", "setup.lock"})

    def state(self):
        """How the recogniser sees the store."""
        output = subprocess.run([PROGRAM, "--home", self.home, "--inspect", "yes"], check=True,
                                capture_output=True, text=True).stdout
        kind, path = output.rstrip("\n").split("|", 1)
        if kind == COMPLETE:
            self.assertEqual(path, str(self.weights))
        return kind

    def check_promise(self):
        """Checks that the files that a manifest names exist."""
        if not self.manifest.is_file():
            return
        manifest = json.loads(self.manifest.read_text())
        for entry in manifest["files"]:
            content = (self.folder / entry["name"]).read_bytes()
            self.assertEqual(hashlib.sha256(content).hexdigest(), entry["sha256"])

    def leave(self, content, record=True, sha256=SHA256, etag=model_server.ETAG):
        """Creates what an earlier setup leaves: a part and its record."""
        self.folder.mkdir(parents=True, exist_ok=True)
        self.part.write_bytes(content)
        if record:
            self.record.write_text(json.dumps(
                {"sha256": sha256, "etag": etag, "last_modified": model_server.LAST_MODIFIED}))
