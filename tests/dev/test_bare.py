"""What dev/bare says when it makes no system, and what it leaves behind."""

import os
import subprocess
import tempfile
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
SYSTEMS = ROOT + "/build/bare"
LIMIT = 100


class Bare(unittest.TestCase):
    def expect_failure(self, *arguments, errors, status, **environment):
        before = os.listdir(SYSTEMS) if os.path.exists(SYSTEMS) else []
        with tempfile.TemporaryDirectory(prefix="connect-test-") as folder:
            # The system's own users pass through it when it is made and removed.
            os.chmod(folder, 0o755)
            done = subprocess.run([ROOT + "/dev/bare", *arguments], timeout=LIMIT, check=False,
                                  env={**os.environ, "TMPDIR": folder, **environment},
                                  stdin=subprocess.DEVNULL, capture_output=True, encoding="utf-8")
            self.assertEqual(os.listdir(folder), [])
        self.assertRegex(done.stderr, rf"\A{errors}\n\Z")
        self.assertEqual(done.returncode, status)
        self.assertEqual(os.listdir(SYSTEMS) if os.path.exists(SYSTEMS) else [], before)

    def test_wants_a_suite_and_a_command(self):
        self.expect_failure("bookworm", errors="usage: dev/bare SUITE COMMAND .*", status=2)

    def test_knows_no_such_suite(self):
        self.expect_failure("no-such-suite", "true", status=1,
                            errors="dev/bare: no system of the suite no-such-suite can be made: .*")

    def test_says_that_namespaces_are_refused(self):
        with tempfile.TemporaryDirectory(prefix="connect-test-") as folder:
            with open(folder + "/unshare", "w", encoding="utf-8") as file:
                file.write("#!/bin/sh\necho Not permitted >&2\nexit 1\n")
            os.chmod(folder + "/unshare", 0o755)
            self.expect_failure("bookworm", "true", status=77,
                                errors="This machine refuses namespaces: .*",
                                PATH=f"{folder}:{os.environ['PATH']}")
