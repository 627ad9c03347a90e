"""Every test that the documents name as `Suite.Test` exists."""

import re

import tree

TEST = re.compile(r"\b(?:TEST|TEST_F|TEST_P|RC_GTEST_PROP)\(\s*(\w+),\s*(\w+)")
NAMED = re.compile(r"`([A-Z]\w*)\.([A-Z]\w*)`")

known = set()
for path in tree.sources(".cpp", folders=("tests",)):
    known.update(".".join(names) for names in TEST.findall(tree.text_of(path)))

findings = []
for path in tree.sources(".md", folders=("docs",)):
    for names in NAMED.findall(tree.text_of(path)):
        if ".".join(names) not in known:
            findings.append(f"{path}: there is no test {'.'.join(names)}")
tree.report(findings)
