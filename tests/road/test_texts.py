"""What a link may hold, beside what the model says of it, and what comes of many links at once."""

import re

import pytest

from desktop import SERVICE
from links import all_links
from model import expect, page_link
from processes import SILENCE
from road import TEXTS, bulky_link, expect_texts_unchanged, pages


def test_each_link_is_what_the_model_says(desktop):
    texts = all_links()
    # A handler for whatever might be a scheme, so that nothing is opened unseen.
    starts = (re.match("webpage: ([A-Za-z0-9+.-]+):", expect(text).messages[-1]) for text in texts)
    desktop.install_handler(sorted({start[1].lower() for start in starts if start}))
    listener = None
    for text in texts:
        listener = listener or desktop.listen("-jsonlog")
        desktop.open(text)
        listener.expect_log(text)
        expected = expect(text)
        if expected.opened is not None:
            assert desktop.opened() == expected.opened
        if expected.fatal:
            assert listener.finish() == ("", "", 70)
            listener = None


def test_each_text_of_a_command_line_arrives_unchanged(desktop):
    expect_texts_unchanged(desktop, desktop.run, [*TEXTS, bulky_link(100_000)])


# Many at once.


@pytest.mark.parametrize("service", [SERVICE, None])
def test_twenty_at_once_are_opened_once_each_by_one_that_they_start(new_desktop, service):
    desktop = new_desktop(service=service)
    processes = [desktop.start(page_link(page)) for page in pages(20)]
    assert desktop.opened_all(20) == pages(20)
    ended = [process for process in processes if process.pid != desktop.owner()]
    assert [process.finish() for process in ended] == [SILENCE] * len(ended)
    # Without a service it is one of them.
    assert len(ended) == (20 if service else 19)
    assert not service or len(desktop.names_seen()) == 1
