"""Who is waited for, how long, and what is said of it: a bus that is stuck or refuses, readers of
what the program writes, and senders without end."""

import os
import select
import signal
import socket
import threading

import pytest
from gi.repository import Gio, GLib

from desktop import BUS, INTERFACE, NAME, OBJECT, PROGRAM
from model import page_link
from processes import END_SIGNALS, LIMIT, SILENCE, golden
from road import BUS_BUSY, BUSY, LINK, PAGE, bulky_link


# The bus.


@pytest.fixture
def silent(new_desktop):
    """A desktop whose bus lets everybody in, and says nothing."""
    desktop = new_desktop(bus=False)
    desktop.silent_bus = desktop.enter_context(socket.socket(socket.AF_UNIX))
    desktop.silent_bus.bind(desktop.folder + "/runtime/bus")
    desktop.silent_bus.listen()
    return desktop


def test_whoever_waits_for_the_bus_is_told_and_may_end_it(silent):
    starts = {arguments: silent.start(*arguments)
              for arguments in ((), ("--dbus-service",), (LINK,))}
    for process in starts.values():
        assert process.errors.next() == BUS_BUSY
        process.send(signal.SIGINT)
    for arguments, process in starts.items():
        output = golden("banner") if LINK not in arguments else ""
        status = 0 if LINK not in arguments else -signal.SIGINT
        assert process.finish() == (output, "", status)


def test_a_bus_is_waited_for_as_long_as_its_library_does(silent):
    process = silent.start(SYSTEMD_BUS_TIMEOUT="0.1s")
    connection, _ = silent.silent_bus.accept()
    silent.callback(connection.close)
    connection.sendall(b"DATA\r\nOK " + b"1" * 32 + b"\r\n")
    assert process.finish() == (
        golden("banner"), "vastel-connect: no link can arrive: Connection terminated\n", 1)


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
    desktop.call_open(stuck)
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


def test_a_call_with_descriptors_harms_nothing(desktop, listener):
    # The bus refuses what the program does not take.
    with pytest.raises(GLib.Error):
        desktop.bus.call_with_unix_fd_list_sync(
            NAME, OBJECT, INTERFACE, "Open", GLib.Variant("(asa{sv})", (["x:"], {})), None,
            Gio.DBusCallFlags.NONE, 20_000, Gio.UnixFDList.new_from_array([os.dup(0)]), None)
    desktop.expect_link(listener)


# Senders without end.


def connect_to_bus(desktop):
    """A connection of its own, for whoever sends calls and reads nothing more."""
    def read_until(end):
        text = b""
        while end not in text:
            assert (block := connection.recv(4096)), text
            text += block

    connection = desktop.enter_context(socket.socket(socket.AF_UNIX))
    connection.settimeout(LIMIT)
    connection.connect(desktop.folder + "/bus")
    connection.sendall(b"\0AUTH EXTERNAL %s\r\n" % str(os.geteuid()).encode().hex().encode())
    read_until(b"\r\n")
    hello = Gio.DBusMessage.new_method_call(BUS, "/org/freedesktop/DBus", BUS, "Hello")
    hello.set_serial(1)
    connection.sendall(b"BEGIN\r\n" + hello.to_blob(Gio.DBusCapabilityFlags.NONE))
    # The answer, and the signal that the name was given.
    read_until(b"NameAcquired")
    return connection


def call_of_open(serial, links, name=NAME, flags=Gio.DBusMessageFlags.NONE):
    call = Gio.DBusMessage.new_method_call(name, OBJECT, INTERFACE, "Open")
    call.set_body(GLib.Variant("(as)", (links,)))
    call.set_serial(serial)
    call.set_flags(flags)
    return call.to_blob(Gio.DBusCapabilityFlags.NONE)


def test_a_sender_that_never_reads_its_answers_keeps_nobody_waiting(desktop, listener):
    desktop.expect_link(listener)
    sender = connect_to_bus(desktop)
    # The bus refuses more calls of one sender than 128 before they are answered.
    for first in range(2, 5002, 100):
        sender.sendall(b"".join(call_of_open(first + n, ["screenpop"]) for n in range(100)))
        listener.expect_log(*["screenpop"] * 100)
    desktop.expect_link(listener)


def test_a_sender_without_end_does_not_keep_the_program_from_ending(new_desktop):
    desktop = new_desktop(bus='<limit name="max_outgoing_bytes">5000000</limit>')
    listener = desktop.listen("-log", streams={"stdout": os.open("/dev/null", os.O_WRONLY)})
    call = call_of_open(2, ["x:"] * 200, desktop.ask_bus("GetNameOwner", NAME),
                        Gio.DBusMessageFlags.NO_REPLY_EXPECTED)
    sender = connect_to_bus(desktop)
    is_over = threading.Event()

    def flood():
        while not is_over.is_set():
            sender.sendall(call * 20)

    flooding = threading.Thread(target=flood)
    flooding.start()
    try:
        desktop.ask_bus("GetId")
        assert listener.end() == SILENCE
    finally:
        is_over.set()
        flooding.join()


# The end.


@pytest.mark.parametrize("first, is_opened", [(signal.SIGINT, False), (signal.SIGHUP, True)])
def test_a_second_signal_ends_the_program_at_once_but_for_a_terminal_that_goes_away(
        desktop, listener, first, is_opened):
    listener.send(signal.SIGSTOP)
    answers = desktop.call_open(LINK)
    for number in (first, signal.SIGTERM, signal.SIGCONT):
        listener.send(number)
    if is_opened:
        listener.expect_log(LINK)
        assert desktop.opened() == PAGE
    assert listener.finish().status in ([0] if is_opened else [-signal.SIGINT, -signal.SIGTERM])
    desktop.wait_until(lambda: all(answers))
    assert (answers == [[None]]) == is_opened


def test_a_slow_reader_has_one_second_for_all_lines(desktop):
    reader, writer = os.pipe()
    desktop.callback(os.close, reader)
    process = desktop.listen("-log", streams={"stdout": writer})
    os.close(writer)
    os.read(reader, 1 << 20)
    desktop.call_open(*[bulky_link(45_000)] * 40)
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


@pytest.mark.parametrize("bus", [True, False])
def test_a_stuck_reader_of_complaints_does_not_keep_the_program_from_ending(new_desktop, bus):
    desktop = new_desktop(bus=bus)
    reader, writer = os.pipe()
    for each in (reader, writer):
        desktop.callback(os.close, each)
    os.set_blocking(writer, False)
    os.write(writer, b"x" * (1 << 20))
    os.set_blocking(writer, True)
    process = (desktop.listen if bus else desktop.start)(streams={"stderr": writer})
    if bus:
        desktop.kill_bus()
    else:
        process.banner()
        process.send(signal.SIGTERM)
    assert process.wait() in (0, 1)


def test_an_alarm_that_nobody_here_has_set_costs_no_line(desktop, listener):
    desktop.expect_link(listener)
    listener.send(signal.SIGALRM)
    desktop.expect_link(listener)


@pytest.mark.parametrize("number", END_SIGNALS)
def test_a_signal_that_was_ignored_at_the_start_stays_ignored(desktop, number):
    process = desktop.listen("-log", command=("env", f"--ignore-signal={number}", PROGRAM))
    process.send(number)
    for _ in range(2):
        desktop.expect_link(process)
    assert process.end(signal.SIGTERM if number != signal.SIGTERM else signal.SIGINT) == SILENCE
