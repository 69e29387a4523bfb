"""A sound server with a virtual microphone, and the sounds that are played into it."""

import array
import math
import os
import subprocess

from .polling import eventually

RATE_HZ = 48000
SPEAKER, MICROPHONE = "speaker", "microphone"


def tone(frequency_hz, seconds, amplitude=0.5):
    """A sine, as samples."""
    step = 2 * math.pi * frequency_hz / RATE_HZ
    return array.array("f", (amplitude * math.sin(step * n) for n in range(int(seconds * RATE_HZ))))


class SoundServer:
    """A private PulseAudio server: what is played to its speaker is heard by its microphone."""

    def __init__(self, desk):
        self._desk = desk
        self._folder = desk.path("sound")
        self._players = []
        self._modules = {}
        self._process = None
        os.makedirs(self._folder, mode=0o700, exist_ok=True)
        desk.environment["PULSE_SERVER"] = "unix:" + os.path.join(self._folder, "socket")
        desk.environment["PULSE_COOKIE"] = os.path.join(self._folder, "cookie")

    # Server --------------------------------------------------------------------------------------

    def start(self, microphone=True):
        """Starts the server, with a microphone or without any source that is one."""
        socket = os.path.join(self._folder, "socket")
        environment = dict(self._desk.environment, HOME=self._folder, XDG_RUNTIME_DIR=self._folder,
                           XDG_CONFIG_HOME=self._folder)
        environment.pop("PULSE_SERVER")
        self._process = self._desk.spawn(
            "pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no",
            "--disable-shm=yes", "--realtime=no", "--high-priority=no",
            "-L", f"module-native-protocol-unix auth-anonymous=1 socket={socket}",
            environment=environment)
        eventually(lambda: self._pactl("info", check=False).returncode == 0, "the sound server", 20)
        if microphone:
            self.add_microphone()
            self._pactl("set-default-source", MICROPHONE)
        return self

    def add_microphone(self, name=MICROPHONE, rate_hz=RATE_HZ, channels=1):
        """Adds a source that hears what is played to its own speaker."""
        speaker = SPEAKER if name == MICROPHONE else name + "-speaker"
        self._load(speaker, "module-null-sink", f"sink_name={speaker}", f"rate={rate_hz}",
                   f"channels={channels}", "norewinds=1")
        self._load(name, "module-remap-source", f"source_name={name}", f"master={speaker}.monitor")

    def remove_microphone(self, name=MICROPHONE):
        """Unplugs a source."""
        self._pactl("unload-module", self._modules.pop(name))

    def choose(self, name):
        """Makes a source the default."""
        self._pactl("set-default-source", name)

    def recordings(self):
        """The sources that the application records from, one entry for each recording."""
        lines = self._pactl("list", "source-outputs").stdout.split("Source Output #")[1:]
        names = {line.split()[0]: line.split()[1]
                 for line in self._pactl("list", "short", "sources").stdout.splitlines()}
        ours = [text for text in lines if 'application.name = "Voxtrel"' in text]
        sources = [text.split("Source: ")[1].split()[0] for text in ours]
        return [names[source] for source in sources if source in names]  # else not connected yet

    def client_names(self):
        """The programs that are connected."""
        text = self._pactl("list", "clients").stdout
        return [line.split('"')[1] for line in text.splitlines() if "application.name = " in line]

    def clients(self):
        """How many programs are connected, the one that asks included."""
        return len(self._pactl("list", "short", "clients").stdout.splitlines())

    def send(self, number):
        """Sends the server a signal."""
        self._process.send(number)

    def kill(self):
        """Ends the server without warning."""
        self._process.kill()

    def stop(self):
        """Ends the server and what is being played."""
        self.silence()
        if self._process:
            self._process.stop()

    # Sounds --------------------------------------------------------------------------------------

    def play(self, samples, speaker=SPEAKER, channels=1):
        """Begins to play 32-bit float samples; returns at once."""
        path = os.path.join(self._folder, f"sound-{len(self._players)}.raw")
        with open(path, "wb") as file:
            samples.tofile(file)
        player = self._desk.spawn(
            "paplay", "--raw", "--format=float32le", f"--rate={RATE_HZ}", f"--channels={channels}",
            "--latency-msec=20", f"--device={speaker}", path)
        self._players.append(player)
        return player

    def say(self, text, speaker=SPEAKER, latency_ms=20):
        """Begins to speak; returns at once. Words to be understood want a higher latency: where the
        player is late, there is a gap in them."""
        path = os.path.join(self._folder, f"speech-{len(self._players)}.wav")
        subprocess.run(["espeak-ng", "-v", "en-us+edward", "-s", "165", "-w", path, text],
                       check=True, timeout=60)
        return self.play_file(path, speaker, latency_ms)

    def play_file(self, path, speaker=SPEAKER, latency_ms=500):
        """Begins to play a WAV file; returns at once."""
        player = self._desk.spawn("paplay", f"--latency-msec={latency_ms}", f"--device={speaker}", path)
        self._players.append(player)
        return player

    def mute(self):
        """Silences the microphone at once, whatever is still on its way through the server."""
        self._pactl("set-source-mute", MICROPHONE, "1")

    def silence(self):
        """Stops everything that is being played."""
        for player in self._players:
            player.stop()
        self._players.clear()

    def _load(self, name, *arguments):
        self._modules[name] = self._pactl("load-module", *arguments).stdout.strip()

    def _pactl(self, *arguments, check=True):
        return subprocess.run(["pactl", *arguments], check=check, capture_output=True, text=True,
                              env=dict(self._desk.environment, LC_ALL="C"), timeout=20)


class PipeWireServer(SoundServer):
    """The same from PipeWire, which speaks PulseAudio's protocol."""

    def __init__(self, desk):
        super().__init__(desk)
        desk.environment["PULSE_SERVER"] = "unix:" + os.path.join(self._folder, "pulse", "native")
        self._others = []

    def start(self, microphone=True):
        environment = dict(self._desk.environment, HOME=self._folder, XDG_RUNTIME_DIR=self._folder,
                           XDG_CONFIG_HOME=self._folder, XDG_STATE_HOME=self._folder)
        socket = os.path.join(self._folder, "pipewire-0")
        self._others = [self._desk.spawn("pipewire", environment=environment)]
        eventually(lambda: os.path.exists(socket), "PipeWire", 20)
        self._others.append(self._desk.spawn("wireplumber", environment=environment))
        self._process = self._desk.spawn("pipewire-pulse", environment=environment)
        eventually(lambda: self._pactl("info", check=False).returncode == 0, "the sound server", 20)
        if microphone:
            self.add_microphone()
            self.choose(MICROPHONE)
        return self

    def choose(self, name):
        """It refuses until the session manager is up, and replies before it has switched."""
        eventually(lambda: self._pactl("set-default-source", name, check=False).returncode == 0,
                   "a server that takes the choice", 20)
        eventually(lambda: self._pactl("get-default-source").stdout.strip() == name, "the choice")

    def stop(self):
        super().stop()
        for process in reversed(self._others):
            process.stop()
