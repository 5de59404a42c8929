"""What a link may hold, and what comes of many links at once."""

import pytest

from desktop import SERVICE
from model import page_link
from processes import SILENCE, messages_of
from road import PAGE, TEXTS, bulky_link, expect_texts_unchanged, pages


def test_the_page_is_opened_whatever_the_script_type(desktop, listener):
    for script_type in ("CSD", "OpenApplication", "OpenWebPage", "other", 7):
        link = page_link(PAGE, ScriptType=script_type)
        desktop.open(link)
        listener.expect_log(link)
        assert desktop.opened() == PAGE


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


def test_twenty_calls_at_once_are_carried_out_once_each(desktop):
    answers = []
    for page in pages(20):
        desktop.call_open([page_link(page)], answers)
    assert desktop.opened_all(20) == pages(20)
    desktop.wait_until(lambda: len(answers) == 20)
    assert set(answers) == {None}
