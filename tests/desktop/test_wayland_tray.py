"""The tray item in the bars of wlroots compositors, clicked at by a mouse."""

from harness.case import DesktopCase
from harness.polling import eventually
from harness.screen import Rect
from harness.sway import SwayDesk

LEFT, RIGHT = 1, 3


class Bar:
    """The same with each bar."""

    @classmethod
    def setUpClass(cls):
        cls.desk = SwayDesk(**cls.desk_parts)
        cls.enterClassContext(cls.desk)
        ground = (0x33, 0x66, 0x99)
        eventually(lambda: cls.desk.screenshot().pixel(600, 15) != ground, "the bar")
        cls.empty = cls.desk.screenshot()

    def below_the_bar(self):
        """The part of the screen in which a menu opens."""
        return self.desk.screenshot().crop(Rect(self.desk.width - 320, 40, 320, 200))

    def icon_centre(self):
        """Where the only icon is."""
        def found():
            place = self.desk.screenshot().crop(
                Rect(0, 0, self.desk.width, 30)).difference_box(
                    self.empty.crop(Rect(0, 0, self.desk.width, 30)))
            return place.centre if place and place.width < 40 else None

        return eventually(found, "the icon in the bar")

    def test_either_button_opens_the_menu_and_quit_ends_the_program(self):
        app = self.install().start_ready()
        icon = self.icon_centre()
        bare = self.below_the_bar()
        for button in (LEFT, RIGHT):
            self.desk.click(icon, button)
            eventually(lambda: self.below_the_bar().differing_pixels(bare) > 5000, "the menu")
            self.close_menu(icon, button)
            eventually(lambda: self.below_the_bar().differing_pixels(bare) == 0, "the menu's end")
        app.item.click("Quit Voxtrel")
        self.assertEqual(app.process.exit_status(), 0)


class Waybar(Bar, DesktopCase):
    """It draws menus itself."""

    desk_parts = {"bar": "waybar"}

    def close_menu(self, _icon, _button):
        """A click outside."""
        self.desk.click((200, 500), LEFT)


class Swaybar(Bar, DesktopCase):
    """It knows no menus, so the item opens its own."""

    desk_parts = {"bar": "swaybar"}

    def close_menu(self, icon, button):
        """A second click at the icon, where the menu does not cover it."""
        self.desk.click((icon[0], icon[1] - 8), button)
