"""A person who dictates: holds the key, speaks into the virtual microphone, reads the editor."""

import glob
import os
import shutil

from .application import Application
from .polling import eventually, stays
from .processes import alive

# The right Super key, by its place: a key symbol would press the left one as well.
KEY_CODE = "134"
# How long people take from seeing that they are recorded to speaking, and from the end to letting go.
BREATH_S = 0.15

PHRASES = ("one two three four five", "how are you today", "nice to meet you", "see you next week",
           "we need more time", "the answer is yes", "happy birthday to you",
           "we are ready to start", "this is the first time")


class Dictating(Application):
    """The application with the real engine beside it."""

    def __init__(self, desk, programs, name="dictating", with_model=True):
        super().__init__(desk, programs, name, with_engine=False, with_model=with_model)
        shutil.copy2(os.path.join(programs, "quillback"), self.engine.executable)
        self._desk = desk
        shutil.rmtree(desk.path("run/quillback"), ignore_errors=True)

    def start_dictating(self):
        """Starts the program and waits until its engine is ready; every line of it is logged,
        with the words."""
        # Where Whisper is built in, its setup finds no server: no test fetches gigabytes.
        self.start(VOXTREL_LOG="debug,words", QUILLBACK_MODEL_URL="http://127.0.0.1:9")
        self.item = self._desk.tray.wait_for_item(self.process.pid)
        self.wait_for_count("Ready.", 1)  # the tray reads so before the engine has said anything
        self.wait_until_ready()
        return self

    def wait_until_ready(self, limit_s=20.0):
        """Waits for the status of an engine that is ready."""
        self.item.wait_for_status("Ready — hold Right Cmd", limit_s)

    def engine_pids(self):
        """The engines that this program has started and that run."""
        return self._engine_children(self.process.pid, "run")

    def recogniser_pids(self):
        """The processes in which the running engines recognise."""
        return [pid for engine in self.engine_pids()
                for pid in self._engine_children(engine, "recognise")]

    def _engine_children(self, wanted, command):
        """The processes of the engine's executable that run this command, and whose parent is the wanted one."""
        found = []
        for entry in filter(str.isdigit, os.listdir("/proc")):
            try:
                with open(f"/proc/{entry}/stat", encoding="ascii", errors="replace") as stat:
                    parent = int(stat.read().rpartition(")")[2].split()[1])
                if parent == wanted and os.readlink(f"/proc/{entry}/exe") == \
                        os.path.realpath(self.engine.executable) and \
                        self._command_of(entry) == command:
                    found.append(int(entry))
            except OSError:
                continue  # it has just ended
        return [pid for pid in found if alive(pid)]

    @staticmethod
    def _command_of(pid):
        """The first argument of a process."""
        with open(f"/proc/{pid}/cmdline", encoding="utf-8", errors="replace") as file:
            return (file.read().split("\0") + [""])[1]

    def texts(self):
        """The texts that the engine has printed."""
        return [line.split('text: "', 1)[1].removesuffix('"') for line in self.lines()
                if "[gpu-decode]" in line]

    def kept_recordings(self):
        """The recordings of which not all words were inserted; not those without words."""
        return glob.glob(self._desk.path("run/quillback/take-*[0-9].wav"))

    def wait_until_inserted(self, limit_s=20.0):
        """Waits until all words are inserted. A key pressed while they are typed would mix with them:
        Ctrl, of the keys that save the editor's file, makes a shortcut of the next letter."""
        eventually(lambda: not self.kept_recordings(), "the insertion", limit_s)

    def lines(self):
        """What the engine has printed, as the program has logged it."""
        return self.output().splitlines()

    def count(self, text):
        """How many lines so far hold `text`."""
        return sum(text in line for line in self.lines())

    def wait_for_count(self, text, count, limit_s=20.0):
        """Waits until so many lines hold `text`."""
        eventually(lambda: self.count(text) >= count,
                   f"line {count} with {text!r}; {self.count(text)} so far", limit_s)


class Speaker:
    """The person's hand on the key and voice."""

    def __init__(self, desk, sound, app):
        self._desk = desk
        self._sound = sound
        self._app = app

    def press(self):
        """Holds the key down, and waits until the engine says that it records."""
        before = self._app.count("Recording...")
        self._desk.xdotool("keydown", KEY_CODE)
        self._app.wait_for_count("Recording...", before + 1)

    def keep_holding(self, for_s=BREATH_S):
        """Holds the key that long; the engine must record all the while."""
        stays(lambda: self._app.item.status() == "Recording...", "recording", for_s)

    def release(self):
        """Releases the key."""
        self._desk.xdotool("keyup", KEY_CODE)

    def escape(self):
        """Presses Escape while the key is held."""
        self._desk.xdotool("key", "Escape")

    def speak(self, text):
        """Says it to the end."""
        voice = self._sound.say(text, latency_ms=500)
        voice.exit_status(30)

    def play(self, recording):
        """Plays a recording to the end."""
        voice = self._sound.play_file(recording.path)
        voice.exit_status(recording.seconds + 20)

    def dictate(self, text):
        """One whole dictation; waits for its words in the menu."""
        self.press()
        self._app.item.wait_for_status("Recording...")
        self.keep_holding()
        self.speak(text)
        self.keep_holding()
        self.release()
        self._app.item.wait_for_last_text("Last: " + text, 20.0)
        self._app.wait_until_ready()
        self._app.wait_until_inserted()


class Editor:
    """Debian's mousepad with one file; what is typed into it is read from the saved file."""

    def __init__(self, desk, name):
        self._desk = desk
        self._path = desk.path(name + ".txt")
        with open(self._path, "w", encoding="utf-8"):
            pass
        self._process = desk.spawn("mousepad", "--disable-server", self._path)
        self._window = eventually(self._find_window, "the editor's window", 20)
        self.focus()

    def _find_window(self):
        found = self._desk.xdotool_or_nothing("search", "--onlyvisible", "--name",
                                              os.path.basename(self._path))
        return found.split()[0] if found.split() else None

    def focus(self):
        """Gives it the focus."""
        self._desk.xdotool("windowactivate", "--sync", self._window)
        eventually(lambda: self._desk.xdotool_or_nothing("getwindowfocus").strip() == self._window,
                   "the editor's focus")

    def text(self):
        """Saves the file and reads it."""
        self._desk.xdotool("key", "ctrl+s")
        with open(self._path, encoding="utf-8") as file:
            return file.read().rstrip("\n")

    def wait_for_text(self, text, limit_s=10.0):
        """Waits until it holds exactly this."""
        try:
            eventually(lambda: self.text() == text, "the text", limit_s)
        except AssertionError:
            raise AssertionError(f"the editor holds {self.text()!r}, not {text!r}") from None

    def close(self):
        """Ends it."""
        self._process.stop()
