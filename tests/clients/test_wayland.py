"""The activation token on Wayland: with it, the browser asks for the page's window to be raised."""

import os
import queue
import re
import threading

import pytest

from browser import Site, need
from clients import KDE_OPENER, link_to
from desktop import NAME, PROGRAM, STAGE, Desktop
from firefox import make_profile
from processes import LIMIT

# The first of a runtime folder.
DISPLAY = "wayland-1"
CONFIGURATION = "output * resolution 800x600\nexec echo $WAYLAND_DISPLAY\n"
# It refuses to be root.
SWAY = [*(["unshare", "--map-user=1000", "--map-group=1000"] if os.geteuid() == 0 else []), "sway"]
PAGE = "/customer?number=+31201234567&name=Jansen,%20M.#call"


def start_sway(desktop):
    with open(desktop.folder + "/sway.log", "w", encoding="utf-8") as log:
        sway = desktop.spawn(
            *SWAY, "--config", desktop.write("sway.conf", CONFIGURATION), streams={"stderr": log},
            WAYLAND_DISPLAY=None, WLR_BACKENDS="headless", WLR_RENDERER="pixman",
            WLR_LIBINPUT_NO_DEVICES="1")
    assert sway.output.next() == DISPLAY


def spawn_traced(desktop, pattern, *command):
    """Starts a program that tells what it and the compositor say to each other: the process, and a
    queue of the texts in what matches the pattern."""
    found = queue.Queue()
    read, write = os.pipe()

    def follow():
        with open(read, encoding="utf-8", errors="replace") as lines:
            for line in lines:
                if match := re.search(pattern, line):
                    found.put(match[1])

    threading.Thread(target=follow, daemon=True).start()
    process = desktop.spawn(*command, WAYLAND_DEBUG="1", streams={"stderr": write})
    os.close(write)
    return process, found


@pytest.fixture(scope="module")
def wayland():
    """A desktop with Firefox as the browser of pages, which stays for all tests."""
    need("sway", "firefox-esr", "xdg-open", KDE_OPENER, "gtk-launch")
    with Desktop(
            WAYLAND_DISPLAY=DISPLAY, XDG_CURRENT_DESKTOP="sway", NO_AT_BRIDGE="1",
            MOZ_ENABLE_WAYLAND="1", GDK_BACKEND="wayland", QT_QPA_PLATFORM="offscreen",
            XDG_DATA_DIRS=f"{STAGE}/share:/usr/local/share:/usr/share",
            XDG_CONFIG_DIRS="/etc/xdg") as desktop:
        start_sway(desktop)
        desktop.site = Site(desktop)
        # Driven by Marionette, it would raise no window.
        command = ["firefox-esr", "--profile", make_profile(desktop)]
        _, desktop.raised = spawn_traced(desktop, r'-> xdg_activation_v1[@#]\d+\.activate\("(.*)", ',
                                         *command, desktop.site.origin + "/start")
        assert desktop.site.report() == desktop.site.origin + "/start"
        desktop.install_handler(["http"], " ".join(command) + " %u")
        yield desktop


@pytest.fixture
def desktop(wayland):
    yield wayland
    wayland.end_programs()


@pytest.fixture
def link(desktop):
    return link_to(desktop.site.origin + PAGE)


def expect_raised(desktop, token):
    assert desktop.site.report() == desktop.site.origin + PAGE
    # With tokens of its own, Firefox asks for more.
    while desktop.raised.get(timeout=LIMIT) != token:
        pass


@pytest.mark.parametrize("state", ["cold", "warm"])
@pytest.mark.parametrize("command", [[PROGRAM], ["xdg-open"], ["gio", "open"], [KDE_OPENER]])
def test_a_token_of_either_name_reaches_the_browser(desktop, link, command, state):
    if state == "warm":
        desktop.listen()
    for name in ("XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"):
        token = f"{state}-{os.path.basename(command[0])}-{name}"
        assert desktop.spawn(*command, link, **{name: token}).finish().status == 0
        expect_raised(desktop, token)
        if state == "cold":
            desktop.end_programs()


def test_the_compositors_token_comes_from_a_gtk_3_program(desktop, link):
    for _ in "cold", "warm":
        client, given = spawn_traced(desktop, r' xdg_activation_token_v1[@#]\d+\.done\("(.*)"\)',
                                     "gtk-launch", NAME, link)
        assert client.finish().status == 0
        expect_raised(desktop, given.get(timeout=LIMIT))
