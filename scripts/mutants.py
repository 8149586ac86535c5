"""The mutants of a C++ source, for scripts/mutate: by its text, as clang-format leaves it."""

import re
from typing import NamedTuple

# Mutants that do the same as the original, and why.
URL, PROFILES = "core/support/Url.cc", "core/ChromeProfiles.cc"
MESSAGE = "core/ChromeSingletonMessage.cc"
EQUIVALENT = {
    ("core/Matcher.cc", "return true;"): "stands behind a switch over all kinds",
    ("core/Matcher.cc", "no hostKnown_ = true;"): "the host is worked out again, with the same result",
    ("core/Matcher.cc", "hostKnown_ = false;"): "the same",
    ("core/Matcher.cc", "return host_->size() >= name.size() && host_->ends_with(name) &&"):
        "a name as long as the host that it ends is the host, and has matched",
    (MESSAGE, "no case Kind::unexpected: break;"): "the last case goes on behind the switch anyway",
    (MESSAGE, "no break;"): "the same",
    (PROFILES, "std::int64_t value = 1;"): "from_chars sets it, or there is an error",
    (PROFILES, "std::int64_t value = -1;"): "the same",
    (URL, "unsigned number = 1;"): "the same",
    (URL, "unsigned number = -1;"): "the same",
    (URL, "return set.rfind(c) != std::string_view::npos;"): "is it there, wherever",
    (URL, 'address.rfind(\'%\') == std::string_view::npos && consistsOf(address, ":");'): "the same",
    (URL, "const std::size_t bracket = authority.find(']');"): "no host has two closing brackets",
    (URL, "if (colon == std::string_view::npos || (bracket != std::string_view::npos && colon <= bracket)) {"):
        "one place holds one character",
    (URL, 'colon != std::string_view::npos && colon <= text.find_first_of("/?#")) {'): "the same",
    (URL, "if (const std::size_t at = authority.rfind('@'); at != std::string_view::npos) {"):
        "of two, one is left over, and is allowed neither before nor behind the other",
    (URL, "const std::size_t end = std::min(rest.rfind('#'), rest.size());"): "the same",
    (URL, "const auto [end, error] = std::from_chars(port.data(), port.data() - port.size(), number);"):
        "the standard library stops at what is no digit, wherever the end is said to be",
}


class Mutant(NamedTuple):
    file: str
    line: int
    start: int
    end: int
    text: str  # in place of what stands from start to end
    changed: str  # the line, afterwards


def masked(text):
    """The same text with blanks for what is in quotes or comments, and for directives."""
    pattern = r'//[^\n]*|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\'|^#[^\n]*'

    def blank(match):
        length = len(match[0])
        return '"' + " " * (length - 2) + '"' if match[0][0] in "\"'" else " " * length

    return re.sub(pattern, blank, text, flags=re.MULTILINE)


def closing(code, at):
    """The place of the bracket that closes the one at `at`."""
    depth = 0
    for place in range(at, len(code)):
        depth += (code[place] in "([{") - (code[place] in ")]}")
        if depth == 0:
            return place
    raise ValueError(code[at:at + 40])


def before(code, at, stops):
    """Where the operand that ends at `at` begins."""
    depth, place = 0, at
    while place > 0:
        depth += (code[place - 1] in ")]}") - (code[place - 1] in "([{")
        ends = re.search(rf"(?:{stops}|[;,]|\breturn| = )$", code[:place][-8:])
        if depth < 0 or (depth == 0 and ends):
            break
        place -= 1
    return place + len(code[place:at]) - len(code[place:at].lstrip())


def behind(code, at):
    """Where the operand that begins at `at` ends."""
    depth, place = 0, at
    while True:
        depth += (code[place] in "([{") - (code[place] in ")]}")
        if depth < 0 or (depth == 0 and re.match(r"&&|\|\||[;,?]| : ", code[place:place + 3])):
            return place - len(code[at:place]) + len(code[at:place].rstrip())
        place += 1


SWAPS = ((r"==", "!="), (r"!=", "=="), (r" < ", " <= "), (r" > ", " >= "), (r"<=", "<"), (r">=", ">"),
         (r" < ", " >= "), (r" > ", " <= "), (r"&&", "||"), (r"\|\|", "&&"), (r" \+ ", " - "), (r" - ", " + "),
         (r"\+\+", "--"), (r"\btrue\b", "false"), (r"\bfalse\b", "true"), (r"\bprefix\b", "suffix"),
         (r"!(?=[\w(])", ""), (r"\bfind\b", "rfind"), (r"\brfind\b", "find"),
         (r"\bstarts_with\b", "ends_with"), (r"\bends_with\b", "starts_with"),
         (r"\ball_of\b", "any_of"), (r"\bany_of\b", "all_of"))


def changes(code, text):
    """Yields (start, end, replacement) for each mutant of a text and its masked form."""
    def negated(start, end):
        return start, end, f"!({text[start:end]})"

    for pattern, new in SWAPS:
        for match in re.finditer(pattern, code):
            yield *match.span(), new
    for match in re.finditer(r"(?<![\w.])(?:0x[0-9A-F]+|\d+)(?![\w.])", code):
        for value in int(match[0], 0) + 1, int(match[0], 0) - 1:
            yield *match.span(), str(value)
    for match in re.finditer(r"\b(if|while) (\()", code):
        end = closing(code, match.start(2))
        start = max(match.end(2), code.rfind(";", match.end(2), end) + 1)
        declared = re.match(r"\s*(?:const )?auto (\w+) =", code[start:end])
        if match[1] == "while":
            yield start, end, "false"
        elif declared:
            yield end, end, f"; !{declared[1]}"
        else:
            yield negated(start, end)
        body = re.match(r"\s*([^\s{][^;{}]*;)", code[end + 1:])
        if body:
            yield end + 1 + body.start(1), end + 1 + body.end(1), ";"
    for match in re.finditer(r"&&|\|\|", code):
        yield negated(match.end() + 1, behind(code, match.end()))
        start = before(code, match.start(), r"&&|\|\||[?:]")
        if not re.search(r"(?:&&|\|\|)\s*$", code[:start]):
            yield negated(start, match.start() - 1)
    for match in re.finditer(r"\s\? ", code):
        yield negated(before(code, match.start(), " : "), match.start())
    for match in re.finditer(r"\breturn (?!true;|false;)([^;{}]+);", code):
        yield negated(*match.span(1))
    for match in re.finditer(r"(?=[;{}:]\s*\n\s+((?!if|while)[^\s{}][^;{}]*;)$)", code, re.MULTILINE):
        yield *match.span(1), ";"


def mutants(file, text, begin, end):
    """Those of the text from begin to end, in their order."""
    for start, stop, new in sorted(set(changes(masked(text), text))):
        if begin <= start < end:
            head = text.rfind("\n", 0, start) + 1
            tail = text.index("\n", stop)
            changed = " ".join((text[head:start] + new + text[stop:tail]).split())
            if changed == ";":
                changed = "no " + " ".join(text[start:stop].split())
            yield Mutant(file, text.count("\n", 0, start) + 1, start, stop, new, changed)
