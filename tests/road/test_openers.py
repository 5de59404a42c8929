"""The desktop's own openers, which follow a link and end at once: none is lost, changed or opened
twice. With CONNECT_CLIENTS in the environment, those of all desktops, and not only `gio open` and
`xdg-open`."""

import concurrent.futures
import functools
import subprocess

import pytest

from clients import (BAD, CLIENTS, KDE_OPENER, OPENERS, READ_HOSTS, link_to, page_of,
                     session_variables)
from desktop import NAME, STAGE
from model import page_link
from processes import log_message, messages_of
from road import LINK, PAGE, TEXTS, bulky_link, expect_texts_unchanged

COUNT = 50
# The openers, and a program that ends as soon as the link is launched.
COMMANDS = OPENERS | {"GIO": (["/usr/bin/python3", "-c", """import os, sys
from gi.repository import Gio
os._exit(not Gio.AppInfo.launch_default_for_uri(sys.argv[1], None))"""], None)}


@pytest.fixture
def desktop(new_desktop):
    # Some openers ask whether there is a display, and leave it at that.
    return new_desktop(screen=True) if CLIENTS else new_desktop(DISPLAY=":none")


def follow(desktop, name, link, **environment):
    """Has an opener follow a link, and waits for the end of that opener."""
    command, current = COMMANDS[name]
    process = desktop.spawn(*command, link, **session_variables(current), **environment)
    result = process.finish()
    desktop.forget(process)
    assert result.status == 0, (name, result)


# With and without the modules of GIO, which include the one that reads URLs as files.
@pytest.mark.parametrize("modules", [None, "/nowhere"])
@pytest.mark.parametrize("name", OPENERS)
def test_an_opener_keeps_each_byte(desktop, name, modules):
    follow_by = lambda link: follow(desktop, name, link, GIO_MODULE_DIR=modules)
    follow_by(link_to(PAGE))
    assert desktop.opened() == PAGE
    desktop.end_programs()
    texts = [link_to(PAGE, prefix) for prefix in ("screenpop:", "screenpop://")]
    if name in ("gio open", "xdg-open as GNOME"):
        texts += [*TEXTS, bulky_link(100_000)]
    expect_texts_unchanged(desktop, follow_by, texts[:1] if name in READ_HOSTS else texts)


@pytest.fixture
def openers(desktop):
    """What follows a link, and waits for its own end."""
    return [functools.partial(follow, desktop, name) for name in COMMANDS]


def test_no_opener_loses_a_link_while_others_run(desktop, openers):
    pages = [[page_of(f"{i}/{n}") for n in range(COUNT)] for i in range(len(openers))]
    everyone = sorted(sum(pages, []))

    def follow_all(opener, pages):
        for page in pages:
            opener(link_to(page))

    opened = desktop.quick_pages()
    log = desktop.folder + "/log"
    with open(log, "w", encoding="utf-8") as file:
        listener = desktop.listen("-log", streams={"stdout": file})
    with concurrent.futures.ThreadPoolExecutor(len(openers) + 1) as pool:
        reading = pool.submit(lambda: sorted(opened.next() for _ in everyone))
        assert not any(pool.map(follow_all, openers, pages))
    assert reading.result() == everyone
    listener.end()
    assert opened.now() == []
    with open(log, encoding="utf-8") as file:
        messages = [log_message(line) for line in file.read().splitlines() if line.startswith("Log ")]
    assert sorted(messages) == sorted(messages_of(*map(link_to, everyone)))


def test_no_opener_loses_a_link_that_starts_the_program(desktop, openers):
    opened = desktop.quick_pages()
    for n in range(COUNT):
        openers[n % len(openers)](link_to(page_of(n)))
        assert opened.next() == page_of(n)
        desktop.end_programs()
    assert opened.now() == []


@pytest.mark.parametrize("name", [name for name in OPENERS if not name.startswith("xdg-open")])
def test_after_a_bad_link_the_next_one_works(desktop, listener, name):
    for link in BAD:
        for text in (link, link_to(PAGE)):
            follow(desktop, name, text)
            listener.expect_log(text)
        assert desktop.opened() == PAGE


def expect_start_without_link(desktop, *command, **environment):
    quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
    assert desktop.spawn(*command, streams=quiet, **environment).wait() == 0
    desktop.wait_until(desktop.owner)
    follow(desktop, "gio open", LINK)
    assert desktop.opened() == PAGE


def test_a_file_is_no_link(desktop):
    expect_start_without_link(desktop, "gio", "launch", f"{STAGE}/share/applications/{NAME}.desktop",
                              "/etc/passwd")


# What happens to the other spelling where it is read as a host's name: it is the opener's own doing,
# and docs/links.md tells of it.


def test_openers_that_read_hosts_lose_a_link_with_slashes(desktop):
    link = link_to(page_of("host"), "screenpop://")
    for name in READ_HOSTS:
        command, current = OPENERS[name]
        if current == "LXQt":
            expect_start_without_link(desktop, *command, link, **session_variables(current))
        else:
            follow(desktop, name, link)
            assert desktop.opened() == "http://screenpop//" + link.removeprefix("screenpop://")
        desktop.end_programs()
    if KDE_OPENER in READ_HOSTS:
        # No "+", "/" or "=" in it.
        plain = page_link("https://page.test/abc")
        assert plain.removeprefix("screenpop://").isalnum()
        listener = desktop.listen("-log")
        follow(desktop, KDE_OPENER, plain)
        listener.expect_log(plain.lower())
