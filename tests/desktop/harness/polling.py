"""Waiting for the outside world: always for a condition, always with a limit."""

import time

from gi.repository import GLib

STEP_S = 0.01


def pump():
    """Lets D-Bus messages that have arrived reach their handlers."""
    context = GLib.MainContext.default()
    while context.iteration(False):
        pass


def eventually(condition, what, limit_s=5.0):
    """Returns the first true result of `condition`; at the limit fails and names `what`."""
    deadline = time.monotonic() + limit_s
    while True:
        pump()
        answer = condition()
        if answer:
            return answer
        if time.monotonic() > deadline:
            raise AssertionError(f"waited {limit_s} s in vain for {what}")
        time.sleep(STEP_S)


def stays(condition, what, for_s):
    """Fails as soon as `condition` is not true during the next `for_s` seconds."""
    deadline = time.monotonic() + for_s
    while time.monotonic() < deadline:
        pump()
        if not condition():
            raise AssertionError(f"did not last {for_s} s: {what}")
        time.sleep(STEP_S)
