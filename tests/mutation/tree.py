"""A copy of the tree, in which a change is built and tested. Only what a change touches is built, and
only the tests that can notice it are run, until one fails."""

import contextlib
import functools
import os
import pathlib
import re
import resource
import shutil
import signal
import subprocess

FOLDERS = ["api", "app", "json", "log", "platform/linux", "text", "uri"]

# The unit tests of a folder, nearest first.
UNITS = {
    "json/mapping": ["json_mapping"],
    "json": ["json", "api", "json_mapping"],
    "text": ["text", "uri", "app", "json", "linux"],
    "api": ["api", "uri"],
    "log": ["log"],
    "uri": ["uri"],
    "app": ["app", "log"],
    "platform/linux": ["linux"],
}
# The tests of the program that can notice a source of the Linux host, best first.
PROGRAM = {
    "ActivationToken": ["road/test_handlers.py"],
    "ApplicationMain": ["road/test_listeners.py", "road/test_terminal.py", "road/test_road.py",
                        "road/test_handlers.py", "road/test_broken_machine.py",
                        "road/test_faults.py"],
    "DefaultHandler": ["linux/test_handler.py", "road/test_handlers.py"],
    "Environment": ["linux/test_handler.py", "road/test_handlers.py"],
    "HandOver": ["road/test_road.py", "road/test_listeners.py", "road/test_broken_machine.py",
                 "road/test_faults.py", "road/test_handlers.py"],
    "Host": ["road/test_terminal.py", "road/test_handlers.py", "road/test_broken_machine.py"],
    "KeyFile": ["linux/test_handler.py"],
    "LaunchArguments": ["road/test_road.py", "road/test_terminal.py", "road/test_attacks.py"],
    "MimeApps": ["linux/test_handler.py", "road/test_handlers.py"],
    "OpenUrl": ["road/test_handlers.py", "linux/test_handler.py"],
    "PrintLine": ["road/test_terminal.py", "road/test_faults.py"],
    "Scope": ["road/test_handlers.py"],
    "SessionBus": ["road/test_road.py", "road/test_listeners.py", "road/test_handlers.py",
                   "road/test_attacks.py", "road/test_broken_machine.py", "road/test_faults.py"],
    "Spawn": ["road/test_handlers.py", "linux/test_handler.py"],
    "main": ["road/test_terminal.py"],
}
# Compiled once for all sources, which takes most of the time that they take.
HEADERS = """#include <boost/json.hpp>
#include <chrono>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>
"""
# So long may the tests of a folder, and those of one file of the program, take that hang by the change.
UNIT_SECONDS = 60
PROGRAM_SECONDS = 300


def limits():
    os.setsid()
    resource.setrlimit(resource.RLIMIT_CPU, (PROGRAM_SECONDS, PROGRAM_SECONDS))
    resource.setrlimit(resource.RLIMIT_DATA, (4 << 30, 4 << 30))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


