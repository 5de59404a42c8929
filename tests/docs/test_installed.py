"""A link that docs/links.html makes opens its page through the installed package.

The package is really installed, into overlays that stand in front of the machine's own folders and
are gone with the test's namespace.
"""

import glob
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

import browser
import desktop

PAGE_FILE = pathlib.Path(__file__).resolve().parents[2] / "docs/links.html"
ENTRY = f"/usr/share/applications/{desktop.NAME}.desktop"
FOLDERS = ["etc", "usr", "var"]


def own_mounts():
    """The command that runs another as root, whose overlays alone can stand in front of root's
    files, with mounts of its own. None where that is not permitted."""
    kept = [f"{name}={value}" for name, value in os.environ.items()
            if name.startswith("CONNECT_") or name == "PATH"]
    command = ["env", *kept, f"PYTHONPATH={os.pathsep.join(sys.path)}", "unshare", "--mount"]
    if os.geteuid() != 0:
        command = ["sudo", "--non-interactive", *command]
    permitted = shutil.which(command[0]) and subprocess.run(
        [*command, "true"], stderr=subprocess.DEVNULL, check=False).returncode == 0
    return command if permitted else None


class Overlays:
    """The machine's folders as far as packages go into them, for this namespace to change."""

    def __init__(self):
        self._machine = {name: os.open(f"/{name}", os.O_PATH) for name in FOLDERS}
        changes = tempfile.mkdtemp(prefix="connect-overlay-")
        subprocess.run(["mount", "-t", "tmpfs", "tmpfs", changes], check=True)
        for name in FOLDERS:
            upper, work = f"{changes}/{name}", f"{changes}/{name}.work"
            os.mkdir(upper)
            os.mkdir(work)
            options = f"lowerdir=/{name},upperdir={upper},workdir={work}"
            subprocess.run(["mount", "-t", "overlay", "-o", options, "overlay", f"/{name}"],
                           check=True)
        # They keep what they need of it.
        subprocess.run(["umount", "--lazy", changes], check=True)
        os.rmdir(changes)

    def machine_path(self, path):
        """Where a file of the machine's own is found, behind the overlays."""
        folder, _, rest = path.lstrip("/").partition("/")
        return pathlib.Path(f"/proc/self/fd/{self._machine[folder]}/{rest}")


class InstalledTest(unittest.TestCase):
    def test_a_link_opens_its_page_through_the_installed_package(self):
        if os.path.exists(ENTRY):
            self.skipTest("the package is installed on this machine")
        command = own_mounts()
        if not command:
            self.skipTest("no mounts of its own, as root or, without a password, by sudo")
        subprocess.run([*command, sys.executable, "-B", "-m", "unittest",
                        "test_installed.InOwnMounts.follow_a_link"], check=True)


class InOwnMounts(unittest.TestCase):
    def follow_a_link(self):
        before = pathlib.Path("/var/lib/dpkg/status").stat()
        overlays = Overlays()
        (package,) = glob.glob(os.environ["CONNECT_PACKAGES"] + "/vastel-connect_*.deb")
        subprocess.run(["dpkg", "--install", package], check=True, stdout=subprocess.DEVNULL,
                       env={**os.environ, "PATH": "/usr/sbin:/usr/bin:/sbin:/bin"})

        session = desktop.Desktop(self, screen=True, service="/usr/bin/vastel-connect --dbus-service",
                                  XDG_DATA_DIRS="/usr/local/share:/usr/share",
                                  XDG_CURRENT_DESKTOP="GNOME")
        site = browser.Site(self)
        site.texts["/links.html"] = PAGE_FILE.read_text(encoding="utf-8")
        chromium = browser.Chromium(self, session, permitted=site.origin)
        chromium.show(f"{site.origin}/links.html")
        chromium.type("#page", "https://crm.example/?number=%2B31201234567")
        chromium.click("#plain")
        self.assertEqual(session.opened(), "https://crm.example/?number=%2B31201234567")
        self.assertEqual(os.path.realpath(f"/proc/{session.owner()}/exe"),
                         "/usr/bin/vastel-connect")

        # All that was in the overlays only.
        for path in ["/usr/bin/vastel-connect", ENTRY]:
            self.assertTrue(os.path.exists(path))
            self.assertFalse(overlays.machine_path(path).exists())
        after = overlays.machine_path("/var/lib/dpkg/status").stat()
        self.assertEqual((after.st_ino, after.st_mtime_ns), (before.st_ino, before.st_mtime_ns))
