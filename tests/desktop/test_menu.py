"""The menu under the tray item."""

import time

from harness.case import DesktopCase
from harness.polling import eventually, stays

READY = "Ready — hold Right Cmd"


class TheMenu(DesktopCase):
    """Rows, titles, keys; and what a right click in the panel opens."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.empty = cls.desk.panel.settled_icon()

    def setUp(self):
        super().setUp()
        self.desk.xdotool("mousemove", "10", "300")  # the panel marks what is under the pointer
        eventually(lambda: self.desk.panel.icon().differing_pixels(self.empty) == 0,
                   "the last test's icon to leave the panel")

    def test_its_rows_are_exactly_these(self):
        app = self.install().start_ready()
        rows = [(row.text, row.shortcut, row.enabled, row.separator) for row in app.item.rows()]
        self.assertEqual(rows, [
            (READY, (), False, False),
            ("Last: —", (), False, False),
            ("", (), True, True),
            ("Settings...", ("control", "comma"), True, False),
            ("Check for Updates...", (), True, False),
            ("Restart", ("control", "r"), True, False),
            ("Quit Voxtrel", ("control", "q"), True, False),
        ])

    def test_ampersands_and_underscores_of_a_transcription_show_as_they_are(self):
        app = self.install().start_ready()
        for text in ("salt & pepper", "R&D", "R&D a_b", "a && b", "snake_case_name", "__init__", "_ & _",
                     "&", "_", "Tom &Jerry & _Spike_", "&&&", "tab\tand <b>bold</b> 100 %s"):
            app.engine.say(f'[gpu-decode] text: "{text}"')
            app.item.wait_for_last_text(f"Last: {text}")

    def test_a_long_transcription_is_shown_in_full(self):
        app = self.install().start_ready()
        text = "every word of it counts, down to the very last one; " * 40 + "end"
        app.engine.say(f'[gpu-decode] text: "{text}"')
        app.item.wait_for_last_text(f"Last: {text}")

    def test_an_error_is_shown_in_full_and_as_it_is(self):
        app = self.install().start_ready()
        line = "[quillback] ERROR model_file & cache_dir: " + "x" * 500
        app.engine.say(line)
        app.engine.exit(0)
        app.item.wait_for_status(f"Error: {line}")

    def test_a_right_click_in_the_panel_opens_it_and_its_rows_stay_current(self):
        app = self.install().start_ready()
        self.desk.panel.settled_icon(unlike=self.empty)
        closed = self.desk.screenshot()
        self.desk.click(self.desk.panel.icon_place().centre, button=3)
        opened = eventually(lambda: self.opened_menu(closed), "the opened menu")
        app.engine.say('[gpu-decode] text: "seen while open"')
        app.item.wait_for_last_text("Last: seen while open")
        eventually(lambda: self.desk.screenshot().crop(opened[0]).rgb != opened[1].rgb,
                   "the open menu to show the new text")
        self.desk.xdotool("key", "Escape")

    def test_a_left_click_in_the_panel_opens_it_too(self):
        self.install().start_ready()
        self.desk.panel.settled_icon(unlike=self.empty)
        closed = self.desk.screenshot()
        self.desk.click(self.desk.panel.icon_place().centre, button=1)
        eventually(lambda: self.opened_menu(closed), "the opened menu")
        self.desk.xdotool("key", "Escape")

    def test_a_changed_row_is_told_once_and_alone(self):
        app = self.install().start_ready()
        row = app.item.rows()[1].identifier
        told = self.desk.messages.signals
        before = len(told("ItemsPropertiesUpdated")), len(told("LayoutUpdated"))

        def changes():
            """The updates of this row, and of rows sent with it."""
            return [m.arguments for m in told("ItemsPropertiesUpdated")[before[0]:]
                    if any(changed[0] == row for changed in m.arguments[0])]

        app.engine.say('[gpu-decode] text: "R&D a_b"')
        eventually(changes, "the change to be told")
        stays(lambda: len(changes()) == 1, "a single message", for_s=0.3)
        self.assertEqual(changes(), [[[(row, {"label": "Last: R&D a__b"})], []]])
        self.assertEqual(len(told("LayoutUpdated")), before[1])

    def test_a_click_is_answered_before_its_action_takes_its_time(self):
        app = self.install().start_ready()
        app.engine.ignore_sigterm()
        started = time.monotonic()
        app.item.click("Restart")
        answered_s = time.monotonic() - started
        app.engine.wait_for_starts(2, limit_s=10)
        self.assertLess(answered_s, 0.5)
        self.assertGreater(time.monotonic() - started, 2.5)

    def test_100_clicks_on_restart_at_once_leave_the_menu_alive(self):
        app = self.install().start_ready()
        click = app.item.clicker("Restart")
        started = time.monotonic()
        for _ in range(100):
            click()
        app.item.rows()
        answered_s = time.monotonic() - started
        app.engine.wait_for_starts(2)
        stays(lambda: len(app.engine.starts()) <= 4, "few restarts", for_s=1.0)
        app.engine.wait_for_one_running()
        self.assertLess(answered_s, 1.0)

    def opened_menu(self, closed):
        """(place, picture) of what has appeared below the panel, once it is of a menu's size."""
        screen = self.desk.screenshot()
        box = screen.difference_box(closed)
        if box and box.height > 100 and box.width > 100:
            return box, screen.crop(box)
        return None

    def test_check_for_updates_opens_one_box_that_names_the_version(self):
        self.opens_one_box("Check for Updates...", "update")

    def test_settings_opens_one_box(self):
        self.opens_one_box("Settings...", "settings")

    def opens_one_box(self, row, title):
        """Choosing `row` twice gives one window, which does not block the program."""
        app = self.install().start_ready()
        app.item.click(row)
        eventually(lambda: self.windows(app), f"a window for {row}")
        app.item.click(row)
        app.engine.say("Processing 2.0 s of audio")
        app.item.wait_for_status("Transcribing...")
        window, = self.windows(app)
        self.assertIn(title, self.desk.xdotool("getwindowname", window).lower())
        self.desk.screenshot().save_png(self.desk.path(f"logs/{title}.png"))

    def windows(self, app):
        """The identifiers of the program's visible windows."""
        try:
            found = self.desk.xdotool("search", "--onlyvisible", "--pid", str(app.process.pid))
        except Exception:  # xdotool's way to say that there is none
            return []
        return found.split()
