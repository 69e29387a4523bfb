"""Words under Plasma's real compositor, where that is installed: its clipboard, and the script by which it tells
which program has the focus. The portal is a double; its key strokes are pressed by the test."""

import unittest

from harness.kwin import KWinDesk
from harness.polling import eventually
from words_case import TEXTS, THEIRS, CompositorCase


class KWin(CompositorCase):
    """With windows of its own clients."""

    @classmethod
    def setUpClass(cls):
        cls.desk = KWinDesk(login_manager=False)
        cls.enterClassContext(cls.desk)

    def open_field(self, name):
        """A window of a program of this name."""
        field = self.desk.open_field(name)
        self.addCleanup(field.close)
        return field

    def pastes(self, plasma, field, keys, count, text):
        """The engine wants these keys; then the window reads the clipboard, and has the text."""
        plasma.wait_for(f"pressed {keys}", count)
        field.press("ctrl+v")
        eventually(lambda: field.text() == text, f"{text!r} in the window")
        eventually(lambda: plasma.clipboard() == THEIRS, "the old clipboard")

    def test_any_text_is_handed_out_exactly_and_the_old_clipboard_comes_back(self):
        inserter, plasma = self.start()
        self.inserts(inserter, plasma, TEXTS)
        eventually(lambda: plasma.clipboard() == THEIRS, "the old clipboard")

    def test_windows_paste_each_its_own_words_and_a_terminal_is_known_by_its_app(self):
        inserter, plasma = self.start()
        plasma.do("deaf")
        terminal = self.open_field("konsole")
        for count, (words, text) in enumerate(((b"one\0", "one"), (b"two\0", "one two")), 1):
            inserter.send(words)
            self.pastes(plasma, terminal, "29 42 47", count, text)
        editor = self.open_field("editor")
        inserter.send(b"three\0")
        self.pastes(plasma, editor, "29 47", 1, "three")
        self.assertEqual(terminal.text(), "one two")


if __name__ == "__main__":
    unittest.main()
