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

# By the names of the texts that they print.
TEXTS = {switch[1:]: switch for switch in PRINTING}
NO_BUS = "vastel-connect: no session bus, so no link can arrive\n"
# A page with what a log line has to treat with care. It forms no URL, so nothing is opened.
ODD_PAGE = ("a \"quoted\"\\\nline\tof \u0001 K\u00f6ln \u2603 \U0001f4de </b>\u2028\x85\0\x1b]0;x\x07\x7f"
            '\n{"datetime":"x","event":"Log","message":"forged"}\r')


def texts(*names):
    """What a start prints that is to print texts, and ends."""
    return golden("banner", *names), "", 0


# The texts.


@pytest.mark.parametrize("arguments, asked", [
    *(([switch], [text]) for text, switch in TEXTS.items()), (["/H"], ["help"]),
    # In the fixed order, once each, whatever else is asked for.
    ([*reversed(PRINTING), "-log", "/changelog", "--x", "-HELP"], TEXTS)])
def test_a_switch_prints_its_text_and_touches_no_name(desktop, arguments, asked):
    assert desktop.run(*arguments) == texts(*asked)
    assert desktop.names_seen() == []


def test_the_programs_own_name_may_be_a_switch(desktop):
    process = desktop.spawn("/ChangeLog", streams={"executable": PROGRAM})
    assert process.finish() == texts("changelog")


@pytest.mark.parametrize("arguments", [
    [], ["--help"], ["help"], ["-help=1"], ["-log"], ["-he"], ["-help "], ["/jsonlog", "-LOG"], [""]])
def test_without_a_printing_switch_it_prints_the_banner_and_stays(desktop, arguments):
    process = desktop.listen(*arguments)
    assert process.is_running()
    assert process.end() == SILENCE


def test_a_printing_switch_leaves_a_listener_its_name_and_its_links(desktop, listener):
    assert desktop.run("-help", "-log") == texts("help")
    desktop.expect_link(listener)
    assert len(desktop.names_seen()) == 1


def test_a_terminal_may_itself_be_started_by_the_bus(desktop):
    first = desktop.listen()
    terminal = {"streams": {"stdin": open_pair(desktop, os.openpty())[1]},
                "DBUS_STARTER_BUS_TYPE": "session"}
    assert desktop.run("-help", **terminal) == texts("help")
    assert len(desktop.names_seen()) == 1
    # As anywhere, a newer start takes the links.
    desktop.expect_link(desktop.listen("-log", **terminal))
    assert first.is_running()


@pytest.mark.parametrize("bus", [False, True])
def test_a_link_with_a_printing_switch_is_opened_before_the_text(new_desktop, bus):
    desktop = new_desktop(bus=bus)
    for text, switch in TEXTS.items():
        assert desktop.run(LINK, switch, "-log") == texts(text)
        assert desktop.opened() == PAGE
    # The link comes first: one that ends the program leaves no text.
    assert desktop.run("-help", FATAL) == ("", "", 70)
    assert not bus or desktop.names_seen() == []


def test_a_link_with_a_printing_switch_leaves_a_listener_alone(desktop, listener):
    assert desktop.run("-help", LINK) == texts("help")
    assert desktop.opened() == PAGE
    assert listener.end() == SILENCE


# Standard output that is not there.


def open_pair(desktop, pair):
    """Two descriptors, which are closed at the end."""
    for each in pair:
        desktop.callback(os.close, each)
    return pair


@pytest.mark.parametrize("numbers", [{1}, {0, 1, 2}])
def test_closed_standard_streams_harm_nothing(desktop, numbers):
    redirections = " ".join(f"{number}>&-" for number in numbers)
    closed = ("/bin/sh", "-c", f'exec "$0" "$@" {redirections}', PROGRAM)
    assert desktop.spawn(*closed, "-help").finish() == SILENCE
    process = desktop.spawn(*closed, "-log", "-jsonlog")
    desktop.wait_for_owner(process.pid)
    # A line that went into the bus would end the connection.
    desktop.open(LINK, LINK)
    desktop.open(LINK)
    assert desktop.opened_all(3) == [PAGE] * 3
    null = {int(number) for number in process.descriptors()
            if os.readlink(f"/proc/{process.pid}/fd/{number}") == "/dev/null"}
    # Standard input, what was closed, and what takes the place of a reader that is stuck.
    assert {0, *numbers} <= null
    assert len(null) == len({0, *numbers}) + 1
    assert process.end() == SILENCE


def full_device():
    return os.open("/dev/full", os.O_WRONLY)


def pipe_without_a_reader():
    reader, writer = os.pipe()
    os.close(reader)
    return writer


@pytest.mark.parametrize("make_output", [full_device, pipe_without_a_reader])
def test_an_output_that_takes_nothing_harms_nothing(desktop, make_output):
    output = make_output()
    assert desktop.run("-help", streams={"stdout": output}) == SILENCE
    process = desktop.listen("-log", "-jsonlog", streams={"stdout": output})
    os.close(output)
    desktop.open(LINK, LINK)
    desktop.open(LINK)
    assert desktop.opened_all(3) == [PAGE] * 3
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


