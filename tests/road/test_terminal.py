"""The program in a terminal: its texts, its log lines, its signals, and what becomes of them when
standard streams or the bus are missing."""

import fcntl
import json
import os
import re
import resource
import select
import signal
import socket
import termios
import time

import pytest

from desktop import PROGRAM
from model import page_link
from processes import END_SIGNALS, LIMIT, PRINTING, SILENCE, golden, log_message, messages_of
from road import FATAL, LINK, PAGE, pages

NO_BUS = "vastel-connect: no session bus, so no link can arrive\n"
# A page with what a log line has to treat with care. It forms no URL, so nothing is opened.
ODD_PAGE = ("a \"quoted\"\\\nline\tof \u0001 K\u00f6ln \u2603 \U0001f4de </b>\u2028\x85\0\x1b]0;x\x07\x7f"
            '\n{"datetime":"x","event":"Log","message":"forged"}\r')


def texts(*names):
    """What a start prints that is to print texts, and ends."""
    return golden("banner", *names), "", 0


# The texts.


def test_switches_print_their_texts_and_touch_no_name(desktop):
    # In the fixed order, once each, whatever else is asked for.
    assert desktop.run(*reversed(PRINTING), "-log", "/changelog", "--x", "-HELP") == texts(
        *(switch[1:] for switch in PRINTING))
    assert desktop.names_seen() == []


@pytest.mark.parametrize("bus", [False, True])
def test_a_link_with_a_printing_switch_is_opened_before_the_text(new_desktop, bus):
    desktop = new_desktop(bus=bus)
    listener = desktop.listen("-log") if bus else None
    assert desktop.run(LINK, "-help", "-log") == texts("help")
    assert desktop.opened() == PAGE
    # The link comes first: one that ends the program leaves no text.
    assert desktop.run("-help", FATAL) == ("", "", 70)
    # Nobody else has it.
    assert not bus or listener.end() == SILENCE


# Standard output that is not there, or whose reader is not.


@pytest.mark.parametrize("redirections, nulls", [
    (">&-", 4), ("<&- >&- 2>&-", 5), (">/dev/full", 3), ("", 3)],
    ids=["no output", "no streams", "full", "no reader"])
def test_an_output_that_takes_nothing_harms_nothing(desktop, redirections, nulls):
    reader, output = os.pipe()
    os.close(reader)
    command = ("/bin/sh", "-c", f'exec "$0" "$@" {redirections}', PROGRAM)
    assert desktop.spawn(*command, "-help", streams={"stdout": output}).finish() == SILENCE
    process = desktop.listen("-log", "-jsonlog", command=command, streams={"stdout": output})
    os.close(output)
    # A line that went into the bus would end the connection.
    desktop.open(LINK, LINK)
    desktop.open(LINK)
    assert desktop.opened_all(3) == [PAGE] * 3
    # Standard input, what was closed, what takes the place of a reader that is stuck, and what
    # handlers have for streams.
    files = [os.readlink(f"/proc/{process.pid}/fd/{number}") for number in process.descriptors()]
    assert files.count("/dev/null") == nulls
    assert process.end() == SILENCE


@pytest.mark.parametrize("blocking", [True, False])
def test_a_slow_reader_gets_every_byte_and_may_leave(desktop, blocking):
    reader, writer = os.pipe()
    fcntl.fcntl(writer, fcntl.F_SETPIPE_SZ, 4096)
    os.set_blocking(writer, blocking)
    process = desktop.start("-log", streams={"stdout": writer})
    os.close(writer)
    link = page_link(PAGE, Note="x" * 60_000)
    with os.fdopen(reader, encoding="utf-8") as output:
        for line in golden("banner").splitlines(keepends=True):
            assert output.readline() == line
        desktop.wait_for_owner(process.pid)
        desktop.open(link)
        for message in messages_of(link):
            assert log_message(output.readline()[:-1]) == message
        # This one waits for room when its reader leaves.
        desktop.open(link)
    assert desktop.opened_all(2) == [PAGE] * 2
    assert process.end().status == 0


def socket_pair():
    return [each.detach() for each in socket.socketpair()]


@pytest.mark.parametrize("make_pair, blocking, number", [
    *((os.pipe, blocking, number) for blocking in (True, False) for number in END_SIGNALS),
    (os.openpty, True, signal.SIGTERM), (socket_pair, True, signal.SIGTERM)])
