"""Who takes the links, and until when."""

import signal

import pytest
from gi.repository import Gio

from desktop import INTERFACE, NAME, OBJECT
from model import page_link
from processes import SILENCE, golden, status_of
from road import FATAL, LINK, PAGE, pages

DO_NOT_QUEUE = 4
ERROR = "org.freedesktop.DBus.Error."
TAKEN = f"vastel-connect: {NAME} belongs to another program: links arrive when it ends"


def test_the_newest_start_takes_the_links_and_gives_them_back(desktop):
    listeners = []
    for _ in range(5):
        # A terminal may itself be started by the bus.
        listeners.append(desktop.listen("-log", DBUS_STARTER_BUS_TYPE="session"))
        desktop.expect_link(listeners[-1])
    while listeners:
        newest = listeners.pop()
        desktop.wait_for_owner(newest.pid)
        desktop.expect_link(newest)
        assert newest.end(signal.SIGINT) == SILENCE


@pytest.mark.parametrize("service", [None, "/bin/false", "/nowhere/vastel-connect"])
def test_a_link_that_no_service_takes_becomes_the_application(new_desktop, service):
    desktop = new_desktop(service=service)
    process = desktop.start("-log", LINK)
    assert desktop.opened() == PAGE
    # The link of the start writes no log line.
    process.banner()
    desktop.wait_for_owner(process.pid)
    second = desktop.listen("-log")
    desktop.expect_link(second)
    assert second.end() == SILENCE
    desktop.wait_for_owner(process.pid)
    desktop.expect_link(process)
    assert process.end() == SILENCE


def test_a_link_during_the_take_over_is_opened_once(desktop):
    desktop.listen()
    for page in pages(10):
        second = desktop.start()
        follower = desktop.start(page_link(page))
        assert follower.finish() == SILENCE
        assert desktop.opened() == page
        second.end()


# Another program has the name.


def test_a_program_that_took_the_name_first_keeps_it_from_a_start_and_is_named(desktop):
    assert desktop.ask_bus("RequestName", NAME, DO_NOT_QUEUE) == 1
    process = desktop.start("-log")
    process.banner()
    assert process.errors.next() == TAKEN
    output, errors, status = desktop.run(LINK)
    assert errors.startswith("vastel-connect: the link was refused: ") and errors.count("\n") == 1
    assert (output, status) == ("", 1)
    desktop.ask_bus("ReleaseName", NAME)
    desktop.wait_for_owner(process.pid)
    desktop.expect_link(process)
    assert process.end() == SILENCE


def take_name(desktop, on_open):
    """Takes the name for this process, which answers the calls of Open by `on_open`. The result takes
    the object away again."""
    interface = Gio.DBusNodeInfo.new_for_xml(f"""<node><interface name="{INTERFACE}">
        <method name="Open"><arg type="as" direction="in"/><arg type="a{{sv}}" direction="in"/>
        </method></interface></node>""").interfaces[0]
    number = desktop.bus.register_object(
        OBJECT, interface, lambda *arguments: on_open(arguments[-1]), None, None)
    assert desktop.ask_bus("RequestName", NAME, DO_NOT_QUEUE) == 1
    return lambda: desktop.bus.unregister_object(number)


def refuse_open(desktop, error, on_call):
    """Takes the name, and answers each Open with an error of this name after `on_call`."""
    def answer(call):
        on_call()
        call.return_dbus_error(error, "as the\x1b[2J\ntest has \x85it\x7f" + "x" * 500)

    return take_name(desktop, answer)


def follow_where_open_is_refused(desktop, error):
    """Follows a link while this process has the name, which it gives back when it answers the call
    with an error of this name."""
    unregister = refuse_open(desktop, error, lambda: desktop.ask_bus("ReleaseName", NAME))
    owners = len(desktop.names_seen())
    follower = desktop.start(LINK)
    desktop.wait_until(lambda: len(desktop.names_seen()) > owners)
    unregister()
    return follower


@pytest.mark.parametrize("error, count, said", [
    ("NoReply", 1, "no answer comes any more: the link may have been opened, or not"),
    ("ServiceUnknown", 100, "the link was not taken: the application ends before it answers")])
def test_an_owner_that_never_takes_a_link_is_not_asked_for_ever(desktop, error, count, said):
    calls = []
    refuse_open(desktop, ERROR + error, lambda: calls.append(None))
    follower = desktop.start(LINK)
    desktop.wait_until(lambda: len(calls) == count)
    assert follower.finish() == ("", f"vastel-connect: {said}\n", 1)


def test_a_link_is_followed_again_where_another_program_than_was_asked_has_the_name(new_desktop):
    desktop = new_desktop(bus=False)
    desktop.install_service(NAME, desktop.install_reporter("bin/service"))
    desktop.start_bus()
    follower = desktop.start(LINK)
    # The one that is started takes no name, so that the call waits for whoever does.
    desktop.page()
    calls = []
    take_name(desktop, calls.append)
    listener = desktop.start("-log")
    listener.banner()
    assert listener.errors.next() == TAKEN
    desktop.wait_until(lambda: calls)
    desktop.bus.close_sync()
    assert follower.finish() == SILENCE
    listener.expect_log(LINK)
    assert desktop.opened() == PAGE


def test_an_error_that_says_nobody_is_there_makes_the_application_of_a_link(new_desktop):
    desktop = new_desktop(service=None)
    for error in (ERROR + "ServiceUnknown", ERROR + "NameHasNoOwner", ERROR + "TimedOut",
                  ERROR + "Spawn.ChildExited", "org.freedesktop.systemd1.LoadFailed"):
        follower = follow_where_open_is_refused(desktop, error)
        assert desktop.opened() == PAGE
        follower.banner()
        desktop.wait_for_owner(follower.pid)
        assert follower.end() == SILENCE


def test_any_other_error_refuses_a_link(new_desktop):
    desktop = new_desktop(service=None)
    said = ("the link was refused: as the?[2J?test has ??it?" + "x" * 500)[:480]
    for error in (ERROR + "Failed", ERROR + "Spawn", ERROR + "AccessDenied",
                  ERROR + "LimitsExceeded", "org.freedesktop.systemd",
                  "x.org.freedesktop.systemd1.LoadFailed"):
        assert follow_where_open_is_refused(desktop, error).finish() == (
            "", f"vastel-connect: {said}\n", 1)


# The link that ends the program.


def test_arrays_are_no_error_for_their_senders_and_links_among_them_are_opened_once(desktop):
    for _ in range(20):
        assert desktop.run(FATAL) == SILENCE
    links = [link for page in pages(5) for link in [FATAL] * 4 + [page_link(page)]]
    for process in [desktop.start(link) for link in links]:
        assert process.finish() == SILENCE
    assert desktop.opened_all(5) == pages(5)


# The end of the bus, and of the program.


def test_a_signal_comes_before_an_end_of_the_bus(desktop, listener):
    listener.send(signal.SIGSTOP)
    desktop.kill_bus()
    listener.send(signal.SIGTERM)
    listener.send(signal.SIGCONT)
    assert listener.finish() == SILENCE


def test_the_program_rests_in_one_thread(desktop, listener):
    desktop.expect_link(listener)
    switches = lambda: int(status_of(listener.pid)["voluntary_ctxt_switches"])
    before = switches()
    # Something else for a while, that the program has no part in.
    for _ in range(20):
        assert desktop.run("-help").output == golden("banner", "help")
    # At most it had still to lie down.
    assert switches() - before <= 1
    assert status_of(listener.pid)["Threads"] == "1"
