"""What the doubles of the desktop's portal share."""

import dbus
import dbus.lowlevel
import dbus.service
from gi.repository import GLib

NAME = "org.freedesktop.portal.Desktop"
PATH = "/org/freedesktop/portal/desktop"


def say(*words):
    """One line for the test."""
    print(*words, flush=True)


class Session(dbus.service.Object):
    """A session that its owner or the desktop closes."""

    @dbus.service.method("org.freedesktop.portal.Session")
    def Close(self):
        """The owner is done."""
        say("closed")
        self.remove_from_connection()

    @dbus.service.signal("org.freedesktop.portal.Session")
    def Closed(self):
        """The desktop ends it."""


def answer_later(bus, sender, options, code, results, delay_ms=0):
    """The answer to a request comes by a signal for the caller alone. Returns the request's path."""
    path = f"{PATH}/request/{sender[1:].replace('.', '_')}/{options['handle_token']}"

    def respond():
        message = dbus.lowlevel.SignalMessage(path, "org.freedesktop.portal.Request", "Response")
        message.set_destination(sender)
        message.append(dbus.UInt32(code), dbus.Dictionary(results, signature="sv"), signature="ua{sv}")
        bus.send_message(message)
    GLib.timeout_add(delay_ms, respond)
    return dbus.ObjectPath(path)
