"""What ./run shows of a link, beside what the model says."""

import re
import subprocess

import pytest

from desktop import STAGE
from model import expect, make_link, page_link
from processes import ROOT


@pytest.fixture
def show(tmp_path):
    """Runs it: the messages that it shows, and all that it says."""
    def run(*arguments):
        environment = {"PATH": "/usr/bin:/bin", "HOME": str(tmp_path), "CONNECT_STAGE": STAGE,
                       "XDG_RUNTIME_DIR": str(tmp_path)}
        result = subprocess.run([ROOT / "run", *arguments], env=environment, text=True,
                                capture_output=True, check=False)
        assert (result.returncode, result.stderr) == (0, "")
        return re.findall(r"^  Log ..:..:..> (.*)$", result.stdout, re.MULTILINE), result.stdout

    return run


@pytest.mark.parametrize("link", [
    None, page_link("https://page.test/"), page_link("passwd"), make_link({}), make_link("[]"),
    "screenpop:", "screenpop", "it's:", "mailto:x"])
def test_it_shows_all_that_becomes_of_a_link(show, link):
    messages, text = show(*([link] if link else []))
    # Without one, it follows a sample.
    expected = expect(link or re.search("^The link\n  (.*)$", text, re.MULTILINE)[1])
    assert messages == expected.messages
    end = "the program ended" if expected.fatal else f"was given\n  {expected.opened or 'Nothing.'}\n"
    assert end in text


def test_it_runs_the_program_with_switches(show):
    assert "usage:\n" in show("--", "-help")[1]
