"""Firefox with and without the policy, and its question."""

from browser import Site
from clients import expect_recovery, link_to, page_of, session_variables
from desktop import Desktop
from firefox import Firefox
from road import RoadTestCase


class FirefoxTest(RoadTestCase):
    def start(self, permitted=True):
        self.desktop = Desktop(self, screen=True, **session_variables("GNOME"))
        self.site = Site(self)
        self.firefox = Firefox(self, self.desktop, self.site.origin if permitted else None)
        self.listener = self.desktop.listen("-log")

    def click(self, link):
        self.site.link = link
        self.firefox.show(self.site.origin + "/call")
        self.assertEqual(self.site.report(), self.site.origin + "/call")
        self.firefox.click("#link")

    def expect_page(self):
        self.expect_messages(self.listener, self.site.link)
        self.assertEqual(self.desktop.opened(), page_of("firefox"))

    def test_with_the_policy_no_question_comes(self):
        self.start()
        for prefix in ("screenpop:", "screenpop://"):
            self.click(link_to(page_of("firefox"), prefix))
            self.expect_page()
        self.assertEqual(self.listener.end().output, "")

    def test_the_policy_is_for_one_origin(self):
        self.start()
        link = link_to(page_of("firefox"))
        self.site.link = link
        self.firefox.show(self.site.plain_origin + "/call")
        self.site.report()
        self.firefox.click("#link")
        self.assertIn("Allow this site", self.firefox.answer("cancel"))
        self.assertEqual(self.listener.end().output, "")

    def test_without_the_policy_the_question_has_a_box(self):
        self.start(permitted=False)
        link = link_to(page_of("firefox"))
        self.click(link)
        self.assertEqual(self.firefox.answer("cancel"),
                         "Allow this site to open the screenpop link with Vastel Connect?")
        self.click(link)
        self.firefox.answer("accept")
        self.expect_page()
        self.click(link)
        self.firefox.answer("accept", remember=True)
        self.expect_page()
        self.click(link)
        self.expect_page()
        self.assertEqual(self.listener.end().output, "")

    def test_a_link_starts_the_program_and_its_page_is_a_tab(self):
        self.start()
        self.listener.end()
        self.desktop.install_handler(["http"], self.firefox.command)
        page = self.site.origin + "/customer?number=+31201234567&name=Jansen,%20M.#call"
        self.click(link_to(page))
        self.assertEqual(self.site.report(), page)
        self.assertIsNotNone(self.desktop.owner())
        self.assertEqual(sorted(self.firefox.addresses()), [self.site.origin + "/call", page])

    def test_after_a_bad_link_the_next_one_works(self):
        self.start()
        expect_recovery(self, self.desktop, self.listener, self.click)
        # Firefox keeps no such address.
        self.click("screenpop:" + "A" * 10_000_000)
        self.click(link_to(page_of("firefox")))
        self.expect_page()
        self.assertEqual(self.listener.end().output, "")
