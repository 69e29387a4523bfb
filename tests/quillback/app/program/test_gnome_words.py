"""Words on GNOME: pasted by its portal, whose double has the traps of the real one."""

import json
import os
import stat
import unittest

from engine_program import run_command
from harness.polling import eventually, stays
from words_case import TEXTS, THEIRS, LastWay, WordsCase


class Gnome48(WordsCase):
    """With the portal's clipboard."""

    def setUp(self):
        super().setUp()
        self.gnome = self.desktop("gnome48")
        self.gnome.do("copy " + json.dumps({"text/plain;charset=utf-8": THEIRS, "text/html": "<b>"}))

    def start(self):
        """An open session."""
        inserter = self.inserter()
        self.wait_until_open(self.gnome)
        return inserter

    def test_any_text_arrives_exactly_and_the_old_clipboard_comes_back_with_all_types(self):
        self.inserts(self.start(), self.gnome, TEXTS)
        eventually(lambda: self.gnome.clipboard() == THEIRS, "the old clipboard")
        self.gnome.do("types")
        self.assertEqual(json.loads(self.gnome.wait_for("types")),
                         ["text/html", "text/plain;charset=utf-8"])
        self.gnome.do("read text/html")
        self.assertEqual(json.loads(self.gnome.wait_for("read")), "<b>")
        self.assertEqual(self.gnome.lines("unwritten"), [])

    def test_sixty_characters_arrive_in_time(self):
        self.arrives_in_time(self.start(), self.gnome)

    def test_texts_that_follow_each_other_are_joined(self):
        inserter = self.start()
        inserter.send(b"one\0two\0.\0")
        self.assertEqual([self.gnome.pasted(i)[0] for i in (1, 2, 3)], ["one", " two", "."])

    def test_an_empty_clipboard_is_empty_again(self):
        self.gnome.do("copy {}")
        inserter = self.start()
        inserter.send(b"words\0")
        self.gnome.pasted(1)
        eventually(lambda: self.gnome.clipboard() == "", "an empty clipboard")

    def test_the_desktop_asks_once_and_the_token_is_the_users_only(self):
        inserter = self.start()
        self.assertEqual(self.gnome.wait_for("devices"), "1 persist 2")
        token = self.state("paste-token")
        self.assertEqual(stat.S_IMODE(os.stat(token).st_mode), 0o600)
        with open(token, encoding="ascii") as file:
            first = file.read()
        inserter.stop()
        again = self.inserter()
        self.gnome.wait_for("restored")
        again.send(b"words\0")
        self.assertEqual(self.gnome.pasted(1)[0], "words")
        self.assertEqual(len(self.gnome.lines("asked")), 1)
        self.assertEqual(again.lines("[quillback]"), [])
        with open(token, encoding="ascii") as file:
            self.assertNotEqual(file.read(), first)

    def test_the_question_is_told_once(self):
        self.gnome.stop()
        slow = self.desktop("gnome48+thinking")
        inserter = self.inserter()
        inserter.wait_for("[quillback] The desktop asks whether words may be pasted")
        self.wait_until_open(slow)
        inserter.stop()
        os.unlink(self.state("paste-token"))
        again = self.inserter()
        self.wait_until_open(slow, count=2)
        self.assertEqual(again.lines("[quillback]"), [])

    def test_words_that_come_while_the_session_is_restored_are_pasted(self):
        self.start().stop()
        inserter = self.inserter()
        inserter.send(b"early\0")
        self.assertEqual(self.gnome.pasted(1)[0], "early")

    def test_where_no_window_takes_the_words_they_stay_in_the_clipboard_and_a_line_says_so(self):
        inserter = self.start()
        self.gnome.do("deaf")
        inserter.send(b"words\0")
        self.assertIn("no window has taken it",
                      inserter.wait_for("[quillback] What was not typed is copied:"))
        inserter.wait_for("inserted")
        self.assertEqual(self.gnome.clipboard(), "words")

    def test_a_busy_desktops_own_read_is_not_taken_for_the_windows(self):
        self.gnome.stop()
        busy = self.desktop("gnome48+busy")
        busy.do("copy " + json.dumps({"text/plain;charset=utf-8": THEIRS}))
        busy.do("deaf")
        inserter = self.inserter()
        self.wait_until_open(busy)
        inserter.send(b"words\0")
        self.assertIn("no window has taken it",
                      inserter.wait_for("[quillback] What was not typed is copied:"))

    def test_terminals_get_their_own_key(self):
        self.settings('[output]\npaste = "ctrl+shift+v"\n')
        inserter = self.start()
        self.gnome.do("terminal")
        inserter.send(b"ls -l\0")
        self.assertEqual(self.gnome.pasted(1)[0], "ls -l")
        self.gnome.wait_for("released")
        self.gnome.do("close")
        self.assertEqual(self.gnome.wait_for("left down"), "[]")

    def test_shift_insert_is_a_choice_too(self):
        self.settings('[output]\npaste = "shift+insert"\n')
        inserter = self.start()
        self.gnome.do("terminal")
        inserter.send(b"ls -l\0")
        self.assertEqual(self.gnome.pasted(1)[0], "ls -l")

    def test_a_session_that_the_desktop_ends_is_opened_again_with_the_next_words(self):
        inserter = self.start()
        inserter.send(b"one\0")
        self.gnome.pasted(1)
        eventually(lambda: self.gnome.clipboard() == THEIRS, "the old clipboard")
        self.gnome.do("close")
        self.gnome.wait_for("left down")

        def is_restored():
            # The first words may come before the program knows that the session has ended.
            inserted = len(inserter.lines("inserted"))
            inserter.send(b"two\0")
            inserter.wait_for("inserted", inserted + 1)
            return self.gnome.lines("restored")
        eventually(is_restored, "the session", 20)
        self.assertEqual(self.gnome.pasted(2)[0].strip(), "two")
        self.assertEqual(len(self.gnome.lines("asked")), 1)

    def test_a_portal_that_goes_and_comes_back_is_used_again(self):
        inserter = self.start()
        self.gnome.stop()
        eventually(lambda: not self.bus.owner("org.freedesktop.portal.Desktop"), "its end")
        inserter.send(b"lost\0")
        inserter.wait_for("inserted")
        again = self.desktop("gnome48")
        again.wait_for("restored")
        inserter.send(b"words\0")
        self.assertEqual(again.pasted(1)[0].removeprefix(" "), "words")

    def test_a_session_that_ended_with_the_program_behind_the_portal_is_opened_again(self):
        inserter = self.start()
        self.gnome.do("crash")
        self.gnome.wait_for("restored")
        inserter.send(b"words\0")
        self.assertEqual(self.gnome.pasted(1)[0], "words")

    def test_a_copy_of_a_x11_program_does_not_crash_the_portal(self):
        types = ("TARGETS", "UTF8_STRING", "text/plain;charset=utf-8", "text/plain", "STRING", "text/html")
        self.gnome.do("copy " + json.dumps({kind: THEIRS for kind in types}))
        inserter = self.start()
        inserter.send(b"words\0")
        self.assertEqual(self.gnome.pasted(1)[0], "words")
        eventually(lambda: self.gnome.clipboard() == THEIRS, "the old clipboard")
        self.gnome.do("types")
        self.assertEqual(json.loads(self.gnome.wait_for("types")), sorted(set(types) - {"TARGETS"}))
        self.assertEqual(self.gnome.lines("crashed"), [])

    def test_what_another_program_copies_meanwhile_is_left(self):
        inserter = self.start()
        inserter.send(b"words\0")
        self.gnome.pasted(1)
        self.gnome.do('copy {"text/plain;charset=utf-8": "newer"}')
        stays(lambda: self.gnome.clipboard() == "newer", "the newer text", 0.5)

    def test_nothing_wakes_the_idle_program(self):
        inserter = self.start()
        inserter.send(b"words\0")
        self.gnome.pasted(1)
        eventually(lambda: self.gnome.clipboard() == THEIRS, "the old clipboard")
        self.sleeps(inserter.pid)

    def test_the_check_names_the_way(self):
        done = run_command("check", environment=self.environment)
        self.assertIn("words: pasted by the desktop's portal with Ctrl+V", done.stdout.splitlines())
        self.assertEqual(self.gnome.lines("asked"), [])


