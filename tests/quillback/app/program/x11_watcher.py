"""GNOME's own reads of X11's clipboard, by which it keeps its own clipboard the same."""

import json
import subprocess
import threading

POLL_S = 0.02
TEXT = "UTF8_STRING"


def x11_clipboard(target=TEXT, environment=None):
    """What another program gets; nothing where nothing was copied, or where the owner ends meanwhile: then xclip
    waits for ever."""
    words = ["xclip", "-o", "-selection", "clipboard", "-t", target]
    try:
        return subprocess.run(words, env=environment, capture_output=True, check=False, timeout=8).stdout
    except subprocess.TimeoutExpired:
        return b""


class X11Watcher:
    """Asks each new owner for its types, then for its text."""

    def __init__(self, say):
        self._say = say
        self._ended = threading.Event()
        self._thread = threading.Thread(target=self._watch)
        self._thread.start()

    def _watch(self):
        before = None
        while not self._ended.wait(POLL_S):
            since = x11_clipboard("TIMESTAMP")
            if since == before:
                continue
            before = since
            if TEXT.encode() in x11_clipboard("TARGETS").split():
                self._say("watched", json.dumps(x11_clipboard().decode(errors="replace")))

    def stop(self):
        """Ends the watch."""
        self._ended.set()
        self._thread.join()
