"""docs/deploy.md and the files that it hands out."""

import json
import pathlib
import plistlib
import re
import unittest

import pytest

from desktop import NAME, PROGRAM, STAGE, Desktop
from model import page_link
from processes import DATA, golden, log_message
from road import LINK, PAGE, messages_of

ROOT = pathlib.Path(DATA).parents[1]
POLICIES = ROOT / "packaging/policies"
TEXT = (ROOT / "docs/deploy.md").read_text(encoding="utf-8")
UNIT = pathlib.Path(STAGE) / "share/systemd/user/vastel-connect.service"
ORIGIN = "https://phone.example.com"
POLICY = [{"protocol": "screenpop", "allowed_origins": [ORIGIN]}]


def settings(section):
    """The settings of that section which the page shows."""
    (text,) = re.findall(rf"^```ini\n(\[{section}\]\n.*?)^```$", TEXT, re.MULTILINE | re.DOTALL)
    return text


class PolicyTest(unittest.TestCase):
    def test_each_file_permits_our_links_of_the_documented_origin(self):
        self.assertEqual(self.read_json("chromium.json"),
                         {"AutoLaunchProtocolsFromOrigins": POLICY})
        self.assertEqual(self.read_json("firefox.json"),
                         {"policies": {"AutoLaunchProtocolsFromOrigins": POLICY}})
        self.assertIn(f"`{ORIGIN}`", TEXT)
        entry = (pathlib.Path(STAGE) / f"share/applications/{NAME}.desktop").read_text()
        self.assertIn(f"x-scheme-handler/{POLICY[0]['protocol']};", entry)

    def test_the_profile_has_the_documented_domains(self):
        profile = plistlib.loads((POLICIES / "macos.mobileconfig").read_bytes())
        payloads = profile["PayloadContent"]
        self.assertEqual([payload["PayloadType"] for payload in payloads],
                         ["com.google.Chrome", "org.chromium.Chromium", "com.microsoft.Edge",
                          "org.mozilla.firefox"])
        for payload in payloads:
            self.assertIn(f"`{payload['PayloadType']}`", TEXT)
            self.assertEqual(payload["AutoLaunchProtocolsFromOrigins"], POLICY)
        self.assertIs(payloads[-1]["EnterprisePoliciesEnabled"], True)
        identities = [profile["PayloadUUID"], *(payload["PayloadUUID"] for payload in payloads)]
        self.assertEqual(len(set(identities)), 5)

    def test_the_page_names_each_file_and_no_other(self):
        named = set(re.findall(r"[a-z]+\.(?:json|mobileconfig)(?=`)", TEXT))
        self.assertEqual(named - {"screenpop.json", "policies.json"},
                         {path.name for path in POLICIES.iterdir()})

    def read_json(self, name):
        return json.loads((POLICIES / name).read_text(encoding="utf-8"))


class SettingsTest(unittest.TestCase):
    def test_the_default_of_all_users_is_preferred_to_another_entry(self):
        desktop = Desktop(self)
        applications = pathlib.Path(desktop.folder) / "data/applications"
        (applications / "other.desktop").write_text(
            "[Desktop Entry]\nType=Application\nName=Other\nExec=true %u\n"
            "MimeType=x-scheme-handler/screenpop;\n")
        self.assertEqual(desktop.spawn("update-desktop-database", str(applications)).wait(), 0)
        system = pathlib.Path(desktop.folder) / "system"
        system.mkdir()
        self.assertEqual(self.handler(desktop, system), "other.desktop")
        (system / "mimeapps.list").write_text(settings("Default Applications"))
        self.assertEqual(self.handler(desktop, system), f"{NAME}.desktop")

    def handler(self, desktop, system):
        result = desktop.spawn("gio", "mime", "x-scheme-handler/screenpop",
                               XDG_CONFIG_DIRS=str(system), LC_ALL="C.UTF-8").finish()
        return result.output.splitlines()[0].rpartition(" ")[2]

    def test_the_unit_takes_the_setting(self):
        desktop = Desktop(self, bus=False)
        unit = pathlib.Path(desktop.folder) / UNIT.name
        unit.write_bytes(UNIT.read_bytes())
        drop_in = pathlib.Path(f"{unit}.d/override.conf")
        drop_in.parent.mkdir()
        drop_in.write_text(settings("Service").replace("/usr/bin/vastel-connect", PROGRAM))
        result = desktop.spawn("systemd-analyze", "--user", "--man=no", "verify", unit).finish()
        self.assertEqual((result.output, result.errors, result.status), ("", "", 0))

    def test_the_unit_logs_all_links_but_the_one_that_starts_it(self):
        commands = re.findall("^ExecStart=(.*)$", settings("Service"), re.MULTILINE)
        self.assertEqual(commands[0], "")
        command = commands[1].replace("/usr/bin/vastel-connect", PROGRAM)
        self.assertIn(f"ExecStart={command.removesuffix(' -jsonlog')}\n", UNIT.read_text())

        desktop = Desktop(self, service=command)
        desktop.open(LINK)
        self.assertEqual(desktop.opened(), PAGE)
        second = page_link(PAGE, Note="second")
        desktop.open(second)
        self.assertEqual(desktop.opened(), PAGE)
        # What the bus starts writes where the bus does.
        for line in golden("banner").splitlines():
            self.assertEqual(desktop.daemon.output.next(), line)
        self.assertEqual([log_message(desktop.daemon.output.next()) for _ in messages_of(second)],
                         messages_of(second))


# The lines that tell whether a desk is all right, and the first that fails.


@pytest.mark.parametrize("environment, failure", [
    *(({"XDG_CURRENT_DESKTOP": name}, None) for name in (
        None, "GNOME", "ubuntu:GNOME", "KDE", "XFCE", "LXQt", "MATE", "X-Cinnamon", "LXDE", "sway")),
    ({"PATH": "/usr/bin:/bin"}, 0),
    ({"XDG_DATA_DIRS": "/nowhere"}, 1),
    ({"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere"}, 2),
    ({"XDG_CONFIG_HOME": "/nowhere"}, 3)])
def test_the_check_of_a_desk_fails_where_something_is_missing(desktop, environment, failure):
    (lines,) = re.findall(r"```sh\n(command -v .*?)```", TEXT, re.DOTALL)
    environment = {"PATH": f"{pathlib.Path(PROGRAM).parent}:/usr/bin:/bin", **environment}
    failed = (number for number, line in enumerate(lines.splitlines())
              if desktop.spawn("sh", "-c", line, **environment).finish().status != 0)
    assert next(failed, None) == failure
