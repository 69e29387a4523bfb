"""The overlay without the rest of the program, shown and hidden on command."""

import os
import subprocess

from .processes import die_with_parent


class OverlayDriver:
    """A running overlay-driver; it replies to every command with one line."""

    def __init__(self, desk, programs, log, **changes):
        environment = dict(desk.environment, **changes)
        environment.update((name, value) for name, value in os.environ.items()
                           if name.endswith("SAN_OPTIONS"))
        self._errors = open(log, "ab")
        self._child = subprocess.Popen(
            [os.path.join(programs, "overlay-driver")], env=environment, text=True,
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=self._errors,
            preexec_fn=die_with_parent)
        self.log = log

    @property
    def pid(self):
        """The process id."""
        return self._child.pid

    def is_running(self):
        """Whether it is running."""
        return self._child.poll() is None

    def ask(self, command):
        """Sends a command; returns the reply."""
        self._child.stdin.write(command + "\n")
        self._child.stdin.flush()
        answer = self._child.stdout.readline()
        if not answer:
            raise AssertionError("the overlay driver has ended")
        return answer.strip()

    def show(self):
        """Shows the overlay; returns how long the call took, in seconds."""
        return int(self.ask("show")) / 1e6

    def hide(self):
        """Hides the overlay; returns how long the call took, in seconds."""
        return int(self.ask("hide")) / 1e6

    def stats(self):
        """Its counters by name."""
        words = self.ask("stats").split()
        return dict(zip(words[::2], map(float, words[1::2])))

    def quit(self):
        """Ends it as if the user did; returns the exit status."""
        if self._child.poll() is None:
            self._child.stdin.write("quit\n")
            self._child.stdin.close()
        status = self._child.wait(20)
        self._child.stdout.close()
        self._errors.close()
        return status

    def output(self):
        """Everything that it has printed to standard error."""
        with open(self.log, encoding="utf-8", errors="replace") as log:
            return log.read()
