"""Measures the program against the least that could be done instead, side by side: bench.py ROUNDS
SECONDS RESULTS. A program that opens nothing but what it must is the floor.
"""

import collections
import json
import os
import random
import re
import signal
import subprocess
import sys
import time

from stamps import PROGRAMS, StampedDesktop
from desktop import NAME, PROGRAM
from model import page_link

PEER = "com.vastel.Bare"
PAGE = "https://crm.example/48213"
LINK = page_link(PAGE)
# As many as a full desktop has.
OTHER_ENTRIES, TYPES_OF_EACH = 150, 8
# What the one before leaves running has ended by then.
REST = 0.004


def make_desktop():
    """A desktop on which the page's handler is chosen among as many others as a full one has."""
    desktop = StampedDesktop()
    applications = f"{desktop.folder}/data/applications"
    cache = ["[MIME Cache]", "x-scheme-handler/https=browser.desktop;"]
    for i in range(OTHER_ENTRIES):
        types = [f"application/x-{i}-{j}" for j in range(TYPES_OF_EACH)]
        cache += [f"{each}=other{i}.desktop;" for each in types]
        with open(f"{applications}/other{i}.desktop", "w", encoding="utf-8") as file:
            file.write("[Desktop Entry]\nType=Application\nName=Other\nExec=/usr/bin/true %U\n"
                       f"MimeType={';'.join(types)};\n")
    with open(f"{applications}/mimeinfo.cache", "w", encoding="utf-8") as file:
        file.write("\n".join(cache) + "\n")
    return desktop


def compare(topic, rounds, contestants):
    """Measures all in each round, so that whatever else the machine does falls on all, in an order
    that changes, so that none always comes after the same one. The first round does not count."""
    print("bench:", topic, file=sys.stderr, flush=True)
    samples, order = collections.defaultdict(list), list(contestants)
    for number in range(rounds + 1):
        random.shuffle(order)
        for name in order:
            time.sleep(REST)
            sample = contestants[name]()
            if number > 0:
                samples[name].append(sample)
    return {"name": topic, "unit": "ms", "samples": samples}


def opening_call(desktop, rounds):
    def opener(*command):
        process = desktop.spawn(*command, streams={"stdin": subprocess.PIPE})

        def measure():
            process.write(PAGE + "\n")
            began, handler = desktop.times(2)
            return handler - began

        return measure

    ours = opener(f"{PROGRAMS}/bench_open_pages", desktop.socket_path)
    floor = opener(f"{PROGRAMS}/bench_open_pages_spawn", desktop.socket_path, desktop.stamp[0])
    return compare("opening call to handler", rounds, {"ours": ours, "posix_spawn": floor})


def exec_to_handler(desktop, rounds):
    bare = [f"{PROGRAMS}/bench_bare_call", LINK, *desktop.stamp, PAGE]
    return compare("Exec to handler", rounds, {
        "ours": lambda: desktop.parts(2, PROGRAM, LINK)[0],
        "sd-bus in C and posix_spawn": lambda: desktop.parts(2, *bare)[0]})


def start_to_name(desktop, rounds):
    desktop.spawn(f"{PROGRAMS}/bench_watch", desktop.socket_path, NAME, PEER)
    desktop.times(1)

    def start(program):
        def measure():
            process = desktop.spawn(*desktop.stamp, program)
            began, owned = desktop.times(2)
            process.end(signal.SIGTERM)
            desktop.forget(process)
            desktop.times(1)
            return owned - began

        return measure

    return compare("start to name", rounds, {"ours": start(PROGRAM),
                                             "sd-bus in C": start(f"{PROGRAMS}/bench_bare_sd_bus")})


def instructions(desktop):
    """The share of our own code in the instructions of a process that hands a link over."""
    path = f"{desktop.folder}/callgrind"
    desktop.spawn("valgrind", "--tool=callgrind", f"--callgrind-out-file={path}", PROGRAM,
                  LINK).finish()
    desktop.times(1)
    costs, names, library = collections.Counter(), {}, ""
    with open(path, encoding="utf-8") as file:
        for line in file:
            if named := re.fullmatch(r"(c?)ob=(\(\d+\))(?: (.*))?\n", line):
                name = names.setdefault(named[2], named[3])
                library = library if named[1] else name
            elif line.startswith("calls="):
                next(file)  # What is spent in the function that is called.
            elif cost := re.fullmatch(r"[+\-*\d]\S* (\d+)\n", line):
                costs[library] += int(cost[1])
    return 100 * costs[PROGRAM] / costs.total()


def numbers(path, pattern):
    with open(path, encoding="ascii") as lines:
        return [int(number) for number in re.findall(pattern, lines.read(), re.MULTILINE)]


def switches(process):
    """How often the threads of a process were woken up or interrupted so far."""
    return sum(sum(numbers(f"/proc/{process.pid}/task/{task}/status", r"ctxt_switches:\s+(\d+)"))
               for task in os.listdir(f"/proc/{process.pid}/task"))


def waiting(listener, seconds):
    print("bench: waiting", file=sys.stderr, flush=True)
    time.sleep(1)
    (dirty,) = numbers(f"/proc/{listener.pid}/smaps_rollup", r"^Private_Dirty: +(\d+)")
    yield "private memory", "KiB", dirty
    yield "threads", "", len(os.listdir(f"/proc/{listener.pid}/task"))
    before = switches(listener)
    time.sleep(seconds)
    yield f"wake-ups in {seconds} idle seconds", "", switches(listener) - before


def main():
    rounds, seconds, results = int(sys.argv[1]), int(sys.argv[2]), sys.argv[3]
    with make_desktop() as desktop:
        rows = [opening_call(desktop, rounds), start_to_name(desktop, rounds)]
    with make_desktop() as desktop:
        listener = desktop.listen()
        costs = list(waiting(listener, seconds))
        desktop.spawn(f"{PROGRAMS}/bench_watch", desktop.socket_path, PEER)
        desktop.times(1)
        desktop.spawn(f"{PROGRAMS}/bench_bare_sd_bus")
        desktop.times(1)
        rows.append(exec_to_handler(desktop, rounds))
        costs.append(("our own instructions of a link's process", "%", instructions(desktop)))
    rows += [{"name": name, "unit": unit, "samples": {"ours": [value]}}
             for name, unit, value in costs]
    with open(results, "w", encoding="utf-8") as file:
        json.dump(rows, file)


main()
