"""The time from a press of the desktop's global shortcut until the line reaches the parent process, for the
engine and for a minimal client of the portal, in turn, with a double of the portal."""

import os
import statistics
import subprocess
import sys
import tempfile
import time

TESTS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests")
os.environ["VOXTREL_PROGRAMS"] = sys.argv[1]
sys.path[:0] = [os.path.join(TESTS, folder) for folder in ("desktop", "support", "quillback/app/program")]

# pylint: disable=wrong-import-position
from engine_program import bare_environment
from harness.buses import Bus
from harness.processes import die_with_parent
from sound_server import silent_microphone
from test_portal_key import Portal

ROUNDS = 5
PRESSES = 21
PAUSE_S = 0.06


class Contender:
    """A running program and the lines it prints."""

    def __init__(self, environment, *command):
        self._process = subprocess.Popen(command, env=environment, stdout=subprocess.PIPE,
                                         stderr=subprocess.DEVNULL, preexec_fn=die_with_parent)
        self._text = b""
        self.wait_for(b"Ready.")

    def wait_for(self, text):
        """Reads until this has come; returns when, in nanoseconds."""
        while text not in self._text:
            read = os.read(self._process.stdout.fileno(), 4096)
            if not read:
                raise AssertionError(f"it ended before it said {text}")
            self._text += read
        self._text = self._text.partition(text)[2]
        return time.monotonic_ns()

    def stop(self):
        """Ends it."""
        self._process.terminate()
        self._process.wait(10)
        self._process.stdout.close()


def measure(portal, contender, is_engine):
    """Milliseconds of each press."""
    times = []
    for _ in range(PRESSES):
        time.sleep(PAUSE_S)
        portal.do("press")
        pressed = int(portal.wait_for("pressed").split()[1])
        times.append((contender.wait_for(b"Recording...") - pressed) / 1e6)
        time.sleep(PAUSE_S)
        portal.do("release")
        if is_engine:
            contender.wait_for(b"Ready.")
    contender.stop()
    return times


def main(programs):
    """Prints both medians and their ratio."""
    with tempfile.TemporaryDirectory() as folder:
        environment = bare_environment(folder)
        environment.update(WAYLAND_DISPLAY="wayland-97531", PULSE_SERVER=silent_microphone(),
                           XDG_RUNTIME_DIR=os.path.join(folder, "run"))
        os.mkdir(environment["XDG_RUNTIME_DIR"], 0o700)
        bus = Bus("session", folder, environment)
        environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address
        portal = Portal(environment, "plasma6")
        engine, bare = [], []
        for _ in range(ROUNDS):
            engine += measure(portal, Contender(environment, f"{programs}/quillback", "run"), True)
            bare += measure(portal, Contender(environment, f"{programs}/bare_portal_key"), False)
        portal.stop()
        bus.stop()
    ours, theirs = statistics.median(engine), statistics.median(bare)
    print(f'portal\'s press to "Recording...", engine: {ours:.3f} ms')
    print(f"portal's press to a line, bare client: {theirs:.3f} ms")
    print(f'portal\'s press to "Recording...", ratio: {ours / theirs:.2f} (aim: at most 1.3)')


main(sys.argv[1])
