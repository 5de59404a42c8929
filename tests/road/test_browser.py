"""Links on a web page, clicked in Chromium: with the policy they open their pages, without it a
question comes first. With CONNECT_CLIENTS in the environment, on each desktop that browsers know,
with all answers to that question."""

import os

import pytest

from browser import Chromium
from clients import BAD, DESKTOPS, READ_HOSTS, link_to, page_of, session_variables
from desktop import PROGRAM
from processes import SILENCE

CLICKS = 12
# The question takes the focus from the page, and gives it back.
TELL_FOCUS = """const tell = (what) => fetch("/report", { method: "POST", body: what });
    onblur = () => tell("question"); onfocus = () => tell("answered");"""
# Cancel has the focus. Behind it comes Open, and before it, where there is one, the box.
OPEN = ["Tab", "Return"]
OPEN_ALWAYS = ["shift+Tab", "space", "Tab", "Tab", "Return"]


@pytest.fixture
def current():
    return "GNOME"


@pytest.fixture
def desktop(new_desktop, current):
    return new_desktop(screen=True, **session_variables(current))


def show(site, chromium, *links, origin=None):
    """Shows a page with links."""
    site.texts["/call"] = '<link rel="icon" href="data:,">' + "".join(
        f'<a id="link{i}" href="{link}">call</a> ' for i, link in enumerate(links))
    chromium.show((origin or site.origin) + "/call")


# Chromium asks another opener on some.
@pytest.mark.parametrize("current", DESKTOPS)
def test_each_click_opens_its_page(desktop, site, current):
    chromium = Chromium(desktop, site.origin)
    pages = [page_of(n) for n in range(CLICKS)]
    show(site, chromium, *map(link_to, pages))
    assert desktop.owner() is None
    for n in range(CLICKS):
        chromium.click(f"#link{n}")
    assert desktop.opened_all(CLICKS) == sorted(pages)
    assert os.path.realpath(f"/proc/{desktop.owner()}/exe") == os.path.realpath(PROGRAM)
    desktop.end_programs()

    # The page is a tab of the same browser.
    desktop.install_handler(command=chromium.command)
    listener = desktop.listen("-log")
    page = f"{site.origin}/customer?number=+31201234567&name=Jansen,%20M.#call"
    links = [link_to(page)]
    if f"xdg-open as {current}" not in READ_HOSTS:
        links.append(link_to(page, "screenpop://"))
    show(site, chromium, *links)
    for n, link in enumerate(links):
        chromium.click(f"#link{n}")
        assert site.report() == page
        listener.expect_log(link)
    assert chromium.addresses() == sorted([site.origin + "/call", *[page] * len(links)])
    assert site.requests == ["/call", "/call", *[
        "/customer?number=+31201234567&name=Jansen,%20M."] * len(links)]
    assert listener.end() == SILENCE


def test_without_the_policy_the_question_comes_first(desktop, site, listener):
    chromium = Chromium(desktop)
    show(site, chromium, link_to(page_of("asked")))
    chromium.execute(TELL_FOCUS)
    chromium.click("#link0")
    while site.report() != "question":
        pass
    assert listener.end() == SILENCE


@pytest.mark.clients
def test_after_a_bad_link_the_next_one_works(desktop, site, listener):
    chromium = Chromium(desktop, site.origin)
    good = link_to(page_of("next"))
    # No command line holds the one of 1 MB, and Chromium itself follows no such link as the last.
    for bad in [*BAD, *("screenpop:" + "A" * size for size in (1_000_000, 10_000_000))]:
        show(site, chromium, bad, good)
        chromium.click("#link0")
        if bad in BAD:
            listener.expect_log(bad)
        show(site, chromium, good)
        chromium.click("#link0")
        listener.expect_log(good)
        assert desktop.opened() == page_of("next")
    assert listener.end() == SILENCE


# The answers to the question. After the first steps of each, the page is opened.
@pytest.mark.clients
@pytest.mark.parametrize("origin, answers", [
    # Enter cancels.
    ("origin", [["Return"], OPEN]),
    # The box answers for good.
    ("origin", [OPEN_ALWAYS, []]),
    # On plain http there is no box: what comes before Cancel is Open again.
    ("plain_origin", [["shift+Tab", "Return"], ["Return"]])],
    ids=["cancel", "for good", "plain http"])
def test_the_question_is_answered(desktop, site, origin, answers):
    chromium = Chromium(desktop)
    show(site, chromium, link_to(page_of("asked")), origin=getattr(site, origin))
    chromium.execute(TELL_FOCUS)
    for keys in answers:
        chromium.click("#link0")
        # Chromium 150 gives the page the focus no sooner than at the click.
        while keys and site.report() != "question":
            pass
        # For half a second, it takes no key that might have been meant for the page, and nothing
        # tells when that is over.
        if keys:
            assert desktop.spawn("xdotool", "sleep", "1", "key", *keys).finish().status == 0
        if keys != ["Return"]:
            assert desktop.opened() == page_of("asked")
        if keys:
            assert site.report() == "answered"
