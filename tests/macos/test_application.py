"""Tests the macOS application as GNUstep's AppKit runs it."""
import datetime
import json
import os
import re

import judge
from judge import data_lines, text_event
from model import expect, make_link, page_link

BANNER = data_lines("banner")
SET_HANDLER = "@set handler GURL GURL AppDelegate UriEventHandlerWithEvent:withReplyEvent:"
REMOVE_HANDLER = "@remove handler GURL GURL"
METHODS = ("window setWindow: applicationWillFinishLaunching: applicationDidFinishLaunching: "
           "applicationWillTerminate: UriEventHandlerWithEvent:withReplyEvent: init")
WILL_FINISH = ["@will finish launching", SET_HANDLER]
LAUNCHED = [
    "@methods " + METHODS + " .cxx_destruct .cxx_construct",
    "@window hidden",
    "@unknown arguments as open: text NO",
]
LAUNCH = WILL_FINISH + LAUNCHED
ENDED_BY_ITSELF = ["@terminate, sender AppDelegate", REMOVE_HANDLER]
ENDED_BY_SYSTEM = ["@terminate, sender (null)", REMOVE_HANDLER]

PAGE = "https://crm.example/48213"


def plain(*messages):
    return [f"Log HH:mm:ss> {message}" for message in messages]


def logged(uri):
    """The plain lines of a link."""
    return plain(*expect(uri).messages)


def as_json(*messages):
    return ['{"datetime":"datetime","event":"Log","message":%s}'
            % json.dumps(message, ensure_ascii=False) for message in messages]


class Life(judge.JudgeTest):
    def test_registers_before_it_reads_the_command_line(self):
        application = self.start("-log")
        self.assertEqual(application.lines_until("@did finish launching"), LAUNCH)
        self.assertEqual([application.output.next() for _ in BANNER], BANNER)
        self.assertEqual(application.terminate(), ENDED_BY_SYSTEM)
        self.assertEqual(application.wait(), 0)

    def test_handles_the_link_that_launched_it_without_a_log_line(self):
        application = self.start("-log", "-jsonlog", launch=text_event(page_link(PAGE)))
        self.assertEqual(application.lines_until("@did finish launching"),
                         LAUNCH + ["@open " + PAGE])
        self.assertEqual([application.output.next() for _ in BANNER], BANNER)
        self.assertEqual(application.terminate(), ENDED_BY_SYSTEM)

    def test_keeps_the_methods_in_order(self):
        application = self.start("-help")
        methods = [line for line in application.rest() if line.startswith("@methods ")]
        self.assertEqual(len(methods), 1)
        self.assertTrue(methods[0].startswith("@methods " + METHODS + " .cxx_"), methods)

    def test_shows_no_window(self):
        self.assertIn("@window hidden", self.run_through("-help"))

    def test_holds_nothing_of_the_tests(self):
        binary = judge.EXECUTABLE.read_bytes()
        self.assertIn(b"UriEventHandlerWithEvent:withReplyEvent:", binary)
        for word in (b"ConnectTest", b"TestDesktop", b"recorded_", b"CONNECT_TEST"):
            self.assertNotIn(word, binary)


class Switches(judge.JudgeTest):
    def printed(self, *arguments, launch=LAUNCH):
        """What a start prints that ends by itself, between launch and end."""
        lines = self.run_through(*arguments)
        start = lines.index("@did finish launching")
        self.assertEqual(lines[:start], launch)
        self.assertEqual(lines[-2:], ENDED_BY_ITSELF)
        return lines[start + 1:-2]

    def test_print_and_end(self):
        for argument, name in (("-help", "help"), ("-h", "help"), ("-HELP", "help"),
                               ("-changelog", "changelog"), ("-showuri", "showuri")):
            with self.subTest(argument):
                self.assertEqual(self.printed(argument), data_lines("banner", name))

    def test_with_a_slash_open_no_file(self):
        for argument, name in (("/help", "help"), ("/h", "help"), ("/changelog", "changelog"),
                               ("/showuri", "showuri")):
            with self.subTest(argument):
                launch = WILL_FINISH + ["@pass over " + argument[1:]] + LAUNCHED
                self.assertEqual(self.printed(argument, launch=launch),
                                 data_lines("banner", name))

    def test_leave_the_opening_of_files_to_who_asks_for_it(self):
        lines = self.run_through("/help", "-NSTreatUnknownArgumentsAsOpen", "YES")
        self.assertEqual(lines[:3], WILL_FINISH + ["@open file help"])

    def test_print_in_their_own_order(self):
        self.assertEqual(self.printed("-showuri", "/changelog", "-log", "-help"),
                         data_lines("banner", "help", "changelog", "showuri"))

    def test_for_the_log_print_nothing_at_the_start(self):
        for argument in ("-log", "/log", "-jsonlog", "/jsonlog", "--help", "help", "-help=1"):
            with self.subTest(argument):
                application = self.start_waiting(argument)
                self.assertEqual(application.terminate(), ENDED_BY_SYSTEM)


