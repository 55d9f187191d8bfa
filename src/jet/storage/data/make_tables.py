#!/usr/bin/env python3
"""Makes ../collation_tables.cpp from the two tables of codes beside this script."""
import pathlib

here = pathlib.Path(__file__).parent
LETTER, MARK, UNPRINTABLE, SEVERAL, STEP = 1, 2, 3, 4, 8


def records(name, width):
    for line in (here / name).read_text(encoding="utf-8").split("\n"):
        if line and not line.startswith("#"):
            yield (line.split("\t") + [""] * width)[:width]


def packed(items, per_line):
    for i in range(0, len(items), per_line):
        yield "    " + " ".join(item + "," for item in items[i:i + per_line])


runs, several = [], []
for first, last, kind, codes, weights, kana, step, _ in records("general-codes.tsv", 8):
    code, weight, flags = 0, 0, STEP if step == "+" else 0
    if kind == "X":
        continue  # what the table does not list is ignored
    if kind == "U":
        code, flags = int(codes, 16), UNPRINTABLE
    elif kind == "M":
        weight, flags = int(weights, 16), MARK
    elif len(weights) == 2:
        code = int(codes.ljust(4, "0"), 16)
        weight = int(weights, 16)
        flags |= LETTER | (int(kana) << 4 if kind == "K" else 0)
    else:
        assert kana == "-" and step == "0"
        entry = "{%d, {%s}, %d, {%s}}" % (
            len(codes) // 2, ", ".join("0x" + codes[i:i + 2] for i in range(0, len(codes), 2)),
            len(weights) // 2, ", ".join("0x" + weights[i:i + 2] for i in range(0, len(weights), 2)))
        if entry not in several:
            several.append(entry)
        code, flags = several.index(entry), SEVERAL
    runs.append("{0x%X, 0x%X, 0x%X, 0x%X, %d}" % (int(first, 16), int(last, 16), code, weight, flags))

bytes97 = []
for _, kind, codes, nibble, significant, _ in records("general97-codes.tsv", 6):
    bytes97.append("{0x%s, 0x%s, %s, %s}" % (codes[:2], codes[2:] or "0", "0x" + nibble if kind == "I" else "0",
                                            significant))

text = f"""// Made by data/make_tables.py; change the tables there, not this file.
#include "jet/storage/collation_tables.h"

namespace jet::collation_tables {{

// clang-format off
const CodeRun kGeneral[] = {{
{chr(10).join(packed(runs, 3))}
}};
const int kGeneralCount = {len(runs)};

const SeveralElements kSeveralTable[] = {{
{chr(10).join(packed(several, 2))}
}};

const ByteCode kGeneral97[256] = {{
{chr(10).join(packed(bytes97, 5))}
}};
// clang-format on

}}  // namespace jet::collation_tables
"""
(here.parent / "collation_tables.cpp").write_text(text)
