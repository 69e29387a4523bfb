"""The engine's start, its settings and its end, without a desktop."""

import fcntl
import os
import shutil
import signal
import subprocess
import tempfile
import time
import unittest

from engine_program import (EXECUTABLE, PROMPT_S, ProgramCase, bare_environment, catches,
                            die_with_parent, show_key, virtual_display, write_settings)
from harness.buses import Bus
from harness.monitor import BusMonitor
from harness.polling import eventually, stays
from harness.processes import alive
from sound_server import MICROPHONE, SPEAKER, SoundServer, silent_microphone

F_SETPIPE_SZ = 1031
KEYBOARDS_MAY_BE_READ = os.path.isdir("/dev/input") and os.geteuid() == 0
# Said once the model is loaded, where there is none.
NO_SERVER = "There is no sound server."
ERROR_MARKERS = ("[quillback] ERROR", "[quillback] Failed", "Audio capture failed", "Accessibility",
                 "Microphone permission")


def arguments_of(pid):
    """The command line of a process; empty if there is none."""
    try:
        with open(f"/proc/{pid}/cmdline", encoding="utf-8") as file:
            return file.read().split("\0")[:-1]
    except OSError:
        return []


def children(pid, command):
    """The processes that the engine runs with this command."""
    with open(f"/proc/{pid}/task/{pid}/children", encoding="ascii") as file:
        return [child for child in file.read().split() if arguments_of(child)[1:2] == [command]]


class Beginning(ProgramCase):
    """What `quillback run` needs to be ready."""

    def start_with_bus(self, **options):
        """An engine with a session bus, and the bus's messages."""
        home = self.make_home()
        environment = bare_environment(home)
        bus = Bus("session", home, environment)
        self.addCleanup(bus.stop)
        messages = BusMonitor(bus)
        self.addCleanup(messages.close)
        environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address
        return self.start(home=home, environment=environment, **options), messages

    def is_told_once(self, messages, text):
        """One notification begins so; it comes once the model is loaded."""
        shown, = eventually(lambda: messages.calls("Notify"), "the notification", 20)
        title, body = (str(shown.arguments[index]) for index in (3, 4))
        self.assertEqual(title, "Dictation does not work yet")
        self.assertRegex(body, "^" + text)
        stays(lambda: len(messages.calls("Notify")) == 1, "one notification", 0.5)

    @unittest.skipIf(KEYBOARDS_MAY_BE_READ, "keyboards may be read here")
    def test_without_a_key_source_it_says_what_to_do_and_stays(self):
        program, messages = self.start_with_bus(sees_key=False)
        number = program.wait_for_line("Accessibility")
        line = program.texts()[number]
        self.assertIn("usermod -aG input", line)
        self.is_told_once(messages, r"The right Super key cannot be watched\. Run it in an X11 session.*\)$")
        self.assertNotIn("Ready.", program.texts())
        # A build with Whisper also says that it has no weights.
        errors = [text for text in program.texts()
                  if any(marker in text for marker in ERROR_MARKERS) and "weights" not in text]
        self.assertEqual(errors, [line])
        self.ends_well(program)

    @unittest.skipIf(KEYBOARDS_MAY_BE_READ, "keyboards may be read here")
    def test_the_x_server_of_a_wayland_session_is_no_key_source(self):
        with virtual_display() as display:
            for session, is_source in (("x11", True), ("wayland", False)):
                with self.subTest(session):
                    home = self.make_home()
                    environment = {**bare_environment(home), "DISPLAY": display,
                                   "XDG_SESSION_TYPE": session}
                    program = self.start(home=home, environment=environment, sees_key=False)
                    program.wait_for_line("Ready." if is_source else "Accessibility")
                    says_so = any("Accessibility" in text for text in program.texts())
                    self.assertNotEqual(says_so, is_source, program.texts())
                    self.ends_well(program)

    @unittest.skipIf(KEYBOARDS_MAY_BE_READ, "keyboards may be read here")
    def test_it_is_ready_once_the_x_server_comes(self):
        display = f":{1000 + os.getpid() % 50000}"  # beyond those that servers of other tests take
        home = self.make_home()
        program = self.start(home=home, environment={**bare_environment(home), "DISPLAY": display},
                             sees_key=False)
        program.wait_for_line("Accessibility")
        stays(lambda: "Ready." not in program.texts(), "no readiness", 1)
        with virtual_display(display):
            program.wait_for_line("Ready.")
            self.ends_well(program)

    @unittest.skipIf(KEYBOARDS_MAY_BE_READ, "keyboards may be read here")
    def test_what_is_missing_is_in_one_notification(self):
        program, messages = self.start_with_bus(sees_key=False, hears=False)
        self.is_told_once(messages, "There is no sound server. The right Super key cannot be watched")
        self.ends_well(program)

    def test_it_is_ready_once_a_microphone_comes(self):
        server = SoundServer(os.path.join(self.make_home(), "sound"))
        self.addCleanup(server.stop)
        home = self.make_home()
        program = self.start(home=home, hears=False,
                             environment={**bare_environment(home), "PULSE_SERVER": server.address})
        program.wait_for_line(NO_SERVER)
        os.mkdir(os.path.dirname(server.path))
        server.start()  # what it plays is no microphone
        waiting = eventually(lambda: self.waits_for_source(program), "a process that waits", 10)
        server.stop()
        eventually(lambda: not alive(waiting), "its end without a server")
        server.start()
        eventually(lambda: self.waits_for_source(program), "a process that waits", 10)
        stays(lambda: "Ready." not in program.texts(), "no readiness", 0.3)
        server.load(SPEAKER)
        server.load(MICROPHONE)
        program.wait_for_line("Ready.")
        self.assertEqual(len([text for text in program.texts() if "There is no" in text]), 1)
        self.assertEqual(children(program.child.pid, "microphone"), [])
        self.ends_well(program)

    def test_a_process_that_waits_for_a_microphone_goes_with_the_engine(self):
        server = SoundServer(self.make_home()).start()
        self.addCleanup(server.stop)
        home = self.make_home()
        program = self.start(home=home, hears=False,
                             environment={**bare_environment(home), "PULSE_SERVER": server.address})
        waiting = eventually(lambda: self.waits_for_source(program), "a process that waits", 10)
        program.child.kill()
        eventually(lambda: not alive(waiting), "its end")

    @staticmethod
    def waits_for_source(program):
        """The process that does, if it has come so far that it knows its parent."""
        return next((pid for pid in children(program.child.pid, "microphone")
                     if arguments_of(pid)[2:] == [str(program.child.pid)]), None)

