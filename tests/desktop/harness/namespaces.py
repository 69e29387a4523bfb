"""Programs with private mounts, which other programs do not see and which end with them."""

import functools
import os
import subprocess


def _unshare():
    # An ordinary user may mount within a user namespace, and keeps its own name there.
    own = [] if os.geteuid() == 0 else ["--map-current-user", "--keep-caps"]
    return ["unshare", *own, "--mount"]


@functools.cache
def can_mount():
    """Whether this user may make private mounts."""
    command = [*_unshare(), "mount", "-t", "tmpfs", "tmpfs", "/mnt"]
    return subprocess.run(command, check=False, capture_output=True).returncode == 0


def in_own_mounts(*commands):
    """A wrapper that runs these shell commands before a command."""
    return [*_unshare(), "sh", "-ec", "\n".join([*commands, 'exec "$0" "$@"'])]
