"""The panel: hosts the tray, can be stopped, started again, and made light or dark."""

import os

import dbus

from .polling import eventually
from .screen import Rect
from .tray import WATCHER

HEIGHT = 30
CHANNEL = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="dark-mode" type="bool" value="false"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="length" type="uint" value="100"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="icon-size" type="uint" value="22"/>
      <property name="size" type="uint" value="{height}"/>
      <property name="plugin-ids" type="array">
        <value type="int" value="1"/>
        <value type="int" value="2"/>
      </property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="separator">
      <property name="expand" type="bool" value="true"/>
      <property name="style" type="uint" value="0"/>
    </property>
    <property name="plugin-2" type="string" value="systray">
      <property name="square-icons" type="bool" value="true"/>
    </property>
  </property>
</channel>
"""


def write_configuration(folder):
    """Written before the first start, so that no first-run question is asked."""
    with open(os.path.join(folder, "xfce4-panel.xml"), "w", encoding="utf-8") as file:
        file.write(CHANNEL.format(height=HEIGHT))


class Panel:
    """The panel on the desk's screen."""

    def __init__(self, desk):
        self._desk = desk
        self._process = None

    @property
    def running(self):
        """Whether there is a host for tray items."""
        return self._desk.session_bus.owner(WATCHER) is not None

    def launch(self):
        """Starts the panel without waiting for it."""
        self._process = self._desk.spawn("xfce4-panel", "--disable-wm-check")

    def wait_until_ready(self):
        """Waits until the panel hosts tray items."""
        eventually(lambda: self.running, "the panel's tray", 20)

    def start(self):
        """Starts the panel and waits for it."""
        self.launch()
        self.wait_until_ready()

    def stop(self):
        """Ends the panel; tray items are then without a host."""
        if self._process:
            self._process.stop()
            self._process = None
            eventually(lambda: not self.running, "the end of the panel's tray")

    def set_dark(self, dark):
        """Chooses the dark or the light variant of the theme and restarts the panel."""
        self.stop()
        xfconf = self._desk.session_bus.interface(
            "org.xfce.Xfconf", "/org/xfce/Xfconf", "org.xfce.Xfconf")
        xfconf.SetProperty("xfce4-panel", "/panels/dark-mode",
                           dbus.Boolean(dark, variant_level=1))
        self.start()

    def picture(self):
        """The whole panel as it is on the screen."""
        screen = self._desk.screenshot()
        return screen.crop(Rect(0, 0, screen.width, HEIGHT))

    def icon_place(self):
        """Where the only tray icon is: at the right end, as wide as it is high."""
        return Rect(self._desk.width - HEIGHT, 0, HEIGHT, HEIGHT)

    def icon(self):
        """The tray icon's picture."""
        return self._desk.screenshot().crop(self.icon_place())

    def settled_icon(self, unlike=None, limit_s=5.0):
        """The icon once it is no longer `unlike` (a picture) and has stopped changing."""
        last = []

        def settled():
            icon = self.icon()
            fresh = unlike is None or icon.differing_pixels(unlike) > 0
            same = bool(last) and last[0].rgb == icon.rgb
            last[:] = [icon]
            return icon if fresh and same else None

        return eventually(settled, "a settled icon in the panel", limit_s)
