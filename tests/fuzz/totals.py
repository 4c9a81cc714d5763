#!/usr/bin/python3
"""Keeps the running totals of the fuzz targets, for scripts/fuzz.

Usage: totals.py TARGET MODE EXECUTIONS SECONDS EDGES FEATURES

Adds a run to totals.csv, beside this file, and rewrites the table in docs/reliability.md. MODE is
sanitized or fast. Edges and features are those of the latest run.
"""

import csv
import pathlib
import sys

BASE = pathlib.Path(__file__).resolve().parent
TOTALS = BASE / "totals.csv"
PAGE = BASE.parent.parent / "docs" / "reliability.md"
COLUMNS = ["target", "executions", "sanitized", "seconds", "edges", "features", "inputs", "findings"]
ADDED = ["executions", "sanitized", "seconds"]
BEGIN = "<!-- from tests/fuzz/totals.csv, by scripts/fuzz -->\n"
END = "<!-- end of the table -->\n"


def read_totals():
    if not TOTALS.exists():
        return {}
    with TOTALS.open(newline="") as file:
        return {row["target"]: row for row in csv.DictReader(file)}


def write_totals(totals):
    with TOTALS.open("w", newline="") as file:
        writer = csv.DictWriter(file, COLUMNS, lineterminator="\n")
        writer.writeheader()
        for target in sorted(totals):
            writer.writerow(totals[target])


def files_in(folder):
    return sum(1 for _ in folder.iterdir()) if folder.is_dir() else 0


def add(totals, target, mode, executions, seconds, edges, features):
    row = totals.setdefault(target, {"target": target, **{column: 0 for column in ADDED}})
    row["executions"] = int(row["executions"]) + executions
    row["sanitized"] = int(row["sanitized"]) + (executions if mode == "sanitized" else 0)
    row["seconds"] = int(row["seconds"]) + seconds
    row["edges"], row["features"] = edges, features
    row["inputs"] = files_in(BASE / "corpus" / target)
    row["findings"] = files_in(BASE / "found" / target)


def cells(row):
    executions, seconds = int(row["executions"]), int(row["seconds"])
    return [f"`{row['target']}`", f"{executions:,}", f"{int(row['sanitized']):,}",
            f"{executions // max(seconds, 1):,}", row["edges"], row["features"], row["inputs"],
            row["findings"]]


def table(totals):
    head = ["target", "executions", "with sanitizers", "a second", "edges", "features", "inputs kept",
            "findings"]
    rows = [cells(totals[target]) for target in sorted(totals)]
    whole = {column: sum(int(row[column]) for row in totals.values()) for column in ADDED}
    found = sum(int(row["findings"]) for row in totals.values())
    kept = sum(int(row["inputs"]) for row in totals.values())
    rows.append(["all", f"{whole['executions']:,}", f"{whole['sanitized']:,}",
                 f"{whole['executions'] // max(whole['seconds'], 1):,}", "", "", kept, found])
    lines = [head, ["---"] + ["---:"] * (len(head) - 1)] + rows
    return "".join("| " + " | ".join(str(cell) for cell in line) + " |\n" for line in lines)


def rewrite_page(totals):
    text = PAGE.read_text()
    before, _, rest = text.partition(BEGIN)
    _, _, after = rest.partition(END)
    PAGE.write_text(before + BEGIN + "\n" + table(totals) + "\n" + END + after)


def main(words):
    if len(words) != 6 or words[1] not in ("sanitized", "fast"):
        sys.exit(__doc__)
    totals = read_totals()
    add(totals, words[0], words[1], *(int(word) for word in words[2:]))
    write_totals(totals)
    rewrite_page(totals)


if __name__ == "__main__":
    main(sys.argv[1:])
