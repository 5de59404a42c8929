"""What a link may hold, and what comes of many links at once."""

import base64
import unittest

from desktop import Desktop, make_link, page_link
from road import LINK, PAGE, TEXTS, RoadTestCase, bulky_link, messages_of, page_messages, pages


class TextsTest(RoadTestCase):
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

    # Many at once.

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
            desktop.call_open([page_link(page)], answers)
        self.assertEqual(desktop.opened_all(20), pages(20))
        desktop.wait_until(lambda: len(answers) == 20)
        self.assertEqual(set(answers), {None})


if __name__ == "__main__":
    unittest.main()
