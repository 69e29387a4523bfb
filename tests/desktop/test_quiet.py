"""An application that has nothing to say says nothing."""

from harness.case import DesktopCase
from harness.polling import eventually, stays

READY = "Ready — hold Right Cmd"


class Quiet(DesktopCase):
    """Only a change of what the menu shows may leave the process."""

    def traffic_of(self, app):
        """The messages so far from or to the program's connections."""
        bus = self.desk.session_bus
        names = [name for name in bus.names()
                 if name.startswith(":") and bus.process_of(name) == app.process.pid]
        self.assertTrue(names)
        return lambda: [m for m in self.desk.messages.touching(names)
                        if m.interface not in ("", "org.freedesktop.DBus")]

    def wait_until_idle(self, messages):
        """Waits until half a second has passed without a message."""
        eventually(lambda: self.unchanged(messages), "half a second of silence", limit_s=20)

    @staticmethod
    def unchanged(messages):
        """Whether half a second goes by without a message."""
        before = len(messages())
        try:
            stays(lambda: len(messages()) == before, "silence", for_s=0.5)
        except AssertionError:
            return False
        return True

    def test_an_unchanged_refresh_sends_nothing(self):
        app = self.install().start_ready()
        messages = self.traffic_of(app)
        self.wait_until_idle(messages)

        # First of all: a change is seen, so that silence means something.
        before = len(messages())
        app.engine.say("Recording...")
        eventually(lambda: len(messages()) > before, "the messages of a change")
        app.engine.say("Ready.")
        app.item.wait_for_status(READY)
        self.wait_until_idle(messages)

        before = len(messages())
        for _ in range(3):
            # The same state, and the same text, once more.
            app.engine.say("Ready.")
            stays(lambda: len(messages()) == before, "silence", for_s=1.0)
