"""The first run: no model yet, so the set-up window fetches it before anything else starts."""

import os
import signal
import time

from harness.accessibility import tolerant
from harness.case import DesktopCase
from harness.forms import FIRST_LINE, HINT, SETUP_TITLE, DownloadForm
from harness.polling import eventually, stays

EXIT_TEXT = "Setup failed (exit code {}). Check internet connection."
HEADLINE = ["Voxtrel — Model Setup", "Downloading Whisper Large v3 (~3 GB)"]


class FirstRun(DesktopCase):
    """The base: a program without a model, and an engine whose set-up does what the test says."""

    desk_parts = {"accessibility": True}

    def begin(self, *script, with_engine=True, **changes):
        """Starts the program; its set-up does the commands of `script` and then waits."""
        self.app = self.install(with_model=False, with_engine=with_engine)
        self.setup_run = self.app.setup
        self.setup_run.at_start(*script)
        self.app.start(**changes)
        return DownloadForm(self.desk, self.app)

    def has_started(self):
        """Whether the start-up has continued: a tray item, an engine."""
        return bool(self.desk.tray.item_of(self.app.process.pid) or self.app.engine.starts())

    def assert_one_start(self):
        """The engine has been started, and only once."""
        self.app.wait_until_in_tray()
        self.app.engine.stays_running(0.5)
        self.assertEqual(len(self.app.engine.starts()), 1)


class Progress(FirstRun):
    """What the window shows while the set-up runs."""

    def test_it_opens_with_an_empty_bar_and_one_line_and_nothing_else_starts(self):
        form = self.begin()
        self.setup_run.wait_for_starts(1)
        form.wait_for_log(FIRST_LINE)
        self.assertEqual(form.labels(), HEADLINE)
        self.assertEqual(form.fraction(), 0.0)
        self.assertIsNone(form.retry())
        form.wait_until_active()
        stays(lambda: not self.has_started(), "nothing but the window", for_s=1.0)

    def test_the_bar_follows_from_0_over_26_point_3_to_above_100_percent(self):
        form = self.begin()
        self.setup_run.put("812.4 MB / 3094.1 MB (26.3%)\r")
        form.wait_for_fraction(0.263)
        form.wait_for_label("812.4 MB / 3094.1 MB")
        self.setup_run.put("4000.0 MB / 3094.1 MB (129.3%)\r")
        form.wait_for_fraction(1.0)
        form.wait_for_label("4000.0 MB / 3094.1 MB")
        self.setup_run.put("0 MB / 3094.1 MB (0%)\r")
        form.wait_for_fraction(0.0)
        self.assertEqual(form.labels(), [*HEADLINE, "0 MB / 3094.1 MB"])
        self.assertEqual(form.log(), [FIRST_LINE])

    def test_updates_parted_by_carriage_returns_alone_are_all_read(self):
        form = self.begin()
        self.setup_run.put("1 MB / 4 MB (25%)\r2 MB / 4 MB (50%)\r3 MB / 4 MB (75%)\r")
        form.wait_for_fraction(0.75)
        form.wait_for_label("3 MB / 4 MB")
        self.assertEqual(form.log(), [FIRST_LINE])

    def test_a_malformed_percentage_changes_nothing(self):
        form = self.begin()
        self.setup_run.put("1 MB / 4 MB (25%)\r")
        form.wait_for_fraction(0.25)
        self.setup_run.put("2 MB / 4 MB (5.0.0%)\rseen\n")
        form.wait_for_log(FIRST_LINE, "seen")
        self.assertEqual(form.labels(), [*HEADLINE, "1 MB / 4 MB"])
        self.assertAlmostEqual(form.fraction(), 0.25, places=2)

    def test_other_lines_are_logged_as_they_are(self):
        form = self.begin()
        self.setup_run.put("one\r\ntwo & <b>three</b>\n\n  four  \n12MB/100MB (12%)\n")
        form.wait_for_log(FIRST_LINE, "one", "two & <b>three</b>", "  four  ", "12MB/100MB (12%)")
        form.wait_for_fraction(0.12)

    def test_a_line_cut_by_the_reads_is_two_lines(self):
        form = self.begin()
        self.setup_run.put("half a li")
        form.wait_for_log(FIRST_LINE, "half a li")
        self.setup_run.put("ne\n")
        form.wait_for_log(FIRST_LINE, "half a li", "ne")

    def test_the_newest_line_is_in_view_and_older_ones_can_be_reached(self):
        form = self.begin()
        lines = [f"shard {number} of 30 verified" for number in range(1, 31)]
        self.setup_run.put("\n".join(lines) + "\n")
        form.wait_for_log(FIRST_LINE, *lines)
        eventually(lambda: form.scrolled() == 1.0, "the newest line in view")
        log = form.node.find("text")
        log.focus()
        form.wait_until_focused(log)
        form.keys("ctrl+Home")
        eventually(lambda: form.scrolled() == 0.0, "the oldest line in view")
        self.setup_run.put("one more\n")
        eventually(lambda: form.scrolled() == 1.0, "the new line in view")

    def test_skip_does_nothing_while_downloading(self):
        form = self.begin("progress 812 3094")
        form.wait_for_fraction(0.262)
        self.assertNotIn("enabled", form.skip().states)
        form.wait_until_active()
        form.click(form.skip())
        form.keys("Return", "space", "Tab", "space", "Return")
        stays(lambda: not self.has_started(), "skip without effect", for_s=0.7)
        self.assertTrue(form.node.showing())

    def test_it_answers_during_100000_lines_and_ends_at_the_newest(self):
        form = self.begin()
        self.setup_run.wait_for_starts(1)
        flood = "".join(f"shard {n} verified\\n" for n in range(200))
        self.setup_run.send("split 2000 2", "repeat 500 " + flood[:-2], "print the very last line")
        answers = 0
        started = time.monotonic()
        while not tolerant(lambda: self.newest_line(form) == "the very last line")():
            self.assertLess(time.monotonic() - started, 90, "the last line did not come")
            self.assertEqual(form.labels()[:1], HEADLINE[:1])
            answers += 1
        self.assertGreater(answers, 0, "it was read while the lines came")
        # Skipped lines are added later. The writes cut lines, so there are more pieces than lines;
        # no letter is missing.
        expected = flood.replace("\\n", "") * 500
        eventually(lambda: "".join(form.log()[1:-1]) == expected, "all of the log", 60)
        log = form.log()
        self.assertEqual((log[0], log[-1]), (FIRST_LINE, "the very last line"))
        eventually(lambda: form.scrolled() == 1.0, "the newest line in view")
        form.close_by_escape()

    @staticmethod
    def newest_line(form):
        """The end of the log, without asking for all of it."""
        node = form.node.find("text")
        return node.end_of_text(40).split("\n")[-1]


