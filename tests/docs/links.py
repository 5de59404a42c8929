"""Links of all kinds, for a comparison of what is said about them with what becomes of them."""

import json

from model import make_link, page_link
from processes import DATA, ROOT

PAGE = "https://page.test/"
RECORD = json.dumps({"WebPage": PAGE})


def rows(name):
    """The first column of a file of tests/data."""
    with open(f"{DATA}/{name}.tsv", encoding="utf-8") as file:
        return [line.split("\t")[0] for line in file if not line.startswith("# ")]


def forms():
    """Good and bad forms of a link, around a good record."""
    payload = page_link(PAGE, "")
    prefixes = [
        "screenpop:", "screenpop://", "SCREENPOP:", "ScreenPop://", "", ":", "://", "screenpop",
        "screenpop:/", "screenpop:///", "screenpop:////", "screenpop::", "screenpop:://",
        "screenpop://:", " screenpop:", "screenpop :", "screenpop: ", "\tscreenpop:", "screenpops:",
        "creenpop:", "\u017fcreenpop:", "screenpo\u03c1:", "SCREENPOP\u0130:", "screenpop\u00ad:",
        "screenpop%3A", "screenpop%3A:", "tel:", "web+screenpop:", "view-source:screenpop:"]
    payloads = [
        "", payload[:-1], payload[1:], payload * 2, payload + "\r\n", payload + "?a=b",
        payload.lower(), payload.replace("h", "%68"), RECORD]
    payloads += [text for text in map(json.loads, rows("base64") + rows("base64_ambiguous"))
                 if "\0" not in text]  # The bus carries none.
    return [*(prefix + payload for prefix in prefixes), "", " ", "screenpop", "\n",
            *("screenpop:" + payload for payload in payloads)]


def encodings():
    """Bytes that are UTF-8, and each kind that is not, inside the page of a record or around it."""
    record = RECORD.encode()
    return [*(make_link(record.replace(b"test/", b"test/" + bytes.fromhex(row)))
              for row in rows("utf8") if row != '""'),
            make_link(b"\xef\xbb\xbf" + record), make_link(record.decode().encode("utf-16")),
            make_link(record.decode().encode("utf-16-le")), make_link(b"\0" + record),
            make_link(record[:-2] + b"\0" + record[-2:])]


def documents():
    """Documents that are JSON, and others."""
    texts = [path.read_bytes() for path in sorted((ROOT / "fuzz/corpus/Json").iterdir())]
    texts += [
        "{", "[]]", f"[{RECORD}]", "null", "-1.5e3", "nul", "NaN", RECORD * 2, RECORD + "x",
        " \t\r\n" + RECORD + " \t\r\n", "\u00a0" + RECORD, "\f" + RECORD, "//\n" + RECORD,
        "/**/" + RECORD, RECORD[:-1], RECORD[:-1] + ",}", RECORD.replace('"', "'"),
        RECORD.replace('"WebPage"', "WebPage"), RECORD.replace(":", "=", 1)]
    members = [
        '"a":0.' + "0" * 400 + "1", r'"a":"\ud83d\udcde"', r'"a":"\uD83D\uDCDE"', r'"a":"\ud83d"',
        r'"a":"\uDCDE"', r'"a":"\udcde\ud83d"', r'"a":"\ud83d\ud83d\udcde"', r'"a":"\ud83dx"',
        r'"a":"\ud83d\n"', r'"a":"\\ud83d"', r'"a":"\\\ud83d"', r'"\ud83d":1',
        r'"a":"\ud83d","a":1', r'"a":"\u00g0"', r'"a":"\x41"', r'"a":"\/\b\f"', '"a":"\t"',
        '"a":"\x1f"', '"a":"\x7f"', '"a":"\u2028"', '"a":TRUE', '"a":', '"":""', "1:2",
        '"a":1 "b":2', '"a":1,,"b":2', '"__proto__":{"WebPage":7}', '"a":"' + "[" * 513 + '"',
        r'"a":"\"' + "[" * 513 + '"']
    members += ['"a":' + json.loads(row) for row in rows("json_numbers")]
    texts += [RECORD.replace("{", "{" + member + ",", 1) for member in members]
    texts += ['{"a":' * levels + "1" + "}" * levels for levels in (512, 513)]
    texts += ["[" * levels + "]" * levels for levels in (512, 513, 100_000)]
    texts += [RECORD[:-1] + ',"a":' + "[" * levels + "]" * levels + "}" for levels in (511, 512)]
    return [make_link(text) for text in texts]


def records():
    """Records whose members are of all types."""
    values = [None, True, 0, 7.5, "", " ", [], [PAGE], {}, {"WebPage": PAGE}]
    extras = [{"ScriptType": "CSD"}, {"ScriptType": 7}, {"CallFields": {"a": 1}},
              {"CallFields": []}, {"CSDParams": None}, {"AutoExecute": True}, {"x": "Köln ☃ 📞"}]
    texts = [
        '{"webpage":"%s"}', '{"WebPage ":"%s"}', '{"Web\\u0050age":"%s"}', '{"a":{"WebPage":"%s"}}',
        '{"a.WebPage":"%s"}', '{"WebPage":7,"WebPage":"%s"}', '{"WebPage":"%s","WebPage":null}',
        '{"__proto__":{"WebPage":"%s"}}', '{"constructor":{"WebPage":"%s"}}']
    return [*(make_link({"WebPage": value}) for value in values),
            *(page_link(PAGE, **extra) for extra in extras),
            *(make_link(text % PAGE) for text in texts)]


def pages():
    """Pages that form a URL and others, with and without a scheme."""
    texts = [
        "::", "1a:b", "-a:b", "+a:b", "a:b", "A1+-.:b", "a_b:c", "a%41:b", "[::1]:80",
        "HTTPS://PAGE.TEST/", "https:", "https://page.test/%c3%bC", "https://page.test/%%4141",
        "https://page.test/#a#b", "https://köln.test/", "https://page.test/a\nLog x",
        "https://page.test/a\x1b[1mb", "https://page.test/$(id)'&';`id`", "https://[::1]/",
        "https://a:b@page.test:99999/;c=d?e=f/?g", "\u212ahttps://page.test/",
        "https://page.test/?a[]=1#[b]", "https://u[1]@[::1]:80/", "https://[a]b]/", "https://]/",
        "https://[/", "https://x[::1]/", "https://[][:]", "https://u@v@[:]:[:]?", "https:/[a]",
        "tel:#1", "a:b/c#d", "a:/b#c", "a:[#]", page_link(PAGE),
        "https://page.test/" + "x" * 60_000]
    texts += ["https://page.test/" + sign for sign in '^|{}<>"\\`']
    # All kinds of rows, and no file, which is not for the handler of a scheme.
    texts += [text for text in map(json.loads, rows("nsurl")[::6])
              if not text.lower().startswith("file:")]
    return [page_link(text, "screenpop:") for text in texts]


def all_links():
    """With sizes, too, that the bus carries."""
    return [*forms(), *encodings(), *documents(), *records(), *pages(),
            *(page_link(PAGE, Note="x" * size) for size in (100_000, 1_000_000))]
