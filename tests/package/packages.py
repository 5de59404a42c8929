"""The packages that dev/package made, and what the tests of them have in common."""

import glob
import os
import subprocess
import tempfile
import types
import unittest

PACKAGES = os.environ["CONNECT_PACKAGES"]
NAME = "com.vastel.Connect"

# In this many seconds, whatever a test waits for has happened, however busy the machine is; apt
# loads packages, among it.
LIMIT = 60

# What a package holds under its prefix, whatever its form; what depends on the system's ways is
# left out: documents, the unit, zsh's completion.
COMMON_FILES = {
    "bin/vastel-connect",
    f"share/applications/{NAME}.desktop",
    "share/bash-completion/completions/vastel-connect",
    f"share/dbus-1/services/{NAME}.service",
    "share/fish/vendor_completions.d/vastel-connect.fish",
    f"share/icons/hicolor/scalable/apps/{NAME}.svg",
    f"share/metainfo/{NAME}.metainfo.xml",
}


def package(pattern):
    """The only package whose file name matches."""
    found = glob.glob(f"{PACKAGES}/{pattern}")
    assert len(found) == 1, f"{pattern} is {found}"
    return found[0]


def run(*command, **options):
    """Runs a command in the C.UTF-8 locale: its exit status, output and errors."""
    environment = {**os.environ, "LC_ALL": "C.UTF-8", **options.pop("environment", {})}
    done = subprocess.run(command, env=environment, stdin=subprocess.DEVNULL, capture_output=True,
                          encoding="utf-8", timeout=LIMIT, check=False, **options)
    return types.SimpleNamespace(status=done.returncode, output=done.stdout, errors=done.stderr)


def mode_of(name, is_folder=False):
    """The mode that a packaged file is to have."""
    return 0o755 if is_folder or "/bin/" in name else 0o644


class PackageTestCase(unittest.TestCase):
    maxDiff = None

    def folder(self):
        folder = tempfile.TemporaryDirectory(prefix="connect-test-")
        self.addCleanup(folder.cleanup)
        return folder.name

    def expect_success(self, *command, **options):
        """The output of a command, which is to succeed without complaints."""
        result = run(*command, **options)
        self.assertEqual((result.status, result.errors), (0, ""), result.output)
        return result.output

    def extract_deb(self):
        """A folder with the files of the Debian package."""
        folder = self.folder()
        self.expect_success("dpkg-deb", "--extract", package("vastel-connect_*.deb"), folder)
        return folder

    def higher_version(self):
        """The package again, as version 9."""
        folder = self.folder()
        self.expect_success("dpkg-deb", "--raw-extract", package("vastel-connect_*.deb"), folder)
        self.expect_success("sed", "--in-place", "s/^Version:.*/Version: 9/",
                            folder + "/DEBIAN/control")
        deb = self.folder() + "/higher.deb"
        self.expect_success("dpkg-deb", "--root-owner-group", "--build", folder, deb)
        return deb