class Success(FirstRun):
    """A set-up that succeeds continues the start-up by itself."""

    def test_done_is_shown_for_a_second_and_then_the_engine_starts_once(self):
        form = self.begin()
        self.setup_run.put("3000 MB / 3094.1 MB (97%)\rSaved")
        form.wait_for_log(FIRST_LINE, "Saved")
        self.setup_run.make_weights("large-v3")
        self.setup_run.exit(0)
        ended = time.monotonic()
        form.wait_for_log(FIRST_LINE, "Saved", "Done!")
        self.assertEqual(form.fraction(), 1.0)
        self.assertIn("enabled", form.skip().states)
        self.assertFalse(self.has_started())
        form.wait_until_closed()
        self.between(time.monotonic() - ended, 0.95, 4.0, "closing")
        self.assert_one_start()

    def test_success_without_any_progress_still_fills_the_bar(self):
        form = self.begin("sleep 300", "exit 0")
        form.wait_for_log(FIRST_LINE, "Done!")
        self.assertEqual(form.fraction(), 1.0)
        self.assertEqual(form.labels(), HEADLINE)
        form.wait_until_closed()
        self.assert_one_start()

    def test_skip_in_the_second_after_success_starts_at_once_with_one_tray_item(self):
        form = self.begin("sleep 300", "exit 0")
        form.wait_for_newest("Done!")
        form.skip().press()
        form.wait_until_closed()
        self.app.wait_until_in_tray()
        # The completion still comes, and must not start a second engine.
        stays(lambda: len(self.app.engine.running()) <= 1, "one engine", for_s=2.0)
        self.app.engine.wait_for_one_running()

    def test_the_next_start_asks_for_nothing(self):
        form = self.begin("weights large-v3", "exit 0")
        form.wait_until_closed()
        self.app.wait_until_in_tray()
        self.app.item.click("Quit Voxtrel")
        self.assertEqual(self.app.process.exit_status(), 0)
        self.app.start()
        self.app.engine.wait_for_starts(2)
        self.assertIsNone(self.desk.accessibility.window(self.app.process.pid, SETUP_TITLE))
        self.assertEqual(len(self.setup_run.starts()), 1)