class Events(judge.JudgeTest):
    def test_open_the_page_with_the_exact_address(self):
        application = self.start_waiting("-log")
        for page in (PAGE, "http://h/?q=a%20b&c=%C3%A9#part", "https://Host.Example/Path",
                     "tel:+31201234567", "mailto:someone@example.org?subject=a%2Bb",
                     "custom.scheme+x:opaque"):
            with self.subTest(page):
                self.assertEqual(application.send_event(text_event(page_link(page))),
                                 logged(page_link(page)) + ["@open " + page])

    def test_open_nothing_that_forms_no_url_or_has_no_scheme(self):
        application = self.start_waiting("-log")
        for page in ("http://h/a b", "http://h/\u00e9", "a%zz:", "", "foo", "/etc/passwd",
                     "--help"):
            with self.subTest(page):
                self.assertEqual(application.send_event(text_event(page_link(page))),
                                 logged(page_link(page)))

    def test_without_a_usable_text_are_logged(self):
        application = self.start_waiting("-log")
        for event in (None, {}, {"----": {}}, {"---x": {"text": "screenpop:e30="}}):
            with self.subTest(event):
                self.assertEqual(application.send_event(event),
                                 plain("new uri event", "no event data"))

    def test_are_logged_before_they_are_looked_into(self):
        application = self.start_waiting("-log")
        self.assertEqual(application.send_event({"watched": True, **text_event("no colon")}),
                         plain("new uri event") + ["@asked for ----"]
                         + plain("process uri: no colon", "invalid protocol"))

    def test_keep_their_text(self):
        application = self.start_waiting("-jsonlog")
        for text in ("", "caf\u00e9 \U0001F600", "a\x7f", " x ", "tab\there"):
            with self.subTest(text):
                self.assertEqual(application.send_event(text_event(text)),
                                 as_json(*expect(text).messages))

    def test_are_rejected_each_in_its_own_words(self):
        application = self.start_waiting("-log")
        for uri in ("no colon", "mailto:someone@example.org", "screenpop://", "ScreenPop:e30=",
                    "a\0b:c"):
            with self.subTest(uri):
                self.assertEqual(application.send_event(text_event(uri)), logged(uri))

    def test_are_silent_without_a_log_switch(self):
        application = self.start_waiting()
        self.assertEqual(application.send_event(text_event("x")), [])
        self.assertEqual(application.send_event(text_event(page_link(PAGE))),
                         ["@open " + PAGE])

    def test_give_a_plain_line_before_a_json_line(self):
        application = self.start_waiting("-log", "-jsonlog")
        self.assertEqual(application.send_event(text_event("x")),
                         [line for message in expect("x").messages
                          for line in plain(message) + as_json(message)])

    def test_stop_the_program_when_the_request_is_an_array(self):
        application = self.start_waiting("-log")
        uri = make_link('[{"WebPage":"https://crm.example/"}]')
        application.start_event(text_event(uri))
        self.assertEqual([judge.without_time(line) for line in application.rest()], logged(uri))
        self.assertNotEqual(application.wait(), 0)


class Time(judge.JudgeTest):
    def stamp(self, *arguments, zone):
        """The first line of an event, and the moments before and after it."""
        application = self.start_waiting(*arguments, environment={"GNUSTEP_TZ": zone})
        before = datetime.datetime.now(datetime.timezone.utc).replace(microsecond=0)
        application.start_event({})
        line = application.lines_until("@done")[0]
        return before, line, datetime.datetime.now(datetime.timezone.utc)

    def test_is_local_in_both_forms(self):
        for zone, offset in (("UTC", "+0000"), ("Asia/Kathmandu", "+0545"),
                             ("Etc/GMT+3", "-0300")):
            with self.subTest(zone):
                before, line, after = self.stamp("-jsonlog", zone=zone)
                stamp = json.loads(line)["datetime"]
                self.assertTrue(stamp.endswith(offset), stamp)
                moment = datetime.datetime.strptime(stamp, "%Y-%m-%dT%H:%M:%S%z")
                self.assertTrue(before <= moment <= after, stamp)

                before, line, after = self.stamp("-log", zone=zone)
                clock = re.fullmatch(r"Log (\d\d:\d\d:\d\d)> new uri event", line)[1]
                zone_offset = moment.tzinfo
                seconds = int((after - before).total_seconds()) + 1
                self.assertIn(clock, [
                    (before + datetime.timedelta(seconds=i)).astimezone(zone_offset)
                    .strftime("%H:%M:%S") for i in range(seconds + 1)])


class Output(judge.JudgeTest):
    def test_without_a_reader_is_an_error_that_ends_nothing(self):
        reader, writer = os.pipe()
        os.close(reader)
        application = self.start("-log", "/help", output=writer)
        os.close(writer)
        self.assertEqual(application.wait(), 0)
