"""An installed engine whose library has its code for kinds of processors in modules: which one is used, and
what follows where one of them ends its process. Without VOXTREL_WHISPER_DATA nothing is tried, which the
exit status says."""

import json
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

from engine_program import EXECUTABLE
from real_model import RUNS, RealModelCase

# A module that claims to be the best, says that it was loaded, and ends the process like one whose
# instructions the processor refuses.
TRAP = """
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>
__attribute__((constructor)) static void note(void) { close(open("%s", O_CREAT | O_WRONLY, 0600)); }
int ggml_backend_score(void) { return 1000000; }
void *ggml_backend_init(void) { raise(SIGILL); return 0; }
"""


class ProcessorModules(RealModelCase):
    """The program is installed into a folder of the test's."""

    def setUp(self):
        super().setUp()
        prefix = self.home / "installed"
        build = pathlib.Path(EXECUTABLE).parent.parent
        subprocess.run(["cmake", "--install", build, "--prefix", prefix, "--component", "quillback"],
                       check=True, stdout=subprocess.DEVNULL)
        self.program = prefix / "bin/quillback"
        best, = prefix.glob("lib*/**/libggml-base.so.0")
        self.modules = best.parent
        # The recogniser's process may write to /dev only.
        self.mark = pathlib.Path(tempfile.mktemp(prefix="quillback-test-", dir="/dev/shm"))
        self.addCleanup(self.mark.unlink, missing_ok=True)
        self.trap = self.home / "trap.so"
        source = self.home / "trap.c"
        source.write_text(TRAP % self.mark)
        subprocess.run(["cc", "-shared", "-fPIC", "-o", self.trap, source], check=True)

    def run_installed(self, *words, folder="/"):
        """Runs a command in `folder`."""
        return subprocess.run([self.program, *words], env=self.environment, cwd=folder, text=True,
                              capture_output=True, check=False, timeout=120)

    def hear(self, folder="/"):
        """The words of a recording, and what else was printed."""
        done = self.run_installed("transcribe", f"{os.environ['VOXTREL_WHISPER_DATA']}/speech/en_jfk.wav",
                                  folder=folder)
        self.assertEqual(done.returncode, 0, done)
        return done.stdout, done.stderr

    def kind(self):
        """The kind of processor whose code runs."""
        done = self.run_installed("models", "--json")
        self.assertEqual(done.returncode, 0, done)
        return re.search(r", code for (\w+)\b", json.loads(done.stdout)["runs_on"]).group(1)

    def test_the_best_code_for_this_processor_is_used(self):
        words, notes = self.hear()
        self.assertIn("country", words)
        self.assertRegex(notes, rf"\A{RUNS}\Z")
        best = self.kind()
        self.assertNotEqual(best, "x64", "this processor has no more than any other")
        (self.modules / f"libggml-cpu-{best}.so").unlink()
        self.assertNotEqual(self.kind(), best)

    def test_after_code_that_the_processor_refuses_the_next_best_is_used(self):
        best = self.kind()
        shutil.copy(self.trap, self.modules / "libggml-cpu-trap.so")
        words, notes = self.hear()
        self.assertTrue(self.mark.exists(), "the module was never tried")
        self.assertIn("country", words)
        self.assertRegex(notes, rf"\A{RUNS}\Z")
        self.assertEqual(self.kind(), best)

    def test_without_code_that_runs_the_embedded_recogniser_is_used(self):
        for module in self.modules.glob("libggml-cpu-*.so"):
            shutil.copy(self.trap, module)
        words, notes = self.hear()
        self.assertTrue(words.strip())
        errors = [line for line in notes.splitlines() if "ERROR" in line]
        self.assertEqual(len(errors), 1, notes)
        self.assertRegex(errors[0], "illegal instruction.*the embedded English recogniser is used")
        self.assertEqual(self.run_installed("models").returncode, 0)

    def test_no_module_is_loaded_from_the_current_folder(self):
        folder = self.home / "current"
        folder.mkdir()
        for module in self.modules.iterdir():
            shutil.copy(self.trap, folder / module.name)
        shutil.copy(self.trap, folder / "libggml-cpu-trap.so")
        self.assertIn("country", self.hear(folder)[0])
        self.assertEqual(self.run_installed("models", folder=folder).returncode, 0)
        self.assertFalse(self.mark.exists())


if __name__ == "__main__":
    unittest.main()
