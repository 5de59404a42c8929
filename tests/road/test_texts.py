"""What a link may hold, beside what the model says of it, and what comes of many links at once."""

import re

import pytest

from desktop import SERVICE
from links import all_links
from model import expect, page_link
from processes import SILENCE, messages_of
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


@pytest.mark.parametrize("follow, sizes", [("open", [100_000, 1_400_000]), ("run", [100_000])])
def test_each_text_arrives_unchanged(desktop, follow, sizes):
    expect_texts_unchanged(desktop, getattr(desktop, follow), [*TEXTS, *map(bulky_link, sizes)])


# Many at once.


@pytest.mark.parametrize("service, listens", [(SERVICE, False), (SERVICE, True), (None, False)],
                         ids=["by a program that the bus starts", "by a listener", "by one of them"])
def test_twenty_at_once_are_opened_once_each(new_desktop, service, listens):
    desktop = new_desktop(service=service)
    listener = desktop.listen("-log") if listens else None
    links = [*map(page_link, pages(20))]
    processes = desktop.start_at_once(links)
    assert desktop.opened_all(20) == pages(20)
    ended = [process for process in processes if process.pid != desktop.owner()]
    assert [process.finish() for process in ended] == [SILENCE] * len(ended)
    assert len(ended) == (20 if service else 19)
    assert not service or len(desktop.names_seen()) == 1
    if listens:
        expected = messages_of(*links)
        assert sorted(listener.messages(len(expected))) == sorted(expected)
