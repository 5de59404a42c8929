"""The life of an installation: from a system without the program to one without it."""

import re

from packages import NAME, PackageTestCase, package
from tree import Tree

from desktop import OBJECT
from model import page_link
from processes import wait_for_end

# What apt and dpkg remember of all that they did.
MEMORIES = re.compile(r"/var/cache/apt/.*|/var/lib/apt/lists/auxfiles|/var/lib/dpkg/status-old|"
                      r"/var/cache/debconf/tmp\.ci|"
                      r"/var/log/(alternatives\.log|apt/.*|dpkg\.log)")


class InstallationTestCase(PackageTestCase):
    def setUp(self):
        self.tree = Tree(self)

    def expect_page(self, page, follow):
        follow(page_link(page, "screenpop:"))
        self.assertEqual(self.tree.page().url, page)


class LifeOfAnInstallation(InstallationTestCase):
    def test_installs_upgrades_and_leaves(self):
        before = self.tree.files()
        self.tree.install(package("vastel-connect_*.deb"))
        self.tree.start_bus()

        self.expect_bus_starts_the_program()
        first = self.tree.owner()
        self.expect_openers_work()
        self.assertEqual(self.tree.owner(), first)

        self.tree.install(self.higher_version())
        self.expect_openers_work()
        self.assertEqual(self.tree.owner(), first)
        self.assertFalse(self.tree.runs_installed(first))
        self.end(first)
        self.expect_openers_work()
        self.assertTrue(self.tree.runs_installed(self.tree.owner()))
        self.end(self.tree.owner())

        self.tree.apt("remove", "vastel-connect")
        self.expect_no_trace()
        # apt has forgotten it by then: there is nothing to purge.
        self.tree.run("dpkg", "--purge", "vastel-connect")
        self.tree.apt("autoremove", "--purge")
        after = self.tree.files()
        changed = {path for path in before.keys() | after.keys()
                   if before.get(path) != after.get(path)}
        self.assertEqual({path for path in changed if not MEMORIES.fullmatch(path)}, set())

    def expect_bus_starts_the_program(self):
        self.assertIsNone(self.tree.owner())
        self.expect_page("https://page.test/cold", lambda link: self.tree.run(
            "gdbus", "call", "--session", "--dest", NAME, "--object-path", OBJECT, "--method",
            "org.freedesktop.Application.Open", f"['{link}']", "{}", agent=True))

    def expect_openers_work(self):
        """Follows a link by each; xdg-open has a road of its own where it knows no desktop."""
        for opener, desktop in ("gio open", "GNOME"), ("xdg-open", "GNOME"), ("xdg-open", ""):
            page = f"https://page.test/{opener[:3]}{desktop}"
            self.expect_page(page, lambda link: self.tree.run(
                *opener.split(), link, agent=True, XDG_CURRENT_DESKTOP=desktop, DISPLAY=":none"))

    def expect_no_trace(self):
        """That nobody takes the scheme, while the packages that keep indexes are still there."""
        self.assertIn("No default applications", self.tree.run(
            "gio", "mime", "x-scheme-handler/screenpop", agent=True))
        # Nothing is found.
        self.tree.run("grep", "--recursive", "screenpop", "/etc", "/usr/share", status=1)

    def end(self, pid):
        process = self.tree.host_pid(pid)
        self.tree.run("sh", "-c", 'kill "$1"', "-", str(pid))
        wait_for_end(process)


class UnpackedArchive(InstallationTestCase):
    def test_takes_links(self):
        """After the commands that docs/internals.md gives."""
        # As Debian's installer leaves it.
        self.tree.run("chmod", "2775", "/usr/local")
        folders = ["stat", "--format=%n %a %u:%g", "/", "/usr", "/usr/local", "/usr/local/share"]
        before = self.tree.run(*folders)
        with open(package("vastel-connect-*.tar.gz"), "rb") as file:
            self.tree.write("/tmp/archive.tar.gz", file.read())
        self.tree.apt("install", "--no-install-recommends", "desktop-file-utils")
        self.tree.run("tar", "--no-overwrite-dir", "-C", "/", "-xzf", "/tmp/archive.tar.gz")
        self.tree.run("update-desktop-database", "/usr/local/share/applications")
        self.assertEqual(self.tree.run(*folders), before)

        self.tree.start_bus()
        self.expect_page("https://page.test/", lambda link: self.tree.run(
            "gio", "open", link, agent=True))
        self.assertEqual(
            self.tree.run("readlink", f"/proc/{self.tree.owner()}/exe").strip(),
            "/usr/local/bin/vastel-connect")
