"""Random sessions, in which each link is accounted for, and readers of the log that stall. With
CONNECT_SOAK in the environment, which is a number of seconds or of stalls, that long, with new seeds
and with figures: dev/soak does it."""

import collections
import os
import secrets
import time
from random import Random

from desktop import SERVICE
from session import STEPS, Session
from stalls import Stalls

SOAK = int(os.environ.get("CONNECT_SOAK", "0"))


def print_counts(what, counts):
    print(f"\n{what}")
    for fate, count in counts.most_common():
        print(f"{count:10,} links {fate}")


def test_a_random_session_accounts_for_each_link(new_desktop):
    fates, sessions, start = collections.Counter(), 0, time.monotonic()
    while sessions < 3 or time.monotonic() - start < SOAK:
        sessions += 1
        random = Random(secrets.randbits(32) if SOAK else sessions)
        # Each has a seed of its own: whoever looks for a fault may leave steps out.
        kinds = random.choices([*STEPS], [often for often, _ in STEPS.values()], k=100)
        steps = [(kind, random.randrange(1000)) for kind in kinds]
        session = Session(new_desktop(service=SERVICE + " -jsonlog"))
        try:
            session.run(steps)
        except BaseException:
            print(f"\nthe steps are {steps}")
            raise
        fates += session.fates
    print_counts(f"{sessions} sessions in {time.monotonic() - start:.0f} s", fates)


def test_what_links_are_told_while_readers_of_the_log_stall_is_true(new_desktop):
    random = Random(secrets.randbits(32) if SOAK else 9)
    seeds = [random.randrange(1000) for _ in range(SOAK or 20)]
    print(f"\nthe seeds are {seeds}")
    told = Stalls(new_desktop(service=SERVICE + " -log")).run(seeds)
    print_counts(f"{len(seeds):,} stalls", told)
    assert len(told) == 3
