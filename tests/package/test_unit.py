"""The installed unit, under a systemd user manager."""

import time
import unittest

from packages import LIMIT, PackageTestCase, package
from manager import start_manager
from tree import HOME, Tree

from desktop import make_link, page_link, wait_for_end

UNIT = "vastel-connect.service"


class Unit(PackageTestCase):
    def setUp(self):
        self.tree = Tree(self)
        self.tree.install(package("vastel-connect_*.deb"))
        start_manager(self, self.tree)

    def follow(self, link):
        self.tree.run("gio", "open", link, agent=True)

    def open(self, page):
        """Follows the link of a page, and waits for it."""
        self.follow(page_link(page))
        opened = self.tree.page()
        self.assertEqual(opened.url, page)
        return opened

    def manage(self, *arguments):
        return self.tree.run("systemctl", "--user", *arguments, agent=True)

    def property(self, name):
        return self.manage("show", "--value", f"--property={name}", UNIT).strip()

    def group(self, pid):
        """The control group of a process."""
        groups = self.tree.run("cat", f"/proc/{pid}/cgroup")
        return next(line for line in groups.splitlines() if line.startswith("0::"))

    def test_is_started_by_the_bus(self):
        self.assertEqual(self.property("ActiveState"), "inactive")
        self.open("https://page.test/")
        self.assertEqual(self.property("ActiveState"), "active")
        self.assertEqual(self.property("Type"), "dbus")
        self.assertEqual(self.property("MainPID"), str(self.tree.owner()))
        self.assertIn("/session.slice/" + UNIT, self.group(self.tree.owner()))

    def test_starts_again_after_links_that_end_it(self):
        # The manager counts the starts of a unit that fails, and allows five in ten seconds.
        for number in range(10):
            self.open(f"https://page.test/{number}")
            program = self.tree.host_pid(self.tree.owner())
            self.follow(make_link("[]"))
            wait_for_end(program)

    def test_page_outlives_it(self):
        page = self.open("https://page.test/#stay")
        # The manager is asked for the scope once the page's program runs.
        deadline = time.monotonic() + LIMIT
        while not (group := self.group(page.pid)).endswith(".scope"):
            self.assertLess(time.monotonic(), deadline, group)
        self.assertRegex(group, r"/app\.slice/app-[^/]*\.scope$")
        self.manage("stop", UNIT)
        self.assertIsNone(self.tree.owner())
        self.assertEqual(self.group(page.pid), group)
        process = self.tree.host_pid(page.pid)
        self.tree.write(HOME + "/end", b"\n")
        wait_for_end(process)


if __name__ == "__main__":
    unittest.main()
