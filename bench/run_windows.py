"""How fast the settings window opens beside a bare one, and a long setup run in the download window."""

import mmap
import os
import statistics
import struct
import subprocess
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "tests", "desktop"))

# pylint: disable=wrong-import-position
import dbus
import dbus.lowlevel
from harness.application import Application
from harness.desk import HEIGHT, WIDTH, Desk
from harness.polling import eventually, pump

OPENINGS = 25
RUNS = 5
QUIET_S = 0.25
WINDOW = (380, 240)  # within either window, without its frame


class ScreenWatch:
    """Says when the middle of the screen has changed last."""

    def __init__(self, path):
        with open(path, "rb") as file:
            self._data = mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ)
        fields = struct.unpack(">25I", self._data[:100])
        start, stride = fields[0] + 12 * fields[19], fields[12]
        left, top = (WIDTH - WINDOW[0]) // 2, (HEIGHT - WINDOW[1]) // 2
        self._rows = [(start + y * stride + 4 * left, start + y * stride + 4 * (left + WINDOW[0]))
                      for y in range(top, top + WINDOW[1], 3)]

    def look(self):
        """What is there now."""
        return b"".join(self._data[first:end] for first, end in self._rows)

    def last_change(self, before):
        """Waits until it has changed from `before` and is quiet; the time of the last change."""
        seen, changed, deadline = before, None, time.monotonic() + 5
        while changed is None or time.monotonic() < changed + QUIET_S:
            now = self.look()
            if now != seen:
                seen, changed = now, time.monotonic()
            elif changed is None and time.monotonic() > deadline:
                raise AssertionError("nothing was drawn")
        return changed


def choose(desk, item, text):
    """Sends what a host sends when a row is chosen, and waits for nothing."""
    row = next(row for row in item.rows() if row.text == text)
    path = desk.session_bus.interface(item.service, item._path,  # pylint: disable=protected-access
                                      "org.freedesktop.DBus.Properties").Get(
        "org.kde.StatusNotifierItem", "Menu")
    event = dbus.lowlevel.MethodCallMessage(item.service, path, "com.canonical.dbusmenu", "Event")
    event.append(row.identifier, "clicked", dbus.String("", variant_level=1), 0, signature="isvu")
    connection = desk.session_bus.connection
    started = time.monotonic()
    connection.send_message(event)
    connection.flush()
    return started


def opening_ms(desk, watch, item):
    """From the choice of "Settings..." to the last pixel of the window."""
    before = watch.look()
    started = choose(desk, item, "Settings...")
    duration = (watch.last_change(before) - started) * 1000
    desk.xdotool("key", "Escape")
    eventually(lambda: watch.look() == before, "the window to be gone")
    time.sleep(0.1)
    pump()
    return duration


def measure_openings(desk, programs):
    """Prints the medians of interleaved rounds; the very first opening of each apart."""
    application = Application(desk, programs).start_ready()
    bare = desk.spawn(os.path.join(programs, "bare_window"))
    items = {"voxtrel": application.item, "bare": desk.tray.wait_for_item(bare.pid)}
    watch = ScreenWatch(desk.path("screen/Xvfb_screen0"))
    time.sleep(1)
    first = {name: opening_ms(desk, watch, item) for name, item in items.items()}
    durations = {name: [] for name in items}
    for _ in range(OPENINGS):
        for name, item in items.items():
            durations[name].append(opening_ms(desk, watch, item))
    medians = {name: statistics.median(values) for name, values in durations.items()}
    for name in items:
        print(f"Settings... to window drawn, {name}, ms: {medians[name]:.1f} "
              f"(first time {first[name]:.1f})")
    print(f"Settings... to window drawn, ratio (aim 1.3): {medians['voxtrel'] / medians['bare']:.2f}",
          flush=True)
    bare.stop()
    application.stop()


def run_setup(desk, programs, mode, **changes):
    """The figures of one run."""
    output = subprocess.run([os.path.join(programs, "windows-bench"), mode], check=True, timeout=60,
                            env=dict(desk.environment, **changes), stdout=subprocess.PIPE).stdout
    return [float(figure) for figure in output.split()]


def measure_setup(desk, programs, name, **changes):
    """Prints the medians of interleaved runs and the worst answer of all."""
    bare, ours = [], []
    for _ in range(RUNS):
        bare.append(run_setup(desk, programs, "bare", **changes)[0])
        ours.append(run_setup(desk, programs, "window", **changes))
    shown, answers, works, complete = zip(*ours)
    print(f"200,000 lines, {name}, bare loop, ms: {statistics.median(bare):.0f}")
    print(f"200,000 lines, {name}, until Done! is shown, ms: {statistics.median(shown):.0f}")
    print(f"200,000 lines, {name}, ratio (aim 2): "
          f"{statistics.median(shown) / statistics.median(bare):.2f}")
    print(f"200,000 lines, {name}, window answers within, ms (aim 100): "
          f"{statistics.median(answers):.0f} (worst of {RUNS} runs {max(answers):.0f}, "
          f"of its own work {max(works):.0f})")
    print(f"200,000 lines, {name}, until all can be scrolled to, ms: "
          f"{statistics.median(complete):.0f}", flush=True)


def main(programs):
    """Measures on one desk."""
    with Desk() as desk:
        measure_openings(desk, programs)
        measure_setup(desk, programs, "written line by line")
        measure_setup(desk, programs, "written in blocks", VOXTREL_BENCH_BUFFERED="1")


if __name__ == "__main__":
    main(sys.argv[1])
