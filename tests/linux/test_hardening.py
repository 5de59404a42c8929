"""What the compiler and the linker shall do against memory faults, looked for in the program."""

import os
import re
import subprocess

import pytest

PROGRAM = os.environ["CONNECT_STAGE"] + "/bin/vastel-connect"
OPTIMIZED = os.environ.get("CONNECT_BUILD_TYPE") == "Release"


def output_of(*command):
    return subprocess.run([*command, PROGRAM], env={**os.environ, "LC_ALL": "C.UTF-8"}, check=True,
                          text=True, stdout=subprocess.PIPE).stdout


# What can be seen in a program without symbols, too: what readelf shows has the one, or has it not.
@pytest.mark.parametrize("part, pattern, has", [
    ("--segments", "Elf file type is DYN", True),
    ("--dynamic", r"\(FLAGS_1\).*\bPIE\b", True),  # Loads at any address.
    ("--segments", "(?m)^ +GNU_RELRO ", True),
    ("--dynamic", r"\(FLAGS\).*\bBIND_NOW\b", True),  # Seals its addresses of functions.
    ("--segments", r"(?m)^ +GNU_STACK .* RW +0x", True),
    ("--segments", r"(?m)^ +[A-Z_]+ .* RWE +0x", False),  # Executes no data.
    ("--dynamic", "TEXTREL", False),  # Rewrites no code.
    ("--dynamic", r"\((RPATH|RUNPATH)\)", False),  # Names no folder of libraries.
])
def test_the_program_is_hardened(part, pattern, has):
    text = output_of("readelf", "--wide", part)
    assert re.search(r"\(NEEDED\)|Program Headers:", text)
    assert bool(re.search(pattern, text)) == has, text


# What stands in the program's own functions: the system's parts say nothing of ours.


@pytest.fixture(scope="module")
def functions():
    """The program's own functions by their mangled names, each a list of its instructions."""
    found = {}
    for line in output_of("objdump", "--disassemble", "--no-show-raw-insn").splitlines():
        if begin := re.fullmatch(r"[0-9a-f]+ <(.*)>:", line):
            name = begin[1]
        elif re.match(r" +[0-9a-f]+:\t", line) and re.fullmatch(r"_ZNK?14Vastel_Connect\w+", name):
            found.setdefault(name, []).append(line.split("\t")[1])
    return found


# The two functions with arrays, of which an optimizing compiler puts the second's into its callers;
# and the one that gives an array to a function of C's with a checked form.
@pytest.mark.parametrize("names, check", [
    ("decodeBase64", "__stack_chk_fail"), ("localTimeText|jsonLogDate", "__stack_chk_fail"),
    *([("complain", "__snprintf_chk")] if OPTIMIZED else [])])
def test_arrays_are_guarded(functions, names, check):
    found = [code for mangled, code in functions.items()
             if re.search(rf"\d({names})(B5cxx11)?E", mangled)]
    assert any(f"{check}@plt>" in instruction for code in found for instruction in code)


if os.uname().machine == "x86_64":  # Other processors have other marks.
    def test_functions_are_marked_as_targets_of_jumps(functions):
        # The mark of the whole program is missing where the C library's start files have none.
        visible = re.findall(r"^\S+ [TW] (\S+)$", output_of("nm", "--defined-only"), re.MULTILINE)
        visible = [name for name in visible if name in functions]
        assert len(visible) > 20
        assert [name for name in visible if functions[name][0] != "endbr64"] == []
