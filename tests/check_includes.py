#!/usr/bin/env python3
"""Fails when an include line opens a door in the wrong direction.

A room may use the floors below it, never a neighbour on its own floor; everything may use the
platform, which includes nothing above it; extension and host never include each other.
"""

import pathlib
import re
import sys

FLOORS = {
    "extension/app/settings": 0,
    "extension/widgets/perch/proto": 0,
    "extension/theme": 1,
    "extension/app/presence": 1,
    "extension/ui/common": 2,
    "extension/app/prices": 2,
    "extension/net": 2,
    "extension/widgets": 3,
    "extension/app/bundle": 4,
}

# What each building may include beside itself.
BUILDINGS = {
    "platform": set(),
    "serving": {"platform"},
    "extension": {"platform"},
    "companion": {"platform", "extension"},
    "host": {"platform", "serving", "companion"},
    "demo": {"platform", "serving", "extension"},
}

# Of the extension, the demo service may know the quote message's schema and nothing else, and the
# companion what the phone app may call.
EXTENSION_DOORS = {
    "demo": ["extension/widgets/perch/proto"],
    "companion": ["extension/app/settings", "extension/theme", "extension/app/presence"],
}


def floor(path):
    rooms = [room for room in FLOORS if path == room or path.startswith(room + "/")]
    return max(rooms, key=len) if rooms else None


def complaint(source, target):
    here, there = source.split("/")[0], target.split("/")[0]
    if there not in BUILDINGS or here not in BUILDINGS:
        return None
    if here != there:
        if there not in BUILDINGS[here]:
            return f"{here}/ may not use {there}/"
        doors = EXTENSION_DOORS.get(here)
        if there == "extension" and not any(target.startswith(door + "/") for door in doors):
            return f"{here}/ may not use this room of extension/"
        return None
    if here != "extension":
        return None
    source_room, target_room = floor(source), floor(target)
    if source_room is None or target_room is None:
        return "a room without a floor"
    if source_room == "extension/widgets" == target_room:
        source_widget, source_part = source.split("/")[2:4]
        target_widget, target_part = target.split("/")[2:4]
        if source_widget != target_widget:
            return "a widget may not use another widget"
        if source_part != target_part and target_part != "model":
            return "timeline and views know the model, not each other"
        return None
    if source_room != target_room and FLOORS[target_room] >= FLOORS[source_room]:
        return f"{source_room} may not use {target_room}, which is not below it"
    return None


def main(root):
    complaints = []
    for building in BUILDINGS:
        for file in sorted((root / building).rglob("*")):
            if file.suffix not in {".h", ".cpp"}:
                continue
            source = str(file.relative_to(root))
            for number, line in enumerate(file.read_text().splitlines(), 1):
                match = re.match(r'\s*#include "([^"]+)"', line)
                problem = match and complaint(source, match.group(1))
                if problem:
                    complaints.append(f"{source}:{number}: {problem}: {match.group(1)}")
    print("\n".join(complaints) or "All doors open in the right direction.")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
