"""What tests of installations start from: the `switches` that the program knows, and a `tree`."""

import os
import re

import pytest

from packages import output_of


@pytest.fixture(scope="module")
def switches():
    usage = output_of(os.environ["CONNECT_STAGE"] + "/bin/vastel-connect", "-help")
    found = {"-h", "-help", *re.findall(r"^ *(-[a-z]+):", usage, re.MULTILINE)}
    assert len(found) >= 6, usage
    return found


@pytest.fixture
def tree():
    """A small system, in which nothing of ours is installed."""
    from tree import Tree  # It wants an archive.

    with Tree() as made:
        yield made
