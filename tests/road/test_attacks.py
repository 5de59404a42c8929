"""What somebody could try who sends links: a web page, or a program of the session. (The model's
test follows hostile links of all kinds; here stands what has a form of its own.)"""

import os
import socket

from gi.repository import Gio, GLib

from desktop import INTERFACE, NAME, OBJECT, SERVICE, Desktop
from model import make_link, page_link
from processes import log_message
from road import LINK, PAGE, RoadTestCase, messages_of

SWITCHES = ("-help", "/help", "-h", "-changelog", "-showuri", "-log", "-jsonlog", "--dbus-service")


class AttacksTest(RoadTestCase):
    # Texts that are taken for options, or for files.

    def test_a_text_of_the_bus_is_never_a_switch(self):
        desktop = Desktop(self)
        listener = desktop.listen()
        for switch in SWITCHES:
            desktop.open(switch)
        desktop.open(LINK)
        self.assertEqual(desktop.opened(), PAGE)
        # Had one been read, there would be texts or log lines, or an end.
        self.expect_silence(listener.end())

    def test_a_link_of_a_command_line_is_never_a_switch(self):
        desktop = Desktop(self)
        listener = desktop.listen()
        for text in ("screenpop:-help", "x:/help", "h:-h"):
            self.expect_silence(desktop.run(text))
        desktop.open(LINK)
        self.assertEqual(desktop.opened(), PAGE)
        self.expect_silence(listener.end())

    def test_a_page_is_never_an_option_nor_a_file_of_an_opener(self):
        self.expect_no_opener(
            "--help", "-h", "--version", "/etc/passwd", "passwd", "../etc/passwd", "~", ".",
            "foo bar", "C:\\x", "https://page.test/\0--help", "$(reboot)", "`id`", "")

    def test_what_a_shell_would_read_reaches_the_handler_as_one_argument(self):
        desktop = Desktop(self)
        for page in ("https://page.test/$(touch;x)", "https://page.test/;reboot&x=*?~'!",
                     "https://page.test/%20--help", "https://page.test/%25u"):
            with self.subTest(page=page):
                desktop.open(page_link(page))
                self.assertEqual(desktop.opened(), page)

    def test_a_page_too_long_for_a_command_line_is_only_logged(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        for length in (131_071, 131_072, 1_000_000):
            page = PAGE + "x" * (length - len(PAGE))
            link = page_link(page)
            desktop.open(link)
            self.expect_messages(listener, link)
        # The first is as long as an argument may be.
        self.assertEqual(len(desktop.opened()), 131_071)
        self.expect_link(desktop, listener)

    def test_a_command_line_as_long_as_they_come_is_taken_whole(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        longest = "screenpop:" + "A" * (131_071 - len("screenpop:"))
        links = [longest] * 10 + [LINK]
        self.expect_silence(desktop.run(*links))
        for link in links[:-1]:
            self.expect_messages(listener, link)
        self.expect_messages(listener, LINK)
        self.assertEqual(desktop.opened(), PAGE)

    # The log.

    def test_no_message_forges_a_line_of_the_json_log(self):
        desktop = Desktop(self)
        listener = desktop.listen("-jsonlog")
        forged = '\n{"datetime":"x","event":"Log","message":"forged"}\r\n\x1b]0;x\x07\x1b[2J\x00\x7f"\\'
        for link in (page_link(forged), page_link("\u2028\u2029\x85")):
            desktop.open(link)
            lines = [listener.output.next() for _ in messages_of(link)]
            for line in lines:
                self.assertNotRegex(line, "[\x00-\x1f]")
            self.assertEqual([log_message(line) for line in lines], messages_of(link))
        text = "forged\n" + forged.replace("\0", "")
        desktop.open(text)
        self.expect_messages(listener, text)
        self.expect_silence(listener.end())

    # Platform data.

    def test_platform_data_sets_no_variable_but_the_two(self):
        desktop = Desktop(self)
        desktop.open(LINK)
        known = set(desktop.page().environment)
        data = {"LD_PRELOAD": "/tmp/x.so", "PATH": "/tmp", "DISPLAY": ":9", "activation-token": "a",
                "desktop-startup-id": "b", "XDG_ACTIVATION_TOKEN": "c", "activation-token=x": "d",
                "": "e", "x\nLD_PRELOAD": "f"}
        desktop.call("Open", GLib.Variant("(asa{sv})", (
            [LINK], {key: GLib.Variant("s", value) for key, value in data.items()})))
        environment = desktop.page().environment
        self.assertEqual(set(environment) - known, {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"})
        self.assertEqual(environment["XDG_ACTIVATION_TOKEN"], "a")
        self.assertEqual(environment["PATH"], "/usr/bin:/bin")

    # The bus.

    def test_a_sender_that_never_reads_its_answers_keeps_nobody_waiting(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        self.expect_link(desktop, listener)
        sender = RawSender(desktop)
        self.addCleanup(sender.close)
        # The bus refuses more calls of one sender than 128 before they are answered.
        for _ in range(50):
            sender.flood(100)
            self.expect_messages(listener, *["screenpop"] * 100)
        self.expect_link(desktop, listener)

    def test_calls_of_a_wrong_form_are_errors_and_harm_nothing(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        everything = GLib.Variant("(asa{sv})", ([LINK], {}))
        for path, interface, method, parameters in [
                ("/", INTERFACE, "Open", everything),
                (OBJECT + "/x", INTERFACE, "Open", everything),
                (OBJECT, "org.freedesktop.DBus.Properties", "Set", GLib.Variant(
                    "(ssv)", (INTERFACE, "x", GLib.Variant("s", "y")))),
                (OBJECT, INTERFACE, "open", everything),
                (OBJECT, INTERFACE, "Open", GLib.Variant("(aas)", ([[LINK]],))),
                (OBJECT, INTERFACE, "Open", GLib.Variant("(av)", ([GLib.Variant("s", LINK)],))),
                (OBJECT, INTERFACE, "Open", GLib.Variant("(ay)", (LINK.encode(),))),
                (OBJECT, INTERFACE, "Open", GLib.Variant("(asa{sv})", (["\ufdd0", LINK], {})))]:
            with self.subTest(path=path, interface=interface, method=method):
                with self.assertRaises(GLib.Error):
                    desktop.bus.call_sync(NAME, path, interface, method, parameters, None,
                                          Gio.DBusCallFlags.NONE, 30_000, None)
        self.expect_link(desktop, listener)

    def test_signals_and_answers_that_nobody_asked_for_harm_nothing(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        owner = desktop.ask_bus("GetNameOwner", NAME)
        desktop.bus.emit_signal(owner, OBJECT, INTERFACE, "Open", GLib.Variant("(as)", ([LINK],)))
        call = Gio.DBusMessage.new_method_call(owner, OBJECT, INTERFACE, "Open")
        call.set_serial(1)
        for answer in (call.new_method_reply(), call.new_method_error_literal("x.Error", "x")):
            answer.set_destination(owner)
            desktop.bus.send_message(answer, Gio.DBusSendMessageFlags.NONE)
        self.expect_link(desktop, listener)

    def test_a_call_with_very_many_links_is_carried_out(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        desktop.open(*["x"] * 20_000, LINK)
        self.expect_messages(listener, *["x"] * 20_000, LINK)
        self.assertEqual(desktop.opened(), PAGE)

    def test_a_program_that_took_the_name_first_keeps_it_from_a_start_and_is_named(self):
        desktop = Desktop(self)
        DO_NOT_QUEUE = 4
        self.assertEqual(desktop.ask_bus("RequestName", NAME, DO_NOT_QUEUE), 1)
        process = desktop.start("-log")
        process.banner()
        self.assertEqual(process.errors.next(), f"vastel-connect: {NAME} belongs to another "
                                                "program: links arrive when it ends")
        result = desktop.run(LINK)
        self.assertRegex(result.errors, r"\Avastel-connect: the link was refused: [^\n]+\n\Z")
        self.expect_silence(process.end())

    def test_a_page_that_is_a_link_itself_ends_by_itself(self):
        desktop = Desktop(self, service=SERVICE + " -log")
        desktop.install_handler(("http", "https", "screenpop"),
                                command=os.environ["CONNECT_STAGE"] + "/bin/vastel-connect %u")
        listener = desktop.listen("-log")
        link = make_link("{}")
        links = [link]
        for _ in range(4):
            link = page_link(link)
            links.append(link)
        desktop.open(link)
        self.expect_messages(listener, *reversed(links))
        self.expect_silence(listener.end())


class RawSender:
    """A connection to the bus that sends calls, and reads nothing once it is made."""

    def __init__(self, desktop):
        path = desktop.environment()["DBUS_SESSION_BUS_ADDRESS"].partition("path=")[2]
        self._serial = 1
        self._socket = socket.socket(socket.AF_UNIX)
        self._socket.settimeout(30)
        self._socket.connect(path)
        self._socket.sendall(b"\0AUTH EXTERNAL " + str(os.geteuid()).encode().hex().encode()
                             + b"\r\n")
        self._read_until(b"\r\n")
        self._socket.sendall(b"BEGIN\r\n" + self._call(1, "org.freedesktop.DBus",
                                                       "/org/freedesktop/DBus",
                                                       "org.freedesktop.DBus", "Hello", None))
        # The answer, and the signal that the name was given.
        self._read_until(b"NameAcquired")

    def flood(self, count):
        body = GLib.Variant("(as)", (["screenpop"],))
        for _ in range(count):
            self._serial += 1
            self._socket.sendall(self._call(self._serial, NAME, OBJECT, INTERFACE, "Open", body))

    def close(self):
        self._socket.close()

    @staticmethod
    def _call(serial, *call):
        *names, body = call
        message = Gio.DBusMessage.new_method_call(*names)
        if body:
            message.set_body(body)
        message.set_serial(serial)
        return message.to_blob(Gio.DBusCapabilityFlags.NONE)

    def _read_until(self, end):
        text = b""
        while end not in text:
            block = self._socket.recv(4096)
            if not block:
                raise EOFError
            text += block
