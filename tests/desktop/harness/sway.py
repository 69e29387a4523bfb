"""A Wayland desktop without a screen: a compositor with layers, an X server within it, and a bar."""

import json
import os
import subprocess

from .desk import Desk
from .monitor import BusMonitor
from .notifications import NotificationWatch
from .polling import eventually
from .screen import Picture
from .tray import WATCHER, Tray

CONFIGURATION = """xwayland {xwayland}
output HEADLESS-1 resolution {width}x{height} position 0 0 scale {scale} bg #336699 solid_color
default_border none
seat seat0 fallback true
seat seat0 hide_cursor 1
exec sh -c '{xhost} echo $WAYLAND_DISPLAY $DISPLAY > {folder}/ready.new && mv {folder}/ready.new {folder}/ready'
"""
SWAYBAR = """bar {
  id bar-0
  swaybar_command true
  position top
  tray_output *
  height 30
  icon_theme Adwaita
}
"""
WAYBAR = {"layer": "top", "position": "top", "height": 30, "modules-right": ["tray"],
          "tray": {"icon-size": 22, "spacing": 8}}
WAYBAR_STYLE = "* { font-family: DejaVu Sans; font-size: 13px; } window#waybar { background: #222222; }\n"
NOBODY = 65534


class SwayDesk(Desk):
    """Message buses, sway on a headless output, and the services that a test asks for."""

    def __init__(self, scale=1, xwayland=True, bar=None, **parts):
        """`bar`: "waybar", which draws menus, "swaybar", which leaves them to the item, or none."""
        super().__init__(panel=False, **parts)
        self._scale = scale
        self._xwayland = xwayland
        self._bar = bar
        self._mouse = None

    def start(self):
        """Starts every part, in the order of their dependencies."""
        self.system_bus = self._start_bus("system")
        self.session_bus = self._start_bus("session")
        if self._wants_login_manager:
            self.start_login_manager()
        self._start_compositor()
        self.messages = BusMonitor(self.session_bus)
        self.notifications = NotificationWatch(self.session_bus, self.messages)
        self.tray = Tray(self.session_bus)
        if self._wants["notifications"]:
            self.start_notification_daemon()
        if self._bar == "waybar":
            self._start_waybar()
        if self._bar == "swaybar":
            # Not by the compositor, whose user may not use the message bus.
            self.spawn("swaybar", "--bar_id", "bar-0", "--socket", self.environment["SWAYSOCK"])
        if self._bar:
            eventually(lambda: self.session_bus.owner(WATCHER), "the bar's tray", 20)

    def _start_compositor(self):
        """The compositor refuses to run as root. Its folder is the only one that it may enter."""
        folder = self.path("wayland")
        os.makedirs(folder, mode=0o700)
        config = os.path.join(folder, "config")
        # The tests may run as another user than the compositor and its X server.
        xhost = f"xhost +si:localuser:#{os.getuid()} >&2;" if self._xwayland else ""
        with open(config, "w", encoding="utf-8") as file:
            file.write(CONFIGURATION.format(
                xwayland="enable" if self._xwayland else "disable", width=self.width,
                height=self.height, scale=self._scale, folder=folder, xhost=xhost))
            if self._bar == "swaybar":
                file.write(SWAYBAR)
        os.chmod(self.folder, 0o711)
        wrapper = []
        if os.geteuid() == 0:
            wrapper = ["setpriv", f"--reuid={NOBODY}", f"--regid={NOBODY}", "--clear-groups"]
            for path in (folder, config):
                os.chown(path, NOBODY, NOBODY)
        self.environment["SWAYSOCK"] = os.path.join(folder, "control")
        environment = dict(
            self.environment, HOME=folder, XDG_RUNTIME_DIR=folder, WLR_BACKENDS="headless",
            WLR_LIBINPUT_NO_DEVICES="1", WLR_RENDERER="pixman", LIBSEAT_BACKEND="noop")
        self.spawn(*wrapper, "sway", "--config", config, environment=environment)
        ready = os.path.join(folder, "ready")
        eventually(lambda: os.path.exists(ready), "the compositor", 20)
        with open(ready, encoding="utf-8") as file:
            names = file.read().split()
        self.environment.update(WAYLAND_DISPLAY=os.path.join(folder, names[0]),
                                XDG_SESSION_TYPE="wayland", XDG_CURRENT_DESKTOP="sway")
        if self._xwayland:
            self.environment["DISPLAY"] = names[1]

    def _start_waybar(self):
        folder = self.path("config/waybar")
        os.makedirs(folder, exist_ok=True)
        with open(os.path.join(folder, "config"), "w", encoding="utf-8") as file:
            json.dump(WAYBAR, file)
        with open(os.path.join(folder, "style.css"), "w", encoding="utf-8") as file:
            file.write(WAYBAR_STYLE)
        self.spawn("waybar")

    # What the user sees and does -----------------------------------------------------------------

    def sway(self, *command):
        """Has the compositor carry out a command."""
        answer = subprocess.run(["swaymsg", *command], env=self.environment, capture_output=True,
                                text=True, check=False, timeout=20)
        if answer.returncode:
            raise AssertionError(f"{command}: {answer.stdout}{answer.stderr}")
        return json.loads(answer.stdout) if "-t" in command else None

    def screenshot(self, output="HEADLESS-1"):
        """What an output shows."""
        grim = subprocess.run(["grim", "-t", "ppm", "-o", output, "-"], env=self.environment,
                              check=False, capture_output=True, timeout=20)
        if grim.returncode or not grim.stdout.startswith(b"P6\n"):
            raise AssertionError(f"no picture of {output}: {grim.stderr}")
        _kind, size, _deepest, rgb = grim.stdout.split(b"\n", 3)
        width, height = map(int, size.split())
        return Picture(width, height, rgb)

    def windows(self):
        """Every window of the compositor: the leaves of its tree."""
        def leaves(node):
            children = node["nodes"] + node["floating_nodes"]
            if not children and node["type"] in ("con", "floating_con"):
                yield node
            for child in children:
                yield from leaves(child)

        return list(leaves(self.sway("-t", "get_tree")))

    def focused(self):
        """The name of the window with the focus, or None."""
        return next((window["name"] for window in self.windows() if window["focused"]), None)

    def click(self, place, button=1):
        """Moves the pointer to a place, in points, and clicks. Without this, the seat has no mouse."""
        if self._mouse is None:
            self._mouse = subprocess.Popen(
                [os.path.join(os.environ["VOXTREL_PROGRAMS"], "wayland-pointer")], text=True,
                env=self.environment, stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        size = self.width // self._scale, self.height // self._scale
        print(*size, *place, {1: 272, 3: 273}[button], file=self._mouse.stdin, flush=True)
        if self._mouse.stdout.readline() != "done\n":
            raise AssertionError("the mouse is not plugged in")

    def stop(self):
        """Unplugs the mouse, then takes the desktop down."""
        if self._mouse:
            self._mouse.stdin.close()
            self._mouse.wait(10)
            self._mouse.stdout.close()
        super().stop()

    def park_pointer(self):
        """The compositor hides it."""


class LayerlessDesk(SwayDesk):
    """A compositor that has neither layers nor an X server."""

    def __init__(self, **parts):
        super().__init__(xwayland=False, notifications=False, **parts)

    def _start_compositor(self):
        folder = self.path("wayland")
        os.makedirs(folder, mode=0o700)
        self.spawn("weston", "--backend=headless-backend.so", "--no-config", "--socket=wayland-1",
                   environment=dict(self.environment, XDG_RUNTIME_DIR=folder))
        display = os.path.join(folder, "wayland-1")
        eventually(lambda: os.path.exists(display), "the compositor", 20)
        self.environment.update(WAYLAND_DISPLAY=display, XDG_SESSION_TYPE="wayland")

    def screenshot(self, output=""):
        """Nothing can be seen of this desktop."""
        raise AssertionError("there is no picture of this desktop")
