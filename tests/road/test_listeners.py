"""Who takes the links, and until when."""

import signal

from gi.repository import Gio

from desktop import INTERFACE, NAME, OBJECT, SERVICE, Desktop
from model import page_link
from processes import golden, status_of
from road import (FATAL, LINK, PAGE, RoadTestCase, bulky_link, messages_of,
                  pages)


class ListenersTest(RoadTestCase):
    # Who takes the links.

    def test_the_newest_start_takes_the_links_and_gives_them_back(self):
        desktop = Desktop(self)
        listeners = []
        for _ in range(5):
            listeners.append(desktop.listen("-log"))
            self.expect_link(desktop, listeners[-1])
        while listeners:
            newest = listeners.pop()
            desktop.wait_for_owner(newest.pid)
            self.expect_link(desktop, newest)
            self.expect_silence(newest.end())

    def expect_take_over(self, desktop, first, lines):
        """Another start takes the links, which the first program, that writes `lines`, has again."""
        second = desktop.listen("-log")
        self.expect_link(desktop, second)
        self.expect_silence(second.end(signal.SIGINT))
        desktop.wait_for_owner(first)
        self.expect_link(desktop, lines)

    def test_a_program_that_the_bus_started_has_the_links_again(self):
        desktop = Desktop(self, service=SERVICE + " -log")
        desktop.open(LINK)
        self.assertEqual(desktop.opened(), PAGE)
        desktop.daemon.banner()
        self.expect_take_over(desktop, desktop.owner(), desktop.daemon)

    def test_a_program_that_was_started_by_a_link_has_the_links_again(self):
        desktop = Desktop(self, service=None)
        first = desktop.start("-log", LINK)
        self.assertEqual(desktop.opened(), PAGE)
        first.banner()
        desktop.wait_for_owner(first.pid)
        self.expect_take_over(desktop, first.pid, first)

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

    def refuse_open(self, desktop, error, on_call):
        """Takes the name for this process, which answers each Open with an error of this name after
        `on_call`. The result takes the object away again."""
        def answer(*arguments):
            on_call()
            arguments[-1].return_dbus_error(error, "as the test has it")

        interface = Gio.DBusNodeInfo.new_for_xml(f"""<node><interface name="{INTERFACE}">
            <method name="Open"><arg type="as" direction="in"/><arg type="a{{sv}}" direction="in"/>
            </method></interface></node>""").interfaces[0]
        number = desktop.bus.register_object(OBJECT, interface, answer, None, None)
        self.own_name(desktop)
        return lambda: desktop.bus.unregister_object(number)

    def follow_where_open_is_refused(self, desktop, error):
        """Follows a link while this process has the name, which it gives back when it answers the
        call with an error of this name."""
        unregister = self.refuse_open(desktop, error,
                                      lambda: desktop.ask_bus("ReleaseName", NAME))
        owners = len(desktop.names_seen())
        follower = desktop.start(LINK)
        desktop.wait_until(lambda: len(desktop.names_seen()) > owners)
        unregister()
        return follower

    def test_an_owner_that_never_takes_a_link_is_not_asked_for_ever(self):
        desktop = Desktop(self)
        for error, reason in (("NoReply", "the application ends before it answers"),
                              ("ServiceUnknown", f"{NAME} changes hands all the time")):
            with self.subTest(error=error):
                calls = []
                unregister = self.refuse_open(desktop, "org.freedesktop.DBus.Error." + error,
                                              lambda: calls.append(None))
                follower = desktop.start(LINK)
                desktop.wait_until(lambda: len(calls) == 100)
                result = follower.finish()
                unregister()
                desktop.ask_bus("ReleaseName", NAME)
                self.assertEqual(result.errors, f"vastel-connect: the link was not taken: {reason}\n")
                self.assertEqual((result.output, result.status), ("", 1))

    def test_an_error_that_says_nobody_is_there_makes_the_application_of_a_link(self):
        desktop = Desktop(self, service=None)
        for error in ("org.freedesktop.DBus.Error.ServiceUnknown",
                      "org.freedesktop.DBus.Error.NameHasNoOwner",
                      "org.freedesktop.DBus.Error.TimedOut",
                      "org.freedesktop.DBus.Error.Spawn.ChildExited",
                      "org.freedesktop.systemd1.LoadFailed"):
            with self.subTest(error=error):
                follower = self.follow_where_open_is_refused(desktop, error)
                self.assertEqual(desktop.opened(), PAGE)
                follower.banner()
                desktop.wait_for_owner(follower.pid)
                self.expect_silence(follower.end())

    def test_any_other_error_refuses_a_link(self):
        desktop = Desktop(self, service=None)
        for error in ("org.freedesktop.DBus.Error.Failed", "org.freedesktop.DBus.Error.Spawn",
                      "org.freedesktop.DBus.Error.AccessDenied", "org.freedesktop.systemd",
                      "org.freedesktop.DBus.Error.LimitsExceeded",
                      "x.org.freedesktop.systemd1.LoadFailed"):
            with self.subTest(error=error):
                result = self.follow_where_open_is_refused(desktop, error).finish()
                self.assertEqual(result.errors,
                                 "vastel-connect: the link was refused: as the test has it\n")
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
                         messages_of(FATAL))
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

    def test_a_signal_comes_before_an_end_of_the_bus(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        listener.send(signal.SIGSTOP)
        desktop.kill_bus()
        listener.send(signal.SIGTERM)
        listener.send(signal.SIGCONT)
        self.expect_silence(listener.finish())

    def test_the_end_of_the_bus_ends_a_program_that_it_has_just_started(self):
        desktop = Desktop(self)
        desktop.ask_bus("StartServiceByName", NAME, 0)
        desktop.kill_bus()
        self.assertEqual(desktop.daemon.output.rest(), golden("banner"))

    def test_a_link_that_arrived_before_the_end_is_opened(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        listener.send(signal.SIGSTOP)
        answers = []
        desktop.call_open([LINK], answers)
        # Once this is answered, the bus has passed the call on.
        desktop.ask_bus("GetId")
        listener.send(signal.SIGTERM)
        listener.send(signal.SIGCONT)
        self.expect_messages(listener, LINK)
        self.assertEqual(desktop.opened(), PAGE)
        desktop.wait_until(lambda: answers)
        self.assertEqual(answers, [None])
        self.expect_silence(listener.finish())

    def test_a_signal_comes_before_a_link_that_arrived_with_it(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        listener.send(signal.SIGSTOP)
        answers = []
        # Nobody takes their log lines: acted upon first, they would keep the signal waiting.
        for _ in range(2):
            desktop.call_open([bulky_link(100_000)], answers)
        desktop.ask_bus("GetId")
        listener.send(signal.SIGTERM)
        listener.send(signal.SIGCONT)
        self.assertEqual(listener.wait(), 0)
        self.assertEqual(desktop.opened_all(2), [PAGE] * 2)

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
