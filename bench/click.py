"""Measures the way from a click to the page's handler: click.py ROUNDS RESULTS.

On each desktop, a link in Chromium is clicked, and followed by the desktop's own opener as well. What
is started on the way tells the time first: the opener, our process, and the handler.
"""

import json
import sys

from stamps import StampedDesktop
from browser import Chromium, Site
from clients import KDE_OPENER, link_to, page_of, session_variables
from desktop import NAME, STAGE

OPENERS = {"GNOME": ["gio", "open"], "KDE": [KDE_OPENER], "XFCE": ["exo-open"],
           "none": ["xdg-open"]}
PAGE = page_of("click")
# Into the middle of the screen.
CLICK = ["/usr/bin/xdotool", "mousemove", "512", "400", "click", "1"]
# The last part is ours.
PARTS = ("until the opener starts", "until we start", "ours")


def make_desktop(name):
    desktop = StampedDesktop(screen=True, **session_variables(None if name == "none" else name))
    entry = f"/applications/{NAME}.desktop"
    with open(f"{STAGE}/share{entry}", encoding="utf-8") as installed:
        text = installed.read().replace("Exec=", f"Exec={' '.join(desktop.stamp)} ")
    with open(f"{desktop.folder}/data{entry}", "w", encoding="utf-8") as file:
        file.write(text)
    with open(f"{desktop.folder}/config/mimeapps.list", "a", encoding="utf-8") as file:
        file.write(f"x-scheme-handler/screenpop={NAME}.desktop\n")
    # The link that starts the program is no matter of every day.
    desktop.listen()
    return desktop


def clicks(desktop, rounds):
    """The parts of so many clicks."""
    site = Site(desktop)
    # The link is all that there is to click.
    site.texts["/call"] = (f'<a style="position: fixed; inset: 0" href="{link_to(PAGE)}"></a>'
                           "<script>onload = () => fetch('/report', { method: 'POST' })</script>")
    # On every desktop, Chromium asks the same opener.
    desktop.install_script("openers/xdg-open", " ".join(
        ["exec", *desktop.stamp, '/usr/bin/xdg-open "$@"\n']))
    chromium = Chromium(desktop, site.origin, PATH=desktop.folder + "/openers:/usr/bin:/bin")
    chromium.show(site.origin + "/call")
    site.report()
    return [desktop.parts(4, *CLICK) for _ in range(rounds)]


def row(name, parts, samples):
    return {"name": name, "samples": {**dict(zip(parts, zip(*samples))),
                                      "whole": [sum(sample) for sample in samples]}}


def main():
    rounds, rows = int(sys.argv[1]), []
    for name, (opener, *arguments) in OPENERS.items():
        print("bench: click,", name, file=sys.stderr, flush=True)
        with make_desktop(name) as desktop:
            command = [f"/usr/bin/{opener}", *arguments, link_to(PAGE)]
            openings = [desktop.parts(3, *command) for _ in range(rounds)]
            rows += [row(f"click, {name}", PARTS, clicks(desktop, rounds)),
                     row(f"{opener}, {name}", PARTS[1:], openings)]
    with open(sys.argv[2], "w", encoding="utf-8") as file:
        json.dump(rows, file)


main()
