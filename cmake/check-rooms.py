#!/usr/bin/env python3
"""Holds the tree against the order of its rooms, which ARCHITECTURE.md draws.

Usage: cmake/check-rooms.py [FOLDER] [--circles]

A unit is a header with its sources, told by their name. Checked are: that includes point down the list of rooms and
into no internal folder of another library; that no units include one another in a circle; that the header of all headers is
complete; that every source says what it is, and has a test of its name or one that names it after "Also tests:".
With --circles only the circles are told, and none is an error.
"""

import pathlib
import re
import sys

# From the top. Rooms of one line know nothing of each other. What stands in a folder below a room belongs to it.
ROOMS = [
    ["Tools"], ["Tools/Commands"], ["Tools/Film"], ["Tools/Pictures"], ["Tools/Files"], ["Tools/Command"],
    ["Show"],
    ["Imaging/Archive"], ["Imaging"], ["Imaging/TransitionParts"], ["Imaging/OpenGL"], ["Imaging/Drawing"], ["Imaging/Pixels"],
    ["VemoFoundation"],
    ["Platform/OpenGL"], ["Platform/Graphics"], ["Platform/Painter", "Platform/Codecs", "Platform/Clipper"],
    ["Platform/Pixels"], ["Platform/Foundation"],
]
RANKS = {room: rank for rank, rooms in enumerate(ROOMS) for room in rooms}

# The base of all nodes and the classes that graphs are built from are public, so they stand in Imaging itself; what
# nodes share is built on them.
UPWARD = {("Imaging/TransitionParts", "Imaging"), ("Imaging/OpenGL", "Imaging"), ("Imaging/Drawing", "Imaging")}


def unit(path):
    return re.sub(r"(-inl)?\.(h|cpp)$", "", path)


def room(path):
    folder = path.rpartition("/")[0]
    while folder and folder not in RANKS:
        folder = folder.rpartition("/")[0]
    return folder


def library(path):
    """The library, as programs link it, or the command."""
    top = path.split("/")[0]
    return top if top in ("Tools", "Show") else "Imaging"


def is_internal(path):
    """Not installed: in a folder below a room, or in a room that has no public headers."""
    if path.startswith("Platform/"):
        return path.count("/") > 2 or path.startswith("Platform/Painter/")
    return path.count("/") > 1


def read(root):
    sources = {}
    for top in sorted({room.split("/")[0] for room in RANKS}):
        for path in sorted(root.glob(f"{top}/**/*.*")):
            if path.suffix in (".h", ".cpp"):
                sources[str(path.relative_to(root))] = path.read_text(errors="replace")
    return sources


def arrows(sources):
    for path, text in sources.items():
        for target in re.findall(r'^ *#include "([^"]+)"', text, re.M):
            if target in sources:
                yield path, target


def wrong_arrows(sources):
    for path, target in arrows(sources):
        here, there = room(path), room(target)
        if not here:
            yield f"{path}: stands in no room of the list in cmake/check-rooms.py"
        elif here != there and RANKS[here] >= RANKS[there] and (here, there) not in UPWARD:
            yield f"{path}: {here} lies below or beside {there}, and must not include {target}"
        elif library(path) != library(target) and is_internal(target):
            yield f"{path}: {target} is internal to the library {library(target)}"


def circles(sources):
    """Sets of units that reach one another, the largest first."""
    direct = {unit(path): set() for path in sources}
    for path, target in arrows(sources):
        if unit(path) != unit(target):
            direct[unit(path)].add(unit(target))
    reached = {}
    for start in direct:
        seen, ahead = set(), [start]
        while ahead:
            for following in direct[ahead.pop()] - seen:
                seen.add(following)
                ahead.append(following)
        reached[start] = seen
    found = {frozenset(other for other in seen if start in reached[other])
             for start, seen in reached.items() if start in seen}
    return sorted(found, key=len, reverse=True)


def circle_texts(sources):
    for circle in circles(sources):
        yield f"these {len(circle)} units include one another in a circle: {', '.join(sorted(circle))}"


def missing_in_umbrella(sources):
    umbrella = "Imaging/Imaging.h"
    named = set(re.findall(r'#include "([^"]+)"', sources.get(umbrella, "")))
    for path in sources:
        if re.fullmatch(r"Imaging/\w+\.h", path) and path != umbrella and path not in named:
            yield f"{umbrella}: does not include {path}"


def untold_sources(sources):
    for path, text in sources.items():
        if path.endswith(".cpp") and not text.startswith("// "):
            yield f"{path}: begins without a sentence on what it is"


def untested_sources(sources, root):
    names, told = set(), set()
    for test in root.glob("Tests/**/*.cpp"):
        names.update(re.sub(f"{ending}$", "", test.stem) for ending in ("Test", "ThreadTest"))
        told.update(re.findall(r"^// Also tests: (\S+)", test.read_text(errors="replace"), re.M))
    for path in sources:
        if path.endswith(".cpp") and path != "Tools/main.cpp":
            if pathlib.Path(path).stem not in names and path not in told:
                yield f"{path}: no test has its name, and none says \"// Also tests: {path}\""
    yield from (f"{path}: a test says that it tests this, but it is not there" for path in sorted(told - set(sources)))


def main(arguments):
    only_circles = "--circles" in arguments
    folders = [argument for argument in arguments if not argument.startswith("--")]
    root = pathlib.Path(folders[0] if folders else pathlib.Path(__file__).parent.parent)
    sources = read(root)
    complaints = list(circle_texts(sources))
    if only_circles:
        print("\n".join(complaints) or "no circles")
        return 0
    for check in (wrong_arrows, missing_in_umbrella, untold_sources):
        complaints += check(sources)
    complaints += untested_sources(sources, root)
    for complaint in complaints:
        print(complaint, file=sys.stderr)
    print(f"{len(sources)} files in {len(RANKS)} rooms: {len(complaints)} complaints")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
