"""The road of a link: from whoever follows it, over the session bus or a command line, to the page
in its default handler."""

import base64
import os
import select
import signal
import unittest

from gi.repository import Gio, GLib

from desktop import (INTERFACE, LIMIT, NAME, OBJECT, PROGRAM, SERVICE, Desktop, children, golden,
                     make_link, page_link, status_of)

PAGE = "https://page.test/"
LINK = page_link(PAGE)
FATAL = make_link("[]")

# Some openers ask whether there is one, and leave it at that.
DISPLAY = ":none"

# Texts of all forms that a link takes, its page being https://page.test/ wherever it has one.
TEXTS = [
    LINK,
    page_link(PAGE, "screenpop:"),
    page_link(PAGE, "SCREENPOP://"),
    page_link(PAGE, "ScreenPop:"),
    # "+", "/" and "=" in the base64.
    page_link(PAGE, Note="~~~???>>>"),
    page_link(PAGE, Note="ünïcödé ☃ ÿÿÿ"),
    page_link(PAGE, Note="~~~???>>>", prefix="screenpop:"),
    # Texts that a reader of URLs would change.
    "screenpop://",
    "screenpop:///",
    "screenpop:eyJhIjoxfQ%3D%3D",
    "screenpop://QUJD/../eHl6",
    "screenpop://a:b",
    "screenpop://user@host:80//x",
    "screenpop://QQ==#f?q=1",
    "screenpop://a b",
    "screenpop://Köln",
]


def has_page(text):
    return "eyJXZWJQYWdl" in text


