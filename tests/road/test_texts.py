"""What a link may hold, and what comes of many links at once."""

from desktop import Desktop
from model import page_link
from road import PAGE, TEXTS, RoadTestCase, bulky_link, messages_of, pages


class TextsTest(RoadTestCase):
    # What a link may hold.

    def test_the_page_is_opened_whatever_the_script_type(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        for script_type in ("CSD", "OpenApplication", "OpenWebPage", "other", 7):
            link = page_link(PAGE, ScriptType=script_type)
            desktop.open(link)
            self.expect_messages(listener, link)
            self.assertEqual(desktop.opened(), PAGE)

    def test_an_escaped_page_reaches_the_handler_as_it_is(self):
        desktop = Desktop(self)
        page = "HTTPS://page.test/%C3%BC+%20?q=a&b;c='d'($HOME)*~!#e"
        desktop.open(page_link(page))
        self.assertEqual(desktop.opened(), page)

    def test_each_text_arrives_unchanged_over_the_bus(self):
        desktop = Desktop(self)
        self.expect_texts_unchanged(desktop, desktop.open,
                                    [*TEXTS, bulky_link(100_000), bulky_link(1_400_000)])

    def test_each_text_arrives_unchanged_by_a_command_line(self):
        desktop = Desktop(self)
        self.expect_texts_unchanged(desktop, desktop.run, [*TEXTS, bulky_link(100_000)])

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
        expected = messages_of(*map(page_link, pages(20)))
        self.assertEqual(sorted(listener.messages(len(expected))), sorted(expected))

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
