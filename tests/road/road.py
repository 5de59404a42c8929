"""What the tests of a link's road have in common."""

from desktop import PAGE
from model import expect, make_link, page_link

LINK = page_link(PAGE)
FATAL = make_link("[]")

# What is said after some seconds to whoever waits for the bus, or follows a link.
BUS_BUSY = "vastel-connect: the session bus does not answer yet"
BUSY = "vastel-connect: the application is busy: the link waits until it goes on"

# Texts of all forms that a link takes, its page being https://page.test/ wherever it has one.
TEXTS = [
    LINK,
    page_link(PAGE, "screenpop:"),
    page_link(PAGE, "SCREENPOP://"),
    page_link(PAGE, "ScreenPop:"),
    # "+", "/" and "=" in the base64.
    page_link(PAGE, Note="~~~???>>>"),
    page_link(PAGE, Note="ünïcödé ☃ ÿÿÿ"),
    page_link(PAGE, Note="~~~???>>>", prefix="screenpop:"),
    # Texts that a reader of URLs would change.
    "screenpop://",
    "screenpop:///",
    "screenpop:eyJhIjoxfQ%3D%3D",
    "screenpop://QUJD/../eHl6",
    "screenpop://a:b",
    "screenpop://user@host:80//x",
    "screenpop://QQ==#f?q=1",
    "screenpop://a b",
    "screenpop://Köln",
]


def bulky_link(size):
    """A link of about that many characters, whose page is PAGE."""
    return page_link(PAGE, Note="x" * (size * 3 // 4))


def pages(count):
    return [f"https://page.test/{number:03}" for number in range(count)]


def expect_texts_unchanged(desktop, follow, texts):
    """Has texts followed, each of which is to be logged, and opened, as the model has it."""
    listener = desktop.listen("-log")
    for text in texts:
        follow(text)
        listener.expect_log(text)
    opened = [expect(text).opened for text in texts if expect(text).opened]
    assert desktop.opened_all(len(opened)) == sorted(opened)
