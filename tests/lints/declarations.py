"""Names that headers declare, read by following braces. Knows as much C++ as platform/ uses."""

import re

COMMENT_OR_TEXT = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\])*"|^\s*#[^\n]*', re.DOTALL | re.MULTILINE)
TYPE = re.compile(r"^(?:enum\s+class|enum|class|struct|union)\s+(\w+)(.*)$", re.DOTALL)
ALIAS = re.compile(r"^using\s+(\w+)\s*=")
CONSTANT = re.compile(r"^(?:static\s+)?(?:inline\s+)?constexpr\s+[\w:<>]+\s+(\w+)\s*(?:=.*)?$", re.DOTALL)
STATIC_DATA = re.compile(r"^static\s+const\s+\w+\s+(\w+)$")
CALL = re.compile(r"(~?\w+|operator\s*[^\s(]+|operator\s+[\w:\s]+\*?)\s*\($")
PREFIX = re.compile(
    r"^(?:\[\[\w+(?:\([^)]*\))?\]\]\s*|template\s*<[^>]*>\s*|(?:public|protected|private)\s*:(?!:)\s*)+"
)


def function_name(statement):
    """The name of the function that a statement declares, or None."""
    head = statement.split("(")[0] + "("
    if "(" not in statement or "=" in head.replace("operator=", ""):
        return None
    if "operator()" in statement.replace(" ", ""):
        return "operator()"
    found = CALL.search(head)
    return found.group(1).strip() if found else None


class Reader:
    """Collects `Class::name` and plain names, without `mor::`. What is private, a friend or only named is
    no declaration; data members and enumerators belong to their type."""

    def __init__(self, text):
        self.names = []
        self.text = COMMENT_OR_TEXT.sub(" ", text)
        self.scopes = []  # (kind, name, is the part being read visible)

    def visible(self):
        return all(scope[2] for scope in self.scopes)

    def qualified(self, name):
        return "::".join([scope[1] for scope in self.scopes if scope[1] not in ("", "mor")] + [name])

    def add(self, name):
        owner = self.scopes[-1][1] if self.scopes else ""
        if name in (owner, "~" + owner, "operator="):
            return  # making, copying and ending an object comes with its class
        if self.visible() and self.qualified(name) not in self.names:
            self.names.append(self.qualified(name))

    def access(self, statement):
        for word in re.findall(r"\b(public|protected|private)\s*:(?!:)", statement):
            kind, name, _ = self.scopes[-1]
            self.scopes[-1] = (kind, name, word != "private")

    def statement(self, text, opens):
        """Takes one statement; answers the scope that its brace opens."""
        self.access(text)
        text = PREFIX.sub("", " ".join(text.split()))
        if text.startswith("namespace"):
            return ("namespace", text.split()[-1] if " " in text else "", True)
        if text.startswith(("friend", "typedef")) or not text:
            return ("body", "", False)
        named = TYPE.match(text)
        if named:
            if not opens:
                return ("body", "", False)  # named only
            self.add(named.group(1))
            kind = "body" if text.startswith("enum") else "type"
            return (kind, named.group(1), not (text.startswith("class ")) and kind == "type")
        plain = ALIAS.match(text) or CONSTANT.match(text) or STATIC_DATA.match(text)
        name = plain.group(1) if plain else function_name(text)
        if name:
            self.add(name)
        return ("body", "", False)

    def read(self):
        start = 0
        for at, char in enumerate(self.text):
            if char == "{":
                inside = bool(self.scopes) and self.scopes[-1][0] == "body"
                scope = ("body", "", False) if inside else self.statement(self.text[start:at], True)
                self.scopes.append(scope)
            elif char == "}":
                self.scopes.pop()
            elif char == ";":
                if not (self.scopes and self.scopes[-1][0] == "body"):
                    self.statement(self.text[start:at], False)
            else:
                continue
            start = at + 1
        return self.names


def declared(text):
    """The names that a header declares, in its order; overloads once."""
    return Reader(text).read()
