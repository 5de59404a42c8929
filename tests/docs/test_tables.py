"""The tables of the documents: of log lines, beside what the model says that the program does; of
switches, beside those that it prints; of promises, beside the tests that there are."""

import re

from links import all_links
from model import expect
from processes import ROOT, SWITCHES

# There is nothing to log about a link that does not arrive.
NOTHING = "nothing at all"


def cells(document, heading, column):
    """A column of the table with this heading, which is its first."""
    table = re.search(rf"^\| {heading} .*\n\|[-|]+\n((?:\|.*\n)+)", (ROOT / document).read_text(),
                      re.MULTILINE)
    return [row.split("|")[column].strip() for row in table[1].splitlines()]


def test_each_last_log_line_stands_in_the_table():
    last = {expect(link).messages[-1] for link in all_links()}
    expected = {re.sub(": .*", ":", message, flags=re.DOTALL) for message in last}
    found = {re.sub("^`([^`]*)`.*", r"\1", cell) for cell in cells("docs/links.md", "It ends with", 1)}
    assert found == expected | {NOTHING}


def test_readme_has_each_switch_and_so_has_the_manual():
    rows = " ".join(cells("README.md", "Switch", 1))
    assert set(re.findall("`(-[a-z]+)`", rows)) == {"-h", *SWITCHES}


def test_each_promise_names_tests_that_there_are():
    known = set()
    for path in [*ROOT.glob("tests/**/*"), *ROOT.glob("fuzz/*.cpp")]:
        if path.suffix in (".py", ".cpp"):
            text = path.read_text()
            known |= {path.name, *re.findall(r"^ *def (test_\w+)", text, re.MULTILINE)}
            known |= {".".join(names) for names in re.findall(r"^TEST\w*\((\w+), (\w+)\)", text,
                                                              re.MULTILINE)}
    (promised,) = re.findall("^## What is promised\n(.*?)^[^ \n-]", (ROOT / "SECURITY.md").read_text(),
                             re.MULTILINE | re.DOTALL)
    for promise in promised.split("\n- ")[1:]:
        names = set(re.findall("^  - `(.*)`$", promise, re.MULTILINE))
        assert names and names <= known, promise


def test_each_client_is_a_package_that_is_installed_for_its_test():
    setup = set(re.split(r"[\s:,\[\]]+", (ROOT / "dev/setup").read_text()))
    assert {cell.strip("`") for cell in cells("docs/clients.md", "Client", 2)} <= setup
    tests = {cell.strip("`") for cell in cells("docs/clients.md", "Client", 4)}
    assert tests <= {path.name for path in ROOT.glob("tests/*/test_*.py")}
