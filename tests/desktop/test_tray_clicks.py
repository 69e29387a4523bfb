"""Left and right clicks, on hosts that draw the menu and on hosts that leave it to the item."""

import re
import subprocess

from harness.case import DesktopCase
from harness.polling import eventually, stays
from harness.screen import Rect

UNKNOWN_METHOD = "org.freedesktop.DBus.Error.UnknownMethod"
ICON_PX = 32


class ClickCase(DesktopCase):
    """Acts as the program that shows the tray."""

    def start(self):
        """The program, ready, with the pointer in the middle of the screen."""
        app = self.install().start_ready()
        self.desk.xdotool("mousemove", "400", "300")
        self.addCleanup(self.desk.park_pointer)
        return app

    def windows(self, app):
        """The program's windows on the screen, each with its width."""
        found = self.desk.xdotool_or_nothing(
            "search", "--onlyvisible", "--pid", str(app.process.pid)).split()
        facts = [subprocess.run(["xwininfo", "-id", window], env=self.desk.environment, check=False,
                                capture_output=True, text=True).stdout for window in found]
        widths = [re.search(r"Width: (\d+)", text) for text in facts]
        return [(window, int(width[1])) for window, width in zip(found, widths) if width]

    def menus(self, app):
        """The menus of the program's own that are on the screen: windows wider than an icon."""
        return [window for window, width in self.windows(app) if width > ICON_PX]

    def wait_for_menu(self, app):
        """Waits until the program shows one menu."""
        eventually(lambda: len(self.menus(app)) == 1, "a menu of the program's own")

    def choose_last_row(self, app):
        """Quit, which is the last row, ends the program."""
        self.desk.xdotool("key", "Up", "Return")
        self.assertEqual(app.process.exit_status(), 0)


class Clicks(ClickCase):
    """What each kind of host does with the item."""

    def test_a_click_that_the_host_leaves_to_the_item_opens_a_menu_of_its_own(self):
        app = self.start()
        self.assertEqual(app.item.call("Activate", 400, 300), UNKNOWN_METHOD)
        self.wait_for_menu(app)
        self.choose_last_row(app)

    def test_a_host_that_opens_the_menu_once_it_hears_that_there_is_no_action_stays_alone(self):
        app = self.start()
        self.assertEqual(app.item.call("Activate", 400, 300), UNKNOWN_METHOD)
        app.item.announce_menu()
        stays(lambda: not self.menus(app), "no second menu", 0.7)

    def test_a_host_may_give_a_token_before_a_click(self):
        app = self.start()
        app.item.give_token("token")
        self.assertNotIn("ProvideXdgActivationToken", app.output())

    def test_a_host_that_is_late_takes_over(self):
        app = self.start()
        app.item.call("Activate", 400, 300)
        self.wait_for_menu(app)
        app.item.announce_menu()
        eventually(lambda: not self.menus(app), "the end of the program's own menu")

    def test_a_host_that_asks_for_the_menu_gets_it_and_a_second_click_closes_it(self):
        app = self.start()
        self.assertIsNone(app.item.call("ContextMenu", 400, 300))
        self.wait_for_menu(app)
        self.assertIsNone(app.item.call("ContextMenu", 400, 300))
        eventually(lambda: not self.menus(app), "the end of the menu")
        self.assertIsNone(app.item.call("ContextMenu", 400, 300))
        self.wait_for_menu(app)
        self.choose_last_row(app)

    def test_the_rows_of_its_own_menu_stay_current(self):
        app = self.start()
        app.item.call("ContextMenu", 400, 300)
        self.wait_for_menu(app)
        first_row = Rect(420, 302, 180, 18)
        before = self.desk.screenshot().crop(first_row)
        app.engine.say("Recording...")
        app.item.wait_for_status("Recording...")
        eventually(lambda: self.desk.screenshot().crop(first_row).differing_pixels(before) > 50,
                   "the new row")
        self.desk.xdotool("key", "Escape")

    def test_states_that_follow_each_other_quickly_are_announced_once_more_and_then_nothing(self):
        app = self.start()
        def announced():
            return len(self.desk.messages.signals("NewIcon"))

        stays(lambda: True, "the quiet after the start", 0.5)
        before = announced()
        app.engine.say("Recording...")
        app.item.wait_for_status("Recording...")
        app.engine.say("Ready.")
        app.item.wait_for_status("Ready — hold Right Cmd")
        eventually(lambda: announced() == before + 3, "two icons and the last one again")
        stays(lambda: announced() == before + 3, "no further announcement", 0.8)
        app.engine.say("Recording...")
        app.item.wait_for_status("Recording...")
        stays(lambda: announced() == before + 4, "one icon alone is announced once", 0.8)


class TheOlderTray(ClickCase):
    """A tray of X11's own kind, in which the icon is a window."""

    desk_parts = {"panel": False}

    def start(self):
        """The program in that tray, with the place of its icon."""
        self.desk.spawn("trayer", "--edge", "top", "--align", "left", "--widthtype", "pixel",
                        "--width", "100", "--height", "24", "--SetPartialStrut", "true")
        app = self.install()
        app.start()
        app.engine.wait_for_starts(1)
        app.engine.say("Ready.")
        eventually(lambda: self.icon(app), "the icon's window", 15)
        return app

    def icon(self, app):
        """The icon's window."""
        return [window for window, width in self.windows(app) if width <= ICON_PX]

    def test_either_button_opens_the_menu(self):
        app = self.start()
        for button in (1, 3):
            x, y = self.place(app)
            self.desk.click((x, y), button)
            self.wait_for_menu(app)
            self.desk.xdotool("key", "Escape")
            eventually(lambda: not self.menus(app), "the end of the menu")
        self.desk.click(self.place(app), 1)
        self.wait_for_menu(app)
        self.choose_last_row(app)

    def place(self, app):
        """The middle of the icon."""
        shell = self.desk.xdotool("getwindowgeometry", "--shell", self.icon(app)[0])
        values = dict(line.split("=") for line in shell.split())
        return (int(values["X"]) + int(values["WIDTH"]) // 2,
                int(values["Y"]) + int(values["HEIGHT"]) // 2)


class WithoutAnyTray(DesktopCase):
    """The user is told once what to install."""

    desk_parts = {"panel": False}

    def test_one_notification_says_what_to_install(self):
        app = self.install()
        app.start(XDG_CURRENT_DESKTOP="GNOME")
        self.notifications(1, limit_s=20)
        self.assertIn("gnome-shell-extension-appindicator", self.bodies()[0])
        self.desk.panel.start()
        self.desk.tray.wait_for_item(app.process.pid)
        self.desk.panel.stop()
        stays(lambda: len(self.bodies()) == 1, "no second notification", 11.0)
