"""The packages are the same bit for bit, wherever and whenever they are made."""

import pathlib
import subprocess

from packages import PACKAGES
from processes import ROOT

# dev/package works in a folder of its own each time, which has another name.
ELSEWHERE = """
mkdir "$1/a copy"
tar -C "$0" --exclude=./build --exclude=./.git -c . | tar -C "$1/a copy" -x --touch
cd "$1/a copy"
umask 077
TZ=Asia/Kathmandu LC_ALL=C.UTF-8 dev/package "$1/again"
"""


def packages(folder):
    return {path.name: path.read_bytes() for path in pathlib.Path(folder).iterdir()
            if path.suffix in (".deb", ".rpm", ".gz")}


def test_packages_of_another_place_and_time_are_the_same(tmp_path):
    subprocess.run(["sh", "-ec", ELSEWHERE, ROOT, tmp_path], check=True)
    made, again = packages(PACKAGES), packages(tmp_path / "again")
    assert len(made) == 4
    assert made.keys() == again.keys()
    assert [name for name in made if made[name] != again[name]] == []
