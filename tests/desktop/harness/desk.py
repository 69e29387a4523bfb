"""Brings up a desktop on a virtual screen and takes it down again."""

import glob
import os
import shutil
import subprocess
import sys
import tempfile

from . import panel as panel_module
from .accessibility import Accessibility
from .buses import Bus
from .login_manager import NAME as LOGIN_MANAGER
from .login_manager import LoginManager
from .monitor import BusMonitor
from .notifications import NAME as NOTIFICATIONS
from .notifications import NotificationWatch
from .panel import Panel
from .polling import eventually
from .processes import Process
from .screen import read_frame_buffer
from .tray import Tray

WIDTH, HEIGHT = 1024, 640
DOUBLES = os.path.join(os.path.dirname(__file__), "..", "doubles")
DUNST = """[global]
  width = 320
  height = 200
  origin = top-right
  offset = 10x40
  font = DejaVu Sans 10
  markup = full
  idle_threshold = 0
  notification_limit = 0
[urgency_normal]
  timeout = 0
"""
XFWM4 = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfwm4" version="1.0"><property name="general" type="empty">
  <property name="use_compositing" type="bool" value="%(compositing)s"/>
  <property name="workspace_count" type="int" value="2"/>
  <property name="vblank_mode" type="string" value="off"/>
</property></channel>
"""


class Desk:
    """A private X server, message buses, window manager, panel and notification daemon.

    Everything lives in a separate folder and sees nothing of the user's home. Parts can be left
    out, for tests of what the application does without them.
    """

    def __init__(self, panel=True, notifications=True, session_bus=True, login_manager=True,
                 compositing=False, accessibility=False, size=(WIDTH, HEIGHT)):
        self._wants = {"panel": panel, "notifications": notifications,
                       "accessibility": accessibility}
        self._wants_session_bus = session_bus
        self._wants_login_manager = login_manager
        self._compositing = compositing
        self._running = []
        self._keep = None
        self.width, self.height = size
        self.folder = tempfile.mkdtemp(prefix="voxtrel-desk-")
        self.environment = self._make_environment()
        self.session_bus = self.system_bus = self.login_manager = None
        self.messages = self.notifications = self.tray = self.accessibility = None
        self.panel = Panel(self)

    # Start and stop ------------------------------------------------------------------------------

    def __enter__(self):
        try:
            self.start()
        except BaseException:
            self.keep_logs("start")
            self.stop()
            raise
        return self

    def __exit__(self, kind, _error, _trace):
        if kind is not None:
            self.keep_logs("failed")
        self.stop()

    def start(self):
        """Starts every part, in the order of their dependencies."""
        display = self._launch_x_server()
        self.system_bus = self._start_bus("system")
        if self._wants_session_bus:
            self.session_bus = self._start_bus("session")
        self.environment["DISPLAY"] = self._read_display(display)
        if self._wants_login_manager:
            self.start_login_manager()
        if self.session_bus:
            self._start_session()
            eventually(self._has_window_manager, "the window manager", 20)
        self.park_pointer()

    def _start_session(self):
        self.messages = BusMonitor(self.session_bus)
        self.notifications = NotificationWatch(self.session_bus, self.messages)
        self.tray = Tray(self.session_bus)
        self.spawn(self._xfconf_daemon())
        eventually(lambda: self.session_bus.owner("org.xfce.Xfconf"), "the settings daemon")
        self.spawn("xfwm4", "--compositor=" + ("on" if self._compositing else "off"))
        if self._wants["panel"]:
            self.panel.launch()
        if self._wants["notifications"]:
            self.start_notification_daemon()
        if self._wants["accessibility"]:
            self.accessibility = Accessibility(self)
        if self._wants["panel"]:
            self.panel.wait_until_ready()

    def stop(self):
        """Ends every process, the youngest first, and removes the folder."""
        for part in (self.messages, self.accessibility):
            if part:
                part.close()
        if self.login_manager:
            self.login_manager.stop()
        for process in reversed(self._running):
            process.stop()
        for bus in (self.session_bus, self.system_bus):
            if bus:
                bus.stop()
        if self._x_server:
            self._x_server.stop()
        if self._keep:
            self._save_logs()
        shutil.rmtree(self.folder, ignore_errors=True)

    # Parts ---------------------------------------------------------------------------------------

    def _make_environment(self):
        for name in ("home", "config/xfce4/xfconf/xfce-perchannel-xml", "cache", "data", "run",
                     "logs", "screen"):
            os.makedirs(self.path(name), mode=0o700)
        channels = self.path("config/xfce4/xfconf/xfce-perchannel-xml")
        panel_module.write_configuration(channels)
        with open(os.path.join(channels, "xfwm4.xml"), "w", encoding="utf-8") as file:
            file.write(XFWM4 % {"compositing": str(self._compositing).lower()})
        with open(self.path("dunstrc"), "w", encoding="utf-8") as file:
            file.write(DUNST)
        return {
            "PATH": "/usr/local/bin:/usr/bin:/bin", "LANG": "C.UTF-8",
            "HOME": self.path("home"), "XDG_CONFIG_HOME": self.path("config"),
            "XDG_CACHE_HOME": self.path("cache"), "XDG_DATA_HOME": self.path("data"),
            "XDG_RUNTIME_DIR": self.path("run"), "XDG_CURRENT_DESKTOP": "XFCE",
            # Neither accessibility bridges nor portals: each would wait for its own service.
            "NO_AT_BRIDGE": "1", "GTK_A11Y": "none", "GTK_USE_PORTAL": "0",
            "DBUS_SESSION_BUS_ADDRESS": "unix:path=" + self.path("session-bus"),
            "DBUS_SYSTEM_BUS_ADDRESS": "unix:path=" + self.path("system-bus"),
        }

    def path(self, name):
        """A place within the desk's folder."""
        return os.path.join(self.folder, name)

    def spawn(self, *command, environment=None):
        """Starts a program of the desktop; it ends with the desk or earlier."""
        log = self.path(f"logs/{len(self._running):02}-{os.path.basename(command[0])}.log")
        process = Process(list(command), environment or self.environment, log)
        self._running.append(process)
        return process

    def processes(self, *names):
        """The desktop's own programs of these names."""
        running = [self._x_server, *self._running] if self._x_server else self._running
        return [process for process in running if process.name in names]

    _x_server = None

    def _launch_x_server(self):
        ours, theirs = os.pipe()
        self._x_server = Process(
            ["Xvfb", "-displayfd", str(theirs), "-screen", "0", f"{self.width}x{self.height}x24",
             "-fbdir", self.path("screen"), "-wr", "-nolisten", "tcp", "-noreset"],
            self.environment, self.path("logs/x-server.log"), pass_fds=(theirs,))
        os.close(theirs)
        return ours

    def _read_display(self, descriptor):
        with os.fdopen(descriptor) as pipe:
            number = pipe.readline().strip()
        if not number:
            raise AssertionError("the X server did not start: " + self._x_server.output())
        return ":" + number

    def _start_bus(self, kind):
        return Bus(kind, self.folder, self.environment)

    @staticmethod
    def _xfconf_daemon():
        found = glob.glob("/usr/lib/*/xfce4/xfconf/xfconfd")
        if not found:
            raise AssertionError("xfconfd is not installed")
        return found[0]

    def _has_window_manager(self):
        answer = subprocess.run(["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"], check=False,
                                env=self.environment, capture_output=True, text=True)
        return "window id" in answer.stdout

    def start_login_manager(self, *options):
        """Puts a login manager on the system bus."""
        self.login_manager = LoginManager(
            self.system_bus, self.path("logs"), self.environment, options)

        return self.login_manager

    def stop_login_manager(self):
        """Takes the login manager away."""
        self.login_manager.stop()
        self.login_manager = None
        eventually(lambda: not self.system_bus.owner(LOGIN_MANAGER), "the login manager's end")

    def start_notification_daemon(self):
        """Starts the real daemon and waits for it."""
        daemon = self.spawn("dunst", "-conf", self.path("dunstrc"))
        eventually(lambda: self.session_bus.owner(NOTIFICATIONS), "the notification daemon", 20)
        return daemon

    def start_hanging_notification_daemon(self):
        """Starts a daemon that never replies."""
        daemon = self.spawn(sys.executable, os.path.join(DOUBLES, "hanging_notification_daemon.py"))
        eventually(lambda: self.session_bus.owner(NOTIFICATIONS), "the hanging daemon", 20)
        return daemon

    # What the user sees and does -----------------------------------------------------------------

    def screenshot(self):
        """The whole screen."""
        return read_frame_buffer(self.path("screen/Xvfb_screen0"))

    def click(self, place, button=1):
        """Moves the pointer to a place and clicks."""
        x, y = (str(value) for value in place)
        self.xdotool("mousemove", x, y, "click", str(button))

    def park_pointer(self):
        """Moves the pointer to a corner, so that it is not in the pictures."""
        self.xdotool("mousemove", str(self.width), str(self.height))

    def xdotool(self, *arguments):
        """Presses keys and clicks like a user."""
        return subprocess.run(["xdotool", *arguments], check=True, env=self.environment,
                              capture_output=True, text=True, timeout=20).stdout

    def clipboard(self):
        """The text in the clipboard, as another program gets it."""
        return subprocess.run(["xclip", "-out", "-selection", "clipboard"], check=True, timeout=20,
                              env=self.environment, capture_output=True, text=True).stdout

    def xdotool_or_nothing(self, *arguments):
        """The output of xdotool; empty if it finds nothing."""
        return subprocess.run(["xdotool", *arguments], check=False, env=self.environment,
                              capture_output=True, text=True, timeout=20).stdout

    # Evidence ------------------------------------------------------------------------------------

    def keep_logs(self, label):
        """Has the logs and a last screenshot saved when the desk is taken down."""
        self._keep = label
        try:
            self.screenshot().save_png(self.path("logs/screen.png"))
        except (OSError, AssertionError, ValueError):
            pass  # the screen may be what failed

    def _save_logs(self):
        target = os.path.join(os.environ.get("VOXTREL_DESK_LOGS", tempfile.gettempdir()),
                              f"{os.path.basename(self.folder)}-{self._keep}")
        shutil.copytree(self.path("logs"), target, dirs_exist_ok=True)
        print(f"desk: logs are in {target}", file=sys.stderr)
