"""Each desktop's own opener, and `xdg-open` under each desktop's name, follow links."""

import concurrent.futures
import functools
import os
import subprocess

from clients import (KDE_OPENER, OPENERS, OWN_OPENERS, READ_HOSTS, expect_recovery, installed,
                     link_to, page_of, session_variables)
from desktop import NAME, PROGRAM, Desktop
from model import page_link
from processes import log_message
from road import RoadTestCase, messages_of

COUNT = 200


class OpenersTest(RoadTestCase):
    def setUp(self):
        self.openers, missing = installed(OPENERS)
        if missing:
            self.skipTest("not installed: " + ", ".join(missing))
        self.desktop = Desktop(self, screen=True)

    def follow(self, name, text):
        """Has an opener follow a link, and waits for the end of that opener."""
        command, desktop = self.openers[name]
        process = self.desktop.spawn(*command, text, **session_variables(desktop))
        result = process.finish()
        self.desktop.forget(process)
        self.assertEqual(result.status, 0, (name, result))

    def follow_many(self, name, pages):
        for page in pages:
            self.follow(name, link_to(page))

    def test_each_opener_keeps_each_byte(self):
        for name in self.openers:
            for prefix in ("screenpop:", "screenpop://"):
                if prefix == "screenpop://" and name in READ_HOSTS:
                    continue
                with self.subTest(opener=name, prefix=prefix):
                    page = page_of("byte")
                    self.follow(name, link_to(page, prefix))
                    self.assertEqual(self.desktop.opened(), page)
                    self.desktop.end_programs()
                    listener = self.desktop.listen("-log")
                    self.follow(name, link_to(page, prefix))
                    self.expect_messages(listener, link_to(page, prefix))
                    self.assertEqual(self.desktop.opened(), page)
                    self.assertEqual(listener.end().output, "")

    def test_no_opener_loses_a_link_while_others_run(self):
        pages = {name: [page_of(f"{i}/{n}") for n in range(COUNT)]
                 for i, name in enumerate(self.openers)}
        everyone = sorted(sum(pages.values(), []))
        opened = self.desktop.quick_pages()
        log = self.desktop.folder + "/log"
        with open(log, "w", encoding="utf-8") as file:
            listener = self.desktop.listen("-log", streams={"stdout": file})
        with concurrent.futures.ThreadPoolExecutor(len(pages) + 1) as pool:
            reading = pool.submit(lambda: sorted(opened.next() for _ in everyone))
            for run in [pool.submit(self.follow_many, *each) for each in pages.items()]:
                run.result()
        self.assertEqual(reading.result(), everyone)
        listener.end()
        self.assertEqual(opened.now(), [])
        with open(log, encoding="utf-8") as file:
            messages = [log_message(line) for line in file.read().splitlines()
                        if line.startswith("Log ")]
        self.assertEqual(sorted(messages), sorted(messages_of(*map(link_to, everyone))))

    def test_no_opener_loses_a_link_that_starts_the_program(self):
        opened = self.desktop.quick_pages()
        names = list(self.openers)
        for n in range(COUNT):
            self.follow(names[n % len(names)], link_to(page_of(n)))
            self.assertEqual(opened.next(), page_of(n))
            self.desktop.end_programs()
        self.assertEqual(opened.now(), [])

    def test_after_a_bad_link_the_next_one_works(self):
        listener = self.desktop.listen("-log")
        for name in OWN_OPENERS:
            with self.subTest(opener=name):
                expect_recovery(self, self.desktop, listener, functools.partial(self.follow, name))

    def test_a_file_is_no_link(self):
        entry = os.path.dirname(os.path.dirname(PROGRAM)) + "/share/applications/"
        self.expect_start_without_link("gio", "launch", entry + NAME + ".desktop", "/etc/passwd")

    def expect_start_without_link(self, *command, **environment):
        quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
        opener = self.desktop.spawn(*command, streams=quiet, **environment)
        self.desktop.wait_until(self.desktop.owner)
        self.assertEqual(opener.wait(), 0)
        self.follow("gio open", link_to(page_of("next")))
        self.assertEqual(self.desktop.opened(), page_of("next"))
        self.desktop.end_programs()

    # What happens to the other spelling where it is read as a host's name: it is the opener's own
    # doing, and docs/links.md tells of it.

    def test_kdes_opener_asks_a_host_for_a_link_with_slashes(self):
        listener = self.desktop.listen("-log")
        link = link_to(page_of("host"), "screenpop://")
        for name in (KDE_OPENER, "xdg-open as KDE"):
            self.follow(name, link)
            self.assertEqual(self.desktop.opened(),
                             "http://screenpop//" + link.removeprefix("screenpop://"))
        # No "+", "/" or "=" in it.
        plain = page_link("https://page.test/abc")
        self.assertTrue(plain.removeprefix("screenpop://").isalnum())
        self.follow(KDE_OPENER, plain)
        self.expect_messages(listener, plain.lower())
        self.assertEqual(listener.end().output, "")

    def test_lxqts_opener_starts_the_program_without_a_link_with_slashes(self):
        for command, desktop in map(self.openers.get, READ_HOSTS):
            if desktop == "LXQt":
                with self.subTest(command):
                    self.expect_start_without_link(
                        *command, link_to(page_of("host"), "screenpop://"),
                        **session_variables(desktop))
