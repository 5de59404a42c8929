"""The tables of the documents, beside what the model says that the program does."""

import os
import re
import unittest

from links import all_links
from model import expect

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
# There is nothing to log about a link that does not arrive.
NOTHING = "nothing at all"


def first_cells(document, heading):
    """The first column of the table with this heading, without the marks of code."""
    with open(f"{ROOT}/docs/{document}", encoding="utf-8") as file:
        table = re.search(rf"^\| {heading} .*\n\|[-|]+\n((?:\|.*\n)+)", file.read(), re.MULTILINE)
    return [row.split("|")[1].strip() for row in table[1].splitlines()]


class Tables(unittest.TestCase):
    def test_each_last_log_line_stands_in_the_table(self):
        last = {expect(link).messages[-1] for link in all_links()}
        expected = {re.sub(": .*", ":", message, flags=re.DOTALL) for message in last}
        cells = [re.sub("^`([^`]*)`.*", r"\1", cell) for cell in first_cells("links.md", "It ends with")]
        self.assertEqual(set(cells), expected | {NOTHING})
