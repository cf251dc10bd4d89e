#!/usr/bin/env python3
"""Fails when a folder uses what it does not declare, declares what it does not use, or includes in a circle.

usage: check_walls.py SOURCES [EXTENSION]

A folder declares what it uses in its CMakeLists.txt. Every room that its sources include must stand there, and
every room that stands there must be included. EXTENSION is the built extension, which must not load the libraries
that draw.
"""

import collections
import pathlib
import re
import subprocess
import sys

# What the rooms of each building may use beside their own building.
BUILDINGS = {
    "platform": set(),
    "serving": {"platform"},
    "extension": {"platform"},
    "companion": {"platform", "extension"},
    "host": {"platform", "serving", "companion"},
    "demo": {"platform", "serving", "extension"},
}
# These may use every building.
BESIDE = ["tests/support", "bench"]
# The process's own runtime is for doors that the phone app calls without naming one.
DOOR = re.compile(r"^\s*static \S+ \w+\(platform::Runtime::process\(\)\);$|= buildFlags\(platform::Runtime::process\(\)")


class Room:
    def __init__(self, kind, folder, declared):
        suffixes = {"messages": {".proto"}}.get(kind, {".h", ".cpp", ".def"})
        self.folder, self.declared = folder, declared
        self.files = [file for file in sorted(folder.iterdir())
                      if file.suffix in suffixes and (file.name == "main.cpp") == (kind == "program")]
        self.includes = collections.defaultdict(set)


def read_rooms(root):
    """The rooms by their names. A folder's schema and its program are rooms of their own."""
    rooms = {}
    folders = [*BUILDINGS, *BESIDE]
    for listing in sorted(file for name in folders for file in (root / name).rglob("CMakeLists.txt")):
        calls = r"(?:brightledger_(room|messages|program)|target_link_libraries)\(([^)]*)\)"
        for kind, words in re.findall(calls, listing.read_text()):
            name, *rest = words.split()
            declared = {word for word in rest if "USES" not in word}
            rooms[name] = Room(kind, listing.parent, declared)
    return rooms


def read_includes(root, rooms):
    owners = {str(file.relative_to(root)): name for name, room in rooms.items() for file in room.files}
    owners |= {re.sub(r"\.proto$", ".pb.h", file): name for file, name in owners.items()}
    for name, room in rooms.items():
        for file in room.files:
            for target in re.findall(r'^\s*#include "([^"]+)"', file.read_text(), re.M):
                owner = owners.get(target)
                if owner is None:
                    yield f"{file.relative_to(root)} includes {target}, which belongs to no room"
                elif owner != name:
                    room.includes[owner].add(str(file.relative_to(root)))


def part(room, root):
    """Of a widget's room: its widget and what it is for."""
    steps = room.folder.relative_to(root).parts
    return steps[2:4] if steps[:2] == ("extension", "widgets") else None


def wall_complaints(root, rooms):
    for name, room in rooms.items():
        building = room.folder.relative_to(root).parts[0]
        for used, files in room.includes.items():
            other = rooms[used].folder.relative_to(root).parts[0]
            if used not in room.declared:
                yield f"{name} includes {used} and does not declare it: {min(files)}"
            if other != building and other not in BUILDINGS.get(building, [other]):
                yield f"{building}/ may not use {other}/: {min(files)}"
            is_app = room.folder.is_relative_to(root / "extension/app")
            if is_app and used == "extension_perch_proto" and name != "extension_prices":
                yield f"{name} may not use the quote message's schema; have extension_prices ask: {min(files)}"
            ours, theirs = part(room, root), part(rooms[used], root)
            if ours and theirs and (ours[0] != theirs[0] or theirs[1] not in {"model", "proto"}):
                yield f"{name} may not use {used}: a widget knows no other, and its views no timeline"
        for declared in room.declared & rooms.keys() - room.includes.keys():
            yield f"{name} declares {declared} and includes nothing of it"


def drawing_complaints(rooms):
    """What the extension declares, and what that declares in turn, draws nothing."""
    reached, open_names = set(), {"brightledger-extension"}
    while open_names:
        reached |= open_names
        open_names = {used for name in open_names for used in rooms[name].declared & rooms.keys()} - reached
    for name in sorted(reached):
        for library in sorted(library for library in rooms[name].declared if re.search("cairo|pango", library, re.I)):
            yield f"{name} declares {library}, so the extension would draw"


def circles(arrows):
    """One complaint for each arrow that closes a circle."""
    state = {}

    def visit(name, path):
        state[name] = "open"
        for used in sorted(arrows.get(name, ())):
            if state.get(used) == "open":
                yield " -> ".join([*path[path.index(used):], used]) + " is a circle"
            elif used not in state:
                yield from visit(used, [*path, used])
        state[name] = "done"

    for name in sorted(arrows):
        if name not in state:
            yield from visit(name, [name])


def script_arrows(root):
    arrows = {}
    for script in (root / "resources").rglob("*.js"):
        imported = re.findall(r'^import .* from "/?(?:\./)?([^"]+)"', script.read_text(), re.M)
        arrows[str(script.relative_to(root))] = {str((script.parent / name).relative_to(root)) for name in imported}
    return arrows


def door_complaints(root):
    for file in sorted(file for name in BUILDINGS for file in (root / name).rglob("*.cpp")):
        for number, line in enumerate(file.read_text().splitlines(), 1):
            if re.search(r"(?<!& )Runtime::process\(\)", line) and not DOOR.search(line):
                yield f"{file.relative_to(root)}:{number} takes the process's runtime; let the caller name one"


def main(root, extension=None):
    rooms = read_rooms(root)
    complaints = [*read_includes(root, rooms), *wall_complaints(root, rooms), *drawing_complaints(rooms)]
    complaints += circles({name: set(room.includes) for name, room in rooms.items()})
    complaints += [*circles(script_arrows(root)), *door_complaints(root)]
    if extension:
        libraries = subprocess.run(["ldd", extension], capture_output=True, text=True, check=True).stdout
        complaints += [f"the extension loads {name}" for name in re.findall(r"lib(?:cairo|pango)\S*", libraries)]
    print("\n".join(complaints) or f"{len(rooms)} rooms use what they declare, and nothing else.")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1]), *sys.argv[2:]))
