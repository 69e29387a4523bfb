"""A double of the desktop portal; the test sets style and devices."""

import os
import sys

from .polling import eventually

NAME = "org.freedesktop.portal.Desktop"
PATH = "/org/freedesktop/portal/desktop"
CONTROL = "org.voxtrel.Test.Portal"
PROGRAM = os.path.join(os.path.dirname(__file__), "..", "doubles", "portal.py")


class Portal:
    """A portal of our own on the desk's session bus."""

    def __init__(self, desk, *options):
        self._bus = desk.session_bus
        self._process = desk.spawn(sys.executable, PROGRAM, *options)
        eventually(lambda: self._bus.owner(NAME), "the portal", 20)

    def _control(self):
        return self._bus.interface(NAME, PATH, CONTROL)

    def set_dark(self, dark):
        """Chooses the dark or the light style."""
        self._control().SetDark(dark)

    def asked(self):
        """The devices that were asked for so far."""
        return [str(devices) for devices in self._control().Asked()]

    def stop(self):
        """Ends the portal."""
        self._process.stop()
        eventually(lambda: not self._bus.owner(NAME), "the portal's end")
