"""The desktop's own openers, which follow a link and end at once: none is lost, changed or opened
twice."""

import subprocess

from desktop import HERE, Desktop
from model import page_link
from road import DISPLAY, LINK, PAGE, TEXTS, RoadTestCase, bulky_link, pages

COUNT = 200


class OpenersTest(RoadTestCase):
    # Texts.

    def expect_opener_keeps_texts(self, *command, texts=TEXTS, **environment):
        # With and without the modules of GIO, which include the one that reads URLs as files.
        desktop = Desktop(self)
        for modules in (None, desktop.folder + "/empty"):
            def follow(text):
                self.expect_silence(desktop.spawn(*command, text, GIO_MODULE_DIR=modules,
                                                  **environment).finish())
            self.expect_texts_unchanged(desktop, follow, [*texts, bulky_link(100_000)])

    def test_gio_open_keeps_each_text(self):
        self.expect_opener_keeps_texts("gio", "open")

    def test_xdg_open_on_gnome_keeps_each_text(self):
        self.expect_opener_keeps_texts("xdg-open", XDG_CURRENT_DESKTOP="GNOME")

    def test_xdg_open_without_a_desktop_keeps_each_text(self):
        # It finds no handler for a scheme in capitals, and is slow.
        self.expect_opener_keeps_texts("xdg-open", DISPLAY=DISPLAY,
                                       texts=(LINK, TEXTS[4], TEXTS[6], TEXTS[-1]))

    def test_gio_open_cold_opens_the_page(self):
        desktop = Desktop(self)
        self.expect_silence(desktop.spawn("gio", "open", LINK).finish())
        self.assertEqual(desktop.opened(), PAGE)

    def test_xdg_open_cold_opens_the_page(self):
        desktop = Desktop(self)
        self.expect_silence(desktop.spawn("xdg-open", LINK, DISPLAY=DISPLAY).finish())
        self.assertEqual(desktop.opened(), PAGE)

    # Many links, one after another.

    def expect_none_lost(self, make_follow, cold=False):
        """`make_follow` makes, of a desktop, what follows a link and returns the exit status."""
        desktop = Desktop(self)
        opened = desktop.quick_pages()
        follow = make_follow(desktop)
        for page in pages(COUNT):
            self.assertEqual(follow(page_link(page)), 0)
            # That of a link that was lost would be missing here for ever.
            if cold:
                self.assertEqual(opened.next(), page)
                desktop.end_programs()
        if not cold:
            self.assertEqual(sorted(opened.next() for _ in range(COUNT)), pages(COUNT))
        desktop.end_programs()
        self.assertEqual(opened.now(), [])

    def gio_open(self, desktop):
        def follow(link):
            process = desktop.spawn("gio", "open", link)
            status = process.finish().status
            desktop.forget(process)
            return status
        return follow

    def launch_and_end(self, desktop):
        launcher = desktop.spawn("/usr/bin/python3", "-B", HERE + "/launch.py",
                                 streams={"stdin": subprocess.PIPE})

        def follow(link):
            launcher.write(link + "\n")
            return int(launcher.output.next())
        return follow

    def test_gio_open_loses_no_link(self):
        self.expect_none_lost(self.gio_open)

    def test_gio_open_cold_loses_no_link(self):
        self.expect_none_lost(self.gio_open, cold=True)

    def test_a_launcher_that_ends_at_once_loses_no_link(self):
        self.expect_none_lost(self.launch_and_end)

    def test_a_launcher_that_ends_at_once_loses_no_link_cold(self):
        self.expect_none_lost(self.launch_and_end, cold=True)
