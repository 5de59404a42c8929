"""A link on a web page, clicked in Chromium, opens its page in the same browser."""

import os

import browser
from clients import link_to
from desktop import PROGRAM, Desktop
from road import RoadTestCase


class BrowserTest(RoadTestCase):
    def on_each_desktop(self, check):
        """Where Chromium asks another opener, and with both spellings."""
        for current_desktop in ("GNOME", None):
            for prefix in ("screenpop:", "screenpop://"):
                with self.subTest(desktop=current_desktop, prefix=prefix):
                    self.make_desktop(current_desktop, prefix)
                    check()
                self.doCleanups()

    def test_a_link_reaches_the_running_program(self):
        self.on_each_desktop(self.check_running_program)

    def test_a_link_starts_the_program(self):
        self.on_each_desktop(self.check_start)

    def test_without_the_policy_the_question_comes_first(self):
        self.make_desktop("GNOME", "screenpop:", permitted=False)
        listener = self.desktop.listen("-log")
        self.chromium.show(f"{self.site.origin}/call")
        self.site.report()
        # The question takes the focus from the page.
        self.chromium.execute("onblur = () => fetch('/report', {method: 'POST', body: 'question'})")
        self.chromium.click("#link")
        self.assertEqual(self.site.report(), "question")
        self.assertEqual(listener.end().output, "")
        self.assertEqual(self.site.requests, ["/call"])

    def check_running_program(self):
        listener = self.desktop.listen("-log")
        self.click_link()
        self.expect_messages(listener, self.site.link)
        self.assertEqual(listener.end().output, "")

    def check_start(self):
        self.assertIsNone(self.desktop.owner())
        self.click_link()
        self.assertEqual(os.path.realpath(f"/proc/{self.desktop.owner()}/exe"),
                         os.path.realpath(PROGRAM))

    def make_desktop(self, current_desktop, prefix, permitted=True):
        self.desktop = Desktop(self, screen=True, XDG_CURRENT_DESKTOP=current_desktop)
        self.site = browser.Site(self)
        self.page = f"{self.site.origin}/customer?number=+31201234567&name=Jansen,%20M.#call"
        self.site.link = link_to(self.page, prefix)
        self.chromium = browser.Chromium(self, self.desktop, self.site.origin if permitted else None)
        self.desktop.install_handler(["http"], self.chromium.command)

    def click_link(self):
        start = f"{self.site.origin}/call"
        self.chromium.show(start)
        self.assertEqual(self.site.report(), start)
        self.chromium.click("#link")
        self.assertEqual(self.site.report(), self.page)
        self.assertEqual(sorted(self.chromium.addresses()), sorted([start, self.page]))
        self.assertEqual(self.site.requests, [
            "/call", "/customer?number=+31201234567&name=Jansen,%20M."])
