"""The activation token on Wayland: with it, the browser asks for the page's window to be raised."""

import os
import queue
import re
import threading

import pytest

from browser import Site, need
from clients import KDE_OPENER, link_to
from desktop import PROGRAM, STAGE, Desktop
from firefox import make_profile
from processes import LIMIT

HERE = os.path.dirname(os.path.abspath(__file__))
# The first of a runtime folder.
DISPLAY = "wayland-1"
CONFIGURATION = "output * resolution 800x600\nexec echo $WAYLAND_DISPLAY\n"
# It refuses to be root.
SWAY = [*(["unshare", "--map-user=1000", "--map-group=1000"] if os.geteuid() == 0 else []), "sway"]
PAGE = "/customer?number=+31201234567&name=Jansen,%20M.#call"


class Tokens:
    """The activation tokens that a program is `given` by the compositor, and those with which it
    has a window `raised`. It has WAYLAND_DEBUG=1, and writes into `pipe`."""

    def __init__(self):
        self.given, self.raised = queue.Queue(), queue.Queue()
        read, self.pipe = os.pipe()
        threading.Thread(target=self._read, args=[read], daemon=True).start()

    def _read(self, pipe):
        with open(pipe, encoding="utf-8", errors="replace") as lines:
            for line in lines:
                if found := re.search(r' xdg_activation_token_v1[@#]\d+\.done\("(.*)"\)', line):
                    self.given.put(found[1])
                if found := re.search(r'-> xdg_activation_v1[@#]\d+\.activate\("(.*)", ', line):
                    self.raised.put(found[1])


def start_sway(desktop):
    configuration = desktop.folder + "/sway.conf"
    with open(configuration, "w", encoding="utf-8") as file:
        file.write(CONFIGURATION)
    with open(desktop.folder + "/sway.log", "w", encoding="utf-8") as log:
        sway = desktop.spawn(
            *SWAY, "--config", configuration, streams={"stderr": log}, WAYLAND_DISPLAY=None,
            WLR_BACKENDS="headless", WLR_RENDERER="pixman", WLR_LIBINPUT_NO_DEVICES="1")
    assert sway.output.next() == DISPLAY


@pytest.fixture(scope="module")
def wayland():
    """A desktop with Firefox as the browser of pages, which stays for all tests."""
    need("sway", "firefox-esr", "xdg-open", KDE_OPENER)
    with Desktop(
            WAYLAND_DISPLAY=DISPLAY, XDG_CURRENT_DESKTOP="sway", NO_AT_BRIDGE="1",
            MOZ_ENABLE_WAYLAND="1", GDK_BACKEND="wayland", QT_QPA_PLATFORM="offscreen",
            XDG_DATA_DIRS=f"{STAGE}/share:/usr/local/share:/usr/share",
            XDG_CONFIG_DIRS="/etc/xdg") as desktop:
        start_sway(desktop)
        desktop.site = Site(desktop)
        desktop.tokens = Tokens()
        # Driven by Marionette, it would raise no window.
        command = ["firefox-esr", "--profile", make_profile(desktop)]
        desktop.spawn(*command, desktop.site.origin + "/start", WAYLAND_DEBUG="1",
                      streams={"stderr": desktop.tokens.pipe})
        os.close(desktop.tokens.pipe)
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
    while desktop.tokens.raised.get(timeout=LIMIT) != token:
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


def test_a_token_of_the_bus_reaches_the_browser(desktop, link):
    desktop.listen()
    for name in "activation_token", "desktop_startup_id":
        desktop.open(link, **{name: "bus-" + name})
        expect_raised(desktop, "bus-" + name)


def test_the_compositors_token_comes_from_a_gtk_3_program(desktop, link):
    for _ in "cold", "warm":
        tokens = Tokens()
        client = desktop.spawn("/usr/bin/python3", "-B", HERE + "/follow.py", link,
                               WAYLAND_DEBUG="1", streams={"stderr": tokens.pipe})
        os.close(tokens.pipe)
        assert client.finish().status == 0
        expect_raised(desktop, tokens.given.get(timeout=LIMIT))
