"""Judges pairs of drawings, "before TAB after" a line on stdin: whether an independent reader finds
more errors or makes more repairs in the second one, and whether it sees the new records."""
import logging
import sys

from ezdxf import recover

logging.disable(logging.CRITICAL)


def audit(path):
    """The errors and repairs in a drawing, or why it is not read at all."""
    try:
        drawing, auditor = recover.readfile(path)
    except Exception as error:  # whatever the reader raises counts as "not read"
        return None, type(error).__name__, []
    found = sorted(str(e.message) for e in auditor.errors + auditor.fixes)
    return drawing, "%d errors, %d repairs" % (len(auditor.errors), len(auditor.fixes)), found


def holds_store(drawing):
    inserts = drawing.modelspace().query('INSERT[name=="MOR_DWGFILES"]')
    return (
        "MOR_CONTROL_LAYER" in drawing.layers
        and "MOR_DWGFILES" in drawing.blocks
        and len(inserts) == 3
        and all(insert.has_xdata("MOR_ATTRIBUTES") for insert in inserts)
    )


for line in sys.stdin:
    before, after = line.rstrip("\n").split("\t")
    old, old_count, old_found = audit(before)
    new, new_count, new_found = audit(after)
    more = [text for text in new_found if text not in old_found]
    good = old_count == new_count and (new is None or holds_store(new))
    print("%s\t%s\t%s -> %s\t%s" % ("good" if good else "bad", before, old_count, new_count, more))
