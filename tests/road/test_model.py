"""Random sessions, in which each link is accounted for. dev/soak runs more of them."""

import unittest

from session import Session
from stalls import Stalls


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

    def test_what_links_are_told_while_readers_of_the_log_stall_is_true(self):
        told = Stalls(self, seed=1).run(20)
        self.assertEqual(len(told), 3)
