"""Texts that the engine's own parts insert, and the text field of a portal's double that receives them."""

import json
import os
import statistics
import subprocess
import sys
import tempfile
import threading
import time
import unittest

from engine_program import bare_environment, write_settings
from harness.buses import Bus
from harness.polling import eventually, stays
from harness.processes import die_with_parent

FOLDER = os.path.dirname(os.path.abspath(__file__))
INSERTER = os.path.join(os.environ.get("VOXTREL_PROGRAMS", ""), "quillback-inserter")
TEXTS = {"ASCII": "The quick brown fox jumps over the lazy dog: 1234567890 #@!~ {[|]} <\\>",
         "umlauts": "Größe, Übung, Äpfel, çà et là, œuvre, ñ, Łódź",
         "Greek": "Ξεσκεπάζω την ψυχοφθόρα βδελυγμία",
         "Cyrillic": "Съешь же ещё этих мягких французских булок",
         "CJK": "漢字かな交じり文。我们需要更多时间",
         "emoji": "well done 😀🎉👍 — 100 %",
         "lines": "two\nlines\n",
         "long": "x" * 300_000}
SIXTY = "This sentence has sixty characters, no more and no fewer: ok"
AIM_MS = 150.0
THEIRS = "what the user had copied"
WL_COPY = """#!/bin/sh
cat > "{folder}/clipboard.new" && mv "{folder}/clipboard.new" "{folder}/clipboard"
"""


class Talker:
    """A program that says lines; they are read as they come."""

    def __init__(self, *words, environment):
        self._child = subprocess.Popen(words, env=environment, stdin=subprocess.PIPE,
                                       stdout=subprocess.PIPE, preexec_fn=die_with_parent)
        self._lines = []
        self._arrived = threading.Condition()
        threading.Thread(target=self._read, daemon=True).start()

    def _read(self):
        for line in self._child.stdout:
            with self._arrived:
                self._lines.append(line.decode().rstrip("\n"))
                self._arrived.notify_all()

    @property
    def pid(self):
        """Its process id."""
        return self._child.pid

    def lines(self, start=""):
        """All lines so far that begin so."""
        with self._arrived:
            return [line for line in self._lines if line.startswith(start)]

    def wait_for(self, start, count=1, limit_s=20.0):
        """Waits for line number `count` that begins so; returns what follows."""
        def found():
            return [line for line in self._lines if line.startswith(start)][count - 1:count]
        with self._arrived:
            if not self._arrived.wait_for(found, limit_s):
                raise AssertionError(f"no line {count} with {start!r}: {self._lines}")
            return found()[0][len(start):].strip()

    def send(self, data):
        """Bytes on its standard input."""
        self._child.stdin.write(data)
        self._child.stdin.flush()

    def stop(self):
        """Ends it by the end of its input."""
        if not self._child.stdin.closed:
            self._child.stdin.close()
            self._child.wait(10)


class Desktop(Talker):
    """The double of the desktop's portal."""

    def __init__(self, kind, folder, environment):
        super().__init__(sys.executable, os.path.join(FOLDER, "words_portal.py"), kind, folder,
                         environment=environment)
        self.wait_for("portal")

    def do(self, command):
        """Has it do something."""
        self.send(command.encode() + b"\n")

    def pasted(self, count):
        """The text of a paste, and when it was there."""
        moment, text = self.wait_for("pasted", count).split(" ", 1)
        return json.loads(text), int(moment)

    def wait_until_pasted(self, wanted):
        """Waits for this text, whatever else was pasted before."""
        def texts():
            return [json.loads(line.split(" ", 2)[2]) for line in self.lines("pasted")]
        eventually(lambda: wanted in texts(), f"the paste of {wanted!r}", 20)

    def clipboard(self):
        """What another program would get now."""
        number = len(self.lines("clipboard")) + 1
        self.do("show")
        return json.loads(self.wait_for("clipboard", number))


