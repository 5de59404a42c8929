"""Links so large that memory ends, or that much of it is wanted once; and what a crash leaves."""

import contextlib
import resource

import pytest
from gi.repository import GLib

from desktop import PAGE, PROGRAM
from model import page_link
from processes import status_of
from road import LINK, bulky_link

MEGABYTE = 1 << 20


def size(listener, kind):
    """A figure of the program's memory, in megabytes."""
    return int(status_of(listener.pid)[kind].split()[0]) // 1024


# Where it ends: before the call is answered, while the link is decoded, and nowhere.
@pytest.mark.parametrize("megabytes, is_opened", [(30, False), (60, False), (400, True)])
def test_a_link_for_which_there_is_no_memory_costs_itself_alone(desktop, megabytes, is_opened):
    listener = desktop.listen()
    most = (size(listener, "VmSize") + megabytes) * MEGABYTE
    resource.prlimit(listener.pid, resource.RLIMIT_AS, (most, most))
    with contextlib.suppress(GLib.Error):
        desktop.open(bulky_link(20 * MEGABYTE), "x:")
    desktop.open(page_link("https://next.test/"))
    opened = [PAGE] * is_opened + ["https://next.test/"]
    assert desktop.opened_all(len(opened)) == sorted(opened)
    output, errors, status = listener.end()
    assert (output, status) == ("", 0)
    assert errors.startswith("vastel-connect: out of memory: ") != is_opened


def test_huge_links_leave_no_memory_behind(desktop):
    listener = desktop.listen()
    # By default, the C library keeps what the second one wanted once it saw the first.
    for megabytes in (20, 5):
        desktop.open(bulky_link(megabytes * MEGABYTE))
        desktop.open()
        assert desktop.opened() == PAGE
    assert size(listener, "VmRSS") < 15


def test_no_core_is_left_but_by_what_is_started(desktop):
    report = desktop.install_reporter("bin/report")
    desktop.install_handler(command=desktop.install_script(
        "bin/limits", f'exec {report} "$(ulimit -S -c)" "$@"\n') + " %u")
    listener = desktop.listen(
        command=("sh", "-c", 'ulimit -S -c "$(ulimit -H -c)"; exec "$0"', PROGRAM))
    limit = desktop.spawn("sh", "-c", "ulimit -H -c").finish().output.strip()
    desktop.open(LINK)
    assert desktop.page().arguments == [limit, PAGE]
    with open(f"/proc/{listener.pid}/limits", encoding="ascii") as limits:
        (own,) = [line.split()[4] for line in limits if line.startswith("Max core file size")]
    assert own in ("0", "1")
