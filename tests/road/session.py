"""A random session: links of all kinds by all roads, while programs start, take over, end and are
killed. Each link is accounted for once, by its log lines and its page, as the model has it."""

import collections
import os
import re
import signal
import types
from random import Random

from model import expect, fatal_link, fits_command_line, random_link
from processes import END_SIGNALS, SILENCE, log_message, wait_for_end

MOST_LISTENERS = 5
# The kinds of steps: how often they are taken, and how many listeners they need.
STEPS = {"follow": (15, 0), "take_over": (3, 0), "end": (2, 1), "end_with_queue": (1, 1),
         "kill_with_queue": (1, 1), "kill_in_the_middle": (1, 1), "kill_before_followers": (1, 2),
         "burst": (2, 1)}

BEHIND_FATAL = "behind a link that ends the program"
KILLED_UNREAD = "unread by a program that was killed, and refused to the sender"
KILLED_ANSWERED = "answered by a program that was killed before it acted"


def reported(link):
    """How the page of a link is reported, if it is opened: all but those of the web go to
    `gio open`."""
    page = expect(link).opened
    return page if not page or re.match("https?:", page, re.IGNORECASE) else "open " + page


class Session:
    """On a desktop whose bus starts the program with -jsonlog, of which each message is a line."""

    def __init__(self, desktop):
        self._desktop = desktop
        self._pages = desktop.quick_pages()
        self._path = desktop.folder + "/openers"
        desktop.set_service_environment(PATH=self._path)
        # The newest is the last. `process` is None for one that the bus started.
        self._listeners = []
        self._sent = 0
        self.fates = collections.Counter()

    def run(self, steps):
        """Takes steps, each of which is a kind and a seed."""
        for kind, seed in steps:
            self._random = Random(seed)
            if len(self._listeners) >= STEPS[kind][1]:
                getattr(self, kind)()
        while self._listeners:
            self._end(self._listeners[-1], signal.SIGTERM)
        assert self._pages.now() == []
        assert sum(self.fates.values()) == self._sent

    # The steps.

    def follow(self):
        """Follows links by one call or one command line; one of them may end the program."""
        by_bus = self._random.random() < 0.7
        links = self._make_links(self._random.choice([1, 1, 1, 2, 5]),
                                 (lambda link: True) if by_bus else fits_command_line)
        if self._random.random() < 0.1:
            links.insert(self._random.randint(0, len(links)),
                         fatal_link(self._random, self._next_number()))
        if by_bus:
            self._desktop.open(*links)
        else:
            self._finish_followers([self._desktop.start(*links)])
        self._expect_followed(links)

    def take_over(self):
        if len(self._listeners) < MOST_LISTENERS:
            process = self._desktop.listen("-jsonlog", PATH=self._path)
            self._listeners.append(types.SimpleNamespace(
                process=process, pid=process.pid, log=process))

    def end(self):
        """Ends one of the programs while it rests."""
        self._end(self._random.choice(self._listeners),
                  self._random.choice([*END_SIGNALS, signal.SIGKILL]))

    def end_with_queue(self):
        """Asks the program to end while links wait for it: it still opens them."""
        listener = self._listeners[-1]
        links, answers = self._queue(listener)
        os.kill(listener.pid, self._random.choice(END_SIGNALS))
        os.kill(listener.pid, signal.SIGCONT)
        listener.log.expect_log(*links)
        self._expect_opened(links)
        self._expect_answers(answers, refused=False)
        self._expect_end(listener, 0)

    def kill_with_queue(self):
        """Kills the program while links wait for it: their senders are told."""
        listener = self._listeners[-1]
        links, answers = self._queue(listener)
        os.kill(listener.pid, signal.SIGKILL)
        self._expect_answers(answers, refused=True)
        self._expect_end(listener, -signal.SIGKILL)
        self.fates[KILLED_UNREAD] += len(links)

    def kill_in_the_middle(self):
        """Kills the program while it handles links. They are handled in their order up to one of
        them, and nothing is opened whose sender was refused, who may follow it again."""
        if not self._listeners[-1].process:
            return  # Its lines are among others'.
        listener = self._listeners[-1]
        links = self._make_links(10)
        answers = self._desktop.call_open(*links)
        os.kill(listener.pid, signal.SIGKILL)
        log = [log_message(line) for line in listener.process.finish().output.split("\n")
               if line.endswith("}")]
        self._desktop.wait_until(lambda: all(answers))
        self._expect_end(listener, -signal.SIGKILL)
        self._desktop.wait_for_orphans(*(each.pid for each in self._listeners))
        opened = self._pages.now()
        with_page = [*filter(None, map(reported, links))]
        # Handlers that were started in turn may report out of turn.
        assert sorted(opened) == sorted(with_page[:len(opened)])
        self._count_killed(links, answers, opened, log)

    def kill_before_followers(self):
        """Kills the program while processes hand links over to it: the next program has them."""
        listener = self._listeners[-1]
        os.kill(listener.pid, signal.SIGSTOP)
        links = self._make_links(5, fits_command_line)
        followers = [self._desktop.start(link) for link in links]
        os.kill(listener.pid, signal.SIGKILL)
        self._expect_end(listener, -signal.SIGKILL)
        self._expect_crowd(links)
        self._finish_followers(followers)

    def burst(self):
        """Follows links at once, by calls and by command lines."""
        links = self._make_links(10, fits_command_line)
        followers = [self._desktop.start(link) for link in links[:4]]
        answers = self._desktop.call_open(*links[4:])
        self._expect_crowd(links)
        self._finish_followers(followers)
        self._expect_answers(answers, refused=False)

    # Links.

    def _next_number(self):
        self._sent += 1
        return self._sent

    def _make_links(self, count, fits=lambda link: True):
        links = []
        while len(links) < count:
            link = random_link(self._random, self._sent + 1)
            if fits(link):
                links.append(link)
                self._next_number()
        return links

    def _queue(self, listener):
        """Follows links that wait for a program that is stopped."""
        os.kill(listener.pid, signal.SIGSTOP)
        # After the signal to end, the program has little time for a log that its pipe cannot hold.
        links = self._make_links(self._random.randint(1, 5), lambda link: len(link) < 3000)
        return links, self._desktop.call_open(*links)

    def _finish_followers(self, followers):
        for follower in followers:
            assert follower.finish() == SILENCE
            self._desktop.forget(follower)

    # What comes of them.

    def _expect_answers(self, answers, refused):
        self._desktop.wait_until(lambda: all(answers))
        assert all((error is not None) == refused for (error,) in answers)

    def _expect_followed(self, links):
        """What one call with these links does."""
        fatal = next((i for i, link in enumerate(links) if expect(link).fatal), len(links))
        handled = links[:fatal + 1]
        if self._listeners:
            self._listeners[-1].log.expect_log(*handled)
        self._expect_opened(handled)
        self.fates[BEHIND_FATAL] += len(links) - len(handled)
        if fatal == len(links):
            if not self._listeners:
                # The links that started it wrote no log lines.
                self._desktop.daemon.banner()
                self._listeners.append(types.SimpleNamespace(
                    process=None, pid=self._desktop.owner(), log=self._desktop.daemon))
        elif self._listeners:
            self._expect_end(self._listeners[-1], 70)
        else:
            self._desktop.wait_for_owner(None)

    def _expect_crowd(self, links):
        """The log lines and pages of links of which nobody knows the order."""
        lines = self._listeners[-1].log.output
        left = {expect(link).messages[1]: expect(link).messages for link in links}
        while left:
            first, text = (log_message(lines.next()) for _ in range(2))
            messages = left.pop(text)
            assert messages == [first, text, *(log_message(lines.next()) for _ in messages[2:])]
        self._expect_opened(links)

    def _expect_opened(self, links):
        opened = [*filter(None, map(reported, links))]
        assert sorted(self._pages.next() for _ in opened) == sorted(opened)
        self._count(len(links), len(opened))

    def _count(self, links, opened):
        self.fates["opened"] += opened
        self.fates["logged, with nothing to open"] += links - opened

    def _count_killed(self, links, answers, opened, log):
        for link, (error,) in zip(links, answers):
            if reported(link) in opened:
                assert error is None
                self._count(1, 1)
            elif error:
                self.fates[KILLED_UNREAD] += 1
            elif not expect(link).opened and f"process uri: {link}" in log:
                self._count(1, 0)
            else:
                self.fates[KILLED_ANSWERED] += 1

    def _end(self, listener, number):
        os.kill(listener.pid, number)
        self._expect_end(listener, -number if number == signal.SIGKILL else 0)

    def _expect_end(self, listener, status):
        """Waits for the end of a program that has nothing more to say, and for the next owner."""
        self._listeners.remove(listener)
        if listener.process:
            assert listener.process.finish() == ("", "", status)
            self._desktop.forget(listener.process)
        else:
            wait_for_end(listener.pid)
        self._desktop.wait_for_owner(self._listeners[-1].pid if self._listeners else None)
