"""A double of the portal's remote desktop and clipboard that behaves as one of the desktops does, with a text
field that has the focus.

Usage: words_portal.py KIND FOLDER, with KIND plasma5 (version 1, asks nothing), gnome43 (version 1: no tokens),
plasma6 (version 2), gnome48 (version 2, with the clipboard; gnome48+thinking takes its time with the answer,
gnome48+busy with its own read of each new text; gnome43+apart leaves X11's clipboard alone),
refusing, mouse-only (the user leaves the keyboard out), older (no remote desktop). The folder keeps the
tokens. On the Plasmas the field pastes from the compositor that WAYLAND_DISPLAY names, on gnome43 from the X
server that DISPLAY names, else from the file "clipboard" in the folder, on gnome48 from its own clipboard.
Commands on standard input, one a line: copy JSON (another program copies these types), show, terminal (from
now on the field wants Ctrl+Shift+V), window (another one gets the focus), deaf, close, crash. It prints what it was asked for and what was pasted.
"""

import json
import os
import subprocess
import sys
import threading
import time

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

from compositor_scripts import CompositorScripts
from portal_double import NAME, PATH, Session, answer_later, say
from session_clipboard import UTF8, SessionClipboard, failure
from x11_watcher import X11Watcher, x11_clipboard

BACKEND = "org.freedesktop.impl.portal.desktop.gnome"
REMOTE = "org.freedesktop.portal.RemoteDesktop"
CLIPBOARD = "org.freedesktop.portal.Clipboard"
KIND, _, HABIT = sys.argv[1].partition("+")
FOLDER = sys.argv[2]
THINKING_MS = 800
BUSY_MS = 150
HAS_X11 = KIND == "gnome43" and HABIT != "apart" and "DISPLAY" in os.environ
VERSIONS = {"plasma5": 1, "gnome43": 1, "older": None}
CTRL, SHIFT, KEY_V, INSERT = 29, 42, 47, 110
PASTE = {"field": {frozenset((CTRL, KEY_V))},
         "terminal": {frozenset((CTRL, SHIFT, KEY_V)), frozenset((SHIFT, INSERT))}}


class RemoteSession(Session):
    """A session in which keys can be pressed."""

    def __init__(self, bus, path, owner):
        super().__init__(bus, path)
        self.path, self.owner = path, owner
        self.asks_for_clipboard = self.is_started = False
        self.token = None


class TextField:
    """The window with the focus: on its paste key it reads the clipboard."""

    def __init__(self, clipboard):
        self._clipboard = clipboard
        self._down = set()
        self.kind, self.window, self.is_deaf = "field", 1, False

    def key(self, code, is_down):
        """A key of the keyboard."""
        if not is_down:
            self._down.discard(code)
            if not self._down:
                say("released")
            return
        self._down.add(code)
        say("pressed", *sorted(self._down))
        if not self.is_deaf and frozenset(self._down) in PASTE[self.kind]:
            self._read(lambda text: say("pasted", time.monotonic_ns(), json.dumps(text.decode())))

    def focus(self):
        """The program that the field belongs to, and its window."""
        return "org.kde.konsole" if self.kind == "terminal" else "org.kde.kwrite", f"{{{self.window}}}"

    def keys_left_down(self):
        """Of the session that ended."""
        return sorted(self._down)

    def show(self):
        """The clipboard, as another program reads it."""
        self._read(lambda text: say("clipboard", json.dumps(text.decode())))

    def _read(self, then):
        if KIND == "gnome48":
            self._clipboard.read(UTF8, then)
        elif HAS_X11:
            then(x11_clipboard())
        elif KIND.startswith("gnome"):
            with open(os.path.join(FOLDER, "clipboard"), "rb") as file:
                then(file.read())
        else:
            def paste():
                done = subprocess.run(["wl-paste", "--no-newline"], capture_output=True, check=False)
                GLib.idle_add(then, done.stdout)
            threading.Thread(target=paste, daemon=True).start()


