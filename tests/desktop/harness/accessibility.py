"""The program's windows as assistive technology reads and drives them."""

import glob

import dbus

from .buses import BusClient
from .polling import eventually
from .screen import Rect

LAUNCHER = "org.a11y.Bus"
LAUNCHER_PATH = "/org/a11y/bus"
ROOT_PATH = "/org/a11y/atspi/accessible/root"
NOTHING_PATH = "/org/a11y/atspi/null"
INTERFACE = "org.a11y.atspi."
PROPERTIES = "org.freedesktop.DBus.Properties"
ON_SCREEN = 0
LABELLED_BY = 2  # a relation, by its number in the protocol
WINDOW_ROLES = ("frame", "dialog", "alert", "window")

# The roles that the windows use, by their numbers in the protocol; the names that a toolkit sends
# are translated and its own.
ROLES = {2: "alert", 7: "check box", 11: "combo box", 16: "dialog", 20: "filler", 23: "frame",
         27: "image", 29: "label", 31: "list", 32: "list item", 39: "panel", 42: "progress bar",
         43: "push button", 48: "scroll bar", 49: "scroll pane", 61: "text", 69: "window",
         75: "application"}

# The states that the tests ask for, by their numbers in the protocol.
STATES = {1: "active", 4: "checked", 8: "enabled", 9: "expandable", 10: "expanded", 11: "focusable",
          12: "focused", 16: "modal", 17: "multi line", 23: "selected", 24: "sensitive",
          25: "showing", 30: "visible", 39: "default", 7: "editable", 43: "read only",
          41: "checkable"}


class Node:
    """One accessible object; every property is read again at each call."""

    def __init__(self, bus, service, path):
        self._bus = bus
        self._service = service
        self.path = path

    def __eq__(self, other):
        return isinstance(other, Node) and (self._service, self.path) == (other._service, other.path)

    def __hash__(self):
        return hash((self._service, self.path))

    def __repr__(self):
        try:
            return f"<{self.role} {self.name!r}>"
        except dbus.DBusException:
            return "<gone>"

    def _interface(self, name):
        return self._bus.interface(self._service, self.path, INTERFACE + name)

    def _property(self, interface, name):
        return self._bus.interface(self._service, self.path, PROPERTIES).Get(
            INTERFACE + interface, name)

    # Reading -------------------------------------------------------------------------------------

    @property
    def name(self):
        """The object's name."""
        return str(self._property("Accessible", "Name"))

    @property
    def description(self):
        """The object's description."""
        return str(self._property("Accessible", "Description"))

    @property
    def role(self):
        """The object's role."""
        number = int(self._interface("Accessible").GetRole())
        return ROLES.get(number, f"role {number}")

    @property
    def states(self):
        """The object's active states."""
        low, high = (int(word) for word in self._interface("Accessible").GetState())
        bits = low | high << 32
        return {name for number, name in STATES.items() if bits >> number & 1}

    @property
    def place(self):
        """Where it is on the screen."""
        return Rect(*(int(v) for v in self._interface("Component").GetExtents(
            dbus.UInt32(ON_SCREEN))))

    @property
    def text(self):
        """The text that it holds, whole."""
        return str(self._interface("Text").GetText(0, -1))

    def end_of_text(self, length):
        """The last characters of its text, `length` of them."""
        count = int(self._property("Text", "CharacterCount"))
        return str(self._interface("Text").GetText(dbus.Int32(max(0, count - length)),
                                                   dbus.Int32(count)))

    @property
    def value(self):
        """(value, least, most) of a bar."""
        return tuple(float(self._property("Value", name))
                     for name in ("CurrentValue", "MinimumValue", "MaximumValue"))

    @property
    def label(self):
        """The name of the text beside it that labels it, or None."""
        for relation, targets in self._interface("Accessible").GetRelationSet():
            if relation == LABELLED_BY:
                service, path = targets[0]
                return Node(self._bus, str(service), str(path)).name
        return None

    def interfaces(self):
        """The interfaces that it offers, without their common beginning."""
        return [str(name)[len(INTERFACE):] for name in self._interface("Accessible").GetInterfaces()]

    def children(self):
        """Its children in order."""
        return [Node(self._bus, str(service), str(path))
                for service, path in self._interface("Accessible").GetChildren()
                if path != NOTHING_PATH]

    def showing(self):
        """Whether the user can see it."""
        return "showing" in self.states

    def descendants(self):
        """The object and its shown descendants, in tree order."""
        found = [self]
        for child in self.children():
            if child.showing():
                found += child.descendants()
        return found

    def all(self, role=None, name=None):
        """The shown descendants of this role and name."""
        return [node for node in self.descendants()
                if role in (None, node.role) and name in (None, node.name)]

    def find(self, role=None, name=None):
        """The only such descendant, or None."""
        found = self.all(role, name)
        if len(found) > 1:
            raise AssertionError(f"{len(found)} of {role} {name!r}: {found}")
        return found[0] if found else None

    def wait_for(self, role=None, name=None, limit_s=10.0):
        """Waits until there is exactly one such descendant."""
        return eventually(lambda: tolerant(self.find)(role, name), f"{role} {name!r} in {self!r}",
                          limit_s)

    def gone(self):
        """Whether the object no longer exists or is no longer shown."""
        try:
            return not self.showing()
        except dbus.DBusException:
            return True

    def dump(self, depth=0):
        """The tree below it, for a person to read."""
        lines = ["  " * depth + f"{self!r} {sorted(self.states)} {self.place}"]
        return "\n".join(lines + [child.dump(depth + 1) for child in self.children()])

    # Acting --------------------------------------------------------------------------------------

    def actions(self):
        """The names of what can be done with it."""
        return [str(action[0]) for action in self._interface("Action").GetActions()]

    def act(self, name):
        """Does one of its actions."""
        self._interface("Action").DoAction(dbus.Int32(self.actions().index(name)))

    def press(self):
        """Presses a button."""
        self.act("Press")

    def focus(self):
        """Gives it the focus."""
        self._interface("Component").GrabFocus()


