"""Makes the pictures of README.md from what happens when a link is followed.

Usage: make.py [--check] STAGE   STAGE is the folder in which the program is installed. With --check
nothing is written; the exit status is 1 where a picture differs in more than the time in its log
lines.
"""

import base64
import os
import pathlib
import re
import sys
from xml.sax.saxutils import escape

FOLDER = pathlib.Path(__file__).resolve().parent
LINK = "screenpop:eyJXZWJQYWdlIjoiaHR0cHM6Ly9jcm0uZXhhbXBsZS80ODIxMyJ9"

MARGIN = 12
LINE = 20
CHARACTER = 8.2
COLUMNS = 92
WIDTH = round(COLUMNS * CHARACTER) + 2 * MARGIN
STYLE = """<style>
text { font: 13.5px ui-monospace, "DejaVu Sans Mono", Menlo, Consolas, monospace; }
text { fill: #1f2328; white-space: pre; }
.title { font-weight: bold; }
rect { fill: #f6f8fa; stroke: #59636e; }
path { fill: none; stroke: #59636e; }
.page { fill: #ffffff; stroke: none; }
@media (prefers-color-scheme: dark) {
text { fill: #f0f6fc; }
rect { fill: #151b23; stroke: #9198a1; }
path { stroke: #9198a1; }
.page { fill: #0d1117; }
}
</style>
"""


def follow_link(stage):
    """The lines that a listener prints from its start, the call of the bus that gives it the link,
    and how the handler of the page is started."""
    os.environ["CONNECT_STAGE"] = stage
    sys.path.insert(0, str(FOLDER.parents[1] / "tests/road"))
    import desktop  # It wants the variable above.
    from processes import golden

    with desktop.Desktop() as session:
        monitor = session.spawn("busctl", "--user", "monitor",
                                f"--match=type='method_call',interface='{desktop.INTERFACE}'")
        monitor.errors.next()  # It watches from here on.
        listener = session.start("-log")
        count = len(golden("banner").splitlines())
        lines = [listener.output.next() for _ in range(count)]
        session.wait_for_owner(listener.pid)
        assert session.spawn("gio", "open", LINK).wait() == 0
        page = session.page()
        lines += listener.end().output.splitlines()
        call = ""
        while LINK not in call:
            call += monitor.output.next()
    (link,) = re.findall('STRING "(.*)"', call)
    to = {name: re.search(f"{name}=(\\S+)", call)[1] for name in ("Interface", "Path", "Member")}
    handler = " ".join([os.path.basename(page.program), *page.arguments])
    return lines, (to, link), handler


def draw_text(x, y, line, kind="line"):
    return f'<text class="{kind}" x="{x}" y="{y}">{escape(line)}</text>\n'


def draw_box(y, lines, title=None):
    """A box with a title and lines, and where it ends."""
    rows = ([(title, "title")] if title else []) + [(line, "line") for line in lines]
    height = len(rows) * LINE + MARGIN
    text = f'<rect x="1" y="{y}" width="{WIDTH - 2}" height="{height}" rx="6"/>\n'
    for row, (line, kind) in enumerate(rows, start=1):
        text += draw_text(MARGIN, y + row * LINE, line, kind)
    return text, y + height


def draw_arrow(y, what):
    x = 3 * MARGIN
    head = f"M{x} {y}v26m-5 -7l5 7l5 -7"
    return f'<path d="{head}"/>\n' + draw_text(x + MARGIN, y + 18, what), y + 28


def picture(title, parts, height):
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}" '
            f'viewBox="0 0 {WIDTH} {height}" role="img">\n<title>{escape(title)}</title>\n'
            f'{STYLE}<rect class="page" width="100%" height="100%"/>\n{"".join(parts)}</svg>\n')


def road_picture(lines, call, handler):
    to, link = call
    record = base64.b64decode(LINK.partition(":")[2]).decode()
    steps = [
        ("The web client has a record", [record], "base64"),
        ("and makes a link of it", [LINK], "a click, and the desktop's opener"),
        (f"The session bus calls {to['Member']} of {to['Interface']} at {to['Path']}", [link],
         "the program is started if need be"),
        ("vastel-connect", [line for line in lines if line.startswith("Log ")],
         "the default handler of the page's scheme"),
        ("The browser is started", [handler], None),
    ]
    parts = []
    y = 1
    for title, texts, arrow in steps:
        part, y = draw_box(y, texts, title)
        parts.append(part)
        if arrow:
            part, y = draw_arrow(y, arrow)
            parts.append(part)
    return picture("The road of a link, from the record to the browser", parts, y + 1)


def terminal_picture(lines):
    part, y = draw_box(1, ["$ vastel-connect -log", *lines])
    return picture("vastel-connect -log in a terminal", [part], y + 1)


def without_times(text):
    return re.sub(r"Log \d\d:\d\d:\d\d", "Log hh:mm:ss", text)


def main(arguments):
    check = arguments[:1] == ["--check"]
    if len(arguments) != 1 + check:
        print(__doc__, file=sys.stderr)
        return 2
    lines, call, handler = follow_link(os.path.abspath(arguments[-1]))
    pictures = {"road.svg": road_picture(lines, call, handler),
                "terminal.svg": terminal_picture(lines)}
    status = 0
    for name, text in pictures.items():
        path = FOLDER / name
        if not check:
            path.write_text(text, encoding="utf-8")
        elif without_times(path.read_text(encoding="utf-8")) != without_times(text):
            print(f"{path} is not what dev/pictures would make")
            status = 1
    return status


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
