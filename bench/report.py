"""Makes the figures of all that was measured: report.py [--write-docs] FOLDER.

Reads what the programs of dev/bench left in FOLDER, prints a table, and writes results.json there.
"""
import json
import os
import platform
import re
import statistics
import sys
import textwrap

from goals import goal_rows
from timeline import timeline

DOCS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../docs/performance.md")
TIMELINE = os.path.join(os.path.dirname(DOCS), "pictures/click.svg")


def load(path):
    with open(path, encoding="utf-8") as file:
        return json.load(file)


def figures(row):
    samples = row["samples"]
    medians = {name: statistics.median(values) for name, values in samples.items()}
    ours = medians.pop("ours")
    own = sorted(samples["ours"])
    return {"topic": row["topic"], "name": row["name"], "unit": row["unit"], "ours": ours,
            "peers": medians, "ratio": {name: ours / value for name, value in medians.items() if value},
            "runs": len(own),
            "spread": [own[(len(own) - 1) // 10], own[(len(own) - 1) * 9 // 10]]}


def number(value):
    if value == 0 or value == int(value):
        return f"{value:,.0f}"
    return f"{value:,.0f}" if value >= 1000 else f"{value:.3g}"


def table(header, rows):
    """Lines of a Markdown table whose columns are aligned in plain text as well."""
    rows = [header] + rows
    widths = [max(len(row[i]) for row in rows) for i in range(len(header))]
    lines = ["| " + " | ".join(cell.ljust(width) for cell, width in zip(row, widths)) + " |"
             for row in rows]
    lines.insert(1, "|" + "|".join("-" * (width + 2) for width in widths) + "|")
    return "\n".join(lines)


def all_figures_table(results):
    rows = []
    for result in results:
        spread = " to ".join(number(value) for value in result["spread"])
        first = [f"{result['topic']}: {result['name']}", result["unit"], number(result["ours"]),
                 spread if result["runs"] > 1 else ""]
        for peer, value in result["peers"].items() or {"": None}.items():
            compared = [peer, number(value), f"{result['ratio'].get(peer, 0):.2f}"] if peer else [""] * 3
            rows.append(first + compared)
            first = ["", "", "", ""]
    return table(["measured", "unit", "ours", "10 % to 90 %", "peer", "its", "ours / its"], rows)


def machine():
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        model = re.search(r"^model name\s*: (.*)$", file.read(), re.MULTILINE)
    system = platform.freedesktop_os_release()["PRETTY_NAME"]
    text = (f"{system}, Linux {platform.release()}, {os.cpu_count()} cores"
            f" ({model.group(1) if model else platform.machine()}),"
            f" load {os.getloadavg()[2]:.1f} in the last quarter of an hour.")
    return textwrap.fill(text, 100)


def write_docs(parts):
    with open(DOCS, encoding="utf-8") as file:
        text = file.read()
    for name, part in parts.items():
        begin, end = f"<!-- {name} -->\n", f"<!-- end of {name} -->"
        head, rest = text.split(begin)
        text = head + begin + part + "\n" + end + rest.split(end)[1]
    with open(DOCS, "w", encoding="utf-8") as file:
        file.write(text)


def main():
    folder = sys.argv[-1]
    samples = sum((load(f"{folder}/{name}.json") for name in ("click", "road", "load", "waiting")), [])
    results = [figures(row) for row in samples]
    order = ["click", "road", "start", "waiting", "load", "core"]
    results.sort(key=lambda each: order.index(each["topic"]))
    with open(f"{folder}/results.json", "w", encoding="utf-8") as file:
        json.dump(results, file, indent=1)
    goals = table(["figure", "goal", "measured", "reached"], goal_rows(results))
    everything = all_figures_table(results)
    print(everything, "\n", goals, "\n", machine(), sep="\n")
    if "--write-docs" in sys.argv:
        write_docs({"goals": goals, "machine": machine()})
        with open(TIMELINE, "w", encoding="utf-8") as file:
            file.write(timeline(results))


main()