class BeginningAndEnd(ProgramCase):
    """`quillback run` without a desktop."""

    def test_it_can_gain_no_rights(self):
        program = self.start()
        program.wait_for_line("Ready.")
        with open(f"/proc/{program.child.pid}/status", encoding="ascii") as status:
            self.assertIn("NoNewPrivs:\t1\n", status.readlines())

    def test_other_programs_cannot_look_at_it(self):
        # Root may look at everything, so the engine runs as another user. What nobody may look at is root's.
        user = 65534 if os.geteuid() == 0 else os.geteuid()
        with tempfile.TemporaryDirectory() as home:
            os.chmod(home, 0o777)
            # That user may not be let into the folder of the build.
            executable = shutil.copy(EXECUTABLE, home)
            for variable, owner in ((None, 0), ("VOXTREL_CORE", user)):
                environment = bare_environment(home)
                environment.pop("VOXTREL_CORE", None)
                if variable:
                    environment[variable] = "1"
                program = self.start(home=home, environment=environment, user=user,
                                     executable=executable)
                program.wait_for_line("Ready.")
                self.assertEqual(os.stat(f"/proc/{program.child.pid}/environ").st_uid, owner)
                program.close()

    def test_it_is_ready_and_stays_without_anything(self):
        program = self.start()
        program.wait_for_line("Ready.")
        program.stays_alive(0.3)
        self.ends_well(program)

    def test_every_stopping_signal_ends_it(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            program = self.start()
            program.wait_for_line("Ready.")
            self.ends_well(program, number)

    def test_it_ends_whenever_it_is_asked_while_it_loads(self):
        for delay_ms in (0, 10, 30, 60, 100, 150, 200, 300, 400):
            program = self.start()
            program.wait_until_signals_are_caught()
            program.stays_alive(delay_ms / 1000)
            self.ends_well(program)

    def test_it_ends_while_its_output_is_not_read(self):
        ours, theirs = os.pipe()
        self.addCleanup(os.close, ours)
        fcntl.fcntl(theirs, F_SETPIPE_SZ, 4096)
        os.write(theirs, b"x" * 4096)
        program = self.start(stdout=theirs)
        os.close(theirs)
        program.stays_alive(1.0)
        self.ends_well(program)

    def test_it_keeps_running_when_its_output_is_closed_by_the_reader(self):
        ours, theirs = os.pipe()
        os.close(ours)
        program = self.start(stdout=theirs)
        os.close(theirs)
        program.stays_alive(1.0)
        self.ends_well(program)

    def test_it_runs_with_its_standard_descriptors_closed(self):
        with tempfile.TemporaryDirectory() as home:
            child = subprocess.Popen(
                ["/bin/sh", "-c", 'exec "$0" run 0<&- 1>&- 2>&-', EXECUTABLE],
                env=bare_environment(home), preexec_fn=die_with_parent)
            stays(lambda: child.poll() is None, "the engine", 1.0)
            child.send_signal(signal.SIGTERM)
            self.assertEqual(child.wait(5), 0)

    def test_it_ends_when_its_parent_has_ended(self):
        ours, theirs = os.pipe()
        with tempfile.TemporaryDirectory() as home, os.fdopen(ours, "rb") as lines:
            show_key(home)
            # The engine is the parent's child and holds the pipe's other end.
            environment = {**bare_environment(home), "PULSE_SERVER": silent_microphone()}
            parent = subprocess.Popen(["/bin/sh", "-c", '"$0" run & wait', EXECUTABLE],
                                      env=environment, stdout=theirs, stderr=theirs,
                                      preexec_fn=die_with_parent)
            os.close(theirs)
            while b"Ready." not in lines.readline():
                pass
            begun = time.monotonic()
            parent.kill()
            parent.wait()
            self.assertEqual(lines.read(), b"")  # until the engine has ended as well
            self.assertLess(time.monotonic() - begun, PROMPT_S)

    def test_a_signal_that_it_inherited_as_ignored_does_not_end_it(self):
        with tempfile.TemporaryDirectory() as home:
            child = subprocess.Popen(["/bin/sh", "-c", 'trap "" HUP; exec "$0" run', EXECUTABLE],
                                     env=bare_environment(home), stdout=subprocess.DEVNULL,
                                     preexec_fn=die_with_parent)
            eventually(lambda: catches(child.pid, signal.SIGTERM), "the engine's main function", 10)
            child.send_signal(signal.SIGHUP)
            stays(lambda: child.poll() is None, "the engine", 0.3)
            child.send_signal(signal.SIGTERM)
            self.assertEqual(child.wait(5), 0)


class Settings(ProgramCase):
    """Its lines about the settings file."""

    def start_with(self, text):
        """An engine whose settings are `text`."""
        home = self.make_home()
        write_settings(home, text)
        program = self.start(home=home)
        program.wait_for_line("Ready.")
        return [line for line in program.texts() if "ERROR" in line and "config.toml" in line]

    def test_good_settings_are_not_mentioned(self):
        self.assertEqual(self.start_with("[audio]\nhotkey = 'shift+\\'\nhotkey_code = 42\n"), [])

    def test_each_mistake_is_one_line_that_names_its_place(self):
        lines = self.start_with("[audio]\nhotkey_code = 1\n[output]\ninsert = 3\n")
        self.assertEqual(len(lines), 2)
        for line, number in zip(lines, (2, 4)):
            self.assertTrue(line.startswith("[quillback] ERROR"), line)
            self.assertIn(f"line {number}", line)

    def test_a_file_that_is_not_toml_is_one_line(self):
        lines = self.start_with("[model\n")
        self.assertEqual(len(lines), 1)
        self.assertIn("line 1", lines[0])
