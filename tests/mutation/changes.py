"""The small changes of a C++ source that its tests should notice: `changes_of` makes them."""

import re
import typing


class Change(typing.NamedTuple):
    """Characters `start` to `end` of a file become `text`."""
    file: str
    start: int
    end: int
    text: str
    kind: str

    def apply(self, source):
        return source[:self.start] + self.text + source[self.end:]

    def lines(self, source):
        """The changed lines before and after, as one text each."""
        first = source.rfind("\n", 0, self.start) + 1
        last = source.find("\n", self.end)
        before = source[first:last]
        after = source[first:self.start] + self.text + source[self.end:last]
        return " ".join(before.split()), " ".join(after.split())


# What is no code. In strings and characters, the delimiters alone are kept.
NO_CODE = re.compile(r"""
    //[^\n]* | /\*.*?\*/ | ^\#[^\n]* | ^\s*static_assert[^;]*; | \[\[[^\]]*\]\] |
    R"\((?:.*?)\)" | "(?:[^"\\\n]|\\.)*" | (?<![0-9])'(?:[^'\\\n]|\\.)+'
    """, re.VERBOSE | re.DOTALL | re.MULTILINE)


def blank(match):
    text = match[0]
    quote = text[0] if text[0] in "\"'" else " "
    inside = re.sub(r"[^\n]", " ", text[1:-1])
    return quote + inside + quote if len(text) > 1 else " "


def code_of(source):
    """The source with blanks for all that is no code, each character in its place."""
    return NO_CODE.sub(blank, source)


OTHER = {
    "<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&",
    "+": "-", "-": "+", "*": "/", "/": "*", "%": "/", "+=": "-=", "-=": "+=", "|=": "&=",
    "<<": ">>", ">>": "<<", "true": "false", "false": "true", "++": "--",
}
# (kind, pattern, what stands for the first group)
REPLACEMENTS = [
    ("comparison", r" (<=|>=|==|!=|<|>) ", lambda m: OTHER[m[1]]),
    ("logic", r" (&&|\|\|) ", lambda m: OTHER[m[1]]),
    ("arithmetic", r" (\+=|-=|\|=|<<|>>|\+|-|\*|/|%) (?!\n)", lambda m: OTHER[m[1]]),
    # What is started gets none of our descriptors in any case, and O_RDONLY is 0.
    ("flag", r"\b(\w+ \| (?!O_CLOEXEC)\w+)\b", lambda m: m[1].split(" | ")[0]),
    ("flag", r"\b((?!O_RDONLY|O_CLOEXEC)\w+ \| \w+)\b", lambda m: m[1].split(" | ")[1]),
    ("constant", r"(?<![\w.'])(\d[\d']*|0x[0-9A-Fa-f]+)(?=[uULl]*\b)(?!\.\d)",
     lambda m: str(int(m[1].replace("'", ""), 0) + 1)),
    ("constant", r"\b(true|false)\b(?! *\{)", lambda m: OTHER[m[1]]),
    ("count", r"(\+\+)\w", lambda m: "--"),
    ("negation", r"(?<![=\w])(!)(?=[\w(*:])", lambda m: ""),
    # A view of the caller's text in place of a copy, and references to what the caller owns.
    ("capture", r"\[(?:\w+, )?\w+( = std::string\(\w+\))", lambda m: ""),
    ("capture", r"[\[,]\s*\w+( = std::string\(\w+\)),", lambda m: ""),
    ("capture", r"\[(?:[^\[\]]*, )?(?<!&)(\w+)\](?= ?[({])", lambda m: "&" + m[1]),
    ("capture", r"[\[,]\s+(convert = std::move\(convert\))", lambda m: "&convert"),
    ("delimiter", r"(?<=[(, ])(?<!view )(delimiter)(?=[,)\]])", lambda m: '"."'),
    ("delimiter", r"(?<!string )(keyPathDelimiter)\b(?! =)", lambda m: '"."'),
]


def replacements(code):
    for kind, pattern, other in REPLACEMENTS:
        for match in re.finditer(pattern, code):
            yield match.start(1), match.end(1), other(match), kind


def literals(source, file):
    """Texts and characters. The long texts are compared with files, and need no changes here."""
    if file.endswith("ConsoleTexts.cpp"):
        return
    for match in NO_CODE.finditer(source):
        text = match[0]
        if text.startswith('"') and not source[:match.start()].endswith("#include "):
            yield match.end() - 1, match.end() - 1, "\\t", "constant"
        elif text.startswith("'"):
            other = chr(ord(text[1]) + 1) if len(text) == 3 and text[1].isalnum() else "\\x01"
            yield match.start(), match.end(), f"'{other}'", "constant"


def closing(code, start):
    """Where the bracket is closed that is opened at `start`."""
    depth = 0
    for i in range(start, len(code)):
        depth += (code[i] in "([{") - (code[i] in ")]}")
        if depth == 0:
            return i
    return len(code)


def negated_conditions(code):
    """Those that no smaller change negates, of branches that are not dropped as a whole."""
    for match in re.finditer(r"\b(?:if|while) \(", code):
        start, end = match.end(), closing(code, match.end() - 1)
        condition = code[start:end]
        if code[end + 1:end + 3] == " {" and not re.search(r"^!|[;=]|\w\* ", condition):
            yield start, end, None, "negation"


def dropped_statements(code):
    """Whole statements that are no declaration and no result."""
    starts = r"(?<=[;{}:\n])\n( +)(?=(?:::)?[a-z_*+(\-][^\n]*)"
    for match in re.finditer(starts, code):
        start = match.end()
        if not code[:match.start()].rstrip().endswith((";", "{", "}", ":")):
            continue
        end = start
        while end < len(code) and code[end] not in ";}":
            end = closing(code, end) + 1 if code[end] in "([{" else end + 1
        statement = code[start:end + 1]
        if not statement.endswith(";") or statement.count("\n") > 8:
            continue
        if re.match(r"(?:(?:::)?[\w.:>*\[\]()-]+(?:\(|(?: [+|-]?= ))|\+\+|--|continue;|break;|if \()",
                    statement) and not re.match(r"(?:return|else|for|while|switch|case)\b", statement):
            yield start, end + 1, ";", "dropped"


def swapped_arguments(code):
    argument = r"([\w:.*&>\[\]+-]+(?:\(\))?)"
    for match in re.finditer(r"(?<=[\w>]\()" + argument + ", " + argument + r"(?=[,)])", code):
        if match[1] != match[2]:
            yield match.start(), match.end(), f"{match[2]}, {match[1]}", "swapped"


def changes_of(file, source):
    """All changes of a file, in the order of their places. The same change is made once."""
    # How much memory is reserved changes the speed alone, and room to spare changes nothing.
    code = re.sub(r"\n[^\n]*(?:\.reserve\(|\bchar \w+\[\d)[^\n]*",
                  lambda m: "\n" + " " * (len(m[0]) - 1), code_of(source))
    found = {}
    for start, end, text, kind in [*replacements(code), *literals(source, file),
                                   *negated_conditions(code), *dropped_statements(code),
                                   *swapped_arguments(code)]:
        if code[start:end].strip() == "" and kind not in ("constant",):
            continue
        if text is None:
            text = f"!({source[start:end]})"
        elif kind in ("swapped", "flag"):
            text = source[start:end].replace(source[start:end], text)
        found.setdefault((start, end, text), Change(file, start, end, text, kind))
    return [found[key] for key in sorted(found)]
