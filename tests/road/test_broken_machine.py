"""A machine without memory or descriptors, one whose clock is set, one whose bus is slow, and one
whose bus library fails; links for which memory does not do; and what a crash leaves."""

import collections
import contextlib
import datetime
import os
import resource
import signal
import zoneinfo

import pytest
from gi.repository import Gio, GLib

from desktop import PROGRAM
from model import page_link
from processes import SILENCE, messages_of, status_of
from road import BUS_BUSY, BUSY, FATAL, LINK, PAGE, bulky_link, pages

FAULTS = os.environ["CONNECT_FAULTS"]


def fails(function):
    """The environment of a program for which a function of the bus library fails."""
    return {"LD_PRELOAD": FAULTS, "FAULTS_FUNCTION": function}


def allocations(path, least):
    """How many a program counted that has ended."""
    with open(path, encoding="ascii") as file:
        count = int(file.read())
    assert count > least
    return count


def follow_once(desktop, link):
    """The error, if any."""
    answers = desktop.call_open(link)
    desktop.wait_until(lambda: all(answers))
    ((error,),) = answers
    assert not (error and error.matches(Gio.io_error_quark(), Gio.IOErrorEnum.TIMED_OUT)), \
        "neither taken nor refused"
    # Only the first program that is started has the fault.
    desktop.set_service_environment(FAULTS_ALLOCATION="0")
    return error


def follow(desktop, opened, failing):
    """Follows three links, while an allocation fails, and ends the program. The result is what was
    opened."""
    desktop.set_service_environment(LD_PRELOAD=FAULTS, FAULTS_ALLOCATION=str(failing))
    for link in map(page_link, pages(3)):
        # Whoever is told that nobody took a link may follow it again.
        assert any(follow_once(desktop, link) is None for _ in range(3)), (failing, link)
    # This is answered, if at all, once the program has done with the last link.
    follow_once(desktop, "x:")
    desktop.end_programs()
    desktop.wait_for_orphans()
    # The programs' banners, which would fill the pipe.
    desktop.daemon.output.now()
    return sorted(opened.now())


def test_one_failing_allocation_costs_one_link_at_most(desktop):
    opened = desktop.quick_pages()
    count = desktop.folder + "/count"
    desktop.set_service_environment(FAULTS_COUNT=count)
    assert follow(desktop, opened, 0) == pages(3)
    for failing in range(1, allocations(count, 200) + 1):
        found = follow(desktop, opened, failing)
        assert set(found) <= set(pages(3)), failing
        assert 2 <= len(found) == len(set(found)), failing


def test_one_failing_allocation_of_a_sender_misleads_nobody(desktop):
    opened = desktop.quick_pages()
    listener = desktop.listen()
    count = desktop.folder + "/count"
    assert desktop.run(LINK, LD_PRELOAD=FAULTS, FAULTS_COUNT=count) == SILENCE
    assert opened.next() == PAGE
    results = {}
    for failing, page in enumerate(pages(allocations(count, 50)), 1):
        sender = desktop.start(page_link(page), LD_PRELOAD=FAULTS, FAULTS_ALLOCATION=str(failing))
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
        assert fewest <= found[page] <= most, (page, result)
    assert ("", "vastel-connect: out of memory\n", 1) in results.values()


def test_a_link_is_only_logged_without_descriptors(desktop):
    listener = desktop.listen("-log", PATH="/nowhere")
    desktop.expect_link(listener)
    before = listener.descriptors()
    soft, hard = resource.prlimit(listener.pid, resource.RLIMIT_NOFILE)
    for limit in range(len(before) + 1):
        resource.prlimit(listener.pid, resource.RLIMIT_NOFILE, (limit, hard))
        desktop.expect_log_only(listener)
        resource.prlimit(listener.pid, resource.RLIMIT_NOFILE, (soft, hard))
        desktop.expect_recovery(listener, before)


def test_a_clock_that_is_set_is_the_clock_of_both_forms_of_the_log(new_desktop):
    desktop = new_desktop(TZ="America/Caracas")
    environment = {"LD_PRELOAD": FAULTS, "FAULTS_CLOCK": desktop.write("clock", "1900000000")}
    listener = desktop.listen("-jsonlog", "-log", **environment)
    # Among them a 1st of January that belongs to the last week of the year before.
    for seconds in (0, 4_102_444_799, 951_782_399, 1_798_804_800):
        desktop.write("clock", str(seconds))
        desktop.open(LINK)
        local = datetime.datetime.fromtimestamp(seconds, zoneinfo.ZoneInfo("America/Caracas"))
        for message in messages_of(LINK):
            assert listener.output.next() == local.strftime("Log %H:%M:%S> ") + message
            assert listener.output.next() == (
                local.strftime('{"datetime":"%Y-%m-%dT%H:%M:%S%z","event":"Log","message":"')
                + message + '"}')
        assert desktop.opened() == PAGE


