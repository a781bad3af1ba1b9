#!/usr/bin/env python3
"""Holds the one rule of the tree: an include goes to a lower level or stays in its room.

Prints every include that goes upward or sideways and exits with 1; prints one line and exits with 0
when there is none.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
SOURCES = ROOT / "ikelex" / "src"

# Room -> level. Rooms of one level do not include each other.
LEVELS = {
    "platform": 0,
    "include": 1,
    "kelcpu": 2,
    "kelmemory": 2,
    "keltrace": 2,
    "kelparameters": 2,
    "kelbitmap": 3,
    "kelimage": 4,
    "keldecoder": 5,
    "kelencoder": 5,
    "kelscale": 5,
    "dispatch": 6,
}
INCLUDE = re.compile(r'^\s*#\s*include\s+[<"]([^">]+)[">]', re.MULTILINE)


def room_of(path):
    """The room a file of this project lies in, or None for a foreign one."""
    try:
        parts = path.resolve().relative_to(ROOT).parts
    except ValueError:
        return None
    if parts[0] == "platform":
        return "platform"
    if parts[:2] == ("ikelex", "include"):
        return "include"
    if parts[:2] == ("ikelex", "src"):
        return "dispatch" if "dispatch" in parts else parts[2]
    return parts[0]


def target_of(source, name):
    """The file an include names, or None when it is none of ours."""
    for folder in (source.parent, SOURCES, ROOT / "ikelex/include", ROOT / "platform/include"):
        if (folder / name).is_file():
            return folder / name
    return None


def main():
    faults, count = [], 0
    files = [f for top in ("platform", "ikelex") for f in (ROOT / top).rglob("*")
             if f.suffix in (".h", ".cpp")]
    for source in sorted(files):
        room = room_of(source)
        if room not in LEVELS:
            faults.append(f"{source.relative_to(ROOT)}: room '{room}' has no level")
            continue
        for name in INCLUDE.findall(source.read_text(encoding="utf-8")):
            target = target_of(source, name)
            if target is None:
                continue
            count += 1
            other = room_of(target)
            if other != room and LEVELS.get(other, 99) >= LEVELS[room]:
                faults.append(f"{source.relative_to(ROOT)}: includes {name} ({other}) from {room}")
    for fault in faults:
        print(fault)
    print(f"{len(files)} files, {count} includes of our own, {len(faults)} against the levels")
    return 1 if faults or not files else 0


if __name__ == "__main__":
    sys.exit(main())
