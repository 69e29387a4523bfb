"""Notifications as the user sees them: what was shown, and which button was pressed."""

import dataclasses

import dbus

from .polling import eventually

NAME = "org.freedesktop.Notifications"
PATH = "/org/freedesktop/Notifications"
DUNST = "org.dunstproject.cmd0"


@dataclasses.dataclass(frozen=True)
class Notification:
    """One call to show a notification."""

    identifier: int  # 0 while the daemon has not answered
    title: str
    body: str
    actions: tuple
    time_s: float


class NotificationWatch:
    """What passes between applications and the real notification daemon."""

    def __init__(self, bus, monitor):
        self._bus = bus
        self._monitor = monitor

    def shown(self):
        """All notifications so far, in the order in which they were sent."""
        return [self._notification(call) for call in self._monitor.calls("Notify")]

    def _notification(self, call):
        reply = self._monitor.reply(call)
        identifier = int(reply.arguments[0]) if reply and reply.kind == "return" else 0
        title, body, actions = call.arguments[3:6]
        return Notification(identifier, str(title), str(body),
                            tuple(str(word) for word in actions), call.time_s)

    def bodies(self):
        """The texts of all notifications so far."""
        return [notification.body for notification in self.shown()]

    def wait_for(self, count, limit_s=10.0):
        """Waits until that many have been sent and answered, and returns them."""
        def complete():
            shown = self.shown()
            return shown if len(shown) >= count and all(n.identifier for n in shown) else None

        return eventually(complete, f"{count} notifications; so far {self.bodies()}", limit_s)

    def close(self, identifier):
        """Dismisses one notification."""
        self._bus.interface(NAME, PATH, NAME).CloseNotification(dbus.UInt32(identifier))

    def closed(self):
        """The identifiers of the notifications that are no longer shown."""
        return [int(m.arguments[0]) for m in self._monitor.signals("NotificationClosed")]

    def wait_until_closed(self, identifier):
        """Waits until the daemon says that the notification is gone."""
        eventually(lambda: identifier in self.closed(), f"notification {identifier} to be closed")

    def wait_until_displayed(self, count):
        """Waits until exactly that many are on the screen."""
        eventually(lambda: self.displayed() == count, f"{count} notifications on the screen")

    def displayed(self):
        """How many are on the screen now."""
        properties = self._bus.interface(NAME, PATH, "org.freedesktop.DBus.Properties")
        return int(properties.Get(DUNST, "displayedLength"))

    def press_button(self):
        """Presses the button of the topmost notification."""
        self._bus.interface(NAME, PATH, DUNST).NotificationAction(dbus.UInt32(0))

    def close_all(self):
        """Dismisses every notification, as the user does."""
        self._bus.interface(NAME, PATH, DUNST).NotificationCloseAll()
