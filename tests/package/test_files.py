"""The files that tell the desktop about the program, by the judgement of its own tools."""

import os
import re
import struct
import subprocess

from packages import LIMIT, NAME, PackageTestCase, run

STAGE = os.environ["CONNECT_STAGE"]


class InstalledFiles(PackageTestCase):
    def setUp(self):
        self.share = self.extract_deb() + "/usr/share"

    def test_desktop_entry(self):
        # Hints go to the output, and change no status.
        self.assertEqual(self.expect_success(
            "desktop-file-validate", f"{self.share}/applications/{NAME}.desktop"), "")

    def test_metainfo(self):
        output = self.expect_success("appstreamcli", "validate", "--pedantic", "--no-net",
                                     f"{self.share}/metainfo/{NAME}.metainfo.xml")
        remarks = re.findall(r"^[A-Z]: [^ ]+ (.*?) *$", output, re.MULTILINE)
        # Each release knows one of the two forms that the maker's name has there.
        names = {"unknown-tag developer", "developer-name-tag-deprecated"}
        # The identifier is the name on the bus, which the bundle on macOS has, too.
        self.assertEqual(set(remarks) - names, {f"cid-contains-uppercase-letter {NAME}"}, output)

    def test_manual_page(self):
        """That no request of it is unknown, and that it names all switches."""
        text = self.expect_success("man", "--warnings", "--encoding=UTF-8", "--local-file",
                                   self.share + "/man/man1/vastel-connect.1.gz",
                                   environment={"MANROFFOPT": "-ww", "MANWIDTH": "80"})
        usage = self.expect_success(STAGE + "/bin/vastel-connect", "-help")
        for switch in ["-h", "-help", *re.findall(r"^ *(-[a-z]+):", usage, re.MULTILINE)]:
            self.assertRegex(text, rf"(?m)^ +(-help, )?{switch}(, -h)?(  |$)")

    def test_icon(self):
        command = ["rsvg-convert", f"{self.share}/icons/hicolor/scalable/apps/{NAME}.svg"]
        image = subprocess.run(command, timeout=LIMIT, check=True, capture_output=True).stdout
        self.assertEqual(image[:8], b"\x89PNG\r\n\x1a\n")
        self.assertEqual(struct.unpack(">II", image[16:24]), (128, 128))

    def test_unit(self):
        # Its command has to be there: the tree that the build installed has it.
        result = run("systemd-analyze", "--user", "--man=no", "verify",
                     STAGE + "/share/systemd/user/vastel-connect.service",
                     environment={"XDG_RUNTIME_DIR": self.folder()})
        self.assertEqual((result.status, result.output, result.errors), (0, "", ""))
