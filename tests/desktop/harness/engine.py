"""The scripted engine that replaces the real one, controlled and watched by the test."""

import collections
import os
import signal
import socket
import time

from .polling import eventually, pump, stays
from .processes import alive

Start = collections.namedtuple("Start", "time_s pid")


def _escaped(text):
    """Escapes backslashes, line ends and tabs for the script."""
    for letter, word in (("\\", "\\\\"), ("\n", "\\n"), ("\r", "\\r"), ("\t", "\\t")):
        text = text.replace(letter, word)
    return text


class Engine:
    """One engine executable with its script, its control socket and its log.

    Its set-up mode has separate files, as if it were a second engine.
    """

    def __init__(self, executable, mode=""):
        self.executable = executable
        self._files = executable + mode
        self._pending = []
        # The engine writes its log only if the file exists.
        with open(self._files + ".log", "a", encoding="utf-8"):
            pass

    # Steering ------------------------------------------------------------------------------------

    def at_start(self, *commands):
        """What every engine started from now on does by itself."""
        with open(self._files + ".script", "w", encoding="utf-8") as script:
            script.write("".join(command + "\n" for command in commands))

    def say(self, line):
        """Has the running engine print a line."""
        self._tell("print " + _escaped(line))

    def put(self, text):
        """Has the running engine print a text in one write, as it is, without an end of line."""
        self._tell("write " + _escaped(text))

    def make_weights(self, model):
        """Has the running engine write the file that marks a model as present."""
        self._tell("weights " + model)

    def exit(self, status):
        """Has the running engine exit by itself."""
        self._end(f"exit {status}")

    def kill(self, number):
        """Has the running engine die of a signal."""
        self._end(f"signal {int(number)}")

    def ignore_sigterm(self):
        """Has the running engine ignore the request to stop."""
        self._tell("ignore-term")

    def flood(self, size_bytes, line, then):
        """Has the engine print so many bytes of one line, then another; returns at once."""
        self.send(f"flood {size_bytes} {line}", "print " + _escaped(then))

    def flood_of_states(self, size_bytes, lines, then):
        """The same with several lines in turn, each of which changes the state."""
        block = "".join(line + "\n" for line in lines) * 200
        times = size_bytes // len(block)
        self.send(f"repeat {times} " + _escaped(block[:-1]), "print " + _escaped(then))

    def _connect(self):
        """A connection to the engine that was started last, as soon as it listens."""
        def attempt():
            connection = socket.socket(socket.AF_UNIX)
            connection.settimeout(20)
            try:
                connection.connect(self._files + ".control")
                return connection
            except (FileNotFoundError, ConnectionRefusedError):
                connection.close()
                return None

        return eventually(attempt, "the engine to listen")

    def send(self, *commands):
        """Sends commands without waiting for the replies; the connection stays open for them."""
        connection = self._connect()
        connection.sendall("".join(command + "\n" for command in commands).encode())
        self._pending.append(connection)

    def _tell(self, command):
        with self._connect() as connection:
            connection.sendall((command + "\n").encode())
            answer = connection.makefile(encoding="utf-8").readline()
        if not answer.startswith("ok"):
            raise AssertionError(f"the engine answered {answer!r} to {command!r}")

    def _end(self, command):
        """A command that ends the engine has no answer; the engine's end is waited for."""
        running = self.running()
        with self._connect() as connection:
            connection.sendall((command + "\n").encode())
            try:
                connection.recv(1)
            except ConnectionResetError:
                pass  # it ended with our bytes unread
        eventually(lambda: not any(alive(pid) for pid in running), "the engine's end")

    # Watching ------------------------------------------------------------------------------------

    @staticmethod
    def now_s():
        """The time on the clock of the engine's log."""
        return time.clock_gettime(time.CLOCK_MONOTONIC)

    def starts(self):
        """All starts so far, from the engine's own log."""
        with open(self._files + ".log", encoding="utf-8", errors="replace") as log:
            words = [line.split() for line in log]
        return [Start(float(w[0]), int(w[1])) for w in words if w[2:] == ["start"]]

    def wait_for_starts(self, count, limit_s=10.0):
        """Waits until the engine has been started that many times."""
        eventually(lambda: len(self.starts()) >= count,
                   f"start {count} of the engine; {len(self.starts())} so far", limit_s)

    def running(self):
        """The process ids of all engines that run now."""
        return [start.pid for start in self.starts() if alive(start.pid) and self._is_ours(start.pid)]

    def _is_ours(self, pid):
        """The system may have given the process id to another program since."""
        try:
            return os.readlink(f"/proc/{pid}/exe") == self.executable
        except OSError:
            return False

    def wait_for_one_running(self):
        """Waits until exactly one engine runs; returns its process id."""
        return eventually(lambda: len(self.running()) == 1, "one engine") and self.running()[0]

    def stays_running(self, for_s):
        """Fails if another engine than the one that runs now is seen during the time."""
        before = self.wait_for_one_running()
        stays(lambda: self.running() == [before], "the running engine", for_s)

    def stop_leftovers(self):
        """Ends engines that should have ended with the program; returns how many there were."""
        pump()
        left = self.running()
        for pid in left:
            os.kill(pid, signal.SIGKILL)
        for connection in self._pending:
            connection.close()
        return len(left)
