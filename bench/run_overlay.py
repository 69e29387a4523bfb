"""Benchmarks of the recording overlay on a virtual desktop: run_overlay.py FOLDER_OF_PROGRAMS."""

import os
import pathlib
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tests" / "desktop"))

# pylint: disable=wrong-import-position
from harness.application import Application
from harness.desk import Desk
from harness.pill import Pill
from harness.polling import eventually
from harness.sound import MICROPHONE, SPEAKER, SoundServer
from harness.sway import SwayDesk

SHOWN_S = 20
LAYER_RUNS = 3
SPEECH = "One two three four five. How are you today? We are ready to start. Nice to meet you. " * 16
PROCESS_CLOCK = 2  # the kernel's name for the clock that counts a process's time on a processor
CAVA = f"""[general]
framerate = 60
bars = 14
sleep_timer = 0
[input]
method = pulse
source = {MICROPHONE}
"""


def cpu_s(pids):
    """The processor time that processes have used so far."""
    return sum(time.clock_gettime(~pid << 3 | PROCESS_CLOCK) for pid in pids)


def descendants(pid):
    """A process and all below it."""
    found = [pid]
    for task in pathlib.Path(f"/proc/{pid}/task").iterdir():
        for child in (task / "children").read_text().split():
            found += descendants(int(child))
    return found


def main_thread_s(pid):
    """The processor time that a process's main thread has used so far."""
    return int(pathlib.Path(f"/proc/{pid}/task/{pid}/schedstat").read_text().split()[0]) / 1e9


def used(desk, pid):
    """Percent of one core that a program and what shows it on the screen use."""
    shown_by = [process.pid for process in desk.processes("Xvfb", "xfwm4", "sway", "setpriv")]
    program = descendants(pid)
    before = cpu_s(program), cpu_s(shown_by)
    started = time.monotonic()
    time.sleep(SHOWN_S)
    passed = (time.monotonic() - started) / 100
    return (cpu_s(program) - before[0]) / passed, (cpu_s(shown_by) - before[1]) / passed


def layer_cost(desk, programs):
    """The shares of the thread that paints, of the whole application and of the compositor while the overlay
    is a layer of it."""
    application = Application(desk, programs, f"layer-{time.monotonic_ns()}")
    application.start()
    application.engine.wait_for_starts(1)
    for line in ("Ready.", "Recording..."):
        application.engine.say(line)
    Pill(desk).wait_until_seen()
    pid = application.process.pid
    before, started = main_thread_s(pid), time.monotonic()
    cost = used(desk, pid)
    painting = 100 * (main_thread_s(pid) - before) / (time.monotonic() - started)
    application.stop()
    return painting, *cost


def overlay_cost(desk, programs):
    """The share of the whole application while its overlay is shown."""
    application = Application(desk, programs).start_ready()
    application.engine.say("Recording...")
    application.item.wait_for_status("Recording...")
    time.sleep(1)
    cost = used(desk, application.process.pid)
    application.stop()
    return cost


def cava_cost(desk):
    """The share of a spectrum analyser in a terminal."""
    with open(desk.path("cava.conf"), "w", encoding="utf-8") as file:
        file.write(CAVA)
    terminal = desk.spawn("xterm", "-geometry", "60x20+10+10", "-e", "cava", "-p",
                          desk.path("cava.conf"))
    eventually(lambda: len(descendants(terminal.pid)) > 1, "cava in its terminal")
    time.sleep(1)
    cost = used(desk, terminal.pid)
    alive = len(descendants(terminal.pid)) > 1
    terminal.stop()
    if not alive:
        raise AssertionError("cava did not run: " + terminal.output())
    return cost


def listening(sound, measure, latency_ms=20):
    """Measures during speech, with the same words every time. The microphone delivers pieces of a quarter
    of the latency."""
    speech = sound.say(SPEECH, latency_ms=latency_ms)
    cost = measure()
    if not speech.running():
        raise AssertionError("the speech was too short")
    speech.stop()
    return cost


def print_costs(name, cost):
    """One line for each part and one for the sum."""
    print(f"{name}, program, % of a core: {cost[0]:.2f}")
    print(f"{name}, X server and compositor, % of a core: {cost[1]:.2f}")
    print(f"{name}, together, % of a core: {sum(cost):.2f}", flush=True)


def main():
    """Prints every figure as one line."""
    programs = sys.argv[1]
    with Desk(compositing=True) as desk:
        sound = SoundServer(desk).start()
        subprocess.run([os.path.join(programs, "overlay-bench"), SPEAKER], check=True,
                       env=desk.environment, timeout=90)
        ours = listening(sound, lambda: overlay_cost(desk, programs))
        theirs = listening(sound, lambda: cava_cost(desk))
        print_costs("overlay shown", ours)
        print_costs("cava in xterm", theirs)
        print(f"overlay / cava (aim below 1): {sum(ours) / sum(theirs):.2f}")
        sound.stop()
    with SwayDesk(notifications=False) as desk:
        sound = SoundServer(desk).start()
        costs = sorted(listening(sound, lambda: layer_cost(desk, programs), 40) for _run in range(LAYER_RUNS))
        painting, program, compositor = costs[LAYER_RUNS // 2]
        print("overlay as a layer of sway, the thread that paints, median of three runs, % of a core (aim 1):"
              f" {painting:.2f}")
        print(f"the same, program with its sound capture, in that run, % of a core: {program:.2f}")
        print(f"the same, compositor, in that run, % of a core: {compositor:.2f}", flush=True)


if __name__ == "__main__":
    main()
