"""A machine without memory or descriptors, one whose clock is set, one whose bus is slow, and one
whose bus library fails."""

import collections
import contextlib
import os
import resource
import signal
import time

from gi.repository import Gio, GLib

from desktop import Desktop
from model import page_link
from road import BUSY, FATAL, LINK, PAGE, RoadTestCase, descriptors, messages_of, pages

FAULTS = os.environ["CONNECT_FAULTS"]


class BrokenMachineTest(RoadTestCase):
    def follow(self, desktop, opened, failing):
        """Follows three links, while an allocation fails, and ends the program. The result is what
        was opened."""
        desktop.set_service_environment(LD_PRELOAD=FAULTS, FAULTS_ALLOCATION=str(failing))
        for page in pages(3):
            error = self.follow_once(desktop, page)
            # Whoever is told that nobody took a link may follow it again.
            for _ in range(2):
                error = error and self.follow_once(desktop, page)
            self.assertIsNone(error, f"allocation {failing}, {page}")
        # This is answered, if at all, once the program has done with the last link.
        answers = []
        desktop.call_open([], answers)
        desktop.wait_until(lambda: answers)
        desktop.end_programs()
        desktop.wait_for_orphans()
        # The programs' banners, which would fill the pipe.
        desktop.daemon.output.skip()
        return sorted(opened.now())

    def allocations(self, path, least):
        """How many a program counted that has ended."""
        with open(path, encoding="ascii") as file:
            count = int(file.read())
        self.assertGreater(count, least)
        return count

    def follow_once(self, desktop, page):
        answers = []
        desktop.call_open([page_link(page)], answers)
        desktop.wait_until(lambda: answers)
        if answers[0]:
            self.assertFalse(answers[0].matches(Gio.io_error_quark(), Gio.IOErrorEnum.TIMED_OUT),
                             "neither taken nor refused")
        # Only the first program that is started has the fault.
        desktop.set_service_environment(FAULTS_ALLOCATION="0")
        return answers[0]

    def test_one_failing_allocation_costs_one_link_at_most(self):
        desktop = Desktop(self)
        opened = desktop.quick_pages()
        count = desktop.folder + "/count"
        desktop.set_service_environment(FAULTS_COUNT=count)
        self.assertEqual(self.follow(desktop, opened, 0), pages(3))
        for failing in range(1, self.allocations(count, 200) + 1):
            found = self.follow(desktop, opened, failing)
            self.assertLessEqual(set(found), set(pages(3)))
            self.assertIn(len(found), (2, 3), f"allocation {failing}: {found}")
            self.assertEqual(len(set(found)), len(found), f"allocation {failing}: {found}")

    def test_one_failing_allocation_of_a_sender_misleads_nobody(self):
        desktop = Desktop(self)
        opened = desktop.quick_pages()
        listener = desktop.listen()
        count = desktop.folder + "/count"
        self.expect_silence(desktop.run(LINK, LD_PRELOAD=FAULTS, FAULTS_COUNT=count))
        self.assertEqual(opened.next(), PAGE)
        results = {}
        for failing, page in enumerate(pages(self.allocations(count, 50)), 1):
            sender = desktop.start(page_link(page), LD_PRELOAD=FAULTS,
                                   FAULTS_ALLOCATION=str(failing))
            # Where it does not reach the bus, it is the application itself.
            with contextlib.suppress(EOFError):
                sender.banner()
                sender.send(signal.SIGTERM)
            results[page] = sender.finish()
            desktop.forget(sender)
        listener.end()
        desktop.wait_for_orphans()
        found = collections.Counter(opened.now())
        for page, result in results.items():
            fewest = 1 if result.status == 0 else 0
            most = 0 if "refused" in result.errors else 1
            self.assertTrue(fewest <= found[page] <= most, (page, found[page], result))

    def test_a_link_is_only_logged_without_descriptors(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log", PATH="/nowhere")
        self.expect_link(desktop, listener)
        before = descriptors(listener.pid)
        soft, hard = resource.prlimit(listener.pid, resource.RLIMIT_NOFILE)
        for limit in range(len(before) + 1):
            with self.subTest(limit=limit):
                resource.prlimit(listener.pid, resource.RLIMIT_NOFILE, (limit, hard))
                self.expect_log_only(desktop, listener)
                resource.prlimit(listener.pid, resource.RLIMIT_NOFILE, (soft, hard))
                self.expect_recovery(desktop, listener, before)

    def test_a_clock_that_is_set_is_the_clock_of_the_log(self):
        desktop = Desktop(self)
        clock = desktop.folder + "/clock"
        listener = None
        # Among them a 1st of January that belongs to the last week of the year before.
        for seconds in (1_900_000_000, 0, 4_102_444_799, 951_782_399, 1_798_804_800, 1_900_000_001):
            with open(clock, "w", encoding="ascii") as file:
                file.write(str(seconds))
            listener = listener or desktop.listen("-jsonlog", LD_PRELOAD=FAULTS, FAULTS_CLOCK=clock)
            desktop.open(LINK)
            for _ in messages_of(LINK):
                self.assertIn(time.strftime("%Y-%m-%dT%H:%M:%S%z", time.localtime(seconds)),
                              listener.output.next())
            desktop.opened()

    def test_a_link_is_answered_before_it_is_carried_out_however_slow_the_bus_is(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log", LD_PRELOAD=FAULTS, FAULTS_SLOW_BUS="1")
        self.expect_link(desktop, listener)
        answers = []
        desktop.call_open([FATAL], answers)
        desktop.wait_until(lambda: answers)
        self.assertEqual(answers, [None])
        self.assertEqual(listener.finish().status, 70)

    # The bus library.

    def test_a_program_that_cannot_wait_for_its_signals_is_ended_by_them(self):
        desktop = Desktop(self)
        listener = desktop.listen(LD_PRELOAD=FAULTS, FAULTS_FUNCTION="sd_event_add_signal")
        self.assertEqual(listener.end().status, -signal.SIGTERM)

    def test_an_event_loop_that_fails_ends_the_program_which_says_so(self):
        desktop = Desktop(self)
        result = desktop.run(LD_PRELOAD=FAULTS, FAULTS_FUNCTION="sd_event_loop")
        self.assertEqual((result.errors, result.status),
                         ("vastel-connect: the event loop has failed\n", 1))

    def test_a_bus_that_does_not_give_the_name_is_none(self):
        desktop = Desktop(self)
        for arguments in ((), ("--dbus-service",)):
            result = desktop.run(*arguments, LD_PRELOAD=FAULTS,
                                 FAULTS_FUNCTION="sd_bus_request_name")
            self.assertEqual((result.errors, result.status), (
                "vastel-connect: no session bus, so no link can arrive\n", 1))

    def test_a_link_that_cannot_be_sent_is_refused(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        result = desktop.run(LINK, LD_PRELOAD=FAULTS, FAULTS_FUNCTION="sd_bus_call_async")
        self.assertEqual((result.errors, result.status), (
            "vastel-connect: the link was refused: the bus does not carry it\n", 1))
        self.expect_silence(listener.end())

    def test_a_link_that_cannot_be_answered_is_not_opened(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log", LD_PRELOAD=FAULTS,
                                  FAULTS_FUNCTION="sd_bus_reply_method_return")
        for method, parameters in (("Open", GLib.Variant("(asa{sv})", ([LINK], {}))),
                                   ("Activate", GLib.Variant("(a{sv})", ({},)))):
            with self.assertRaises(GLib.Error):
                desktop.call(method, parameters)
        self.expect_silence(listener.end())

    def test_whoever_waits_for_a_busy_program_is_told_once(self):
        desktop = Desktop(self)
        listener = desktop.listen()
        listener.send(signal.SIGSTOP)
        follower = desktop.start(LINK, LD_PRELOAD=FAULTS, FAULTS_FUNCTION="sd_bus_wait")
        self.assertEqual(follower.errors.next(), BUSY)
        listener.send(signal.SIGCONT)
        self.expect_silence(follower.finish())
        self.assertEqual(desktop.opened(), PAGE)
