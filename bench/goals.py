"""What the figures are to reach."""

# The row, the peer (or none, for the figure itself), the most that ours may be of it.
GOALS = [
    *((f"click, {desktop}", "whole", 0.02) for desktop in ("GNOME", "KDE", "XFCE", "none")),
    ("opening call to handler", "posix_spawn", 1.15),
    ("opening call to handler", "GIO in-process", 1 / 2.5),
    ("opening call to handler, slow peers", "gio open", 1 / 10),
    ("opening call to handler, slow peers", "xdg-open, generic", 1 / 100),
    ("Open to handler", "posix_spawn", 1.6),
    ("Exec to handler", "sd-bus in C and posix_spawn", 1.15),
    ("start to name", "sd-bus in C", 1.1),
    ("start to name", "GApplication in C", 0.6),
    ("start to name, slow peers", "PyGObject", 1 / 15),
    ("PSS alone", "GApplication in C", 0.45),
    ("private dirty alone", None, 0.35),
    ("threads", None, 1),
    ("wake-ups", None, 0),
    ("system calls", None, 0),
    ("growth after", None, 64),
]

# Those of which there is to be more, not less: the least that ours may be of the peer's.
GOALS_ABOVE = [
    ("links that open nothing", "sd-bus in C, empty method", 0.9),
]


def find(results, name):
    return next(each for each in results if each["name"].startswith(name))


def row(result, peer, limit, sign, reached):
    if peer is None:
        measured, limit_text = f"{result['ours']:.3g}", f"{limit:g}"
    else:
        measured, limit_text = f"{result['ratio'][peer]:.3f}", f"{limit:.3g} of {peer}"
    unit = f" {result['unit']}" if peer is None and result["unit"] else ""
    return [result["name"], f"{sign} {limit_text}{unit}", measured, "yes" if reached else "no"]


def value(result, peer):
    return result["ours"] if peer is None else result["ratio"][peer]


def click_rows(results):
    """A click on KDE beside one on GNOME."""
    kde, gnome = (find(results, "click, " + name)["peers"]["whole"] for name in ("KDE", "GNOME"))
    return [["click to handler on KDE", "<= 1.2 of GNOME", f"{kde / gnome:.3f}",
             "yes" if kde / gnome <= 1.2 else "no"]]


def core_rows(results):
    """The program's own part of a link's way, beside the start of the handler that follows it."""
    core = {size: find(results, "whole core, " + size)["ours"] for size in ("2 KiB", "10 MiB")}
    spawn = find(results, "opening call to handler")["peers"]["posix_spawn"] * 1000
    part = core["2 KiB"] / spawn
    growth = core["10 MiB"] / (5 * 1024) / core["2 KiB"]
    return [["whole core, 2 KiB", "<= 0.02 of posix_spawn", f"{part:.3f}",
             "yes" if part <= 0.02 else "no"],
            ["whole core, time a byte, 10 MiB to 2 KiB", "<= 2", f"{growth:.2f}",
             "yes" if growth <= 2 else "no"]]


def goal_rows(results):
    rows = []
    for name, peer, limit in GOALS:
        result = find(results, name)
        rows.append(row(result, peer, limit, "<=", value(result, peer) <= limit))
    for name, peer, limit in GOALS_ABOVE:
        result = find(results, name)
        rows.append(row(result, peer, limit, ">=", value(result, peer) >= limit))
    return click_rows(results) + rows + core_rows(results)
