"""Reads every message that passes over a bus."""

import dataclasses
import time

import dbus
import dbus.lowlevel

from .buses import BUS_NAME, BUS_PATH

KINDS = {1: "call", 2: "return", 3: "error", 4: "signal"}


@dataclasses.dataclass(frozen=True)
class Message:
    """One recorded message."""

    kind: str
    sender: str
    destination: str
    path: str
    interface: str
    member: str
    serial: int
    reply_to: int
    arguments: list
    time_s: float


class BusMonitor:
    """Records all messages until it is closed; they arrive while the test polls."""

    def __init__(self, bus):
        self.messages = []
        self._connection = bus.connect()
        self._connection.add_message_filter(self._record)
        self._connection.call_blocking(
            BUS_NAME, BUS_PATH, "org.freedesktop.DBus.Monitoring", "BecomeMonitor", "asu",
            (dbus.Array([], signature="s"), 0))
        self.messages.clear()

    def _record(self, _connection, message):
        self.messages.append(Message(
            KINDS.get(message.get_type(), "?"), message.get_sender() or "",
            message.get_destination() or "", message.get_path() or "",
            message.get_interface() or "", message.get_member() or "", message.get_serial(),
            message.get_reply_serial(), message.get_args_list(), time.monotonic()))
        # The bus disconnects a monitor that replies to a recorded call.
        return dbus.lowlevel.HANDLER_RESULT_HANDLED

    def calls(self, member):
        """The recorded method calls of that name."""
        return [m for m in self.messages if m.kind == "call" and m.member == member]

    def signals(self, member):
        """The recorded signals of that name."""
        return [m for m in self.messages if m.kind == "signal" and m.member == member]

    def reply(self, call):
        """The reply to a recorded call, or None if there is none yet."""
        for message in self.messages:
            if message.reply_to == call.serial and message.destination == call.sender:
                return message
        return None

    def touching(self, names):
        """The messages from or to one of the connections `names`."""
        return [m for m in self.messages if m.sender in names or m.destination in names]

    def close(self):
        """Stops recording."""
        self._connection.close()
