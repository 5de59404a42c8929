"""Faults of the machine and of other programs. Whatever happens, the next link is opened."""

import contextlib
import os
import re
import signal

from desktop import PROGRAM, Desktop
from processes import children, wait_for_end
from road import BUSY, LINK, PAGE, RoadTestCase, bulky_link, descriptors, messages_of, pages


class FaultsTest(RoadTestCase):
    # No processes.

    def test_a_link_is_only_logged_where_no_process_can_be_started(self):
        # The limit is not for root.
        self.addCleanup(os.umask, os.umask(0o022))
        desktop = Desktop(self)
        user, program = desktop.other_user()
        listener = desktop.spawn(*user, program, "-log")
        listener.banner()
        desktop.wait_for_owner(listener.pid)
        self.expect_link(desktop, listener)
        before = descriptors(listener.pid)

        with open(f"/proc/{listener.pid}/limits", encoding="ascii") as file:
            before_limit = re.search(r"^Max processes +(\w+)", file.read(), re.MULTILINE)[1]

        def limit(number):
            self.expect_silence(desktop.spawn(*user, "prlimit", f"--pid={listener.pid}",
                                              f"--nproc={number}:").finish())

        limit(1)
        for _ in range(5):
            self.expect_log_only(desktop, listener)
        limit(before_limit)
        self.expect_recovery(desktop, listener, before)

    # The handler.

    def expect_recovery_from_handler(self, script, count=20):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        self.expect_link(desktop, listener)
        before = descriptors(listener.pid)
        desktop.install_handler(command=desktop.install_script("bin/broken", script) + " %u")
        self.expect_log_only(desktop, listener, count)
        desktop.install_handler()
        self.expect_link(desktop, listener)
        return desktop, listener, before

    def test_a_handler_that_crashes_harms_nothing(self):
        desktop, listener, before = self.expect_recovery_from_handler("kill -SEGV $$\n")
        self.expect_recovery(desktop, listener, before)

    def test_a_handler_that_fails_harms_nothing(self):
        desktop, listener, before = self.expect_recovery_from_handler("exit 1\n")
        self.expect_recovery(desktop, listener, before)

    def test_a_handler_that_never_ends_harms_nothing(self):
        desktop, listener, before = self.expect_recovery_from_handler("kill -STOP $$\n", count=5)
        self.assertEqual(descriptors(listener.pid), before)
        while found := children(listener.pid):
            for pid in found:
                with contextlib.suppress(ProcessLookupError):  # The one that opened may have ended.
                    os.kill(pid, signal.SIGKILL)
            wait_for_end(found[0])
        self.expect_recovery(desktop, listener, before)

    def test_a_handler_that_is_missing_harms_nothing(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log", PATH="/nowhere")
        self.expect_link(desktop, listener)
        before = descriptors(listener.pid)
        for command in ("/nowhere/browser %u", "nowhere %u", "/etc/passwd %u", "/tmp %u", "%u", ""):
            with self.subTest(command=command):
                desktop.install_handler(command=command or " ")
                self.expect_log_only(desktop, listener)
                desktop.install_handler()
                self.expect_recovery(desktop, listener, before)

    # The reader of the log.

    def listen_and_stick(self, desktop):
        """Starts a program, and follows a link whose log lines its reader does not take."""
        listener = desktop.listen("-log")
        link = bulky_link(100_000)
        desktop.open(link)
        return listener, link

    def follow_busy(self, desktop, link):
        """Follows a link, for which the library has two seconds, and waits until it is busy."""
        follower = desktop.start(link, SYSTEMD_BUS_TIMEOUT="2s")
        self.assertEqual(follower.errors.next(), BUSY)
        return follower

    def test_a_link_waits_for_a_program_whose_log_reader_is_stuck(self):
        desktop = Desktop(self)
        listener, stuck = self.listen_and_stick(desktop)
        follower = self.follow_busy(desktop, LINK)
        self.expect_messages(listener, stuck, LINK)
        self.expect_silence(follower.finish())
        self.assertEqual(desktop.opened_all(2), [PAGE, PAGE])

    def test_a_link_that_waits_for_a_program_which_is_killed_goes_to_the_next(self):
        desktop = Desktop(self)
        listener, _ = self.listen_and_stick(desktop)
        follower = self.follow_busy(desktop, LINK)
        listener.send(signal.SIGKILL)
        self.expect_silence(follower.finish())
        self.assertEqual(desktop.opened(), PAGE)

    def test_a_link_whose_sender_is_ended_while_it_waits_is_opened_once(self):
        desktop = Desktop(self)
        listener, stuck = self.listen_and_stick(desktop)
        follower = self.follow_busy(desktop, LINK)
        result = follower.end()
        self.assertEqual((result.errors, result.status), ("", -signal.SIGTERM))
        self.expect_messages(listener, stuck, LINK)
        self.assertEqual(desktop.opened_all(2), [PAGE, PAGE])

    def test_a_link_that_waits_when_the_bus_ends_is_opened_once_at_most(self):
        desktop = Desktop(self)
        listener, stuck = self.listen_and_stick(desktop)
        follower = self.follow_busy(desktop, LINK)
        desktop.kill_bus()
        result = follower.finish()
        self.assertEqual((result.errors, result.status), (
            "vastel-connect: the session bus is gone: the link may have been opened, or not\n", 1))
        self.expect_messages(listener, stuck)
        log = listener.finish()
        # Whether the program still reads it is for the bus' library, but nobody else opens it.
        count = 1 + log.output.count("> webpage: ")
        self.assertEqual(desktop.opened_all(count), [PAGE] * count)
        self.assertEqual(log.status, 1)

    # The bus.

    def test_a_bus_that_is_started_again_starts_the_program_again(self):
        desktop = Desktop(self)
        for page in pages(3):
            listener = desktop.listen("-log")
            self.expect_link(desktop, listener, page)
            desktop.kill_bus()
            self.assertEqual(listener.finish().status, 1)
            desktop.start_bus()
            desktop.open(LINK)
            self.assertEqual(desktop.opened(), PAGE)

    # The zone.

    def test_the_log_follows_a_change_of_the_users_zone(self):
        desktop = Desktop(self, TZ=None)
        namespaces = ["unshare", "--user", "--map-root-user", "--mount"]
        if desktop.spawn(*namespaces, "true").finish().status != 0:
            self.skipTest("namespaces are refused")
        zone = desktop.folder + "/localtime"

        def move_to(name, seconds):
            with open("/usr/share/zoneinfo/" + name, "rb") as source, open(zone, "wb") as target:
                target.write(source.read())
            # A zone that was changed within a second is not noticed.
            os.utime(zone, (seconds, seconds))

        move_to("Asia/Kathmandu", 0)
        listener = desktop.spawn(*namespaces, "/bin/sh", "-c",
                                 f'mount --bind {zone} /etc/localtime && exec "$0" -jsonlog',
                                 PROGRAM)
        listener.banner()
        desktop.wait_for_owner(listener.pid)
        zones = (("Asia/Kathmandu", "+0545"), ("America/Caracas", "-0400"), ("Etc/UTC", "+0000"),
                 ("Asia/Kathmandu", "+0545"))
        for second, (name, offset) in enumerate(zones, 1):
            move_to(name, second)
            desktop.open(LINK)
            for message in messages_of(LINK):
                line = listener.output.next()
                self.assertIn(offset + '","event"', line)
                self.assertIn(message.partition(":")[0], line)
            self.assertEqual(desktop.opened(), PAGE)
