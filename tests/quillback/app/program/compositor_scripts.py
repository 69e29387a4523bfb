"""The scripts of Plasma's compositor, as far as they tell which program and window have the focus."""

import re

import dbus
import dbus.service

NAME = "org.kde.KWin"
SCRIPTING = "org.kde.kwin.Scripting"


class _Script(dbus.service.Object):
    """A loaded script."""

    def __init__(self, bus, path, text, focus):
        super().__init__(bus, path)
        self._bus, self._text, self._focus = bus, text, focus

    @dbus.service.method("org.kde.kwin.Script")
    def run(self):
        """It makes the only call that it has."""
        service, path, interface, method = re.search(
            r'callDBus\("([^"]+)", "([^"]+)", "([^"]+)", "([^"]+)"', self._text).groups()
        self._bus.call_async(service, path, interface, method, "ss", self._focus(),
                             lambda *_reply: None, lambda _error: None)


class CompositorScripts(dbus.service.Object):
    """Loads one script of each name."""

    def __init__(self, bus, folder, focus):
        super().__init__(bus, "/Scripting")
        bus.request_name(NAME)
        self._bus, self._folder, self._focus = bus, folder, focus
        self._scripts = {}

    @dbus.service.method(SCRIPTING, "ss", "i")
    def loadScript(self, path, name):
        """Refuses a name that is loaded."""
        if name in self._scripts:
            return -1
        with open(path, encoding="utf-8") as file:
            text = file.read()
        self._scripts[name] = _Script(self._bus, self._folder + "0", text, self._focus)
        return 0

    @dbus.service.method(SCRIPTING, "s", "b")
    def unloadScript(self, name):
        """Whether it was loaded."""
        script = self._scripts.pop(name, None)
        if script:
            script.remove_from_connection()
        return script is not None
