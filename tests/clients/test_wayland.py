"""The activation token on Wayland: with it, the browser asks for the page's window to be raised."""

import os
import queue
import re
import threading
import types
import unittest

from browser import Site, need
from clients import KDE_OPENER, link_to
from desktop import PROGRAM, STAGE, Desktop
from processes import LIMIT
from firefox import make_profile

HERE = os.path.dirname(os.path.abspath(__file__))
# The first of a runtime folder.
DISPLAY = "wayland-1"
CONFIGURATION = "output * resolution 800x600\nexec echo $WAYLAND_DISPLAY\n"
# It refuses to be root.
SWAY = [*(["unshare", "--map-user=1000", "--map-group=1000"] if os.geteuid() == 0 else []), "sway"]
# The token's two names in the environment.
NAMES = ["XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"]


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


class WaylandTest(unittest.TestCase):
    """All tests share a desktop, and the browser on it."""

    @classmethod
    def setUpClass(cls):
        need(cls(), "sway", "firefox-esr", "xdg-open", KDE_OPENER)
        together = types.SimpleNamespace(addCleanup=cls.addClassCleanup)
        cls.desktop = Desktop(
            together, WAYLAND_DISPLAY=DISPLAY, XDG_CURRENT_DESKTOP="sway", NO_AT_BRIDGE="1",
            MOZ_ENABLE_WAYLAND="1", GDK_BACKEND="wayland", QT_QPA_PLATFORM="offscreen",
            XDG_DATA_DIRS=f"{STAGE}/share:/usr/local/share:/usr/share", XDG_CONFIG_DIRS="/etc/xdg")
        cls.start_sway()
        cls.site = Site(together)
        cls.page = cls.site.origin + "/customer?number=+31201234567&name=Jansen,%20M.#call"
        cls.link = link_to(cls.page)
        cls.start_firefox()

    @classmethod
    def start_sway(cls):
        configuration = cls.desktop.folder + "/sway.conf"
        with open(configuration, "w", encoding="utf-8") as file:
            file.write(CONFIGURATION)
        with open(cls.desktop.folder + "/sway.log", "w", encoding="utf-8") as log:
            sway = cls.desktop.spawn(
                *SWAY, "--config", configuration, streams={"stderr": log}, WAYLAND_DISPLAY=None,
                WLR_BACKENDS="headless", WLR_RENDERER="pixman", WLR_LIBINPUT_NO_DEVICES="1")
        assert sway.output.next() == DISPLAY

    @classmethod
    def start_firefox(cls):
        """Starts the browser of pages. Driven by Marionette, it would raise no window."""
        command = ["firefox-esr", "--profile", make_profile(cls.desktop)]
        cls.tokens = Tokens()
        cls.desktop.spawn(*command, cls.site.origin + "/start", WAYLAND_DEBUG="1",
                          streams={"stderr": cls.tokens.pipe})
        os.close(cls.tokens.pipe)
        assert cls.site.report() == cls.site.origin + "/start"
        cls.desktop.install_handler(["http"], " ".join(command) + " %u")

    def setUp(self):
        self.addCleanup(self.desktop.end_programs)

    def expect_raised(self, token):
        self.assertEqual(self.site.report(), self.page)
        # With tokens of its own, Firefox asks for more.
        while self.tokens.raised.get(timeout=LIMIT) != token:
            pass

    def follow_by_each(self, state):
        """Follows a link by each opener, with the token under each name."""
        for command in [PROGRAM], ["xdg-open"], ["gio", "open"], [KDE_OPENER]:
            for name in NAMES:
                with self.subTest(command=command, name=name):
                    token = f"{state}-{os.path.basename(command[0])}-{name}"
                    client = self.desktop.spawn(*command, self.link, **{name: token})
                    self.assertEqual(client.finish().status, 0)
                    self.expect_raised(token)
                    if state == "cold":
                        self.desktop.end_programs()

    def test_token_reaches_the_running_program(self):
        self.desktop.listen()
        self.follow_by_each("warm")
        for name in "activation_token", "desktop_startup_id":
            self.desktop.open(self.link, **{name: "bus-" + name})
            self.expect_raised("bus-" + name)

    def test_token_reaches_the_program_that_is_started(self):
        self.follow_by_each("cold")

    def test_compositor_s_token_comes_from_a_gtk_3_program(self):
        for _ in "cold", "warm":
            tokens = Tokens()
            client = self.desktop.spawn("/usr/bin/python3", "-B", HERE + "/follow.py", self.link,
                                        WAYLAND_DEBUG="1", streams={"stderr": tokens.pipe})
            os.close(tokens.pipe)
            self.assertEqual(client.finish().status, 0)
            self.expect_raised(tokens.given.get(timeout=LIMIT))
