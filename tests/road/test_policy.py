"""The administrator's file decides which pages are opened."""

import subprocess

import pytest

from desktop import PROGRAM
from model import page_link
from processes import SILENCE
from road import PAGE

PLACE = "/etc/vastel-connect.conf"
# A folder is laid over /etc, for one process and its children.
OVERLAY = ["unshare", "--map-root-user", "--mount", "sh", "-ec",
           'mount -t overlay overlay -o lowerdir="$0":/etc /etc; exec "$@"']
REFUSAL = f"vastel-connect: the scheme of a page is not permitted by {PLACE}: "
ROWS = [
    ("[Pages]\nSchemes=https\n", PAGE, ""),
    ("[Pages]\nSchemes=https\n", "HTTPS://page.test/", ""),
    ("[Pages]\nSchemes=http;tel\n", PAGE, "its Schemes lack https"),
    ("[Pages]\nSchemes=https\n", "file:///etc/passwd", "its Schemes lack file"),
    ("[Pages]\nSchemes=https\n", "OTHER:page", "its Schemes lack other"),
    ("[Pages]\nSchemes=https;other\n", PAGE, ""),
    ("", PAGE, "it has no Schemes in [Pages]")]


@pytest.fixture
def beside_etc(desktop):
    """The beginning of a command in whose /etc the desktop's file "policy" is the policy."""
    desktop.write("over/policy", "")
    command = [*OVERLAY, desktop.folder + "/over"]
    if subprocess.run([*command, "true"], stderr=subprocess.DEVNULL, check=False).returncode:
        pytest.skip("this machine refuses namespaces, or to lay a folder over another in them")
    # What changes is outside the folder, whose content the kernel may remember.
    subprocess.run(["ln", "-s", desktop.folder + "/policy", desktop.folder + "/over" + PLACE[4:]],
                   check=True)
    return command


def test_pages_of_permitted_schemes_alone_are_opened_from_one_page_to_the_next(desktop, beside_etc):
    listener = desktop.spawn(*beside_etc, PROGRAM, "-log")
    listener.banner()
    desktop.wait_for_owner(listener.pid)
    for policy, page, refusal in ROWS:
        desktop.write("policy", policy)
        desktop.open(page_link(page))
        listener.expect_log(page_link(page))
        if refusal:
            assert listener.errors.next() == REFUSAL + refusal
        else:
            assert desktop.opened() == page
    assert listener.end() == SILENCE
