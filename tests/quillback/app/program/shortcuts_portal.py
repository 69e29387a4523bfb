"""A double of the portal's global shortcuts that behaves as one of the desktops does.

Usage: shortcuts_portal.py KIND, with KIND plasma5 (shortcuts in CreateSession), plasma6, gnome48 (BindShortcuts
answers 2 although it has bound, and wants the program to say who it is first), no-trigger (the first
trigger is taken by another program), refusing, older (no shortcuts). Commands on standard input, one a line:
press, release, close, trigger TEXT. It prints what it was asked for, and when it told of a press.
"""

import os
import sys
import time

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

from portal_double import NAME, PATH, Session, answer_later, say

SHORTCUTS = "org.freedesktop.portal.GlobalShortcuts"
KIND = sys.argv[1]


class Portal(dbus.service.Object):
    """The desktop's side."""

    def __init__(self, bus):
        super().__init__(bus, PATH)
        self._bus = bus
        self._registered = set()
        self._bound = None
        self._given = None
        self._bindings = 0
        self.session = None

    def _request(self, *arguments):
        return answer_later(self._bus, *arguments)

    def _shortcuts(self):
        if self._bound is None:
            return dbus.Array([], signature="(sa{sv})")
        return dbus.Array([(self._bound, dbus.Dictionary(
            {"description": "Hold to dictate", "trigger_description": self._given},
            signature="sv"))], signature="(sa{sv})")

    def _bind(self, shortcuts):
        self._bound = shortcuts[0][0]
        self._bindings += 1
        wanted = str(shortcuts[0][1]["preferred_trigger"])
        self._given = "" if KIND == "no-trigger" and wanted == "F8" else f"Press {wanted}"
        say("bound", wanted)

    @dbus.service.method("org.freedesktop.host.portal.Registry", "sa{sv}", "", sender_keyword="sender")
    def Register(self, application, _options, sender=None):
        """Newer portals want to know who calls."""
        if KIND == "plasma5":
            raise dbus.DBusException("not here", name="org.freedesktop.DBus.Error.UnknownMethod")
        self._look_at(sender)
        self._registered.add(sender)
        say("registered", application)

    def _look_at(self, sender):
        """A portal looks at its caller once: newer ones when it says who it is, older ones at its first call."""
        pid = self._bus.call_blocking("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                      "org.freedesktop.DBus", "GetConnectionUnixProcessID", "s",
                                      (sender,))
        say("caller", os.stat(f"/proc/{pid}/environ").st_uid)

    @dbus.service.method("org.freedesktop.DBus.Properties", "ss", "v")
    def Get(self, interface, name):
        """Only the version is asked for."""
        if KIND == "older" or (interface, name) != (SHORTCUTS, "version"):
            raise dbus.DBusException("not here", name="org.freedesktop.DBus.Error.InvalidArgs")
        return dbus.UInt32(1, variant_level=1)

    @dbus.service.method(SHORTCUTS, "a{sv}", "o", sender_keyword="sender")
    def CreateSession(self, options, sender=None):
        """Plasma 5.27 binds here, and names the user's setting after the token."""
        if KIND == "gnome48" and sender not in self._registered:
            raise dbus.DBusException("no application id", name="org.freedesktop.portal.Error.NotAllowed")
        token = options["session_handle_token"]
        path = f"{PATH}/session/{sender[1:].replace('.', '_')}/{token}"
        say("session", token)
        self.session = Session(self._bus, path)
        if KIND == "gnome48":
            self._bound = None  # of an earlier session
        if KIND == "plasma5":
            self._look_at(sender)
            self._bind(options["shortcuts"])
        return self._request(sender, options, dbus.UInt32(0), {"session_handle": path})

    @dbus.service.method(SHORTCUTS, "oa(sa{sv})sa{sv}", "o", sender_keyword="sender")
    def BindShortcuts(self, _session, shortcuts, _parent, options, sender=None):
        """GNOME 48.0 binds and answers that it has not."""
        if KIND == "refusing":
            return self._request(sender, options, dbus.UInt32(1), {})
        if KIND != "plasma5":
            self._bind(shortcuts)
        code = dbus.UInt32(2 if KIND == "gnome48" else 0)
        return self._request(sender, options, code,
                             {} if KIND == "gnome48" else {"shortcuts": self._shortcuts()})

    @dbus.service.method(SHORTCUTS, "oa{sv}", "o", sender_keyword="sender")
    def ListShortcuts(self, _session, options, sender=None):
        """What is bound by now."""
        return self._request(sender, options, dbus.UInt32(0), {"shortcuts": self._shortcuts()})

    @dbus.service.signal(SHORTCUTS, "osta{sv}")
    def Activated(self, session, shortcut, timestamp, options):
        """The key is down."""

    @dbus.service.signal(SHORTCUTS, "osta{sv}")
    def Deactivated(self, session, shortcut, timestamp, options):
        """The key is up."""

    @dbus.service.signal(SHORTCUTS, "oa(sa{sv})")
    def ShortcutsChanged(self, session, shortcuts):
        """The user has chosen another trigger."""

    def command(self, line):
        """What the test wants to happen."""
        word, _, rest = line.partition(" ")
        path = self.session.__dbus_object_path__ if self.session else PATH
        none = dbus.Dictionary({}, signature="sv")
        if word == "press":
            say("pressed", time.monotonic_ns())
            self.Activated(path, "push-to-talk", dbus.UInt64(1), none)
        if word == "release":
            self.Deactivated(path, "push-to-talk", dbus.UInt64(2), none)
        if word == "stranger":
            self.Activated(path, "another", dbus.UInt64(1), none)
        if word == "count":
            say("bindings", self._bindings)
        if word == "close":
            self.session.Closed()
        if word == "trigger":
            self._given = rest
            self.ShortcutsChanged(path, self._shortcuts())


def main():
    """Until standard input ends."""
    dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
    bus = dbus.SessionBus()
    portal = Portal(bus)
    name = dbus.service.BusName(NAME, bus)
    loop = GLib.MainLoop()

    def read(stream, _condition):
        # Not by lines: one that has come along with another would wait in Python's buffer.
        data = os.read(stream.fileno(), 4096).decode()
        if not data:
            loop.quit()
            return False
        for line in data.splitlines():
            portal.command(line)
        return True
    GLib.io_add_watch(sys.stdin, GLib.PRIORITY_DEFAULT, GLib.IO_IN | GLib.IO_HUP, read)
    say("portal", name.get_name())
    loop.run()


if __name__ == "__main__":

    main()
