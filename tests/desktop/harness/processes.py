"""Processes of a desk: each is known by its pid, has a log and never outlives the test."""

import ctypes
import os
import signal
import subprocess

from .polling import eventually

PR_SET_PDEATHSIG = 1
_LIBC = ctypes.CDLL(None, use_errno=True)


def die_with_parent():
    """A test that is killed must not leave a desktop behind."""
    _LIBC.prctl(PR_SET_PDEATHSIG, signal.SIGKILL)


def alive(pid):
    """Whether the process runs; one that is dead but not yet reaped does not."""
    try:
        with open(f"/proc/{pid}/stat", encoding="ascii", errors="replace") as stat:
            return stat.read().rpartition(")")[2].split()[0] not in "ZX"
    except (FileNotFoundError, ProcessLookupError):
        return False


def network_sockets(pid):
    """The process's sockets that are not of this machine alone, by their inodes."""
    known = set()
    for kind in ("tcp", "tcp6", "udp", "udp6", "raw", "raw6", "icmp", "packet"):
        path = f"/proc/{pid}/net/{kind}"
        column = 8 if kind == "packet" else 9
        if os.path.exists(path):
            with open(path, encoding="ascii") as file:
                known.update(line.split()[column] for line in file.readlines()[1:])
    own = []
    for entry in os.listdir(f"/proc/{pid}/fd"):
        try:
            own.append(os.readlink(f"/proc/{pid}/fd/{entry}"))
        except FileNotFoundError:
            continue
    inodes = [name.removeprefix("socket:[").rstrip("]") for name in own if name.startswith("socket:[")]
    return [inode for inode in inodes if inode in known]


def is_sanitized(executable):
    """Whether a program was built with a sanitizer, whose own work takes time and memory."""
    with open(executable, "rb") as file:
        code = file.read()
    return any(name in code for name in (b"__asan_init", b"__tsan_init"))


class Process:
    """One running program with its log file."""

    def __init__(self, command, environment, log, pass_fds=()):
        self.name = os.path.basename(command[0])
        self.log = log
        with open(log, "ab") as output:
            self._child = subprocess.Popen(
                command, env=environment, stdin=subprocess.DEVNULL, stdout=output, stderr=output,
                pass_fds=pass_fds, preexec_fn=die_with_parent)

    @property
    def pid(self):
        """The process id, valid until the process has been waited for."""
        return self._child.pid

    def running(self):
        """Whether it is running."""
        return self._child.poll() is None

    def exit_status(self, limit_s=10.0):
        """Waits for the end; a negative number is the signal that it died of."""
        eventually(lambda: not self.running(), f"the end of {self.name}", limit_s)
        return self._child.returncode

    def send(self, number):
        """Sends a signal, unless the process has ended."""
        self._child.send_signal(number)

    def stop(self):
        """Ends it by SIGTERM, then by SIGKILL."""
        if self.running():
            self.send(signal.SIGCONT)
            self.send(signal.SIGTERM)
            try:
                self._child.wait(5)
            except subprocess.TimeoutExpired:
                self._child.kill()
                self._child.wait()

    def kill(self):
        """Ends it at once."""
        if self.running():
            self._child.kill()
        self._child.wait()

    def output(self):
        """Everything that it has printed so far."""
        with open(self.log, encoding="utf-8", errors="replace") as log:
            return log.read()


def without_privilege():
    """A wrapper under which permission bits apply to root too."""
    if os.geteuid() != 0:
        return []
    rights = "-dac_override,-dac_read_search"
    return ["setpriv", f"--bounding-set={rights}", f"--inh-caps={rights}"]
