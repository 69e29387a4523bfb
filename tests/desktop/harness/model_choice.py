"""The speech model of a demonstration: a weights file, the advised model, or the embedded recogniser."""

import json
import os
import socket
import subprocess
import urllib.parse
import urllib.request

from .recordings import run_quillback

STORE = ".local/share/quillback/weights"
OWN = "own"
PATIENCE_S = 5


class ModelChoice:
    """Sets a model up in a home that is kept, so that its weights are fetched only once."""

    def __init__(self, quillback, home):
        self._quillback = quillback
        self._home = os.path.abspath(home)
        self.name = None
        self.said = "the embedded English recogniser"
        os.makedirs(self._home, exist_ok=True)
        self._choose()

    def use(self):
        """Chooses it in the settings of its own home."""
        _use(self._quillback, self._home, self.name)

    def give_to(self, app):
        """Lets an installation use the model; its weights stay where they are."""
        store = os.path.join(app.home, STORE)
        os.makedirs(os.path.dirname(store))
        os.symlink(os.path.join(self._home, STORE), store)
        _use(self._quillback, app.home, self.name)

    def _choose(self):
        file = os.environ.get("VOXTREL_WEIGHTS")
        models = json.loads(run_quillback(self._quillback, self._home, "models", "--json").stdout)
        if file:
            self._set_up(OWN, "--file", os.path.abspath(file))
            if not self.name:
                raise SystemExit(f"VOXTREL_WEIGHTS: {file} cannot be used.")
            self.said = f"{file}, named by VOXTREL_WEIGHTS"
        elif models["whisper"]:
            self._choose_published(models["models"])
        else:
            self.said += "; this build has no Whisper"

    def _choose_published(self, models):
        """The one of an earlier demonstration, else the advised one."""
        here = [model["name"] for model in models if model["in_use"] and model["here"]]
        if here:
            self.name = here[0]
        elif _server_answers():
            self._set_up(next(model["name"] for model in models if model["advised"]))
            if self.name:
                _use(self._quillback, self._home, self.name)
        self.said = f"{self.name}, advised for this machine" if self.name else \
            f"{self.said}; no other could be fetched"

    def _set_up(self, name, *options):
        done = subprocess.run([self._quillback, "setup", "--model", name, *options], check=False,
                              env=dict(os.environ, HOME=self._home), stdin=subprocess.DEVNULL)
        if done.returncode == 0:
            self.name = name


def _use(quillback, home, name):
    run_quillback(quillback, home, "use", name).check_returncode()


def _server_answers():
    """Whether the models' server can be reached. A proxy is left to setup."""
    url = urllib.parse.urlsplit(os.environ.get("QUILLBACK_MODEL_URL", "https://huggingface.co"))
    if url.scheme in urllib.request.getproxies():
        return True
    port = url.port or (443 if url.scheme == "https" else 80)
    try:
        socket.create_connection((url.hostname, port), PATIENCE_S).close()
    except OSError:
        return False
    return True
