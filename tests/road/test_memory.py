"""Links so large that memory ends, or that much of it is wanted once."""

import contextlib
import resource

import pytest
from gi.repository import GLib

from desktop import PAGE
from model import page_link
from processes import status_of
from road import bulky_link

MEGABYTE = 1 << 20


def size(listener, kind):
    """A figure of the program's memory, in megabytes."""
    return int(status_of(listener.pid)[kind].split()[0]) // 1024


def limit_memory(listener, megabytes):
    """Leaves so much to a program; None: without a limit."""
    soft = resource.RLIM_INFINITY
    if megabytes is not None:
        soft = (size(listener, "VmSize") + megabytes) * MEGABYTE
    resource.prlimit(listener.pid, resource.RLIMIT_AS, (soft, resource.RLIM_INFINITY))


# Where it ends: before the call is answered, while the link is decoded, and nowhere.
@pytest.mark.parametrize("megabytes, is_opened", [(30, False), (60, False), (400, True)])
def test_a_link_for_which_there_is_no_memory_costs_itself_alone(desktop, megabytes, is_opened):
    listener = desktop.listen()
    limit_memory(listener, megabytes)
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
