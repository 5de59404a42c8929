"""Many links at once, and large ones. With CONNECT_LOAD in the environment, which is a number of
links, at that size, with figures."""

import concurrent.futures
import os
import time

import pytest
from gi.repository import Gio, GLib

from desktop import INTERFACE, NAME, OBJECT
from model import make_link, page_link
from processes import LIMIT, SILENCE, messages_of

SENDERS = 4
FULL = "CONNECT_LOAD" in os.environ
LINKS = int(os.environ.get("CONNECT_LOAD", "4000"))


def link_of(sender, number):
    return make_link({"Sender": sender, "Number": number})


def own_memory(pid):
    """The memory of a process that is no file's, in kB. Pages of a program that is not yet on a disk
    would be private or shared, as other processes of it come and go."""
    if "CONNECT_SANITIZER" in os.environ:
        return 0
    with open(f"/proc/{pid}/smaps_rollup", encoding="ascii") as file:
        return next(int(line.split()[1]) for line in file if line.startswith("Anonymous:"))


def cpu_time(pid):
    """The seconds that a process has computed."""
    with open(f"/proc/{pid}/schedstat", encoding="ascii") as file:
        return int(file.read().split()[0]) / 1e9


def send(address, sender):
    """Follows the links of one sender as a program of its own would, each after the answer."""
    bus = Gio.DBusConnection.new_for_address_sync(
        address, Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT |
        Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)
    for number in range(LINKS // SENDERS):
        bus.call_sync(NAME, OBJECT, INTERFACE, "Open",
                      GLib.Variant("(asa{sv})", ([link_of(sender, number)], {})), None,
                      Gio.DBusCallFlags.NONE, LIMIT * 1000, None)


def test_links_of_four_senders_are_all_handled_in_the_order_of_each(desktop, listener):
    address = desktop.environment()["DBUS_SESSION_BUS_ADDRESS"]
    start = time.monotonic()
    handled = [0] * SENDERS
    with concurrent.futures.ThreadPoolExecutor(SENDERS) as pool:
        sending = pool.map(send, [address] * SENDERS, range(SENDERS))
        for total in range(LINKS):
            messages = listener.messages(len(messages_of(link_of(0, 0))))
            (sender,) = [each for each in range(SENDERS)
                         if messages[1] == "process uri: " + link_of(each, handled[each])]
            assert messages == messages_of(link_of(sender, handled[sender]))
            handled[sender] += 1
            if total == LINKS // 10:
                before = own_memory(listener.pid)
        assert not any(sending)  # None has failed.
    growth = own_memory(listener.pid) - before
    if FULL:
        print(f"\n{LINKS:,} links from {SENDERS} senders in {time.monotonic() - start:.1f} s, "
              f"none lost, memory of its own +{growth} kB after the first tenth")
    assert growth <= 64
    assert listener.end() == SILENCE


def test_pages_that_are_opened_leave_no_memory_and_no_descriptor_behind(desktop):
    listener = desktop.listen()
    opened = desktop.quick_pages()

    def follow(count):
        for _ in range(count):
            desktop.open(page_link("https://page.test/"))
            opened.next()
        desktop.wait_for_children(listener.pid)
        return own_memory(listener.pid), listener.descriptors()

    follow(50)
    memory, open_before = follow(100)
    later, open_later = follow(1000)
    assert open_later == open_before
    assert later - memory <= 64
    assert listener.end() == SILENCE


@pytest.mark.parametrize("make, unit", [
    # A link is at most 64 MiB, as the texts of a message are in an array.
    (lambda size: make_link({"Note": "x" * (size * 3 // 4)}), 8_000_000),
    (lambda levels: make_link('{"a":' * levels + "1" + "}" * levels), 100_000)],
    ids=["huge", "deep"])
def test_a_huge_link_is_answered_with_its_lines(desktop, listener, make, unit):
    def follow(size):
        """The seconds that the program computes for a link."""
        before = cpu_time(listener.pid)
        desktop.open(make(size))
        listener.expect_log(make(size))
        return cpu_time(listener.pid) - before

    small = sum(follow(unit) for _ in range(8 if FULL else 1))
    if FULL:
        large = follow(8 * unit)
        print(f"\n8 of size {unit:,} cost {small:.3f} s, one of 8 times the size {large:.3f} s")
        # It would be 8 times as much if the cost grew with the square of the size.
        assert large < 6 * small
    assert listener.end() == SILENCE
