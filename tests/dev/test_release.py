"""What a release consists of: its version and its notice."""

import os
import re
import subprocess
from pathlib import Path

from processes import ROOT

SHARE = Path(os.environ["CONNECT_STAGE"]) / "share"
VERSION, DATE = re.search(r"^## (\d+\.\d+\.\d+) \((\d{4}-\d\d-\d\d)\)$",
                          (ROOT / "CHANGELOG.md").read_text(), re.MULTILINE).groups()


def test_manual_and_software_centre_are_told_the_version():
    manual = (SHARE / "man/man1/vastel-connect.1").read_text()
    assert f'{DATE} "Vastel Connect {VERSION}"' in manual.splitlines()[0]
    assert f'<release version="{VERSION}" date="{DATE}" />' in (
        SHARE / "metainfo/com.vastel.Connect.metainfo.xml").read_text()


def test_no_other_file_holds_the_version():
    names = ("CMakeLists.txt", "README.md", "SECURITY.md", "cmake", "debian", "docs/macos.md",
             "packaging", "platform")
    found = subprocess.run(["grep", "--recursive", "--files-with-matches", "--fixed-strings", VERSION,
                            *(ROOT / name for name in names)], stdout=subprocess.PIPE, text=True,
                           check=False)
    assert found.stdout == ""


def test_the_notice_is_that_of_the_package():
    words = lambda text: " ".join(text.split())
    notice = re.search(r"All rights reserved\..*?machines\.", (ROOT / "LICENSE").read_text(), re.DOTALL)
    assert words(notice[0]) in words((ROOT / "debian/copyright").read_text())


def test_what_the_debian_package_is_built_with_is_installed_for_a_build():
    text = (ROOT / "debian/control").read_text()
    (wanted,) = re.findall(r"^Build-Depends:(.*?)^\S", text, re.MULTILINE | re.DOTALL)
    words = lambda text: " ".join(text.split())
    setup = words((ROOT / "dev/setup").read_text())
    missing = [words(each) for each in wanted.split(",") if words(each) not in setup]
    assert missing == ["debhelper-compat (= 13)"]
