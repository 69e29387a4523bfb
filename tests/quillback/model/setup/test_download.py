"""Setup that succeeds: what it stores, what it prints, what it resumes."""

import json
import os
import time
import unittest

from model_server import (ETAG, LAST_MODIFIED, bytes_of, chunked, cut, ignoring_ranges, paced,
                          promised, redirect)
from setup_case import (COMPLETE, CONTENT, DONE, EMBEDDED, SHA256, UNWRITABLE, USAGE, VOICE, VOICE_NAME,
                        VOICE_SHA256, SetupCase)

PATH = ("/ggerganov/whisper.cpp/resolve/5359861c739e955e79d9a303bcbc70fb988958b1/"
        "ggml-large-v3.bin")


class FreshDownload(SetupCase):
    def test_stores_the_weights_and_a_manifest_that_names_them(self):
        run = self.setup()
        self.assert_ready(run)
        self.assertEqual([path for path, _ in self.server.requests], [PATH])
        self.assertEqual(json.loads(self.manifest.read_text()), {
            "format": 1, "model": "large-v3", "recogniser": "whisper",
            "files": [{"name": "ggml-large-v3.bin", "size": 3000000, "sha256": SHA256},
                      {"name": VOICE_NAME, "size": len(VOICE), "sha256": VOICE_SHA256}],
            "written_by": "quillback 0.0.1"})
        self.assertEqual(run.log, [
            f"Downloading ggml-large-v3.bin from {self.server.host}.",
            "The weights of large-v3 are complete."])
        self.assertEqual(run.progress[-1], "3.0 MB / 3.0 MB (100.0%)")
        self.assertEqual(self.server.ranges(), [None])

    def test_prints_progress_at_most_ten_times_a_second(self):
        self.server.script = [paced(20_000, 0.01)]
        run = self.setup()
        self.assert_ready(run)
        self.assertGreater(len(run.progress), 6)
        self.assertLessEqual(len(run.progress), 10 * run.seconds)
        self.assertEqual(run.progress[-1], "3.0 MB / 3.0 MB (100.0%)")
        self.assertEqual(sum("(100.0%)" in line for line in run.progress), 1)

    def test_accepts_a_reply_without_a_length(self):
        self.server.script = [bytes_of(CONTENT)]
        self.assert_ready(self.setup())

    def test_accepts_a_chunked_reply(self):
        self.server.script = [chunked]
        self.assert_ready(self.setup())

    def test_follows_redirects_to_another_server(self):
        other = self.serve(CONTENT)
        self.server.script = [redirect("/elsewhere", 307), redirect(other.url + "/signed?x=1")]
        self.assert_ready(self.setup())
        self.assertEqual([path for path, _ in self.server.requests], [PATH, "/elsewhere"])
        self.assertEqual([path for path, _ in other.requests], ["/signed?x=1"])

    def test_accepts_a_slash_at_the_end_of_the_address(self):
        self.assert_ready(self.setup(url=self.server.url + "/"))
        self.assertEqual([path for path, _ in self.server.requests], [PATH])

    def test_finishes_even_if_its_output_is_closed(self):
        self.server.script = [paced(300_000, 0.02)]
        process = self.start()
        process.stdout.readline()
        process.stdout.close()
        self.assertEqual(process.wait(60), DONE)
        self.assertEqual(self.weights.read_bytes(), CONTENT)


