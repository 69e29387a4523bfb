"""The engine's program: run to its end, or started as the application starts it and read line by line."""

import contextlib
import os
import signal
import subprocess
import tempfile
import threading
import time
import unittest

from harness.polling import eventually, stays
from harness.processes import die_with_parent, is_sanitized
from sound_server import silent_microphone

EXECUTABLE = os.path.join(os.environ.get("VOXTREL_PROGRAMS", ""), "quillback")
# The documented limit; sanitizers are slower.
PROMPT_S = 3.0 if is_sanitized(EXECUTABLE) else 0.5
PASSED_ON = ("ASAN_OPTIONS", "LSAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS")


def catches(pid, number):
    """Whether the process has a handler for the signal; the engine installs it first of all."""
    with open(f"/proc/{pid}/status", encoding="ascii") as status:
        caught = next(int(line.split()[1], 16) for line in status if line.startswith("SigCgt"))
    return bool(caught & 1 << number - 1)


def bare_environment(home):
    """Nothing of this machine's own desktop: no display, no sound server."""
    wanted = {"HOME": home, "PATH": "/usr/bin:/bin", "LANG": "C.UTF-8",
              "PULSE_SERVER": "unix:" + os.path.join(home, "no-sound-server"),
              "DBUS_SESSION_BUS_ADDRESS": "unix:path=" + os.path.join(home, "no-bus")}
    wanted.update((name, os.environ[name]) for name in PASSED_ON if name in os.environ)
    # Without root's rights neither the tests nor a sanitizer could look at the engine.
    if os.geteuid() != 0:
        wanted["VOXTREL_CORE"] = "1"
    return wanted


def run_command(*words, environment, **options):
    """Runs a command of the engine until it ends."""
    wanted = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **options}
    return subprocess.run([EXECUTABLE, *words], env=environment, text=True, check=False, timeout=20,
                          **wanted)


@contextlib.contextmanager
def virtual_display(name=None):
    """An X server without a screen, by default with a free name; yields its name. One that reset itself when its
    last client leaves would refuse the next one at that moment."""
    reading, writing = os.pipe()
    with os.fdopen(reading) as announced, subprocess.Popen(
            ["Xvfb", *([name] if name else []), "-displayfd", str(writing), "-nolisten", "tcp", "-noreset"],
            pass_fds=(writing,), stderr=subprocess.DEVNULL, preexec_fn=die_with_parent) as server:
        os.close(writing)
        try:
            yield ":" + announced.readline().strip()
        finally:
            server.terminate()


def write_settings(home, text):
    """Writes the settings file of this home folder."""
    folder = os.path.join(home, ".config", "quillback")
    os.makedirs(folder)
    with open(os.path.join(folder, "config.toml"), "w", encoding="utf-8") as file:
        file.write(text)


def show_key(home):
    """From now on an engine with this home folder can see the key, by the command."""
    folder = os.path.join(home, ".local/state/quillback")
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, "key-by-command"), "w", encoding="ascii"):
        pass


class EngineProgram:
    """One running engine. `stdout`: a descriptor in place of the pipe that is read here. To be ready it must
    see a key and hear a microphone: `sees_key`, `hears`: whether it does, even without a desktop."""

    def __init__(self, *arguments, home=None, stdout=None, environment=None, user=None,
                 executable=EXECUTABLE, sees_key=True, hears=True):
        self._folder = None
        if home is None:
            self._folder = tempfile.TemporaryDirectory(prefix="quillback-test-")
            home = self._folder.name
        self.home = home
        environment = dict(environment or bare_environment(home))
        if hears:
            environment["PULSE_SERVER"] = silent_microphone()
        if sees_key:
            show_key(environment["HOME"])
        self.lines = []
        self._arrived = threading.Condition()
        self._reader = None
        self.child = subprocess.Popen(
            [executable, *arguments], stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE if stdout is None else stdout, stderr=subprocess.STDOUT,
            env=environment, preexec_fn=die_with_parent, user=user)
        if stdout is None:
            self._reader = threading.Thread(target=self._read, daemon=True)
            self._reader.start()

    def _read(self):
        for line in self.child.stdout:
            with self._arrived:
                self.lines.append((time.monotonic(), line.decode().rstrip("\n")))
                self._arrived.notify_all()

    def texts(self):
        """All lines so far."""
        with self._arrived:
            return [text for _, text in self.lines]

    def wait_for_line(self, part, limit_s=10.0, after=0):
        """Waits for a line that contains `part`; returns its number."""
        def found():
            return next((i for i, (_, text) in enumerate(self.lines) if i >= after and part in text),
                        None)
        with self._arrived:
            if not self._arrived.wait_for(lambda: found() is not None, limit_s):
                raise AssertionError(f"no line with {part!r}: {[text for _, text in self.lines]}")
            return found()

    def wait_until_signals_are_caught(self, limit_s=10.0):
        """Until the handlers are installed, a signal kills the program."""
        eventually(lambda: catches(self.child.pid, signal.SIGTERM), "SIGTERM caught", limit_s)

    def stays_alive(self, for_s):
        """Fails if it ends meanwhile."""
        stays(lambda: self.child.poll() is None, "the engine", for_s)

    def end(self, number=signal.SIGTERM):
        """Asks it to end; returns its exit status and how long that took."""
        begun = time.monotonic()
        self.child.send_signal(number)
        status = self.child.wait(10)
        return status, time.monotonic() - begun

    def close(self):
        """Ends it whatever happens."""
        if self.child.poll() is None:
            self.child.kill()
        self.child.wait()
        if self._reader:
            self._reader.join()
            self.child.stdout.close()
        if self._folder:
            self._folder.cleanup()


class ProgramCase(unittest.TestCase):
    """Starts engines that end with the test."""

    def start(self, *arguments, **options):
        """An engine with its own home folder."""
        program = EngineProgram(*(arguments or ("run",)), **options)
        self.addCleanup(program.close)
        return program

    def make_home(self):
        """A home folder that goes with the test."""
        home = tempfile.TemporaryDirectory(prefix="quillback-test-")
        self.addCleanup(home.cleanup)
        return home.name

    def make_runtime_folder(self):
        """An environment with a home and a run-time folder; returns it and the engine's part of the latter,
        which is not made yet."""
        environment = bare_environment(self.make_home())
        environment["XDG_RUNTIME_DIR"] = os.path.join(environment["HOME"], "run")
        os.makedirs(environment["XDG_RUNTIME_DIR"])
        return environment, os.path.join(environment["XDG_RUNTIME_DIR"], "quillback")

    def ends_well(self, program, number=signal.SIGTERM):
        """Checks that it ends at once with status 0."""
        status, took_s = program.end(number)
        self.assertEqual(status, 0)
        self.assertLess(took_s, PROMPT_S)
