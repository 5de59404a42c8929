"""Configuring, on a machine that refuses namespaces."""

import os
import subprocess
import tempfile
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
LIMIT = 60

# As util-linux' own, refused with --map-auto: it fails, and a child of it keeps the output open.
UNSHARE = """#!/bin/sh
echo "$*" >> {0}/calls
sleep infinity &
echo $! >> {0}/children
exit 1
"""
MOUNT = """#!/bin/sh
echo "$*" >> {0}/calls
exit 1
"""


class Configuring(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="connect-test-")
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        for name, script in ("unshare", UNSHARE), ("mount", MOUNT):
            with open(f"{self.folder}/{name}", "w", encoding="utf-8") as file:
                file.write(script.format(self.folder))
            os.chmod(f"{self.folder}/{name}", 0o755)
        self.addCleanup(self.end_children)

    def end_children(self):
        for pid in self.lines("children"):
            os.kill(int(pid), 9)

    def lines(self, name):
        path = f"{self.folder}/{name}"
        if not os.path.exists(path):
            return []
        with open(path, encoding="utf-8") as file:
            return file.read().splitlines()

    def test_asks_nothing_of_the_machine(self):
        environment = {**os.environ, "PATH": f"{self.folder}:{os.environ['PATH']}"}
        with subprocess.Popen(["cmake", "-S", ROOT, "-B", self.folder + "/build", "-G", "Ninja",
                               "-DCONNECT_TESTS=all"], env=environment,
                              stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL) as process:
            try:
                self.assertEqual(process.wait(LIMIT), 0)
            finally:
                process.kill()
        self.assertEqual(self.lines("calls"), [])
