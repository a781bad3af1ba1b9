#!/usr/bin/env python3
"""Holds the rules of the tree that no other tool knows.

- An include goes to a lower level or stays in its room.
- A header has an include guard of its own.
- No source file is over 400 lines.
- Instruction sets are chosen by function attributes, never by compiler flags of a file.
- A file with a loop of <algorithm> includes it: newer standard libraries do not bring it with other headers.

Prints every fault and exits with 1; prints one line and exits with 0 when there is none.
"""
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
LONGEST = 400

# Room -> level. Rooms of one level do not include each other.
LEVELS = {
    "platform": 0,
    "include": 1,
    "kelcpu": 2,
    "kelmemory": 2,
    "keltrace": 2,
    "kelparameters": 2,
    "kelbitmap": 3,
    "kelgeometry": 4,
    "kelimage": 5,
    "keldecoder": 6,
    "kelencoder": 6,
    "kelscale": 6,
    "dispatch": 7,
    "support": 8,
    "tests": 9,
    "fuzz": 9,
    "bench": 9,
}
# The benchmark's picture is the one the examples paint.
SCENE = ("bench/pictures.cpp", "examples/paintscene.h")

INCLUDE = re.compile(r'^\s*#\s*include\s+[<"]([^">]+)[">]', re.MULTILINE)
GUARD = re.compile(r"^#ifndef (\w+)\n#define \1\n", re.MULTILINE)
FLAG = re.compile(r"-m(?:avx|sse|fma|arch|tune)[\w.=-]*")
ALGORITHM = re.compile(r"\bstd::(?:ranges::)?((?:any|all|none)_of|binary_search|clamp|copy_(?:n|if)|count(?:_if)?|find(?:_if)?|"
                       r"for_each|generate(?:_n)?|(?:min|max|minmax)_element|nth_element|remove_if|replace|"
                       r"reverse|rotate|search|shuffle|(?:stable_)?sort|transform|unique|upper_bound)\(")
FOLDERS = ("", "ikelex/src", "ikelex/include", "platform/include", "examples")


def room_of(name):
    """The room of a file; a tests folder is a room of its own."""
    parts = pathlib.PurePath(name).parts
    if parts[:2] == ("ikelex", "include"):
        return "include"
    if parts[:2] == ("ikelex", "src"):
        return "dispatch" if "dispatch" in parts else parts[2]
    return "/".join(parts[:2]) if parts[0] == "tests" else parts[0]


def level_of(room):
    return LEVELS.get(room.split("/")[0], 99)


def target_of(name, include, files, by_name):
    """The file an include names, or None when it is none of ours."""
    beside = (ROOT / name).parent / include
    candidates = [beside.resolve()] + [ROOT / folder / include for folder in FOLDERS]
    for path in candidates:
        if path.is_relative_to(ROOT) and str(path.relative_to(ROOT)) in files:
            return str(path.relative_to(ROOT))
    return by_name.get(include)  # a class header by its bare name


def include_faults(name, text, files, by_name):
    room = room_of(name)
    if room != "examples" and level_of(room) == 99:
        yield f"room '{room}' has no level"
        return
    for include in INCLUDE.findall(text):
        target = target_of(name, include, files, by_name)
        if target is None or (name, target) == SCENE:
            continue
        other = room_of(target)
        if room == "examples":
            # Programs of a host: they see what is installed, the class headers among it.
            if other not in ("platform", "include", "examples") and target not in by_name.values():
                yield f"includes {include} ({other}), which a host does not have"
        elif other != room and level_of(other) >= level_of(room):
            yield f"includes {include} ({other}) from {room}"


def main():
    listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard"], cwd=ROOT, check=True,
                            capture_output=True, text=True).stdout.split()
    tops = ("platform/", "ikelex/", "support/", "tests/", "fuzz/", "bench/", "examples/")
    files = {name for name in listed if name.startswith(tops) and (ROOT / name).is_file()}
    by_name = {pathlib.PurePath(name).name: name for name in files
               if re.match(r"ikelex/src/kel\w+/kel\w+\.h$", name)}
    # A host of its own, with a platform of its own.
    foreign = ("tests/hostplatform/", "tests/package/")
    faults, guards = [], {}
    for name in sorted(files):
        text = (ROOT / name).read_text(encoding="utf-8", errors="replace")
        found = []
        if name.endswith((".h", ".cpp", ".py")) and text.count("\n") > LONGEST:
            found.append(f"{text.count(chr(10))} lines, over {LONGEST}")
        if name.endswith(("CMakeLists.txt", ".cmake")):
            found += [f"instruction-set flag {flag}" for flag in FLAG.findall(text)]
        if name.endswith((".h", ".cpp")) and not name.startswith(foreign):
            found += include_faults(name, text, files, by_name)
            if ALGORITHM.search(text) and "#include <algorithm>" not in text:
                found.append(f"std::{ALGORITHM.search(text).group(1)} without <algorithm>")
        if name.endswith(".h") and not name.startswith(foreign):
            guard = GUARD.search(text)
            if not guard:
                found.append("no include guard")
            elif guards.setdefault(guard.group(1), name) != name:
                found.append(f"has the include guard of {guards[guard.group(1)]}")
        faults += [f"{name}: {fault}" for fault in found]
    for fault in faults:
        print(fault)
    print(f"{len(files)} files, {len(faults)} against the rules of the tree")
    return 1 if faults or not files else 0


if __name__ == "__main__":
    sys.exit(main())
