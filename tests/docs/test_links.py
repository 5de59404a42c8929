"""docs/links.html in Chromium: what it says about links, and the links that it makes."""

import pathlib
import re
import unittest

import browser
import desktop
import links
from model import expect, make_link, page_link

PAGE_FILE = pathlib.Path(__file__).resolve().parents[2] / "docs/links.html"
PREFIX = "Log hh:mm:ss> "


class ReadingTest(unittest.TestCase):
    maxDiff = None

    def test_the_page_says_what_the_model_says(self):
        """And so what the program does (road/test_all_links.py)."""
        chromium = browser.Chromium(self, desktop.Desktop(self, screen=True))
        chromium.show(PAGE_FILE.as_uri())
        texts = links.all_links()
        readings = chromium.execute("return arguments[0].map(readLink)", texts)
        for text, reading in zip(texts, readings, strict=True):
            with self.subTest(text=text[:200]):
                expected = expect(text)
                self.assertEqual((reading["messages"], reading["opens"], reading["ends"]),
                                 (expected.messages, expected.opened, expected.fatal))


class LengthTest(unittest.TestCase):
    def test_a_command_line_holds_as_much_as_is_said(self):
        session = desktop.Desktop(self)
        listener = session.listen("-log")
        text = f"screenpop:{'A' * (131071 - len('screenpop:'))}"
        session.run(text)
        self.assertIn("process uri: " + text, listener.messages(len(expect(text).messages)))
        with self.assertRaises(OSError):
            session.run(text + "A")


class MakingTest(unittest.TestCase):
    def test_the_example_makes_a_link(self):
        self.show("<a id=link>call</a>")
        (example,) = re.findall("^```js\n(.*?)^```$", PAGE_FILE.with_suffix(".md").read_text(),
                                re.MULTILINE | re.DOTALL)
        self.chromium.execute(example)
        self.chromium.click("#link")
        self.assertEqual(self.desktop.opened(), "https://crm.example/48213")

    def test_one_link_follows_from_one_click(self):
        first, second, third = (page_link(f"https://crm.example/{n}") for n in (1, 2, 3))
        self.show(f"<a id=first href={first}>1</a><a id=third href={third}>3</a>")
        self.chromium.click("#first")
        self.assertEqual(self.desktop.opened(), "https://crm.example/1")
        self.chromium.execute("location.href = arguments[0]", second)
        self.chromium.click("#third")
        self.assertEqual(self.desktop.opened(), "https://crm.example/3")

    def test_chromium_follows_a_link_as_long_as_is_said(self):
        """What becomes of a longer one differs from version to version."""
        self.show("""<a id=link>call</a><script>
            link.href = "screenpop:".padEnd(2097152, "A");
            // The question about a link takes the focus.
            onblur = () => fetch("/report", { method: "POST", body: "question" });
            </script>""", permitted=False)
        self.chromium.click("#link")
        self.assertEqual(self.site.report(), "question")

    def test_the_link_that_the_page_makes_opens_its_page(self):
        self.check_link("#plain", "screenpop:")

    def test_the_link_with_slashes_that_the_page_makes_opens_its_page(self):
        self.check_link("#slashes", "screenpop://")

    def show(self, text, permitted=True):
        """Shows a page of this text, in a desktop that reports pages."""
        self.desktop = desktop.Desktop(self, screen=True, XDG_CURRENT_DESKTOP="GNOME")
        self.site = browser.Site(self)
        self.site.texts["/links.html"] = text
        self.chromium = browser.Chromium(self, self.desktop, self.site.origin if permitted else None)
        self.chromium.show(f"{self.site.origin}/links.html")

    def check_link(self, selector, prefix):
        self.show(PAGE_FILE.read_text())
        self.chromium.type("#page", "https://crm.example/?number=%2B31201234567")
        self.chromium.type("#fields", "Caller name=Jänsen, M. 📞\nCaller number=+31=201234567")
        link = make_link(
            '{"WebPage":"https://crm.example/?number=%2B31201234567",'
            '"CallFields":{"Caller name":"Jänsen, M. 📞","Caller number":"+31=201234567"}}', prefix)
        self.assertEqual(self.chromium.execute(
            f"return document.querySelector('{selector}').textContent"), link)
        self.assertEqual(self.chromium.execute("return at('log').textContent").split("\n"), [
            *(PREFIX + message for message in expect(link.replace("://", ":")).messages), ""])
        self.chromium.click(selector)
        self.assertEqual(self.desktop.opened(), "https://crm.example/?number=%2B31201234567")
