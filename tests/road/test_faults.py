"""Faults of the machine and of other programs. Whatever happens, the next link is opened."""

import os
import signal

import pytest

from processes import SILENCE
from road import BUSY, LINK, PAGE, bulky_link, pages


def test_a_link_is_only_logged_where_no_process_can_be_started(desktop):
    # The limit is not for root.
    user, program = desktop.other_user()
    listener = desktop.listen("-log", command=(*user, program))
    desktop.expect_link(listener)
    before = listener.descriptors()

    def limit(number):
        assert desktop.spawn(*user, "prlimit", f"--pid={listener.pid}",
                             f"--nproc={number}:").finish() == SILENCE

    limit(1)
    desktop.expect_log_only(listener, 5)
    limit(1000)
    desktop.expect_recovery(listener, before)


# The handler.


@pytest.mark.parametrize("script, count", [
    ("kill -SEGV $$\n", 20), ('read line < "$HOME/end"\n', 5)], ids=["crashes", "does not end"])
def test_a_broken_handler_harms_nothing(desktop, listener, script, count):
    desktop.expect_link(listener)
    before = listener.descriptors()
    os.mkfifo(desktop.folder + "/home/end")
    desktop.install_handler(command=desktop.install_script("bin/broken", script) + " %u")
    desktop.expect_log_only(listener, count)
    desktop.install_handler()
    desktop.expect_link(listener)
    assert listener.descriptors() == before
    with open(desktop.folder + "/home/end", "r+b", buffering=0) as end:
        end.write(b"\n" * count)
        desktop.expect_recovery(listener, before)


def test_a_handler_that_is_missing_harms_nothing(desktop):
    listener = desktop.listen("-log", PATH="/nowhere")
    desktop.expect_link(listener)
    before = listener.descriptors()
    for command in ("/nowhere/browser %u", "nowhere %u", "/etc/passwd %u", "/tmp %u", "%u", " "):
        desktop.install_handler(command=command)
        desktop.expect_log_only(listener)
        desktop.install_handler()
        desktop.expect_recovery(listener, before)


# The reader of the log.


STUCK = bulky_link(100_000)


@pytest.fixture
def stuck(desktop, listener):
    """A program that waits for the reader of its log, and a process that hands a link over to it. The
    process has waited for the two seconds that the library would have given it."""
    desktop.open(STUCK)
    follower = desktop.start(LINK, SYSTEMD_BUS_TIMEOUT="2s")
    assert follower.errors.next() == BUSY
    return follower


def test_a_link_waits_for_a_program_whose_log_reader_is_stuck(desktop, listener, stuck):
    ended = desktop.start(LINK)
    assert ended.errors.next() == BUSY
    assert ended.end() == ("", "", -signal.SIGTERM)
    # That of the ended process has arrived as well, and is opened once.
    listener.expect_log(STUCK, LINK, LINK)
    assert stuck.finish() == SILENCE
    assert desktop.opened_all(3) == [PAGE] * 3


def test_a_link_that_waits_when_the_bus_ends_is_opened_once_at_most(desktop, listener, stuck):
    desktop.kill_bus()
    assert stuck.finish() == (
        "", "vastel-connect: the session bus is gone: the link may have been opened, or not\n", 1)
    listener.expect_log(STUCK)
    output, _, status = listener.finish()
    assert status == 1
    # Whether the program still reads it is for the bus' library, but nobody else opens it.
    count = 1 + output.count("> webpage: ")
    assert desktop.opened_all(count) == [PAGE] * count


# The bus.


def test_a_bus_that_is_started_again_starts_the_program_again(desktop):
    for page in pages(3):
        listener = desktop.listen("-log")
        desktop.expect_link(listener, page)
        desktop.kill_bus()
        assert listener.finish() == ("", "vastel-connect: the session bus is gone\n", 1)
        desktop.start_bus()
        desktop.open(LINK)
        assert desktop.opened() == PAGE
