"""What the tests with real clients have in common."""

import json
import os
import pathlib
import shutil

from model import make_link, page_link

# Whether the clients of all desktops are installed, and are to be tried.
CLIENTS = "CONNECT_CLIENTS" in os.environ

# Whose names in XDG_CURRENT_DESKTOP `xdg-open` and browsers go by.
DESKTOPS = ["GNOME", None]
if CLIENTS:
    DESKTOPS += ["ubuntu:GNOME", "KDE", "XFCE", "MATE", "LXQt", "X-Cinnamon", "LXDE", "sway"]

KDE_OPENER = "kde-open"
KDE_VERSION = "6" if shutil.which("kbuildsycoca6") else "5"

# Each desktop's own opener, and the desktop that it runs on here.
OPENERS = {"gio open": (["gio", "open"], "GNOME")}
if CLIENTS:
    OPENERS |= {"exo-open": (["exo-open"], "XFCE"), KDE_OPENER: ([KDE_OPENER], "KDE"),
                "qtxdg-mat": (["qtxdg-mat", "open"], "LXQt")}
OPENERS |= {f"xdg-open as {name}": (["xdg-open"], name) for name in DESKTOPS}

# These take a link apart as they would the address of a host.
READ_HOSTS = [name for name in (KDE_OPENER, "qtxdg-mat", "xdg-open as KDE") if name in OPENERS]
if CLIENTS and "qtxdg-mat" in pathlib.Path(shutil.which("xdg-open")).read_text():
    READ_HOSTS.append("xdg-open as LXQt")


def session_variables(desktop):
    """What the session of a desktop of this name sets; None: a session of no desktop."""
    variables = {"XDG_CURRENT_DESKTOP": desktop}
    if desktop == "KDE":
        variables |= {"KDE_FULL_SESSION": "true", "KDE_SESSION_VERSION": KDE_VERSION}
    return variables


def page_of(name):
    """A page whose address changes when somebody reads it."""
    return f"https://page.test/{name}?number=+31201234567&name=Jansen,%20M.#call"


def link_to(page, prefix="screenpop:"):
    """A link whose base64 has all three signs of base64."""
    text = json.dumps({"SubHeader": ">>>???", "WebPage": page})
    link = make_link(text + " " * (len(text) % 3 == 0), prefix)
    assert set("+/=") <= set(link.partition(":")[2].removeprefix("//"))
    return link


# Links that no client should send.
BAD = [
    "screenpop:",
    "screenpop:eyJXZWJQYWdlIjogImh0dHBzOi8",
    "screenpop:" + page_link(page_of("twice"), "screenpop://"),
    "screenpop:" + "A" * 100_000,
]
