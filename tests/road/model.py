"""What the program makes of a link, written from what it promises and not from its code; and random
links of all kinds to ask it about."""

import base64
import json
import re
import types


DEPTH_LIMIT = 512


def make_link(record, prefix="screenpop://"):
    """The link of a request: of a record, or of a JSON text or bytes as they stand."""
    data = record if isinstance(record, (str, bytes)) else json.dumps(record, ensure_ascii=False)
    data = data.encode() if isinstance(data, str) else data
    return prefix + base64.b64encode(data).decode()


def page_link(page, prefix="screenpop://", **members):
    return make_link({"WebPage": page, **members}, prefix)


def expect(link):
    """The log `messages` of a link, what is `opened`, and whether the link is `fatal`."""
    messages = ["new uri event", "process uri: " + link]
    page, fatal = None, False
    protocol, colon, command = link.partition(":")
    if not colon:
        messages.append("invalid protocol")
    elif protocol.lower() != "screenpop":
        messages.append("Invalid protocol")
    else:
        messages.append("process screenpop")
        text = decode(command.removeprefix("//"))
        request = None if text is None else parse(text)
        fatal = isinstance(request, list)
        page = request.get("WebPage") if isinstance(request, dict) else None
        if text is None:
            messages.append("Could not decode")
        elif isinstance(page, str):
            messages.append("webpage: " + page)
        elif not fatal:
            messages.append("no webpage to open")
    opened = url_text(page) if isinstance(page, str) and is_url_with_scheme(page) else None
    return types.SimpleNamespace(messages=messages, opened=opened, fatal=fatal)


def decode(command):
    """The text in strict base64, if any."""
    if not re.fullmatch("(?:[A-Za-z0-9+/]{4})*(?:[A-Za-z0-9+/]{2}==|[A-Za-z0-9+/]{3}=)?", command):
        return None
    try:
        return base64.b64decode(command).decode() if command else None
    except UnicodeDecodeError:
        return None


def parse(text):
    """The value of a JSON text; None for what is none, or is too deep."""
    if depth(text) > DEPTH_LIMIT:
        return None
    try:
        return checked(json.loads(text, parse_constant=lambda name: int(name),
                                  object_pairs_hook=lambda pairs: dict(checked(pairs))))
    except ValueError:
        return None


def checked(value):
    """Fails for half of a surrogate pair, also behind a key that comes again."""
    json.dumps(value, ensure_ascii=False).encode()
    return value


def depth(text):
    """How many brackets stand inside each other."""
    deepest = level = 0
    for bracket in re.sub(r'"(?:[^"\\]|\\.)*"?|[^][{}"]+', "", text, flags=re.DOTALL):
        level += 1 if bracket in "[{" else -1
        deepest = max(deepest, level)
    return deepest


def is_url_with_scheme(page):
    """Whether a page is opened at all. (Brackets stand wherever they like.)"""
    character = r"(?:[A-Za-z0-9!$&'()*+,\-./:;=?@_~\[\]]|%[0-9A-Fa-f]{2})*"
    return bool(re.fullmatch(r"[A-Za-z][A-Za-z0-9+.\-]*:" + character + f"(?:#{character})?", page))


def url_text(page):
    """The text of the URL: brackets are escaped but at the ends of the host, and a "#" is where no
    slash follows the scheme."""
    escape = lambda text: text.replace("[", "%5B").replace("]", "%5D")
    if not re.match("[^:]*:/", page):
        return escape(page).replace("#", "%23")
    parts = re.fullmatch(r"([^:]*://)([^/?#@]*@)?((?:\[[^]/?#]*\]?|[^[:/?#])*)(.*)", page)
    if not parts:
        return escape(page)
    scheme, user, host, rest = (part or "" for part in parts.groups())
    inner = re.fullmatch(r"(\[?)(.*?)(\]?)", host)
    return scheme + escape(user) + inner[1] + escape(inner[2]) + inner[3] + escape(rest)


# Random links. Each has the number of its own in it, so that no two are the same. All kinds, without
# numbers, are in tests/docs/links.py.

PAGES = {
    "fine": ["https://page.test/{}", "http://page.test:8080/?q={}&a=b#c", "other:{}", "tel:#{}",
             "https://u@[::1]/{};$(touch;x)'*!~", "https://[::1]/?a[]={}#[x]"],
    "odd": ["--help", "-h {}", "/etc/passwd#{}", "https://page.test/{} b", "https://page.test/{}\0",
            "Log 00:00:00> webpage: {}\nLog 00:00:00> webpage: x", "https://page.test/\u2028{}"]}
PREFIXES = ["screenpop://", "screenpop:", "SCREENPOP://", "ScreenPop:"]
TEXTS = ["-help{}", "--dbus-service{}", "screenpop{}", ":{}", "screenpop:///{}", "screenpop:{} ",
         "{}\n:", "\x7f{}:", "screenpop://\u00fc{}", "x" * 2000 + "{}", "file:///{}"]
JSON_TEXTS = [
    '{{"WebPage":{}}}', '"{}"', "{}", '{{"n":{}', '\ufeff{{"n":{}}}', '{{"WebPage":"\\ud800{}"}}',
    '{{"WebPage":"https://page.test/first","WebPage":"https://page.test/{}"}}',
    ' {{"n":[[[1e99999999999,-0.0,{}]]],"WebPage":"https:\\/\\/page.test\\/{}"}} ']


def fatal_link(random, number):
    return make_link(random.choice(["[{}]", "[[],{}]", ' [{{"WebPage":"https://a.test/{}"}}]'])
                     .format(number), random.choice(PREFIXES))


def random_link(random, number):
    """Any link but one that ends the program."""
    kind = random.choices(["fine", "odd", "text", "json", "damaged", "huge", "deep"],
                          [50, 12, 10, 12, 8, 4, 4])[0]
    prefix = random.choice(PREFIXES)
    fill = lambda texts: random.choice(texts).replace("{}", str(number))
    page = page_link(fill(PAGES.get(kind, PAGES["fine"])), prefix, Number=number,
                     Note=random.choice(["~?>", "ÿ", ""]))
    if kind == "text":
        return fill(TEXTS)
    if kind == "json":
        return make_link(random.choice(JSON_TEXTS).format(number, number), prefix)
    if kind == "damaged":
        return damage(random, page)
    if kind == "huge":
        return page_link(f"https://page.test/{number}", prefix,
                         Note="x" * random.choice([5_000, 80_000, 800_000]))
    if kind == "deep":
        levels = random.choice([10, 510, 511, 512, 513, 100_000])
        return make_link('{"a":' * levels + "1" + "}" * levels + " " * (number % 97), prefix)
    return page


def damage(random, link):
    """Changes one place; what is made of it is for `expect` to say."""
    place = random.randrange(len(link))
    changed = random.choice(["", "-", "=", "A", "%", " ", ":", "\u00e9", link[place] * 2])
    damaged = link[:place] + changed + link[place + 1:]
    return link if expect(damaged).fatal else damaged


def fits_command_line(link):
    """Whether a link can be an argument that the program takes for a link."""
    return (re.match(r"[A-Za-z][A-Za-z0-9+.\-]*:", link) is not None
            and len(link.encode()) < 100_000)
