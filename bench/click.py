"""Measures the way from a click in Chromium to the page's handler, on each desktop: click.py ROUNDS.

What is started on the way tells the time first: the click, the opener, our process, and the handler.
"""

import statistics
import sys

from stamps import StampedDesktop
from browser import Chromium, Site
from clients import link_to, page_of, session_variables
from desktop import NAME, STAGE

# Into the middle of the screen.
CLICK = ["/usr/bin/xdotool", "mousemove", "512", "400", "click", "1"]


def make_desktop(name):
    desktop = StampedDesktop(screen=True, **session_variables(name))
    entry = f"/applications/{NAME}.desktop"
    with open(f"{STAGE}/share{entry}", encoding="utf-8") as installed:
        desktop.write(f"data{entry}", installed.read().replace(
            "Exec=", f"Exec={' '.join(desktop.stamp)} "))
    with open(f"{desktop.folder}/config/mimeapps.list", "a", encoding="utf-8") as file:
        file.write(f"x-scheme-handler/screenpop={NAME}.desktop\n")
    # The link that starts the program is no matter of every day.
    desktop.listen()
    return desktop


def clicks(desktop, rounds):
    """The parts of so many clicks."""
    site = Site(desktop)
    # The link is all that there is to click.
    site.texts["/call"] = (
        f'<a style="position: fixed; inset: 0" href="{link_to(page_of("click"))}"></a>'
        "<script>onload = () => fetch('/report', { method: 'POST' })</script>")
    # On every desktop, Chromium asks the same opener.
    desktop.install_script("openers/xdg-open", " ".join(
        ["exec", *desktop.stamp, '/usr/bin/xdg-open "$@"\n']))
    chromium = Chromium(desktop, site.origin, PATH=desktop.folder + "/openers:/usr/bin:/bin")
    chromium.show(site.origin + "/call")
    site.report()
    return [desktop.parts(4, *CLICK) for _ in range(rounds)]


for current in ("GNOME", "KDE", "XFCE", None):
    with make_desktop(current) as shared:
        medians = map(statistics.median, zip(*clicks(shared, int(sys.argv[1]))))
        print(f"a click on {current or 'no desktop'}, in ms: browser {next(medians):.0f}, "
              f"opener {next(medians):.0f}, ours {next(medians):.1f}", flush=True)
