"""docs/deploy.md and the files that it hands out."""

import json
import plistlib
import re

import pytest

from desktop import NAME, STAGE
from processes import ROOT

POLICIES = ROOT / "packaging/policies"
TEXT = (ROOT / "docs/deploy.md").read_text(encoding="utf-8")
ORIGIN = "https://phone.example.com"
POLICY = [{"protocol": "screenpop", "allowed_origins": [ORIGIN]}]


def settings(section):
    """The settings of that section which the page shows."""
    (text,) = re.findall(rf"^```ini\n(\[{section}\]\n.*?)^```$", TEXT, re.MULTILINE | re.DOTALL)
    return text


def read_json(name):
    return json.loads((POLICIES / name).read_text(encoding="utf-8"))


# The policies of browsers.


def test_each_file_permits_our_links_of_the_documented_origin():
    assert read_json("chromium.json") == {"AutoLaunchProtocolsFromOrigins": POLICY}
    assert read_json("firefox.json") == {"policies": {"AutoLaunchProtocolsFromOrigins": POLICY}}
    assert f"`{ORIGIN}`" in TEXT


def test_the_profile_has_the_documented_domains():
    profile = plistlib.loads((POLICIES / "macos.mobileconfig").read_bytes())
    payloads = profile["PayloadContent"]
    assert [payload["PayloadType"] for payload in payloads] == [
        "com.google.Chrome", "org.chromium.Chromium", "com.microsoft.Edge", "org.mozilla.firefox",
        NAME]
    for payload in payloads:
        assert f"`{payload['PayloadType']}`" in TEXT
    for payload in payloads[:-1]:
        assert payload["AutoLaunchProtocolsFromOrigins"] == POLICY
    assert payloads[-2]["EnterprisePoliciesEnabled"] is True
    assert payloads[2]["DoNotSilentlyBlockProtocolsFromOrigins"] == POLICY
    identities = [profile["PayloadUUID"], *(payload["PayloadUUID"] for payload in payloads)]
    assert len(set(identities)) == 6
    # The schemes of pages, as the file for Linux has them.
    (schemes,) = re.findall("(?m)^Schemes=(.*);$", settings("Pages"))
    assert payloads[-1]["AllowedSchemes"] == schemes.split(";")
    example = (POLICIES / "vastel-connect.conf").read_text(encoding="utf-8")
    assert re.sub("(?m)^#.*\n", "", example) == settings("Pages")


def test_the_page_names_each_file_and_no_other():
    named = set(re.findall(r"(?<=`)[a-z-]+\.(?:conf|json|mobileconfig)(?=`)", TEXT))
    assert named - {"screenpop.json", "policies.json"} == {path.name for path in POLICIES.iterdir()}


# The settings.


def test_the_default_of_all_users_is_preferred_to_another_entry(desktop):
    desktop.write("data/applications/other.desktop",
                  "[Desktop Entry]\nType=Application\nName=Other\nExec=true %u\n"
                  "MimeType=x-scheme-handler/screenpop;\n")
    assert desktop.spawn("update-desktop-database", desktop.folder + "/data/applications").wait() == 0
    for setting, handler in ("", "other.desktop"), (settings("Default Applications"), NAME):
        desktop.write("system/mimeapps.list", setting)
        result = desktop.spawn("gio", "mime", "x-scheme-handler/screenpop",
                               XDG_CONFIG_DIRS=desktop.folder + "/system", LC_ALL="C.UTF-8").finish()
        assert handler in result.output.splitlines()[0]


# The lines that tell whether a desk is all right, and the first that fails.


@pytest.mark.parametrize("environment, failure", [
    *(({"XDG_CURRENT_DESKTOP": name}, None) for name in (
        "", "GNOME", "ubuntu:GNOME", "KDE", "XFCE", "MATE", "X-Cinnamon", "LXDE", "sway")),
    ({"PATH": "/usr/bin:/bin"}, 0),
    ({"XDG_DATA_DIRS": "/nowhere"}, 1),
    ({"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere"}, None),  # Links open all the same.
    ({}, 2),
    ({"XDG_CONFIG_HOME": "/nowhere"}, 3)])
def test_the_check_of_a_desk_fails_where_something_is_missing(desktop, environment, failure):
    (lines,) = re.findall(r"```sh\n(command -v .*?)```", TEXT, re.DOTALL)
    environment = {"PATH": STAGE + "/bin:/usr/bin:/bin", **environment}
    if failure == 2:
        desktop.ask_bus("RequestName", NAME, 0)  # Another program has the name, and takes no link.
    failed = (number for number, line in enumerate(lines.splitlines())
              if desktop.spawn("sh", "-c", line, **environment).finish().status != 0)
    assert next(failed, None) == failure
