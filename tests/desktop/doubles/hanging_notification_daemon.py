"""Owns the notification daemon's name and never replies."""

import signal

import dbus
import dbus.bus


def main():
    """Takes the name, then does nothing until it is ended."""
    bus = dbus.SessionBus()
    bus.request_name("org.freedesktop.Notifications", dbus.bus.NAME_FLAG_DO_NOT_QUEUE)
    while True:
        signal.pause()


if __name__ == "__main__":
    main()
