"""A window of the program: read by assistive technology, driven by real keys and clicks."""

import re
import subprocess

from .polling import eventually
from .screen import Rect

CLOSE_BOX_WIDTH_PX = 24  # of the window manager's frame, at its right end


class Window:
    """One window, by its title; its parts are read by assistive technology."""

    def __init__(self, desk, app, title, scale=1):
        self.desk = desk
        self.title = title
        self._pid = app.process.pid
        self.scale = scale
        self.node = desk.accessibility.wait_for_window(self._pid, title)
        # The window manager's part of it may come later.
        self.identifier = eventually(self._search, f"the window {title!r} on the screen")

    def _search(self):
        answer = subprocess.run(
            ["xdotool", "search", "--all", "--onlyvisible", "--pid", str(self._pid), "--name",
             f"^{re.escape(self.title)}$"], check=False, env=self.desk.environment,
            capture_output=True, text=True, timeout=20)
        found = answer.stdout.split()
        return found[0] if found else None

    # The window itself ---------------------------------------------------------------------------

    @property
    def content(self):
        """Where its content is on the screen, in pixels."""
        lines = self._ask("xwininfo", "-id", self.identifier)
        numbers = [int(re.search(label + r":\s+(-?\d+)", lines)[1]) for label in (
            "Absolute upper-left X", "Absolute upper-left Y", "Width", "Height")]
        return Rect(*numbers)

    @property
    def frame(self):
        """Where it is on the screen with the window manager's frame."""
        answer = self._ask("xprop", "-id", self.identifier, "_NET_FRAME_EXTENTS")
        left, right, top, bottom = (int(number) for number in re.findall(r"\d+", answer))
        inner = self.content
        return Rect(inner.x - left, inner.y - top, inner.width + left + right,
                    inner.height + top + bottom)

    def property(self, name):
        """One of the window's X properties, as printed by xprop."""
        return self._ask("xprop", "-id", self.identifier, name).strip()

    def _ask(self, *command):
        return subprocess.run(command, check=True, env=self.desk.environment, timeout=20,
                              capture_output=True, text=True).stdout

    def active(self):
        """Whether it has the focus."""
        answer = self._ask("xprop", "-root", "_NET_ACTIVE_WINDOW")
        found = re.search(r"0x[0-9a-f]+", answer)
        if not found or int(found[0], 16) != int(self.identifier):
            return False
        # The window manager knows first; keys arrive only when the program knows too.
        return "active" in self.node.states

    def wait_until_active(self):
        """Waits until it has the focus."""
        eventually(self.active, f"{self.title!r} to be the active window", 10)
        return self

    def wait_until_focused(self, node):
        """Waits until one of its parts has the focus."""
        eventually(lambda: "focused" in node.states, f"{node!r} to have the keyboard")

    def wait_until_closed(self, limit_s=10.0):
        """Waits until no window of this title is shown."""
        self.desk.accessibility.wait_until_closed(self._pid, self.title, limit_s)

    def picture(self):
        """The window with its frame, as it is on the screen."""
        return self.desk.screenshot().crop(self.frame)

    def settled_picture(self, unlike=None):
        """The picture once it is no longer `unlike` (a picture) and has stopped changing."""
        last = []

        def settled():
            picture = self.picture()
            same = bool(last) and last[0].rgb == picture.rgb
            last[:] = [picture]
            fresh = unlike is None or unlike.rgb != picture.rgb
            return picture if same and fresh else None

        return eventually(settled, f"a settled picture of {self.title!r}", 10)

    # As a person ---------------------------------------------------------------------------------

    def click(self, node):
        """Clicks in the middle of one of its parts."""
        x, y = node.place.centre
        self.desk.click((x * self.scale, y * self.scale))
        self.desk.park_pointer()

    def close_by_box(self):
        """Clicks at the frame's close box, once the frame is there and has stopped moving."""
        self.wait_until_active()
        self.settled_picture()
        frame, inner = self.frame, self.content
        height = inner.y - frame.y
        self.desk.click((frame.x + frame.width - CLOSE_BOX_WIDTH_PX // 2 - 1,
                         frame.y + height // 2))
        self.desk.park_pointer()

    def close_by_escape(self):
        """Presses Escape, and waits until it is closed."""
        self.keys("Escape")
        self.wait_until_closed()

    def keys(self, *names):
        """Presses keys, one after the other, in the active window."""
        self.wait_until_active()
        self.desk.xdotool("key", "--delay", "30", *names)