class Portal(dbus.service.Object):
    """The desktop's side."""

    def __init__(self, bus):
        super().__init__(bus, PATH)
        self._bus = bus
        self.session = None
        self._keys = []
        self.clipboard = SessionClipboard(self, say, BUSY_MS if HABIT == "busy" else 0)
        self.field = TextField(self.clipboard)
        folder = {"plasma5": "/", "plasma6": "/Scripting/Script"}.get(KIND)
        self.scripts = folder and CompositorScripts(bus, folder, self.field.focus)

    def _request(self, *arguments):
        return answer_later(self._bus, *arguments)

    def _checked(self, path, sender):
        if not self.session or (self.session.path, self.session.owner) != (path, sender):
            raise failure("AccessDenied", "Invalid session")
        return self.session

    def _checked_clipboard(self, path, sender):
        session = self._checked(path, sender)
        if not (session.is_started and session.asks_for_clipboard):
            raise failure("AccessDenied", "Clipboard not enabled")
        return self.clipboard

    @dbus.service.method("org.freedesktop.DBus.Properties", "ss", "v")
    def Get(self, interface, name):
        """Only the versions are asked for."""
        version = VERSIONS.get(KIND, 2) if interface == REMOTE else None
        if interface == CLIPBOARD and KIND == "gnome48":
            version = 1
        if version is None or name != "version":
            raise failure("InvalidArgs", "not here")
        return dbus.UInt32(version, variant_level=1)

    @dbus.service.method(REMOTE, "a{sv}", "o", sender_keyword="sender")
    def CreateSession(self, options, sender=None):
        """Nothing is asked yet."""
        path = f"{PATH}/session/{sender[1:].replace('.', '_')}/{options['session_handle_token']}"
        self.session = RemoteSession(self._bus, path, sender)
        return self._request(sender, options, 0, {"session_handle": path})

    @dbus.service.method(REMOTE, "oa{sv}", "o", sender_keyword="sender")
    def SelectDevices(self, path, options, sender=None):
        """Older portals know neither tokens nor how long a permission lasts."""
        session = self._checked(path, sender)
        known = {"handle_token", "types"}
        if VERSIONS.get(KIND, 2) == 2:
            known |= {"persist_mode", "restore_token"}
        if set(options) - known:
            raise failure("InvalidArgs", f"unknown: {set(options) - known}")
        session.token = options.get("restore_token")
        say("devices", options["types"], "persist", options.get("persist_mode", 0))
        return self._request(sender, options, 0, {})

    @dbus.service.method(REMOTE, "osa{sv}", "o", sender_keyword="sender")
    def Start(self, path, _parent, options, sender=None):
        """Asks the user, unless a token of an earlier session is still good."""
        session = self._checked(path, sender)
        thinks = False
        tokens = os.path.join(FOLDER, "tokens")
        os.makedirs(tokens, exist_ok=True)
        if session.token and os.path.exists(os.path.join(tokens, session.token)):
            os.unlink(os.path.join(tokens, session.token))
            say("restored")
        else:
            say("started" if KIND == "plasma5" else "asked")
            thinks = HABIT == "thinking"
        if KIND == "refusing":
            return self._request(sender, options, 1, {})
        session.is_started = True
        results = {"devices": dbus.UInt32(2 if KIND == "mouse-only" else 1)}
        if VERSIONS.get(KIND, 2) == 2:
            token = f"token-{time.monotonic_ns()}"
            with open(os.path.join(tokens, token), "w", encoding="ascii"):
                results["restore_token"] = token
            results["clipboard_enabled"] = session.asks_for_clipboard
        if session.asks_for_clipboard:
            self.clipboard.tell()
        return self._request(sender, options, 0, results, THINKING_MS if thinks else 0)

    @dbus.service.method(REMOTE, "oa{sv}iu", "", sender_keyword="sender",
                         async_callbacks=("done", "_fail"))
    def NotifyKeyboardKeycode(self, path, _options, code, state, done, _fail, sender=None):
        """A key by its place. The portal has several threads, so calls that come together change places."""
        if not self._checked(path, sender).is_started:
            raise failure("AccessDenied", "Session is not started")
        self._keys.append((int(code), state == 1, done))
        if len(self._keys) == 1:
            GLib.timeout_add(1, self._press_keys)

    def _press_keys(self):
        keys, self._keys = self._keys, []
        for code, is_down, done in reversed(keys):
            self.field.key(code, is_down)
            done()
        return False

    @dbus.service.method(CLIPBOARD, "oa{sv}", "", sender_keyword="sender")
    def RequestClipboard(self, path, _options, sender=None):
        """Only before the session starts."""
        session = self._checked(path, sender)
        if KIND != "gnome48":
            raise failure("UnknownMethod", "not here")
        if session.is_started:
            raise failure("AccessDenied", "too late")
        session.asks_for_clipboard = True

    @dbus.service.method(CLIPBOARD, "oa{sv}", "", sender_keyword="sender")
    def SetSelection(self, path, options, sender=None):
        """The session offers these types, or none."""
        self._checked_clipboard(path, sender).set_by_session(list(options.get("mime_types", [])))

    @dbus.service.method(CLIPBOARD, "ou", "h", sender_keyword="sender")
    def SelectionWrite(self, path, serial, sender=None):
        """A pipe for a reader."""
        return self._checked_clipboard(path, sender).pipe_for_writing(serial)

    @dbus.service.method(CLIPBOARD, "oub", "", sender_keyword="sender")
    def SelectionWriteDone(self, path, _serial, success, sender=None):
        """The reader has all of it."""
        self._checked_clipboard(path, sender)
        if not success:
            say("unwritten")

    @dbus.service.method(CLIPBOARD, "os", "h", sender_keyword="sender")
    def SelectionRead(self, path, kind, sender=None):
        """A pipe from another program."""
        return self._checked_clipboard(path, sender).pipe_for_reading(str(kind))

    @dbus.service.signal(CLIPBOARD, "oa{sv}")
    def SelectionOwnerChanged(self, session, options):
        """Somebody has copied."""

    @dbus.service.signal(CLIPBOARD, "osu")
    def SelectionTransfer(self, session, kind, serial):
        """Somebody reads what the session offers."""

    def crash(self):
        """The program behind the portal ends; the session is gone and nobody is told."""
        say("crashed")
        self.session.remove_from_connection()
        self.session = None
        self._bus.release_name(BACKEND)
        self._bus.request_name(BACKEND)

    def command(self, line):
        """What the test wants to happen."""
        word, _, rest = line.partition(" ")
        if word == "copy":
            self.clipboard.set_by_other(json.loads(rest))
        elif word == "show":
            self.field.show()
        elif word == "types":
            say("types", json.dumps(sorted(self.clipboard.content)))
        elif word == "read":
            self.clipboard.read(rest, lambda text: say("read", json.dumps(text.decode())))
        elif word == "terminal":
            self.field.kind = "terminal"
        elif word == "window":
            self.field.window += 1
        elif word == "deaf":
            self.field.is_deaf = True
        elif word == "crash":
            self.crash()
        elif word == "close":
            say("left down", self.field.keys_left_down())
            self.session.Closed()
            self.session.remove_from_connection()
            self.session = None


def main():
    """Until standard input ends."""
    dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
    bus = dbus.SessionBus()
    portal = Portal(bus)
    name = dbus.service.BusName(NAME, bus)
    loop = GLib.MainLoop()
    rest = b""

    def read(stream, _condition):
        # Not by lines: one that has come along with another would wait in Python's buffer.
        nonlocal rest
        data = os.read(stream.fileno(), 65536)
        if not data:
            loop.quit()
            return False
        *lines, rest = (rest + data).split(b"\n")
        for line in lines:
            portal.command(line.decode())
        return True
    GLib.io_add_watch(sys.stdin, GLib.PRIORITY_DEFAULT, GLib.IO_IN | GLib.IO_HUP, read)
    bus.request_name(BACKEND)
    watcher = X11Watcher(say) if HAS_X11 else None
    say("portal", name.get_name())
    loop.run()
    if watcher:
        watcher.stop()


if __name__ == "__main__":
    main()