def bulky_link(size):
    """A link of about that many characters, whose page is PAGE."""
    return page_link(PAGE, Note="x" * (size * 3 // 4))


def messages_of(text, *after):
    """The log messages of a link: those after its own text are given."""
    return ["new uri event", "process uri: " + text, *after]


def page_messages(text, page=PAGE):
    return messages_of(text, "process screenpop", "webpage: " + page)


def pages(count):
    return [f"https://page.test/{number:03}" for number in range(count)]


class RoadTest(unittest.TestCase):
    maxDiff = None

    def expect_silence(self, result):
        """A process that had nothing to say and did what it should."""
        self.assertEqual((result.output, result.errors, result.status), ("", "", 0))

    def expect_link(self, desktop, listener, page=PAGE):
        """Follows a link, which the listener is to log and open."""
        link = page_link(page)
        desktop.open(link)
        self.assertEqual(listener.messages(4), page_messages(link, page))
        self.assertEqual(desktop.opened(), page)

    def expect_error(self, name, function, *arguments):
        with self.assertRaises(GLib.Error) as raised:
            function(*arguments)
        self.assertEqual(Gio.DBusError.get_remote_error(raised.exception), name)

    # Over the bus.

    def test_open_cold_starts_the_program_and_opens_the_page(self):
        desktop = Desktop(self)
        desktop.open(LINK)
        self.assertEqual(desktop.opened(), PAGE)
        self.assertEqual(status_of(desktop.owner())["Name"], "vastel-connect")

    def test_open_cold_logs_only_the_links_after_the_first(self):
        desktop = Desktop(self, service=SERVICE + " -log")
        desktop.open(LINK)
        self.assertEqual(desktop.opened(), PAGE)
        # What the bus starts writes where the bus does.
        desktop.daemon.banner()
        self.expect_link(desktop, desktop.daemon, "https://page.test/second")

    def test_open_warm_logs_and_opens_the_page(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        for page in pages(3):
            self.expect_link(desktop, listener, page)

    def test_open_takes_several_links_in_their_order(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        links = [page_link(page) for page in pages(5)]
        desktop.open(*links)
        self.assertEqual(listener.messages(20),
                         [message for link, page in zip(links, pages(5))
                          for message in page_messages(link, page)])
        self.assertEqual(desktop.opened_all(5), pages(5))

    def test_open_cold_takes_several_links(self):
        desktop = Desktop(self)
        desktop.open(*map(page_link, pages(5)))
        self.assertEqual(desktop.opened_all(5), pages(5))

    def test_open_may_carry_no_link(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        desktop.open()
        self.expect_link(desktop, listener)

    def test_open_may_come_without_platform_data(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        desktop.call("Open", GLib.Variant("(as)", ([LINK, LINK],)))
        self.assertEqual(listener.messages(8), page_messages(LINK) * 2)
        self.assertEqual(desktop.opened_all(2), [PAGE] * 2)

    def test_open_may_want_no_answer(self):
        desktop = Desktop(self)
        call = Gio.DBusMessage.new_method_call(NAME, OBJECT, INTERFACE, "Open")
        call.set_body(GLib.Variant("(asa{sv})", ([LINK], {})))
        call.set_flags(Gio.DBusMessageFlags.NO_REPLY_EXPECTED)
        for _ in ("cold", "warm"):
            desktop.bus.send_message(call.copy(), Gio.DBusSendMessageFlags.NONE)
            self.assertEqual(desktop.opened(), PAGE)

    def test_platform_data_of_any_other_kind_is_passed_over(self):
        desktop = Desktop(self)
        desktop.open(LINK, x=GLib.Variant("(ia{sv}v)", (1, {}, GLib.Variant("as", ["y"]))),
                     activation_token="token", z=GLib.Variant("ay", b"zz"))
        self.assertEqual(desktop.page().environment["XDG_ACTIVATION_TOKEN"], "token")

    def test_activate_starts_the_program_and_is_answered(self):
        desktop = Desktop(self, service=SERVICE + " -log")
        desktop.call("Activate", GLib.Variant("(a{sv})", ({},)))
        desktop.daemon.banner()
        desktop.call("Activate", GLib.Variant("(a{sv})", ({},)))
        self.expect_link(desktop, desktop.daemon)

    def test_activate_action_is_answered(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        desktop.call("ActivateAction", GLib.Variant("(sava{sv})", (
            "quit", [GLib.Variant("s", "now")], {})))
        self.expect_link(desktop, listener)

    def test_a_start_without_a_link_does_not_wait_for_one_for_long(self):
        desktop = Desktop(self, service=SERVICE + " -log")
        desktop.ask_bus("StartServiceByName", NAME, 0)
        desktop.daemon.banner()
        self.expect_link(desktop, desktop.daemon)

    def test_wrong_arguments_are_an_error_and_harm_nothing(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        for method, parameters in [
                ("Open", GLib.Variant("(s)", (LINK,))),
                ("Open", GLib.Variant("(asa{ss})", ([LINK], {}))),
                ("Open", GLib.Variant("(asa{sv}s)", ([LINK], {}, ""))),
                ("Open", None),
                ("Activate", None),
                ("Activate", GLib.Variant("(s)", ("",))),
                ("ActivateAction", GLib.Variant("(s)", ("quit",)))]:
            with self.subTest(method=method, parameters=parameters):
                self.expect_error("org.freedesktop.DBus.Error.InvalidArgs", desktop.call, method,
                                  parameters)
        self.expect_link(desktop, listener)

    def test_an_unknown_method_is_an_error_and_harms_nothing(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        self.expect_error("org.freedesktop.DBus.Error.UnknownMethod", desktop.call, "Close",
                          GLib.Variant("(as)", ([LINK],)))
        # An error, whatever its name.
        with self.assertRaises(GLib.Error):
            desktop.call("Open", GLib.Variant("(as)", ([LINK],)), "org.example.Other")
        self.expect_link(desktop, listener)

    def test_the_bus_of_the_runtime_folder_is_found(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log", DBUS_SESSION_BUS_ADDRESS=None,
                                  XDG_RUNTIME_DIR=desktop.folder)
        self.expect_link(desktop, listener)

    # By a command line.

    def test_exec_cold_ends_silently_and_the_bus_starts_the_program(self):
        desktop = Desktop(self)
        process = desktop.start("-log", "-jsonlog", LINK)
        self.expect_silence(process.finish())
        self.assertEqual(desktop.opened(), PAGE)
        self.assertNotIn(desktop.owner(), (process.pid, None))

    def test_exec_warm_ends_silently_and_the_listener_opens_the_page(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        self.expect_silence(desktop.run("-log", LINK))
        self.assertEqual(listener.messages(4), page_messages(LINK))
        self.assertEqual(desktop.opened(), PAGE)
        self.assertEqual(desktop.owner(), listener.pid)

    def test_exec_takes_several_links_in_their_order(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        links = [page_link(page) for page in pages(4)]
        self.expect_silence(desktop.run(*links))
        self.assertEqual(listener.messages(16),
                         [message for link, page in zip(links, pages(4))
                          for message in page_messages(link, page)])
        self.assertEqual(desktop.opened_all(4), pages(4))

    def test_exec_without_a_service_becomes_the_application(self):
        desktop = Desktop(self, service=None)
        process = desktop.start("-log", LINK)
        self.assertEqual(desktop.opened(), PAGE)
        # The link of the start writes no log line.
        process.banner()
        self.expect_link(desktop, process, "https://page.test/second")
        self.assertEqual(desktop.owner(), process.pid)
        self.expect_silence(process.end())

    def test_exec_with_a_service_that_fails_becomes_the_application(self):
        desktop = Desktop(self, service="/bin/false")
        process = desktop.start("-log", LINK)
        self.assertEqual(desktop.opened(), PAGE)
        process.banner()
        self.expect_link(desktop, process, "https://page.test/second")

    def test_exec_with_a_service_that_is_not_there_becomes_the_application(self):
        desktop = Desktop(self, service="/nowhere/vastel-connect")
        process = desktop.start("-log", LINK)
        self.assertEqual(desktop.opened(), PAGE)
        process.banner()
        self.expect_link(desktop, process, "https://page.test/second")

    def test_exec_refuses_a_link_that_the_bus_does_not_carry(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        for character in ("\ufdd0", "\uffff", "\U0010fffe"):
            with self.subTest(character):
                result = desktop.run("screenpop:" + character)
                self.assertEqual(result.errors, "vastel-connect: the link was refused: the bus "
                                                "does not carry it\n")
                self.assertEqual((result.output, result.status), ("", 1))
        self.expect_link(desktop, listener)

    # What a link may hold.

    def test_each_kind_of_bad_link_gets_its_log_lines(self):
        desktop = Desktop(self)
        listener = desktop.listen("-jsonlog")
        no_page = ("process screenpop", "no webpage to open")
        undecoded = ("process screenpop", "Could not decode")
        invalid = ("Invalid protocol",)
        base64_of = lambda data: "screenpop://" + base64.b64encode(data).decode()
        cases = [
            ("", ("invalid protocol",)),
            ("screenpop", ("invalid protocol",)),
            (LINK.partition("://")[2], ("invalid protocol",)),
            (":", invalid),
            ("://" + LINK.partition("://")[2], invalid),
            ("mailto:someone@page.test", invalid),
            (PAGE, invalid),
            ("screenpop1://" + LINK.partition("://")[2], invalid),
            (" screenpop://" + LINK.partition("://")[2], invalid),
            ("screenpop ://" + LINK.partition("://")[2], invalid),
            ("\u017fcreenpop://" + LINK.partition("://")[2], invalid),
            ("screenpop:", undecoded),
            ("screenpop://", undecoded),
            (LINK + "\n", undecoded),
            (LINK + " ", undecoded),
            (LINK.replace("://", ":///"), undecoded),
            ("screenpop:eyJhIjoxfQ", undecoded),
            ("screenpop:eyJhIjoxfQ%3D%3D", undecoded),
            ("screenpop:eyJhIjoxfQ=", undecoded),
            ("screenpop:_-_-", undecoded),
            ("screenpop://Köln", undecoded),
            (base64_of(b"\xff"), undecoded),
            (base64_of(b'{"WebPage":"\xed\xa0\x80"}'), undecoded),
            (base64_of(b"{"), no_page),
            (base64_of(b'"' + PAGE.encode() + b'"'), no_page),
            (base64_of(b"null"), no_page),
            (base64_of(b"[" * 513 + b"]" * 513), no_page),
            (base64_of(b"{}\0"), no_page),
            (make_link({}), no_page),
            (make_link({"webpage": PAGE}), no_page),
            (make_link({"WebPage": 7}), no_page),
            (make_link({"WebPage": None}), no_page),
            (make_link({"WebPage": {"WebPage": PAGE}}), no_page),
            (make_link({"ScriptType": "OpenWebPage"}), no_page),
            (make_link({"ScriptType": "CSD", "CSDFileName": "/bin/true"}), no_page),
        ]
        for text, after in cases:
            with self.subTest(text=text):
                desktop.open(text)
                self.assertEqual(listener.messages(2 + len(after)), messages_of(text, *after))
        # Nothing was opened, and the next link is as good as any.
        self.expect_link(desktop, listener)
        self.expect_silence(listener.end())

    def test_the_page_is_opened_whatever_the_script_type(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        for script_type in ("CSD", "OpenApplication", "OpenWebPage", "other", 7):
            link = page_link(PAGE, ScriptType=script_type)
            desktop.open(link)
            self.assertEqual(listener.messages(4), page_messages(link))
            self.assertEqual(desktop.opened(), PAGE)

    def test_an_escaped_page_reaches_the_handler_as_it_is(self):
        desktop = Desktop(self)
        page = "HTTPS://page.test/%C3%BC+%20?q=a&b;c='d'($HOME)*~!#e"
        desktop.open(page_link(page))
        self.assertEqual(desktop.opened(), page)

    def test_each_text_arrives_unchanged_over_the_bus(self):
        desktop = Desktop(self)
        self.expect_texts_unchanged(desktop, desktop.open, TEXTS)

    def test_each_text_arrives_unchanged_by_a_command_line(self):
        desktop = Desktop(self)
        self.expect_texts_unchanged(desktop, desktop.run, TEXTS)

    def test_large_links_arrive_unchanged(self):
        desktop = Desktop(self)
        self.expect_texts_unchanged(desktop, desktop.open,
                                    [bulky_link(100_000), bulky_link(1_400_000)])

    def test_a_large_link_arrives_unchanged_by_a_command_line(self):
        desktop = Desktop(self)
        self.expect_texts_unchanged(desktop, desktop.run, [bulky_link(100_000)])

    def expect_texts_unchanged(self, desktop, follow, texts):
        listener = desktop.listen("-log")
        for text in texts:
            with self.subTest(text=text[:100]):
                follow(text)
                self.assertEqual(listener.messages(3)[:2], messages_of(text))
                self.assertEqual(listener.messages(1)[0] == "webpage: " + PAGE, has_page(text))
        opened = [text for text in texts if has_page(text)]
        self.assertEqual(desktop.opened_all(len(opened)), [PAGE] * len(opened))

    # By the desktop's own openers.

    def expect_opener_keeps_texts(self, *command, texts=TEXTS, **environment):
        # With and without the modules of GIO, which include the one that reads URLs as files.
        desktop = Desktop(self)
        for modules in (None, desktop.folder + "/empty"):
            def follow(text):
                self.expect_silence(desktop.spawn(*command, text, GIO_MODULE_DIR=modules,
                                                  **environment).finish())
            self.expect_texts_unchanged(desktop, follow, [*texts, bulky_link(100_000)])

    def test_gio_open_keeps_each_text(self):
        self.expect_opener_keeps_texts("gio", "open")

    def test_xdg_open_on_gnome_keeps_each_text(self):
        self.expect_opener_keeps_texts("xdg-open", XDG_CURRENT_DESKTOP="GNOME")

    def test_xdg_open_without_a_desktop_keeps_each_text(self):
        # It finds no handler for a scheme in capitals, and is slow.
        self.expect_opener_keeps_texts("xdg-open", DISPLAY=DISPLAY,
                                       texts=(LINK, TEXTS[4], TEXTS[6], TEXTS[-1]))

    def test_gio_open_cold_opens_the_page(self):
        desktop = Desktop(self)
        self.expect_silence(desktop.spawn("gio", "open", LINK).finish())
        self.assertEqual(desktop.opened(), PAGE)

    def test_xdg_open_cold_opens_the_page(self):
        desktop = Desktop(self)
        self.expect_silence(desktop.spawn("xdg-open", LINK, DISPLAY=DISPLAY).finish())
        self.assertEqual(desktop.opened(), PAGE)

    # Many at once.

    def start_at_once(self, desktop, links):
        return [desktop.start(link) for link in links]

    def test_twenty_at_once_are_opened_once_each_by_the_program_that_the_bus_starts(self):
        desktop = Desktop(self)
        for process in self.start_at_once(desktop, map(page_link, pages(20))):
            self.expect_silence(process.finish())
        self.assertEqual(desktop.opened_all(20), pages(20))
        self.assertEqual(len(desktop.names_seen()), 1)

    def test_twenty_at_once_are_opened_once_each_by_a_listener(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        for process in self.start_at_once(desktop, map(page_link, pages(20))):
            self.expect_silence(process.finish())
        self.assertEqual(desktop.opened_all(20), pages(20))
        self.assertEqual(sorted(listener.messages(80)[3::4]),
                         ["webpage: " + page for page in pages(20)])

    def test_twenty_at_once_are_opened_once_each_by_one_of_them(self):
        desktop = Desktop(self, service=None)
        processes = self.start_at_once(desktop, map(page_link, pages(20)))
        self.assertEqual(desktop.opened_all(20), pages(20))
        for process in processes:
            if process.pid != desktop.owner():
                self.expect_silence(process.finish())
        self.assertEqual([process.pid for process in processes if process.is_running()],
                         [desktop.owner()])

    def test_twenty_calls_at_once_are_carried_out_once_each(self):
        desktop = Desktop(self)
        answers = []
        for page in pages(20):
            self.call_open(desktop, page_link(page), answers)
        self.assertEqual(desktop.opened_all(20), pages(20))
        desktop.wait_until(lambda: len(answers) == 20)

    def call_open(self, desktop, link, answers):
        """Follows a link, and appends the answer when it comes."""
        desktop.bus.call(NAME, OBJECT, INTERFACE, "Open", GLib.Variant("(asa{sv})", ([link], {})),
                         None, Gio.DBusCallFlags.NONE, LIMIT * 1000, None,
                         lambda bus, result: answers.append(bus.call_finish(result)))

    # Who takes the links.

    def test_the_newest_start_takes_the_links_and_gives_them_back(self):
        desktop = Desktop(self)
        first = desktop.listen("-log")
        self.expect_link(desktop, first)
        second = desktop.listen("-log")
        self.expect_link(desktop, second)
        self.expect_silence(second.end(signal.SIGINT))
        desktop.wait_for_owner(first.pid)
        self.expect_link(desktop, first)
        self.expect_silence(first.end())

    def test_the_links_go_from_each_listener_to_the_one_before(self):
        desktop = Desktop(self)
        listeners = [desktop.listen("-log") for _ in range(5)]
        while listeners:
            newest = listeners.pop()
            desktop.wait_for_owner(newest.pid)
            self.expect_link(desktop, newest)
            self.expect_silence(newest.end())

    def test_a_program_that_the_bus_started_has_the_links_again(self):
        desktop = Desktop(self, service=SERVICE + " -log")
        desktop.open(LINK)
        self.assertEqual(desktop.opened(), PAGE)
        first = desktop.owner()
        desktop.daemon.banner()
        second = desktop.listen("-log")
        self.expect_link(desktop, second)
        self.expect_silence(second.end(signal.SIGINT))
        desktop.wait_for_owner(first)
        self.expect_link(desktop, desktop.daemon)

    def test_a_program_that_was_started_by_a_link_has_the_links_again(self):
        desktop = Desktop(self, service=None)
        first = desktop.start("-log", LINK)
        self.assertEqual(desktop.opened(), PAGE)
        first.banner()
        desktop.wait_for_owner(first.pid)
        second = desktop.listen("-log")
        self.expect_link(desktop, second)
        self.expect_silence(second.end(signal.SIGINT))
        desktop.wait_for_owner(first.pid)
        self.expect_link(desktop, first)

    def test_a_link_during_the_take_over_is_opened_once(self):
        desktop = Desktop(self)
        desktop.listen()
        for page in pages(10):
            second = desktop.start()
            follower = desktop.start(page_link(page))
            self.expect_silence(follower.finish())
            self.assertEqual(desktop.opened(), page)
            second.end()

    def own_name(self, desktop):
        DO_NOT_QUEUE = 4
        self.assertEqual(desktop.ask_bus("RequestName", NAME, DO_NOT_QUEUE), 1)

    def test_a_foreign_owner_that_takes_no_links_is_reported(self):
        desktop = Desktop(self)
        self.own_name(desktop)
        result = desktop.run(LINK)
        self.assertRegex(result.errors, r"\Avastel-connect: the link was refused: [^\n]+\n\Z")
        self.assertEqual((result.output, result.status), ("", 1))

    def test_a_start_waits_behind_a_foreign_owner(self):
        desktop = Desktop(self)
        self.own_name(desktop)
        process = desktop.start("-log")
        process.banner()
        self.assertEqual(process.errors.next(), f"vastel-connect: {NAME} belongs to another "
                                                "program: links arrive when it ends")
        desktop.ask_bus("ReleaseName", NAME)
        desktop.wait_for_owner(process.pid)
        self.expect_link(desktop, process)
        self.expect_silence(process.end())

    # The link that ends the program.

    def test_an_array_ends_the_program_and_is_no_error_for_its_sender(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        desktop.open(FATAL)
        result = listener.finish()
        self.assertEqual((result.status, result.errors), (70, ""))
        self.assertEqual([line[len("Log 00:00:00> "):] for line in result.output.splitlines()],
                         messages_of(FATAL, "process screenpop"))
        desktop.wait_for_owner(None)
        desktop.open(LINK)
        self.assertEqual(desktop.opened(), PAGE)

    def test_an_array_leaves_the_links_to_the_other_program(self):
        desktop = Desktop(self)
        first = desktop.listen("-log")
        second = desktop.listen("-log")
        desktop.open(FATAL)
        self.assertEqual(second.finish().status, 70)
        desktop.wait_for_owner(first.pid)
        self.expect_link(desktop, first)

    def test_an_array_ends_a_program_that_it_starts(self):
        desktop = Desktop(self)
        desktop.open(FATAL)
        desktop.wait_for_owner(None)
        desktop.open(LINK)
        self.assertEqual(desktop.opened(), PAGE)

    def test_an_array_on_the_command_line_ends_the_program_that_it_becomes(self):
        desktop = Desktop(self, service=None)
        result = desktop.run("-log", FATAL)
        self.assertEqual((result.output, result.errors, result.status), ("", "", 70))

    def test_twenty_arrays_in_turn_are_no_error_for_their_senders(self):
        desktop = Desktop(self)
        for _ in range(20):
            self.expect_silence(desktop.run(FATAL))
        desktop.wait_for_owner(None)
        desktop.open(LINK)
        self.assertEqual(desktop.opened(), PAGE)

    def test_twenty_arrays_at_once_are_no_error_for_their_senders(self):
        desktop = Desktop(self)
        for process in self.start_at_once(desktop, [FATAL] * 20):
            self.expect_silence(process.finish())
        desktop.wait_for_owner(None)
        desktop.open(LINK)
        self.assertEqual(desktop.opened(), PAGE)

    def test_links_among_twenty_arrays_are_opened_once_each(self):
        desktop = Desktop(self)
        links = [link for page in pages(5) for link in [FATAL] * 4 + [page_link(page)]]
        for process in self.start_at_once(desktop, links):
            self.expect_silence(process.finish())
        self.assertEqual(desktop.opened_all(5), pages(5))

    # The end of the bus, and of the program.

    def test_the_end_of_the_bus_ends_the_program(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        self.expect_link(desktop, listener)
        desktop.kill_bus()
        result = listener.finish()
        self.assertEqual((result.output, result.errors, result.status),
                         ("", "vastel-connect: the session bus is gone\n", 1))

    def test_the_end_of_the_bus_ends_a_program_that_waits_for_its_first_link(self):
        desktop = Desktop(self)
        desktop.ask_bus("StartServiceByName", NAME, 0)
        desktop.kill_bus()
        self.assertEqual(desktop.daemon.output.rest(), golden("banner"))

    def test_a_link_that_arrived_before_the_end_is_opened(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        listener.send(signal.SIGSTOP)
        answers = []
        self.call_open(desktop, LINK, answers)
        # Once this is answered, the bus has passed the call on.
        desktop.ask_bus("GetId")
        listener.send(signal.SIGTERM)
        listener.send(signal.SIGCONT)
        self.assertEqual(listener.messages(4), page_messages(LINK))
        self.assertEqual(desktop.opened(), PAGE)
        desktop.wait_until(lambda: answers)
        self.expect_silence(listener.finish())

    # Activation tokens.

    def expect_tokens(self, desktop, token=None, startup_id=None):
        environment = desktop.page().environment
        self.assertEqual((environment.get("XDG_ACTIVATION_TOKEN"),
                          environment.get("DESKTOP_STARTUP_ID")), (token, startup_id))

    def test_tokens_of_the_bus_reach_the_handler_of_their_link_only(self):
        desktop = Desktop(self)
        desktop.open(LINK, activation_token="token-1", desktop_startup_id="id_TIME1")
        self.expect_tokens(desktop, "token-1", "id_TIME1")
        desktop.open(LINK)
        self.expect_tokens(desktop)
        desktop.open(LINK, LINK, desktop_startup_id="id_TIME2")
        self.expect_tokens(desktop, None, "id_TIME2")
        self.expect_tokens(desktop, None, "id_TIME2")
        desktop.open(LINK, activation_token="token-2")
        self.expect_tokens(desktop, "token-2")

    def test_a_token_goes_with_no_link_when_its_own_opens_nothing(self):
        desktop = Desktop(self)
        desktop.open("screenpop:", activation_token="token")
        desktop.call("Activate", GLib.Variant("(a{sv})", (
            {"activation-token": GLib.Variant("s", "token")},)))
        desktop.open(LINK)
        self.expect_tokens(desktop)

    def test_tokens_of_a_command_line_reach_the_handler_of_their_link_only(self):
        desktop = Desktop(self)
        for _ in ("cold", "warm"):
            self.expect_silence(desktop.run(LINK, XDG_ACTIVATION_TOKEN="token",
                                            DESKTOP_STARTUP_ID="id_TIME1"))
            self.expect_tokens(desktop, "token", "id_TIME1")
            self.expect_silence(desktop.run(LINK))
            self.expect_tokens(desktop)

    def test_tokens_of_a_launch_link_reach_its_handler_only(self):
        desktop = Desktop(self, service=None)
        process = desktop.start(LINK, XDG_ACTIVATION_TOKEN="token", DESKTOP_STARTUP_ID="id_TIME1")
        self.expect_tokens(desktop, "token", "id_TIME1")
        process.banner()
        desktop.wait_for_owner(process.pid)
        desktop.open(LINK)
        self.expect_tokens(desktop)

    def test_tokens_of_the_start_are_not_those_of_a_later_link(self):
        desktop = Desktop(self)
        desktop.listen(XDG_ACTIVATION_TOKEN="token", DESKTOP_STARTUP_ID="id_TIME1")
        desktop.open(LINK)
        self.expect_tokens(desktop)

    def test_tokens_of_the_bus_environment_reach_no_handler(self):
        desktop = Desktop(self, XDG_ACTIVATION_TOKEN="stale", DESKTOP_STARTUP_ID="stale")
        desktop.open(LINK)
        self.expect_tokens(desktop)

    def test_the_longest_token_is_passed_on(self):
        desktop = Desktop(self)
        desktop.open(LINK, activation_token="x" * 1024, desktop_startup_id="!~" * 512)
        self.expect_tokens(desktop, "x" * 1024, "!~" * 512)

    def test_hostile_tokens_are_dropped(self):
        desktop = Desktop(self)
        for token in ("", "x" * 1025, "a b", "a\nb", "a\tb", "a\x7f", "\x1b[0m", "tökén",
                      GLib.Variant("i", 1), GLib.Variant("as", ["token"]), GLib.Variant("ay", b"t"),
                      GLib.Variant("v", GLib.Variant("s", "token"))):
            with self.subTest(token=token):
                desktop.open(LINK, activation_token=token, desktop_startup_id=token)
                self.expect_tokens(desktop)

    def test_hostile_tokens_of_a_command_line_are_dropped(self):
        desktop = Desktop(self)
        for token in ("", "x" * 1025, "a b", b"\xff"):
            with self.subTest(token=token):
                self.expect_silence(desktop.run(LINK, XDG_ACTIVATION_TOKEN=token,
                                                DESKTOP_STARTUP_ID=token))
                self.expect_tokens(desktop)

    # How a handler is started.

    def expect_clean_start(self, page):
        self.assertEqual(int(page.status["SigBlk"], 16), 0)
        ignored = int(page.status["SigIgn"], 16)
        for number in (signal.SIGPIPE, signal.SIGINT, signal.SIGTERM, signal.SIGHUP,
                       signal.SIGCHLD):
            self.assertFalse(ignored >> (number - 1) & 1, number)
        self.assertEqual(page.descriptors, [0, 1, 2])
        self.assertEqual(page.session, page.pid)
        self.assertEqual([name for name in page.environment if name.startswith("DBUS_STARTER")], [])

    def test_a_handler_starts_clean_of_a_program_that_the_bus_started(self):
        desktop = Desktop(self)
        for _ in ("launch link", "later link"):
            desktop.open(LINK)
            page = desktop.page()
            self.expect_clean_start(page)

    def test_a_handler_starts_clean_of_a_listener(self):
        desktop = Desktop(self)
        reader, writer = os.pipe()
        os.set_inheritable(writer, True)
        desktop.listen("-log", streams={"pass_fds": [writer]})
        os.close(writer)
        os.close(reader)
        desktop.open(LINK)
        self.expect_clean_start(desktop.page())

    def test_an_opener_starts_clean(self):
        desktop = Desktop(self)
        self.install_openers(desktop)
        desktop.listen(PATH=desktop.folder + "/openers")
        desktop.open(page_link("other:page"))
        self.expect_clean_start(desktop.page())

    def test_a_handler_outlives_the_program(self):
        desktop = Desktop(self)
        # It reads from the end of a pipe that only the test closes.
        os.mkfifo(desktop.folder + "/fifo")
        handler = desktop.install_script("patient", f"read line < {desktop.folder}/fifo\n"
                                                    f"exec {desktop.folder}/bin/browser \"$@\"\n")
        desktop.install_handler(command=handler + " %u")
        listener = desktop.listen()
        desktop.open(LINK)
        with open(desktop.folder + "/fifo", "w", encoding="ascii") as fifo:
            self.expect_silence(listener.end())
            fifo.write("now\n")
        self.assertEqual(desktop.opened(), PAGE)

    def test_no_zombie_is_left_after_twenty_links(self):
        desktop = Desktop(self)
        listener = desktop.listen()
        desktop.open(*[LINK] * 20)
        for _ in range(20):
            wait_for_end(desktop.page().pid)
        desktop.open(LINK)
        last = desktop.page().pid
        self.assertLessEqual(set(children(listener.pid)), {last})

    def test_a_handler_gets_a_scope_of_its_own(self):
        desktop = Desktop(self)
        units = self.provide_service_manager(desktop)
        desktop.open(LINK)
        pid = desktop.page().pid
        desktop.wait_until(lambda: units)
        ((name, mode, properties, auxiliary),) = units
        self.assertEqual(name, f"app-vastel\\x2dconnect-browser-{pid}.scope")
        self.assertEqual((mode, auxiliary), ("fail", []))
        self.assertEqual(dict(properties), {"PIDs": [pid], "Slice": "app.slice",
                                            "CollectMode": "inactive-or-failed"})

    def provide_service_manager(self, desktop):
        """Stands in for the user's service manager; its calls are appended to the result."""
        calls = []

        def on_call(_bus, _sender, _path, _interface, _method, parameters, invocation):
            calls.append(parameters.unpack())
            invocation.return_value(GLib.Variant("(o)", ("/job/1",)))

        interface = Gio.DBusNodeInfo.new_for_xml("""<node>
            <interface name="org.freedesktop.systemd1.Manager"><method name="StartTransientUnit">
            <arg type="s" direction="in"/><arg type="s" direction="in"/>
            <arg type="a(sv)" direction="in"/><arg type="a(sa(sv))" direction="in"/>
            <arg type="o" direction="out"/></method></interface></node>""").interfaces[0]
        desktop.bus.register_object("/org/freedesktop/systemd1", interface, on_call, None, None)
        self.assertEqual(desktop.ask_bus("RequestName", "org.freedesktop.systemd1", 0), 1)
        return calls

    # Which handler is started.

    def install_openers(self, desktop, *names):
        for name in names or ("gio", "xdg-open"):
            desktop.install_reporter("openers/" + name)

    def expect_opener(self, desktop, page, *expected):
        """Follows a link, whose page is to reach an opener with these arguments."""
        desktop.open(page_link(page))
        report = desktop.page()
        self.assertEqual((os.path.basename(report.program), *report.arguments), expected)

    def listen_with_openers(self, desktop, *names, **environment):
        self.install_openers(desktop, *names)
        return desktop.listen("-log", PATH=desktop.folder + "/openers", **environment)

    def test_a_page_without_a_scheme_reaches_no_opener(self):
        desktop = Desktop(self)
        listener = self.listen_with_openers(desktop)
        for page in ("", "foo", "/etc/passwd", "--help", "-h", "//page.test/", ":x",
                     "1http://page.test/", "../x", "%68ttp://page.test/", "?", "#"):
            with self.subTest(page=page):
                link = page_link(page)
                desktop.open(link)
                self.assertEqual(listener.messages(4), page_messages(link, page))
        # Had one been started, its report would be in excess.
        self.expect_link(desktop, listener)

    def test_a_page_that_forms_no_url_reaches_no_opener(self):
        desktop = Desktop(self)
        listener = self.listen_with_openers(desktop)
        for page in ("https://page.test/a b", "https://page.test/\0", " https://page.test/",
                     "https://page.test/%", "https://page.test/%zz", "https://page.test/#a#b",
                     "https://page.test/ü", "https://page.test/\\", "https://page.test/\t",
                     "https://page.test/|", "other:<x>", "other:\"x\"", "other:`x`", "other:{x}"):
            with self.subTest(page=page):
                link = page_link(page)
                desktop.open(link)
                self.assertEqual(listener.messages(4), page_messages(link, page))
        self.expect_link(desktop, listener)

    def test_a_file_is_left_to_the_opener(self):
        desktop = Desktop(self)
        desktop.install_handler(("http", "https", "file"))
        self.listen_with_openers(desktop)
        self.expect_opener(desktop, "file:///etc/passwd", "gio", "open", "file:///etc/passwd")

    def test_a_scheme_without_a_handler_is_left_to_the_opener(self):
        desktop = Desktop(self)
        self.listen_with_openers(desktop)
        self.expect_opener(desktop, "other:page", "gio", "open", "other:page")

    def test_a_terminal_handler_is_left_to_the_opener(self):
        desktop = Desktop(self)
        desktop.install_handler(lines=["Terminal=true"])
        self.listen_with_openers(desktop)
        self.expect_opener(desktop, PAGE, "gio", "open", PAGE)

    def test_a_quoted_command_is_left_to_the_opener(self):
        desktop = Desktop(self)
        desktop.install_handler(command=f'"{desktop.folder}/bin/browser" "%u"')
        self.listen_with_openers(desktop)
        self.expect_opener(desktop, PAGE, "gio", "open", PAGE)

    def test_another_opener_stands_in_where_one_is_missing(self):
        desktop = Desktop(self)
        self.listen_with_openers(desktop, "xdg-open")
        self.expect_opener(desktop, "other:page", "xdg-open", "other:page")

    def test_no_opener_at_all_harms_nothing(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log", PATH="/nowhere")
        link = page_link("other:page")
        desktop.open(link)
        self.assertEqual(listener.messages(4), page_messages(link, "other:page"))
        self.expect_link(desktop, listener)

    def test_kde_is_left_its_own_choice_of_browser(self):
        desktop = Desktop(self)
        desktop.install_handler(("http", "https", "other"))
        self.listen_with_openers(desktop, XDG_CURRENT_DESKTOP="KDE")
        self.expect_opener(desktop, PAGE, "xdg-open", PAGE)
        self.expect_opener(desktop, "http://page.test/", "xdg-open", "http://page.test/")
        self.expect_opener(desktop, "other:page", "browser", "other:page")

    def test_the_real_opener_finds_a_handler_that_is_not_plain(self):
        desktop = Desktop(self)
        desktop.install_handler(command=f'"{desktop.folder}/bin/browser" %u')
        desktop.open(LINK)
        self.assertEqual(desktop.opened(), PAGE)

    def test_a_handler_may_have_further_arguments(self):
        desktop = Desktop(self)
        desktop.install_handler(command=desktop.folder + "/bin/browser --new-window %U --")
        self.listen_with_openers(desktop)
        self.expect_opener(desktop, PAGE, "browser", "--new-window", PAGE, "--")

    # At rest.

    def test_the_program_rests_in_one_thread(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        self.expect_link(desktop, listener)
        switches = lambda: int(status_of(listener.pid)["voluntary_ctxt_switches"])
        before = switches()
        # Something else for a while, that the program has no part in.
        for _ in range(20):
            self.assertEqual(desktop.run("-help").output, golden("banner", "usage"))
        # At most it had still to lie down.
        self.assertLessEqual(switches() - before, 1)
        self.assertEqual(status_of(listener.pid)["Threads"], "1")


def wait_for_end(pid):
    try:
        descriptor = os.pidfd_open(pid)
    except ProcessLookupError:
        return
    with os.fdopen(descriptor) as process:
        assert select.select([process], [], [], LIMIT)[0], f"{pid} does not end"


if __name__ == "__main__":
    unittest.main()
