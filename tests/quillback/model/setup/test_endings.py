"""Setup that is killed, told to stop, or run twice at once."""

import json
import os
import random
import signal
import subprocess
import time
import unittest

from model_server import paced, silent, stall, status
from setup_case import CONTENT, DONE, INTERRUPTED, SetupCase

LIMIT_SECONDS = float(os.environ["QUILLBACK_END_SECONDS"])
SLOW = paced(30_000, 0.002)


class KilledSetup(SetupCase):
    STEPS = ("locked", "recorded", "progress", "downloaded", "verified", "renamed", "manifest")

    def test_after_any_step_is_finished_by_the_next(self):
        for step in self.STEPS:
            with self.subTest(step):
                self.setUp()
                process = self.start("--die-at", step)
                self.finish(process)
                self.assertEqual(process.returncode, -signal.SIGKILL)
                self.check_promise()
                self.assertEqual(self.manifest.exists(), step == "manifest")
                self.server.requests.clear()
                self.assert_ready(self.setup())
                # What was downloaded is not downloaded again.
                if step in ("downloaded", "verified", "renamed", "manifest"):
                    self.assertEqual(self.server.requests, [])

    def test_during_the_download_is_resumed(self):
        self.server.script = [SLOW]
        self.finish(self.start("--die-at", "progress:2"))
        have = self.part.stat().st_size
        self.assertGreater(have, 0)
        self.assert_ready(self.setup())
        self.assertEqual(self.server.ranges(), [None, f"bytes={have}-"])

    def test_while_a_damaged_store_is_repaired_leaves_no_manifest(self):
        for step in self.STEPS[:-1]:
            with self.subTest(step):
                self.setUp()
                self.setup()
                self.weights.write_bytes(CONTENT[:-1])
                self.finish(self.start("--die-at", step))
                if step != "locked":
                    self.assertFalse(self.manifest.exists())
                self.assert_ready(self.setup())

    def test_at_random_moments_is_finished_by_the_next(self):
        moments = random.Random(11)
        self.server.default = SLOW
        whole = self.setup().seconds
        self.weights.unlink()
        self.manifest.unlink()
        killed = 0
        for _ in range(30):
            process = self.start()
            try:
                process.wait(moments.uniform(0, whole))
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
            killed += process.returncode == -signal.SIGKILL
            process.stdout.close()
            self.check_promise()
            if self.manifest.exists():
                self.assertEqual(self.weights.read_bytes(), CONTENT)
                self.weights.unlink()
                self.manifest.unlink()
        self.assertGreater(killed, 10)
        self.assert_ready(self.setup())

    def test_at_random_moments_while_writing_the_manifest_is_finished_by_the_next_one(self):
        moments = random.Random(12)
        self.leave(CONTENT)
        started = time.monotonic()
        self.setup()
        whole = time.monotonic() - started
        for _ in range(30):
            self.manifest.unlink(missing_ok=True)
            process = self.start()
            try:
                process.wait(moments.uniform(0, whole))
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
            process.stdout.close()
            if self.manifest.exists():
                self.assertEqual(json.loads(self.manifest.read_text())["format"], 1)
        self.assert_ready(self.setup())
        self.assertEqual(self.server.requests, [])


class ToldToStop(SetupCase):
    def stop(self, process, number=signal.SIGTERM):
        """Tells it to stop; returns the run, which must be over soon."""
        told = time.monotonic()
        process.send_signal(number)
        run = self.finish(process)
        self.assertLess(time.monotonic() - told, LIMIT_SECONDS)
        self.assert_ends(run, INTERRUPTED)
        return run

    def test_in_mid_download_keeps_what_has_arrived(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(number):
                self.setUp()
                self.server.script = [stall(1_000_000)]
                process = self.start()
                self.assertIn("Downloading", process.stdout.readline())
                self.assertIn("MB /", process.stdout.readline())
                self.stop(process, number)
                have = self.part.read_bytes()
                self.assertEqual(have, CONTENT[:len(have)])
                self.assertGreater(len(have), 0)
                self.assert_ready(self.setup())
                self.assertEqual(self.server.ranges(), [None, f"bytes={len(have)}-"])

    def test_by_an_ignored_signal_continues_to_its_end(self):
        for number, name in ((signal.SIGHUP, "HUP"), (signal.SIGINT, "INT")):
            with self.subTest(name):
                self.setUp()
                self.server.script = [SLOW]
                process = self.start(prefix=("/bin/sh", "-c", f'trap "" {name}; exec "$@"', "sh"))
                self.assertIn("Downloading", process.stdout.readline())
                self.assertIn("MB /", process.stdout.readline())
                process.send_signal(number)
                self.assert_ready(self.finish(process))
                self.assertEqual(len(self.server.requests), 1)

    def test_while_data_flows_ends(self):
        self.server.script = [paced(3000, 0.005)]
        process = self.start()
        process.stdout.readline()
        process.stdout.readline()
        self.stop(process)

    def test_while_the_server_says_nothing_ends(self):
        self.server.script = [silent]
        process = self.start()
        self.server.wait_for_request()
        self.stop(process)

    def test_before_the_next_try_ends(self):
        self.server.default = status(503)
        process = self.start("--retry-ms", "60000")
        process.stdout.readline()
        self.assertIn("trying again", process.stdout.readline())
        self.stop(process)

    def test_while_waiting_for_another_setup_ends(self):
        self.server.script = [silent]
        first = self.start()
        self.server.wait_for_request()
        second = self.start()
        self.assertEqual(second.stdout.readline(),
                         "Another setup is running; waiting for it.\n")
        self.stop(second)
        self.stop(first)


class TwoSetups(SetupCase):
    def test_at_once_download_once(self):
        self.server.script = [SLOW]
        first = self.start()
        self.server.wait_for_request()
        second = self.start()
        self.assertEqual(second.stdout.readline(),
                         "Another setup is running; waiting for it.\n")
        run = self.finish(second)
        self.assertEqual(run.lines,
                         ["The weights of large-v3 are complete already; nothing to do."])
        self.assert_ready(self.finish(first))
        self.assertEqual(run.status, DONE)
        self.assertEqual(len(self.server.requests), 1)

    def test_of_which_the_first_dies_end_with_the_second_resuming(self):
        self.server.script = [stall(1_000_000)]
        first = self.start()
        first.stdout.readline()
        self.assertIn("MB /", first.stdout.readline())
        second = self.start()
        second.stdout.readline()
        first.kill()
        self.assert_ready(self.finish(second))
        self.assertRegex(self.server.ranges()[-1], r"\Abytes=[1-9]\d*-\Z")

    def test_are_not_blocked_by_the_lock_of_a_dead_one(self):
        self.finish(self.start("--die-at", "locked"))
        run = self.setup()
        self.assert_ready(run)
        self.assertNotIn("waiting", "".join(run.lines))

    def test_that_download_nothing_wait_as_well(self):
        self.server.script = [SLOW]
        first = self.start()
        self.server.wait_for_request()
        run = self.setup(whisper="off")
        self.assertEqual(run.lines[0], "Another setup is running; waiting for it.")
        self.assert_ready(self.finish(first))


if __name__ == "__main__":
    unittest.main()
