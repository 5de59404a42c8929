"""Runs random sessions with new seeds for so many seconds, and prints figures: soak.py SECONDS"""

import collections
import secrets
import sys
import time
import unittest

from session import Session


class SoakTest(unittest.TestCase):
    seconds = 0

    def test_random_sessions(self):
        fates, sessions, start = collections.Counter(), 0, time.monotonic()
        while time.monotonic() - start < self.seconds:
            seed = secrets.randbits(32)
            print(f"\rsession {sessions + 1}, seed {seed:<12}", end="", flush=True)
            case = SessionCase(seed)
            result = case.run()
            for _, text in result.errors + result.failures:
                self.fail(text[:5000])
            fates += case.fates
            sessions += 1
        print(f"\n{sessions} sessions in {time.monotonic() - start:.0f} s")
        print(f"{sum(fates.values()):10,} links followed")
        for fate, count in fates.most_common():
            print(f"{count:10,} {fate}")


class SessionCase(unittest.TestCase):
    """One session, on a desktop of its own."""

    def __init__(self, seed):
        super().__init__()
        self._seed = seed

    def runTest(self):
        session = Session(self, self._seed)
        session.run(steps=200)
        self.fates = session.fates


if __name__ == "__main__":
    SoakTest.seconds = float(sys.argv.pop(1))
    unittest.main(argv=[sys.argv[0], "SoakTest"])
