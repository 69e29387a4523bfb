"""Stands in for the login manager on a private system bus.

A delay lock is a pipe: the application holds one end, and closing it is how the lock is released.
"""

import os
import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

MANAGER = "org.freedesktop.login1.Manager"
SESSION = "org.freedesktop.login1.Session"
SESSION_PATH = "/org/freedesktop/login1/session/_31"
CONTROL = "org.voxtrel.Test.LoginManager"


class Session(dbus.service.Object):
    """The user's session, with its lock state."""

    def __init__(self, bus):
        super().__init__(bus, SESSION_PATH)
        self._locked = False

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v")
    def Get(self, _interface, name):
        """The property."""
        assert name == "LockedHint"
        return dbus.Boolean(self._locked, variant_level=1)

    @dbus.service.signal(dbus.PROPERTIES_IFACE, signature="sa{sv}as")
    def PropertiesChanged(self, interface, changed, invalidated):
        """What has changed."""

    def set_locked(self, locked):
        """Changes the lock state and says so."""
        if self._locked == bool(locked):
            return
        self._locked = bool(locked)
        self.PropertiesChanged(SESSION, {"LockedHint": self._locked}, [])


class LoginManager(dbus.service.Object):
    """The part of the login manager that an application sees around sleep."""

    def __init__(self, bus, refuses):
        super().__init__(bus, "/org/freedesktop/login1")
        self._refuses = refuses
        self._session = Session(bus)
        self._locks = {}
        self._history = []

    @dbus.service.method(MANAGER, in_signature="ssss", out_signature="h", sender_keyword="sender")
    def Inhibit(self, what, who, why, mode, sender=None):
        """Hands out a lock that lasts until its receiver closes it."""
        if self._refuses:
            self._history.append("refused")
            raise dbus.DBusException(
                "Permission denied", name="org.freedesktop.DBus.Error.AccessDenied")
        ours, theirs = os.pipe()
        self._locks[ours] = (what, who, why, mode)
        self._history.append("taken")
        GLib.io_add_watch(ours, GLib.IO_HUP, self._released)
        descriptor = dbus.types.UnixFd(theirs)
        os.close(theirs)
        return descriptor

    def _released(self, descriptor, _condition):
        del self._locks[descriptor]
        os.close(descriptor)
        self._history.append("released")
        return False

    @dbus.service.method(MANAGER, out_signature="a(ssssuu)")
    def ListInhibitors(self):
        """The locks held at this moment."""
        return [(*lock, dbus.UInt32(0), dbus.UInt32(0)) for lock in self._locks.values()]

    @dbus.service.signal(MANAGER, signature="b")
    def PrepareForSleep(self, start):
        """True before sleep, false after wake."""

    @dbus.service.method(CONTROL, in_signature="b")
    def Announce(self, start):
        """Lets the test put the machine to sleep or wake it."""
        self._history.append("sleep" if start else "wake")
        self.PrepareForSleep(start)

    @dbus.service.method(MANAGER, in_signature="s", out_signature="o")
    def GetSession(self, _name):
        """The only session, whatever it is called."""
        return dbus.ObjectPath(SESSION_PATH)

    @dbus.service.method(CONTROL, in_signature="b")
    def Lock(self, locked):
        """Lets the test lock or unlock the screen."""
        self._session.set_locked(locked)

    @dbus.service.method(CONTROL, out_signature="as")
    def History(self):
        """What happened so far, in order."""
        return dbus.Array(self._history, signature="s")


def main():
    """Serves until it is ended."""
    dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
    bus = dbus.SystemBus()
    manager = LoginManager(bus, "--refuse" in sys.argv)
    name = dbus.service.BusName("org.freedesktop.login1", bus, do_not_queue=True)
    GLib.MainLoop().run()
    del manager, name


if __name__ == "__main__":
    main()
