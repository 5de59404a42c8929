"""What tests start from: a private `desktop`, and on it the program as a `listener`, or a web client's
`site`."""

import contextlib
import os

import pytest

pytest.register_assert_rewrite("desktop", "processes")


@pytest.fixture
def new_desktop():
    """Makes a desktop with the options of Desktop, in the place of the one before."""
    from desktop import Desktop  # It wants variables that not all tests have.

    with contextlib.ExitStack() as last:
        def make(**options):
            last.close()
            return last.enter_context(Desktop(**options))

        yield make


@pytest.fixture
def desktop(new_desktop):
    """A private desktop, on which the bus starts the program, and the handler reports pages."""
    return new_desktop()


@pytest.fixture
def listener(desktop):
    """The program on that desktop, with -log: links go to it."""
    return desktop.listen("-log")


@pytest.fixture
def site(desktop):
    """A web client's site, for browsers on that desktop."""
    from browser import Site

    return Site(desktop)


def pytest_collection_modifyitems(items):
    """Leaves out what wants the clients of all desktops, which ./test clients has."""
    if "CONNECT_CLIENTS" not in os.environ:
        items[:] = [item for item in items if not item.get_closest_marker("clients")]
