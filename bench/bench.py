"""Measures the program against the least that could be done instead, side by side, and prints which
goals are reached: bench.py ROUNDS SECONDS. A program that does nothing but what it must is the floor.
"""

import collections
import os
import random
import re
import signal
import statistics
import subprocess
import sys
import time

from stamps import PROGRAMS, StampedDesktop
from desktop import NAME, PROGRAM
from model import page_link

ROUNDS, SECONDS = map(int, sys.argv[1:])
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
    cache = ["[MIME Cache]", "x-scheme-handler/https=browser.desktop;"]
    for i in range(OTHER_ENTRIES):
        types = [f"application/x-{i}-{j}" for j in range(TYPES_OF_EACH)]
        cache += [f"{each}=other{i}.desktop;" for each in types]
        desktop.write(f"data/applications/other{i}.desktop",
                      "[Desktop Entry]\nType=Application\nName=Other\nExec=/usr/bin/true %U\n"
                      f"MimeType={';'.join(types)};\n")
    desktop.write("data/applications/mimeinfo.cache", "\n".join(cache) + "\n")
    return desktop


def tell(figure, value, goal, more=""):
    print(f"{figure}: {value:.3g}{more}, at most {goal}: {'yes' if value <= goal else 'NO'}", flush=True)


def compare(figure, goal, **contestants):
    """Measures ours and the floor in each round, so that whatever else the machine does falls on both,
    in an order that changes. The first round does not count."""
    samples, order = collections.defaultdict(list), list(contestants)
    for number in range(ROUNDS + 1):
        random.shuffle(order)
        for name in order:
            time.sleep(REST)
            sample = contestants[name]()
            if number > 0:
                samples[name].append(sample)
    ours, floor = (statistics.median(samples[name]) for name in contestants)
    tell(figure, ours / floor, goal, f" of the floor ({ours:.3g} ms of {floor:.3g})")


def opening_call(desktop):
    def opener(*handler):
        process = desktop.spawn(f"{PROGRAMS}/bench_open_pages", desktop.socket_path, *handler,
                                streams={"stdin": subprocess.PIPE})

        def measure():
            process.write(PAGE + "\n")
            began, handler = desktop.times(2)
            return handler - began

        return measure

    compare("opening call to handler", 1.1, ours=opener(), floor=opener(desktop.stamp[0]))


def exec_to_handler(desktop):
    bare = [f"{PROGRAMS}/bench_bare_call", LINK, *desktop.stamp, PAGE]
    compare("Exec to handler", 1.05, ours=lambda: desktop.parts(2, PROGRAM, LINK)[0],
            floor=lambda: desktop.parts(2, *bare)[0])


def start_to_name(desktop):
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

    compare("start to name", 1.1, ours=start(PROGRAM), floor=start(f"{PROGRAMS}/bench_bare_sd_bus"))


def own_instructions(desktop):
    """The share of our own code, in percent, of a process that hands a link over."""
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


def switches(pid):
    """How often the threads of a process were woken up or interrupted so far."""
    return sum(sum(numbers(f"/proc/{pid}/task/{task}/status", r"ctxt_switches:\s+(\d+)"))
               for task in os.listdir(f"/proc/{pid}/task"))


def waiting(pid):
    time.sleep(1)
    (dirty,) = numbers(f"/proc/{pid}/smaps_rollup", r"^Private_Dirty: +(\d+)")
    tell("private memory", dirty, 350, " KiB")
    tell("threads", len(os.listdir(f"/proc/{pid}/task")), 1)
    before = switches(pid)
    time.sleep(SECONDS)
    tell(f"wake-ups in {SECONDS} idle seconds", switches(pid) - before, 0)


with make_desktop() as shared:
    opening_call(shared)
    start_to_name(shared)
with make_desktop() as shared:
    waiting(shared.listen().pid)
    shared.spawn(f"{PROGRAMS}/bench_watch", shared.socket_path, PEER)
    shared.times(1)
    shared.spawn(f"{PROGRAMS}/bench_bare_sd_bus")
    shared.times(1)
    exec_to_handler(shared)
    tell("our own instructions of a link's process", own_instructions(shared), 1, " %")
print(f"{os.cpu_count()} cores, load {os.getloadavg()[2]:.1f} in the last quarter of an hour")
