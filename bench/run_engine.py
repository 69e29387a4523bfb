"""Measures the engine: the time from key press to the first sample, and its costs while idle."""

import os
import subprocess
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "tests", "desktop"))

# pylint: disable=wrong-import-position
from harness.desk import Desk
from harness.polling import eventually
from harness.sound import SoundServer
from run_tray import pss_mib, running_time_ns, wake_ups

SETTLE_S = 3.0
IDLE_S = 30.0


def run(desk, *command):
    """Runs a benchmark program on the desk."""
    subprocess.run(command, check=True, env=desk.environment, timeout=300)


def measure_idle(desk, programs):
    """Prints processor time, wake-ups and memory of a ready engine, next to an idle `cat`."""
    engine = desk.spawn(os.path.join(programs, "quillback"), "run")
    eventually(lambda: "Ready." in engine.output(), "a ready engine", 20)
    pipe, end = os.pipe()
    cat = subprocess.Popen(["cat"], stdin=pipe)  # pylint: disable=consider-using-with
    time.sleep(SETTLE_S)
    contenders = {"engine": engine.pid, "cat": cat.pid}
    before = {name: (running_time_ns(pid), wake_ups(pid)) for name, pid in contenders.items()}
    time.sleep(IDLE_S)
    for name, pid in contenders.items():
        ran = (running_time_ns(pid) - before[name][0]) / 1e9 / IDLE_S * 100
        woke = (wake_ups(pid) - before[name][1]) / IDLE_S
        print(f"idle, {name}: {ran:.4f} % of a core, {woke:.2f} wake-ups/s")
    print(f"PSS, engine with its model: {pss_mib(engine.pid):.1f} MiB")
    os.close(end)
    os.close(pipe)
    cat.wait()
    engine.stop()


def main(programs):
    """Runs all measurements on one desk."""
    with Desk(panel=False, notifications=False) as desk:
        sound = SoundServer(desk).start()
        sys.stdout.flush()
        run(desk, os.path.join(programs, "engine_key"), os.path.join(programs, "quillback"),
            os.path.join(programs, "bare_key_listener"))
        run(desk, os.path.join(programs, "engine_microphone"))
        measure_idle(desk, programs)
        sound.stop()


if __name__ == "__main__":
    main(sys.argv[1])
