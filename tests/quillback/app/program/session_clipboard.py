"""The clipboard of a portal's session, as GNOME has it."""

import itertools
import json
import os
import threading

import dbus
from gi.repository import GLib

UTF8 = "text/plain;charset=utf-8"
END_MS = 30


def failure(name, text):
    """An error for the caller."""
    return dbus.DBusException(text, name="org.freedesktop.DBus.Error." + name)


class SessionClipboard:
    """GNOME's clipboard. A watcher reads each new text at once. A session reads one type at a time and never
    what it holds itself or what is not there: at that the portal crashes."""

    def __init__(self, portal, say, watcher_ms):
        self._portal = portal
        self._say = say
        self._watcher_ms = watcher_ms
        self._watched = b""
        self.content = {}
        self.is_sessions = False
        self._reading = False
        self._serials = itertools.count(1)
        self._waiting = {}

    def tell(self):
        """Who holds it, and which types."""
        options = {"session_is_owner": dbus.Boolean(self.is_sessions, variant_level=1)}
        if self.content:
            # A structure around the list, as the compositor sends it.
            options["mime_types"] = dbus.Struct((dbus.Array(self.content, signature="s"),),
                                                signature="as", variant_level=1)
        self._portal.SelectionOwnerChanged(self._portal.session.path,
                                           dbus.Dictionary(options, signature="sv"))

    def set_by_session(self, types):
        """The session offers these types. Without any the desktop offers the last text that it has read."""
        if types or not self._watched:
            self.content, self.is_sessions = dict.fromkeys(types), bool(types)
            self._watched = b""
        else:
            self.content, self.is_sessions = {UTF8: self._watched}, False
        self.tell()
        if UTF8 in types and self._watcher_ms:
            GLib.timeout_add(self._watcher_ms, self._watch)
        elif UTF8 in types:
            self._watch()

    def _watch(self):
        def keep(text):
            self._watched = text
            self._say("watched", json.dumps(text.decode()))
        self.read(UTF8, keep)
        return False

    def set_by_other(self, content):
        """Another program copies."""
        self.content = {kind: value.encode() for kind, value in content.items()}
        self.is_sessions = False
        if self._portal.session:
            self.tell()

    def read(self, kind, then):
        """Another program reads."""
        if not self.is_sessions or kind not in self.content:
            return then(self.content.get(kind, b""))
        serial = next(self._serials)
        self._waiting[serial] = then
        self._portal.SelectionTransfer(self._portal.session.path, kind, dbus.UInt32(serial))
        return None

    def pipe_for_writing(self, serial):
        """The session answers a reader."""
        reading, writing = os.pipe()
        then = self._waiting.pop(int(serial))

        def drain():
            with os.fdopen(reading, "rb") as pipe:
                data = pipe.read()
            GLib.idle_add(then, data)
        threading.Thread(target=drain, daemon=True).start()
        descriptor = dbus.types.UnixFd(writing)
        os.close(writing)
        return descriptor

    def _end_reading(self):
        self._reading = False
        return False

    def pipe_for_reading(self, kind):
        """The session reads what another program has copied."""
        if self.is_sessions or not self.content or self._reading:
            self._portal.crash()
            raise failure("NoReply", "Message recipient disconnected from message bus")
        self._reading = True
        reading, writing = os.pipe()
        os.set_blocking(reading, False)

        def feed():
            try:
                with os.fdopen(writing, "wb") as pipe:
                    pipe.write(self.content.get(kind, b""))
            except BrokenPipeError:
                pass  # the session has stopped reading
            # The end is noticed a moment later.
            GLib.timeout_add(END_MS, self._end_reading)
        threading.Thread(target=feed, daemon=True).start()
        descriptor = dbus.types.UnixFd(reading)
        os.close(reading)
        return descriptor
