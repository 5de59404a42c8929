"""Measures what the programs cost while they wait: waiting.py RUNS SECONDS RESULTS PROGRAMS CONNECT.

Each runs on a bus of its own. This script loads none of the libraries that they do, since a page
that two processes map counts half for each.
"""
import contextlib
import json
import os
import re
import subprocess
import sys
import tempfile
import time

PEERS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "peers")


def contestants(programs, connect):
    return {
        "ours": [connect],
        "sd-bus in C": [f"{programs}/bench_bare_sd_bus"],
        "GApplication in C": [f"{programs}/bench_bare_gapplication"],
        "PyGObject": ["/usr/bin/python3", f"{PEERS}/bare_gapplication.py"],
    }


class Bus:
    """A session bus, and the programs that were started on it."""

    def __init__(self, folder):
        address = f"unix:path={folder}/bus"
        self.environment = dict(os.environ, DBUS_SESSION_BUS_ADDRESS=address, HOME=folder,
                                XDG_RUNTIME_DIR=folder, GIO_USE_VFS="local", GIO_MODULE_DIR=folder)
        self.processes = []
        self.start(["dbus-daemon", "--session", "--nofork", "--nosyslog", f"--address={address}"])
        while not os.path.exists(f"{folder}/bus"):
            time.sleep(0.01)

    def start(self, arguments):
        process = subprocess.Popen(arguments, env=self.environment, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.processes.append(process)
        return process.pid

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for process in reversed(self.processes):
            process.terminate()
            process.wait()


def numbers(path, pattern):
    with open(path, encoding="ascii") as lines:
        return [int(number) for number in re.findall(pattern, lines.read(), re.MULTILINE)]


def memory(process):
    """PSS and private dirty memory in MB."""
    rollup = f"/proc/{process}/smaps_rollup"
    return [numbers(rollup, rf"^{name}: +(\d+)")[0] / 1024 for name in ("Pss", "Private_Dirty")]


def switches(process):
    """How often the threads of a process were woken up or interrupted so far."""
    return sum(sum(numbers(f"/proc/{process}/task/{task}/status", r"ctxt_switches:\s+(\d+)"))
               for task in os.listdir(f"/proc/{process}/task"))


def system_calls(process, seconds):
    """Those that a process begins or ends in so many seconds."""
    with tempfile.NamedTemporaryFile("r") as trace:
        tracer = subprocess.Popen(["strace", "-f", "-qq", "-p", str(process), "-o", trace.name],
                                  stderr=subprocess.DEVNULL)
        time.sleep(seconds)
        tracer.terminate()
        tracer.wait()
        # The call that each thread sleeps in is listed without a result.
        return sum(re.search(r"= -?\d|= 0x", line) is not None for line in trace)


class Rows:
    def __init__(self):
        self.rows = {}

    def add(self, name, unit, contestant, value):
        row = self.rows.setdefault(name, {"topic": "waiting", "name": name, "unit": unit,
                                          "samples": {}})
        row["samples"].setdefault(contestant, []).append(value)


def measure_memory(rows, name, arguments):
    with tempfile.TemporaryDirectory() as folder, Bus(folder) as bus:
        process = bus.start(arguments)
        time.sleep(1)
        pss, dirty = memory(process)
        rows.add("PSS alone", "MB", name, pss)
        rows.add("private dirty alone", "MB", name, dirty)
        rows.add("threads", "", name, len(os.listdir(f"/proc/{process}/task")))


def measure_idling(rows, all_arguments, seconds):
    with contextlib.ExitStack() as stack:
        processes = {}
        for name, arguments in all_arguments.items():
            bus = stack.enter_context(Bus(stack.enter_context(tempfile.TemporaryDirectory())))
            processes[name] = bus.start(arguments)
        time.sleep(2)
        before = {name: switches(process) for name, process in processes.items()}
        time.sleep(seconds)
        for name, process in processes.items():
            woken = switches(process) - before[name]
            rows.add(f"wake-ups in {seconds} idle seconds", "", name, woken)
        calls = system_calls(processes["ours"], seconds)
        rows.add(f"system calls in {seconds} idle seconds", "", "ours", calls)


def main():
    runs, seconds, results, programs, connect = sys.argv[1:]
    rows = Rows()
    everyone = contestants(programs, connect)
    for _ in range(int(runs)):
        for name, arguments in everyone.items():
            measure_memory(rows, name, arguments)
    measure_idling(rows, everyone, int(seconds))
    with open(results, "w", encoding="utf-8") as file:
        json.dump(list(rows.rows.values()), file)


main()
