"""What the tests with real clients have in common."""

import json
import pathlib
import shutil

from model import make_link, page_link

# Whose names in XDG_CURRENT_DESKTOP `xdg-open` and browsers go by.
DESKTOPS = ["GNOME", "ubuntu:GNOME", "KDE", "XFCE", "MATE", "LXQt", "X-Cinnamon", "LXDE", "sway"]

KDE_OPENER = "kde-open"
KDE_VERSION = "6" if shutil.which("kbuildsycoca6") else "5"

# Each desktop's own opener, and the desktop that it runs on here.
OWN_OPENERS = {
    "gio open": (["gio", "open"], "GNOME"),
    "exo-open": (["exo-open"], "XFCE"),
    "qtxdg-mat": (["qtxdg-mat", "open"], "LXQt"),
    KDE_OPENER: ([KDE_OPENER], "KDE"),
}
OPENERS = {**OWN_OPENERS,
           **{f"xdg-open as {name}": (["xdg-open"], name) for name in DESKTOPS}}

# These take a link apart as they would the address of a host.
READ_HOSTS = [KDE_OPENER, "qtxdg-mat", "xdg-open as KDE"]
if (xdg_open := shutil.which("xdg-open")) and "qtxdg-mat" in pathlib.Path(xdg_open).read_text():
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


def expect_recovery(test, desktop, listener, follow):
    """Follows bad links, and after each of them a good one, which works."""
    good = page_of("next")
    for text in BAD:
        with test.subTest(text=text[:100]):
            follow(text)
            test.expect_messages(listener, text)
            follow(link_to(good))
            test.expect_messages(listener, link_to(good))
            test.assertEqual(desktop.opened(), good)


def installed(openers):
    """Those of the openers whose program is installed, and the names of the others."""
    found = {name: opener for name, opener in openers.items() if shutil.which(opener[0][0])}
    return found, sorted(set(openers) - set(found))
