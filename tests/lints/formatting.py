"""All sources are formatted as .clang-format says. Releases of clang-format differ in what they
make of one style, so only that one counts with which the sources were formatted."""

import re
import shutil
import subprocess

import tree

RELEASE = "14"

program = shutil.which(f"clang-format-{RELEASE}") or shutil.which("clang-format")
if program is None:
    tree.skip("clang-format is not installed")
version = subprocess.run([program, "--version"], capture_output=True, text=True, check=True).stdout
found = re.search(r"version (\d+)", version)
if found is None or found.group(1) != RELEASE:
    tree.skip(f"clang-format {RELEASE} is needed, this is: {version.strip()}")

paths = [str(path) for path in tree.sources(".h", ".cpp")]
run = subprocess.run(
    [program, "--dry-run", "-Werror", *paths],
    cwd=tree.ROOT,
    capture_output=True,
    text=True,
    check=False,
)
lines = [line for line in run.stderr.splitlines() if "error:" in line]
tree.report(lines or ([run.stderr] if run.returncode != 0 else []))
