"""Draws the ways from a click to the page's handler, one above the other on one scale."""
from xml.sax.saxutils import escape

WIDTH, LABELS, LINE = 760, 150, 26
# Each part, and its colours on light and on dark pages.
PARTS = {"until the opener starts": ("browser", "#8c959f", "#6e7681"),
         "until we start": ("opener", "#54aeff", "#388bfd"),
         "ours": ("Vastel Connect", "#cf222e", "#ff7b72")}


def style():
    names = [name.split()[-1] for name, _, _ in PARTS.values()]
    light = "".join(f".{name} {{ fill: {part[1]}; }}\n" for name, part in zip(names, PARTS.values()))
    dark = "".join(f".{name} {{ fill: {part[2]}; }}\n" for name, part in zip(names, PARTS.values()))
    return (f"<style>\ntext {{ font: 13px system-ui, sans-serif; fill: #1f2328; }}\n"
            f"path {{ stroke: #d1d9e0; }}\n.page {{ fill: #ffffff; }}\n{light}"
            f"@media (prefers-color-scheme: dark) {{\ntext {{ fill: #f0f6fc; }}\n"
            f"path {{ stroke: #3d444d; }}\n.page {{ fill: #0d1117; }}\n{dark}}}\n</style>\n")


def text(x, y, words, anchor="start"):
    return f'<text x="{x:.1f}" y="{y}" text-anchor="{anchor}">{escape(words)}</text>\n'


def box(x, y, width, part):
    name = PARTS[part][0].split()[-1]
    # Ours would be too thin to be seen.
    return f'<rect class="{name}" x="{x:.1f}" y="{y}" width="{max(width, 2):.1f}" height="16"/>\n'


def legend():
    drawn, x = "", LABELS
    for part, (words, _, _) in PARTS.items():
        drawn += box(x, 6, 16, part) + text(x + 22, 19, words)
        x += 130
    return drawn


def axis(scale, longest, height):
    step = next(step for step in (10, 20, 50, 100, 200, 500, 1000) if longest / step <= 10)
    drawn = ""
    for time in range(0, int(longest) + step, step):
        x = LABELS + time * scale
        drawn += f'<path d="M{x:.1f} 32V{height - 24}"/>\n'
        drawn += text(x, height - 8, f"{time} ms", "middle")
    return drawn


def timeline(results):
    """A picture of the ways, by the medians of their parts."""
    rows = {each["name"]: each["samples"] for each in results}
    longest = max(sum(row.get(part, 0) for part in PARTS) for row in rows.values())
    scale = (WIDTH - LABELS - 100) / longest
    height = 40 + len(rows) * LINE + 28
    drawn = legend() + axis(scale, longest, height)
    for i, (name, row) in enumerate(rows.items()):
        x, y = LABELS, 40 + i * LINE
        drawn += text(LABELS - 8, y + 13, name, "end")
        for part in PARTS:
            if part in row:
                drawn += box(x, y, row[part] * scale, part)
                x += row[part] * scale
        drawn += text(x + 8, y + 13, f"{row['ours']:.1f} ms ours")
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}" '
            f'viewBox="0 0 {WIDTH} {height}" role="img">\n<title>From the click, and from the '
            f"opener's start, to the page's handler</title>\n{style()}"
            f'<rect class="page" width="100%" height="100%"/>\n{drawn}</svg>\n')
