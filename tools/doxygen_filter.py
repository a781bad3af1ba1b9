#!/usr/bin/env python3
"""Hands the headers to Doxygen: plain // comments become documentation comments.

The rules are those a reader of the headers applies anyway: a comment belongs to the declarations that
follow it up to the next blank line or comment; a comment behind a declaration belongs to that one; the
comment at the top belongs to the file.
"""
import re
import sys

COMMENT = re.compile(r"^(\s*)// ?(.*)$")
TRAILING = re.compile(r"^(.*[;,{)\w])\s+// (.*)$")
BLOCK = re.compile(r"\s*(class|struct|enum|extern|template|namespace|#|public:|private:)")


def documented(comment):
    return [f"{indent}/// {text}" for indent, text in comment]


def convert(lines):
    comment, inside, at_start = [], False, False
    for number, line in enumerate(lines):
        match = COMMENT.match(line)
        if match:
            if inside:  # a new comment begins
                comment, inside = [], False
            comment.append(match.groups())
            continue
        if comment and not inside:
            if number == len(comment):
                yield "/// @file"
            yield from documented(comment)
            inside, at_start = True, False
            if not line.strip() or BLOCK.match(line):
                comment, inside = [], False
        elif inside and not line.strip():
            comment, inside = [], False
        elif inside and at_start and not line.lstrip().startswith(("}", "public", "private")):
            yield from documented(comment)
        at_start = inside and line.rstrip().endswith((";", "}"))
        trailing = TRAILING.match(line)
        if trailing:
            at_start = inside and trailing.group(1).endswith((";", "}"))
            yield f"{trailing.group(1)}  ///< {trailing.group(2)}"
        else:
            yield line


def main():
    with open(sys.argv[1], encoding="utf-8") as source:
        print("\n".join(convert(source.read().splitlines())))


if __name__ == "__main__":
    main()
