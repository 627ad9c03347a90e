"""The transcripts of the pages are what the program prints, each page in a copy of the sample drawings.

    tour.py MORADMIN            says where they differ
    tour.py MORADMIN --write    writes what it prints into the pages, to be read before it is kept
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

import tree

PAGES = ("README.md", "docs/tour.md", "docs/json.md")
PROMPT = "    $ "


def is_output(lines, at):
    """Whether a line belongs to an output; one that is empty does when another one follows."""
    if at >= len(lines) or lines[at].startswith(PROMPT):
        return False
    if lines[at]:
        return lines[at].startswith("    ")
    return at + 1 < len(lines) and is_output(lines, at + 1)


def transcripts(lines):
    """(command, first line of its output, line behind the last one) of each."""
    at = 0
    while at < len(lines):
        if not lines[at].startswith(PROMPT):
            at += 1
            continue
        command = lines[at][len(PROMPT):]
        begin = at = at + 1
        while is_output(lines, at):
            at += 1
        yield command, begin, at


def printed_by(command, folder, environment):
    run = subprocess.run(["bash", "-c", command], cwd=folder, env=environment, text=True,
                         stdout=subprocess.PIPE, stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL)
    return [("    " + line).rstrip() for line in run.stdout.splitlines()]


def differs(shown, printed):
    """A line that ends with ... stands for one that begins so. Empty lines around count for nothing."""
    shown, printed = ("\n".join(one).strip("\n").split("\n") for one in (shown, printed))
    return len(shown) != len(printed) or any(
        not there.startswith(line[:-3]) if line.endswith("...") else line != there
        for line, there in zip(shown, printed))


def walk(page, program, findings):
    """Runs a page; answers its lines with what is printed in their places."""
    lines = tree.text_of(page).splitlines()
    written = list(lines)
    shift = 0
    with tempfile.TemporaryDirectory() as folder:
        for name in ("floor_plan.dxf", "site_plan.dxf"):
            shutil.copy(tree.ROOT / "samples" / name, folder)
        environment = dict(os.environ, PATH=f"{program.parent}:{os.environ['PATH']}", TMPDIR=folder,
                           LC_ALL="C.UTF-8", GIT_CONFIG_GLOBAL="/dev/null", GIT_PAGER="cat", HOME=folder)
        for command, begin, end in transcripts(lines):
            printed = printed_by(command, folder, environment)
            shown = [line.rstrip() for line in lines[begin:end]]
            if not differs(shown, printed):
                continue
            findings.append(f"{page}:{begin}: {command}\n  is shown as\n" + "\n".join(shown) +
                            "\n  but prints\n" + "\n".join(printed))
            while printed and not printed[-1]:
                printed.pop()
            written[begin + shift:end + shift] = printed
            shift += len(printed) - (end - begin)
    return written


program = pathlib.Path(sys.argv[1]).resolve()
findings = []
for page in PAGES:
    written = walk(page, program, findings)
    if sys.argv[2:] == ["--write"]:
        (tree.ROOT / page).write_text("\n".join(written) + "\n", encoding="utf-8")
if sys.argv[2:] != ["--write"]:
    tree.report(findings)