def expect_end_for_a_stuck_reader(desktop, output, number=signal.SIGTERM, stop=lambda: None,
                                  command=(PROGRAM,)):
    """Follows links until `output`, which `stop` stops, takes no more; then asks for the end."""
    process = desktop.spawn(*command, "-log", streams={"stdout": output})
    desktop.wait_for_owner(process.pid)
    stop()
    answers = []
    for link in (LINK, *(page_link(PAGE, Note="x" * size) for size in (60_000, 1_000_000)), LINK):
        desktop.call_open([link], answers)
    # Once this is answered, the bus has passed the calls on.
    desktop.ask_bus("GetId")
    deadline = time.monotonic() + LIMIT
    while select.select([], [output], [], 0)[1]:
        assert time.monotonic() < deadline
    process.send(number)
    assert process.finish() == SILENCE
    # What was followed is not lost with its log lines.
    desktop.wait_until(lambda: len(answers) == 4)
    assert set(answers) == {None}
    assert desktop.opened_all(4) == [PAGE] * 4
    assert desktop.names_seen()[-1] == ""


@pytest.mark.parametrize("blocking", [True, False])
@pytest.mark.parametrize("number", END_SIGNALS)
def test_each_signal_ends_a_program_whose_log_reader_is_stuck(desktop, number, blocking):
    reader, writer = open_pair(desktop, os.pipe())
    os.set_blocking(writer, blocking)
    expect_end_for_a_stuck_reader(desktop, writer, number)
    # Our writing end is as it was, and nothing follows the line that broke off.
    assert os.get_blocking(writer) == blocking
    text = os.read(reader, 1 << 20).decode().removeprefix(golden("banner"))
    *lines, last = text.split("\n")
    assert [log_message(line) for line in lines] == messages_of(LINK) + ["new uri event"]
    assert re.fullmatch(r"Log [0-9:]+> process uri: [:/+\w]+", last)


def test_a_signal_ends_a_program_whose_terminal_is_stopped(desktop):
    _, terminal = open_pair(desktop, os.openpty())
    expect_end_for_a_stuck_reader(desktop, terminal,
                                  stop=lambda: termios.tcflow(terminal, termios.TCOOFF))


def test_a_signal_ends_a_program_whose_log_goes_into_a_full_socket(desktop):
    # What is blocked at the start stays blocked in a program.
    _, theirs = map(desktop.enter_context, socket.socketpair())
    expect_end_for_a_stuck_reader(desktop, theirs, command=("env", "--block-signal=ALRM", PROGRAM))


@pytest.mark.parametrize("make_pair", [os.pipe, os.openpty])
def test_a_signal_ends_a_program_that_may_not_open_its_output_once_more(desktop, make_pair):
    desktop.callback(os.umask, os.umask(0o022))
    user, program = desktop.other_user()
    _, output = open_pair(desktop, make_pair())
    os.fchmod(output, 0)
    expect_end_for_a_stuck_reader(
        desktop, output, command=[*user, program],
        stop=lambda: os.isatty(output) and termios.tcflow(output, termios.TCOOFF))


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


def test_each_line_is_one_write(desktop):
    # A socket that keeps the borders of what is written.
    ours, theirs = map(desktop.enter_context,
                       socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET))
    ours.settimeout(LIMIT)
    writes = lambda count: [ours.recv(1 << 20).decode() for _ in range(count)]
    assert desktop.run("-help", "/changelog", "-showuri", streams={"stdout": theirs}) == SILENCE
    lines = golden("banner", "help", "changelog").splitlines(keepends=True)
    # The description of links is one text.
    assert writes(len(lines) + 1) == [*lines, golden("showuri")]

    process = desktop.listen("/LOG", "/JsonLog", streams={"stdout": theirs})
    theirs.close()
    writes(golden("banner").count("\n"))
    link = page_link(ODD_PAGE)
    desktop.open(link)
    lines = writes(2 * len(messages_of(link)))
    assert [log_message(line[:-1]) for line in lines[::2]] == messages_of(link)
    assert [json.loads(line)["message"] for line in lines[1::2]] == messages_of(link)
    process.end()
    assert ours.recv(1) == b""


def test_no_message_forges_a_line_of_the_json_log(desktop):
    process = desktop.listen("/JsonLog")
    links = [page_link(ODD_PAGE), ODD_PAGE.replace("\0", "")]
    desktop.open(*links)
    lines = process.end().output.removesuffix("\n").split("\n")
    assert [json.loads(line)["message"] for line in lines] == messages_of(*links)
    assert not [line for line in lines if re.search("[\0-\x1f]", line)]
    assert r'a \"quoted\"\\\nline\tof \u0001 Köln ☃ 📞' in lines[3]


# Arguments that are not UTF-8.


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
    # One of which nothing shows the page.
    desktop.install_handler(command="/nowhere %u")
    assert desktop.run(LINK, PATH="/nowhere") == (
        golden("banner"), "vastel-connect: a page was not opened\n", 1)
