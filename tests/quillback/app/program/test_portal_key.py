"""The push-to-talk key by the desktop's portal, with doubles that behave as the desktops do."""

import os
import shutil
import subprocess
import sys
import tempfile
import unittest

from engine_program import EXECUTABLE, EngineProgram, bare_environment, die_with_parent
from harness.buses import Bus
from harness.polling import eventually, stays

PORTAL = os.path.join(os.path.dirname(os.path.abspath(__file__)), "shortcuts_portal.py")
PRESS_SHOWS = "Recording..."


class Portal:
    """A running double."""

    def __init__(self, environment, kind):
        self._child = subprocess.Popen([sys.executable, PORTAL, kind], env=environment, text=True,
                                       stdin=subprocess.PIPE, stdout=subprocess.PIPE, bufsize=1,
                                       preexec_fn=die_with_parent)
        self.wait_for("portal")

    def wait_for(self, start):
        """Reads what it says until a line that begins so."""
        for line in self._child.stdout:
            if line.startswith(start):
                return line.strip()
        raise AssertionError(f"the portal ended before it said {start!r}")

    def do(self, command):
        """Has it do something."""
        self._child.stdin.write(command + "\n")

    def stop(self):
        """Ends it."""
        if self._child.stdin.closed:
            return
        self._child.stdin.close()
        self._child.wait(10)
        self._child.stdout.close()


