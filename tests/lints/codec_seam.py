"""What a drawing's form looks like is known to its codec alone, and no room of the host knows what
stands above the host.
"""

import re

import tree

# Lines and tags of DXF text; group codes spelled as text.
OF_THE_CODEC = re.compile(
    r'\b(Tag|TagList|DxfForm|DxfIndex|DxfCodec)\b'
    r'|"(SECTION|ENDSEC|ENDTAB|EOF)"'
)
# Bits and pages of DWG.
OF_THE_OTHER = re.compile(r"\b(BitReader|ObjectFrame|DwgFile|DwgCodec|DwgIndex)\b")
# Names of the file store.
OF_THE_STORE = re.compile(r"MOR_DWGFILES|MOR_CONTROL_LAYER|DWG_FILESYSTEM|\$INFO|\$ID\b")


def check(path):
    name = str(path)
    if not name.startswith("host/"):
        return
    for number, text in enumerate(tree.text_of(path).splitlines(), 1):
        code = text.split("//")[0]
        if name != "host/documents/open_drawing.cpp" and not name.startswith("host/dxf/"):
            for found in OF_THE_CODEC.finditer(code):
                yield f"{path}:{number}: {found.group(0)} belongs to host/dxf/"
        if name != "host/documents/open_drawing.cpp" and not name.startswith("host/dwg/"):
            for found in OF_THE_OTHER.finditer(code):
                yield f"{path}:{number}: {found.group(0)} belongs to host/dwg/"
        for found in OF_THE_STORE.finditer(text):
            yield f"{path}:{number}: {found.group(0)} is a name of the store, which the host does not know"


tree.report([f for path in tree.sources(".h", ".cpp") for f in check(path)])
