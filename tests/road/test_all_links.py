"""What the program makes of links of all kinds, beside what the model says."""

import re

from links import all_links
from model import expect
from processes import Result


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
            assert listener.finish() == Result("", "", 70)
            listener = None
