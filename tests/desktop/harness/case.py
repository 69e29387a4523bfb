"""The base of all desktop tests: one desk a class, one installation of the program a test."""

import os
import unittest

from .application import Application
from .desk import Desk

# The folder of the built programs; the runner sets it.
PROGRAMS = os.environ.get("VOXTREL_PROGRAMS", "")


class DesktopCase(unittest.TestCase):
    """Tests that watch the program from outside, on a desk that they share."""

    desk_kind = Desk
    desk_parts = {}
    desk = None
    installations = 0

    @classmethod
    def setUpClass(cls):
        cls.desk = cls.desk_kind(**cls.desk_parts)
        cls.enterClassContext(cls.desk)

    def setUp(self):
        """Notifications of earlier tests are not counted."""
        self._earlier = 0
        if self.desk.notifications:
            self._earlier = len(self.desk.notifications.shown())

    def run(self, result=None):
        """A failed test keeps the logs of its desk."""
        before = len(result.failures) + len(result.errors)
        super().run(result)
        if self.desk and len(result.failures) + len(result.errors) > before:
            self.desk.keep_logs(self._testMethodName)

    def install(self, **options):
        """A fresh installation; its program is ended after the test and must not have failed."""
        type(self).installations += 1
        # A short name: the path of a local socket has a limit.
        app = Application(self.desk, PROGRAMS, f"app{self.installations}", **options)
        self.addCleanup(self._check_reports, app)
        self.addCleanup(app.stop)
        return app

    def notifications(self, count, limit_s=10.0):
        """Waits for the test's own notifications, `count` of them."""
        return self.desk.notifications.wait_for(self._earlier + count, limit_s)[self._earlier:]

    def bodies(self):
        """The texts of the test's own notifications so far."""
        return self.desk.notifications.bodies()[self._earlier:]

    def _check_reports(self, app):
        self.assertEqual(app.reports(), [], "a sanitizer has complained")

    def between(self, value, least, most, what):
        """Asserts that a measured value lies within its limits, both included."""
        self.assertTrue(least <= value <= most, f"{what}: {value:.3f}, not {least} to {most}")


class WaylandCase(DesktopCase):
    """Tests of the overlay under a compositor."""

    def start_ready(self, **changes):
        """The program, ready; without a tray, its rows cannot be read."""
        app = self.install()
        app.start(**changes)
        app.engine.wait_for_starts(1)
        app.engine.say("Ready.")
        return app

    def start_recording(self, pill, **changes):
        """The program while its engine records, and what the screen showed before."""
        app = self.start_ready(**changes)
        before = self.desk.screenshot()
        app.engine.say("Recording...")
        pill.wait_until_seen()
        return app, before
