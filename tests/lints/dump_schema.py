"""What `moradmin dump` prints is what docs/dump.schema.json says.

    dump_schema.py MORADMIN
"""

import json
import pathlib
import subprocess
import sys
import tempfile

import tree

try:
    import jsonschema
except ImportError:
    tree.skip("Python's jsonschema is not installed")

VALUES = ('42', '-1.5e300', '"a \\"b\\" \u00c4"', '(1 (2.5 "x" nil) . 3)', '(handent "1")', '((1 . 2))')

with tempfile.TemporaryDirectory() as folder:
    drawing = pathlib.Path(folder) / "drawing.dxf"

    def moradmin(*words):
        run = subprocess.run([sys.argv[1], *words], capture_output=True, check=True)
        return run.stdout

    moradmin("new", drawing)
    for number, value in enumerate(VALUES):
        moradmin("put", drawing, f"/types/sub/v{number}", value)
    dump = json.loads(moradmin("dump", drawing))

schema = json.loads(tree.text_of("docs/dump.schema.json"))
validator = jsonschema.Draft202012Validator(schema)
findings = [error.message for error in validator.iter_errors(dump)]
stored = dump["entries"][0]["entries"][0]["entries"]
if len(stored) != len(VALUES):
    findings.append("the dump does not hold what was stored")
# The schema must be able to refuse.
del stored[0]["lisp"]
if validator.is_valid(dump):
    findings.append("the schema takes a file without its value")
tree.report(findings)
