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
    for prefix in ("screenpop:", "screenpop://"):
        click(firefox, site, link_to(PAGE, prefix))
        listener.expect_log(site.link)
        assert desktop.opened() == PAGE
    click(firefox, site, LINK, site.plain_origin)
    assert "Allow this site" in firefox.answer("cancel")
    assert listener.end() == SILENCE


def test_without_the_policy_the_question_has_a_box(desktop, site, listener):
    firefox = Firefox(desktop)
    click(firefox, site, LINK)
    assert firefox.answer("cancel") == (
        "Allow this site to open the screenpop link with Vastel Connect?")
    for answer in (["accept"], ["accept", "remember"], []):
        click(firefox, site, LINK)
        if answer:
            firefox.answer("accept", remember="remember" in answer)
        listener.expect_log(LINK)
        assert desktop.opened() == PAGE
    assert listener.end() == SILENCE


def test_a_link_starts_the_program_and_its_page_is_a_tab(desktop, site):
    firefox = Firefox(desktop, site.origin)
    desktop.install_handler(["http"], firefox.command)
    page = site.origin + "/customer?number=+31201234567&name=Jansen,%20M.#call"
    click(firefox, site, link_to(page))
    assert site.report() == page
    assert desktop.owner() is not None
    assert sorted(firefox.addresses()) == [site.origin + "/call", page]


def test_after_a_bad_link_the_next_one_works(desktop, site, listener):
    firefox = Firefox(desktop, site.origin)
    # Firefox keeps no such address as the last.
    for bad in (*BAD, "screenpop:" + "A" * 10_000_000):
        click(firefox, site, bad)
        if bad in BAD:
            listener.expect_log(bad)
        click(firefox, site, LINK)
        listener.expect_log(LINK)
        assert desktop.opened() == PAGE
    assert listener.end() == SILENCE