class CompleteModel(SetupCase):
    def test_is_not_downloaded_again(self):
        self.setup()
        run = self.setup()
        self.assertEqual(run.lines, ["The weights of large-v3 are complete already; nothing to do."])
        self.assert_ready(run)
        self.assertEqual(len(self.server.requests), 1)

    def test_of_another_version_is_replaced(self):
        self.setup()
        text = self.manifest.read_text()
        self.weights.write_bytes(b"old")
        self.manifest.write_text(text.replace("3000000", "3").replace(SHA256, "0" * 64))
        self.assertEqual(self.state(), COMPLETE)
        self.assert_ready(self.setup())

    def test_without_its_weights_is_repaired(self):
        self.setup()
        self.weights.unlink()
        run = self.setup()
        self.assert_ready(run)
        self.assertEqual(run.log[0], "The store is damaged or of another version; repairing it.")

    def test_with_a_damaged_manifest_is_verified_and_not_downloaded(self):
        self.setup()
        self.manifest.write_text("{")
        self.assert_ready(self.setup())
        self.assertEqual(len(self.server.requests), 1)

    def test_without_its_manifest_is_verified_and_not_downloaded(self):
        self.setup()
        self.manifest.unlink()
        run = self.setup()
        self.assert_ready(run)
        self.assertEqual(run.lines, ["Checking the weights that are there.",
                                     "The weights of large-v3 are complete."])
        self.assertEqual(len(self.server.requests), 1)

    def test_without_its_manifest_may_be_a_link(self):
        self.folder.mkdir(parents=True)
        for link, content in ((self.weights, CONTENT), (self.voice, VOICE)):
            target = self.home / ("elsewhere-" + link.name)
            target.write_bytes(content)
            target.chmod(0o444)
            link.symlink_to(target)
        self.assert_ready(self.setup())
        self.assertTrue(self.weights.is_symlink() and self.voice.is_symlink())
        self.assertEqual(self.server.requests, [])

    def test_without_its_manifest_may_be_a_read_only_file_of_another_owner(self):
        self.folder.mkdir(parents=True)
        for path, content in ((self.weights, CONTENT), (self.voice, VOICE)):
            path.write_bytes(content)
            path.chmod(0o444)
            if not os.geteuid():
                os.chown(path, 65534, 65534)
        # Permissions do not apply to root unless it gives up that capability.
        prefix = ["setpriv", "--bounding-set", "-dac_override"] if not os.geteuid() else []
        self.assert_ready(self.setup(prefix=prefix))
        self.assertEqual(self.server.requests, [])

    def test_as_a_link_to_wrong_bytes_is_replaced_and_its_target_stays(self):
        self.folder.mkdir(parents=True)
        target = self.home / "elsewhere"
        target.write_bytes(bytes(len(CONTENT)))
        self.weights.symlink_to(target)
        self.assert_ready(self.setup())
        self.assertFalse(self.weights.is_symlink())
        self.assertEqual(target.read_bytes(), bytes(len(CONTENT)))

    def test_that_cannot_be_read_is_named(self):
        self.setup()
        self.manifest.unlink()
        self.weights.chmod(0)
        prefix = ["setpriv", "--bounding-set", "-dac_override,-dac_read_search"]
        run = self.setup(prefix=prefix if not os.geteuid() else [])
        self.weights.chmod(0o644)
        self.assert_ends(run, UNWRITABLE, f"{self.weights} cannot be read (Permission denied)")

    def test_without_its_manifest_does_not_need_the_part(self):
        self.leave(CONTENT[:1000])
        self.weights.write_bytes(CONTENT)
        self.assert_ready(self.setup())
        self.assertEqual(self.server.requests, [])

    def test_without_its_manifest_and_with_wrong_bytes_is_downloaded(self):
        self.folder.mkdir(parents=True)
        for wrong in (bytes(len(CONTENT)), b"short"):
            self.weights.write_bytes(wrong)
            self.manifest.unlink(missing_ok=True)
            self.assert_ready(self.setup())
        self.assertEqual(len(self.server.requests), 2)


class EarlierPart(SetupCase):
    def test_is_resumed_where_it_ends(self):
        self.leave(CONTENT[:1_234_567])
        run = self.setup()
        self.assert_ready(run)
        headers = self.server.requests[0][1]
        self.assertEqual(headers["Range"], "bytes=1234567-")
        self.assertEqual(headers["If-Range"], ETAG)
        self.assertEqual(run.log[:2], [
            "Checking the 2 MB that an earlier setup has downloaded.",
            f"Downloading the rest of ggml-large-v3.bin from {self.server.host}."])
        self.assertRegex(run.progress[0], r"^[123]\.\d MB / ")

    def test_with_a_weak_tag_is_compared_by_its_time(self):
        self.leave(CONTENT[:1000], etag='W/"version-1"')
        self.server.etag = 'W/"version-1"'
        self.assert_ready(self.setup())
        self.assertEqual(self.server.requests[0][1]["If-Range"], LAST_MODIFIED)
        self.assertEqual(self.server.ranges(), ["bytes=1000-"])

    def test_without_a_record_is_not_relied_on(self):
        self.leave(CONTENT[:1000], record=False)
        run = self.setup()
        self.assert_ready(run)
        self.assertEqual(self.server.ranges(), [None])
        self.assertIn("1 MB of it cannot be relied on and will be downloaded again.", run.log)

    def test_with_a_record_that_could_harm_the_request_is_not_relied_on(self):
        self.leave(CONTENT[:1000], etag='"a"\r\nX-Evil: "1"')
        self.assert_ready(self.setup())
        self.assertNotIn("X-Evil", self.server.requests[0][1])
        self.assertNotIn("If-Range", self.server.requests[0][1])

    def test_of_another_pin_is_dropped(self):
        self.leave(b"x" * 1000, sha256="0" * 64)
        self.assert_ready(self.setup())
        self.assertEqual(self.server.ranges(), [None])

    def test_that_is_too_long_is_dropped(self):
        self.leave(CONTENT + b"x")
        self.assert_ready(self.setup())
        self.assertEqual(self.server.ranges(), [None])

    def test_that_is_complete_needs_no_server(self):
        self.leave(CONTENT)
        run = self.setup()
        self.assert_ready(run)
        self.assertEqual(self.server.requests, [])
        self.assertEqual(run.progress, ["3.0 MB / 3.0 MB (100.0%)"])

    def test_of_a_file_that_has_changed_on_the_server_is_restarted(self):
        self.leave(b"y" * 1000, etag='"version-0"')
        run = self.setup()
        self.assert_ready(run)
        self.assertIn("The server sends the file from its beginning; starting again.", run.log)
        self.assertEqual(len(self.server.requests), 1)

    def test_at_a_server_without_ranges_is_restarted(self):
        self.leave(CONTENT[:1000])
        self.server.script = [ignoring_ranges]
        self.assert_ready(self.setup())
        self.assertEqual(self.server.ranges(), ["bytes=1000-"])

    def test_is_resumed_in_the_same_run_after_a_lost_connection(self):
        self.server.script = [cut(1_000_000), cut(500_000)]
        run = self.setup()
        self.assert_ready(run)
        self.assertEqual(self.server.ranges(), [None, "bytes=1000000-", "bytes=1500000-"])
        self.assertIn("The download was cut off after 1 MB; trying again (1 of 3).", run.log)

    def test_is_recorded_with_the_tag_of_the_file_and_not_of_the_redirect(self):
        self.server.script = [redirect("/x"), cut(1000)]
        self.assert_ready(self.setup())
        self.assertEqual(self.server.requests[-1][1]["If-Range"], ETAG)

    def test_of_a_file_without_a_tag_is_not_recorded_with_that_of_the_redirect(self):
        self.server.script = [redirect("/x"), promised(CONTENT, 1000)]
        self.assert_ready(self.setup())
        self.assertEqual(self.server.ranges(), [None, None, "bytes=1000-"])
        self.assertNotIn("If-Range", self.server.requests[-1][1])


