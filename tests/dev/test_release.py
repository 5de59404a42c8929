"""What a release consists of: its version and its notice."""

import os
import re
import subprocess
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
STAGE = os.environ["CONNECT_STAGE"]
RELEASE = re.compile(r"^## (\d+\.\d+\.\d+) \((\d{4}-\d\d-\d\d)\)$", re.MULTILINE)


def text_of(*path):
    with open(os.path.join(*path), encoding="utf-8") as file:
        return file.read()


class Release(unittest.TestCase):
    def setUp(self):
        self.version, self.date = RELEASE.search(text_of(ROOT, "CHANGELOG.md")).groups()

    def test_the_manual_names_the_version(self):
        self.assertIn(f'{self.date} "Vastel Connect {self.version}"',
                      text_of(STAGE, "share/man/man1/vastel-connect.1").splitlines()[0])

    def test_the_software_centre_is_told_the_version(self):
        self.assertIn(f'<release version="{self.version}" date="{self.date}" />',
                      text_of(STAGE, "share/metainfo/com.vastel.Connect.metainfo.xml"))

    def test_no_other_file_holds_the_version(self):
        found = subprocess.run(
            ["grep", "--recursive", "--files-with-matches", "--fixed-strings", self.version,
             *(f"{ROOT}/{name}" for name in ("CMakeLists.txt", "README.md", "SECURITY.md", "cmake",
                                             "debian", "docs/macos.md", "packaging", "platform"))],
            stdout=subprocess.PIPE, text=True, check=False).stdout
        self.assertEqual(found, "")

    def test_the_notice_is_that_of_the_package(self):
        words = lambda text: " ".join(text.split())
        notice = re.search(r"All rights reserved\..*?machines\.", text_of(ROOT, "LICENSE"), re.DOTALL)
        self.assertIn(words(notice[0]), words(text_of(ROOT, "debian/copyright")))
