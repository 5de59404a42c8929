"""Many links at once, and large ones. With CONNECT_LOAD in the environment, which is a number of
links, at that size, with figures."""

import os
import threading
import time

from gi.repository import Gio, GLib

from desktop import INTERFACE, NAME, OBJECT, Desktop
from model import make_link, page_link
from processes import LIMIT
from road import RoadTestCase, descriptors, messages_of

SENDERS = 4
FULL = "CONNECT_LOAD" in os.environ
LINKS = int(os.environ.get("CONNECT_LOAD", "4000"))


def link_of(sender, number):
    return make_link({"Sender": sender, "Number": number})


def own_memory(pid):
    """The memory of a process that is no file's, in kB. Pages of a program that is not yet on a disk
    would be private or shared, as other processes of it come and go."""
    with open(f"/proc/{pid}/smaps_rollup", encoding="ascii") as file:
        return next(int(line.split()[1]) for line in file if line.startswith("Anonymous:"))


def cpu_time(pid):
    """The seconds that a process has computed."""
    with open(f"/proc/{pid}/schedstat", encoding="ascii") as file:
        return int(file.read().split()[0]) / 1e9


def send(address, sender, answers):
    """Follows the links of one sender as a program of its own would, each after the answer."""
    bus = Gio.DBusConnection.new_for_address_sync(
        address, Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT |
        Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)
    for number in range(LINKS // SENDERS):
        bus.call_sync(NAME, OBJECT, INTERFACE, "Open",
                      GLib.Variant("(asa{sv})", ([link_of(sender, number)], {})), None,
                      Gio.DBusCallFlags.NONE, LIMIT * 1000, None)
        answers[sender] += 1


class LoadTest(RoadTestCase):
    def test_links_of_four_senders_are_all_handled_in_the_order_of_each(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        address = desktop.environment()["DBUS_SESSION_BUS_ADDRESS"]
        answers = [0] * SENDERS
        threads = [threading.Thread(target=send, args=(address, sender, answers), daemon=True)
                   for sender in range(SENDERS)]
        start = time.monotonic()
        for thread in threads:
            thread.start()
        handled = [0] * SENDERS
        for total in range(LINKS):
            messages = listener.messages(len(messages_of(link_of(0, 0))))
            (sender,) = [each for each in range(SENDERS)
                         if messages[1] == "process uri: " + link_of(each, handled[each])]
            handled[sender] += 1
            self.assertEqual(messages, messages_of(link_of(sender, handled[sender] - 1)))
            if total == LINKS // 10:
                before = own_memory(listener.pid)
        for thread in threads:
            thread.join(LIMIT)
        self.assertEqual((handled, answers), ([LINKS // SENDERS] * SENDERS,) * 2)
        growth = own_memory(listener.pid) - before
        if FULL:
            print(f"\n{LINKS:,} links from {SENDERS} senders in {time.monotonic() - start:.1f} s, "
                  f"none lost, memory of its own +{growth} kB after the first tenth")
        if "CONNECT_SANITIZER" not in os.environ:
            self.assertLessEqual(growth, 64)
        self.expect_silence(listener.end())

    def test_pages_that_are_opened_leave_no_memory_and_no_descriptor_behind(self):
        desktop = Desktop(self)
        listener = desktop.listen()
        opened = desktop.quick_pages()

        def follow(count):
            for _ in range(count):
                desktop.open(page_link("https://page.test/"))
                opened.next()
            desktop.wait_for_children(listener.pid)
            return own_memory(listener.pid), descriptors(listener.pid)

        follow(50)
        memory, open_before = follow(100)
        later, open_later = follow(1000)
        self.assertEqual(open_later, open_before)
        if "CONNECT_SANITIZER" not in os.environ:
            self.assertLessEqual(later - memory, 64)
        self.expect_silence(listener.end())

    def follow_large(self, text):
        """Follows a large link, and the seconds that the program computes for it."""
        before = cpu_time(self.listener.pid)
        self.desktop.open(text)
        self.expect_messages(self.listener, text)
        return cpu_time(self.listener.pid) - before

    def expect_linear(self, what, make, unit):
        """A link of eight times the size costs about eight times as much."""
        self.desktop = Desktop(self)
        self.listener = self.desktop.listen("-log")
        if not FULL:
            self.follow_large(make(unit))
        else:
            small = sum(self.follow_large(make(unit)) for _ in range(8))
            large = self.follow_large(make(8 * unit))
            print(f"\n{what}: 8 of a size cost {small:.3f} s, one of 8 times the size "
                  f"{large:.3f} s")
            # It would be 8 times as much if the cost grew with the square of the size.
            self.assertLess(large, 6 * small)
        self.expect_silence(self.listener.end())

    def test_a_huge_link_is_answered_with_its_lines(self):
        # A link is at most 64 MiB, as the texts of a message are in an array.
        self.expect_linear("links of 8 and 64 MB",
                           lambda size: make_link({"Note": "x" * (size * 3 // 4)}), 8_000_000)

    def test_deep_json_is_answered_with_its_lines(self):
        # Counted in levels.
        self.expect_linear("JSON of 100,000 and 800,000 levels",
                           lambda size: make_link('{"a":' * size + "1" + "}" * size), 100_000)
