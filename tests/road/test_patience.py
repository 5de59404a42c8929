"""Who is waited for, how long, and what is said of it: a bus that is stuck or refuses, readers of
what the program writes, and senders without end."""

import os
import select
import signal
import socket
import threading

import pytest
from gi.repository import Gio, GLib

from desktop import INTERFACE, NAME, OBJECT, PROGRAM
from model import page_link
from processes import END_SIGNALS, SILENCE, golden
from road import BUS_BUSY, BUSY, LINK, PAGE, bulky_link
from test_attacks import RawSender


# The bus.


def silent_bus(desktop):
    """The address of a bus that lets everybody in, and says nothing."""
    bus = desktop.enter_context(socket.socket(socket.AF_UNIX))
    bus.bind(desktop.folder + "/silent")
    bus.listen()
    return f"unix:path={desktop.folder}/silent"


def test_whoever_waits_for_the_bus_is_told_and_may_end_it(new_desktop):
    desktop = new_desktop(bus=False)
    address = silent_bus(desktop)
    starts = {arguments: desktop.start(*arguments, DBUS_SESSION_BUS_ADDRESS=address)
              for arguments in ((), ("--dbus-service",), (LINK,))}
    for process in starts.values():
        assert process.errors.next() == BUS_BUSY
        process.send(signal.SIGINT)
    for arguments, process in starts.items():
        output = golden("banner") if LINK not in arguments else ""
        status = 0 if LINK not in arguments else -signal.SIGINT
        assert process.finish() == (output, "", status)


def test_a_bus_that_stops_keeps_no_program_from_ending(desktop, listener):
    desktop.daemon.send(signal.SIGSTOP)
    result = listener.end()
    desktop.daemon.send(signal.SIGCONT)
    assert result == SILENCE


@pytest.mark.parametrize("service", [PROGRAM, None])
def test_a_bus_that_refuses_the_name_is_quoted_once(new_desktop, service):
    desktop = new_desktop(service=service, bus=f"""<policy context="default">
        <deny own="{NAME}"/></policy>""")
    said = "vastel-connect: no link can arrive: Connection "
    for arguments, status in (((LINK,), 0), ((), 1)):
        result = desktop.run(*arguments)
        assert result.errors.startswith(said) and result.errors.count("\n") == 1
        assert result.status == status
    assert desktop.opened() == PAGE


def test_a_link_is_followed_again_only_when_the_asked_program_has_left(new_desktop):
    desktop = new_desktop(bus='<limit name="reply_timeout">500</limit>')
    listener = desktop.listen("-log")
    stuck = bulky_link(100_000)
    answers = []
    desktop.call_open([stuck], answers)
    assert desktop.run(LINK) == ("", "vastel-connect: no answer comes any more: the link may have "
                                     "been opened, or not\n", 1)
    listener.expect_log(stuck, LINK)
    assert desktop.opened_all(2) == [PAGE, PAGE]
    assert listener.end() == SILENCE


def test_a_program_that_hands_over_takes_no_link(desktop, listener):
    listener.send(signal.SIGSTOP)
    follower = desktop.start(LINK)
    assert follower.errors.next() == BUSY
    (unique,) = [name for name in desktop.ask_bus("ListNames") if name.startswith(":")
                 and desktop.ask_bus("GetConnectionUnixProcessID", name) == follower.pid]
    with pytest.raises(GLib.Error) as raised:
        desktop.call("Open", GLib.Variant("(asa{sv})", ([page_link("https://lost.test/")], {})),
                     name=unique)
    assert Gio.DBusError.get_remote_error(raised.value).startswith(
        "org.freedesktop.DBus.Error.Unknown")
    listener.send(signal.SIGCONT)
    assert follower.finish() == SILENCE
    listener.expect_log(LINK)
    assert desktop.opened() == PAGE


