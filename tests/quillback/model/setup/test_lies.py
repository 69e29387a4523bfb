"""Setup against a server or a disk that gives other bytes than the file's: none is believed, and what is
right is kept."""

import json
import shutil
import unittest

from model_server import (bytes_of, cut, honest, in_chunks, partial, promised,
                          stalling_without_length, status)
from setup_case import CONTENT, HTTP, INTERRUPTED, NETWORK, WRONG_FILE, SetupCase


class LyingServer(SetupCase):
    LIES = ("bytes 999-2999999/3000000", "bytes 1001-2999999/3000000", "bytes 0-2999999/3000000",
            "bytes 1000-2999998/3000000", "bytes 1000-2999999/3000001", "bytes 1000-2999999/*",
            "bytes */3000000", "bytes 2999999-1000/3000000", "nonsense", "")

    def test_about_ranges_is_asked_for_the_whole_file(self):
        for lie in self.LIES:
            with self.subTest(lie):
                shutil.rmtree(self.folder, ignore_errors=True)
                self.leave(CONTENT[:1000])
                # The bytes are right; only the headers are wrong.
                self.server.script = [partial(lie)]
                self.server.requests.clear()
                run = self.setup()
                self.assert_ready(run)
                self.assertEqual(self.server.ranges(), ["bytes=1000-", None])
                self.assertIn("The server's answer does not fit what was asked; starting again.",
                              run.log)

    def test_about_a_range_that_was_not_requested_is_not_believed(self):
        self.server.default = partial("bytes 0-2999999/3000000")
        self.assert_ends(self.setup(), HTTP, "other parts of the file")
        self.assertEqual(self.server.ranges(), [None] * 4)

    def test_about_the_version_is_not_believed(self):
        self.leave(CONTENT[:1000])
        self.server.script = [partial("bytes 1000-2999999/3000000", b"x" * 2999000)]
        self.server.etag = '"version-2"'
        self.assert_ready(self.setup())
        self.assertEqual(self.server.ranges(), ["bytes=1000-", None])

    def test_without_such_a_range_is_asked_for_the_whole_file(self):
        self.leave(CONTENT[:1000])
        self.server.script = [bytes_of(b"", 416, Content_Range="bytes */900")]
        self.assert_ready(self.setup())
        self.assertEqual(self.server.ranges(), ["bytes=1000-", None])

    def test_with_wrong_bytes_leaves_nothing(self):
        self.server.content = CONTENT[:-1] + bytes([CONTENT[-1] ^ 1])
        run = self.setup()
        self.assert_ends(run, WRONG_FILE, "SHA-256 is wrong")
        for path in (self.part, self.record, self.weights, self.manifest):
            self.assertFalse(path.exists(), path)
        self.server.content = CONTENT
        self.assert_ready(self.setup())
        self.assertEqual(self.server.ranges(), [None, None])

    def test_with_wrong_bytes_in_the_rest_only_is_found_out(self):
        self.leave(CONTENT[:1000])
        self.server.script = [partial("bytes 1000-2999999/3000000", b"x" * 2999000)]
        run = self.setup()
        self.assert_ready(run)
        self.assertEqual(self.server.ranges(), ["bytes=1000-", None])
        self.assertIn("The server's file differs from what has arrived after 0 MB; the rest is replaced.",
                      run.log)

    def test_with_wrong_bytes_in_every_rest_leaves_nothing(self):
        self.leave(CONTENT[:1000])
        self.server.content = CONTENT[:1000] + b"x" * 2999000
        self.assert_ends(self.setup(), WRONG_FILE, "SHA-256 is wrong")
        self.assertFalse(self.part.exists())
        self.assertLessEqual(len(self.server.requests), 3)

    def test_with_a_file_of_another_length_is_refused_at_once(self):
        for length in (2_999_999, 3_000_001):
            self.server.script = [bytes_of(b"x" * 10, Content_Length=length)]
            self.assert_ends(self.setup(), WRONG_FILE, f"{length} bytes instead of 3000000")

    def test_that_sends_too_much_is_refused(self):
        self.server.default = bytes_of(CONTENT + b"more")
        self.assert_ends(self.setup(), WRONG_FILE, "more than the expected file")
        self.assertEqual(self.part.stat().st_size, 0)

    def test_has_nothing_that_fits_the_real_pin(self):
        self.assert_ends(self.setup(pin=False), WRONG_FILE,
                         "3000000 bytes instead of 3095033483")