def tolerant(ask):
    """`ask`, or None if the object is appearing or disappearing."""
    def attempt(*arguments):
        try:
            return ask(*arguments)
        except dbus.DBusException:
            return None

    return attempt


class Accessibility:
    """A private accessibility bus, on which programs of the desk offer their windows."""

    def __init__(self, desk):
        found = glob.glob("/usr/libexec/at-spi-bus-launcher")
        if not found:
            raise AssertionError("at-spi-bus-launcher is not installed")
        self._launcher = desk.spawn(found[0], "--launch-immediately", "--screen-reader=1")
        self._session = desk.session_bus
        eventually(lambda: self._session.owner(LAUNCHER), "the accessibility bus", 20)
        address = str(self._session.interface(LAUNCHER, LAUNCHER_PATH, LAUNCHER).GetAddress())
        self._bus = BusClient(address, "accessibility")

    def close(self):
        """Leaves the bus; it ends with its launcher."""
        self._bus.close()

    def root_of(self, pid):
        """The program's root object, or None if there is none yet."""
        # Only the program itself is asked: others on this bus do not reply.
        for name in self._bus.names():
            if name.startswith(":") and tolerant(self._bus.process_of)(name) == pid:
                root = Node(self._bus, name, ROOT_PATH)
                if tolerant(lambda node: node.role)(root) is not None:
                    return root
        return None

    def windows_of(self, pid):
        """The program's windows that are shown."""
        root = self.root_of(pid)
        if root is None:
            return []
        return [node for node in tolerant(root.children)() or []
                if tolerant(lambda window: window.role in WINDOW_ROLES and window.showing())(node)]

    def window(self, pid, title):
        """The only shown window of that title, or None."""
        found = [node for node in self.windows_of(pid)
                 if tolerant(lambda n: n.name)(node) == title]
        if len(found) > 1:
            raise AssertionError(f"{len(found)} windows are called {title!r}")
        return found[0] if found else None

    def wait_for_window(self, pid, title, limit_s=15.0):
        """Waits until the program shows exactly one window of that title."""
        try:
            return eventually(lambda: self.window(pid, title), f"the window {title!r}", limit_s)
        except AssertionError as error:
            raise AssertionError(f"{error}; shown: {self.windows_of(pid)}") from None

    def wait_until_closed(self, pid, title, limit_s=10.0):
        """Waits until the program shows no window of that title."""
        eventually(lambda: not self.window(pid, title), f"the window {title!r} to close", limit_s)
