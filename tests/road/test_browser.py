"""A link on a web page, clicked in Chromium, opens its page in the same browser."""

import itertools
import os
import re
import unittest

import browser


class BrowserTest(unittest.TestCase):
    def test_link_in_gnome_reaches_running_program(self):
        self.check_running_program("GNOME", "screenpop:")

    def test_link_with_slashes_in_gnome_reaches_running_program(self):
        self.check_running_program("GNOME", "screenpop://")

    def test_link_in_plain_session_reaches_running_program(self):
        self.check_running_program(None, "screenpop:")

    def test_link_with_slashes_in_plain_session_reaches_running_program(self):
        self.check_running_program(None, "screenpop://")

    def test_link_in_gnome_starts_program(self):
        self.check_start("GNOME", "screenpop:")

    def test_link_with_slashes_in_gnome_starts_program(self):
        self.check_start("GNOME", "screenpop://")

    def test_link_in_plain_session_starts_program(self):
        self.check_start(None, "screenpop:")

    def test_link_with_slashes_in_plain_session_starts_program(self):
        self.check_start(None, "screenpop://")

    def test_without_the_policy_the_question_comes_first(self):
        desktop, _, _ = self.make_desktop("GNOME", "screenpop:", permitted=False)
        program = desktop.start_program("-log")
        desktop.browser.show(f"{desktop.pages.origin}/call")
        desktop.pages.wait_for_page()
        # The question takes the focus from the page.
        desktop.browser.execute(
            "onblur = () => fetch('/opened', {method: 'POST', body: 'question'})")
        desktop.browser.click("#link")
        self.assertEqual(desktop.pages.wait_for_page(), "question")
        log = self.end_program(program)
        self.assertEqual(log, [])
        self.assertEqual(desktop.pages.requests, ["/call"])

    def check_running_program(self, current_desktop, protocol):
        desktop, page, link = self.make_desktop(current_desktop, protocol)
        program = desktop.start_program("-log")
        self.click_link(desktop, page)

        log = self.end_program(program)
        self.assertEqual([re.sub(r"^Log \d\d:\d\d:\d\d> ", "", line) for line in log], [
            "new uri event", f"process uri: {link}", "process screenpop", f"webpage: {page}"])

    def end_program(self, program):
        """The log lines of a program that is asked to end."""
        program.terminate()
        output, _ = program.communicate(timeout=browser.LIMIT)
        self.assertEqual(program.returncode, 0)
        lines = output.split("\n")
        self.assertEqual(lines.pop(), "")
        return list(itertools.dropwhile(lambda line: not line.startswith("Log "), lines))

    def check_start(self, current_desktop, protocol):
        desktop, page, _ = self.make_desktop(current_desktop, protocol)
        self.assertFalse(desktop.has_program())
        self.click_link(desktop, page)
        self.assertEqual(desktop.program_path(),
                         os.path.realpath(os.environ["CONNECT_STAGE"] + "/bin/vastel-connect"))

    def make_desktop(self, current_desktop, protocol, permitted=True):
        reason = browser.why_not()
        if reason:
            self.skipTest(reason)
        desktop = browser.Desktop(os.environ["CONNECT_STAGE"], current_desktop, permitted)
        self.addCleanup(desktop.close)
        page = f"{desktop.pages.origin}/customer?number=+31201234567&name=Jansen,%20M.#call"
        payload = browser.encode_record({"WebPage": page})
        self.assertLessEqual(set("+/="), set(payload))
        desktop.pages.link = protocol + payload
        desktop.start()
        self.addCleanup(desktop.browser.close)
        return desktop, page, desktop.pages.link

    def click_link(self, desktop, page):
        start = f"{desktop.pages.origin}/call"
        desktop.browser.show(start)
        self.assertEqual(desktop.pages.wait_for_page(), start)
        desktop.browser.click("#link")
        self.assertEqual(desktop.pages.wait_for_page(), page)
        self.assertEqual(sorted(desktop.browser.addresses()), sorted([start, page]))
        self.assertEqual(desktop.pages.requests, [
            "/call", "/customer?number=+31201234567&name=Jansen,%20M."])


if __name__ == "__main__":
    browser.enter_own_namespaces()
    unittest.main()
