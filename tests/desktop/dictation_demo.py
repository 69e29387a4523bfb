"""One dictation from end to end on a virtual desktop with the real engine: somebody speaks into a virtual
microphone while a key is held, and an editor receives the words.

dictation_demo.py --programs FOLDER --save-to FOLDER --home FOLDER; exits with 0 when the words were the right
ones. The last folder keeps the speech model. VOXTREL_WEIGHTS names a weights file to be used; without it the
advised model is fetched or, where no network answers, the embedded recogniser is used. The voice is a
person's where VOXTREL_WHISPER_DATA names a folder with recordings and weights are used, else synthetic.
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
from harness.model_choice import ModelChoice
from harness.pill import Pill
from harness.polling import eventually
from harness.recordings import FOLDER, plain_words, recording, word_error_rate
from harness.screen import Rect
from harness.sound import SoundServer

SPOKEN = "how are you today"
# It fits into the editor's line: where that scrolls, its picture keeps changing.
RECORDED = "en_harvard_spk1_snt3"
# Small models mishear a synthetic voice.
MOST_ERRORS = 0.5
ATTEMPTS = 5
WATCHED_S = 1.2
ANSWER_LIMIT_S = 120.0


class RealDictation(Demonstration):
    """Holds the key, has the voice speak, and takes the pictures."""

    def __init__(self, desk, app, folder, sound, model):
        super().__init__(desk, app, folder)
        self._model = model
        self._recording = recording(RECORDED) if model and FOLDER else None
        self._spoken = self._recording.text if self._recording else SPOKEN
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
        voice = self._voice()
        self._overlay()
        voice.exit_status(30)
        self._speaker.keep_holding()
        self._speaker.release()
        released = time.monotonic()
        self._app.wait_for_count("[gpu-decode]", 1, ANSWER_LIMIT_S)
        seconds = time.monotonic() - released
        self._settle(READY)
        heard = self._heard(seconds)
        self._app.item.wait_for_last_text(f"Last: {heard}")
        self._app.wait_until_inserted()
        self._editor.wait_for_text(heard)
        self._save("editor", self._desk.screenshot())
        self._menu("menu-last")
        self._transcribing()
        self._settle(READY)
        self._without_engine()
        self._loading()

    def _voice(self):
        """Begins to speak."""
        if self._recording:
            return self._sound.play_file(self._recording.path)
        return self._sound.say(self._spoken, latency_ms=500)

    def _heard(self, seconds):
        """The printed words, which must be those that were spoken."""
        heard, = self._app.texts()
        print(f"  said:      {self._spoken}\n  heard:     {heard}\n  after:     {seconds:.1f} s")
        errors = word_error_rate(heard, self._spoken)
        if errors > (MOST_ERRORS if self._model and not self._recording else 0):
            raise AssertionError(f"not the words that were spoken: {plain_words(heard)}")
        return heard

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
            self._app.wait_for_count("[gpu-decode]", texts + 1, ANSWER_LIMIT_S)
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
    parser.add_argument("--home", required=True)
    options = parser.parse_args()
    os.makedirs(options.save_to, exist_ok=True)
    model = ModelChoice(os.path.join(os.path.abspath(options.programs), "quillback"), options.home)
    print(f"Model: {model.said}", flush=True)
    with Desk(compositing=True) as desk:
        sound = SoundServer(desk).start()
        app = Dictating(desk, os.path.abspath(options.programs), "demo", with_model=not model.name)
        if model.name:
            model.give_to(app)
        story = RealDictation(desk, app, options.save_to, sound, model.name)
        print("One dictation, with the real engine:")
        story.play()
        story.quit()
        eventually(lambda: not app.engine_pids(), "the engine's end")
        sound.stop()
    print("Screenshots:", *story.saved, sep="\n  ")


if __name__ == "__main__":
    main()
