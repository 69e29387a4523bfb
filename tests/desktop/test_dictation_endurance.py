"""Two hundred dictations in a row: the engine does not grow."""

import os

from harness.dictation import KEY_CODE
from harness.polling import stays
from test_dictation import DictationCase

DICTATIONS = 200
# Memory is read after so many. A leak grows from each to the next; room that the recogniser takes once does not.
READ_AFTER = (20, 110, DICTATIONS)
HELD_S = 0.45
# The recogniser keeps the room that its longest speech took; a machine under load holds keys longer.
LONG_SPEECH_S = 9.0
# The allocator's own unevenness; a leak of half a second's samples each time would be 1.4 MB.
MAX_GROWTH_KIB = 1024


def memory_kib(pid):
    """What the process itself has written. Pages of libraries are left out: whether they count as private
    depends on the other processes that use them at that moment."""
    with open(f"/proc/{pid}/smaps_rollup", encoding="ascii") as file:
        return sum(int(line.split()[1]) for line in file if line.startswith(("Anonymous:", "Swap:")))


def descriptors(pid):
    """How many files it has open."""
    return len(os.listdir(f"/proc/{pid}/fd"))


class ManyDictations(DictationCase):
    """Neither memory nor descriptors grow."""

    def hold(self, duration_s, readies):
        """Holds the key, and waits until the engine has been ready so many times and nothing is
        being inserted."""
        self.desk.xdotool("keydown", KEY_CODE)
        stays(self.app.engine_pids, "an engine", duration_s)
        self.desk.xdotool("keyup", KEY_CODE)
        self.app.wait_for_count("Ready.", readies)
        self.app.wait_until_inserted()

    def test_two_hundred_in_a_row(self):
        pid = self.app.engine_pids()[0]
        self.sound.say(". ".join(["one two three four five"] * 250))
        self.hold(LONG_SPEECH_S, 2)
        memory = []
        open_files = []
        for number in range(1, DICTATIONS + 1):
            self.hold(HELD_S, number + 2)
            if number in READ_AFTER:
                memory.append(memory_kib(pid))
                open_files.append(descriptors(pid))
        print(f"memory {memory} KiB, descriptors {open_files}")
        self.assertEqual(self.app.engine_pids(), [pid])
        self.assertGreater(self.app.count("[gpu-decode]"), DICTATIONS // 2)
        growths = [after - before for before, after in zip(memory, memory[1:])]
        self.assertLess(min(growths), MAX_GROWTH_KIB)
        self.assertEqual(open_files[0], open_files[-1])
