"""An engine that dies: what the user is told, when it comes back, and when it does not."""

import signal

from harness.case import DesktopCase
from harness.polling import stays

READY = "Ready — hold Right Cmd"
STOPPED = "Voxtrel stopped — click Restart"
RESTARTING = "Process crashed. Restarting (attempt {}/3)..."
FINAL = "Process crashed 3 times. Stopped. Use menu bar to restart."
# A start may come this much after its delay is over: the desk's programs share two processors.
LATENESS_S = 0.9


class Crashes(DesktopCase):
    """Crashes by exit status and by signal, and the two ways to restart by hand."""

    def setUp(self):
        super().setUp()
        self.desk.notifications.close_all()
        self.desk.notifications.wait_until_displayed(0)

    def give_up(self):
        """An installation whose engine has crashed until it was left stopped."""
        app = self.install()
        app.engine.at_start("exit 1")
        app.start_in_tray()
        app.item.wait_for_status("Error: Exited with code 1", 20)
        return app

    def test_an_engine_that_always_crashes_is_started_after_1_2_and_4_seconds_then_given_up(self):
        app = self.give_up()
        shown = self.notifications(4)
        self.assertEqual([n.body for n in shown],
                         [RESTARTING.format(n) for n in (1, 2, 3)] + [FINAL])
        self.assertEqual({n.title for n in shown}, {"Voxtrel"})
        self.assertEqual(len({n.identifier for n in shown}), 4, "they must not replace each other")
        for notification in shown:
            self.assertEqual(notification.actions, ("RESTART_ACTION", "Restart"))
        starts = [start.time_s for start in app.engine.starts()]
        self.assertEqual(len(starts), 4)
        for number, delay_s in enumerate((1.0, 2.0, 4.0)):
            pause_s = starts[number + 1] - starts[number]
            self.between(pause_s, delay_s, delay_s + LATENESS_S, f"pause {number + 1}")
        stays(lambda: len(app.engine.starts()) == 4, "no further start", for_s=1.0)

    def test_the_state_stays_what_it_was_until_the_relaunch(self):
        app = self.install().start_ready()
        app.engine.exit(3)
        self.notifications(1)
        app.item.wait_for_status(READY)
        app.engine.wait_for_starts(2)
        app.item.wait_for_status("Loading model...")

    def test_an_engine_that_was_ready_in_between_is_never_given_up(self):
        app = self.install().start_in_tray()
        for count in range(1, 6):
            # The row reads "Ready" until the new engine is seen, so that one is waited for first.
            app.item.wait_for_status("Loading model...")
            app.engine.say("Ready.")
            app.item.wait_for_status(READY)
            app.engine.exit(2)
            app.engine.wait_for_starts(count + 1)
        self.notifications(5)
        self.assertEqual(self.bodies(), [RESTARTING.format(1)] * 5)

    def test_a_clean_exit_is_no_crash(self):
        app = self.install().start_ready()
        app.engine.exit(0)
        app.item.wait_for_status(STOPPED)
        stays(lambda: len(app.engine.starts()) == 1, "no relaunch", for_s=1.5)
        self.assertEqual(self.bodies(), [])

    def test_death_by_a_signal_is_a_crash_whose_status_is_the_signal(self):
        app = self.install().start_ready()
        app.engine.kill(signal.SIGSEGV)
        app.wait_for_output(f"Process exited with code {int(signal.SIGSEGV)}")
        self.notifications(1)
        self.assertEqual(self.bodies(), [RESTARTING.format(1)])
        app.engine.wait_for_starts(2)

    def test_a_failure_printed_right_before_the_exit_wins_over_the_exit_code(self):
        app = self.install()
        app.engine.at_start("print [quillback] Failed to load model", "exit 1")
        app.start_in_tray()
        app.item.wait_for_status("Error: [quillback] Failed to load model", 20)

    def test_restart_in_the_menu_after_giving_up_starts_afresh(self):
        app = self.give_up()
        app.engine.at_start("print Ready.")
        app.item.click("Restart")
        app.engine.wait_for_starts(5)
        app.item.wait_for_status(READY)

    def test_restart_in_the_last_notification_grants_the_full_number_of_crashes_again(self):
        app = self.give_up()
        *restarting, final = self.notifications(4)
        for notification in restarting:
            self.desk.notifications.close(notification.identifier)
        self.desk.notifications.wait_until_displayed(1)
        self.desk.notifications.press_button()
        self.desk.notifications.wait_until_closed(final.identifier)
        app.engine.wait_for_starts(8, limit_s=15)
        self.notifications(8)
        self.assertEqual(self.bodies()[4:], self.bodies()[:4])
        app.item.wait_for_status("Error: Exited with code 1")

    def test_restart_in_the_notification_starts_the_engine_and_closes_the_notification(self):
        app = self.install().start_ready()
        app.engine.exit(9)
        shown, = self.notifications(1)
        self.desk.notifications.press_button()
        app.engine.wait_for_starts(2, limit_s=0.9)
        self.desk.notifications.wait_until_closed(shown.identifier)
        # The relaunch that was already due replaces the engine which the user started.
        app.engine.wait_for_starts(3)
        app.engine.wait_for_one_running()
        self.assertEqual(self.bodies(), [RESTARTING.format(1)])

    def test_restart_in_the_menu_replaces_a_running_engine_and_is_no_crash(self):
        app = self.install().start_ready()
        first = app.engine.starts()[0].pid
        app.item.click("Restart")
        app.engine.wait_for_starts(2)
        self.assertNotEqual(app.engine.wait_for_one_running(), first)
        app.item.wait_for_status("Loading model...")
        stays(lambda: len(app.engine.starts()) == 2, "no further start", for_s=1.5)
        self.assertEqual(self.bodies(), [])
