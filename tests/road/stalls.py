"""Readers of the log that stall and come back while links are followed. What was told of a link is
compared with how often its page is opened."""

import collections
import signal
from random import Random

from model import page_link
from processes import END_SIGNALS
from road import BUSY

TAKEN, REFUSED, UNKNOWN = "taken, and opened once", "refused, and not opened", "sender ended"


class Stalls:
    """On a desktop whose bus starts the program with -log."""

    def __init__(self, desktop):
        self._desktop = desktop
        self._pages = desktop.quick_pages()
        self._told = {}
        self._opened = collections.Counter()

    def run(self, seeds):
        """Lets the log's reader stall once for each seed. The result is what links were told."""
        for seed in seeds:
            self._stall(Random(seed))
            self._expect_opened()
        for page, number in (self._opened + collections.Counter(self._pages.now())).items():
            assert number <= (0 if self._told.get(page) == REFUSED else 1), page
        return collections.Counter(self._told.values())

    def _stall(self, random):
        listener = self._desktop.listen("-log")
        stuck, *others = (f"https://page.test/{len(self._told) + n}"
                          for n in range(random.randint(1, 7)))
        # It is answered, and then waits for the reader of its lines.
        self._desktop.open(page_link(stuck, Note="x" * 100_000))
        self._told[stuck] = TAKEN
        followers = {page: self._desktop.start(page_link(page), SYSTEMD_BUS_TIMEOUT="2s")
                     for page in others[::2]}
        calls = others[1::2]
        answers = self._desktop.call_open(*map(page_link, calls))
        # Now and then until the library would have given up.
        if followers and random.random() < 0.01:
            assert [*followers.values()][0].errors.next() == BUSY
        if followers and random.random() < 0.2:
            page, follower = followers.popitem()
            follower.end(random.choice([signal.SIGTERM, signal.SIGKILL]))
            self._desktop.forget(follower)
            self._told[page] = UNKNOWN
        match random.choices(["comes back", "ends", "is killed"], [6, 3, 2])[0]:
            case "comes back":
                while not listener.output.next().endswith("> webpage: " + stuck):
                    pass
            case "ends":
                listener.end(random.choice(END_SIGNALS))
            case "is killed":
                listener.send(signal.SIGKILL)
                self._told[stuck] = UNKNOWN
        for page, follower in followers.items():
            _, errors, status = follower.finish()
            assert (errors in ("", BUSY + "\n"), status) == (True, 0), errors
            self._desktop.forget(follower)
            self._told[page] = TAKEN
        self._desktop.wait_until(lambda: all(answers))
        for page, (error,) in zip(calls, answers):
            self._told[page] = REFUSED if error else TAKEN
        # Other programs, which the bus has started meanwhile, have no say in the next stall.
        if listener.is_running():  # A second signal would end it at once.
            listener.end()
        self._desktop.forget(listener)
        self._desktop.daemon.output.now()

    def _expect_opened(self):
        """Waits for the pages of all links that were taken."""
        missing = {page for page, told in self._told.items() if told == TAKEN} - set(self._opened)
        while missing:
            page = self._pages.next()
            self._opened[page] += 1
            missing.discard(page)
