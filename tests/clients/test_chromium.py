"""Chromium on each desktop: clicks, and the answers to its question."""

from browser import Chromium, Site, need
from clients import DESKTOPS, expect_recovery, link_to, page_of, session_variables
from desktop import Desktop
from road import RoadTestCase

CLICKS = 12
# The question takes the focus from the page, and gives it back.
TELL_FOCUS = """const tell = (what) => fetch("/report", { method: "POST", body: what });
    onblur = () => tell("question"); onfocus = () => tell("answered");"""
# Cancel has the focus. Behind it comes Open, and before it, where there is one, the box.
OPEN = ["Tab", "Return"]
OPEN_ALWAYS = ["shift+Tab", "space", "Tab", "Tab", "Return"]


class ChromiumTest(RoadTestCase):
    def start(self, desktop, permitted=True):
        self.desktop = Desktop(self, screen=True, **session_variables(desktop))
        self.site = Site(self)
        self.chromium = Chromium(self, self.desktop, self.site.origin if permitted else None)

    def show(self, *links, origin=None):
        self.site.texts["/call"] = "".join(
            f'<a id="link{i}" href="{link}">call</a> ' for i, link in enumerate(links))
        self.chromium.show((origin or self.site.origin) + "/call")

    def test_twelve_clicks_open_twelve_pages_on_each_desktop(self):
        pages = [page_of(n) for n in range(CLICKS)]
        for desktop in (None, *DESKTOPS):
            with self.subTest(desktop=desktop):
                self.start(desktop)
                self.show(*map(link_to, pages))
                for n in range(CLICKS):
                    self.chromium.click(f"#link{n}")
                self.assertEqual(self.desktop.opened_all(CLICKS), sorted(pages))
            self.doCleanups()

    def test_after_a_bad_link_the_next_one_works(self):
        self.start("GNOME")
        listener = self.desktop.listen("-log")

        def follow(link):
            self.show(link)
            self.chromium.click("#link0")

        expect_recovery(self, self.desktop, listener, follow)
        # No command line holds the one, and Chromium itself follows no such link as the other.
        for size in (1_000_000, 10_000_000):
            follow("screenpop:" + "A" * size)
            follow(link_to(page_of("next")))
            self.assertEqual(self.desktop.opened(), page_of("next"))
            self.expect_messages(listener, link_to(page_of("next")))
        self.assertEqual(listener.end().output, "")

    # Without a policy.

    def ask(self, origin):
        need(self, "xdotool")
        self.start("GNOME", permitted=False)
        self.show(link_to(page_of("asked")), origin=getattr(self.site, origin))
        self.chromium.execute(TELL_FOCUS)

    def answer(self, *keys):
        self.chromium.click("#link0")
        # Chromium 150 gives the page the focus no sooner than at the click.
        while self.site.report() != "question":
            pass
        # For half a second, it takes no key that might have been meant for the page, and nothing
        # tells when that is over.
        self.assertEqual(self.desktop.spawn("xdotool", "sleep", "1", "key", *keys).finish().status, 0)

    def expect_open(self):
        self.assertEqual(self.desktop.opened(), page_of("asked"))
        self.assertEqual(self.site.report(), "answered")

    def test_enter_cancels(self):
        self.ask("origin")
        self.answer("Return")
        self.assertEqual(self.site.report(), "answered")
        self.answer(*OPEN)
        self.expect_open()
        self.assertIsNotNone(self.desktop.owner())

    def test_the_box_answers_for_good(self):
        self.ask("origin")
        self.answer(*OPEN_ALWAYS)
        self.expect_open()
        self.chromium.click("#link0")
        self.assertEqual(self.desktop.opened(), page_of("asked"))

    def test_on_plain_http_there_is_no_box(self):
        self.ask("plain_origin")
        # Without a box, what comes before Cancel is Open again.
        self.answer("shift+Tab", "Return")
        self.expect_open()
        self.answer("Return")
        self.assertEqual(self.site.report(), "answered")
