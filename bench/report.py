"""Prints what was measured, and which goals are reached: report.py [--write-docs] FOLDER."""

import json
import os
import statistics
import sys

from timeline import timeline

PICTURE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../docs/pictures/click.svg")
# The figure, and the most that ours may be: of the peer's, or of itself where there is none.
GOALS = {
    "opening call to handler": 1.1,
    "Exec to handler": 1.05,
    "start to name": 1.1,
    "our own instructions of a link's process": 1,
    "private memory": 350,
    "threads": 1,
    "wake-ups": 0,
}


def load(path):
    """The medians of each row that was measured."""
    with open(path, encoding="utf-8") as file:
        rows = json.load(file)
    return [{**row, "samples": {name: statistics.median(values)
                                for name, values in row["samples"].items()}} for row in rows]


def table(header, rows):
    """A Markdown table whose columns are aligned in plain text as well."""
    rows = [header, *rows]
    widths = [max(len(row[i]) for row in rows) for i in range(len(header))]
    lines = ["| " + " | ".join(cell.ljust(width) for cell, width in zip(row, widths)) + " |"
             for row in rows]
    lines.insert(1, "|" + "|".join("-" * (width + 2) for width in widths) + "|")
    return "\n".join(lines)


def goal_rows(results):
    for row in results:
        samples = dict(row["samples"])
        ours = samples.pop("ours")
        peer, its = next(iter(samples.items()), ("", 0))
        measured = ours / its if peer else ours
        goal = next(goal for name, goal in GOALS.items() if row["name"].startswith(name))
        yield [row["name"], f"{ours:.3g} {row['unit']}".strip(), f"{its:.3g} ms, {peer}" if peer else "",
               f"<= {goal} {'of its' if peer else row['unit']}".strip(), f"{measured:.3g}",
               "yes" if measured <= goal else "no"]


def click_rows(results):
    for row in results:
        samples = row["samples"]
        yield [row["name"], f"{samples['ours']:.3g}", f"{samples['whole']:.0f}",
               f"{100 * samples['ours'] / samples['whole']:.0f} %"]


def main():
    clicks, results = (load(f"{sys.argv[-1]}/{name}.json") for name in ("click", "bench"))
    print(table(["way", "ours, ms", "in all, ms", "share"], click_rows(clicks)), "",
          table(["figure", "ours", "the floor's", "goal", "measured", "reached"], goal_rows(results)),
          f"\n{os.cpu_count()} cores, load {os.getloadavg()[2]:.1f} in the last quarter of an hour.",
          sep="\n")
    if "--write-docs" in sys.argv:
        with open(PICTURE, "w", encoding="utf-8") as file:
            file.write(timeline(clicks))


main()
