"""Words in the windows of a compositor with virtual keyboards, and on its clipboard."""

import os
import shlex
import subprocess
import unittest

from harness.polling import eventually
from harness.sway import SwayDesk

TYPER = os.path.join(os.environ.get("VOXTREL_PROGRAMS", ""), "quillback-wayland-typer")
LAYOUTS = ("us", "de", "fr", "ru")
TEXTS = {"ASCII": "The quick brown fox jumps over the lazy dog: 1234567890 #@!~ {[|]} <\\>",
         "umlauts": "Größe, Übung, Äpfel, çà et là, œuvre, ñ, Łódź",
         "Greek": "Ξεσκεπάζω την ψυχοφθόρα βδελυγμία",
         "Cyrillic": "Съешь же ещё этих мягких французских булок",
         "CJK": "漢字かな交じり文。我们需要更多时间",
         "emoji": "well done 😀🎉👍 — 100 %"}
SIXTY = "This sentence has sixty characters, no more and no fewer: ok"
BOUND = 24


class Terminal:
    """A window that writes what is typed into it to a file."""

    def __init__(self, desk, title, program="foot"):
        self._path = desk.path(title)
        self.title = title
        script = f"stty raw -echo; : > {shlex.quote(self._path)}; exec cat >> {shlex.quote(self._path)}"
        options = ["-T", title] if program == "foot" else ["-u8", "-T", title]
        self._process = desk.spawn(program, *options, "-e", "sh", "-c", script)
        eventually(lambda: os.path.exists(self._path) and desk.focused() == title, title, 20)

    def text(self):
        """All that was typed so far."""
        with open(self._path, encoding="utf-8", errors="replace") as file:
            return file.read().replace("\r", "\n")

    def close(self):
        """Closes the window."""
        self._process.stop()


class Typer:
    """A program that types and copies as the engine does."""

    def __init__(self, desk):
        self._child = subprocess.Popen([TYPER], env=desk.environment, stdin=subprocess.PIPE,
                                       stdout=subprocess.PIPE, bufsize=0)
        self.offers = self.line()

    def send(self, *texts):
        """Texts that it types one after the other."""
        self._child.stdin.write(b"".join(text.encode() + b"\0" for text in texts))

    def line(self):
        """What it says next."""
        return self._child.stdout.readline().decode().rstrip("\n")

    def lines_until(self, start):
        """What it says until a line that begins so."""
        lines = [self.line()]
        while not lines[-1].startswith(start):
            lines.append(self.line())
        return lines

    def close(self):
        """It ends with its input."""
        self._child.stdin.close()
        self._child.wait(10)
        self._child.stdout.close()


class SwayCase(unittest.TestCase):
    """One compositor a class, one typer a test."""

    @classmethod
    def setUpClass(cls):
        cls.desk = SwayDesk(login_manager=False, notifications=False)
        cls.enterClassContext(cls.desk)

    def setUp(self):
        self.typer = Typer(self.desk)
        self.addCleanup(self.typer.close)
        self.assertEqual(self.typer.offers, "type 1 copy 1")

    def open(self, title, program="foot"):
        """A terminal with the focus."""
        terminal = Terminal(self.desk, title, program)
        self.addCleanup(terminal.close)
        return terminal


class Words(SwayCase):
    """What is typed arrives."""

    def types_all(self, terminal):
        """Types each text in each layout and checks every character."""
        expected = ""
        for layout in LAYOUTS:
            self.desk.sway("input", "*", "xkb_layout", layout)
            for kind, text in TEXTS.items():
                with self.subTest(layout=layout, kind=kind):
                    expected += (" " if expected else "") + text
                    self.typer.send(text)
                    self.assertRegex(self.typer.line(), "^typed ")
                    eventually(lambda: len(terminal.text()) >= len(expected), kind)
                    self.assertEqual(terminal.text(), expected)

    def test_any_script_is_exact_in_a_wayland_window_in_every_layout(self):
        self.types_all(self.open("native"))

    def test_any_script_is_exact_in_an_x11_window_in_every_layout(self):
        self.types_all(self.open("x11", "xterm"))

    def test_two_thousand_characters_of_many_alphabets_are_exact(self):
        terminal = self.open("long")
        text = "".join(chr(0x4E00 + i % 700) for i in range(2000))
        self.typer.send(text)
        self.assertRegex(self.typer.line(), "^typed ")
        eventually(lambda: len(terminal.text()) >= len(text), "the text")
        self.assertEqual(terminal.text(), text)

    def test_newlines_press_return_and_texts_are_joined(self):
        terminal = self.open("joined")
        self.typer.send("one", "two\n", "three", ".")
        eventually(lambda: terminal.text().endswith("."), "the texts")
        self.assertEqual(terminal.text(), "one two\nthree.")

    def test_the_space_goes_only_between_texts_of_one_window(self):
        first = self.open("first")
        self.typer.send("one")
        eventually(lambda: first.text() == "one", "the first text")
        second = self.open("second")
        self.typer.send("two")
        eventually(lambda: len(second.text()) >= len("two"), "the second text")
        self.assertEqual(second.text(), "two")

    def test_without_a_window_the_words_are_refused(self):
        self.desk.sway("workspace", "empty")
        self.addCleanup(self.desk.sway, "workspace", "1")
        self.typer.send("nowhere")
        self.assertEqual(self.typer.line(), "refused no window has the focus: nowhere")
        self.assertRegex(self.typer.line(), "^typed ")


class FocusMoves(SwayCase):
    """Another window gets the focus while a text is typed."""

    def test_at_most_one_piece_goes_to_the_other_window_and_nothing_is_lost(self):
        other, first = self.open("other"), self.open("target")
        refusals = 0
        for _ in range(10):
            before, before_other = len(first.text()), len(other.text())
            text = "x" * 5_000
            self.typer.send(text)
            eventually(lambda: len(first.text()) > before, "the first piece")
            self.desk.sway('[title="other"]', "focus")
            lines = self.typer.lines_until("typed ")
            refused = lines[0].partition(": ")[2] if lines[0].startswith("refused") else ""
            refusals += bool(refused)

            def typed():
                return len(first.text()) + len(other.text()) - before - before_other
            # The space before a text that follows another one is no part of it.
            eventually(lambda: typed() >= len(text) - len(refused), "all characters", 30)
            self.assertLessEqual(typed() - (len(text) - len(refused)), 1)
            self.assertLessEqual(len(other.text()) - before_other, BOUND)
            self.desk.sway('[title="target"]', "focus")
        self.assertGreater(refusals, 0, "the focus never moved in time")


class Clipboard(SwayCase):
    """Without a window of the program's own."""

    def paste(self):
        """What another program gets."""
        return subprocess.run(["wl-paste", "--no-newline"], env=self.desk.environment, check=True,
                              capture_output=True, timeout=20).stdout.decode()

    def test_a_copied_text_is_pasted_exactly_and_the_focus_stays(self):
        self.open("focused")
        for text in (*TEXTS.values(), "two\nlines\n", "x" * 300_000):
            self.typer.send("\x01" + text)
            self.assertEqual(self.typer.line(), "copied 1")
            self.assertEqual(self.paste(), text)
            self.assertEqual(self.desk.focused(), "focused")

    def test_what_another_program_copies_replaces_it(self):
        self.typer.send("\x01ours")
        self.typer.line()
        subprocess.run(["wl-copy", "theirs"], env=self.desk.environment, check=True, timeout=20)
        self.assertEqual(self.paste(), "theirs")
        self.typer.send("\x01ours again")
        self.typer.line()
        self.assertEqual(self.paste(), "ours again")


if __name__ == "__main__":
    unittest.main()
