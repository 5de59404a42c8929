"""Random sessions, in which each link is accounted for. dev/soak runs more of them."""

import unittest

from session import Session


class ModelTest(unittest.TestCase):
    def run_session(self, seed):
        session = Session(self, seed)
        session.run(steps=100)

    def test_a_random_session_accounts_for_each_link(self):
        self.run_session(1)

    def test_a_second_random_session_accounts_for_each_link(self):
        self.run_session(2)

    def test_a_third_random_session_accounts_for_each_link(self):
        self.run_session(3)


if __name__ == "__main__":
    unittest.main()
