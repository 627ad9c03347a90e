"""docs/platform.md, the headers of platform/ and what the library takes from its host agree.

    platform_surface.py NM ARCHIVE...

ARCHIVE: the library's static libraries. What they leave undefined, but for what they define for one
another and what comes from the C++ runtime, must be declared in platform/, so that whoever brings
another host knows all that it has to define.
"""

import re
import subprocess
import sys

import declarations
import tree

PAGE = tree.ROOT / "docs" / "platform.md"
RUNTIME = re.compile(
    r"^(?:std::|__|_Unwind|_GLOBAL_OFFSET_TABLE_|operator (?:new|delete)"
    r"|(?:str|wcs|mem|wmem)\w+$|(?:vtable|typeinfo|typeinfo name) for (?:std::|__cxxabiv1::))"
)
OF_A_TYPE = re.compile(r"^(?:vtable|typeinfo|typeinfo name|VTT) for ")


def documented():
    """Names in the first cells of the page's tables, by header."""
    names = {}
    header = None
    for line in PAGE.read_text(encoding="utf-8").splitlines():
        if line.startswith("## "):
            found = re.search(r"`(\w+\.h)`", line)
            header = found.group(1) if found else None
        elif header and line.startswith("| `"):
            names.setdefault(header, []).extend(re.findall(r"`([^`]+)`", line.split("|")[1]))
    return names


def page_findings(page):
    for path in tree.sources(".h", folders=("platform",)):
        text = tree.text_of(path)
        listed = page.get(path.name, [])
        declared = declarations.declared(text)
        for name in declared:
            if name not in listed:
                yield f"{path}: {name} is not in docs/platform.md"
        for name in listed:
            opaque = re.search(rf"^class {re.escape(name)};", text, re.MULTILINE)
            if name not in declared and not opaque:
                yield f"docs/platform.md: {path} does not declare {name}"
    for header in page:
        if not (tree.ROOT / "platform" / header).is_file():
            yield f"docs/platform.md: there is no platform/{header}"


def symbols(nm, option, archives):
    run = subprocess.run([nm, "-C", option, *archives], capture_output=True, text=True, check=True)
    lines = (re.match(r"^[0-9a-f ]*\s(\w) (.+)$", line) for line in run.stdout.splitlines())
    return {line.group(2) for line in lines if line}


def plain(symbol):
    """`CMOREntity::Connect` for "CMOREntity::Connect(long const*)", the class for what comes with it."""
    name = OF_A_TYPE.sub("", symbol).replace("[abi:cxx11]", "")
    name = name.replace("operator()", "operator\0").split("(")[0].replace("\0", "()")
    name = re.sub(r"^mor::(?!host)", "", name)
    parts = name.split("::")
    if len(parts) > 1 and parts[-1] in (parts[-2], "~" + parts[-2], "operator="):
        parts.pop()
    return "::".join(parts)


def taken(nm, archives):
    """What the library takes from its host, as plain names."""
    undefined = symbols(nm, "--undefined-only", archives) - symbols(nm, "--defined-only", archives)
    return sorted({plain(symbol) for symbol in undefined if not RUNTIME.match(symbol)})


def main(nm, *archives):
    page = documented()
    known = {name for names in page.values() for name in names}
    used = taken(nm, archives)
    findings = list(page_findings(page))
    if "acdbEntMake" not in used:
        findings.append("the archives do not show what the library takes from its host")
    findings += [f"the library takes {name}, which is not in docs/platform.md" for name in used
                 if name not in known]
    tree.report(findings)


main(*sys.argv[1:])
