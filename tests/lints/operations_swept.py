"""Every public operation of the file system stands in the table of the fault sweep.

Constructors, assignments and the destructor have nothing to fail.
"""

import re

import tree

HEADER = "dwgfs/dwg_file_system.h"
SWEEP = "tests/dwgfs/fault_sweep_test.cpp"


def public_operations():
    text = re.sub(r"//.*", "", tree.text_of(HEADER))
    body = text[text.index("class CMORCadDwgFileSystem") :]
    section = body[body.index("public:") : body.index("protected:")]
    names = re.findall(r"[\s*&](~?\w+)\(", section)
    return {name for name in names if "CMORCadDwgFileSystem" not in name and name != "operator"}


def swept():
    return set(re.findall(r'\{"(\w+)",\s*Layer::', tree.text_of(SWEEP)))


missing = sorted(public_operations() - swept())
unknown = sorted(swept() - public_operations())
tree.report(
    [f"{SWEEP}: {name} of {HEADER} is left out" for name in missing]
    + [f"{SWEEP}: {name} is no public operation of {HEADER}" for name in unknown]
)