class Refused(LastWay):
    """The user says no to the desktop's question."""

    def refuses(self, kind):
        """It is said once, the words are copied, and nothing is asked again until the user wants it."""
        desktop = self.desktop(kind)
        inserter = self.inserter()
        self.assertIn('"quillback ask"', inserter.wait_for("[quillback] Words are copied from now on"))
        inserter.send(b"words\0")
        inserter.wait_for("inserted")
        eventually(lambda: self.copied() == "words", "the copy")
        inserter.stop()
        again = self.inserter()
        again.send(b"more\0")
        again.wait_for("inserted")
        self.assertEqual(again.lines("[quillback] Words"), [])
        self.assertEqual(len(desktop.lines("asked")), 1)
        return desktop, again

    def test_a_refusal_is_remembered_and_said_once(self):
        desktop, again = self.refuses("refusing")
        done = run_command("check", environment=self.environment)
        self.assertIn("quillback ask", done.stdout)
        self.assertEqual(run_command("ask", environment=self.environment).returncode, 0)
        again.send(b"third\0")
        desktop.wait_for("asked", 2)
        eventually(lambda: self.copied() == "third", "the copy")

    def test_a_session_without_the_keyboard_is_a_refusal(self):
        self.refuses("mouse-only")

    def test_a_portal_without_remote_desktop_copies(self):
        self.desktop("older")
        inserter = self.inserter()
        inserter.send(b"words\0")
        inserter.wait_for("inserted")
        eventually(lambda: self.copied() == "words", "the copy")
        done = run_command("check", environment=self.environment)
        self.assertIn("words: copied with wl-copy", done.stdout.splitlines())


class Gnome43(LastWay):
    """No clipboard in the portal and no tokens; wl-copy is the last way."""

    def test_words_are_copied_by_wl_copy_and_pasted(self):
        desktop = self.desktop("gnome43")
        inserter = self.inserter()
        self.open_without_token(inserter, desktop)
        self.assertEqual(desktop.wait_for("devices"), "1 persist 0")
        for text in ("words", "漢字 😀"):
            inserter.send(text.encode() + b"\0")
            desktop.wait_until_pasted(" " + text)
        self.assertFalse(os.path.exists(self.state("paste-token")))

    def test_without_wl_copy_one_line_says_that_nothing_was_copied(self):
        os.unlink(os.path.join(self.folder, "programs", "wl-copy"))
        self.environment["PATH"] = os.path.join(self.folder, "programs")
        desktop = self.desktop("gnome43", dict(self.environment, PATH="/usr/bin:/bin"))
        inserter = self.inserter()
        desktop.wait_for("asked")
        inserter.send(b"words\0")
        inserter.wait_for("[quillback] ERROR The text could not be copied")
        inserter.wait_for("inserted")


if __name__ == "__main__":
    unittest.main()
