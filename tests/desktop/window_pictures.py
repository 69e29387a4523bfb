"""Pictures of every window in every state, light and dark.

window_pictures.py --programs FOLDER --save-to FOLDER
"""

import argparse
import os
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from harness.accessibility import tolerant
from harness.application import Application
from harness.desk import Desk
from harness.forms import HINT, DownloadForm, SettingsForm
from harness.polling import eventually
from harness.portal import Portal
from harness.window import Window

SIZE = (1600, 1000)
STYLES = {"light": False, "dark": True}
LINES = ["Downloading large-v3 from the model hub", "manifest.json verified", "config.json verified"]
PRINTED = ["print " + line for line in LINES]
AT_26_PERCENT = "write 812.4 MB / 3094.1 MB (26.3%)\\r"
GERMAN = '[model]\nlanguage = "de"\ntranslate = true\n[audio]\nhotkey = "f6"\n'


class Photographer:
    """Opens windows on a desk whose portal says which style is wanted, and saves their pictures."""

    def __init__(self, desk, programs, folder):
        self._desk = desk
        self._programs = programs
        self._folder = folder
        self._installed = 0
        self._app = None
        os.symlink(os.path.join(os.path.dirname(programs), "share"), desk.path("share"))

    def take_all(self):
        """Every window, each with its own portal."""
        for scale, ending in ((1, ""), (2, "-200")):
            self._settings(scale, ending)
            self._download("26", [*PRINTED, AT_26_PERCENT], self._is_at_26_percent, scale, ending)
        self._download("0", [], lambda form: form.fraction() == 0)
        self._download("failed", [*PRINTED, AT_26_PERCENT, "error Connection reset by peer",
                                  "exit 1"], lambda form: HINT in form.labels())
        self._done()
        self._microphone()
        self._accessibility()

    # Windows -------------------------------------------------------------------------------------

    def _settings(self, scale, ending):
        app = self._install()
        app.configure(GERMAN)
        with_portal = self._portal()
        app.start_ready(QT_SCALE_FACTOR=str(scale))
        app.item.click("Settings...")
        self._both_styles("settings", SettingsForm(self._desk, app, scale), with_portal, ending)

    def _download(self, name, script, ready, scale=1, ending=""):
        with_portal = self._portal()
        form = self._open_setup(script, scale)
        eventually(lambda: tolerant(ready)(form), f"the set-up window, {name}", 20)
        self._both_styles(f"setup-{name}", form, with_portal, ending)

    @staticmethod
    def _is_at_26_percent(form):
        return abs(form.fraction() - 0.263) < 0.001 and form.log()[-1] == LINES[-1]

    def _done(self):
        """This state lasts for a second only, so each style needs its own set-up."""
        for style, dark in STYLES.items():
            portal = self._portal(dark)
            form = self._open_setup([*PRINTED, "write 3094.1 MB / 3094.1 MB (100.0%)\\r",
                                     "wait-for " + self._desk.path("done"), "exit 0"])
            form.wait_for_fraction(1.0)
            before = form.settled_picture()
            with open(self._desk.path("done"), "w", encoding="ascii"):
                pass
            self._save(f"setup-done-{style}", form.settled_picture(unlike=before))
            os.remove(self._desk.path("done"))
            self._leave(portal)

    def _open_setup(self, script, scale=1):
        app = self._install(with_model=False)
        app.setup.at_start(*script)
        app.start(QT_SCALE_FACTOR=str(scale))
        return DownloadForm(self._desk, app, scale=scale)

    def _microphone(self):
        with_portal = self._portal()
        app = self._install(program="guarded-voxtrel")
        app.start(GUARDED_SANDBOX_MARKER=app.engine.executable)
        self._both_styles("alert-microphone", self._alert(app), with_portal)

    def _accessibility(self):
        """Its alert comes after half a minute of waiting for the user."""
        with_portal = self._portal()
        app = self._install(program="guarded-voxtrel")
        app.hide_key()
        app.start(XDG_SESSION_TYPE="wayland", QT_QPA_PLATFORM="xcb")
        self._desk.accessibility.wait_for_window(app.process.pid, "Voxtrel", 60)
        self._both_styles("alert-accessibility", self._alert(app), with_portal)

    def _alert(self, app):
        return Window(self._desk, app, "Voxtrel")

    # Pictures ------------------------------------------------------------------------------------

    def _install(self, **options):
        self._installed += 1
        self._app = Application(self._desk, self._programs, f"app{self._installed}", **options)
        return self._app

    def _portal(self, dark=False):
        return Portal(self._desk, "--microphone", "1", *["--dark"] * dark)

    def _both_styles(self, name, window, portal, ending=""):
        """The style is changed while the window is open."""
        window.wait_until_active()
        light = window.settled_picture()
        self._save(f"{name}-light{ending}", light)
        portal.set_dark(True)
        self._save(f"{name}-dark{ending}", window.settled_picture(unlike=light))
        self._leave(portal)

    def _leave(self, portal):
        self._app.stop()
        self._desk.notifications.close_all()
        portal.stop()

    def _save(self, name, picture):
        path = os.path.join(self._folder, name + ".png")
        picture.save_png(path)
        print(f"  {path}")


def main():
    """Saves one picture for each window, state and style."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--programs", required=True, help="the folder of the built programs")
    parser.add_argument("--save-to", required=True, help="the folder for the pictures")
    options = parser.parse_args()
    os.makedirs(options.save_to, exist_ok=True)
    with Desk(accessibility=True, size=SIZE) as desk:
        Photographer(desk, os.path.abspath(options.programs), options.save_to).take_all()


if __name__ == "__main__":
    main()
