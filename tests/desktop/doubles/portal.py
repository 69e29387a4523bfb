"""A desktop portal: offers what its arguments say, and prints its requests.

portal.py [--dark] [--microphone RESPONSE] [--silent]
"""

import argparse

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

NAME = "org.freedesktop.portal.Desktop"
PATH = "/org/freedesktop/portal/desktop"
SETTINGS = "org.freedesktop.portal.Settings"
DEVICE = "org.freedesktop.portal.Device"
REQUEST = "org.freedesktop.portal.Request"
CONTROL = "org.voxtrel.Test.Portal"
APPEARANCE, SCHEME = "org.freedesktop.appearance", "color-scheme"
LIGHT, DARK = 2, 1


class Request(dbus.service.Object):
    """A pending question to the user."""

    @dbus.service.signal(REQUEST, signature="ua{sv}")
    def Response(self, response, results):
        """The user's answer."""

    @dbus.service.method(REQUEST)
    def Close(self):
        """Does nothing: a request is answered at once."""


class Portal(dbus.service.Object):
    """One object with the interfaces that the program may ask."""

    def __init__(self, bus, options):
        super().__init__(bus, PATH)
        self._bus = bus
        self._options = options
        self._scheme = DARK if options.dark else LIGHT
        self._asked = []
        self._requests = []

    def _value(self):
        return dbus.UInt32(self._scheme, variant_level=1)

    def _offered(self, interface):
        """The properties of an interface, where it is there."""
        versions = {SETTINGS: 2, DEVICE: 1}
        if versions.get(interface) is None:
            raise dbus.DBusException("no such interface",
                                     name="org.freedesktop.DBus.Error.UnknownInterface")
        return {"version": dbus.UInt32(versions[interface], variant_level=1)}

    @dbus.service.method("org.freedesktop.DBus.Properties", "ss", "v")
    def Get(self, interface, name):
        """One property."""
        return self._offered(interface)[str(name)]

    @dbus.service.method("org.freedesktop.DBus.Properties", "s", "a{sv}")
    def GetAll(self, interface):
        """All properties."""
        return self._offered(interface)

    @dbus.service.method(SETTINGS, "ss", "v")
    def Read(self, namespace, key):
        """One setting, wrapped once more than needed, as the older method does."""
        return dbus.UInt32(self._known(namespace, key), variant_level=2)

    @dbus.service.method(SETTINGS, "ss", "v")
    def ReadOne(self, namespace, key):
        """One setting."""
        return dbus.UInt32(self._known(namespace, key), variant_level=1)

    @dbus.service.method(SETTINGS, "as", "a{sa{sv}}")
    def ReadAll(self, _namespaces):
        """All settings."""
        return {APPEARANCE: {SCHEME: self._value()}}

    def _known(self, namespace, key):
        if (namespace, key) != (APPEARANCE, SCHEME):
            raise dbus.DBusException("no such setting",
                                     name="org.freedesktop.portal.Error.NotFound")
        return self._scheme

    @dbus.service.signal(SETTINGS, "ssv")
    def SettingChanged(self, namespace, key, value):
        """A setting has another value now."""

    @dbus.service.method(DEVICE, "uasa{sv}", "o", sender_keyword="sender")
    def AccessDevice(self, _pid, devices, options, sender=None):
        """Asks the user for devices."""
        self._asked.append(" ".join(devices))
        token = str(options.get("handle_token", "t"))
        path = f"{PATH}/request/{sender[1:].replace('.', '_')}/{token}"
        request = Request(self._bus, path)
        self._requests.append(request)
        if not self._options.silent:
            response = dbus.UInt32(self._options.microphone)
            GLib.idle_add(lambda: request.Response(response, dbus.Dictionary(signature="sv")))
        return dbus.ObjectPath(path)

    @dbus.service.method(CONTROL, "b", "")
    def SetDark(self, dark):
        """The user chooses the dark or the light style."""
        self._scheme = DARK if dark else LIGHT
        self.SettingChanged(APPEARANCE, SCHEME, self._value())

    @dbus.service.method(CONTROL, "", "as")
    def Asked(self):
        """The devices that were asked for."""
        return dbus.Array(self._asked, signature="s")


def main():
    """Serves until it is ended."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--dark", action="store_true")
    parser.add_argument("--microphone", type=int, default=0, metavar="RESPONSE")
    parser.add_argument("--silent", action="store_true", help="the user never answers")
    options = parser.parse_args()
    dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
    bus = dbus.SessionBus()
    portal = Portal(bus, options)
    name = dbus.service.BusName(NAME, bus, do_not_queue=True)
    GLib.MainLoop().run()
    return portal, name


if __name__ == "__main__":
    main()
