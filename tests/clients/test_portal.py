"""Links that come through the desktop's portal, as from a browser in a sandbox."""

import os
import pathlib
import shutil
import subprocess

import pytest

from browser import need
from clients import link_to, page_of, session_variables
from screen import Screen

PORTALS = "/usr/libexec/xdg-desktop-portal"
SERVICES = ["portal.Desktop", "impl.portal.PermissionStore", "impl.portal.desktop.gtk"]
PAGE = page_of("portal")
LINK = link_to(PAGE)
# What tells the portal that a client is a Flatpak's. That of Debian 13 also reads which process
# the sandbox's first is, in a file that the instance is found by.
INFO = """[Application]
name=test.client
[Instance]
instance-id=1
"""
SANDBOX = ["bwrap", "--clearenv", "--setenv", "PATH", "/usr/bin", "--ro-bind", "/usr", "/usr",
           "--symlink", "usr/lib", "/lib", "--symlink", "usr/lib64", "/lib64", "--proc", "/proc",
           "--dev", "/dev", "--setenv", "DBUS_SESSION_BUS_ADDRESS", "unix:path=/run/bus"]
OTHER = """[Desktop Entry]
Type=Application
Name=Another program
Exec=true %u
MimeType=x-scheme-handler/screenpop;
"""


@pytest.fixture
def desktop(new_desktop):
    need("Xvfb", "bwrap", PORTALS, PORTALS + "-gtk")
    if subprocess.run(["bwrap", "--ro-bind", "/", "/", "true"], check=False).returncode != 0:
        pytest.skip("the system permits no sandbox")
    desktop = new_desktop(screen=True, NO_AT_BRIDGE="1", **session_variables("GNOME"))
    for name in SERVICES:
        shutil.copy(f"/usr/share/dbus-1/services/org.freedesktop.{name}.service",
                    desktop.folder + "/services")
    return desktop


@pytest.fixture(params=["outside", "in a sandbox"])
def client(desktop, request):
    """The command of a client that finds no handler itself, and asks the portal."""
    if request.param == "outside":
        nowhere = desktop.folder + "/empty"
        return ["env", "GTK_USE_PORTAL=1", "GIO_USE_PORTALS=1", f"XDG_DATA_DIRS={nowhere}",
                f"XDG_DATA_HOME={nowhere}", "gio", "open"]
    info = pathlib.Path(desktop.folder, "flatpak-info")
    info.write_text(INFO)
    instance = f"{desktop.folder}/runtime/.flatpak/1"
    os.makedirs(instance)
    return ["sh", "-c", 'exec "$@" 3> "$0"', instance + "/bwrapinfo.json",
            *SANDBOX, "--info-fd", "3", "--ro-bind", info, "/.flatpak-info",
            "--ro-bind", desktop.folder + "/bus", "/run/bus", "gio", "open"]


def test_a_link_arrives_without_a_question(desktop, client):
    assert desktop.spawn(*client, LINK).finish().status == 0
    assert desktop.opened() == PAGE
    desktop.end_programs()
    listener = desktop.listen("-log")
    assert desktop.spawn(*client, LINK).finish().status == 0
    listener.expect_log(LINK)
    assert desktop.opened() == PAGE


def test_a_second_claimant_brings_a_question(desktop, client):
    """The default program stands first among the answers. Three equal ones end the question."""
    folder = desktop.folder + "/data/applications"
    pathlib.Path(folder, "other.desktop").write_text(OTHER)
    assert desktop.spawn("update-desktop-database", folder).wait() == 0
    with open(desktop.folder + "/config/mimeapps.list", "a", encoding="utf-8") as file:
        file.write("x-scheme-handler/screenpop=com.vastel.Connect.desktop\n")
    screen = Screen(desktop)
    for answer in ("Escape", "Return", "Return", "Return", None):
        process = desktop.spawn(*client, LINK)
        if answer:
            assert screen.dialog() == "Open With…"
            screen.press(answer)
        assert (process.finish().status == 0) == (answer != "Escape")
        if answer != "Escape":
            assert desktop.opened() == PAGE
