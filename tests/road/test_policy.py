"""The administrator's file decides which pages are opened."""

import os

from browser import OVER_ETC, need
from desktop import PROGRAM
from model import page_link
from processes import SILENCE
from road import PAGE

PLACE = "/etc/vastel-connect.conf"
REFUSAL = f"vastel-connect: the scheme of a page is not permitted by {PLACE}: "
ROWS = [
    ("[Pages]\nSchemes=https\n", "HTTPS://page.test/", ""),
    ("[Pages]\nSchemes=http;tel\n", PAGE, "its Schemes lack https"),
    ("[Pages]\nSchemes=https;other\n", PAGE, ""),
    ("[Pages]\nSchemes=https;other\n", "file:///etc/passwd", "its Schemes lack file"),
    ("", PAGE, "it has no Schemes in [Pages]")]


def test_pages_of_permitted_schemes_alone_are_opened_from_one_page_to_the_next(desktop):
    need()
    desktop.write("policy", "")
    # What changes is outside the folder, whose content the kernel may remember.
    os.mkdir(desktop.folder + "/over")
    os.symlink(desktop.folder + "/policy", desktop.folder + "/over" + PLACE.removeprefix("/etc"))
    listener = desktop.listen("-log", command=(*OVER_ETC, desktop.folder + "/over", PROGRAM))
    for policy, page, refusal in ROWS:
        desktop.write("policy", policy)
        desktop.open(page_link(page))
        listener.expect_log(page_link(page))
        if refusal:
            assert listener.errors.next() == REFUSAL + refusal
        else:
            assert desktop.opened() == page
    assert listener.end() == SILENCE
