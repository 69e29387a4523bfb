"""The recording overlay as it looks on the screen."""

import re
import subprocess

from .polling import eventually
from .screen import Rect

NAME = "Voxtrel recording overlay"
WIDTH_PT, HEIGHT_PT, ABOVE_BOTTOM_PT = 90, 21, 90
BARS, DOT_CENTRE_PT = 14, (82, 10.5)
BACKGROUND, DOT = (26, 26, 51), (232, 69, 97)
FULL_BAR_PT, LEAST_BAR_PT = 15, 1.5
AT_REST_PT = 1.7  # as measured: at most
SPACING_PT = (WIDTH_PT - 16 - 2 * BARS) / (BARS + 1)


def bar_colour(number):
    """The colour of a bar, from teal on the left to violet on the right."""
    part = number / (BARS - 1)
    return tuple(255 * value
                 for value in (0.48 * part, 0.83 - 0.54 * part, 0.67 + 0.33 * part))


def distance(one, two):
    """The distance of two colours: the difference of their most different component."""
    return max(abs(a - b) for a, b in zip(one, two))


class Pill:
    """Finds the overlay's window and measures what is painted there."""

    def __init__(self, desk, scale=1, screen=None):
        self._desk = desk
        self._scale = scale
        screen = screen or Rect(0, 0, desk.width, desk.height)
        width, height = WIDTH_PT * scale, HEIGHT_PT * scale
        self.place = Rect(screen.x + (screen.width - width) // 2,
                          screen.y + screen.height - ABOVE_BOTTOM_PT * scale - height, width, height)

    def windows(self):
        """The places of all the overlay's windows that are on the screen."""
        tree = subprocess.run(["xwininfo", "-root", "-tree"], env=self._desk.environment,
                              capture_output=True, text=True, check=True).stdout
        found = re.findall(rf'"{NAME}[^"]*".*?(\d+)x(\d+)\S*\s+\+(-?\d+)\+(-?\d+)', tree)
        return [Rect(int(x), int(y), int(width), int(height)) for width, height, x, y in found]

    def picture(self):
        """What the screen shows at its place."""
        return self._desk.screenshot().crop(self.place)

    def unequal_pairs(self):
        """How many pairs of neighbouring pixels differ on a screen of scale 2; none in an enlarged picture of scale 1."""
        picture = self.picture()
        return sum(picture.pixel(x, y) != picture.pixel(x + 1, y)
                   for x in range(0, self.place.width, 2) for y in range(self.place.height))

    def is_seen(self):
        """Whether the pill is painted at its place, uncovered."""
        picture = self.picture()
        dot = self._pixel(picture, *DOT_CENTRE_PT)
        left = self._pixel(picture, 5, 10.5)
        return distance(dot, DOT) < 24 and distance(left, BACKGROUND) < 24

    def wait_until_seen(self, limit_s=5.0):
        """Waits until it is on the screen."""
        eventually(self.is_seen, "the overlay", limit_s)
        return self

    def wait_until_gone(self):
        """Waits until it is not on the screen."""
        eventually(lambda: not self.is_seen() and not self.windows(), "the overlay's end")

    def bars(self, picture=None):
        """The height of each bar in points: how much of its middle is painted."""
        picture = picture or self.picture()
        return [self._bar_height(picture, number) for number in range(BARS)]

    def _bar_height(self, picture, number):
        left_pt = SPACING_PT + 5 + (SPACING_PT + 2) * number
        column = int((left_pt + 1) * self._scale)  # the bar covers all of it
        empty = self._pixel(picture, 5, 10.5)  # what lies beneath shines through a little
        full = distance(bar_colour(number), empty)
        rows = range(2 * self._scale, self.place.height - 2 * self._scale)
        painted = sum(min(1, distance(picture.pixel(column, y), empty) / full) for y in rows)
        return painted / self._scale

    def is_at_rest(self):
        """Whether all bars are as low as they can be."""
        return max(self.bars()) <= AT_REST_PT

    def _pixel(self, picture, x_pt, y_pt):
        return picture.pixel(int(x_pt * self._scale), int(y_pt * self._scale))
