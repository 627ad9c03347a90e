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
}
# The owner of the module-wide lists, and the guard that switches view and file system together.
LOOKS_UPWARD = {
    "frame/module.cpp": {"space", "dwgfs"},
    "space/global_view_guard.cpp": {"dwgfs"},
}
# host.h answers in the types of result.h.
HOST_HEADERS = {"host/host.h", "host/faults.h", "host/result.h"}

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.MULTILINE)


def check(path):
    folder = path.parts[0]
    allowed = MAY_INCLUDE.get(folder, set(tree.FOLDERS))
    allowed = allowed | LOOKS_UPWARD.get(str(path), set())
    for header in INCLUDE.findall(tree.text_of(path)):
        target = header.split("/")[0]
        if not (tree.ROOT / header).is_file():
            yield f"{path}: \"{header}\" is no path from the top of the checkout"
        elif target not in allowed:
            yield f"{path}: {folder}/ may not include {header}"
        elif target == "host" and folder != "host" and header not in HOST_HEADERS:
            yield f"{path}: {header} is the host's own; host/host.h and host/faults.h are its face"


tree.report([f for path in tree.sources(".h", ".cpp") for f in check(path)])
