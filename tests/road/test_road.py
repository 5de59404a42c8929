"""The road of a link: from whoever follows it, over the session bus or a command line, to the page
in its default handler."""


from gi.repository import Gio, GLib

from desktop import INTERFACE, NAME, OBJECT, SERVICE, Desktop
from model import page_link
from processes import status_of
from road import LINK, PAGE, RoadTestCase, pages


class RoadTest(RoadTestCase):
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
        self.expect_messages(listener, *links)
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
        self.expect_messages(listener, LINK, LINK)
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

    def test_the_bus_tells_what_the_program_takes(self):
        desktop = Desktop(self)
        desktop.listen()
        (text,) = desktop.call("Introspect", None, "org.freedesktop.DBus.Introspectable")
        interface = Gio.DBusNodeInfo.new_for_xml(text).lookup_interface(INTERFACE)
        self.assertEqual([method.name for method in interface.methods],
                         ["Activate", "Open", "ActivateAction"])
        self.assertNotIn("Deprecated", text)

    def test_a_start_without_a_link_waits_for_none(self):
        desktop = Desktop(self, service=SERVICE + " -log")
        desktop.ask_bus("StartServiceByName", NAME, 0)
        # Answered once the links of the start, if any, are there.
        desktop.call("Ping", None, "org.freedesktop.DBus.Peer")
        desktop.open(LINK)
        self.assertEqual(desktop.opened(), PAGE)
        desktop.daemon.banner()
        self.expect_messages(desktop.daemon, LINK)
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
        self.expect_messages(listener, LINK)
        self.assertEqual(desktop.opened(), PAGE)
        self.assertEqual(desktop.owner(), listener.pid)

    def test_exec_takes_several_links_in_their_order(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        links = [page_link(page) for page in pages(4)]
        self.expect_silence(desktop.run(*links))
        self.expect_messages(listener, *links)
        self.assertEqual(desktop.opened_all(4), pages(4))

    def test_exec_without_a_service_that_starts_becomes_the_application(self):
        for service in (None, "/bin/false", "/nowhere/vastel-connect"):
            with self.subTest(service=service):
                desktop = Desktop(self, service=service)
                process = desktop.start("-log", LINK)
                self.assertEqual(desktop.opened(), PAGE)
                # The link of the start writes no log line.
                process.banner()
                self.expect_link(desktop, process, "https://page.test/second")
                self.assertEqual(desktop.owner(), process.pid)
                self.expect_silence(process.end())
            self.doCleanups()

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