class PortalKey(unittest.TestCase):
    """An engine in a Wayland session without readable keyboards."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.environment = bare_environment(folder.name)
        self.environment.update(WAYLAND_DISPLAY="wayland-97531",
                                XDG_RUNTIME_DIR=os.path.join(folder.name, "run"))
        os.mkdir(self.environment["XDG_RUNTIME_DIR"])
        self.bus = Bus("session", folder.name, self.environment)
        self.addCleanup(self.bus.stop)
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = self.bus.address

    def portal(self, kind):
        """The desktop's portal."""
        portal = Portal(self.environment, kind)
        self.addCleanup(portal.stop)
        return portal

    def engine(self):
        """A running engine."""
        engine = EngineProgram("run", environment=self.environment, sees_key=False)
        self.addCleanup(engine.close)
        return engine

    def settings(self, text):
        """Writes the settings."""
        folder = os.path.join(self.environment["HOME"], ".config", "quillback")
        os.makedirs(folder)
        with open(os.path.join(folder, "config.toml"), "w", encoding="utf-8") as file:
            file.write(text)

    def check(self):
        """`quillback check`: its status and first line."""
        done = subprocess.run([EXECUTABLE, "check"], env=self.environment, text=True,
                              capture_output=True, check=False, timeout=20)
        return done.returncode, done.stdout.splitlines()[0]

    def wait_until(self, start):
        """Waits until the running engine says so about its key."""
        return eventually(lambda: self.check()[1].startswith(start) and self.check(), start, 15)

    def presses(self, engine, portal, count):
        """Presses and releases, each of which the engine must see."""
        for _ in range(count):
            seen = len([text for text in engine.texts() if PRESS_SHOWS in text])
            portal.do("press")
            eventually(lambda: len([text for text in engine.texts() if PRESS_SHOWS in text]) > seen,
                       "a press")
            portal.do("release")

    def works(self, kind, trigger="F8"):
        """The key is bound, told and seen."""
        portal = self.portal(kind)
        self.assertEqual(self.check()[0], 0)
        engine = self.engine()
        engine.wait_for_line("Ready.")
        engine.wait_for_line(f"Push to talk: Press {trigger}.")
        self.assertEqual(self.wait_until("key: yes"),
                         (0, f"key: yes, Press {trigger} by the desktop's global shortcuts"))
        self.assertFalse(any("Accessibility" in text for text in engine.texts()), engine.texts())
        self.presses(engine, portal, 2)
        return portal, engine

    def test_plasma_5_takes_the_shortcuts_with_the_session(self):
        self.works("plasma5")

    def test_plasma_6_takes_them_afterwards(self):
        self.works("plasma6")

    def test_gnome_48_has_bound_although_it_says_otherwise_and_knows_the_program(self):
        portal = self.portal("gnome48")
        self.engine()
        self.assertEqual(portal.wait_for("registered"), "registered org.voxtrel.Voxtrel")
        self.assertEqual(portal.wait_for("bound"), "bound F8")
        self.assertEqual(self.wait_until("key: yes")[0], 0)

    def test_gnome_48s_key_is_seen(self):
        self.works("gnome48")

    def test_a_key_that_can_be_a_shortcut_is_asked_for(self):
        self.settings('[audio]\nhotkey = "f6"\n')
        self.works("plasma6", "F6")

    def test_a_trigger_that_is_taken_gives_the_second_one(self):
        self.works("no-trigger", "CTRL+ALT+v")

    def test_another_shortcut_is_not_the_key(self):
        portal, engine = self.works("plasma6")
        number = len(engine.texts())
        portal.do("stranger")
        portal.do("trigger Press F9")
        self.assertEqual(self.wait_until("key: yes, Press F9")[0], 0)
        self.assertFalse(any(PRESS_SHOWS in text for text in engine.texts()[number:]))

    def test_the_trigger_is_told_once(self):
        portal, engine = self.works("plasma6")
        self.assertEqual(engine.end()[0], 0)
        again = self.engine()
        portal.wait_for("bound")
        self.wait_until("key: yes")
        self.assertFalse(any("Push to talk" in text for text in again.texts()), again.texts())

    def test_what_was_bound_at_an_earlier_start_is_not_bound_again(self):
        portal, engine = self.works("plasma6")
        self.assertEqual(engine.end()[0], 0)
        again = self.engine()
        again.wait_for_line("Ready.")
        self.presses(again, portal, 2)
        portal.do("count")
        self.assertEqual(portal.wait_for("bindings"), "bindings 1")

    def test_a_portal_that_goes_away_and_comes_back_is_used_again(self):
        portal, engine = self.works("plasma6")
        portal.do("press")
        portal.stop()
        engine.wait_for_line("Accessibility")
        self.assertEqual(self.wait_until("key: no")[0], 1)
        portal = self.portal("plasma6")
        portal.wait_for("bound")
        self.wait_until("key: yes")
        self.presses(engine, portal, 2)

    def test_it_is_ready_once_a_portal_comes(self):
        engine = self.engine()
        engine.wait_for_line("Accessibility")
        stays(lambda: "Ready." not in engine.texts(), "no readiness", 1)
        self.portal("plasma6")
        engine.wait_for_line("Ready.")

    def test_only_the_portal_may_look_at_the_engine(self):
        self.is_looked_at_by("gnome48")

    def test_only_an_older_portal_may_look_at_the_engine(self):
        self.is_looked_at_by("plasma5")

    def is_looked_at_by(self, kind):
        """The portal may, once; then nobody may."""
        # Root may look at everything, so the engine runs as another user. What nobody may look at is root's.
        user = 65534 if os.geteuid() == 0 else os.geteuid()
        home = self.environment["HOME"]
        os.chmod(home, 0o777)
        os.chmod(self.environment["XDG_RUNTIME_DIR"], 0o777)
        self.environment.pop("VOXTREL_CORE", None)
        portal = self.portal(kind)
        engine = EngineProgram("run", environment=self.environment, sees_key=False, user=user,
                               executable=shutil.copy(EXECUTABLE, home))
        self.addCleanup(engine.close)
        self.assertEqual(portal.wait_for("caller"), f"caller {user}")
        portal.wait_for("bound")
        engine.wait_for_line("Ready.")
        self.assertEqual(os.stat(f"/proc/{engine.child.pid}/environ").st_uid, 0)

    def test_a_session_that_the_desktop_ends_hides_the_key(self):
        portal, _ = self.works("plasma6")
        portal.do("close")
        self.assertIn("ended", self.wait_until("key: no")[1])

    def test_a_refusal_is_said(self):
        self.portal("refusing")
        engine = self.engine()
        number = engine.wait_for_line("Accessibility")
        self.assertIn("refused", engine.texts()[number])
        stays(lambda: "Ready." not in engine.texts(), "no readiness", 1)
        self.assertEqual(self.wait_until("key: no")[0], 1)

    def test_a_portal_without_shortcuts_is_no_source(self):
        self.portal("older")
        self.assertEqual(self.check()[0], 1)
        engine = self.engine()
        number = engine.wait_for_line("Accessibility")
        self.assertIn("no global shortcuts", engine.texts()[number])
        self.assertIn("quillback key press", engine.texts()[number])


if __name__ == "__main__":
    unittest.main()