class PageInPlaceOfTheFile(SetupCase):
    """What a proxy or the login page of a network sends."""

    PAGE = b"<html>Blocked.</html>" * 100
    HAVE = CONTENT[:2_900_000]

    def check_part(self, run, text):
        """The part and its record are as they were, and the message is true."""
        self.assert_ends(run, HTTP, text)
        self.assertIn("what has arrived is kept", run.lines[-1])
        self.assertEqual(self.part.read_bytes(), self.HAVE)
        self.assertEqual(json.loads(self.record.read_text())["etag"], '"version-1"')
        self.server.default = honest
        self.server.requests.clear()
        self.assert_ready(self.setup())
        self.assertEqual(self.server.ranges(), ["bytes=2900000-"])

    def test_does_not_replace_a_part(self):
        self.leave(self.HAVE)
        self.server.default = in_chunks(self.PAGE)
        self.check_part(self.setup(), "sends something else than ggml-large-v3.bin")

    def test_does_not_replace_a_part_even_if_it_names_a_version(self):
        self.leave(self.HAVE)
        self.server.default = in_chunks(self.PAGE, ETag='"page"')
        self.check_part(self.setup(), "sends something else than ggml-large-v3.bin")

    def test_is_named_by_its_type(self):
        self.leave(self.HAVE)
        self.server.default = in_chunks(self.PAGE, Content_Type="Text/HTML; charset=utf-8")
        before = len(self.server.requests)
        run = self.setup()
        self.assertEqual(len(self.server.requests), before + 1)
        self.check_part(run, "answered with a web page instead of ggml-large-v3.bin")

    def test_leaves_nothing_where_nothing_was(self):
        self.server.default = in_chunks(self.PAGE)
        run = self.setup()
        self.assert_ends(run, NETWORK, "before the file was whole")
        self.assertNotIn("kept", run.lines[-1])
        self.assertEqual(self.part.stat().st_size, 0)
        self.assertEqual(self.server.ranges(), [None] * 4)
        self.server.default = honest
        self.assert_ready(self.setup())

    def test_that_names_a_version_leaves_nothing_either(self):
        self.server.default = in_chunks(self.PAGE, ETag='"page"')
        self.assert_ends(self.setup(), NETWORK, "before the file was whole")
        self.assertEqual(self.part.stat().st_size, 0)

    def test_as_an_earlier_version_left_it_is_dropped(self):
        self.leave(self.PAGE, etag="", last_modified="")
        self.assert_ready(self.setup())
        self.assertEqual(self.server.ranges(), [None])

    def test_that_only_begins_is_not_kept_after_a_stop(self):
        self.server.default = stalling_without_length(self.PAGE)
        process = self.start()
        self.assertIn("Downloading", process.stdout.readline())
        self.assertIn("MB /", process.stdout.readline())
        process.terminate()
        run = self.finish(process)
        self.assert_ends(run, INTERRUPTED)
        self.assertNotIn("kept", run.lines[-1])
        self.assertEqual(self.part.stat().st_size, 0)


class Blocks(SetupCase):
    """The hashes beside the part."""

    def download_some(self, count):
        """A setup that ends after `count` bytes."""
        self.server.script = [cut(count), status(404)]
        self.assert_ends(self.setup(), HTTP)
        self.assertEqual(self.part.stat().st_size, count)
        self.server.requests.clear()

    def spoil(self, offset):
        content = bytearray(self.part.read_bytes())
        content[offset] ^= 1
        self.part.write_bytes(content)

    def test_find_the_block_that_the_disk_has_changed(self):
        self.download_some(1_000_000)
        self.server.script = [cut(1_000_000), status(404)]
        self.assert_ends(self.setup(), HTTP)
        self.spoil(1_500_000)
        self.server.requests.clear()
        run = self.setup()
        self.assert_ready(run)
        self.assertIn("1 MB of it cannot be relied on and will be downloaded again.", run.log)
        self.assertEqual(self.server.ranges(), ["bytes=1000000-"])

    def test_let_a_part_without_a_version_be_resumed(self):
        self.server.script = [promised(CONTENT, 1_000_000), status(404)]
        self.assert_ends(self.setup(), HTTP)
        self.server.requests.clear()
        self.assert_ready(self.setup())
        self.assertEqual(self.server.ranges(), ["bytes=1000000-"])
        self.assertNotIn("If-Range", self.server.requests[0][1])

    def test_that_are_damaged_are_not_believed(self):
        for damage in ("", "0 1000000 " + "0" * 64 + "\n", "0 9999999999 " + "0" * 64 + "\n", "x\n",
                       "0 10"):
            with self.subTest(damage):
                self.setUp()
                self.download_some(1_000_000)
                self.blocks.write_text(damage)
                self.assert_ready(self.setup())

    def test_of_a_part_whose_unverified_end_is_wrong_keep_the_rest(self):
        self.download_some(1_000_000)
        # The end was written, but a crash came before its hash.
        self.part.write_bytes(CONTENT[:1_000_000] + bytes(500_000))
        run = self.setup()
        self.assert_ready(run)
        self.assertEqual(self.server.ranges(), ["bytes=1500000-", "bytes=1000000-"])


if __name__ == "__main__":
    unittest.main()
