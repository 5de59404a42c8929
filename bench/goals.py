"""What the figures are to reach."""

# The row, the peer (or none, for the figure itself), the most that ours may be of it.
GOALS = [
    ("hand-over call to handler", "posix_spawn", 1.15),
    ("hand-over call to handler", "GIO in-process", 1 / 2.5),
    ("hand-over call to handler, slow peers", "gio open", 1 / 10),
    ("hand-over call to handler, slow peers", "xdg-open, generic", 1 / 100),
    ("Open to handler", "posix_spawn", 1.6),
    ("start to name", "sd-bus in C", 1.1),
    ("start to name", "GApplication in C", 0.6),
    ("start to name, slow peers", "PyGObject", 1 / 15),
    ("PSS alone", "GApplication in C", 0.45),
    ("private dirty alone", None, 0.35),
    ("threads", None, 1),
    ("wake-ups", None, 0),
    ("system calls", None, 0),
    ("growth after", None, 64),
    ("whole road, 2 KiB", "Boost.JSON's parse", 1.5),
]

# Those of which there is to be more, not less: the least that ours may be of the peer's.
GOALS_ABOVE = [
    ("links that open nothing", "sd-bus in C, empty method", 0.9),
]


def find(results, name, topic=None):
    return next(each for each in results if each["name"].startswith(name)
                and topic in (None, each["topic"]))


def row(result, peer, limit, sign, reached):
    if peer is None:
        measured, limit_text = f"{result['ours']:.3g}", f"{limit:g}"
    else:
        measured, limit_text = f"{result['ratio'][peer]:.3f}", f"{limit:.3g} of {peer}"
    unit = f" {result['unit']}" if peer is None and result["unit"] else ""
    return [result["name"], f"{sign} {limit_text}{unit}", measured, "yes" if reached else "no"]


def value(result, peer):
    return result["ours"] if peer is None else result["ratio"][peer]


def core_rows(results):
    """Rates and growth, from the first size of a whole KiB to the largest."""
    rows = []
    base64 = [each for each in results if each["topic"] == "core"
              and each["name"].startswith("base64") and each["size"] >= 1024]
    largest = max(base64, key=lambda each: each["size"])
    ratio = largest["ratio"]["memcpy"]
    rate = largest["size"] * 4 / 3 / largest["ours"]
    reached = "yes" if rate >= 1 and ratio <= 10 else "no"
    rows.append([largest["name"], "<= 10 of memcpy, >= 1 GB/s", f"{ratio:.1f}, {rate:.2f} GB/s",
                 reached])
    for step in ("base64", "UTF-8"):
        costs = [each["ours"] / each["size"] for each in results if each["topic"] == "core"
                 and each["name"].startswith(step) and each["size"] >= 1024]
        growth = costs[-1] / costs[0]
        rows.append([f"{step}, time a byte, largest to 1 KiB", "<= 1.5", f"{growth:.2f}",
                     "yes" if growth <= 1.5 else "no"])
    return rows


def goal_rows(results):
    rows = []
    for name, peer, limit in GOALS:
        result = find(results, name)
        rows.append(row(result, peer, limit, "<=", value(result, peer) <= limit))
    for name, peer, limit in GOALS_ABOVE:
        result = find(results, name)
        rows.append(row(result, peer, limit, ">=", value(result, peer) >= limit))
    return rows + core_rows(results)
