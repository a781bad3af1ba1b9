#!/usr/bin/env python3
"""symbols.py [--write] LIBRARY LIST: the names the shared library exports are exactly those in LIST.

The list is readable (demangled) and kept by hand: a name that appears or goes is a change of the
binary interface. --write renews it. A DLL exports no names of types; its classes export their members
marked IKELEX_LOCAL too, and the typeinfo of a base class from the codec library.
"""
import pathlib
import re
import subprocess
import sys

HEADER = pathlib.Path(__file__).resolve().parents[2] / "ikelex/src/kelimage/kelimage.h"


def exported_by_dll(library):
    table = subprocess.run(["x86_64-w64-mingw32-objdump", "-p", library], check=True,
                           capture_output=True, text=True).stdout.split("[Ordinal/Name Pointer] Table")[1]
    mangled = re.findall(r"^\s+\[\s*\d+\] (?:\+base\[\s*\d+\]\s+[0-9a-f]+ )?(\S+)$", table, re.M)
    names = subprocess.run(["c++filt"], input="\n".join(mangled), check=True,
                           capture_output=True, text=True).stdout.splitlines()
    local = set(re.findall(r"IKELEX_LOCAL [^;(]*?(\w+)\(", HEADER.read_text(encoding="utf-8")))
    return sorted({name.replace("unsigned long long", "unsigned long") for name in names
                   if name != "typeinfo for jpeg_source_mgr"
                   and re.sub(r"CKelImage::(\w+)\(.*", r"\1", name) not in local})


def exported(library):
    lines = subprocess.run(["nm", "-D", "-C", "--defined-only", library], check=True,
                           capture_output=True, text=True).stdout.splitlines()
    return sorted({line.split(" ", 2)[2] for line in lines})


def main():
    write = sys.argv[1] == "--write"
    library, path = sys.argv[-2:]
    dll = library.endswith(".dll")
    found = exported_by_dll(library) if dll else exported(library)
    if write:
        with open(path, "w", encoding="utf-8") as out:
            out.write("\n".join(found) + "\n")
        return 0
    with open(path, encoding="utf-8") as listed:
        wanted = [name for name in listed.read().splitlines()
                  if not dll or not name.startswith("typeinfo name for")]
    for name in sorted(set(wanted) - set(found)):
        print("no longer exported:", name)
    for name in sorted(set(found) - set(wanted)):
        print("exported but not listed:", name)
    print(f"{len(found)} exported names")
    return 0 if found == wanted else 1


if __name__ == "__main__":
    sys.exit(main())
