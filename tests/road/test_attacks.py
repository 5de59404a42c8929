"""What somebody could try who sends links: a web page, or a program of the session. (The random
sessions follow hostile links of all kinds; here stands what has a form of its own.)"""

import os
import socket

import pytest
from gi.repository import Gio, GLib

from desktop import BUS, INTERFACE, NAME, OBJECT, PROGRAM, SERVICE
from model import make_link, page_link
from processes import LIMIT, SILENCE, SWITCHES
from road import LINK, PAGE


# Texts that are taken for options, or for files.


def test_a_text_of_the_bus_is_never_a_switch(desktop):
    listener = desktop.listen()
    for switch in (*SWITCHES, "-h", "/help", "--dbus-service"):
        desktop.open(switch)
    desktop.open(LINK)
    assert desktop.opened() == PAGE
    # Had one been read, there would be texts or log lines, or an end.
    assert listener.end() == SILENCE


def test_a_link_of_a_command_line_is_never_a_switch(desktop):
    listener = desktop.listen()
    for text in ("screenpop:-help", "x:/help", "h:-h", LINK):
        assert desktop.run(text) == SILENCE
    assert desktop.opened() == PAGE
    assert listener.end() == SILENCE


@pytest.mark.parametrize("page", [
    "https://page.test/$(touch;x)", "https://page.test/;reboot&x=*?~'!", "https://page.test/%25u",
    "https://page.test/%20--help", "HTTPS://page.test/%C3%BC+%20?q=a&b;c='d'($HOME)*~!#e"])
def test_what_a_shell_would_read_reaches_the_handler_as_one_argument(desktop, page):
    desktop.open(page_link(page))
    assert desktop.opened() == page


def test_a_page_too_long_for_a_command_line_is_only_logged(desktop, listener):
    for length in (131_071, 131_072, 1_000_000):
        link = page_link(PAGE.ljust(length, "x"))
        desktop.open(link)
        listener.expect_log(link)
    # The first is as long as an argument may be.
    assert len(desktop.opened()) == 131_071
    desktop.expect_link(listener)


def test_a_command_line_as_long_as_they_come_is_taken_whole(desktop, listener):
    links = ["screenpop:".ljust(131_071, "A")] * 10 + [LINK]
    assert desktop.run(*links) == SILENCE
    listener.expect_log(*links)
    assert desktop.opened() == PAGE


# The bus.


def test_platform_data_sets_no_variable_but_the_two(desktop):
    desktop.open(LINK)
    known = set(desktop.page().environment)
    data = {"LD_PRELOAD": "/tmp/x.so", "PATH": "/tmp", "DISPLAY": ":9", "activation-token": "a",
            "desktop-startup-id": "b", "XDG_ACTIVATION_TOKEN": "c", "activation-token=x": "d",
            "": "e", "x\nLD_PRELOAD": "f"}
    desktop.call("Open", GLib.Variant("(asa{sv})", (
        [LINK], {key: GLib.Variant("s", value) for key, value in data.items()})))
    environment = desktop.page().environment
    assert set(environment) - known == {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"}
    assert (environment["XDG_ACTIVATION_TOKEN"], environment["PATH"]) == ("a", "/usr/bin:/bin")


def test_a_sender_that_never_reads_its_answers_keeps_nobody_waiting(desktop, listener):
    desktop.expect_link(listener)
    sender = RawSender(desktop)
    # The bus refuses more calls of one sender than 128 before they are answered.
    for _ in range(50):
        sender.flood(100)
        listener.expect_log(*["screenpop"] * 100)
    desktop.expect_link(listener)


def test_signals_and_answers_that_nobody_asked_for_harm_nothing(desktop, listener):
    owner = desktop.ask_bus("GetNameOwner", NAME)
    desktop.bus.emit_signal(owner, OBJECT, INTERFACE, "Open", GLib.Variant("(as)", ([LINK],)))
    call = Gio.DBusMessage.new_method_call(owner, OBJECT, INTERFACE, "Open")
    call.set_serial(1)
    for answer in (call.new_method_reply(), call.new_method_error_literal("x.Error", "x")):
        answer.set_destination(owner)
        desktop.bus.send_message(answer, Gio.DBusSendMessageFlags.NONE)
    desktop.expect_link(listener)


def test_a_call_with_very_many_links_is_carried_out(desktop, listener):
    desktop.open(*["x"] * 20_000, LINK)
    listener.expect_log(*["x"] * 20_000, LINK)
    assert desktop.opened() == PAGE


def test_a_page_that_is_a_link_itself_ends_by_itself(new_desktop):
    desktop = new_desktop(service=SERVICE + " -log")
    desktop.install_handler(["screenpop"], command=PROGRAM + " %u")
    listener = desktop.listen("-log")
    links = [make_link("{}")]
    for _ in range(4):
        links.insert(0, page_link(links[0]))
    desktop.open(links[0])
    listener.expect_log(*links)
    assert listener.end() == SILENCE


class RawSender:
    """A connection to the bus that sends calls, and reads nothing once it is made."""

    def __init__(self, desktop):
        self._serial = 0
        self._socket = desktop.enter_context(socket.socket(socket.AF_UNIX))
        self._socket.settimeout(LIMIT)
        self._socket.connect(desktop.folder + "/bus")
        self._socket.sendall(b"\0AUTH EXTERNAL %s\r\n" % str(os.geteuid()).encode().hex().encode())
        self._read_until(b"\r\n")
        self._socket.sendall(b"BEGIN\r\n")
        self._call(None, BUS, "/org/freedesktop/DBus", BUS, "Hello")
        # The answer, and the signal that the name was given.
        self._read_until(b"NameAcquired")

    def flood(self, count):
        for _ in range(count):
            self._call(GLib.Variant("(as)", (["screenpop"],)), NAME, OBJECT, INTERFACE, "Open")

    def flood_until(self, is_over, name, links):
        """Sends the same call again and again, for which no answer is asked."""
        call = self._message(GLib.Variant("(as)", (links,)), name, OBJECT, INTERFACE, "Open")
        call.set_flags(Gio.DBusMessageFlags.NO_REPLY_EXPECTED)
        calls = call.to_blob(Gio.DBusCapabilityFlags.NONE) * 20
        while not is_over.is_set():
            self._socket.sendall(calls)

    def _message(self, body, *call):
        message = Gio.DBusMessage.new_method_call(*call)
        if body:
            message.set_body(body)
        self._serial += 1
        message.set_serial(self._serial)
        return message

    def _call(self, body, *call):
        self._socket.sendall(self._message(body, *call).to_blob(Gio.DBusCapabilityFlags.NONE))

    def _read_until(self, end):
        text = b""
        while end not in text:
            assert (block := self._socket.recv(4096)), text
            text += block
