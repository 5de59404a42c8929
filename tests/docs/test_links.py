"""docs/links.md and docs/links.html: what they say about links, and the links that they make."""

import json
import os
import pathlib
import re
import shutil
import subprocess

import pytest

import browser
import links
from model import decode, expect, make_link, page_link, parse
from processes import ROOT
from test_tables import cells

PAGE_FILE = ROOT / "docs/links.html"
PAGE = "https://crm.example/48213"
PREFIX = "Log hh:mm:ss> "
AXE = [path for folder in ("/usr/lib", "/usr/local/lib")
       for path in pathlib.Path(folder).glob("node_modules/axe-core/axe.min.js")]
# What runs each language, and a program that prints the link of its argument, a JSON text.
LANGUAGES = {
    "Python": ("python3", """import base64, json, sys
record = json.loads(sys.argv[1])
print(LINK, end="")"""),
    "PHP": ("php", "<?php $record = json_decode($argv[1], true); echo LINK;"),
    "Java": ("java", """import java.nio.charset.StandardCharsets; import java.util.Base64;
class Link { public static void main(String[] arguments) {
String json = arguments[0]; System.out.print(LINK); } }"""),
}


def examples(document, language):
    return re.findall(f"^```{language}\n(.*?)^```$", (ROOT / document).read_text(),
                      re.MULTILINE | re.DOTALL)


@pytest.mark.parametrize("language", [language for language, (command, _) in LANGUAGES.items()
                                      if shutil.which(command)])
def test_another_language_makes_the_link(desktop, tmp_path, language):
    lines = dict(zip(cells("docs/links.md", "Language", 1), cells("docs/links.md", "Language", 2)))
    command, program = LANGUAGES[language]
    source = tmp_path / "Link.java"
    source.write_text(program.replace("LINK", lines[language].strip("`")))
    for record in {}, {"WebPage": PAGE, "CallFields": {"Caller name": "Jänsen 📞" + "M" * 99}}:
        link = subprocess.check_output([command, source, json.dumps(record, ensure_ascii=False)],
                                       env={**os.environ, "LC_ALL": "C.UTF-8"}, encoding="ascii")
        assert parse(decode(link.removeprefix("screenpop:"))) == record
        desktop.open(link)
    assert desktop.opened() == PAGE


def test_the_command_for_a_client_that_is_no_page(desktop):
    (command,) = examples("docs/links.md", "sh")
    assert desktop.spawn("sh", "-ec", command).finish().output == "()\n"
    assert desktop.opened() == PAGE


def test_a_command_line_holds_as_much_as_is_said(desktop, listener):
    text = f"screenpop:{'A' * (131071 - len('screenpop:'))}"
    desktop.run(text)
    assert "process uri: " + text in listener.messages(len(expect(text).messages))
    with pytest.raises(OSError):
        desktop.run(text + "A")


# The page in Chromium.


@pytest.fixture
def desktop(new_desktop):
    return new_desktop(screen=True, XDG_CURRENT_DESKTOP="GNOME")


@pytest.fixture
def page(desktop):
    """The page in Chromium."""
    chromium = browser.Chromium(desktop)
    chromium.show(PAGE_FILE.as_uri())
    return chromium


def test_the_page_says_what_the_model_says(page):
    """And so what the program does (road/test_road.py)."""
    texts = links.all_links()
    readings = page.execute("return arguments[0].map(readLink)", texts)
    for text, reading in zip(texts, readings, strict=True):
        expected = expect(text)
        assert (reading["messages"], reading["opens"], reading["ends"]) == (
            expected.messages, expected.opened, expected.fatal), text[:200]


def test_the_page_fits_a_telephone(page):
    page.devtools("Emulation.setDeviceMetricsOverride", width=360, height=740, deviceScaleFactor=1,
                  mobile=True)
    page.type("#page", "https://crm.example/" + "x" * 80)
    assert page.execute("return document.documentElement.scrollWidth") == 360


if AXE:  # By npm install --global axe-core.
    @pytest.mark.parametrize("scheme", ["light", "dark"])
    def test_whoever_cannot_see_the_page_may_use_it(page, scheme):
        page.devtools("Emulation.setEmulatedMedia", features=[
            {"name": "prefers-color-scheme", "value": scheme}])
        assert page.execute(
            AXE[0].read_text() + "; return axe.run().then((result) => "
            "[matchMedia(arguments[0]).matches, result.violations.map(({ id }) => id)])",
            f"(prefers-color-scheme: {scheme})") == [True, []]


# The links that pages make.


@pytest.fixture
def show(desktop, site):
    """Shows a page of a text in Chromium, whose links open without a question where permitted."""
    def shown(text, permitted=True):
        site.texts["/links.html"] = text
        chromium = browser.Chromium(desktop, site.origin if permitted else None)
        chromium.show(f"{site.origin}/links.html")
        return chromium

    return shown


def test_the_examples_make_links(desktop, show):
    chromium = show("<a id=link>call</a>")
    for document in "README.md", "docs/links.md":
        (example,) = examples(document, "js")
        # With a name that was cut within an emoji.
        chromium.execute(example.replace("WebPage:", r'Name: "\ud83d", WebPage:'))
        chromium.click("#link")
        assert desktop.opened() == PAGE


def test_one_link_follows_from_one_click(desktop, show):
    first, second, third = (page_link(f"https://crm.example/{n}") for n in (1, 2, 3))
    chromium = show(f"<a id=first href={first}>1</a><p>text")
    chromium.click("#first")
    assert desktop.opened() == "https://crm.example/1"
    chromium.execute("location.href = arguments[0]", second)
    chromium.click("p")
    chromium.execute("location.href = arguments[0]", third)
    assert desktop.opened() == "https://crm.example/3"


def test_chromium_follows_a_link_as_long_as_is_said(site, show):
    """What becomes of a longer one differs from version to version."""
    chromium = show("""<a id=link>call</a><script>
        link.href = "screenpop:".padEnd(2097152, "A");
        // The question about a link takes the focus.
        onblur = () => fetch("/report", { method: "POST", body: "question" });
        </script>""", permitted=False)
    chromium.click("#link")
    assert site.report() == "question"


def test_the_links_that_the_page_makes_open_their_page(desktop, show):
    chromium = show(PAGE_FILE.read_text())
    page = "https://crm.example/?number=%2B31201234567"
    chromium.type("#page", page)
    chromium.type("#fields", "Caller name=Jänsen, M. 📞\nCaller number=+31=201234567")
    record = (f'{{"WebPage":"{page}","CallFields":'
              '{"Caller name":"Jänsen, M. 📞","Caller number":"+31=201234567"}}')
    assert chromium.execute("return at('log').textContent").split("\n") == [
        *(PREFIX + line for line in expect(make_link(record, "screenpop:")).messages), ""]
    for selector, prefix in ("#plain", "screenpop:"), ("#slashes", "screenpop://"):
        link = chromium.execute(f"return document.querySelector('{selector}').textContent")
        assert link == make_link(record, prefix)
        chromium.click(selector)
        assert desktop.opened() == page
