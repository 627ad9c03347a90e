"""What the lints share: the files of the checkout and the way findings are reported."""

import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
LIBRARY = ("frame", "space", "xref", "dwgfs")
FOLDERS = ("platform", *LIBRARY, "host", "tools", "tests", "bench")


def sources(*suffixes, folders=FOLDERS):
    """The source files of these folders, relative to the checkout, in a fixed order."""
    found = []
    for folder in folders:
        for path in sorted((ROOT / folder).rglob("*")):
            if path.suffix in suffixes and path.is_file():
                found.append(path.relative_to(ROOT))
    return found


def tracked():
    """The files that git knows; every file of the source folders where there is no git."""
    git = subprocess.run(["git", "-C", ROOT, "ls-files", "-z"], capture_output=True, check=False)
    if git.returncode != 0:
        return sources(".h", ".cpp", ".py", ".txt")
    names = [name for name in git.stdout.decode().split("\0") if name]
    return [pathlib.Path(name) for name in names if (ROOT / name).is_file()]


def text_of(path):
    return (ROOT / path).read_text(encoding="utf-8", errors="replace")


def report(findings):
    """Ends the lint: one line for each finding, exit code 1 when there are any."""
    for finding in findings:
        print(finding)
    sys.exit(1 if findings else 0)


def skip(reason):
    """Ends the lint without a result; ctest shows it as skipped."""
    print("skipped:", reason)
    sys.exit(77)
