"""Measures the way from a click to the page's handler: click.py ROUNDS RESULTS PROGRAMS.

On each desktop, a link in Chromium is clicked, and followed by the desktop's own opener as well. What
is started on the way tells the time first: the opener, our process, and the handler.
"""
import json
import os
import socket
import struct
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path[:0] = [f"{HERE}/../tests/{folder}" for folder in ("road", "clients")]

from browser import Chromium, Site
from clients import KDE_OPENER, link_to, page_of, session_variables
from desktop import NAME, STAGE, Desktop
from processes import LIMIT

OPENERS = {"GNOME": ["gio", "open"], "KDE": [KDE_OPENER], "XFCE": ["exo-open"],
           "none": ["xdg-open"]}
PAGE = page_of("click")
# Into the middle of the screen.
CLICK = ["mousemove", "512", "400", "click", "1"]
# The last part is ours.
PARTS = ("until the opener starts", "until we start", "ours")


class Way:
    """A desktop on which all that is started on a link's way tells when it began."""

    def __init__(self, desktop, name, programs):
        self.desktop = desktop
        self._times = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self._times.bind(self.desktop.folder + "/times")
        self._times.settimeout(LIMIT)
        desktop.callback(self._times.close)
        self._stamp = [f"{programs}/bench_handler", f"{self.desktop.folder}/times"]
        stamp = " ".join(self._stamp)
        self.desktop.install_handler(command=stamp + " %u")
        entry = f"/applications/{NAME}.desktop"
        with open(f"{STAGE}/share{entry}", encoding="utf-8") as installed:
            text = installed.read().replace("Exec=", f"Exec={stamp} ")
        with open(f"{self.desktop.folder}/data{entry}", "w", encoding="utf-8") as file:
            file.write(text)
        with open(f"{self.desktop.folder}/config/mimeapps.list", "a", encoding="utf-8") as file:
            file.write(f"x-scheme-handler/screenpop={NAME}.desktop\n")
        self._opener = OPENERS[name]
        # The link that starts the program is no matter of every day.
        self.desktop.listen()

    def clicks(self, rounds):
        """The parts of so many clicks."""
        site = Site(self.desktop)
        # The link is all that there is to click.
        site.texts["/call"] = (f'<a style="position: fixed; inset: 0" href="{link_to(PAGE)}"></a>'
                               "<script>onload = () => fetch('/report', { method: 'POST' })</script>")
        # On every desktop, Chromium asks the same opener.
        self.desktop.install_script("openers/xdg-open", " ".join(
            ["exec", *self._stamp, '/usr/bin/xdg-open "$@"\n']))
        chromium = Chromium(self.desktop, site.origin,
                            PATH=self.desktop.folder + "/openers:/usr/bin:/bin")
        chromium.show(site.origin + "/call")
        site.report()
        for _ in range(rounds):
            yield self._parts(4, "/usr/bin/xdotool", *CLICK)

    def openings(self, rounds):
        """The parts of so many links, from the opener on."""
        for _ in range(rounds):
            yield self._parts(3, "/usr/bin/" + self._opener[0], *self._opener[1:], link_to(PAGE))

    def _parts(self, count, *command):
        """What passes between the starts of so many programs, of which the command is the first."""
        process = self.desktop.spawn(*self._stamp, *command)
        times = [struct.unpack("q", self._times.recv(8))[0] / 1e6 for _ in range(count)]
        process.finish()
        self.desktop.forget(process)
        return [after - before for before, after in zip(times, times[1:])]


def row(name, parts, samples):
    columns = dict(zip(parts, zip(*samples)))
    return {"topic": "click", "name": name, "unit": "ms",
            "samples": {**columns, "whole": [sum(sample) for sample in samples]}}


def main():
    rounds, results, programs = sys.argv[1:]
    rows = []
    for name in OPENERS:
        with Desktop(screen=True, **session_variables(None if name == "none" else name)) as desktop:
            way = Way(desktop, name, programs)
            openings = list(way.openings(int(rounds)))
            clicks = list(way.clicks(int(rounds)))
        rows += [row(f"click, {name}", PARTS, clicks),
                 row(f"{OPENERS[name][0]}, {name}", PARTS[1:], openings)]
    with open(results, "w", encoding="utf-8") as file:
        json.dump(rows, file)


main()
