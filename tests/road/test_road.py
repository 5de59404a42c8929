"""The road of a link: from whoever follows it, over the session bus or a command line, to the page
in its default handler."""

import os
import re

import pytest
from gi.repository import Gio, GLib

from desktop import INTERFACE, NAME, OBJECT, SERVICE
from links import all_links
from model import expect, page_link
from processes import SILENCE, SWITCHES
from road import LINK, PAGE, TEXTS, bulky_link, expect_texts_unchanged, pages

OPEN = GLib.Variant("(asa{sv})", ([LINK], {}))
NOTHING = GLib.Variant("(a{sv})", ({},))


@pytest.fixture
def logged(new_desktop):
    """A desktop on which the bus starts the program with -log."""
    return new_desktop(service=SERVICE + " -log")


# Over the bus.


def test_open_cold_starts_the_program_which_logs_only_the_links_after_the_first(logged):
    logged.open(LINK)
    assert logged.opened() == PAGE
    # What the bus starts writes where the bus does.
    logged.daemon.banner()
    logged.expect_link(logged.daemon, "https://page.test/second")


def test_open_may_want_no_answer(desktop):
    call = Gio.DBusMessage.new_method_call(NAME, OBJECT, INTERFACE, "Open")
    call.set_body(OPEN)
    call.set_flags(Gio.DBusMessageFlags.NO_REPLY_EXPECTED)
    for _ in ("cold", "warm"):
        desktop.bus.send_message(call.copy(), Gio.DBusSendMessageFlags.NONE)
        assert desktop.opened() == PAGE


def test_activate_starts_the_program_and_is_answered(logged):
    logged.call("Activate", NOTHING)
    logged.daemon.banner()
    logged.call("Activate", NOTHING)
    logged.expect_link(logged.daemon)


@pytest.mark.parametrize("method, parameters", [
    ("Open", GLib.Variant("(asa{sv})", ([], {}))),
    ("ActivateAction", GLib.Variant("(sava{sv})", ("quit", [GLib.Variant("s", "now")], {})))])
def test_a_call_without_a_link_is_answered(desktop, listener, method, parameters):
    desktop.call(method, parameters)
    desktop.expect_link(listener)


def test_a_start_without_a_link_waits_for_none(logged):
    logged.ask_bus("StartServiceByName", NAME, 0)
    # Answered once the links of the start, if any, are there.
    logged.call("Ping", None, "org.freedesktop.DBus.Peer")
    logged.open(LINK)
    assert logged.opened() == PAGE
    logged.daemon.banner()
    logged.daemon.expect_log(LINK)
    logged.expect_link(logged.daemon)


def test_a_call_of_a_wrong_form_is_an_error_and_harms_nothing(desktop, listener):
    wrong = [("org.freedesktop.DBus.Error.InvalidArgs", OBJECT, INTERFACE, method, parameters)
             for method, parameters in [
                 ("Open", GLib.Variant("(s)", (LINK,))),
                 ("Open", GLib.Variant("(asa{ss})", ([LINK], {}))),
                 ("Open", GLib.Variant("(asa{sv}s)", ([LINK], {}, ""))),
                 ("Open", None),
                 ("Activate", None),
                 ("Activate", GLib.Variant("(s)", ("",))),
                 ("ActivateAction", GLib.Variant("(s)", ("quit",)))]]
    wrong += [("org.freedesktop.DBus.Error.UnknownMethod", OBJECT, INTERFACE, method, parameters)
              for method in ("Close", "open")
              for parameters in (OPEN, GLib.Variant("(as)", ([LINK],)))]
    # Errors, whatever their names.
    wrong += [
        (None, "/", INTERFACE, "Open", OPEN),
        (None, OBJECT + "/x", INTERFACE, "Open", OPEN),
        (None, OBJECT, "org.example.Other", "Open", OPEN),
        (None, OBJECT, "org.freedesktop.DBus.Properties", "Set",
         GLib.Variant("(ssv)", (INTERFACE, "x", GLib.Variant("s", "y")))),
        (None, OBJECT, INTERFACE, "Open", GLib.Variant("(asa{sv})", (["\ufdd0", LINK], {})))]
    for name, path, interface, method, parameters in wrong:
        with pytest.raises(GLib.Error) as raised:
            desktop.call(method, parameters, interface, path)
        assert name in (None, Gio.DBusError.get_remote_error(raised.value)), (method, parameters)
    desktop.expect_link(listener)


def test_the_bus_of_the_runtime_folder_is_found(desktop):
    folder = desktop.folder + "/run-_.* %;\u00fc"
    os.symlink(desktop.folder, folder)
    listener = desktop.listen("-log", DBUS_SESSION_BUS_ADDRESS=None, XDG_RUNTIME_DIR=folder)
    desktop.expect_link(listener)


# By a command line.


def test_no_text_of_the_bus_and_no_link_of_a_command_line_is_a_switch(desktop):
    listener = desktop.listen()
    desktop.open(*SWITCHES, "-h", "/help", "--dbus-service")
    for text in ("screenpop:-help", "x:/help", "h:-h", LINK):
        assert desktop.run(text) == SILENCE
    assert desktop.opened() == PAGE
    # Had one been read, there would be texts or log lines, or an end.
    assert listener.end() == SILENCE


def test_exec_cold_ends_silently_and_the_bus_starts_the_program(desktop):
    process = desktop.start("-log", "-jsonlog", LINK)
    assert process.finish() == SILENCE
    assert desktop.opened() == PAGE
    assert desktop.owner() not in (process.pid, None)


def test_exec_refuses_a_link_that_the_bus_does_not_carry(desktop, listener):
    assert desktop.run("screenpop:\ufdd0") == (
        "", "vastel-connect: the link was refused: the bus does not carry it\n", 1)
    desktop.expect_link(listener)


# What a link may hold, and many at once.


def test_each_link_is_what_the_model_says(desktop):
    texts = all_links()
    # A handler for whatever might be a scheme, so that nothing is opened unseen.
    starts = (re.match("webpage: ([A-Za-z0-9+.-]+):", expect(text).messages[-1]) for text in texts)
    desktop.install_handler(sorted({start[1].lower() for start in starts if start}))
    listener = None
    for text in texts:
        listener = listener or desktop.listen("-jsonlog")
        desktop.open(text)
        listener.expect_log(text)
        expected = expect(text)
        if expected.opened is not None:
            assert desktop.opened() == expected.opened
        if expected.fatal:
            assert listener.finish() == ("", "", 70)
            listener = None


def test_each_text_of_a_command_line_arrives_unchanged(desktop):
    expect_texts_unchanged(desktop, desktop.run, [*TEXTS, bulky_link(100_000)])


@pytest.mark.parametrize("service", [SERVICE, None])
def test_twenty_at_once_are_opened_once_each_by_one_that_they_start(new_desktop, service):
    desktop = new_desktop(service=service)
    processes = [desktop.start(page_link(page)) for page in pages(20)]
    assert desktop.opened_all(20) == pages(20)
    ended = [process for process in processes if process.pid != desktop.owner()]
    assert [process.finish() for process in ended] == [SILENCE] * len(ended)
    # Without a service it is one of them.
    assert len(ended) == (20 if service else 19)
    assert not service or len(desktop.names_seen()) == 1
