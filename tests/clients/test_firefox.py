"""Firefox with and without the policy, and its question."""

import pytest

from clients import BAD, link_to, page_of, session_variables
from firefox import Firefox
from processes import SILENCE

PAGE = page_of("firefox")
LINK = link_to(PAGE)


@pytest.fixture
def desktop(new_desktop):
    return new_desktop(screen=True, **session_variables("GNOME"))


def click(firefox, site, link, origin=None):
    """Shows a page with a link, and clicks on it."""
    site.link = link
    firefox.show((origin or site.origin) + "/call")
    assert site.report().endswith("/call")
    firefox.click("#link")


def test_with_the_policy_no_question_comes_but_for_another_origin(desktop, site, listener):
    firefox = Firefox(desktop, site.origin)
    for link in (LINK, *BAD, link_to(PAGE, "screenpop://")):
        click(firefox, site, link)
        listener.expect_log(link)
        if link not in BAD:
            assert desktop.opened() == PAGE
    click(firefox, site, LINK, site.plain_origin)
    assert "Allow this site" in firefox.answer("cancel")
    assert listener.end() == SILENCE


def test_without_the_policy_the_question_has_a_box(desktop, site, listener):
    firefox = Firefox(desktop)
    click(firefox, site, LINK)
    assert firefox.answer("cancel") == (
        "Allow this site to open the screenpop link with Vastel Connect?")
    for remember in (False, True, None):
        click(firefox, site, LINK)
        if remember is not None:
            firefox.answer("accept", remember)
        listener.expect_log(LINK)
        assert desktop.opened() == PAGE
    assert listener.end() == SILENCE
