"""The program under test, alone in a folder with its engine, as it would be installed."""

import os
import re
import shutil
import time

from .engine import Engine
from .polling import eventually, pump
from .processes import Process

SANITIZER_REPORT = re.compile(r"(Address|Thread|Leak|Memory|UndefinedBehavior)Sanitizer|runtime error:")
PASSED_ON = ("ASAN_OPTIONS", "LSAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS")
MODEL = ".local/share/quillback/weights/whisper-large-v3"


class Application:
    """One installation of the program: its folder, its home, its engine, and its running process."""

    def __init__(self, desk, programs, name="app", with_engine=True, with_model=True,
                 program="voxtrel"):
        self._desk = desk
        self._folder = desk.path(name)
        self._starts = 0
        self.home = os.path.join(self._folder, "home")
        self.process = None
        self.item = None
        self.wrapper = []
        os.makedirs(self.home)
        if with_model:
            self.install_model()
        self.executable = os.path.join(self._folder, "voxtrel")
        shutil.copy2(os.path.join(programs, program), self.executable)
        self.engine = Engine(os.path.join(self._folder, "quillback"))
        self.setup = Engine(self.engine.executable, ".setup")
        self.check = Engine(self.engine.executable, ".check")
        if with_engine:
            shutil.copy2(os.path.join(programs, "scripted-engine"), self.engine.executable)

    def install_model(self):
        """Writes the file that marks the model as present."""
        os.makedirs(os.path.join(self.home, MODEL))
        with open(os.path.join(self.home, MODEL, "manifest.json"), "w", encoding="ascii") as file:
            file.write("{}\n")

    def remove_model(self):
        """Removes the model."""
        shutil.rmtree(os.path.join(self.home, MODEL))

    @property
    def configuration(self):
        """The path of the engine's configuration file."""
        return os.path.join(self.home, ".config/quillback/config.toml")

    def configure(self, text):
        """Writes the engine's configuration file; `text` may be bytes."""
        os.makedirs(os.path.dirname(self.configuration), exist_ok=True)
        with open(self.configuration, "wb") as file:
            file.write(text if isinstance(text, bytes) else text.encode())

    def show_key(self):
        """From now on the engine says that it can see the push-to-talk key."""
        self.check.at_start("print key: yes, Right Cmd by a double", "exit 0")

    def hide_key(self):
        """From now on the engine says that it cannot see it."""
        self.check.at_start("print key: no, Right Cmd cannot be seen: a double forbids it", "exit 1")

    # Running -------------------------------------------------------------------------------------

    def environment(self, **changes):
        """What the program is started with; a change to None takes a variable away."""
        wanted = dict(self._desk.environment, HOME=self.home,
                      XDG_CONFIG_HOME=os.path.join(self.home, ".config"))
        wanted.update((name, os.environ[name]) for name in PASSED_ON if name in os.environ)
        # Without root's rights the tests could not look at the programs either.
        if os.geteuid() != 0:
            wanted["VOXTREL_CORE"] = "1"
        wanted.update(changes)
        return {name: value for name, value in wanted.items() if value is not None}

    def start(self, *arguments, **changes):
        """Starts the program without waiting for anything."""
        self._starts += 1
        log = self._desk.path(f"logs/{os.path.basename(self._folder)}-{self._starts}.log")
        self.process = Process([*self.wrapper, self.executable, *arguments],
                               self.environment(**changes), log)
        return self.process

    def start_in_tray(self, **changes):
        """Starts the program and waits until it is in the tray and its engine is up."""
        self.start(**changes)
        return self.wait_until_in_tray()

    def wait_until_in_tray(self, limit_s=10.0):
        """Waits until the program is in the tray and its engine is up."""
        self.item = self._desk.tray.wait_for_item(self.process.pid, limit_s)
        self.engine.wait_for_starts(1, limit_s)
        return self

    def start_ready(self, **changes):
        """Starts the program and lets its engine report that it is ready."""
        self.start_in_tray(**changes)
        self.engine.say("Ready.")
        self.item.wait_for_status("Ready — hold Right Cmd")
        return self

    def stop(self):
        """Ends the program, if it still runs, and an engine that it may have left behind."""
        if self.process:
            self.process.stop()
        self.engine.stop_leftovers()
        self.setup.stop_leftovers()
        self.check.stop_leftovers()

    # Watching ------------------------------------------------------------------------------------

    def output(self):
        """Everything that the latest start has printed."""
        return self.process.output()

    def reports(self):
        """The sanitizer reports of all starts."""
        found = []
        for number in range(1, self._starts + 1):
            log = self._desk.path(f"logs/{os.path.basename(self._folder)}-{number}.log")
            with open(log, encoding="utf-8", errors="replace") as file:
                found += [line for line in file if SANITIZER_REPORT.search(line)]
        return found

    def peak_memory_mib(self):
        """The most physical memory that the process has ever had."""
        return self._status_kib("VmHWM") / 1024

    def reset_peak_memory(self):
        """Resets the peak to the memory in use now."""
        with open(f"/proc/{self.process.pid}/clear_refs", "w", encoding="ascii") as file:
            file.write("5")

    def _status_kib(self, field):
        with open(f"/proc/{self.process.pid}/status", encoding="ascii") as status:
            return next(int(line.split()[1]) for line in status if line.startswith(field + ":"))

    def slowest_menu_answer_s(self, until, limit_s=120.0):
        """Reads the menu again and again until `until()` is true; the longest reading in seconds."""
        slowest = 0.0
        deadline = time.monotonic() + limit_s
        while not until():
            if time.monotonic() > deadline:
                raise AssertionError(f"not done within {limit_s} s")
            started = time.monotonic()
            self.item.rows()
            slowest = max(slowest, time.monotonic() - started)
            pump()
        return slowest

    def wait_for_output(self, text, limit_s=5.0):
        """Waits until the program has printed `text`."""
        eventually(lambda: text in self.output(), f"{text!r} in the program's output", limit_s)