class Failure(FirstRun):
    """A set-up that fails says so and offers Retry and Skip."""

    def wait_for_error(self, form, text):
        """Waits until the window shows the error, in its place, and nothing of the progress."""
        form.wait_for_label(text)
        self.assertEqual(form.labels(), [*HEADLINE, text, HINT])
        self.assertIsNone(form.bar())
        self.assertIn("enabled", form.skip().states)
        self.assertIn("enabled", form.retry().states)

    def test_the_exit_code_is_shown_and_retry_begins_afresh(self):
        form = self.begin("print no route to host", "progress 812 3094", "exit 3")
        self.wait_for_error(form, EXIT_TEXT.format(3))
        self.assertEqual(form.log(), [FIRST_LINE, "no route to host"])
        self.setup_run.at_start()
        form.wait_until_active()
        form.click(form.retry())
        self.setup_run.wait_for_starts(2)
        form.wait_for_log(FIRST_LINE)
        self.assertEqual(form.labels(), HEADLINE)
        self.assertEqual(form.fraction(), 0.0)
        self.assertIsNone(form.retry())
        self.assertNotIn("enabled", form.skip().states)
        self.setup_run.exit(0)
        form.wait_until_closed()
        self.assert_one_start()

    def test_retry_fails_again_with_the_new_code(self):
        form = self.begin("exit 3")
        self.wait_for_error(form, EXIT_TEXT.format(3))
        self.setup_run.at_start("exit 255")
        form.retry().press()
        self.wait_for_error(form, EXIT_TEXT.format(255))

    def test_skip_after_a_failure_continues_without_the_model(self):
        form = self.begin("exit 1")
        self.wait_for_error(form, EXIT_TEXT.format(1))
        form.wait_until_active()
        form.click(form.skip())
        form.wait_until_closed()
        self.assert_one_start()

    def test_death_by_a_signal_is_a_failure_too(self):
        form = self.begin()
        self.setup_run.wait_for_starts(1)
        self.setup_run.kill(signal.SIGKILL)
        eventually(form.retry, "the retry button")
        self.assertRegex(form.labels()[2], r"^Setup failed \(exit code \d+\)\. Check internet connection\.$")

    def test_a_missing_engine_is_named_and_can_be_skipped(self):
        form = self.begin(with_engine=False)
        self.wait_for_error(form, "quillback binary not found at /usr/local/bin/quillback")
        self.assertEqual(form.log(), [FIRST_LINE])
        form.retry().press()
        self.wait_for_error(form, "quillback binary not found at /usr/local/bin/quillback")
        form.skip().press()
        form.wait_until_closed()
        self.desk.tray.wait_for_item(self.app.process.pid)

    def test_an_engine_that_cannot_be_launched_is_told_with_the_systems_reason(self):
        self.app = self.install(with_model=False)
        with open(self.app.engine.executable, "wb") as file:
            file.write(b"\x7fELF but not really\n")
        self.app.start()
        form = DownloadForm(self.desk, self.app)
        eventually(form.retry, "the retry button")
        self.assertRegex(form.labels()[2], r"^Failed to launch: .+")
        self.assertEqual(form.log(), [FIRST_LINE])


class Closing(FirstRun):
    """After the window is closed, the start-up still waits and the set-up keeps running."""

    def assert_parked(self):
        """No engine is started; the program and the set-up keep running."""
        running = self.setup_run.running()
        self.assertEqual(len(running), 1)
        stays(lambda: not self.has_started() and self.setup_run.running() == running
              and self.app.process.running(), "parked", for_s=2.0)

    def test_by_the_close_box_parks_the_start_and_a_later_success_continues_it(self):
        form = self.begin()
        self.setup_run.wait_for_starts(1)
        form.wait_until_active()
        form.close_by_box()
        form.wait_until_closed()
        self.assert_parked()
        self.setup_run.exit(0)
        self.assert_one_start()

    def test_a_second_start_shows_the_window_again(self):
        form = self.begin("progress 812 3094")
        form.wait_for_fraction(0.262)
        form.close_by_escape()
        second = self.install(with_model=False)
        second.start()
        self.assertEqual(second.process.exit_status(), 0)
        form = DownloadForm(self.desk, self.app)
        form.wait_until_active()
        form.wait_for_fraction(0.262)
        self.assertEqual(len(self.setup_run.starts()), 1)
        self.setup_run.exit(0)
        form.wait_until_closed()
        self.assert_one_start()

    def test_by_escape_is_the_same(self):
        form = self.begin()
        self.setup_run.wait_for_starts(1)
        form.close_by_escape()
        self.assert_parked()

    def test_a_failure_after_that_shows_nothing_and_stays_parked(self):
        form = self.begin()
        self.setup_run.wait_for_starts(1)
        form.close_by_escape()
        self.setup_run.exit(1)
        pid = self.app.process.pid
        stays(lambda: not self.has_started() and not self.desk.accessibility.windows_of(pid),
              "parked", for_s=1.5)
        self.app.process.send(signal.SIGTERM)
        self.assertEqual(self.app.process.exit_status(), 0)

    def test_after_a_failure_parks_the_start_too(self):
        form = self.begin("exit 1")
        eventually(form.retry, "the retry button")
        form.close_by_escape()
        stays(lambda: not self.has_started() and self.app.process.running(), "parked", for_s=1.5)

    def test_a_request_to_end_during_the_setup_is_obeyed(self):
        form = self.begin()
        self.setup_run.wait_for_starts(1)
        self.assertTrue(form.node.showing())
        self.app.process.send(signal.SIGTERM)
        self.assertEqual(self.app.process.exit_status(), 0)
        self.assertEqual(self.app.engine.starts(), [])


class TheSetUpsSurroundings(FirstRun):
    """What the set-up is started with."""

    def test_its_arguments_and_its_folder(self):
        self.begin("log-report")
        self.setup_run.wait_for_starts(1)
        log = self.setup_run.executable + ".setup.log"
        report = eventually(lambda: self.complete_report(log), "the report")
        self.assertIn("argument: setup\nargument: --model\nargument: large-v3\ndirectory: "
                      + os.path.dirname(self.setup_run.executable) + "\n", report)

    @staticmethod
    def complete_report(log):
        """The report, once it is complete."""
        with open(log, encoding="utf-8") as file:
            text = file.read()
        return text if "report" in text and "caught" in text else None