class Tree:
    def __init__(self, root, folder):
        self._root, self.folder = root, folder
        self._build = folder / "build"
        self._stage = folder / "stage"
        # What stood in a file before the change that stands there now.
        self._changed = {}
        # What is built but for the file that changes.
        self._built = set()
        # The tests that were seen to pass before any change.
        self._known = set()
        folder.mkdir(parents=True, exist_ok=True)
        self._copy()
        self._configure()

    def _copy(self):
        """Brings the copy up to date; what is the same keeps its time."""
        names = subprocess.check_output(["git", "ls-files", "-z", "-co", "--exclude-standard"],
                                        cwd=self._root, text=True).split("\0")
        for name in filter(None, names):
            source, target = self._root / name, self.folder / name
            if source.is_file() and not (target.is_file()
                                         and target.read_bytes() == source.read_bytes()):
                target.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(source, target)

    def _configure(self):
        headers = self.folder / "headers.h"
        is_fresh = not headers.exists()
        if is_fresh:
            headers.write_text(HEADERS, encoding="ascii")
        command = ["cmake", "-S", self.folder, "-B", self._build, "-G", "Ninja",
                   "-DCMAKE_BUILD_TYPE=", f"-DCMAKE_CXX_FLAGS=-O0 -w -include {headers}",
                   "-DCMAKE_CXX_COMPILER_LAUNCHER=", "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON"]
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
        if not is_fresh:
            return
        # The compiler takes the one of its folder that was made with the same flags.
        compiled = headers.with_suffix(".h.gch")
        compiled.mkdir()
        commands = (self._build / "compile_commands.json").read_text(encoding="utf-8")
        for source in ("JsonText.cpp", "JsonTextTest.cpp", "Utf8.cpp"):
            compiler = re.search(rf'"command": "([^"]*?) -o [^"]*/{source}.o', commands)[1]
            subprocess.run(f"{compiler.replace(f'-include {headers}', '')} -x c++-header "
                           f"-o {compiled}/{source} {headers}", shell=True, check=True)

    # One change.

    def try_change(self, file, text):
        """What became of it, and which test noticed it."""
        if file not in self._changed:
            self.restore()
            self._changed[file] = (self.folder / file).read_bytes()
        (self.folder / file).write_text(text, encoding="utf-8")
        for target, name, command, environment in self._tests_of(file):
            failure = self._make(target, file)
            if failure:
                # The tests of a program are listed when it is linked.
                return ("noticed", name) if "GoogleTestAddTests" in failure else ("invalid", "")
            if not self._passes(command, environment):
                self._expect_to_pass(target, name, command, environment)
                return "noticed", name
        return "survived", ""

    def restore(self):
        for file, source in self._changed.items():
            (self.folder / file).write_bytes(source)
        self._changed.clear()
        self._built.clear()

    def _expect_to_pass(self, target, name, command, environment):
        """A test that fails without a change as well has noticed nothing."""
        if name not in self._known:
            self.restore()
            failure = self._make(target, "")
            if failure or not self._passes(command, environment):
                raise SystemExit(f"dev/mutate: fails before any change: {name}\n{failure}")
            self._known.add(name)

    def _tests_of(self, file):
        """(what is built, name, command, environment) of each test program."""
        folder = max((each for each in UNITS if file.startswith(each + "/")), key=len)
        for name in UNITS[folder]:
            command = [self._build / f"tests/test_{name}", "--gtest_fail_fast", "--gtest_brief=1"]
            if name == "linux":
                command[0] = self._build / "tests/linux/test_linux"
            for zone in ("", "Asia/Kathmandu")[:2 if "Date" in file or "Zone" in file else 1]:
                yield f"test_{name}", name + zone, command, {"TZ": zone} if zone else {}
        if folder != "platform/linux":
            return
        environment = {
            "CONNECT_STAGE": str(self._stage), "CONNECT_LIMIT": "30",
            "CONNECT_FIND_DEFAULT_HANDLER": str(self._build / "tests/linux/FindDefaultHandler"),
            "CONNECT_RECORD_LAUNCH": str(self._build / "tests/linux/RecordLaunch"),
            "CONNECT_FAULTS": str(self._build / "tests/linux/libconnect_faults.so")}
        for each in PROGRAM[pathlib.Path(file).stem]:
            command = ["/usr/bin/python3", "-B", "-m", "pytest", "--exitfirst", f"tests/{each}"]
            yield "stage", each, command, environment

    def _make(self, target, file):
        """Builds a target. The result is what was said when it failed."""
        names = [target] if target != "stage" else ["vastel-connect", "FindDefaultHandler",
                                                    "RecordLaunch", "connect_faults"]
        commands = [["ninja", "-C", self._build, "-j1", *names]]
        if target in self._built and file.endswith(".cpp"):
            commands = [["/bin/sh", "-c", each] for each in self._commands(tuple(names), file)]
        for command in commands:
            built = subprocess.run(command, cwd=self._build, text=True, check=False,
                                   stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
            if built.returncode != 0:
                return built.stdout[-3000:] or "no word"
        self._built.add(target)
        if target == "stage":
            subprocess.run(["cmake", "--install", self._build, "--prefix", self._stage], check=True,
                           stdout=subprocess.DEVNULL)
        return ""

    @functools.lru_cache(maxsize=None)
    def _commands(self, names, file):
        """What builds the targets after a change of one source: Ninja itself would look at all
        others, and list the tests of the program."""
        source = str(self.folder / file)
        lines = subprocess.check_output(["ninja", "-C", self._build, "-t", "commands", *names],
                                        text=True).splitlines()
        compiling = next(line for line in lines if line.endswith(f" -c {source}"))
        made = compiling.split(" -o ")[1].split()[0]
        library = next((line.split(" qc ")[1].split()[0] for line in lines
                        if " qc " in line and f" {made} " in line + " "), made)
        return [line.split(" && cd ")[0] for line in lines
                if line == compiling or f" qc {library} " in line
                or (f" {library} " in line + " " and " -o " in line and " -c " not in line)]

    def _passes(self, command, environment):
        process = subprocess.Popen(command, cwd=self.folder, env={**os.environ, **environment},
                                   preexec_fn=limits, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL)
        try:
            return process.wait(PROGRAM_SECONDS if command[-1].endswith(".py")
                                else UNIT_SECONDS) == 0
        except subprocess.TimeoutExpired:
            return False
        finally:
            # With all that it may have left running.
            with contextlib.suppress(ProcessLookupError):
                os.killpg(process.pid, signal.SIGKILL)
            process.wait()
