"""Every source is listed in its folder's CMakeLists.txt, and every such folder in the one above.

A test that is not listed is never run, a source that is not listed never compiled.
"""

import re

import tree


def words(path):
    return set(re.findall(r"[\w./-]+", re.sub(r"#.*", "", tree.text_of(path))))


def owner(folder):
    """The nearest CMakeLists.txt from a folder upward."""
    while not (tree.ROOT / folder / "CMakeLists.txt").is_file():
        folder = folder.parent
    return folder


def unlisted_sources():
    for path in tree.sources(".cpp"):
        folder = owner(path.parent)
        listing = folder / "CMakeLists.txt"
        if str(path.relative_to(folder)) not in words(listing):
            yield f"{path}: not listed in {listing}"


def unlisted_folders():
    for folder in {owner(path.parent) for path in tree.sources(".cpp", ".h")}:
        if folder == folder.parent:
            continue
        above = owner(folder.parent)
        if str(folder.relative_to(above)) not in words(above / "CMakeLists.txt"):
            yield f"{folder}: not added in {above / 'CMakeLists.txt'}"


tree.report([*unlisted_sources(), *sorted(unlisted_folders())])
