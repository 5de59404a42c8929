"""Prints which lines of the product the tests have run, after a build with --coverage.

Usage: report.py BUILD_FOLDER. The exit status is 1 when a line was not run and unreached.tsv does
not name it with a reason, or when it names a line that was run or is not there. A line that is a brace
alone is not counted: no statement of ours stands there, but it has code for the end of objects after
an exception.
"""

import collections
import json
import os
import pathlib
import subprocess
import sys

FOLDERS = ("app/", "log/", "uri/", "api/", "json/", "text/", "platform/linux/")
HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent


def run_counts(build):
    """How often each line was run that the compiler made code of: {file: {line: count}}."""
    notes = sorted(map(str, build.rglob("*.gcno")))
    output = subprocess.run(["gcov", "--json-format", "--stdout", *notes], cwd=build, check=True,
                            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
    counts = collections.defaultdict(collections.Counter)
    for unit in map(json.loads, output.splitlines()):
        for source in unit["files"]:
            path = os.path.relpath(os.path.join(unit["current_working_directory"], source["file"]),
                                   ROOT)
            if path.startswith(FOLDERS):
                # A template's line is there for each type that it was made for.
                for line in source["lines"]:
                    counts[path][line["line_number"]] += line["count"]
    return counts


def named_lines():
    """The (file, text) of the lines that need not be run."""
    rows = (HERE / "unreached.tsv").read_text(encoding="utf-8").splitlines()
    named = collections.Counter()
    for row in rows:
        file, text, reason = row.split("\t")
        assert reason
        named[file, text] += 1
    return named


def main():
    counts = run_counts(pathlib.Path(sys.argv[1]).resolve())
    named = named_lines()
    total = reached = unnamed = 0
    print(f"{'file':<32} {'lines':>5} {'run':>5}")
    for path, runs in sorted(counts.items()):
        texts = (ROOT / path).read_text(encoding="utf-8").splitlines()
        lines = {number: texts[number - 1].strip() for number in sorted(runs)}
        lines = {number: text for number, text in lines.items() if text != "}"}
        missed = {number: text for number, text in lines.items() if not runs[number]}
        total += len(lines)
        reached += len(lines) - len(missed)
        print(f"{path:<32} {len(lines):>5} {len(lines) - len(missed):>5}")
        for number, text in missed.items():
            if named[path, text] > 0:
                named[path, text] -= 1
                print(f"    named  {number}: {text}")
            else:
                unnamed += 1
                print(f"    MISSED {number}: {text}")
    print(f"{'all':<32} {total:>5} {reached:>5}")
    stale = list(named.elements())
    for path, text in stale:
        print(f"named, but run or not there: {path}: {text}")
    sys.exit(1 if unnamed or stale or not total else 0)


if __name__ == "__main__":
    main()
