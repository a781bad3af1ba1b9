#!/usr/bin/env python3
"""symbols.py [--write] LIBRARY LIST: the names the shared library exports are exactly those in LIST.

The list is readable (demangled) and kept by hand: a name that appears or goes is a change of the
binary interface. --write renews it.
"""
import subprocess
import sys


def exported(library):
    lines = subprocess.run(["nm", "-D", "-C", "--defined-only", library], check=True,
                           capture_output=True, text=True).stdout.splitlines()
    return sorted({line.split(" ", 2)[2] for line in lines})


def main():
    write = sys.argv[1] == "--write"
    library, path = sys.argv[-2:]
    found = exported(library)
    if write:
        with open(path, "w", encoding="utf-8") as out:
            out.write("\n".join(found) + "\n")
        return 0
    with open(path, encoding="utf-8") as listed:
        wanted = listed.read().splitlines()
    for name in sorted(set(wanted) - set(found)):
        print("no longer exported:", name)
    for name in sorted(set(found) - set(wanted)):
        print("exported but not listed:", name)
    print(f"{len(found)} exported names")
    return 0 if found == wanted else 1


if __name__ == "__main__":
    sys.exit(main())
