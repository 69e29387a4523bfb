"""One dictation from end to end on a virtual desktop with the real engine: a synthetic voice speaks into
a virtual microphone while a key is held, and an editor receives the words.

dictation_demo.py --programs FOLDER --save-to FOLDER; exits with 0 when the words were the right ones.
"""

import argparse
import os
import signal
import sys
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from demo import ENLARGED, MARGIN_PX, READY, Demonstration
from harness.desk import Desk
from harness.dictation import Dictating, Editor, Speaker
from harness.pill import Pill
from harness.polling import eventually
from harness.screen import Rect
from harness.sound import SoundServer

SPOKEN = "how are you today"
ATTEMPTS = 5
WATCHED_S = 1.2


class RealDictation(Demonstration):
    """Holds the key, has the voice speak, and takes the pictures."""

    def __init__(self, desk, app, folder, sound):
        super().__init__(desk, app, folder)
        self._speaker = Speaker(desk, sound, app)
        self._sound = sound
        self._editor = Editor(desk, "letter")

    def play(self):
        """The story: ready, recording with live bars, the words in menu and editor; then what is too short
        or too rare to be seen on the way: transcribing, stopped, loading."""
        self._app.start_dictating()
        self._state("idle", READY)
        self._speaker.press()
        self._state("recording", "Recording...")
        self._speaker.keep_holding()
        voice = self._sound.say(SPOKEN, latency_ms=500)
        self._overlay()
        voice.exit_status(30)
        self._speaker.keep_holding()
        self._speaker.release()
        self._app.wait_for_count("[gpu-decode]", 1)
        self._settle(READY)
        self._heard()
        self._app.item.wait_for_last_text(f"Last: {SPOKEN}")
        self._menu("menu-last")
        self._editor.wait_for_text(SPOKEN)
        self._save("editor", self._desk.screenshot())
        self._transcribing()
        self._settle(READY)
        self._without_engine()
        self._loading()

    def _heard(self):
        line = next(line for line in self._app.lines() if "[gpu-decode]" in line)
        print(f"  said:      {SPOKEN}\n  heard:     " + line.split('text: "')[1].rstrip('"'))

    def _overlay(self):
        """The picture with the tallest bars while the words are spoken."""
        pill = Pill(self._desk).wait_until_seen()
        around = Rect(pill.place.x - MARGIN_PX, pill.place.y - MARGIN_PX,
                      pill.place.width + 2 * MARGIN_PX, pill.place.height + 2 * MARGIN_PX)
        best, tallest = None, -1
        deadline = time.monotonic() + WATCHED_S
        while time.monotonic() < deadline:
            screen = self._desk.screenshot()
            height = sum(pill.bars(screen.crop(pill.place)))
            if height > tallest:
                best, tallest = screen.crop(around), height
        self._save("overlay", best.enlarged(ENLARGED))

    def _transcribing(self):
        """This state is very short, so the engine is stopped in it for the picture."""
        engine = self._app.engine_pids()[0]
        for _ in range(ATTEMPTS):
            texts, processings = self._app.count("[gpu-decode]"), self._app.count("Processing")
            self._speaker.press()
            self._speaker.speak(SPOKEN)
            self._speaker.release()
            self._app.wait_for_count("Processing", processings + 1)
            os.kill(engine, signal.SIGSTOP)
            held = self._is_shown_as_transcribing(texts)
            if held:
                self._state("processing", "Transcribing...")
            os.kill(engine, signal.SIGCONT)
            self._app.wait_for_count("[gpu-decode]", texts + 1)
            self._app.wait_until_ready()
            if held:
                return
        print("  processing was over too soon for a picture")

    def _is_shown_as_transcribing(self, texts):
        """Whether the state is shown before the engine's text has come."""
        def has_text():
            return self._app.count("[gpu-decode]") > texts
        eventually(lambda: has_text() or self._app.item.status() == "Transcribing...", "the state")
        return not has_text()

    def _without_engine(self):
        """A restart while the engine's file is away."""
        place = self._app.engine.executable
        os.rename(place, place + ".away")
        self._app.item.click("Restart")
        self._state("stopped", "Error: quillback binary not found")
        os.rename(place + ".away", place)

    def _loading(self):
        """This state is short, too, so the new engine is stopped before it loads its model."""
        readies = self._app.count("Ready.")
        self._app.item.click("Restart")
        engine, = eventually(self._app.engine_pids, "the new engine")
        os.kill(engine, signal.SIGSTOP)
        if self._app.count("Ready.") == readies:
            self._state("loading", "Loading model...")
        os.kill(engine, signal.SIGCONT)
        self._settle(READY)


def main():
    """Plays the story and says where its pictures are."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--programs", required=True)
    parser.add_argument("--save-to", required=True)
    options = parser.parse_args()
    os.makedirs(options.save_to, exist_ok=True)
    with Desk(compositing=True) as desk:
        sound = SoundServer(desk).start()
        app = Dictating(desk, os.path.abspath(options.programs), "demo")
        story = RealDictation(desk, app, options.save_to, sound)
        print("One dictation, with the real engine:")
        story.play()
        story.quit()
        eventually(lambda: not app.engine_pids(), "the engine's end")
        sound.stop()
    print("Screenshots:", *story.saved, sep="\n  ")


if __name__ == "__main__":
    main()