def test_each_signal_ends_a_program_whose_log_reader_is_stuck(desktop, make_pair, blocking, number):
    reader, output = make_pair()
    for each in (reader, output):
        desktop.callback(os.close, each)
    os.set_blocking(output, blocking)
    # What is blocked at the start stays blocked in a program.
    process = desktop.listen("-log", command=("env", "--block-signal=ALRM", PROGRAM),
                             streams={"stdout": output})
    if os.isatty(output):
        termios.tcflow(output, termios.TCOOFF)
    links = [LINK, *(page_link(PAGE, Note="x" * size) for size in (60_000, 1_000_000)), LINK]
    answers = desktop.call_open(*links)
    deadline = time.monotonic() + LIMIT
    while select.select([], [output], [], 0)[1]:
        assert time.monotonic() < deadline
    process.send(number)
    assert process.finish() == SILENCE
    # What was followed is not lost with its log lines.
    desktop.wait_until(lambda: all(answers))
    assert answers == [[None]] * 4
    assert desktop.opened_all(4) == [PAGE] * 4
    assert desktop.names_seen()[-1] == ""
    # Our writing end is as it was, and nothing follows the line that broke off.
    assert os.get_blocking(output) == blocking
    if make_pair == os.pipe:
        text = os.read(reader, 1 << 20).decode().removeprefix(golden("banner"))
        *lines, last = text.split("\n")
        assert [log_message(line) for line in lines] == messages_of(LINK) + ["new uri event"]
        assert re.fullmatch(r"Log [0-9:]+> process uri: [:/+\w]+", last)


def test_lines_stay_whole_behind_one_that_found_no_room(desktop):
    path = desktop.folder + "/log"
    with open(path, "wb") as log:
        process = desktop.listen("-log", streams={"stdout": log})
    full = os.path.getsize(path) + 10
    resource.prlimit(process.pid, resource.RLIMIT_FSIZE, (full, resource.RLIM_INFINITY))
    desktop.open(LINK)
    # The answer comes once the link before is done with.
    desktop.open()
    resource.prlimit(process.pid, resource.RLIMIT_FSIZE, [resource.RLIM_INFINITY] * 2)
    desktop.open(LINK)
    process.end()
    assert desktop.opened_all(2) == [PAGE, PAGE]
    with open(path, encoding="utf-8") as log:
        broken, *lines = log.read().removeprefix(golden("banner")).splitlines()
    assert re.fullmatch("Log [0-9:]{6}", broken)
    assert [log_message(line) for line in lines] == messages_of(LINK)


# Log lines.


def test_each_line_is_one_write_and_no_message_forges_one_of_the_json_log(desktop):
    # A socket that keeps the borders of what is written.
    ours, theirs = map(desktop.enter_context,
                       socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET))
    ours.settimeout(LIMIT)
    process = desktop.listen("/LOG", "/JsonLog", streams={"stdout": theirs})
    theirs.close()
    links = [page_link(ODD_PAGE), ODD_PAGE.replace("\0", "")]
    desktop.open(*links)
    assert process.end() == SILENCE
    banner = golden("banner").splitlines(keepends=True)
    writes = [*iter(lambda: ours.recv(1 << 20).decode(), "")]
    assert writes[:len(banner)] == banner
    plain, structured = writes[len(banner)::2], writes[len(banner) + 1::2]
    assert [log_message(line[:-1]) for line in plain] == messages_of(*links)
    assert [json.loads(line)["message"] for line in structured] == messages_of(*links)
    assert not [line for line in structured if re.search("[\0-\x1f]", line[:-1])]
    assert r'a \"quoted\"\\\nline\tof \u0001 Köln ☃ 📞' in structured[3]


def test_an_argument_that_is_not_utf8_is_ignored_and_refused_as_a_link(desktop):
    assert desktop.run(b"-h\xff", "-help") == texts("help")
    assert desktop.run("-log", b"screenpop:\xff") == (
        "", "vastel-connect: argument 2 is not UTF-8: ignored\n", 1)
    assert desktop.names_seen() == []


# No bus.


def test_a_bus_that_ends_before_a_link_is_handed_over_is_none(new_desktop):
    desktop = new_desktop(bus=False)
    with socket.socket(socket.AF_UNIX) as bus:
        bus.bind(desktop.folder + "/bus")
        bus.listen()
        process = desktop.start(LINK, DBUS_SESSION_BUS_ADDRESS=f"unix:path={desktop.folder}/bus")
        bus.accept()[0].close()
    assert process.finish() == (golden("banner"), "", 0)
    assert desktop.opened() == PAGE


@pytest.mark.parametrize("address", [None, "unix:path=/nowhere/at/all"])
def test_without_a_bus_launch_links_are_opened_and_no_other_can_arrive(new_desktop, address):
    desktop = new_desktop(bus=False, DBUS_SESSION_BUS_ADDRESS=address)
    assert desktop.run("-log") == (golden("banner"), NO_BUS, 1)
    assert desktop.run("-log", *map(page_link, pages(2)), "-jsonlog") == (golden("banner"), "", 0)
    assert desktop.opened_all(2) == pages(2)
    # One of which nothing shows the page, and one without a page.
    desktop.install_handler(command="/nowhere %u")
    assert desktop.run(LINK, "screenpop:", PATH="/nowhere") == (
        golden("banner"), "vastel-connect: a page was not opened\n", 1)
