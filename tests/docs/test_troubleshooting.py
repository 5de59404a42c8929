"""The commands of docs/troubleshooting.md print what stands below them."""

import pathlib
import re
import unittest

from desktop import PROGRAM, Desktop
from processes import DATA
from road import messages_of

PAGE = pathlib.Path(DATA).parents[1] / "docs/troubleshooting.md"


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


class TroubleshootingTest(unittest.TestCase):
    maxDiff = None

    def test_each_command_prints_what_is_shown(self):
        self.desktop = Desktop(self)
        listener = None
        opened = 0
        for command, expected in commands("console"):
            with self.subTest(command):
                if command == "vastel-connect -log":
                    self.assertEqual(expected, ["…"])
                    listener = self.desktop.listen("-log")
                    continue
                result = self.run_command(command)
                self.assertEqual((result.errors, result.status), ("", 0))
                self.expect_lines(result.output.splitlines(), expected)
                if command.startswith("gio open"):
                    self.assertEqual(self.desktop.opened(), "https://crm.example/48213")
                    opened += 1
        self.assertEqual(opened, 2)
        # Those of the picture, in which the same link is followed.
        (link,) = re.findall(r"gio open (screenpop:\S+)", PAGE.read_text(encoding="utf-8"))
        log = messages_of(link)
        self.assertEqual(listener.messages(len(log)), log)
        self.assertEqual(listener.end().output, "")

    def test_without_a_bus_the_second_step_says_so(self):
        self.desktop = Desktop(self, bus=False, DBUS_SESSION_BUS_ADDRESS="unix:path=/nowhere")
        self.expect_trouble("unable to connect to D-Bus")

    def test_without_a_service_file_the_second_step_says_so(self):
        self.desktop = Desktop(self, service=None)
        self.expect_trouble("was not provided by any .service files")

    def expect_trouble(self, text):
        (command,) = [command for command, _ in commands("console") if "launch" in command]
        self.assertIn(text, self.run_command(command).errors)
        self.assertIn(f"- `{text}`: ", PAGE.read_text(encoding="utf-8"))

    def run_command(self, command):
        path = f"{pathlib.Path(PROGRAM).parent}:/usr/bin:/bin"
        return self.desktop.spawn("/bin/bash", "-c", command, PATH=path).finish()

    def expect_lines(self, lines, expected):
        for line, form in zip(lines, expected):
            self.assertRegex(line, f"^{pattern(form)}$")
        self.assertEqual(len(lines), len(expected))
