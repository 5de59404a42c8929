"""Links of all kinds, for a comparison of what is said about them with what becomes of them."""

import json

from model import make_link, page_link
from processes import DATA

PAGE = "https://page.test/"
RECORD = json.dumps({"WebPage": PAGE})


def forms():
    """Good and bad forms of a link, around a good record."""
    payload = page_link(PAGE, "")
    padded = make_link({"WebPage": PAGE, "a": 1}, "")
    assert padded.endswith("=") and not payload.endswith("=")
    prefixes = [
        "screenpop:", "screenpop://", "SCREENPOP:", "ScreenPop://", "", ":", "://", "screenpop",
        "screenpop:/", "screenpop:///", "screenpop:////", "screenpop::", "screenpop:://",
        "screenpop://:", " screenpop:", "screenpop :", "screenpop: ", "\tscreenpop:", "screenpops:",
        "creenpop:", "\u017fcreenpop:", "screenpo\u03c1:", "SCREENPOP\u0130:", "screenpop\u00ad:",
        "screenpop%3A", "screenpop%3A:", "x-screenpop:", "tel:", "https://", "mailto:",
        "web+screenpop:", "javascript:", "data:text/plain;base64,", "view-source:screenpop:",
    ]
    payloads = [
        "", "=", "==", "====", "A", "A=", "A==", "A===", "QQ", "QQ=", "QR==", "QQ===", "QUI",
        "QUJ=", "e30", "e30=", "e30==", "e31=", "W10=", "W11=", padded.rstrip("="), padded + "=",
        padded + "====", padded + payload, "=" + payload, payload[:-1], payload[:-2], payload[1:],
        payload + " ", " " + payload, payload + "\n", payload + "\r\n", payload + "/",
        payload[:8] + "\n" + payload[8:], payload[:8] + " " + payload[8:],
        payload[:8] + "=" + payload[9:], payload[:8] + "-" + payload[9:],
        payload[:8] + "_" + payload[9:], payload[:8] + "." + payload[9:],
        payload[:8] + "\u00e9" + payload[9:], payload[:8] + "\u0661" + payload[9:],
        payload.replace("h", "%68"), padded.replace("=", "%3D"), payload + "?a=b", payload + "#a",
        payload.lower(), payload.upper(), payload.swapcase(), RECORD, "\U0001f4de", "Köln",
    ]
    return [*(prefix + payload for prefix in prefixes), "", " ", "screenpop", "\n",
            *("screenpop:" + payload for payload in payloads)]


def encodings():
    """Bytes that are UTF-8, and each kind that is not, inside the page of a record."""
    pieces = """
        7f c280 dfbf e0a080 ed9fbf ee8080 efbfbe efbfbf efb790 f0908080 f48fbfbf efbbbf e280a8
        80 bf c080 c1bf c2 c241 e08080 e09fbf e282 e28241 eda080 edbfbf eda0bdedb39e f0808080
        f08fbfbf f09f93 f09f9341 f4908080 f5808080 f888808080 fe ff""".split()
    record = RECORD.encode()
    return [*(make_link(record.replace(b"test/", b"test/" + bytes.fromhex(piece)))
              for piece in pieces),
            make_link(b"\xef\xbb\xbf" + record), make_link(record.decode().encode("utf-16")),
            make_link(record.decode().encode("utf-16-le")), make_link(b"\0" + record),
            make_link(record + b"\0"), make_link(record[:-2] + b"\0" + record[-2:])]


def documents():
    """Documents that are JSON, and others."""
    texts = [
        "", " ", "{", "}", "{}", "[", "]", "[]", " [] ", "[1]", "[{}]", f"[{RECORD}]", "[[]]",
        "[,]", "[]]", "[1,]", "null", "true", "false", "0", "-1.5e3", '""', '"' + PAGE + '"', "nul",
        "NaN", RECORD * 2, RECORD + ",", RECORD + "x", RECORD + " \t\r\n", " \t\r\n" + RECORD,
        "\u00a0" + RECORD, "\f" + RECORD, "\v" + RECORD, "//\n" + RECORD, "/**/" + RECORD,
        RECORD[:-1], RECORD[1:], RECORD[:-1] + ",}", RECORD.replace('"', "'"),
        RECORD.replace('"WebPage"', "WebPage"), RECORD.replace(":", "=", 1),
    ]
    members = [
        '"a":"1e99999999999"', '"a":' + "9" * 400, '"a":0.' + "0" * 400 + "1",
        r'"a":"\ud83d\udcde"', r'"a":"\uD83D\uDCDE"', r'"a":"\ud83d"', r'"a":"\udcde"',
        r'"a":"\udcde\ud83d"', r'"a":"\ud83d\ud83d\udcde"', r'"a":"\ud83dx"', r'"a":"\ud83d\n"',
        r'"a":"\\ud83d"', r'"a":"\\\ud83d"', r'"\ud83d":1', r'"a":"\ud83d","a":1', r'"a":"\u0000"',
        r'"a":"\u00"', r'"a":"\u00g0"', r'"a":"\U0041"', r'"a":"\x41"', r'"a":"\a"',
        r'"a":"\/\b\f"',
        '"a":"\t"', '"a":"\n"', '"a":"\0"', '"a":"\x1f"', '"a":"\x7f"', '"a":"\u2028"',
        '"a":tru', '"a":TRUE', '"a":undefined', '"a":', '"a"', '"":""', "1:2", '"a":1 "b":2',
        '"a":1,,"b":2', '"__proto__":{"WebPage":7}', '"a":"[[{{"', r'"a":"\"[{"',
    ]
    with open(DATA + "/json_numbers.tsv", encoding="ascii") as rows:
        members += ['"a":' + json.loads(row.split("\t")[0]) for row in rows]
    texts += [RECORD.replace("{", "{" + member + ",", 1) for member in members]
    texts += ['{"a":' * levels + "1" + "}" * levels for levels in (511, 512, 513)]
    texts += ["[" * levels + "]" * levels for levels in (512, 513, 100_000)]
    texts += [RECORD[:-1] + ',"a":' + "[" * levels + "]" * levels + "}" for levels in (511, 512)]
    return [make_link(text) for text in texts]


