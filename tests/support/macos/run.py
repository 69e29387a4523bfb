"""Runs one suite of the macOS adapters' tests: run.py [--program FILE [--rig PREFIX]] SUITE

On a Mac the program just runs. On the rig it gets a display, a home and a folder for temporary files of its
own, because the work-alikes of AppKit share their pasteboard and defaults through these. Exit status 77: there is no
program, because the adapters were not built.
"""

import argparse
import contextlib
import ctypes
import os
import pathlib
import signal
import subprocess
import sys
import tempfile

NOT_RUN = 77
LIMIT_SECONDS = 110
BECOME_SUBREAPER = 36  # prctl


@contextlib.contextmanager
def display():
    """A virtual screen; yields its name."""
    read_end, write_end = os.pipe()
    server = subprocess.Popen(
        ["Xvfb", "-displayfd", str(write_end), "-screen", "0", "1024x768x24", "-nolisten", "tcp", "-noreset"],
        pass_fds=[write_end], stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    os.close(write_end)
    try:
        with os.fdopen(read_end) as number:
            yield ":" + number.readline().strip()
    finally:
        server.terminate()
        server.wait()


def end_daemons():
    """Ends what the suite left behind. Orphans are our children, as we reap for all below us."""
    while True:
        children = pathlib.Path(f"/proc/self/task/{os.getpid()}/children").read_text("ascii").split()
        if not children:
            return
        for child in children:
            os.kill(int(child), signal.SIGKILL)
            os.waitpid(int(child), 0)


def environment(prefix, folder, screen):
    """What programs that are linked with the rig need to know."""
    (folder / "tmp").mkdir(mode=0o700)
    (folder / "home").mkdir()
    return os.environ | {
        "DISPLAY": screen,
        "HOME": str(folder / "home"),
        "TMPDIR": str(folder / "tmp"),
        "LD_LIBRARY_PATH": f"{prefix}/lib",
        "GNUSTEP_CONFIG_FILE": f"{prefix}/etc/GNUstep/GNUstep.conf",
        "PATH": f"{prefix}/bin:{os.environ['PATH']}",
    }


def run(program, suite, env=None):
    """The program's exit status; a hung one is killed, since it may ignore everything else."""
    try:
        command = [program, f"--gtest_filter={suite}.*:{suite}/*:*/{suite}.*"]
        return subprocess.run(command, env=env, stdin=subprocess.DEVNULL, timeout=LIMIT_SECONDS, check=False).returncode
    except subprocess.TimeoutExpired:
        print(f"{suite} hung for {LIMIT_SECONDS} s", file=sys.stderr)
        return 1


def run_on_rig(program, suite, prefix):
    """Runs the suite on a screen that nothing else uses."""
    ctypes.CDLL(None).prctl(BECOME_SUBREAPER, 1, 0, 0, 0)
    with tempfile.TemporaryDirectory(prefix="voxtrel-macos-", ignore_cleanup_errors=True) as folder:
        try:
            with display() as screen:
                return run(program, suite, environment(prefix, pathlib.Path(folder), screen))
        finally:
            end_daemons()


def main():
    """Returns the exit status."""
    parser = argparse.ArgumentParser()
    parser.add_argument("--program")
    parser.add_argument("--rig")
    parser.add_argument("suite")
    options = parser.parse_args()
    if not options.program:
        print("VOXTREL_MACOS_RIG named no folder when the tests were built")
        return NOT_RUN
    if not options.rig:
        return run(options.program, options.suite)
    return run_on_rig(options.program, options.suite, options.rig)


if __name__ == "__main__":
    sys.exit(main())
