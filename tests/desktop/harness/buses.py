"""Private message buses without the machine's services; no service is started on demand."""

import os

import dbus
import dbus.bus
import dbus.mainloop.glib

from .polling import eventually
from .processes import Process

CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>{kind}</type>
  <keep_umask/>
  <listen>unix:path={socket}</listen>
  <policy context="default">
    <allow user="*"/>
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""

BUS_NAME = "org.freedesktop.DBus"
BUS_PATH = "/org/freedesktop/DBus"


class BusClient:
    """The test's own connection to a bus."""

    def __init__(self, address, what):
        self.address = address
        self.connection = eventually(self.connect, f"a connection to the {what} bus")

    def connect(self):
        """A new connection, or None while the daemon does not listen yet."""
        try:
            connection = dbus.bus.BusConnection(
                self.address, mainloop=dbus.mainloop.glib.DBusGMainLoop())
        except dbus.DBusException:
            return None
        connection.set_exit_on_disconnect(False)
        return connection

    def owner(self, name):
        """The unique name of the connection that owns `name`, or None."""
        try:
            return str(self.connection.get_name_owner(name))
        except dbus.DBusException:
            return None

    def process_of(self, name):
        """The process id of a connection."""
        return int(self.connection.call_blocking(
            BUS_NAME, BUS_PATH, BUS_NAME, "GetConnectionUnixProcessID", "s", (name,)))

    def names(self):
        """Every name on the bus, unique ones included."""
        return [str(name) for name in self.connection.list_names()]

    def interface(self, name, path, interface):
        """A proxy without introspection."""
        proxy = self.connection.get_object(name, path, introspect=False)
        return dbus.Interface(proxy, interface)

    def close(self):
        """Closes the connection."""
        self.connection.close()


class Bus(BusClient):
    """One bus daemon, and the test's own connection to it."""

    def __init__(self, kind, folder, environment):
        socket = os.path.join(folder, f"{kind}-bus")
        configuration = os.path.join(folder, f"{kind}-bus.conf")
        with open(configuration, "w", encoding="utf-8") as file:
            file.write(CONFIGURATION.format(kind=kind, socket=socket))
        self._process = Process(
            ["dbus-daemon", f"--config-file={configuration}", "--nofork", "--nopidfile"],
            environment, os.path.join(folder, f"{kind}-bus.log"))
        eventually(lambda: os.path.exists(socket), f"the {kind} bus")
        super().__init__(f"unix:path={socket}", kind)

    def stop(self):
        """Closes the connection, then ends the daemon."""
        self.close()
        self._process.stop()
