"""The windows for people who use a screen reader or large fonts."""

import itertools
import os

from harness.case import DesktopCase
from harness.forms import (FIRST_LINE, HINT, RETRY, SETUP_TITLE, SKIP, DownloadForm, SettingsForm)
from harness.polling import eventually
from harness.portal import NAME as PORTAL
from harness.portal import Portal
from harness.window import Window

# A desktop whose font Qt reads from a file.
FONTS_OF_KDE = {"XDG_CURRENT_DESKTOP": "KDE", "KDE_FULL_SESSION": "true",
                "KDE_SESSION_VERSION": "5"}
LARGE_FONT = "[General]\nfont=DejaVu Sans,20,-1,5,50,0,0,0,0,0\n"
WAYS_TO_SEE = {  # name: (the factor from points to pixels, the environment)
    "as usual": (1, {}),
    "at one and a half times the size": (1.5, {"QT_SCALE_FACTOR": "1.5"}),
    "at twice the size": (2, {"QT_SCALE_FACTOR": "2"}),
    "with letters twice as large": (1, FONTS_OF_KDE),
}
PARTS = ("label", "combo box", "check box", "push button", "progress bar", "text")


class WindowsCase(DesktopCase):
    """The base: opens each window, in each state, and looks at all of its parts."""

    # Room for the windows at twice their size.
    desk_parts = {"accessibility": True, "size": (1600, 1200)}

    def install_with_fonts(self, changes, **options):
        """An installation in a home with large letters, on a desktop that knows of them."""
        app = self.install(**options)
        if "KDE_FULL_SESSION" in changes:
            os.makedirs(os.path.join(app.home, ".config"))
            with open(os.path.join(app.home, ".config/kdeglobals"), "w", encoding="utf-8") as file:
                file.write(LARGE_FONT)
        return app

    def open_settings(self, scale=1, **changes):
        """The settings window."""
        self.app = self.install_with_fonts(changes).start_ready(**changes)
        self.app.item.click("Settings...")
        return SettingsForm(self.desk, self.app, scale).wait_until_active()

    def open_setup(self, *script, scale=1, **changes):
        """The set-up window, whose set-up has done the commands of `script`."""
        self.app = self.install_with_fonts(changes, with_model=False)
        self.app.setup.at_start(*script)
        self.app.start(**changes)
        return DownloadForm(self.desk, self.app, SETUP_TITLE, scale).wait_until_active()

    def open_alert(self, scale=1, **changes):
        """The microphone's alert."""
        if not self.desk.session_bus.owner(PORTAL):
            portal = Portal(self.desk, "--microphone", "1")
            self.addCleanup(portal.stop)
        self.app = self.install_with_fonts(changes, program="guarded-voxtrel")
        self.app.start(GUARDED_SANDBOX_MARKER=self.app.engine.executable, **changes)
        return Window(self.desk, self.app, "Voxtrel", scale).wait_until_active()

    @staticmethod
    def parts(window):
        """The parts that say something or can be used."""
        return [node for node in window.node.all() if node.role in PARTS
                and (node.role != "label" or node.name)]

    def assert_well_laid_out(self, window):
        """Every part lies inside the window, no parts overlap, and the window is on the screen."""
        whole = window.node.place
        places = {repr(part): part.place for part in self.parts(window)}
        self.assertGreaterEqual(len(places), 4)
        for what, place in places.items():
            self.assertTrue(place.width > 0 and place.height > 0, f"{what} is nothing: {place}")
            self.assertTrue(
                whole.x <= place.x and place.x + place.width <= whole.x + whole.width
                and whole.y <= place.y and place.y + place.height <= whole.y + whole.height,
                f"{what} sticks out: {place} of {whole}")
        for (one, a), (two, b) in itertools.combinations(places.items(), 2):
            apart = (a.x + a.width <= b.x or b.x + b.width <= a.x
                     or a.y + a.height <= b.y or b.y + b.height <= a.y)
            self.assertTrue(apart, f"{one} {a} and {two} {b} overlap")
        frame = window.frame
        self.assertTrue(frame.x >= 0 and frame.y >= 0
                        and frame.x + frame.width <= self.desk.width
                        and frame.y + frame.height <= self.desk.height, f"off the screen: {frame}")

    def in_every_size(self, opens, *, check):
        """Opens a window in every state, and checks it."""
        heights = {}
        for name, (scale, changes) in WAYS_TO_SEE.items():
            with self.subTest(name):
                window = opens(scale=scale, **changes)
                check(window)
                heights[name] = window.node.all("push button")[0].place.height
                self.desk.screenshot().save_png(self.desk.path(f"logs/{self.id()} {name}.png"))
                self.app.stop()
        self.assertGreater(heights["with letters twice as large"], 1.3 * heights["as usual"],
                           "the letters were not larger at all")


