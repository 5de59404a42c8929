"""The installed unit, from login to logout, in a system that systemd has booted; and the commands
for it that the documents give."""

import pathlib
import re
import tempfile
import time
import unittest

from booted import booted_tree
from packages import LIMIT, changed_deb, package
from tree import HOME

from clients import link_to, page_of
from model import make_link
from processes import DATA, log_message, wait_for_end
from road import messages_of
from test_troubleshooting import commands, pattern

UNIT = "vastel-connect.service"
DOCS = pathlib.Path(DATA).parents[1] / "docs"
DEPLOY = (DOCS / "deploy.md").read_text(encoding="utf-8")


def setting():
    """The drop-in for the unit that docs/deploy.md gives."""
    return re.search(r"^```ini\n(\[Service\]\n.*?)^```$", DEPLOY, re.MULTILINE | re.DOTALL)[1]


class Unit(unittest.TestCase):
    """All tests share a system. Each has a login of its own."""

    @classmethod
    def setUpClass(cls):
        cls.tree = cls.enterClassContext(booted_tree())
        cls.tree.install(package("vastel-connect_*.deb"))

    def setUp(self):
        self.tree.log_in()
        self.addCleanup(self.tree.log_out)

    # The program runs.

    def test_is_started_by_a_link(self):
        self.assertEqual(self.property("ActiveState"), "inactive")
        self.open()
        self.assertEqual(self.property("ActiveState"), "active")
        self.assertEqual(self.property("Type"), "dbus")
        self.assertEqual(self.property("MainPID"), str(self.tree.owner()))
        self.assertIn("/session.slice/" + UNIT, self.group(self.tree.owner()))

    def test_starts_again_after_links_that_end_it(self):
        # The manager counts the starts of a unit that fails, and allows five in ten seconds.
        for _ in range(10):
            self.open()
            program = self.tree.host_pid(self.tree.owner())
            self.follow(make_link("[]"))
            wait_for_end(program)
        self.wait_for_state("failed")
        self.assertEqual(self.property("ExecMainStatus"), "70")

    def test_stays_the_old_one_after_an_upgrade(self):
        self.open()
        first = self.tree.owner()
        folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.tree.install(changed_deb(folder, "s/^Version:.*/Version: 9/"))
        self.open()
        self.assertEqual(self.tree.owner(), first)
        self.assertFalse(self.tree.runs_installed(first))
        process = self.tree.host_pid(first)
        self.run_documented("sudo pkill -x vastel-connect", as_agent=False)
        wait_for_end(process)
        self.open()
        self.assertTrue(self.tree.runs_installed(self.tree.owner()))

    # The program logs.

    def test_logs_for_one_user(self):
        self.tree.write("/tmp/setting", setting().encode())
        # It edits on terminals only.
        self.assertIn(f"systemctl --user edit {UNIT}", " ".join(DEPLOY.split()))
        self.tree.run("script", "-qec", f"systemctl --user edit {UNIT}", "/dev/null", agent=True,
                      SYSTEMD_EDITOR="cp /tmp/setting")
        self.expect_log()
        self.run_documented(f"systemctl --user revert {UNIT}")
        self.run_documented(f"systemctl --user restart {UNIT}")
        self.assertNotIn("-jsonlog", self.property("ExecStart"))
        self.open()

    def test_logs_for_all(self):
        folder = f"/etc/systemd/user/{UNIT}.d"
        self.assertIn(folder + "/log.conf", DEPLOY)
        self.tree.run("mkdir", folder)
        self.addCleanup(self.tree.run, "rm", "--recursive", folder)
        self.tree.write(folder + "/log.conf", setting().encode())
        self.run_documented("systemctl --user daemon-reload")
        self.expect_log()

    def expect_log(self):
        """Restarts the program, and follows a link that it logs."""
        self.assertIn("/usr/bin/vastel-connect --dbus-service -jsonlog",
                      self.run_documented(f"systemctl --user cat {UNIT}"))
        (command,) = re.findall("^journalctl .*--follow.*$", DEPLOY, re.MULTILINE)
        log = self.tree.start("sh", "-c", command)
        self.run_documented(f"systemctl --user restart {UNIT}")
        # This link may be taken for the one that starts the program.
        self.open()
        page = page_of(self.id())
        self.open(page)
        _, *expected = messages_of(link_to(page))
        while expected[0] not in (line := log.next()):
            pass
        self.assertEqual([log_message(line), *(log_message(log.next()) for _ in expected[1:])],
                         expected)

    # The page's program stays.

    def test_page_outlives_the_unit(self):
        self.expect_page_outlives("stop", UNIT)

    def test_page_outlives_a_restart(self):
        self.expect_page_outlives("restart", UNIT)

    def test_page_outlives_the_desktop(self):
        self.manage("start", "desktop.target")
        self.expect_page_outlives("stop", "desktop.target")
        self.wait_for_state("inactive")

    def expect_page_outlives(self, *action):
        page = self.stay()
        # The manager is asked for the scope once the page's program runs.
        deadline = time.monotonic() + LIMIT
        while not (group := self.group(page.pid)).endswith(".scope"):
            self.assertLess(time.monotonic(), deadline, group)
        self.assertRegex(group, r"/app\.slice/app-[^/]*\.scope$")
        program = self.tree.host_pid(self.tree.owner())
        self.manage(*action)
        wait_for_end(program)
        self.assertEqual(self.group(page.pid), group)
        self.end(page)

    # The display changes, while the user's manager goes on.

    def test_next_desktop_has_its_own_display(self):
        for display in ":1", ":2":
            self.manage("set-environment", f"DISPLAY={display}")
            self.manage("start", "desktop.target")
            self.expect_display(display)
            self.manage("stop", "desktop.target")

    def test_without_the_target_the_display_stays_until_a_restart(self):
        self.manage("set-environment", "DISPLAY=:1")
        self.expect_display(":1")
        self.manage("set-environment", "DISPLAY=:2")
        self.expect_display(":1")
        self.run_documented(f"systemctl --user restart {UNIT}")
        self.expect_display(":2")

    def expect_display(self, display):
        page = self.stay()
        environment = self.tree.run("cat", f"/proc/{page.pid}/environ").split("\0")
        self.assertIn(f"DISPLAY={display}", environment)
        self.end(page)

    # When something is wrong with it.

    def test_commands_for_support_print_what_is_shown(self):
        self.manage("set-environment", "WAYLAND_DISPLAY=wayland-0")
        self.open()
        shown = commands("console systemd")
        self.assertEqual(len(shown), 3)
        for command, (form,) in shown:
            with self.subTest(command):
                first, *_ = self.tree.run("sh", "-c", command, agent=True).splitlines()
                self.assertRegex(first, f"^{pattern(form)}$")

    # What all of these take.

    def follow(self, link):
        self.tree.run("gio", "open", link, agent=True)

    def open(self, page=page_of("unit")):
        """Follows a link to its page."""
        self.follow(link_to(page))
        self.assertEqual(self.tree.page().url, page)

    def stay(self):
        """Opens a page whose program stays."""
        self.follow(link_to("https://page.test/#stay"))
        return self.tree.page()

    def end(self, page):
        process = self.tree.host_pid(page.pid)
        self.tree.write(HOME + "/end", b"\n")
        wait_for_end(process)

    def manage(self, *arguments):
        return self.tree.run("systemctl", "--user", *arguments, agent=True)

    def property(self, name):
        return self.manage("show", "--value", f"--property={name}", UNIT).strip()

    def wait_for_state(self, state):
        """Waits until the manager has noticed how the program ended."""
        deadline = time.monotonic() + LIMIT
        while self.property("ActiveState") != state:
            self.assertLess(time.monotonic(), deadline)

    def group(self, pid):
        """The control group of a process."""
        groups = self.tree.run("cat", f"/proc/{pid}/cgroup")
        return next(line for line in groups.splitlines() if line.startswith("0::"))

    def run_documented(self, command, as_agent=True):
        """Runs a command that docs/deploy.md gives."""
        self.assertIn(command, " ".join(DEPLOY.split()))
        return self.tree.run("sh", "-c", command.removeprefix("sudo "), agent=as_agent)
