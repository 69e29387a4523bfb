"""The ways in which the program ends; no engine may outlive it."""

import signal
import time

from harness.case import DesktopCase
from harness.polling import eventually

QUIT_LIMIT_S = 2.0
LATENESS_S = 0.9


class Ending(DesktopCase):
    """Whatever ends the program, the engine ends too."""

    def check_end(self, app, engine_pid):
        """The program has exited normally and left no process behind."""
        self.assertEqual(app.process.exit_status(), 0)
        self.assertEqual(app.engine.running(), [])
        self.assertNotIn(engine_pid, app.engine.running())
        self.assertIn("Voxtrel terminating", app.output())
        eventually(lambda: self.desk.tray.item_of(app.process.pid) is None, "the item to go")
        self.assertEqual(self.bodies(), [])

    def test_quit_in_the_menu_stops_the_engine_and_ends_with_status_0(self):
        app = self.install().start_ready()
        engine_pid = app.engine.wait_for_one_running()
        app.item.click("Quit Voxtrel")
        self.check_end(app, engine_pid)

    def test_sigterm_sigint_and_sighup_end_it_as_quit_does(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(signal=number.name):
                app = self.install().start_ready()
                engine_pid = app.engine.wait_for_one_running()
                app.process.send(number)
                self.check_end(app, engine_pid)

    def test_a_signal_right_after_the_start_ends_it_too(self):
        for attempt in range(5):
            app = self.install()
            app.start()
            app.wait_for_output("Voxtrel launching")
            app.process.send(signal.SIGTERM)
            self.assertEqual(app.process.exit_status(), 0)
            self.assertEqual(app.engine.running(), [])

    def test_an_engine_that_ignores_sigterm_is_killed_after_two_seconds(self):
        app = self.install().start_ready()
        engine_pid = app.engine.wait_for_one_running()
        app.engine.ignore_sigterm()
        started = time.monotonic()
        app.item.click("Quit Voxtrel")
        self.check_end(app, engine_pid)
        self.between(time.monotonic() - started, QUIT_LIMIT_S, QUIT_LIMIT_S + LATENESS_S,
                     "the time to quit")

    def test_quit_while_a_relaunch_is_due_leaves_no_engine(self):
        app = self.install().start_ready()
        app.engine.exit(1)
        self.notifications(1)
        app.item.click("Quit Voxtrel")
        self.assertEqual(app.process.exit_status(), 0)
        self.assertEqual(app.engine.running(), [])
        self.assertEqual(len(app.engine.starts()), 1)

    def test_when_the_program_is_killed_its_engine_is_gone_within_a_second(self):
        app = self.install().start_ready()
        app.engine.ignore_sigterm()
        app.engine.wait_for_one_running()
        app.process.kill()
        eventually(lambda: not app.engine.running(), "the end of the engine", limit_s=1.0)

    def test_when_the_program_is_killed_a_relaunched_engine_is_gone_too(self):
        app = self.install().start_ready()
        app.engine.exit(1)
        app.engine.wait_for_starts(2)
        app.engine.wait_for_one_running()
        app.process.kill()
        eventually(lambda: not app.engine.running(), "the end of the engine", limit_s=1.0)

    def test_an_engine_relaunched_in_the_background_keeps_running(self):
        app = self.install().start_ready()
        app.engine.exit(1)
        app.engine.wait_for_starts(2)
        app.engine.say("Ready.")
        app.item.wait_for_status("Ready — hold Right Cmd")
        app.engine.stays_running(for_s=3.0)
