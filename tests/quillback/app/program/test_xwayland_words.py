"""Words on GNOME 43: pasted from the X server's clipboard, which the desktop keeps the same as its own."""

import subprocess
import unittest

from engine_program import virtual_display
from harness.polling import eventually, stays
from words_case import TEXTS, THEIRS, LastWay
from x11_watcher import x11_clipboard

PICTURE = b"\x89PNG\r\n\x1a\n" + bytes(range(256)) * 400


class Gnome43(LastWay):
    """No clipboard in the portal and no tokens, but an X server."""

    def setUp(self):
        super().setUp()
        self.display = virtual_display()
        self.environment["DISPLAY"] = self.enterContext(self.display)

    def copy(self, data, target="UTF8_STRING"):
        """Another program copies."""
        self.enterContext(XClip(data, target, self.environment))
        eventually(lambda: self.content(target) == data, "the copy", 20)

    def content(self, target="UTF8_STRING"):
        """What another program would get."""
        return x11_clipboard(target, self.environment)

    def start(self, kind="gnome43"):
        """An open session and its portal."""
        desktop = self.desktop(kind)
        inserter = self.inserter()
        self.open_without_token(inserter, desktop)
        return inserter, desktop

    def test_any_text_arrives_exactly_and_the_old_clipboard_comes_back(self):
        inserter, desktop = self.start()
        self.copy(THEIRS.encode())
        before = self.copied(), len(desktop.lines("pasted"))
        for number, text in enumerate(TEXTS.values(), before[1] + 1):
            inserter.send(text.encode() + b"\0")
            self.assertEqual(desktop.pasted(number)[0].removeprefix(" "), text)
        eventually(lambda: self.content().decode() == THEIRS, "the old clipboard")
        self.assertEqual(self.copied(), before[0])
        self.assertEqual(inserter.lines("[quillback] What"), [])

    def test_a_picture_comes_back_too(self):
        inserter, desktop = self.start()
        self.copy(PICTURE, "image/png")
        inserter.send(b"words\0")
        desktop.wait_until_pasted(" words")
        eventually(lambda: b"UTF8_STRING" not in self.content("TARGETS"), "the old clipboard")
        self.assertEqual(self.content("image/png"), PICTURE)

    def test_an_empty_clipboard_is_empty_again(self):
        inserter, desktop = self.start()
        eventually(lambda: self.content() == b"", "an empty clipboard")
        inserter.send(b"words\0")
        desktop.wait_until_pasted(" words")
        eventually(lambda: self.content() == b"", "an empty clipboard")

    def test_what_another_program_copies_meanwhile_is_left(self):
        inserter, desktop = self.start()
        inserter.send(b"words\0")
        desktop.wait_until_pasted(" words")
        self.copy(b"newer")
        stays(lambda: self.content() == b"newer", "the newer text", 0.5)

    def test_where_no_window_takes_the_words_they_stay_in_the_clipboard_and_a_line_says_so(self):
        inserter, desktop = self.start()
        before = self.copied()
        desktop.do("deaf")
        inserter.send(b"words\0")
        self.assertIn("no window has taken it",
                      inserter.wait_for("[quillback] What was not typed is copied:"))
        eventually(lambda: self.content() == b"words", "the words")
        self.assertEqual(self.copied(), before)

    def test_where_the_x_servers_clipboard_is_not_the_desktops_wl_copy_is_the_way(self):
        inserter, desktop = self.start("gnome43+apart")
        inserter.send(b"words\0")
        desktop.wait_until_pasted(" words")
        self.assertEqual(len(inserter.lines("[quillback] What was not typed is copied: the desktop did not")), 1)
        self.assertEqual(self.copied(), " words")

    def test_a_x_server_that_goes_leaves_wl_copy(self):
        inserter, _ = self.start()
        self.display.__exit__(None, None, None)
        inserter.send(b"words\0")
        eventually(lambda: self.copied() is not None and self.copied().strip() == "words", "the copy", 20)

    def test_nothing_wakes_the_idle_program(self):
        inserter, _ = self.start("gnome43+apart")
        self.sleeps(inserter.pid)


class XClip:
    """A program that has copied something, until another one copies."""

    def __init__(self, data, target, environment):
        self._child = subprocess.Popen(["xclip", "-quiet", "-selection", "clipboard", "-t", target],
                                       env=environment, stdin=subprocess.PIPE,
                                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self._child.stdin.write(data)
        self._child.stdin.close()

    def __enter__(self):
        return self

    def __exit__(self, *_error):
        self._child.kill()
        self._child.wait()


if __name__ == "__main__":
    unittest.main()