class BuildWithoutWhisper(SetupCase):
    LINE = ("This build has no Whisper, so nothing is downloaded; its embedded recogniser, "
            "PocketSphinx for English, is ready.")

    def test_downloads_nothing_and_says_so(self):
        for _ in range(2):
            run = self.setup(whisper="off", pin=False)
            self.assert_ends(run, DONE)
            self.assertEqual(run.lines, [self.LINE])
            self.assertEqual(json.loads(self.manifest.read_text()), {
                "format": 1, "model": "large-v3", "recogniser": "pocketsphinx", "files": [],
                "written_by": "quillback 0.0.1"})
        self.assertEqual(self.server.requests, [])
        self.assertEqual(self.state(), EMBEDDED)

    def test_is_replaced_by_a_later_build_with_whisper(self):
        self.setup(whisper="off")
        self.assertEqual(self.state(), EMBEDDED)
        self.assert_ready(self.setup())

    def test_keeps_its_manifest_while_a_later_build_fails_to_download(self):
        self.setup(whisper="off")
        self.server.script = [bytes_of(b"", 404)]
        self.setup()
        self.assertEqual(self.state(), EMBEDDED)

    def test_keeps_the_weights_of_another_build(self):
        self.setup()
        run = self.setup(whisper="off")
        self.assertEqual(run.lines, [self.LINE])
        self.assert_ready(run)

    def test_replaces_a_damaged_manifest(self):
        self.folder.mkdir(parents=True)
        self.manifest.write_text("{")
        self.assert_ends(self.setup(whisper="off"), DONE)
        self.assertEqual(self.state(), EMBEDDED)


class WrongUse(SetupCase):
    def test_an_unknown_model_is_named_with_the_known_ones(self):
        for name in ("huge", "", "../large-v3", "LARGE-V3", "advised"):
            run = self.setup("--model", name)
            self.assert_ends(run, USAGE, f'unknown model "{name}". Known models: tiny tiny.en base ')
            self.assertEqual(len(run.lines), 1)
        self.assertFalse(self.folder.parent.exists())

    def test_an_invalid_address_is_refused(self):
        for url in ("ftp://127.0.0.1", "127.0.0.1", "http://", "file:///etc"):
            self.assert_ends(self.setup(url=url), USAGE, "QUILLBACK_MODEL_URL")


@unittest.skipUnless(os.environ.get("QUILLBACK_ENGINE"), "the engine itself is not built here")
class TheEngineItself(SetupCase):
    def run_engine(self, *words):
        environment = {**os.environ, "HOME": str(self.home), "QUILLBACK_MODEL_URL": self.server.url}
        process = self.start_program([os.environ["QUILLBACK_ENGINE"], *words], environment)
        process.started = time.monotonic()
        return self.finish(process)

    def start_program(self, words, environment):
        import subprocess
        process = subprocess.Popen(words, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                   stderr=subprocess.STDOUT, text=True, env=environment)
        self.addCleanup(self.end, process)
        return process

    def test_knows_its_model(self):
        self.assertEqual(self.run_engine("setup", "--model", "huge").status, USAGE)
        self.server.default = bytes_of(b"", 404)
        self.server.beside = {}
        run = self.run_engine("setup", "--model", "large-v3")
        if self.server.requests:
            self.assertEqual(run.status, 4, run)
        else:
            self.assertEqual((run.status, run.lines), (DONE, [BuildWithoutWhisper.LINE]))
            self.assertEqual(self.state(), EMBEDDED)


if __name__ == "__main__":
    unittest.main()
