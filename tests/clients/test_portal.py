"""Links that come through the desktop's portal, as from a browser in a sandbox."""

import os
import shutil
import subprocess

import pytest

from browser import need
from clients import link_to, page_of, session_variables

PORTALS = "/usr/libexec/xdg-desktop-portal"
SERVICES = ["portal.Desktop", "impl.portal.PermissionStore", "impl.portal.desktop.gtk"]
PAGE = page_of("portal")
LINK = link_to(PAGE)
# What tells the portal that a client is a Flatpak's. That of Debian 13 also reads which process
# the sandbox's first is, in a file that the instance is found by.
INFO = "[Application]\nname=test.client\n[Instance]\ninstance-id=1\n"
SANDBOX = ["bwrap", "--clearenv", "--setenv", "PATH", "/usr/bin", "--ro-bind", "/usr", "/usr",
           "--symlink", "usr/lib", "/lib", "--symlink", "usr/lib64", "/lib64", "--proc", "/proc",
           "--dev", "/dev", "--setenv", "DBUS_SESSION_BUS_ADDRESS", "unix:path=/run/bus",
           "--info-fd", "3"]
OTHER = """[Desktop Entry]
Type=Application
Name=Another program
Exec=true %u
MimeType=x-scheme-handler/screenpop;
"""


@pytest.fixture
def desktop(new_desktop):
    need("Xvfb", "bwrap", "xdotool", PORTALS, PORTALS + "-gtk")
    if subprocess.run(["bwrap", "--ro-bind", "/", "/", "true"], check=False).returncode != 0:
        pytest.skip("the system permits no sandbox")
    desktop = new_desktop(screen=True, NO_AT_BRIDGE="1", **session_variables("GNOME"))
    for name in SERVICES:
        shutil.copy(f"/usr/share/dbus-1/services/org.freedesktop.{name}.service",
                    desktop.folder + "/services")
    return desktop


@pytest.fixture
def client(desktop):
    """The command of a client in a sandbox, which finds no handler itself, and asks the portal."""
    instance = f"{desktop.folder}/runtime/.flatpak/1"
    os.makedirs(instance)
    return ["sh", "-c", 'exec "$@" 3> "$0"', instance + "/bwrapinfo.json", *SANDBOX,
            "--ro-bind", desktop.write("flatpak-info", INFO), "/.flatpak-info",
            "--ro-bind", desktop.folder + "/bus", "/run/bus", "gio", "open", LINK]


def test_a_link_arrives_without_a_question(desktop, client):
    assert desktop.spawn(*client).finish().status == 0
    assert desktop.opened() == PAGE
    desktop.end_programs()
    listener = desktop.listen("-log")
    assert desktop.spawn(*client).finish().status == 0
    listener.expect_log(LINK)
    assert desktop.opened() == PAGE


def test_a_second_claimant_brings_a_question(desktop, client):
    """The default program stands first among the answers. Three equal ones end the question."""
    desktop.write("data/applications/other.desktop", OTHER)
    assert desktop.spawn("update-desktop-database", desktop.folder + "/data/applications").wait() == 0
    with open(desktop.folder + "/config/mimeapps.list", "a", encoding="utf-8") as file:
        file.write("x-scheme-handler/screenpop=com.vastel.Connect.desktop\n")
    for answer in ("Escape", "Return", "Return", "Return", None):
        process = desktop.spawn(*client)
        if answer:
            dialog = ["search", "--sync", "--onlyvisible", "--class", "portal"]
            assert desktop.spawn("xdotool", *dialog, "getwindowname", "windowfocus", "--sync", "key",
                                 answer).finish().output == "Open With…\n"
        assert (process.finish().status == 0) == (answer != "Escape")
        if answer != "Escape":
            assert desktop.opened() == PAGE
