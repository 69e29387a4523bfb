"""An idle application sends no messages."""

from harness.case import DesktopCase
from harness.polling import eventually, stays

READY = "Ready — hold Right Cmd"


class Quiet(DesktopCase):
    """Messages are sent only when the menu's content changes."""

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

        # A change is seen first, to show that the test can see messages.
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
