"""What the tests of a link's road have in common."""

import os
import unittest

from gi.repository import Gio, GLib

from desktop import PAGE, Desktop
from model import expect, make_link, page_link
from processes import messages_of

LINK = page_link(PAGE)
FATAL = make_link("[]")

# What is said after some seconds to whoever follows a link.
BUSY = "vastel-connect: the application is busy: the link waits until it goes on"

# Some openers ask whether there is one, and leave it at that.
DISPLAY = ":none"

# Texts of all forms that a link takes, its page being https://page.test/ wherever it has one.
TEXTS = [
    LINK,
    page_link(PAGE, "screenpop:"),
    page_link(PAGE, "SCREENPOP://"),
    page_link(PAGE, "ScreenPop:"),
    # "+", "/" and "=" in the base64.
    page_link(PAGE, Note="~~~???>>>"),
    page_link(PAGE, Note="ünïcödé ☃ ÿÿÿ"),
    page_link(PAGE, Note="~~~???>>>", prefix="screenpop:"),
    # Texts that a reader of URLs would change.
    "screenpop://",
    "screenpop:///",
    "screenpop:eyJhIjoxfQ%3D%3D",
    "screenpop://QUJD/../eHl6",
    "screenpop://a:b",
    "screenpop://user@host:80//x",
    "screenpop://QQ==#f?q=1",
    "screenpop://a b",
    "screenpop://Köln",
]


def bulky_link(size):
    """A link of about that many characters, whose page is PAGE."""
    return page_link(PAGE, Note="x" * (size * 3 // 4))


def pages(count):
    return [f"https://page.test/{number:03}" for number in range(count)]


def descriptors(pid):
    return sorted(os.listdir(f"/proc/{pid}/fd"))


def expect_texts_unchanged(desktop, follow, texts):
    """Has texts followed, each of which is to be logged, and opened, as the model has it."""
    listener = desktop.listen("-log")
    for text in texts:
        follow(text)
        listener.expect_log(text)
    opened = [expect(text).opened for text in texts if expect(text).opened]
    assert desktop.opened_all(len(opened)) == sorted(opened)


class RoadTestCase(unittest.TestCase):
    maxDiff = None

    def expect_silence(self, result):
        """A process that had nothing to say and did what it should."""
        self.assertEqual((result.output, result.errors, result.status), ("", "", 0))

    def expect_link(self, desktop, listener, page=PAGE):
        """Follows a link, which the listener is to log and open."""
        link = page_link(page)
        desktop.open(link)
        self.expect_messages(listener, link)
        self.assertEqual(desktop.opened(), page)

    def expect_messages(self, listener, *links):
        """Reads the log lines of links, which must come next."""
        expected = messages_of(*links)
        self.assertEqual(listener.messages(len(expected)), expected)

    def install_openers(self, desktop, *names):
        for name in names or ("gio", "xdg-open"):
            desktop.install_reporter("openers/" + name)

    def listen_with_openers(self, desktop, *names, **environment):
        """Starts the program where nothing is in PATH but openers, which report pages."""
        self.install_openers(desktop, *names)
        return desktop.listen("-log", PATH=desktop.folder + "/openers", **environment)

    def expect_no_opener(self, *refused):
        """Follows links of pages that are logged, and that neither a handler nor an opener gets."""
        desktop = Desktop(self)
        listener = self.listen_with_openers(desktop)
        for page in refused:
            with self.subTest(page=page):
                link = page_link(page)
                desktop.open(link)
                self.expect_messages(listener, link)
        # Had one been started, its report would be in excess.
        self.expect_link(desktop, listener)

    def expect_log_only(self, desktop, listener, count=1):
        """Follows links whose page cannot be opened."""
        desktop.open(*[LINK] * count)
        self.expect_messages(listener, *[LINK] * count)
        # The answer comes once the links before are done with.
        desktop.open()

    def expect_recovery(self, desktop, listener, before, page="https://page.test/next"):
        """The next link is opened, by a program that has kept no descriptor and no child."""
        self.expect_link(desktop, listener, page)
        desktop.wait_for_children(listener.pid)
        self.assertEqual(descriptors(listener.pid), before)

    def expect_error(self, name, function, *arguments):
        with self.assertRaises(GLib.Error) as raised:
            function(*arguments)
        self.assertEqual(Gio.DBusError.get_remote_error(raised.exception), name)

    def expect_texts_unchanged(self, desktop, follow, texts):
        listener = desktop.listen("-log")
        for text in texts:
            with self.subTest(text=text[:100]):
                follow(text)
                self.expect_messages(listener, text)
        opened = [expect(text).opened for text in texts if expect(text).opened]
        self.assertEqual(desktop.opened_all(len(opened)), sorted(opened))

    def start_at_once(self, desktop, links):
        return [desktop.start(link) for link in links]
