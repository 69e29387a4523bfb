"""Pictures of the recording overlay during speech, on light and on dark.

overlay_pictures.py --programs FOLDER --save-to FOLDER
"""

import argparse
import os
import sys
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from harness.application import Application
from harness.desk import Desk
from harness.pill import Pill
from harness.polling import eventually
from harness.screen import Rect
from harness.sound import SoundServer

SPOKEN = "How are you today? Nice to meet you. We are ready to start."
BACKGROUNDS = {"light": [], "dark": ["-rv"]}  # of a window beneath: white or black
SCALE, MARGIN_PX, ENLARGED = 2, 24, 2
WATCHED_S = 3.0


def liveliest(desk, pill):
    """The picture with the tallest bars while the words are spoken."""
    around = Rect(pill.place.x - MARGIN_PX, pill.place.y - MARGIN_PX,
                  pill.place.width + 2 * MARGIN_PX, pill.place.height + 2 * MARGIN_PX)
    best, tallest = None, 0
    deadline = time.monotonic() + WATCHED_S
    while time.monotonic() < deadline:
        screen = desk.screenshot()
        height = sum(pill.bars(screen.crop(pill.place)))
        if height > tallest:
            best, tallest = screen.crop(around), height
    return best


def main():
    """Saves one picture for each background."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--programs", required=True, help="the folder of the built programs")
    parser.add_argument("--save-to", required=True, help="the folder for the pictures")
    options = parser.parse_args()
    os.makedirs(options.save_to, exist_ok=True)
    with Desk(compositing=True) as desk:
        sound = SoundServer(desk).start()
        app = Application(desk, os.path.abspath(options.programs))
        app.start_ready(QT_SCALE_FACTOR=str(SCALE))
        for name, colour in BACKGROUNDS.items():
            beneath = desk.spawn("stdbuf", "-oL", "xev", "-geometry", f"{desk.width}x{desk.height}+0+0", *colour)
            eventually(lambda window=beneath: "Expose event" in window.output(), "a window beneath")
            app.engine.say("Recording...")
            pill = Pill(desk, scale=SCALE).wait_until_seen()
            sound.say(SPOKEN)
            path = os.path.join(options.save_to, f"overlay-{name}.png")
            liveliest(desk, pill).enlarged(ENLARGED).save_png(path)
            print(f"  {path}")
            sound.silence()
            app.engine.say("Ready.")
            pill.wait_until_gone()
            beneath.stop()
        app.stop()
        sound.stop()


if __name__ == "__main__":
    main()
