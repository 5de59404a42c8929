"""The agent's systemd user manager in a tree. It has a control group of the host's hierarchy, for
which it takes root's rights."""

import os
import select
import socket
import unittest

from tree import HOME, LIMIT, RUNTIME

# The group itself is root's to make, where mounting its hierarchy is allowed at all.
SETUP = """
mkdir -p /run/systemd/system
mount -t tmpfs sys /sys
mkdir -p /sys/fs/cgroup
mount -t cgroup2 cgroup2 /sys/fs/cgroup && mkdir "$1" && chown -R agent: "$1" || echo refused
"""
START = """
echo $$ > "$1/cgroup.procs"
exec setpriv --reuid=agent --regid=agent --clear-groups /lib/systemd/systemd --user
"""


def start_manager(test, tree):
    """Starts the manager, and with it the socket of the session bus; it ends with the test."""
    group = f"/sys/fs/cgroup/connect-test-{os.getpid()}"
    answer = tree.run("sh", "-ec", SETUP, "-", group)
    if "refused" in answer:
        raise unittest.SkipTest(f"This machine refuses control groups: {answer}")
    test.addCleanup(end_group, tree, group)
    path = RUNTIME + "/ready"
    with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as notices:
        notices.bind(tree.path(path))
        tree.run("chown", "agent:", path)
        tree.start("sh", "-ec", START, "-", group, agent=False, HOME=HOME, XDG_RUNTIME_DIR=RUNTIME,
                   NOTIFY_SOCKET=path)
        notices.settimeout(LIMIT)
        while b"READY=1" not in notices.recv(1 << 12):
            pass


def end_group(tree, group):
    """Kills what is left in a control group, and removes it."""
    with open(tree.path(group) + "/cgroup.events", encoding="ascii") as events:
        tree.run("sh", "-c", 'echo 1 > "$1/cgroup.kill"', "-", group)
        change = select.poll()
        change.register(events, select.POLLPRI)
        while "populated 0" not in events.read():
            assert change.poll(LIMIT * 1000), f"{group} is not left"
            events.seek(0)
    tree.run("find", group, "-depth", "-type", "d", "-exec", "rmdir", "{}", ";")
