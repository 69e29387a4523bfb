"""`quillback transcribe` and long or large files."""

import os
import resource
import struct
import subprocess

from engine_program import EXECUTABLE, ProgramCase, bare_environment
from harness.processes import is_sanitized


class LargeFiles(ProgramCase):
    """`quillback transcribe` with more sound than memory."""

    def setUp(self):
        self.home = self.make_home()

    def silence(self, sample_bytes, channels, rate_hz, seconds):
        """A file of floating point zeros, or of integers where a sample has fewer bytes; without its bytes on
        the disk."""
        encoding, frame = 3 if sample_bytes == 8 else 1, sample_bytes * channels
        path = os.path.join(self.home, "silence.wav")
        with open(path, "wb") as file:
            file.write(b"RIFF\0\0\0\0WAVEfmt " + struct.pack(
                "<IHHIIHH4sI", 16, encoding, channels, rate_hz, rate_hz * frame, frame,
                8 * sample_bytes, b"data", frame * rate_hz * seconds))
            file.truncate(44 + frame * rate_hz * seconds)
        return path

    def transcribe(self, path, most_megabytes=None):
        def limit():
            size = int(most_megabytes * 2**20)
            resource.setrlimit(resource.RLIMIT_AS, (size, size))
        with subprocess.Popen([EXECUTABLE, "transcribe", path], env=bare_environment(self.home),
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                              preexec_fn=limit if most_megabytes else None) as process:
            output, errors = process.communicate(timeout=100)
            self.assertEqual(output, "")
            return process.returncode, errors

    def peak_megabytes(self, path):
        """The most memory that recognising the file took."""
        command = [EXECUTABLE, "transcribe", path]
        child = os.posix_spawn(EXECUTABLE, command, bare_environment(self.home), file_actions=[
            (os.POSIX_SPAWN_OPEN, 2, "/dev/null", os.O_WRONLY, 0)])
        _, status, usage = os.wait4(child, 0)
        self.assertEqual(os.waitstatus_to_exitcode(status), 0)
        return usage.ru_maxrss / 1024

    def test_of_many_hours_is_refused_with_one_line(self):
        status, errors = self.transcribe(self.silence(1, 1, 1000, 100_000))
        self.assertEqual(status, 7)
        self.assertRegex(errors, r"\ACannot read \".+\": its sound is 28 hours long; the limit is 12 hours\n\Z")

    def test_takes_no_more_memory_than_a_small_one(self):
        small = self.peak_megabytes(self.silence(2, 1, 16000, 1))
        large = self.peak_megabytes(self.silence(4, 4, 192000, 60))
        self.assertLess(large - small, 64)

    # A sanitizer reserves all memory there is.
    if not is_sanitized(EXECUTABLE):
        def test_without_memory_ends_with_one_line_and_a_status(self):
            missing = os.path.join(self.home, "missing.wav")
            little, enough = 1, 500
            while enough - little > 0.25:
                middle = (little + enough) / 2
                if self.transcribe(missing, middle)[0] == 3:
                    enough = middle
                else:
                    little = middle
            # A block of this file takes a megabyte more.
            status, errors = self.transcribe(self.silence(8, 32, 16000, 10), enough)
            self.assertEqual(status, 12, errors)
            self.assertEqual(errors.splitlines()[-1], "quillback: there is not enough memory.")
