"""Setup against a server, a network or a disk that fails: how it ends, and what it keeps."""

import json
import os
import pathlib
import resource
import shutil
import socket
import ssl
import subprocess
import tempfile
import unittest

from model_server import bytes_of, cut, honest, raw, redirect, reset, stall, status
from setup_case import CONTENT, HTTP, NETWORK, NO_SPACE, SHA256, UNWRITABLE, SetupCase


class HttpErrors(SetupCase):
    def test_a_missing_file_is_not_requested_twice(self):
        for code in (404, 401, 403, 410, 204, 501):
            self.server.script = [status(code)]
            before = len(self.server.requests)
            run = self.setup()
            self.assert_ends(run, HTTP, f"HTTP status {code}")
            self.assertIn(self.server.host, run.lines[-1])
            self.assertEqual(len(self.server.requests), before + 1)

    def test_a_temporary_error_is_retried(self):
        self.server.script = [status(500), status(503), status(429)]
        run = self.setup()
        self.assert_ready(run)
        self.assertEqual(sum("trying again" in line for line in run.log), 3)

    def test_a_lasting_error_ends_after_four_tries(self):
        self.server.default = status(503)
        self.assert_ends(self.setup(), HTTP, "HTTP status 503")
        self.assertEqual(len(self.server.requests), 4)

    def test_an_error_during_the_download_keeps_what_has_arrived(self):
        self.server.script = [cut(1000), status(404)]
        self.assert_ends(self.setup(), HTTP, "HTTP status 404")
        self.assertEqual(self.part.read_bytes(), CONTENT[:1000])
        self.assert_ready(self.setup())
        self.assertEqual(self.server.ranges()[-1], "bytes=1000-")

    def test_an_error_page_is_not_written_to_the_file(self):
        self.server.script = [cut(1000), status(500)]
        self.assert_ready(self.setup())

    def test_endless_redirects_end(self):
        self.server.default = redirect("/again")
        self.assert_ends(self.setup(), HTTP, "did not lead to the file")
        self.assertEqual(len(self.server.requests), 11)

    def test_a_redirect_to_a_local_file_is_not_followed(self):
        self.server.default = redirect("file:///etc/passwd")
        self.assert_ends(self.setup(), HTTP, "did not lead to the file")
        self.assertEqual(len(self.server.requests), 1)

    def test_a_reply_that_is_not_http_is_refused(self):
        self.server.default = raw(b"\x00\x01\x02 what? \r\n\r\n")
        self.assert_ends(self.setup(), HTTP, "did not lead to the file")


class BadConnections(SetupCase):
    def test_a_connection_that_is_always_cut_keeps_what_has_arrived(self):
        self.server.default = cut(100_000)
        self.assert_ends(self.setup(), NETWORK, "what has arrived is kept")
        self.assertEqual(self.part.read_bytes(), CONTENT[:400_000])
        self.server.default = honest
        self.assert_ready(self.setup())
        self.assertEqual(self.server.ranges()[-1], "bytes=400000-")

    def test_a_lost_connection_without_a_length_is_not_the_end_of_the_file(self):
        self.server.script = [bytes_of(CONTENT[:1000])]
        self.assert_ready(self.setup())
        self.assertEqual(self.server.ranges(), [None, None])

    def test_a_reset_is_retried(self):
        self.server.script = [reset(0), reset(500_000)]
        self.assert_ready(self.setup())

    def test_a_connection_that_closes_before_a_reply_is_retried(self):
        self.server.script = [raw(b"")]
        self.assert_ready(self.setup())

    def test_a_stall_is_ended_and_resumed(self):
        self.server.script = [stall(1_000_000)]
        run = self.setup("--stall-ms", "400")
        self.assert_ready(run)
        # On a busy machine the next reply may stall too, but the request is the same.
        self.assertIn("The download was cut off after 1 MB; trying again (1 of 3).", run.log)
        self.assertEqual(self.server.ranges()[:2], [None, "bytes=1000000-"])

    def test_a_lasting_stall_ends(self):
        self.server.default = stall(1000)
        self.assert_ends(self.setup("--stall-ms", "300"), NETWORK, "nothing arrives any more")
        have = self.part.read_bytes()
        self.assertIn(len(have), (1000, 2000, 3000, 4000))
        self.assertEqual(have, CONTENT[:len(have)])

    def test_an_unreachable_server_is_named(self):
        with socket.socket() as unused:
            unused.bind(("127.0.0.1", 0))
            host = f"127.0.0.1:{unused.getsockname()[1]}"
            run = self.setup(url=f"http://{host}")
        self.assert_ends(run, NETWORK, f"Setup failed: there is no connection to {host} (")
        self.assertTrue(run.lines[-1].endswith("). Check the connection and run setup again."), run)
        tries = [line for line in run.log if "trying again" in line]
        self.assertEqual(len(tries), 3, run)
        for number, line in enumerate(tries, 1):
            self.assertTrue(line.startswith(f"There is no connection to {host} ("), line)
            self.assertTrue(line.endswith(f"); trying again ({number} of 3)."), line)
        self.assertNotIn("cut off", "".join(run.lines))

    def test_an_unknown_server_is_said_to_be_out_of_reach(self):
        run = self.setup(url="http://no-such-host.invalid")
        self.assert_ends(run, NETWORK, "there is no connection to no-such-host.invalid (")
        self.assertNotIn("cut off", "".join(run.lines))

    def test_a_password_in_the_address_is_not_shown(self):
        run = self.setup(url=f"http://ann:secret@{self.server.host}")
        self.assert_ready(run)
        self.assertNotIn("secret", "".join(run.lines))


