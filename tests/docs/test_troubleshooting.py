"""The commands of docs/troubleshooting.md print what stands below them."""

import re

from desktop import STAGE
from processes import ROOT

TEXT = (ROOT / "docs/troubleshooting.md").read_text(encoding="utf-8")


def commands(kind):
    """The commands of the fenced blocks of a kind, each with the lines below it."""
    blocks = re.findall(rf"^```{kind}\n(.*?)^```$", TEXT, re.MULTILINE | re.DOTALL)
    return [(command, lines.splitlines()) for command, lines in
            re.findall(r"^\$ (.*)\n((?:[^$].*\n)*)", "".join(blocks), re.MULTILINE)]


def pattern(line):
    return ".+".join(map(re.escape, line.split("…")))


def test_each_command_prints_what_is_shown(desktop):
    listener = None
    opened = 0
    for command, expected in commands("console"):
        if command == "vastel-connect -log":
            assert expected == ["…"]
            listener = desktop.listen("-log")
            continue
        result = desktop.spawn("/bin/bash", "-c", command, PATH=STAGE + "/bin:/usr/bin:/bin").finish()
        assert (result.errors, result.status) == ("", 0), command
        lines = result.output.splitlines()
        assert len(lines) == len(expected), command
        for line, form in zip(lines, expected):
            assert re.fullmatch(pattern(form), line), command
        if command.startswith("gio open"):
            assert desktop.opened() == "https://crm.example/48213"
            opened += 1
    assert opened == 2
    # Those of the picture, in which the same link is followed.
    (link,) = re.findall(r"gio open (screenpop:\S+)", TEXT)
    listener.expect_log(link)
    assert listener.end().output == ""
