#!/usr/bin/env python3
"""Replaces a generated section of a text file.

    replace-section.py FILE NAME CONTENT_FILE

The section lies between the lines "<!-- NAME:begin ... -->" and "<!-- NAME:end -->";
what stands between them is replaced by CONTENT_FILE's text.
"""
import re
import sys


def main() -> int:
    if len(sys.argv) != 4:
        print(__doc__, file=sys.stderr)
        return 2
    path, name, content_path = sys.argv[1:]
    with open(path, encoding="utf-8") as f:
        text = f.read()
    with open(content_path, encoding="utf-8") as f:
        content = f.read()
    pattern = re.compile(
        r"(<!-- " + re.escape(name) + r":begin[^\n]*-->\n)(.*?)(<!-- " + re.escape(name) + r":end -->)",
        re.S)
    if not pattern.search(text):
        print(f"{path}: no section '{name}' (<!-- {name}:begin --> ... <!-- {name}:end -->)",
              file=sys.stderr)
        return 1
    text = pattern.sub(lambda m: m.group(1) + "\n" + content + "\n" + m.group(3), text, count=1)
    with open(path, "w", encoding="utf-8") as f:
        f.write(text)
    return 0


if __name__ == "__main__":
    sys.exit(main())
