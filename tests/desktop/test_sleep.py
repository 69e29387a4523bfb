"""Sleep and wake, as the login manager announces them."""

from harness.case import DesktopCase
from harness.pill import Pill
from harness.polling import eventually, stays

READY = "Ready — hold Right Cmd"
STOPPED = "Voxtrel stopped — click Restart"
WAKE_DELAY_S = 1.5
LATENESS_S = 0.9


class Sleep(DesktopCase):
    """Each test starts its own login manager, so it starts with an empty history."""

    desk_parts = {"login_manager": False}

    def setUp(self):
        super().setUp()
        self.logind = self.desk.start_login_manager()
        self.addCleanup(self.desk.stop_login_manager)

    def ready_app(self):
        """An installation in the tray whose delay lock has been taken."""
        app = self.install().start_ready()
        eventually(self.logind.inhibitors, "the delay lock")
        return app

    def sleep(self):
        """Announces sleep and waits until the machine may sleep."""
        self.logind.announce_sleep()
        eventually(lambda: not self.logind.inhibitors(), "the lock to be released")

    def test_a_delay_lock_is_held_while_awake(self):
        self.ready_app()
        (what, who, why, mode), = self.logind.inhibitors()
        self.assertEqual((what, mode), ("sleep", "delay"))
        self.assertIn("oxtrel", who)
        self.assertTrue(why)

    def test_the_lock_is_released_only_when_the_engine_has_stopped(self):
        app = self.ready_app()
        app.engine.ignore_sigterm()
        self.logind.announce_sleep()
        stays(self.logind.inhibitors, "the lock while the engine ignores SIGTERM", for_s=2.5)
        eventually(lambda: not self.logind.inhibitors(), "the lock to be released")
        self.assertEqual(app.engine.running(), [])

    def test_the_lock_is_taken_again_after_wake(self):
        self.ready_app()
        for round_number in (1, 2):
            self.sleep()
            self.logind.announce_wake()
            eventually(self.logind.inhibitors, f"the lock after wake {round_number}")
        self.assertEqual(self.logind.history(),
                         ["taken", *["sleep", "released", "wake", "taken"] * 2])

    def test_sleep_while_recording_stops_the_engine_and_wake_starts_it_after_one_and_a_half_seconds(
            self):
        app = self.ready_app()
        app.engine.say("Recording...")
        app.item.wait_for_status("Recording...")
        self.sleep()
        self.assertEqual(app.engine.running(), [])
        woken_s = app.engine.now_s()
        self.logind.announce_wake()
        app.engine.wait_for_starts(2)
        self.between(app.engine.starts()[1].time_s - woken_s, WAKE_DELAY_S,
                     WAKE_DELAY_S + LATENESS_S, "the delay after wake")
        app.item.wait_for_status("Loading model...")
        self.assertEqual(self.bodies(), [])
        app.wait_for_output("System sleeping, wasRunning=true")
        app.wait_for_output("System woke, restarting process after delay")

    def test_the_overlay_is_hidden_before_sleep(self):
        app = self.ready_app()
        app.engine.say("Recording...")
        pill = Pill(self.desk).wait_until_seen()
        self.sleep()
        pill.wait_until_gone()
        # The status has not changed, so that was not the end of a recording.
        self.assertEqual(app.item.texts()[0], "Recording...")

    def test_the_second_of_two_wakes_does_nothing(self):
        app = self.ready_app()
        self.sleep()
        self.logind.announce_wake()
        self.logind.announce_wake()
        app.engine.wait_for_starts(2)
        stays(lambda: len(app.engine.starts()) == 2, "a single start", for_s=2.0)
        self.assertEqual(app.output().count("System woke"), 1)

    def test_an_engine_that_was_stopped_before_sleep_stays_stopped(self):
        app = self.ready_app()
        app.engine.exit(0)
        app.item.wait_for_status(STOPPED)
        self.sleep()
        self.logind.announce_wake()
        eventually(self.logind.inhibitors, "the lock after wake")
        stays(lambda: len(app.engine.starts()) == 1, "no start", for_s=2.0)
        app.item.wait_for_status(STOPPED)

    def test_a_login_manager_that_restarts_is_asked_for_a_lock_again(self):
        app = self.ready_app()
        self.desk.stop_login_manager()
        self.logind = self.desk.start_login_manager()
        eventually(self.logind.inhibitors, "the lock from the new login manager")
        self.sleep()
        self.assertEqual(app.engine.running(), [])

    def test_a_refused_lock_is_no_error(self):
        self.desk.stop_login_manager()
        self.logind = self.desk.start_login_manager("--refuse")
        app = self.install().start_ready()
        eventually(lambda: self.logind.history() == ["refused"], "the request for a lock")
        self.logind.announce_sleep()
        eventually(lambda: not app.engine.running(), "the engine's end")
        self.logind.announce_wake()
        app.engine.wait_for_starts(2)
        app.engine.say("Ready.")
        app.item.wait_for_status(READY)
