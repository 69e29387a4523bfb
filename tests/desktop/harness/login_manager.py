"""The login manager's double: announces sleep and wake, lists who wants to delay sleep."""

import os
import sys

from .polling import eventually
from .processes import Process

NAME = "org.freedesktop.login1"
PATH = "/org/freedesktop/login1"
MANAGER = "org.freedesktop.login1.Manager"
CONTROL = "org.voxtrel.Test.LoginManager"
PROGRAM = os.path.join(os.path.dirname(__file__), "..", "doubles", "login_manager.py")


class LoginManager:
    """A login manager of our own on the private system bus."""

    def __init__(self, bus, folder, environment, options=()):
        self._bus = bus
        self._process = Process([sys.executable, PROGRAM, *options], environment,
                                os.path.join(folder, "login-manager.log"))
        eventually(lambda: bus.owner(NAME), "the login manager")

    def announce_sleep(self):
        """Says that the machine is about to sleep."""
        self._control().Announce(True)

    def announce_wake(self):
        """Says that the machine has woken up."""
        self._control().Announce(False)

    def lock(self, locked):
        """Locks or unlocks the screen."""
        self._control().Lock(locked)

    def _control(self):
        return self._bus.interface(NAME, PATH, CONTROL)

    def inhibitors(self):
        """Who delays sleep now, as (what, who, why, mode)."""
        manager = self._bus.interface(NAME, PATH, MANAGER)
        return [tuple(str(word) for word in entry[:4]) for entry in manager.ListInhibitors()]

    def history(self):
        """Everything so far in order: "taken", "refused", "released", "sleep", "wake"."""
        return [str(word) for word in self._control().History()]

    def stop(self):
        """Ends the login manager."""
        self._process.stop()
