"""Words that files of the project do not carry: paths of one machine, numbers of tickets, notes to
oneself, and papers that a reader does not have."""

import re

import tree

PATTERNS = {
    "a path of one machine": r"(?<![\w./-])/(?:home|root|Users|w[o]rk|f[a]rm)/",
    "a ticket's number": r"\bi[s]sue #?\d+|\bPR #?\d+",
    "a paper that the reader does not have": r"\b[Ss]pecifi[c]ation\b|\bsp[e]c\.md|\bParts? \d+\.\d+",
    "a note to oneself": r"\bFI[X]ME\b|\bX[X]X\b|\bHA[C]K\b",
    "a note without the condition that ends it": r"\bTO[D]O\b(?!.*\b(?:when|once|until|unless)\b)",
}
PATTERN = re.compile("|".join(f"({pattern})" for pattern in PATTERNS.values()))
BINARY = {".dxf", ".png", ".ico"}


def check(path):
    for number, line in enumerate(tree.text_of(path).splitlines(), 1):
        for match in PATTERN.finditer(line):
            what = list(PATTERNS)[match.lastindex - 1]
            yield f"{path}:{number}: {what}: {match.group()}"


tree.report([f for path in tree.tracked() if path.suffix not in BINARY for f in check(path)])
