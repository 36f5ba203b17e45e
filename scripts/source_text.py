"""C++ sources as the checks of the house read them: without comments and texts, cut into classes and functions by
their braces. Rough, but right for code that clang-format has laid out."""
import re

COMMENTS_AND_TEXTS = re.compile(r'//[^\n]*|/\*.*?\*/|R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\'', re.DOTALL)
CLASS = re.compile(r"\b(?:class|struct|union)\b(?:\s+\[\[[^\]]*\]\])?\s+(?:\w+::)*(\w+)[^()=]*$")
# A brace that opens no function: of a namespace, an enumeration, an initialiser.
OTHER = re.compile(r"\b(?:namespace|enum|extern)\b[^()]*$|[=,(\[]\s*$|\breturn\s*$")
FUNCTION = re.compile(r"[\w~>\]=+\-*/!<]\s*\(.*\)", re.DOTALL)
# A method's declaration at its beginning: what it gives, then its name.
METHOD = re.compile(r"(?:\[\[\w+\]\]\s*|(?:virtual|static|explicit|inline|constexpr|friend|const)\s+)*"
                    r"(?:[\w:]+(?:<[^;{}()]*>)?(?:::\w+)?)(?:\s+const)?\s*[&*]*\s+[&*]*(~?\w+)\s*\(")


def blanked(text):
    """The same text, as many lines, with nothing in its comments and texts."""
    def instead(match):
        kind = match.group(0)
        return ('""' if kind[0] in "\"R'" else "") + "\n" * kind.count("\n")
    return COMMENTS_AND_TEXTS.sub(instead, re.sub(r"^\s*#(?:[^\n\\]|\\.)*", "", text.replace("\\\n", " \n"), flags=re.MULTILINE))


def switches(text):
    """Each switch of a source, as (line, what stands in its own braces and in none within)."""
    text = blanked(text)
    for match in re.finditer(r"\bswitch \(", text):
        depth, own = 0, []
        for c in text[text.find("{", match.end()):]:
            depth += {"{": 1, "}": -1}.get(c, 0)
            if depth == 0:
                break
            if depth == 1:
                own.append(c)
        yield text.count("\n", 0, match.start()) + 1, "".join(own)


class Piece:
    """A function with its lines, or a method's declaration in a class."""

    def __init__(self, line, heading, owner):
        self.line, self.heading, self.owner = line, heading, owner  # owner: name of the class, else None
        self.end = line
        self.has_body = False

    @property
    def lines(self):
        return self.end - self.line + 1

    @property
    def overrides(self):
        return bool(re.search(r"\boverride\b|\bfinal\b|\bfriend\b", self.heading))


def kind_of_brace(before, within):
    if CLASS.search(before):
        return "class"
    if OTHER.search(before) or not FUNCTION.search(before):
        return "other"
    return "function" if within in ("class", "file") else "other"


def pieces(text):
    """Functions with bodies, and declarations that stand in classes, of a whole source, as (kind, Piece)."""
    text, found, stack = blanked(text), [], []
    start = line = 1
    before = ""
    for at, c in enumerate(text):
        if c == "\n":
            line += 1
        if c not in "{};":
            if not before.strip():
                start = line
            before += c
            continue
        within, owner = next(((k, p.owner) for k, p in reversed(stack) if k != "namespace"), ("file", None))
        if c == "{":
            kind = kind_of_brace(before, within)
            if kind == "other" and re.search(r"\bnamespace\b|\bextern\b", before):
                kind = "namespace"
            if kind == "class":
                owner = CLASS.search(before).group(1)
            piece = Piece(start, " ".join(before.split()), owner if "class" in (kind, within) else None)
            stack.append((kind, piece))
            if kind == "function":
                piece.has_body = True
                found.append(piece)
        elif c == "}" and stack:
            stack.pop()[1].end = line
        elif c == ";" and within == "class" and "(" in before:
            found.append(Piece(start, " ".join(before.split()), owner))
        before = ""
    return found


def method_name(piece):
    """The name of a method that a piece in a class declares; None when it is none, a constructor, or an operator."""
    heading = re.sub(r"^(?:(?:public|private|protected|Q_SIGNALS|Q_OBJECT)\s*:?\s*)+", "", piece.heading)
    if piece.owner is None or re.search(r"\boperator\b|\busing\b|\btypedef\b|\(\*", heading.split("(")[0] + "("):
        return None
    match = METHOD.match(heading)
    return match.group(1) if match and match.group(1).lstrip("~") != piece.owner else None
