"""docs/clients.md has a row for each test of clients, and a test for each row."""

import pathlib
import subprocess
import unittest

import table

HERE = pathlib.Path(__file__).resolve().parent


class TableTest(unittest.TestCase):
    def test_each_row_has_a_test_and_each_test_a_row(self):
        tests = {path.name for path in HERE.glob("test_*.py")}
        # These compare what the program and a client find in the same folders, and read this table.
        others = {"test_kde_layouts.py", "test_table.py"}
        self.assertEqual({test for _, test in table.rows()}, tests - others)
        lines = table.PAGE.read_text().splitlines()
        # But for the heads of the table.
        self.assertEqual(len(table.rows()), sum(line.startswith("| ") for line in lines) - 1)

    def test_the_clients_are_installed_for_the_tests(self):
        listed = subprocess.run([HERE.parents[1] / "dev/setup", "--list"], check=True,
                                stdout=subprocess.PIPE, encoding="utf-8").stdout
        words = listed.replace("[", " ").replace("]", " ").replace(":", " ").split()
        self.assertLessEqual({package for package, _ in table.rows()}, set(words))
