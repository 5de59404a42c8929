"""The commands of docs/troubleshooting.md print what stands below them."""

import pathlib
import re

import pytest

from desktop import PROGRAM
from processes import ROOT

PATH = f"{pathlib.Path(PROGRAM).parent}:/usr/bin:/bin"
PAGE = ROOT / "docs/troubleshooting.md"


def blocks():
    """The fenced blocks of the page in order: what each is marked as, and its lines."""
    text = PAGE.read_text(encoding="utf-8")
    found = re.findall(r"^```([^\n]+)\n(.*?)^```$", text, re.MULTILINE | re.DOTALL)
    return [(kind, lines.splitlines()) for kind, lines in found]


def commands(kind):
    """The commands of the blocks of a kind, each with the lines below it."""
    found = []
    for line in (line for each, lines in blocks() if each == kind for line in lines):
        if line.startswith("$ "):
            found.append((line[2:], []))
        else:
            found[-1][1].append(line)
    return found


def pattern(line):
    return ".+".join(map(re.escape, line.split("…")))


def run_command(desktop, command, path=PATH):
    return desktop.spawn("/bin/bash", "-c", command, PATH=path).finish()


def test_each_command_prints_what_is_shown(desktop):
    listener = None
    opened = 0
    for command, expected in commands("console"):
        if command == "vastel-connect -log":
            assert expected == ["…"]
            listener = desktop.listen("-log")
            continue
        result = run_command(desktop, command)
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
    (link,) = re.findall(r"gio open (screenpop:\S+)", PAGE.read_text(encoding="utf-8"))
    listener.expect_log(link)
    assert listener.end().output == ""


@pytest.mark.parametrize("complaint, path, options", [
    ("gapplication: command not found", "/nowhere", {}),
    ("unable to connect to D-Bus", PATH,
     {"bus": False, "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere"}),
    ("was not provided by any .service files", PATH, {"service": None})])
def test_the_second_step_names_its_complaint(new_desktop, complaint, path, options):
    (command,) = [command for command, _ in commands("console") if "launch" in command]
    assert complaint in run_command(new_desktop(**options), command, path).errors
    assert f"- `{complaint}`: " in PAGE.read_text(encoding="utf-8")
