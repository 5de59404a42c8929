"""Puts the versions that are installed into the table of docs/clients.md."""

import pathlib
import re
import subprocess

PAGE = pathlib.Path(__file__).resolve().parents[2] / "docs/clients.md"
ROW = re.compile(r"^(\| .* \| `([a-z0-9.+-]+)` )(\S+)( \| .* \| `(test_\w+\.py)` \|)$", re.MULTILINE)


def rows():
    """The package and the test of each row."""
    return [(row[2], row[5]) for row in ROW.finditer(PAGE.read_text())]


def version(package):
    return subprocess.run(["dpkg-query", "--show", "--showformat", "${Version}", package],
                          check=True, stdout=subprocess.PIPE, encoding="utf-8").stdout


if __name__ == "__main__":
    PAGE.write_text(ROW.sub(lambda row: row[1] + version(row[2]) + row[4], PAGE.read_text()))