class Certificates(SetupCase):
    def setUp(self):
        super().setUp()
        keys = pathlib.Path(tempfile.mkdtemp(prefix="keys-"))
        self.addCleanup(shutil.rmtree, keys)
        self.certificate = keys / "certificate.pem"
        subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt",
                        "ec_paramgen_curve:P-256", "-nodes", "-keyout", keys / "key.pem", "-out",
                        self.certificate, "-days", "2", "-subj", "/CN=127.0.0.1", "-addext",
                        "subjectAltName=IP:127.0.0.1"], check=True, capture_output=True)
        tls = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        tls.load_cert_chain(self.certificate, keys / "key.pem")
        self.server = self.serve(CONTENT, tls=tls)

    def test_that_are_not_trusted_are_refused_at_once(self):
        run = self.setup()
        self.assert_ends(run, NETWORK, "certificate")
        self.assertEqual(self.server.requests, [])
        self.assertNotIn("trying again", "".join(run.lines))

    def test_that_are_trusted_are_accepted(self):
        self.assert_ready(self.setup("--certificates", str(self.certificate)))

    def test_are_required_after_a_redirect_too(self):
        plain = self.serve(CONTENT)
        self.server.script = [redirect(plain.url + "/x")]
        run = self.setup("--certificates", str(self.certificate))
        self.assert_ends(run, HTTP, "did not lead to the file")
        self.assertEqual(plain.requests, [])


class Disks(SetupCase):
    def test_without_enough_space_are_not_written_to(self):
        run = self.setup("--bytes", str(9 * 10**18), "--sha256", SHA256, pin=False)
        self.assert_ends(run, NO_SPACE)
        self.assertRegex(run.lines[-1], r"needs 9000000000000 MB more, but only \d+ MB are free in ")
        self.assertEqual(self.server.requests, [])

    def test_that_fill_up_keep_what_has_arrived(self):
        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (1_000_000, 1_000_000))
        run = self.setup(preexec_fn=limit)
        self.assert_ends(run, NO_SPACE, "the disk is full")
        self.assertEqual(self.part.read_bytes(), CONTENT[:1_000_000])
        self.assert_ready(self.setup())
        self.assertEqual(self.server.ranges(), [None, "bytes=1000000-"])

    def test_that_are_read_only_are_named(self):
        self.home.chmod(0o555)
        # Permissions do not apply to root unless it gives up that capability.
        prefix = ["setpriv", "--bounding-set", "-dac_override"] if not os.geteuid() else []
        run = self.setup(prefix=prefix)
        self.home.chmod(0o755)
        self.assert_ends(run, UNWRITABLE, f"{self.folder} cannot be written (Permission denied)")
        self.assertEqual(len(run.lines), 1)

    def test_with_something_in_the_way_are_named(self):
        (self.home / ".local").write_text("")
        self.assert_ends(self.setup(), UNWRITABLE, "Not a directory")
        self.assert_ends(self.setup(whisper="off"), UNWRITABLE, "Not a directory")

    def test_with_a_folder_in_place_of_a_file_are_named(self):
        for path in (self.part, self.folder / "setup.lock", self.folder / "manifest.json.tmp",
                     self.record.with_name(self.record.name + ".tmp")):
            with self.subTest(path.name):
                shutil.rmtree(self.folder, ignore_errors=True)
                path.mkdir(parents=True)
                self.assert_ends(self.setup(), UNWRITABLE, "Is a directory")
                self.assertFalse(self.manifest.exists())

    def test_with_a_link_in_place_of_the_part_are_not_written_elsewhere(self):
        self.folder.mkdir(parents=True)
        target = self.home / "precious"
        target.write_text("precious")
        self.part.symlink_to(target)
        self.assert_ends(self.setup(), UNWRITABLE)
        self.assertEqual(target.read_text(), "precious")

    def test_with_a_damaged_record_are_used(self):
        self.leave(CONTENT[:1000])
        self.record.write_text(json.dumps([1, 2, 3]))
        self.assert_ready(self.setup())


if __name__ == "__main__":
    unittest.main()
