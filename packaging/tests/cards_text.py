#!/usr/bin/env python3
"""Writes a time-card file of the conformance corpus (tests/corpus/cards/*.json) as the
plain text export.vbs reads: one "name<TAB>type<TAB>value" line per scalar property,
type "n" for a number and "s" for a string, and an empty line after each card.

    cards_text.py CARDS.json OUT.txt
"""

import json
import sys


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        document = json.load(file)
    lines = []
    for card in document["cards"]:
        for name, value in card.items():
            if isinstance(value, bool) or isinstance(value, (list, dict)) or value is None:
                continue
            kind = "n" if isinstance(value, (int, float)) else "s"
            lines.append(f"{name}\t{kind}\t{value}")
        lines.append("")
    with open(sys.argv[2], "w", encoding="utf-8", newline="\r\n") as file:
        file.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
