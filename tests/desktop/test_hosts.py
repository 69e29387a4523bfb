"""Desktops with a service that is missing, late, restarted or hung."""

import time

from harness.case import DesktopCase
from harness.polling import eventually, stays

READY = "Ready — hold Right Cmd"


class WithoutATrayHost(DesktopCase):
    """The panel starts after the program, or is restarted."""

    desk_parts = {"panel": False}

    def test_the_item_appears_once_a_panel_does(self):
        app = self.install()
        app.start()
        app.engine.wait_for_starts(1)
        app.engine.say("Ready.")
        stays(lambda: app.process.running(), "the program without a tray", for_s=1.0)
        self.desk.panel.start()
        self.addCleanup(self.desk.panel.stop)
        item = self.desk.tray.wait_for_item(app.process.pid)
        item.wait_for_status(READY)

    def test_a_panel_that_restarts_gets_the_item_again(self):
        self.desk.panel.start()
        self.addCleanup(self.desk.panel.stop)
        empty = self.desk.panel.settled_icon()
        app = self.install().start_ready()
        for _attempt in range(3):
            self.desk.panel.settled_icon(unlike=empty)
            self.desk.panel.stop()
            app.engine.say("Recording...")
            self.desk.panel.start()
            item = self.desk.tray.wait_for_item(app.process.pid)
            item.wait_for_status("Recording...")
            app.engine.say("Ready.")
            item.wait_for_status(READY)
        item.click("Quit Voxtrel")
        self.assertEqual(app.process.exit_status(), 0)


class WithoutANotificationDaemon(DesktopCase):
    """Recovery from crashes works without it."""

    desk_parts = {"notifications": False}

    def test_crashes_are_recovered_from_without_a_daemon(self):
        app = self.install()
        app.engine.at_start("exit 1")
        app.start_in_tray()
        app.item.wait_for_status("Error: Exited with code 1", 20)
        self.assertEqual(len(app.engine.starts()), 4)

    def test_a_daemon_that_never_answers_delays_nothing(self):
        daemon = self.desk.start_hanging_notification_daemon()
        self.addCleanup(daemon.stop)
        app = self.install()
        app.engine.at_start("exit 1")
        app.start_in_tray()
        done = "Error: Exited with code 1"
        slowest_s = app.slowest_menu_answer_s(until=lambda: app.item.texts()[0] == done)
        self.assertLess(slowest_s, 0.2)
        starts = [start.time_s for start in app.engine.starts()]
        for number, delay_s in enumerate((1.0, 2.0, 4.0)):
            self.between(starts[number + 1] - starts[number], delay_s, delay_s + 0.5, "pause")
        started = time.monotonic()
        app.item.click("Quit Voxtrel")
        self.assertEqual(app.process.exit_status(), 0)
        self.assertLess(time.monotonic() - started, 2.0)

    def test_a_daemon_that_comes_later_shows_the_next_crash(self):
        app = self.install().start_ready()
        app.engine.exit(1)
        app.engine.wait_for_starts(2)
        daemon = self.desk.start_notification_daemon()
        self.addCleanup(daemon.stop)
        app.engine.exit(1)
        app.engine.wait_for_starts(3)
        eventually(lambda: self.desk.notifications.displayed() == 1, "the second notification")


class WithoutALoginManager(DesktopCase):
    """Sleep is not announced; everything else works."""

    desk_parts = {"login_manager": False}

    def check_works(self, app):
        """The program works and has logged once that it cannot see sleep."""
        app.engine.say("Ready.")
        app.item.wait_for_status(READY)
        app.item.click("Restart")
        app.engine.wait_for_starts(2)
        eventually(lambda: self.sleep_lines(app), "a line about sleep in the log")
        app.item.click("Quit Voxtrel")
        self.assertEqual(app.process.exit_status(), 0)
        self.assertEqual(len(self.sleep_lines(app)), 1, app.output())

    @staticmethod
    def sleep_lines(app):
        """The lines of the log in which sleep is mentioned."""
        return [line for line in app.output().splitlines() if "sleep" in line.lower()]

    def test_without_a_login_manager_one_line_is_logged_and_all_else_works(self):
        self.check_works(self.install().start_in_tray())

    def test_without_a_system_bus_one_line_is_logged_and_all_else_works(self):
        self.check_works(self.install().start_in_tray(
            DBUS_SYSTEM_BUS_ADDRESS="unix:path=/nonexistent/system-bus"))


class WithoutASessionBus(DesktopCase):
    """No tray, no notifications, no second-start check; but the engine runs."""

    desk_parts = {"session_bus": False}

    def test_the_engine_runs_and_the_program_ends_well(self):
        app = self.install()
        app.engine.at_start("exit 1")
        app.start(DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent/session-bus")
        app.engine.wait_for_starts(4, limit_s=15)
        app.wait_for_output("Process exited with code 1")
        stays(app.process.running, "the program", for_s=0.5)
        app.process.send(15)
        self.assertEqual(app.process.exit_status(), 0)

    def test_without_a_display_it_says_so_and_exits_with_1(self):
        for display in (None, ":987"):
            app = self.install()
            app.start(DISPLAY=display, WAYLAND_DISPLAY=None)
            self.assertEqual(app.process.exit_status(), 1)
            self.assertEqual(len(app.output().splitlines()), 1, app.output())
            self.assertIn("display", app.output())
            self.assertEqual(app.engine.starts(), [])