def test_a_link_is_answered_before_it_is_carried_out_however_slow_the_bus_is(desktop):
    listener = desktop.listen("-log", LD_PRELOAD=FAULTS, FAULTS_SLOW_BUS="1")
    desktop.expect_link(listener)
    # Nobody reads its log lines yet.
    desktop.open(bulky_link(100_000))
    listener.expect_log(bulky_link(100_000))
    assert desktop.opened() == PAGE
    desktop.open(FATAL)
    assert listener.finish().status == 70


# Large links, and what a crash leaves.


MEGABYTE = 1 << 20


def size(listener, kind):
    """A figure of the program's memory, in megabytes."""
    return int(status_of(listener.pid)[kind].split()[0]) // 1024


# Where it ends: before the call is answered, while the link is decoded, and nowhere.
@pytest.mark.parametrize("megabytes, is_opened", [(30, False), (60, False), (400, True)])
def test_a_link_for_which_there_is_no_memory_costs_itself_alone(desktop, megabytes, is_opened):
    listener = desktop.listen()
    most = (size(listener, "VmSize") + megabytes) * MEGABYTE
    resource.prlimit(listener.pid, resource.RLIMIT_AS, (most, most))
    with contextlib.suppress(GLib.Error):
        desktop.open(bulky_link(20 * MEGABYTE), "x:")
    desktop.open(page_link("https://next.test/"))
    opened = [PAGE] * is_opened + ["https://next.test/"]
    assert desktop.opened_all(len(opened)) == sorted(opened)
    output, errors, status = listener.end()
    assert (output, status) == ("", 0)
    assert errors in ([""] if is_opened else [f"vastel-connect: out of memory: {what}\n" for what in (
        "a call was refused", "a link may not have been opened")])


def test_huge_links_leave_no_memory_behind(desktop):
    listener = desktop.listen()
    # By default, the C library keeps what the second one wanted once it saw the first.
    for megabytes in (20, 5):
        desktop.open(bulky_link(megabytes * MEGABYTE))
        desktop.open()
        assert desktop.opened() == PAGE
    assert size(listener, "VmRSS") < 15


def test_no_core_is_left_but_by_what_is_started(desktop):
    report = desktop.install_reporter("bin/report")
    desktop.install_handler(command=desktop.install_script(
        "bin/limits", f'exec {report} "$(ulimit -S -c)" "$@"\n') + " %u")
    listener = desktop.listen(
        command=("sh", "-c", 'ulimit -S -c "$(ulimit -H -c)"; exec "$0"', PROGRAM))
    limit = desktop.spawn("sh", "-c", "ulimit -H -c").finish().output.strip()
    desktop.open(LINK)
    assert desktop.page().arguments == [limit, PAGE]
    assert resource.prlimit(listener.pid, resource.RLIMIT_CORE)[0] in (0, 1)


# The bus library.


@pytest.mark.parametrize("function, arguments, error", [
    ("sd_bus_add_object_vtable", (), "no session bus, so no link can arrive"),
    ("sd_bus_add_object_vtable", ("--dbus-service",), "no session bus, so no link can arrive"),
    ("sd_bus_call_async", (LINK,), "the link was refused: the bus does not carry it")])
def test_a_function_that_fails_is_told(desktop, function, arguments, error):
    if LINK in arguments:
        desktop.listen("-log")
    result = desktop.run(*arguments, **fails(function))
    assert (result.errors, result.status) == (f"vastel-connect: {error}\n", 1)


def test_a_link_that_cannot_be_answered_is_not_opened(desktop):
    listener = desktop.listen("-log", **fails("sd_bus_reply_method_return"))
    for method, parameters in (("Open", GLib.Variant("(asa{sv})", ([LINK], {}))),
                               ("Activate", GLib.Variant("(a{sv})", ({},)))):
        with pytest.raises(GLib.Error):
            desktop.call(method, parameters)
    assert listener.end() == SILENCE


def test_whoever_waits_for_a_busy_program_is_told_once(desktop):
    listener = desktop.listen(**fails("ppoll"))
    listener.send(signal.SIGSTOP)
    follower = desktop.start(LINK, **fails("ppoll"))
    said = follower.errors.next()
    # No time at all is what the bus itself has, too.
    assert (follower.errors.next() if said == BUS_BUSY else said) == BUSY
    listener.send(signal.SIGCONT)
    assert follower.finish() == SILENCE
    assert desktop.opened() == PAGE
    # Whoever waits for links is told nothing.
    assert {*listener.end().errors.splitlines()} <= {BUS_BUSY}
