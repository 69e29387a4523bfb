"""Sound servers of the tests' own."""

import atexit
import functools
import os
import shutil
import subprocess
import tempfile

from harness.polling import eventually
from harness.processes import die_with_parent

SPEAKER = ("module-null-sink", "sink_name=speaker")
MICROPHONE = ("module-remap-source", "source_name=microphone", "master=speaker.monitor")


class SoundServer:
    """PulseAudio, with nothing but what it is told to have. Every user of this machine may ask it."""

    def __init__(self, folder, modules=()):
        self.environment = {"HOME": folder, "PATH": "/usr/bin:/bin", "XDG_RUNTIME_DIR": folder}
        self.path = os.path.join(folder, "socket")
        self._modules = [("module-native-protocol-unix", "auth-anonymous=1", f"socket={self.path}"),
                         *modules]
        self._process = None

    @property
    def address(self):
        """What PULSE_SERVER is for its clients."""
        return "unix:" + self.path

    def start(self):
        """Starts it and waits until it answers."""
        words = [word for module in self._modules for word in ("-L", " ".join(module))]
        self._process = subprocess.Popen(
            ["pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no",
             "--disable-shm=yes", "--realtime=no", "--high-priority=no", *words],
            env=self.environment, stderr=subprocess.DEVNULL, preexec_fn=die_with_parent)
        eventually(lambda: self.control("info").returncode == 0, "the sound server", 20)
        return self

    def load(self, module):
        """Adds a part."""
        self.control("load-module", *module).check_returncode()

    def control(self, *words):
        """Runs pactl."""
        return subprocess.run(["pactl", *words], env={**self.environment, "PULSE_SERVER": self.address},
                              text=True, capture_output=True, check=False, timeout=20)

    def stop(self):
        """Ends it without warning."""
        if self._process:
            self._process.kill()
            self._process.wait()
            self._process = None


@functools.cache
def silent_microphone():
    """The address of a server with a microphone, for all tests of this process."""
    folder = tempfile.mkdtemp(prefix="quillback-sound-")
    atexit.register(shutil.rmtree, folder, ignore_errors=True)
    os.chmod(folder, 0o755)
    server = SoundServer(folder, [SPEAKER, MICROPHONE]).start()
    atexit.register(server.stop)
    return server.address
