#!/usr/bin/env python3
"""arrows.py: holds every #include to the arrows that ARCHITECTURE.md draws, and to no circle.

An arrow means "may know", also of what is below: app --> views and views --> model let app
include both. A dotted one, of what is loaded later, ends where it leads. Exits with 1 if a
source includes what no arrow leads to, or if headers include each other in a circle."""

import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]

NODE = re.compile(r'^\s*(\w+)\["([\w/]+)/ – ')
ARROW = re.compile(r"^\s*([\w &]+?) (-->|-\..*?\.->) ([\w &]+)$")
INCLUDE = re.compile(r'^#include "([\w/]+\.h)"', re.MULTILINE)


def drawing():
    """The folder of every node, with those that it has an arrow to and those that it has
    a dotted one to."""
    text = (ROOT / "ARCHITECTURE.md").read_text()
    lines = re.search(r"```mermaid\n(.*?)```", text, re.DOTALL)[1].splitlines()
    folders = {m[1]: m[2] for m in map(NODE.match, lines) if m}
    arrows = {folder: (set(), set()) for folder in folders.values()}
    for match in filter(None, map(ARROW.match, lines)):
        for begin in match[1].split(" & "):
            arrows[folders[begin]][match[2] != "-->"].update(
                folders[end] for end in match[3].split(" & "))
    return arrows


def reach(arrows, folder):
    """The folder itself and all that it may know."""
    found, new = set(), {folder} | arrows[folder][1]
    while new:
        found |= new
        new = set().union(*(arrows[one][0] for one in new)) - found
    return found


def circle(includes, path, way=()):
    """The way from a header back to one that it came through, or nothing."""
    if path in way:
        return way[way.index(path):] + (path,)
    for included in includes.get(path, ()):
        if found := circle(includes, included, way + (path,)):
            return found
    return ()


def main():
    arrows = drawing()
    listed = subprocess.run(["git", "ls-files", "*.h", "*.cpp"], cwd=ROOT, check=True,
                            capture_output=True, text=True).stdout.split()

    def folder_of(path):
        holding = [folder for folder in arrows if path.startswith(folder + "/")]
        return max(holding, key=len, default=None)

    wrong = []
    includes = {}
    for path in listed:
        folder = folder_of(path)
        if folder is None or not (ROOT / path).exists():
            continue
        known = reach(arrows, folder)
        for included in INCLUDE.findall((ROOT / path).read_text()):
            if folder_of(included) not in known | {None}:
                wrong.append(f"{path}: no arrow leads to {included}")
            if path.endswith(".h"):
                includes.setdefault(path, []).append(included)
    for path in includes:
        found = circle(includes, path)
        if found and min(found) == path:
            wrong.append("a circle: " + " > ".join(found))
    print("\n".join(wrong) or f"arrows: {len(includes)} headers")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
