"""Links that come through the desktop's portal, as from a browser in a sandbox."""

import os
import shutil
import subprocess

from browser import need
from clients import link_to, page_of, session_variables
from desktop import Desktop
from road import RoadTestCase
from screen import Screen

PORTALS = "/usr/libexec/xdg-desktop-portal"
SERVICES = ["portal.Desktop", "impl.portal.PermissionStore", "impl.portal.desktop.gtk"]
PAGE = page_of("portal")
LINK = link_to(PAGE)
# What tells the portal that a client is a Flatpak's. That of Debian 13 also reads which process
# the sandbox's first is, in a file that the instance is found by.
INFO = """[Application]
name=test.client
[Instance]
instance-id=1
"""
SANDBOX = ["bwrap", "--clearenv", "--setenv", "PATH", "/usr/bin", "--ro-bind", "/usr", "/usr",
           "--symlink", "usr/lib", "/lib", "--symlink", "usr/lib64", "/lib64", "--proc", "/proc",
           "--dev", "/dev", "--setenv", "DBUS_SESSION_BUS_ADDRESS", "unix:path=/run/bus"]
OTHER = """[Desktop Entry]
Type=Application
Name=Another program
Exec=true %u
MimeType=x-scheme-handler/screenpop;
"""


class Portal(RoadTestCase):
    def setUp(self):
        need(self, "Xvfb", "bwrap", PORTALS, PORTALS + "-gtk")
        if subprocess.run(["bwrap", "--ro-bind", "/", "/", "true"], check=False).returncode != 0:
            self.skipTest("the system permits no sandbox")
        self.desktop = Desktop(self, screen=True, NO_AT_BRIDGE="1", **session_variables("GNOME"))
        for name in SERVICES:
            shutil.copy(f"/usr/share/dbus-1/services/org.freedesktop.{name}.service",
                        self.desktop.folder + "/services")
        self.screen = Screen(self, self.desktop)
        self.clients = {"outside": self.client(), "in a sandbox": self.sandboxed_client()}

    def client(self):
        """The command of a client that finds no handler itself, and asks the portal."""
        nowhere = self.desktop.folder + "/empty"
        return ["env", "GTK_USE_PORTAL=1", "GIO_USE_PORTALS=1", f"XDG_DATA_DIRS={nowhere}",
                f"XDG_DATA_HOME={nowhere}", "gio", "open"]

    def sandboxed_client(self):
        info = self.desktop.folder + "/flatpak-info"
        with open(info, "w", encoding="utf-8") as file:
            file.write(INFO)
        instance = f"{self.desktop.folder}/runtime/.flatpak/1"
        os.makedirs(instance)
        return ["sh", "-c", 'exec "$@" 3> "$0"', instance + "/bwrapinfo.json",
                *SANDBOX, "--info-fd", "3", "--ro-bind", info, "/.flatpak-info",
                "--ro-bind", self.desktop.folder + "/bus", "/run/bus", "gio", "open"]

    def follow(self, client, answer=None):
        """Has a client follow the link, answers the question by this key, and waits for its end."""
        process = self.desktop.spawn(*client, LINK)
        if answer:
            self.assertEqual(self.screen.dialog(), "Open With…")
            self.screen.press(answer)
        return process.finish().status

    def expect_opened(self, client, answer=None):
        self.assertEqual(self.follow(client, answer), 0)
        self.assertEqual(self.desktop.opened(), PAGE)

    def test_link_arrives_without_a_question(self):
        for name, client in self.clients.items():
            with self.subTest(name):
                self.expect_opened(client)
                self.desktop.end_programs()
                listener = self.desktop.listen("-log")
                self.expect_opened(client)
                self.expect_messages(listener, LINK)
                listener.end()

    def test_second_claimant_brings_a_question(self):
        """The default program stands first among the answers. Three equal ones end the question."""
        self.claim()
        for name, client in self.clients.items():
            with self.subTest(name):
                self.assertNotEqual(self.follow(client, "Escape"), 0)
                for _ in range(3):
                    self.expect_opened(client, "Return")
                self.expect_opened(client)

    def claim(self):
        """Installs another program for links, beside ours, which is the default one."""
        folder = self.desktop.folder + "/data/applications"
        with open(folder + "/other.desktop", "w", encoding="utf-8") as file:
            file.write(OTHER)
        self.assertEqual(self.desktop.spawn("update-desktop-database", folder).wait(), 0)
        with open(self.desktop.folder + "/config/mimeapps.list", "a", encoding="utf-8") as file:
            file.write("x-scheme-handler/screenpop=com.vastel.Connect.desktop\n")