class WordsCase(unittest.TestCase):
    """A session bus, a home, and programs in it."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        self.environment = bare_environment(self.folder)
        self.environment.update(WAYLAND_DISPLAY="wayland-97531",
                                XDG_RUNTIME_DIR=os.path.join(self.folder, "run"))
        os.mkdir(self.environment["XDG_RUNTIME_DIR"], mode=0o700)
        self.bus = Bus("session", self.folder, self.environment)
        self.addCleanup(self.bus.stop)
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = self.bus.address

    def desktop(self, kind, environment=None):
        """The desktop's portal."""
        desktop = Desktop(kind, self.folder, environment or self.environment)
        self.addCleanup(desktop.stop)
        return desktop

    def inserter(self):
        """What the engine inserts words with."""
        inserter = Talker(INSERTER, environment=self.environment)
        self.addCleanup(inserter.stop)
        inserter.wait_for("started")
        return inserter

    def settings(self, text):
        """Writes the settings."""
        write_settings(self.environment["HOME"], text)

    def state(self, name):
        """A file of the engine's state."""
        return os.path.join(self.environment["HOME"], ".local/state/quillback", name)

    def wait_until_open(self, desktop, how="asked", count=1):
        """Waits until the session has started, which a restored one does without a question."""
        desktop.wait_for(how, count)
        eventually(lambda: os.path.exists(self.state("paste-token")), "the token")

    def open_without_token(self, inserter, desktop, how="asked"):
        """Without a token nothing tells that the session has started but the first text that is pasted."""
        desktop.wait_for(how)

        def is_pasted():
            inserted = len(inserter.lines("inserted"))
            inserter.send(b"first\0")
            inserter.wait_for("inserted", inserted + 1)
            return desktop.lines("pasted")
        eventually(is_pasted, "the first paste")

    def inserts(self, inserter, desktop, texts):
        """Each text arrives exactly; a space between them is no part of them."""
        for number, (kind, text) in enumerate(texts.items(), 1):
            with self.subTest(kind=kind):
                inserter.send(text.encode() + b"\0")
                self.assertEqual(desktop.pasted(number)[0].removeprefix(" "), text)
                inserter.wait_for("inserted", number)

    def arrives_in_time(self, inserter, desktop):
        """The time from the words to the last character in the field, as a median."""
        taken = []
        for number in range(1, 14):
            begun = time.monotonic_ns()
            inserter.send(SIXTY.encode() + b"\0")
            text, there = desktop.pasted(number)
            self.assertEqual(text.removeprefix(" "), SIXTY)
            taken.append((there - begun) / 1e6)
            eventually(lambda: desktop.clipboard() == THEIRS, "the old clipboard")
        print(f"60 characters: median {statistics.median(taken):.1f} ms, longest {max(taken):.1f} ms",
              file=sys.stderr)
        self.assertLessEqual(statistics.median(taken), AIM_MS)

    def sleeps(self, pid):
        """Nothing wakes the program once it has done its work."""
        def switches():
            total = 0
            for task in os.listdir(f"/proc/{pid}/task"):
                with open(f"/proc/{pid}/task/{task}/status", encoding="ascii") as status:
                    total += sum(int(line.split()[1]) for line in status if "ctxt_switches" in line)
            return total

        def rests():
            calm = switches()
            try:
                stays(lambda: switches() == calm, "no wake-up", 3)
            except AssertionError:
                return False
            return True
        eventually(rests, "three seconds without a wake-up", 20)


class CompositorCase(WordsCase):
    """In the session of a class's own compositor, `desk`, in which other programs copy too."""

    desk = None

    def setUp(self):
        super().setUp()
        mine = {name: self.environment[name] for name in ("HOME", "XDG_RUNTIME_DIR")}
        self.environment = dict(self.desk.environment, XDG_CURRENT_DESKTOP="KDE", **mine)
        for name in ("XDG_STATE_HOME", "XDG_CONFIG_HOME"):
            self.environment.pop(name, None)
        self.copy(THEIRS.encode())

    def copy(self, data, *options):
        """Another program copies."""
        subprocess.run(["wl-copy", *options], env=self.desk.environment, input=data, check=True,
                       timeout=20)

    def plasma(self, kind="plasma6"):
        """The portal, beside the whole compositor."""
        return self.desktop(kind, self.desk.environment)

    def start(self, kind="plasma6"):
        """An open session and its portal."""
        plasma = self.plasma(kind)
        inserter = self.inserter()
        self.wait_until_open(plasma)
        return inserter, plasma


class LastWay(WordsCase):
    """With a wl-copy that writes a file."""

    def setUp(self):
        super().setUp()
        programs = os.path.join(self.folder, "programs")
        os.mkdir(programs)
        with open(os.path.join(programs, "wl-copy"), "w", encoding="utf-8") as file:
            file.write(WL_COPY.format(folder=self.folder))
        os.chmod(os.path.join(programs, "wl-copy"), 0o755)
        self.environment["PATH"] = programs + ":" + self.environment["PATH"]

    def copied(self):
        """The text of the last way to copy."""
        try:
            with open(os.path.join(self.folder, "clipboard"), encoding="utf-8") as file:
                return file.read()
        except FileNotFoundError:
            return None
