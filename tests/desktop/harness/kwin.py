"""Plasma's compositor in a window of a virtual X server, whose keys and mouse are its own."""

import json
import os
import shutil
import subprocess
import unittest

from .desk import Desk
from .monitor import BusMonitor
from .polling import eventually

COMPOSITOR = "org.kde.KWin"
START_LIMIT_S = 10


class KWinDesk(Desk):
    """Message buses and the compositor, without Plasma's panel and without XWayland.

    A machine on which the compositor is not installed, or does not start within its limit, skips the tests.
    """

    def __init__(self, scale=1, **parts):
        if not shutil.which("kwin_wayland"):
            raise unittest.SkipTest("kwin_wayland is not installed")
        super().__init__(panel=False, notifications=False, **parts)
        self._scale = scale
        self._screen = None  # the environment of what sees the X server

    def start(self):
        """Starts every part, in the order of their dependencies."""
        display = self._launch_x_server()
        self.system_bus = self._start_bus("system")
        self.session_bus = self._start_bus("session")
        if self._wants_login_manager:
            self.start_login_manager()
        self._screen = dict(self.environment, DISPLAY=self._read_display(display))
        self.park_pointer()
        self._start_compositor()
        self.messages = BusMonitor(self.session_bus)

    def _configure(self):
        with open(self.path("config/kdeglobals"), "w", encoding="ascii") as file:
            file.write("[KDE]\nAnimationDurationFactor=0\n")
        # Plasma 6 takes the scale from here only.
        output = {"connectorName": "X11-0", "scale": self._scale,
                  "mode": {"width": self.width, "height": self.height, "refreshRate": 60000}}
        setup = {"lidClosed": False, "outputs": [{"enabled": True, "outputIndex": 0, "priority": 0,
                                                  "position": {"x": 0, "y": 0}}]}
        with open(self.path("config/kwinoutputconfig.json"), "w", encoding="ascii") as file:
            json.dump([{"name": "outputs", "data": [output]}, {"name": "setups", "data": [setup]}], file)

    def _start_compositor(self):
        self._configure()
        environment = dict(self._screen, KWIN_COMPOSE="Q", LIBGL_ALWAYS_SOFTWARE="1",
                           QT_QUICK_BACKEND="software", XDG_CURRENT_DESKTOP="KDE")
        compositor = self.spawn(
            "kwin_wayland", "--x11-display", self._screen["DISPLAY"],
            "--width", str(self.width // self._scale), "--height", str(self.height // self._scale),
            "--scale", str(self._scale), "--socket", "wayland-kwin", "--no-lockscreen",
            environment=environment)
        display = os.path.join(self.environment["XDG_RUNTIME_DIR"], "wayland-kwin")
        try:
            eventually(lambda: os.path.exists(display) and self.session_bus.owner(COMPOSITOR),
                       "the compositor", START_LIMIT_S)
        except AssertionError as late:
            raise unittest.SkipTest(f"{late}: {compositor.output()}") from late
        self.environment.update(WAYLAND_DISPLAY=display, XDG_SESSION_TYPE="wayland",
                                XDG_CURRENT_DESKTOP="KDE", QT_QPA_PLATFORM="wayland")

    # What the user sees and does -----------------------------------------------------------------

    def xdotool(self, *arguments):
        """Presses keys and clicks like a user."""
        return subprocess.run(["xdotool", *arguments], check=True, env=self._screen,
                              capture_output=True, text=True, timeout=20).stdout

    def open_field(self, name):
        """A window with a text field and the focus. The compositor knows its program by this name."""
        return TextField(self, name)


class TextField:
    """A native window with a text field. It pastes with Ctrl+V, whatever it is called."""

    def __init__(self, desk, name):
        self._desk = desk
        self._path = desk.path(name + ".text")
        program = desk.path(name)
        if not os.path.exists(program):
            shutil.copy2(os.path.join(os.environ["VOXTREL_PROGRAMS"], "quillback-text-field"), program)
        size = f"{desk.width - 24}x{desk.height - 80}"
        self._process = desk.spawn(program, "-qwindowgeometry", size, self._path)
        eventually(lambda: os.path.exists(self._path), "a window with the focus", 20)

    def text(self):
        """All that is in the field."""
        with open(self._path, encoding="utf-8") as file:
            return file.read()

    def wait_for(self, text):
        """Waits until it has this text."""
        eventually(lambda: self.text() == text, f"{text!r} in the field")

    def press(self, *keys):
        """The user presses keys, whichever window has the focus."""
        self._desk.xdotool("key", *keys)

    def close(self):
        """Closes the window."""
        self._process.stop()
        os.unlink(self._path)
