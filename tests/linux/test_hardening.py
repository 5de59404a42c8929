"""What the compiler and the linker shall do against memory faults, looked for in the program."""

import os
import re
import subprocess
import unittest

PROGRAM = os.environ["CONNECT_STAGE"] + "/bin/vastel-connect"


def output_of(*command):
    environment = {**os.environ, "LC_ALL": "C.UTF-8"}
    return subprocess.run([*command, PROGRAM], env=environment, check=True, text=True,
                          stdout=subprocess.PIPE).stdout


def own_functions():
    """The program's own functions by their mangled names, each a list of its instructions."""
    functions = {}
    for line in output_of("objdump", "--disassemble", "--no-show-raw-insn").splitlines():
        if begin := re.fullmatch(r"[0-9a-f]+ <(.*)>:", line):
            name = begin[1]
        elif re.match(r" +[0-9a-f]+:\t", line) and re.fullmatch(r"_ZNK?14Vastel_Connect\w+", name):
            functions.setdefault(name, []).append(line.split("\t")[1])
    return functions


def calls(instructions, function):
    return any(re.search(rf"\b{function}@plt>", instruction) for instruction in instructions)


class HardenedHeaders(unittest.TestCase):
    """What can be seen in a program without symbols, too."""

    def setUp(self):
        self.segments = output_of("readelf", "--wide", "--segments")
        self.dynamic = output_of("readelf", "--wide", "--dynamic")
        self.assertIn("(NEEDED)", self.dynamic)

    def test_loads_at_any_address(self):
        self.assertRegex(self.segments, "Elf file type is DYN")
        self.assertRegex(self.dynamic, r"\(FLAGS_1\).*\bPIE\b")

    def test_seals_its_addresses_of_functions(self):
        self.assertRegex(self.segments, "(?m)^ +GNU_RELRO ")
        self.assertRegex(self.dynamic, r"\(FLAGS\).*\bBIND_NOW\b")

    def test_executes_no_data(self):
        self.assertRegex(self.segments, r"(?m)^ +GNU_STACK .* RW +0x")
        self.assertNotRegex(self.segments, r"(?m)^ +[A-Z_]+ .* RWE +0x")

    def test_rewrites_no_code(self):
        self.assertNotIn("TEXTREL", self.dynamic)

    def test_names_no_folder_of_libraries(self):
        self.assertNotRegex(self.dynamic, r"\((RPATH|RUNPATH)\)")


class HardenedFunctions(unittest.TestCase):
    """What stands in the functions themselves. The system's own parts say nothing of ours."""

    def setUp(self):
        self.functions = own_functions()

    def test_arrays_are_guarded(self):
        # An optimizing compiler puts the second's array into its callers.
        for names in ("decodeBase64", "localTimeText|jsonLogDate"):
            with self.subTest(names):
                found = [code for mangled, code in self.functions.items()
                         if re.search(rf"\d({names})(B5cxx11)?E", mangled)]
                self.assertTrue(any(calls(code, "__stack_chk_fail") for code in found))

    @unittest.skipUnless(os.uname().machine == "x86_64", "other processors have other marks")
    def test_functions_are_marked_as_targets_of_jumps(self):
        # The mark of the whole program is missing where the C library's start files have none.
        visible = re.findall(r"^\S+ [TW] (\S+)$", output_of("nm", "--defined-only"), re.MULTILINE)
        visible = [name for name in visible if name in self.functions]
        self.assertGreater(len(visible), 20)
        self.assertEqual([name for name in visible if self.functions[name][0] != "endbr64"], [])


if __name__ == "__main__":
    unittest.main()