class Settings(WindowsCase):
    """The settings window."""

    def test_every_control_has_its_role_and_a_name(self):
        form = self.open_settings()
        boxes = {box.label: box.name for box in form.node.all("combo box")}
        self.assertEqual(boxes, {"Hotkey:": "Right Command", "Input Language:": "Auto-detect",
                                 "Output:": "Original language"})
        self.assertEqual([node.name for node in form.node.all("check box")], ["Launch at Login"])
        self.assertEqual([node.name for node in form.node.all("push button")], ["Save & Restart"])
        self.assertEqual(
            {node.name for node in form.node.all("label")},
            {"Model:", "Whisper Large v3", "Hotkey:", "Input Language:", "Output:"})
        self.assertEqual((form.node.role, form.node.name), ("dialog", "Voxtrel Settings"))

    def test_the_keyboard_goes_from_top_to_bottom_and_round(self):
        form = self.open_settings()
        stops = [form.combo("Hotkey:"), form.combo("Input Language:"), form.combo("Output:"),
                 form.login(), form.save_button()]
        self.assertEqual([stop.place.y for stop in stops], sorted(stop.place.y for stop in stops))
        for stop in stops:
            form.wait_until_focused(stop)
            form.keys("Tab")
        form.wait_until_focused(stops[0])
        form.keys("shift+Tab")
        form.wait_until_focused(stops[-1])

    def test_save_is_the_default_button_and_states_are_told(self):
        form = self.open_settings()
        self.assertIn("default", form.save_button().states)
        for node in (form.combo("Hotkey:"), form.login(), form.save_button()):
            self.assertLessEqual({"enabled", "focusable", "showing"}, node.states)
        form.login().act("Toggle")
        eventually(form.login_checked, "the checked box")

    def test_access_keys_reach_every_control(self):
        form = self.open_settings()
        form.keys("alt+o")
        form.wait_until_focused(form.combo("Output:"))
        form.keys("alt+i")
        form.wait_until_focused(form.combo("Input Language:"))
        form.keys("alt+h")
        form.wait_until_focused(form.combo("Hotkey:"))
        form.keys("alt+l")
        eventually(form.login_checked, "the checked box")
        form.keys("alt+s")
        form.wait_until_closed()
        self.app.engine.wait_for_starts(2)

    def test_nothing_is_outside_or_upon_another_in_any_size(self):
        self.in_every_size(self.open_settings, check=self.assert_well_laid_out)

    def test_the_longest_list_opens_within_the_screen_in_any_size(self):
        def check(form):
            form.click(form.combo("Input Language:"))
            eventually(lambda: form.open_list("Input Language:"), "the open list")
            place = next(child for child in form.combo("Input Language:").children()
                         if child.role == "list").place
            scale = form.scale
            self.assertGreaterEqual(place.y, 0)
            self.assertLessEqual((place.y + place.height) * scale, self.desk.height)
            self.desk.xdotool("key", "Escape")

        self.in_every_size(self.open_settings, check=check)


class Download(WindowsCase):
    """The window that fetches the model."""

    def downloading(self, **how):
        """While the download runs."""
        form = self.open_setup("print Fetching shards", "progress 812 3094", **how)
        form.wait_for_label("812.0 MB / 3094.0 MB")
        form.wait_for_log(FIRST_LINE, "Fetching shards")
        return form

    def failed(self, **how):
        """After a failure."""
        form = self.open_setup("print No route to host", "exit 3", **how)
        form.wait_for_label(HINT)
        return form

    def test_every_part_has_its_role_and_a_name(self):
        form = self.downloading()
        bar, log = form.bar(), form.node.find("text")
        self.assertTrue(bar.name and log.name)
        self.assertLessEqual({"multi line", "showing", "enabled"}, log.states)
        self.assertNotIn("editable", log.states)
        self.assertEqual([node.name for node in form.node.all("push button")], [SKIP])
        self.assertEqual([node.name for node in form.node.all("label")], [
            "Voxtrel — Model Setup", "Downloading Whisper Large v3 (~3 GB)",
            "812.0 MB / 3094.0 MB"])

    def test_a_part_that_is_not_there_is_not_told(self):
        form = self.failed()
        self.assertIsNone(form.bar())
        self.assertEqual([node.name for node in form.node.all("push button")], [SKIP, RETRY])
        self.assertEqual(form.node.find("text").text, f"{FIRST_LINE}\nNo route to host")

    def test_the_log_can_be_marked_and_copied_by_keyboard(self):
        form = self.downloading()
        log = form.node.find("text")
        log.focus()
        form.wait_until_focused(log)
        form.keys("ctrl+a", "ctrl+c")
        self.assertEqual(self.desk.clipboard(), f"{FIRST_LINE}\nFetching shards")

    def test_the_keyboard_reaches_both_buttons(self):
        form = self.failed()
        seen = set()

        def both():
            form.keys("Tab")
            seen.update(node.name for node in form.node.all("push button")
                        if "focused" in node.states)
            return seen == {SKIP, RETRY}

        eventually(both, "both buttons to have had the keyboard")

    def test_nothing_is_outside_or_upon_another_while_downloading(self):
        self.in_every_size(self.downloading, check=self.assert_well_laid_out)

    def test_nothing_is_outside_or_upon_another_after_a_failure(self):
        self.in_every_size(self.failed, check=self.assert_well_laid_out)

    def test_the_window_keeps_its_size_and_place_from_state_to_state(self):
        form = self.downloading()
        before = form.content
        self.app.setup.exit(3)
        form.wait_for_label(HINT)
        self.assertEqual(form.content, before)
        form.retry().press()
        self.app.setup.wait_for_starts(2)
        self.assertEqual(form.content, before)
        self.assertEqual((before.width, before.height), (420, 340))


class Alert(WindowsCase):
    """The permission alerts."""

    def test_nothing_is_outside_or_upon_another_in_any_size(self):
        self.in_every_size(self.open_alert, check=self.assert_well_laid_out)

    def test_it_is_an_alert_with_its_texts_and_its_default_button(self):
        window = self.open_alert()
        self.assertEqual(window.node.role, "alert")
        first = window.node.find("push button", "Open Settings")
        self.assertLessEqual({"default", "focused"}, first.states)
        window.keys("Tab")
        eventually(lambda: "focused" in window.node.find("push button", "Quit").states,
                   "the other button to have the keyboard")
