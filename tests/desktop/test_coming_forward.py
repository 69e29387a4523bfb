"""What brings the program's open window in front of the one that the user works in."""

import subprocess

from harness.case import DesktopCase
from harness.polling import eventually


class ComingForward(DesktopCase):
    """The open window is a box of the menu's; another program's window has been put before it."""

    def setUp(self):
        super().setUp()
        self.desk.notifications.close_all()
        self.desk.notifications.wait_until_displayed(0)
        self.app = self.install().start_ready()
        self.app.item.click("Settings...")
        self.ours = eventually(lambda: self.window("--name", "Voxtrel Settings"), "the box")
        other = self.desk.spawn("xev", "-name", "in front")
        self.addCleanup(other.stop)
        theirs = eventually(lambda: self.window("--name", "in front"), "the other window")
        self.desk.xdotool("windowactivate", "--sync", theirs)
        self.assertEqual(self.active_window(), theirs)

    def window(self, *criteria):
        """The identifier of the one visible window that answers, or None."""
        try:
            found = self.desk.xdotool("search", "--onlyvisible", *criteria).split()
        except Exception:  # xdotool's way to say that there is none
            return None
        return found[0] if len(found) == 1 else None

    def active_window(self):
        """The window with the focus."""
        return self.desk.xdotool("getactivewindow").strip()

    def wait_until_in_front(self):
        """Waits until the program's window has the focus."""
        eventually(lambda: self.active_window() == self.ours, "the program's window in front")

    def test_restart_in_a_crash_notification_does(self):
        self.app.engine.exit(1)
        self.notifications(1)
        self.desk.notifications.press_button()
        self.wait_until_in_front()

    def test_a_second_start_does(self):
        second = self.install()
        second.start()
        self.assertEqual(second.process.exit_status(), 0)
        self.wait_until_in_front()

    def test_the_window_manager_gets_the_token_of_a_second_start(self):
        second = self.install()
        second.start(XDG_ACTIVATION_TOKEN="quill-7_TIME0")
        self.assertEqual(second.process.exit_status(), 0)
        self.wait_until_in_front()
        answer = subprocess.run(["xprop", "-id", self.ours, "_NET_STARTUP_ID"], check=True, timeout=20,
                                env=self.desk.environment, capture_output=True, text=True)
        self.assertIn('"quill-7_TIME0"', answer.stdout)
