"""A double of the program that opens pages for the user; it records what it was asked to open."""

import os
import signal

from .polling import eventually

SCRIPT = """#!/bin/sh
printf '%s\\n' "$@" >> "{log}"
{then}
"""
HANG = """echo $$ > "{log}.pid"
exec sleep 60
"""


class Opener:
    """Comes before the real one for a program that is started with its PATH."""

    def __init__(self, folder, hangs=False):
        self._folder = folder
        os.makedirs(folder)
        self._log = os.path.join(folder, "opened")
        path = os.path.join(folder, "xdg-open")
        with open(path, "w", encoding="utf-8") as file:
            file.write(SCRIPT.format(log=self._log, then=HANG.format(log=self._log) if hangs else ""))
        os.chmod(path, 0o755)

    def path(self, environment):
        """The PATH on which it is found first."""
        return self._folder + ":" + environment["PATH"]

    def stop(self):
        """Ends one that hangs; it outlives the program that started it."""
        try:
            with open(self._log + ".pid", encoding="ascii") as file:
                os.kill(int(file.read()), signal.SIGKILL)
        except (FileNotFoundError, ProcessLookupError):
            pass

    def opened(self):
        """All that it was asked to open."""
        try:
            with open(self._log, encoding="utf-8") as file:
                return file.read().splitlines()
        except FileNotFoundError:
            return []

    def wait_for_one(self):
        """Waits until it has been asked once; returns what for."""
        eventually(self.opened, "something to be opened")
        page, = self.opened()
        return page