def records():
    """Records whose members are of all types."""
    values = [None, True, False, 0, 7.5, "", " ", [], [PAGE], {}, {"WebPage": PAGE}, PAGE]
    extras = [
        {"ScriptType": "CSD"}, {"ScriptType": "other"}, {"ScriptType": 7},
        {"CallFields": {"a": "b"}},
        {"CallFields": {"a": 1}}, {"CallFields": []}, {"RecognitionFields": {}},
        {"CSDFileName": "C:\\a.csd"}, {"CSDParams": None}, {"AutoExecute": True}, {"x": "Köln ☃ 📞"},
    ]
    texts = [
        '{"webpage":"%s"}', '{"WEBPAGE":"%s"}', '{"WebPage ":"%s"}', '{"Web\\u0050age":"%s"}',
        '{"a":{"WebPage":"%s"}}', '{"a.WebPage":"%s"}', '{"WebPage":7,"WebPage":"%s"}',
        '{"WebPage":"%s","WebPage":7}', '{"WebPage":"%s","WebPage":null}',
        '{"__proto__":{"WebPage":"%s"}}', '{"constructor":{"WebPage":"%s"}}',
    ]
    return [*(make_link({"WebPage": value}) for value in values),
            *(page_link(PAGE, **extra) for extra in extras),
            *(make_link(text % PAGE) for text in texts)]


def pages():
    """Pages that form a URL and others, with and without a scheme."""
    texts = [
        "foo", "/etc/passwd", "//page.test/", "?a", "#a", ":", "::", "1a:b", "-a:b", "+a:b", "a:",
        "a:b", "A1+-.:b", "a_b:c", "a%41:b", "[::1]:80", "tel:+31201234567", "mailto:a@page.test",
        "HTTPS://PAGE.TEST/", "https:", "https://", "https://page.test/%", "https://page.test/%4",
        "https://page.test/%4g", "https://page.test/%41", "https://page.test/%c3%bC",
        "https://page.test/%%4141",
        "https://page.test/%00", "https://page.test/a b", "https://page.test/%20",
        "https://page.test/#a#b", "https://page.test/#%23", "https://page.test/ü",
        "https://köln.test/", "https://page.test/\U0001f4de", "https://page.test/a\nLog x",
        "https://page.test/a\rb", "https://page.test/\tb", "https://page.test/\0", "\0", "\n",
        "https://page.test/a\x1b[1mb", "https://page.test/$HOME;`id`", "https://page.test/$(id)'&'",
        "https://page.test/a|b", "https://page.test/{a}", "https://page.test/a\\b",
        "https://page.test/^", 'https://page.test/"', "https://page.test/<a>",
        "https://page.test/[a]", "https://[::1]/", "https://a:b@page.test:99999/;c=d?e=f/?g",
        "https://page.test/\u2028", "\u212ahttps://page.test/", "javascript:alert(1)",
        "https://page.test/?a[]=1#[b]", "https://u[1]@[::1]:80/", "https://[a]b]/", "https://]/",
        "https://[/", "https://x[::1]/", "https://[][:]", "https://u@v@[:]:[:]?", "https:/[a]",
        "tel:#1", "a:b/c#d", "a:/b#c", "a:[#]",
        "data:,a", page_link(PAGE), "https://page.test/" + "x" * 60_000,
    ]
    with open(f"{DATA}/nsurl.tsv", encoding="utf-8") as file:
        rows = [json.loads(line.split("\t")[0]) for line in file]
    # All kinds of rows, and no file, which is not for the handler of a scheme.
    texts += [text for text in rows[::6] if not text.lower().startswith("file:")]
    return [page_link(text, "screenpop:") for text in texts]


def large():
    """Links of the sizes that the bus carries."""
    return [page_link(PAGE, Note="x" * size) for size in (100_000, 1_000_000)]


def all_links():
    return [*forms(), *encodings(), *documents(), *records(), *pages(), *large()]
