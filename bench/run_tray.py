"""Start-up and idle costs of the application beside a bare tray program and two known ones."""

import os
import statistics
import subprocess
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "tests", "desktop"))

# pylint: disable=wrong-import-position
from harness.application import Application
from harness.desk import Desk
from harness.polling import eventually, pump

START_ROUNDS = 15
IDLE_S = 30.0
SETTLE_S = 3.0


class Contender:
    """A tray program that can be started, watched and ended on a desk."""

    def __init__(self, name, launch):
        self.name = name
        self.process = None
        self._launch = launch

    def start(self):
        """Starts it without waiting for anything."""
        self.process = self._launch()

    def stop(self):
        """Ends it."""
        self.process.stop()


def contenders(desk, programs, application):
    """Ours first, then the yardsticks that are installed."""
    bare = os.path.join(programs, "bare_tray")
    return [
        Contender("voxtrel", application.start),
        Contender("bare", lambda: desk.spawn(bare)),
        Contender("flameshot", lambda: desk.spawn("flameshot")),
        Contender("copyq", lambda: desk.spawn("copyq")),
    ]


def share(ours, name, theirs):
    """How ours compares with a yardstick's figure."""
    return "" if name == "voxtrel" else f", ours is {ours / theirs:.2f} of it"


def wait(duration_s):
    """Lets time pass while messages are still recorded."""
    end = time.monotonic() + duration_s
    while time.monotonic() < end:
        pump()
        time.sleep(0.01)


# Start-up ----------------------------------------------------------------------------------------


def first_registration_s(desk, contender):
    """When the tray item was registered; looks often enough to be right within a millisecond."""
    deadline = time.monotonic() + 20
    while time.monotonic() < deadline:
        pump()
        calls = desk.messages.calls("RegisterStatusNotifierItem")
        if calls:
            return calls[0].time_s
        time.sleep(0.0005)
    raise AssertionError(f"{contender.name} has no tray item")


def registration_ms(desk, contender):
    """From just before exec to the call that registers the tray item."""
    desk.messages.messages.clear()
    started = time.monotonic()
    contender.start()
    duration = (first_registration_s(desk, contender) - started) * 1000
    wait(0.3)
    contender.stop()
    wait(0.2)
    return duration


def measure_start(desk, everyone):
    """Prints the medians of interleaved rounds."""
    durations = {contender.name: [] for contender in everyone}
    for number in range(START_ROUNDS + 1):
        for contender in everyone:
            duration = registration_ms(desk, contender)
            if number:  # the first round fills caches
                durations[contender.name].append(duration)
    medians = {name: statistics.median(values) for name, values in durations.items()}
    for name, median in medians.items():
        print(f"exec to tray item, {name}: {median:.1f} ms" + share(medians["voxtrel"], name, median))


# Idle --------------------------------------------------------------------------------------------


def running_time_ns(pid):
    """Processor time of all threads."""
    total = 0
    for task in os.listdir(f"/proc/{pid}/task"):
        with open(f"/proc/{pid}/task/{task}/schedstat", encoding="ascii") as file:
            total += int(file.read().split()[0])
    return total


def wake_ups(pid):
    """How often its threads have gone to sleep of their own will."""
    total = 0
    for task in os.listdir(f"/proc/{pid}/task"):
        with open(f"/proc/{pid}/task/{task}/status", encoding="ascii") as file:
            total += next(int(line.split()[1]) for line in file
                          if line.startswith("voluntary_ctxt_switches"))
    return total


def pss_mib(pid):
    """Memory, what is shared counted in parts."""
    with open(f"/proc/{pid}/smaps_rollup", encoding="ascii") as file:
        return next(int(line.split()[1]) for line in file if line.startswith("Pss:")) / 1024


def connections_of(desk, pid):
    """The process's names on the session bus."""
    return [name for name in desk.session_bus.names() if desk.session_bus.process_of(name) == pid]


def measure_idle(desk, everyone, application):
    """Prints processor time, wake-ups and messages of 30 s in which nothing happens."""
    for contender in everyone:
        contender.start()
    item = desk.tray.wait_for_item(application.process.pid)
    application.engine.wait_for_starts(1)
    application.engine.say("Ready.")
    item.wait_for_status("Ready \u2014 hold Right Cmd")
    wait(SETTLE_S)
    ours = connections_of(desk, application.process.pid)
    desk.messages.messages.clear()
    before = {c.name: (running_time_ns(c.process.pid), wake_ups(c.process.pid)) for c in everyone}
    wait(IDLE_S)
    for contender in everyone:
        pid, name = contender.process.pid, contender.name
        ran = (running_time_ns(pid) - before[name][0]) / 1e9 / IDLE_S * 100
        woke = (wake_ups(pid) - before[name][1]) / IDLE_S
        print(f"idle, {name}: {ran:.3f} % of a core, {woke:.1f} wake-ups/s")
    print(f"idle, D-Bus messages from or to voxtrel: {len(desk.messages.touching(ours))}")
    item.rows()
    wait(0.2)
    print(f"idle, messages seen for one reading of the menu (must not be 0): "
          f"{len(desk.messages.touching(ours))}")
    for contender in everyone:
        contender.stop()


def measure_memory(desk, everyone):
    """Prints the memory of each alone, so that none shares with another."""
    sizes = {}
    for contender in everyone:
        contender.start()
        eventually(lambda: desk.messages.calls("RegisterStatusNotifierItem"), contender.name, 20)
        wait(SETTLE_S)
        sizes[contender.name] = pss_mib(contender.process.pid)
        contender.stop()
        desk.messages.messages.clear()
    for name, size in sizes.items():
        print(f"PSS, {name}: {size:.1f} MiB" + share(sizes["voxtrel"], name, size))


def main(programs):
    """Measures on one desk, everything in one run."""
    with Desk() as desk:
        application = Application(desk, programs)
        everyone = contenders(desk, programs, application)
        measure_start(desk, everyone)
        measure_memory(desk, everyone)
        measure_idle(desk, everyone, application)
        application.stop()


if __name__ == "__main__":
    if subprocess.run(["which", "flameshot", "copyq"], check=False,
                      stdout=subprocess.DEVNULL).returncode:
        sys.exit("flameshot and copyq are not installed: run script/bootstrap bench")
    main(sys.argv[1])