def test_a_call_with_descriptors_that_find_no_room_harms_nothing(desktop, listener):
    desktop.expect_link(listener)
    before = len(listener.descriptors())
    limits = desktop.spawn("prlimit", f"--pid={listener.pid}", f"--nofile={before}:")
    assert limits.finish() == SILENCE
    files = Gio.UnixFDList.new_from_array([os.dup(0) for _ in range(4)])
    with pytest.raises(GLib.Error):
        desktop.bus.call_with_unix_fd_list_sync(
            NAME, OBJECT, INTERFACE, "Open", GLib.Variant("(asa{sv})", (["x:"], {})), None,
            Gio.DBusCallFlags.NONE, 20_000, files, None)
    limits = desktop.spawn("prlimit", f"--pid={listener.pid}", "--nofile=1024:")
    assert limits.finish() == SILENCE
    desktop.expect_link(listener)


# The end.


def test_a_sender_without_end_does_not_keep_the_program_from_ending(new_desktop):
    desktop = new_desktop(bus='<limit name="max_outgoing_bytes">5000000</limit>')
    listener = desktop.listen("-log", streams={"stdout": os.open("/dev/null", os.O_WRONLY)})
    owner = desktop.ask_bus("GetNameOwner", NAME)
    sender = RawSender(desktop)
    is_over = threading.Event()
    flood = threading.Thread(target=sender.flood_until, args=(is_over, owner, ["x:"] * 200))
    flood.start()
    try:
        desktop.ask_bus("GetId")
        assert listener.end() == SILENCE
    finally:
        is_over.set()
        flood.join()


def test_a_second_signal_ends_the_program_at_once(desktop, listener):
    listener.send(signal.SIGSTOP)
    answers = []
    desktop.call_open([LINK], answers)
    desktop.ask_bus("GetId")
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGCONT):
        listener.send(number)
    assert listener.finish().status in (-signal.SIGINT, -signal.SIGTERM)
    desktop.wait_until(lambda: answers)
    assert answers != [None]


def test_a_terminal_that_goes_away_sends_no_second_signal(desktop, listener):
    listener.send(signal.SIGSTOP)
    answers = []
    desktop.call_open([LINK], answers)
    desktop.ask_bus("GetId")
    for number in (signal.SIGHUP, signal.SIGTERM, signal.SIGCONT):
        listener.send(number)
    listener.expect_log(LINK)
    assert desktop.opened() == PAGE
    assert listener.finish() == SILENCE


def test_a_slow_reader_has_one_second_for_all_lines(desktop):
    reader, writer = os.pipe()
    desktop.callback(os.close, reader)
    process = desktop.listen("-log", streams={"stdout": writer})
    os.close(writer)
    os.read(reader, 1 << 20)
    answers = []
    for _ in range(40):
        desktop.call_open([bulky_link(45_000)], answers)
    desktop.ask_bus("GetId")
    process.send(signal.SIGTERM)
    ended = os.pidfd_open(process.pid)
    desktop.callback(os.close, ended)
    rounds = 0
    while not select.select([ended], [], [], 0.7)[0]:
        os.read(reader, 1 << 16)
        rounds += 1
    assert rounds < 10
    assert process.finish() == SILENCE
    assert desktop.opened_all(40) == [PAGE] * 40


def test_a_stuck_reader_of_complaints_does_not_keep_the_program_from_ending(new_desktop):
    desktop = new_desktop(bus=False)
    reader, writer = os.pipe()
    for each in (reader, writer):
        desktop.callback(os.close, each)
    os.set_blocking(writer, False)
    os.write(writer, b"x" * (1 << 20))
    os.set_blocking(writer, True)
    process = desktop.start(streams={"stderr": writer})
    process.banner()
    process.send(signal.SIGTERM)
    assert process.wait() in (0, 1)


def test_an_alarm_that_nobody_here_has_set_costs_no_line(desktop, listener):
    desktop.expect_link(listener)
    listener.send(signal.SIGALRM)
    desktop.expect_link(listener)


@pytest.mark.parametrize("number", END_SIGNALS)
def test_a_signal_that_was_ignored_at_the_start_stays_ignored(desktop, number):
    process = desktop.spawn("env", f"--ignore-signal={number}", PROGRAM, "-log")
    process.banner()
    desktop.wait_for_owner(process.pid)
    process.send(number)
    for _ in range(2):
        desktop.expect_link(process)
    assert process.end(signal.SIGTERM if number != signal.SIGTERM else signal.SIGINT) == SILENCE
