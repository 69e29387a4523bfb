"""One push-to-talk from end to end on a virtual desktop, with a picture of everything to be seen.

demo.py --programs FOLDER --save-to FOLDER; exits with 0 when all that it shows has come true.
"""

import argparse
import os
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from harness.application import Application
from harness.desk import Desk
from harness.polling import eventually
from harness.screen import Rect

READY = "Ready — hold Right Cmd"
SPOKEN = "how are you today"
SMALLEST_WINDOW_PX = 50
ENLARGED = 4
MARGIN_PX = 12


class Demonstration:
    """Plays the engine's part and takes the pictures."""

    def __init__(self, desk, app, folder):
        self._desk = desk
        self._app = app
        self._folder = folder
        self._last_icon = desk.panel.icon()
        self.saved = []

    def play(self):
        """The story: loading, ready, recording, transcribing, the text, a crash, an error."""
        engine, item = self._app.engine, self._app.item
        self._state("loading", "Loading model...")
        engine.say("Ready.")
        self._state("idle", READY)
        engine.say("Recording...")
        self._state("recording", "Recording...")
        engine.say("Processing 1.4 s of audio")
        self._state("processing", "Transcribing...")
        engine.say(f'[gpu-decode] text: "{SPOKEN}"')
        engine.say("Ready.")
        self._settle(READY)
        item.wait_for_last_text(f"Last: {SPOKEN}")
        self._menu("menu")
        self._crash()
        engine.say("[quillback] ERROR the microphone was unplugged")
        engine.exit(0)
        self._state("stopped", "Error: [quillback] ERROR the microphone was unplugged")
        self._menu("menu-stopped")

    def quit(self):
        """Quits by the menu, as the user does."""
        self._app.item.click("Quit Voxtrel")
        if self._app.process.exit_status() != 0 or self._app.engine.running():
            raise AssertionError("the program did not end well")

    def _state(self, name, row):
        self._settle(row)
        self._save(f"tray-{name}", self._last_icon.enlarged(ENLARGED))
        print(f"  {name:<10} {row}")

    def _settle(self, row):
        """Waits for a state's row and icon; each icon differs from the one before."""
        self._app.item.wait_for_status(row)
        self._last_icon = self._desk.panel.settled_icon(unlike=self._last_icon)

    def _menu(self, name):
        """Right-clicks the icon, as the user does to open the menu."""
        closed = self._desk.screenshot()
        self._desk.click(self._desk.panel.icon_place().centre, button=3)
        self._desk.park_pointer()
        box = eventually(lambda: self._opened_since(closed), "the menu to open")
        self._save(name, self._desk.screenshot().crop(self._with_margin(box)))
        self._desk.xdotool("key", "Escape")
        eventually(lambda: not self._opened_since(closed), "the menu to close")

    def _opened_since(self, before):
        """Where something of a window's size has appeared."""
        box = self._desk.screenshot().difference_box(before)
        return box if box and min(box.width, box.height) > SMALLEST_WINDOW_PX else None

    def _crash(self):
        """A crash, its notification, and the engine that comes back by itself."""
        before = self._desk.screenshot()
        self._app.engine.exit(1)
        box = eventually(lambda: self._opened_since(before), "the notification")
        self._save("notification", self._desk.screenshot().crop(box))
        self._desk.notifications.close_all()
        self._app.engine.wait_for_starts(2)
        self._settle("Loading model...")

    def _with_margin(self, box):
        right = min(box.x + box.width + MARGIN_PX, self._desk.width)
        bottom = min(box.y + box.height + MARGIN_PX, self._desk.height)
        left = max(box.x - MARGIN_PX, 0)
        return Rect(left, 0, right - left, bottom)

    def _save(self, name, picture):
        path = os.path.join(self._folder, name + ".png")
        picture.save_png(path)
        self.saved.append(path)


def main():
    """Plays the demonstration and says where its pictures are."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--programs", required=True)
    parser.add_argument("--save-to", required=True)
    options = parser.parse_args()
    os.makedirs(options.save_to, exist_ok=True)
    with Desk() as desk:
        app = Application(desk, options.programs, "demo")
        demonstration = Demonstration(desk, app, options.save_to)
        print("One push-to-talk, with a scripted engine:")
        app.start_in_tray()
        demonstration.play()
        demonstration.quit()
    print("Screenshots:", *demonstration.saved, sep="\n  ")


if __name__ == "__main__":
    main()
