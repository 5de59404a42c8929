"""What ./run shows of a link, beside what the model says."""

import os
import re
import subprocess
import tempfile
import unittest

from desktop import STAGE
from model import expect, make_link, page_link

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))


class Run(unittest.TestCase):
    def show(self, *arguments):
        """The messages that are shown, and what else is said."""
        with tempfile.TemporaryDirectory(prefix="connect-test-") as folder:
            environment = {"PATH": "/usr/bin:/bin", "HOME": folder, "XDG_RUNTIME_DIR": folder,
                           "CONNECT_STAGE": STAGE}
            result = subprocess.run([ROOT + "/run", *arguments], env=environment, text=True,
                                    stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return re.findall(r"^  Log ..:..:..> (.*)$", result.stdout, re.MULTILINE), result.stdout

    def test_it_shows_the_sample_and_what_it_opens(self):
        messages, text = self.show()
        link = re.search("^The link\n  (.*)$", text, re.MULTILINE)[1]
        self.assertEqual(messages, expect(link).messages)
        self.assertIn(f"was given\n  {expect(link).opened}\n", text)

    def test_it_shows_all_that_is_logged_of_any_link(self):
        for link in (page_link("https://page.test/"), page_link("passwd"), make_link({}),
                     "screenpop:", "screenpop", "it's:", "mailto:x"):
            with self.subTest(link):
                expected = expect(link)
                messages, text = self.show(link)
                self.assertEqual(messages, expected.messages)
                self.assertIn(f"was given\n  {expected.opened or 'Nothing.'}\n", text)

    def test_it_says_that_an_array_ends_the_program(self):
        link = make_link("[]")
        messages, text = self.show(link)
        self.assertEqual(messages, expect(link).messages)
        self.assertIn("the program ended", text)

    def test_it_runs_the_program_with_switches(self):
        self.assertIn("usage:\n", self.show("--", "-help")[1])
