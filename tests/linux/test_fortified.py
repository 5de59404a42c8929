"""What only a compiler that optimizes does against memory faults, looked for in the program."""

import unittest

from test_hardening import calls, own_functions


class FortifiedTest(unittest.TestCase):
    def test_sizes_of_arrays_are_checked(self):
        # The one function that gives an array to a function of C's with a checked form.
        found = [code for name, code in own_functions().items() if "9scopeNameE" in name]
        self.assertEqual([calls(code, "__snprintf_chk") for code in found], [True])
