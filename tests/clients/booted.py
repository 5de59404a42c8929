"""A tree that systemd boots, in which the agent logs in and out as on a desktop. Its control groups
are below one of the host's hierarchy, for which it takes root's rights."""

import contextlib
import os
import socket
import subprocess

import pytest

from packages import LIMIT
from tree import AGENT, REFUSED, Tree

GROUP = f"connect-test-{os.getpid()}"
JOIN = f"""
mount -t cgroup2 cgroup2 /mnt && mkdir "/mnt/$0" || exit {REFUSED}
echo 0 > "/mnt/$0/cgroup.procs"
umount /mnt
exec "$@"
"""
LEAVE = """
mount -t cgroup2 cgroup2 /mnt
find /mnt -depth -type d -path "/mnt/$0*" -exec rmdir {} ";"
"""
# What the host has is left out: devices, settings, other groups.
BOOT = """
mkdir /run/dev
mount -t tmpfs -o mode=755 dev /run/dev
for node in full null random tty urandom zero; do
  touch /run/dev/$node
  mount --bind /dev/$node /run/dev/$node
done
mount --move /run/dev /dev
mkdir /dev/pts /dev/shm
mount -t devpts -o newinstance,ptmxmode=666,mode=620 devpts /dev/pts
ln -s pts/ptmx /dev/ptmx
ln -s /proc/self/fd /dev/fd
mount -t tmpfs sys /sys
mkdir -p /sys/fs/cgroup
mount -t cgroup2 cgroup2 /sys/fs/cgroup
mount --bind -o ro /proc/sys /proc/sys
# The agent logs in often.
echo DefaultStartLimitIntervalSec=0 >> /etc/systemd/system.conf
echo ready
container=connect NOTIFY_SOCKET=$0 exec /lib/systemd/systemd
"""
# Ends with the desktop of whoever is logged in, as GNOME's and Plasma's targets do.
DESKTOP = """[Unit]
BindsTo=graphical-session.target
"""


class BootedTree(Tree):
    """Its systemd reports to `notices`, a socket of that name."""

    def __init__(self, notices):
        super().__init__(around=["unshare", "--mount", "sh", "-ec", JOIN, GROUP],
                         first=["unshare", "--cgroup", "sh", "-ec", BOOT, notices])

    def log_in(self):
        """Starts the agent's user manager, as the first login does."""
        self.run("systemctl", "start", f"user@{AGENT}")

    def log_out(self):
        """Ends it, and all that runs below it, as the last logout does."""
        self.run("systemctl", "stop", f"user@{AGENT}")


@contextlib.contextmanager
def booted_tree():
    if os.getuid() != 0:
        pytest.skip("Control groups are root's to make")
    with contextlib.ExitStack() as last:
        last.callback(subprocess.run, ["unshare", "--mount", "sh", "-ec", LEAVE, GROUP], check=True)
        notices = last.enter_context(socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM))
        # Of no folder, which would be another one in the tree.
        notices.bind("\0" + GROUP)
        notices.settimeout(LIMIT)
        tree = last.enter_context(BootedTree("@" + GROUP))
        while b"READY=1" not in notices.recv(1 << 12).splitlines():
            pass
        tree.write("/etc/systemd/user/desktop.target", DESKTOP.encode())
        yield tree
