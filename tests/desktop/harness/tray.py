"""The application's tray item as the tray's host sees it: properties, menu rows, clicks."""

import dataclasses
import re

import dbus

from .polling import eventually

WATCHER = "org.kde.StatusNotifierWatcher"
WATCHER_PATH = "/StatusNotifierWatcher"
ITEM = "org.kde.StatusNotifierItem"
MENU = "com.canonical.dbusmenu"
PROPERTIES = "org.freedesktop.DBus.Properties"


@dataclasses.dataclass(frozen=True)
class Row:
    """One row of the menu; `label` is on the wire, `text` is what a host shows for it."""

    identifier: int
    label: str
    enabled: bool
    separator: bool
    shortcut: tuple

    @property
    def text(self):
        """A single underscore marks the access key and is not shown; a double one is shown once."""
        return re.sub(r"_(.)", r"\1", self.label)


def _row(node):
    # A key is named by its cap, so "R" without "Shift" is the lower-case letter.
    identifier, properties, _children = node
    shortcut = properties.get("shortcut", [])
    return Row(int(identifier), str(properties.get("label", "")),
               bool(properties.get("enabled", True)), properties.get("type") == "separator",
               tuple(str(key).lower() for key in shortcut[0]) if shortcut else ())


class TrayItem:
    """One registered StatusNotifierItem."""

    def __init__(self, bus, service, path):
        self.service = service
        self._bus = bus
        self._path = path

    def properties(self):
        """All properties of the item."""
        return self._bus.interface(self.service, self._path, PROPERTIES).GetAll(ITEM)

    def _menu(self):
        path = self._bus.interface(self.service, self._path, PROPERTIES).Get(ITEM, "Menu")
        return self._bus.interface(self.service, path, MENU)

    def rows(self):
        """The menu's rows in order, hidden ones left out."""
        _revision, layout = self._menu().GetLayout(0, -1, dbus.Array([], signature="s"))
        return [_row(node) for node in layout[2] if bool(node[1].get("visible", True))]

    def texts(self):
        """What the host shows, "---" standing for a separator."""
        return ["---" if row.separator else row.text for row in self.rows()]

    def click(self, text):
        """Chooses the row with this text, as a click in the host's menu does."""
        row = next(row for row in self.rows() if row.text == text)
        self._menu().Event(row.identifier, "clicked", dbus.String("", variant_level=1),
                           dbus.UInt32(0))

    def clicker(self, text):
        """A function that clicks at the row with this text and does not wait for the reply."""
        menu = self._menu()
        identifier = next(row for row in self.rows() if row.text == text).identifier
        return lambda: menu.Event(identifier, "clicked", dbus.String("", variant_level=1),
                                  dbus.UInt32(0), ignore_reply=True)

    def call(self, method, x, y):
        """Passes a click on to the item; returns the name of the error, or None."""
        item = self._bus.interface(self.service, self._path, ITEM)
        try:
            getattr(item, method)(dbus.Int32(x), dbus.Int32(y))
        except dbus.DBusException as error:
            return error.get_dbus_name()
        return None

    def give_token(self, token):
        """Gives the item a permission to bring windows forward, as Plasma 6 does before each click."""
        self._bus.interface(self.service, self._path, ITEM).ProvideXdgActivationToken(token)

    def announce_menu(self):
        """Tells the item that the host is about to show its menu."""
        self._menu().AboutToShow(dbus.Int32(0))

    def status(self):
        """The text of the status row."""
        return self.rows()[0].text

    def wait_for_status(self, text, limit_s=5.0):
        """Waits until the first row reads `text`."""
        self._wait_for_row(0, text, limit_s)

    def wait_for_last_text(self, text, limit_s=5.0):
        """Waits until the second row reads `text`."""
        self._wait_for_row(1, text, limit_s)

    def _wait_for_row(self, index, text, limit_s):
        seen = []

        def reads_so():
            seen[:] = [self.texts()[index]]
            return seen == [text]

        try:
            eventually(reads_so, f"row {index} to read {text!r}", limit_s)
        except AssertionError as error:
            raise AssertionError(f"{error}; it reads {seen}") from None


class Tray:
    """The registry of tray items that the panel keeps."""

    def __init__(self, bus):
        self._bus = bus

    def item_of(self, pid):
        """The item of a process, or None while it has none."""
        if self._bus.owner(WATCHER) is None:
            return None
        try:
            watcher = self._bus.interface(WATCHER, WATCHER_PATH, PROPERTIES)
            for entry in watcher.Get(WATCHER, "RegisteredStatusNotifierItems"):
                service, _, path = str(entry).partition("/")
                if self._bus.process_of(service) == pid:
                    return TrayItem(self._bus, service, "/" + path)
        except dbus.DBusException:
            pass  # a panel or an item that is just going away
        return None

    def wait_for_item(self, pid, limit_s=10.0):
        """Waits until the process has an item."""
        return eventually(lambda: self.item_of(pid), f"a tray item of process {pid}", limit_s)
