"""What every command prints with --json is what docs/schemas say of it, and so are its errors.

    json_schemas.py MORADMIN
"""

import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

import tree

try:
    import jsonschema
except ImportError:
    tree.skip("Python's jsonschema is not installed")

# Each on the sample drawings, in this order.
CALLS = """
new fresh.dxf
new dry.dxf --dry-run
put floor_plan.dxf /cfg/user/x '(1 2 (3 . nil))'
put floor_plan.dxf /cfg/title --string 'a "text"'
put floor_plan.dxf /cfg/scale 0.5 --dry-run
put floor_plan.dxf /cfg/scale 0.02
mkdir floor_plan.dxf /cfg/e/f
rmdir floor_plan.dxf /cfg/e/f
info floor_plan.dxf site_plan.dxf fresh.dxf cut.dxf
info floor_plan.dxf --in SITE
cat floor_plan.dxf '/cfg/*'
ls floor_plan.dxf /cfg /
ls -R floor_plan.dxf site_plan.dxf
tree floor_plan.dxf
dir floor_plan.dxf /cfg -R
find floor_plan.dxf '/**'
find floor_plan.dxf '/**' -type d
df floor_plan.dxf fresh.dxf
dump floor_plan.dxf
dump floor_plan.dxf fresh.dxf
cp floor_plan.dxf /cfg/scale /cfg/scale2
cp floor_plan.dxf:/cfg site_plan.dxf:/copied
mv floor_plan.dxf:/cfg/scale2 site_plan.dxf:/copied/moved
diff floor_plan.dxf site_plan.dxf
export floor_plan.dxf:/cfg values
import values fresh.dxf:/in
rm -r fresh.dxf /in/user
run fresh.dxf -c 'put /a/x 1; ls; cat /a/x; diff; rm /a/x'
load fresh.dxf store.json
check floor_plan.dxf cut.dxf broken.dxf
verify floor_plan.dxf cut.dxf
repair broken.dxf
repair floor_plan.dxf --library
xrefs floor_plan.dxf lost.dxf
layers floor_plan.dxf --all
layers floor_plan.dxf --in SITE
blocks floor_plan.dxf --all
entities floor_plan.dxf --all
entities floor_plan.dxf --deep
entities floor_plan.dxf --in SITE --world
entities floor_plan.dxf --count
entity floor_plan.dxf 49
grep . floor_plan.dxf
header floor_plan.dxf
dict floor_plan.dxf
dict floor_plan.dxf /ACAD_LAYOUT/Model
xdata floor_plan.dxf --app MOR_ATTRIBUTES
point floor_plan.dxf --in SITE 1 2
matrix floor_plan.dxf --in SITE
draw floor_plan.dxf -o floor_plan.svg
draw lost.dxf -o lost.svg
layouts floor_plan.dxf site_plan.dxf
view floor_plan.dxf -o floor_plan.html
wipe fresh.dxf --yes --all
help
help put
--version
"""

ERRORS = """
nosuch
cat floor_plan.dxf
cat floor_plan.dxf /cfg/none
cat none.dxf /cfg/x
ls none.dxf floor_plan.dxf
put floor_plan.dxf /cfg/x bare
new floor_plan.dxf
run floor_plan.dxf -c 'lst'
diff floor_plan.dxf none.dxf
"""

WITHOUT_JSON = {"shell"}

program = os.path.abspath(sys.argv[1])
schemas = {path.stem: json.loads(path.read_text()) for path in (tree.ROOT / "docs/schemas").glob("*.json")}
schemas["dump"] = json.loads(tree.text_of("docs/dump.schema.json"))
findings = []
seen = set()


def objects(text):
    decoder = json.JSONDecoder()
    at = 0
    while text[at:].strip():
        at += len(text[at:]) - len(text[at:].lstrip())
        item, at = decoder.raw_decode(text, at)
        yield item


def validate(call, name, item):
    seen.add(name)
    for error in jsonschema.Draft202012Validator(schemas[name]).iter_errors(item):
        findings.append(f"{call}: {error.json_path}: {error.message[:200]}")


with tempfile.TemporaryDirectory() as folder:

    def moradmin(line):
        return subprocess.run(f"'{program}' {line}", shell=True, cwd=folder, capture_output=True, text=True)

    for name in ("floor_plan.dxf", "site_plan.dxf"):
        shutil.copy(tree.ROOT / "samples" / name, folder)
    base = pathlib.Path(folder)
    moradmin("put site_plan.dxf /cfg/a/x 1 -o broken.dxf")
    (base / "store.json").write_text(moradmin("dump broken.dxf").stdout)
    broken = (base / "broken.dxf").read_text()
    (base / "broken.dxf").write_text(broken.replace("MOR_DWGFILES\n 70", "MOR_DWGFILEZ\n 70").replace("^a\n1000\n", "^a\n1000\nF", 1))
    plan = (base / "floor_plan.dxf").read_text()
    (base / "lost.dxf").write_text(plan.replace("site_plan.dxf", "lost_plan.dxf"))
    (base / "cut.dxf").write_text(plan[: len(plan) // 2])
    for call in CALLS.strip().splitlines():
        run = moradmin(call + " --json")
        count = 0
        for item in objects(run.stdout):
            count += 1
            validate(call, item["command"], item)
        if count == 0 and not call.startswith("diff"):
            findings.append(f"{call}: nothing was printed; {run.stderr}")
        for item in objects(run.stderr):
            validate(call, "note" if "note" in item else "error", item)
    for call in ERRORS.strip().splitlines():
        run = moradmin(call + " --json")
        if run.returncode == 0:
            findings.append(f"{call}: does not fail")
        for item in objects(run.stderr):
            if "note" in item:
                validate(call, "note", item)
                continue
            validate(call, "error", item)
            if "drawing" not in item or item["error"]["code"] != run.returncode:
                findings.append(f"{call}: the error tells another exit code")
    listing = moradmin("help").stdout.split("Commands\n")[1].split("\n\n")[0]
    commands = {row.split()[0] for row in listing.splitlines() if row.startswith("  ") and row[2] != " "}

for name in sorted(commands - WITHOUT_JSON - seen):
    findings.append(f"{name}: its JSON was not looked at")
for name in sorted(set(schemas) - seen):
    findings.append(f"docs/schemas/{name}.json: nothing was held against it")
tree.report(findings)
