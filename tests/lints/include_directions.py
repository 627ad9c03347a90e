"""Folders include only what lies below them, and only headers that exist.

The library meets the host at link time only; tests, tools and benchmarks reach it through the
headers named below.
"""

import re

import tree

MAY_INCLUDE = {
    "platform": {"platform"},
    "frame": {"platform", "frame"},
    "space": {"platform", "frame", "space"},
    "xref": {"platform", "frame", "space", "xref"},
    "dwgfs": {"platform", "frame", "space", "dwgfs"},
    "host": {"platform", "host"},
    "host/text": {"platform", "host", "host/text"},
    "host/lisp": {"platform", "host", "host/lisp", "host/text"},
    "host/drawing": {"platform", "host", "host/drawing", "host/lisp", "host/text"},
    "host/dxf": {"platform", "host", "host/drawing", "host/dxf", "host/text"},
    "host/dwg": {"platform", "host", "host/drawing", "host/dwg", "host/text"},
    "host/documents": {"platform", "host", "host/documents", "host/drawing", "host/lisp", "host/text"},
    "host/calls": {
        *("platform", "host", "host/calls", "host/documents", "host/drawing", "host/lisp"),
        "host/text",
    },
}
# The owner of the module-wide lists; the guard that switches view and file system together; who
# holds an entity that waits for the end of its block; who knows every form of drawing.
LOOKS_UPWARD = {
    "frame/module.cpp": {"space", "dwgfs"},
    "space/global_view_guard.cpp": {"dwgfs"},
    "host/documents/document.cpp": {"host/calls"},
    "host/documents/open_drawing.cpp": {"host/dxf", "host/dwg"},
}
# Tests of what no small drawing reaches: sums over any bytes, and parts of a file without the others.
LOOKS_INSIDE = {
    "tests/host/dwg_sums_test.cpp",
    *(f"tests/fuzz/{name}.cpp" for name in ("dwg_object", "dwg_parts", "unpack")),
}
# What the host shows to tools, tests and benchmarks.
HOST_HEADERS = {
    f"host/{name}.h"
    for name in ("host", "command_line", "saving", "documents", "handles", "placement", "values", "records", "references", "counters")
    + ("faults", "result")
}

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.MULTILINE)


def folder_of(name):
    """The top folder of a path; of one in the host its room too."""
    parts = str(name).split("/")
    return "/".join(parts[:2]) if parts[0] == "host" and len(parts) > 2 else parts[0]


def check(path):
    folder = folder_of(path)
    allowed = MAY_INCLUDE.get(folder)
    allowed = allowed and allowed | LOOKS_UPWARD.get(str(path), set())
    for header in INCLUDE.findall(tree.text_of(path)):
        target = folder_of(header)
        if not (tree.ROOT / header).is_file():
            yield f"{path}: \"{header}\" is no path from the top of the checkout"
        elif allowed is not None and target not in allowed:
            yield f"{path}: {folder}/ may not include {header}"
        elif (
            target.startswith("host")
            and not folder.startswith("host")
            and str(path) not in LOOKS_INSIDE
            and header not in HOST_HEADERS
        ):
            yield f"{path}: {header} is the host's own; host/host.h and host/faults.h are its face"


tree.report([f for path in tree.sources(".h", ".cpp") for f in check(path)])
