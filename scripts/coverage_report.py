#!/usr/bin/env python3
"""Reports lines and branches of plenar/ out of llvm-cov's exports, and lists every line that nothing ran.

    coverage_report.py [--at-least PERCENT] COVERAGE.json COVERAGE.lcov FUNCTIONS.txt

FUNCTIONS.txt lists the functions that there is code of, as llvm-profdata shows them.
"""
import argparse
import collections
import json
import os
import re
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def library_file(name):
    """The path below the project if it is one of the library's sources, or else None."""
    path = os.path.relpath(name, ROOT)
    return path if path.startswith("plenar" + os.sep) else None


def read_lines(lcov):
    """Of each file: how often each line ran, all instances together."""
    files = collections.defaultdict(lambda: collections.defaultdict(int))
    current = None
    with open(lcov, encoding="utf-8") as file:
        for line in file:
            key, _, value = line.rstrip("\n").partition(":")
            if key == "SF":
                current = library_file(value)
            elif key == "DA" and current:
                number, count = value.split(",")[:2]
                files[current][int(number)] += int(count)
    return files


def read_branches(data):
    """Of each file: how often each condition was true and false, all instances together."""
    files = collections.defaultdict(lambda: collections.defaultdict(lambda: [0, 0]))
    for one in data["files"]:
        path = library_file(one["filename"])
        for branch in one["branches"] if path else []:
            counts = files[path][tuple(branch[:4])]
            counts[0] += branch[4]
            counts[1] += branch[5]
    return files


def functions_with_code(listing):
    with open(listing, encoding="utf-8") as file:
        return {match[1] for match in re.finditer(r"^  (\S.*):$", file.read(), re.MULTILINE)}


def lines_by_code(data, with_code):
    """Of each file: the lines of functions that there is code of, and those of all others."""
    files = collections.defaultdict(lambda: (set(), set()))
    for function in data["functions"]:
        first, _, last = function["regions"][0][:3]
        path = library_file(function["filenames"][0])
        if path:
            files[path][0 if function["name"] in with_code else 1].update(range(first, last + 1))
    return files


def take_out(lines, branches, by_code):
    """Takes out the lines that no code was made of, and returns them."""
    taken = {}
    for path, (in_code, in_others) in by_code.items():
        without = sorted(n for n, count in lines[path].items() if count == 0 and n in in_others - in_code)
        for number in without:
            del lines[path][number]
        branches[path] = {at: counts for at, counts in branches[path].items() if at[0] not in without}
        if without:
            taken[path] = without
    return taken


class Share:
    def __init__(self, counts):
        counts = list(counts)
        self.all = len(counts)
        self.reached = sum(1 for count in counts if count)

    def percent(self):
        return 100 * self.reached / self.all if self.all else 100.0

    def __str__(self):
        return f"{self.reached:5}/{self.all:<5} {self.percent():6.2f}%" if self.all else "-".rjust(19)


def print_table(lines, branches):
    outcomes = {path: [count for pair in branches[path].values() for count in pair] for path in lines}
    width = max(map(len, lines))
    print(f"{'file'.ljust(width)}  {'lines':>19}  {'branches':>19}")
    for path in sorted(lines):
        print(f"{path.ljust(width)}  {Share(lines[path].values())}  {Share(outcomes[path])}")
    total = Share(count for file in lines.values() for count in file.values())
    print(f"{'all'.ljust(width)}  {total}  {Share(count for file in outcomes.values() for count in file)}")
    return total


def ranges(numbers):
    """4, 5, 6, 9 as 4-6, 9."""
    parts = []
    for number in numbers:
        if parts and parts[-1][1] == number - 1:
            parts[-1][1] = number
        else:
            parts.append([number, number])
    return ", ".join(str(first) if first == last else f"{first}-{last}" for first, last in parts)


def print_unreached(lines):
    print("\nLines that nothing ran:")
    for path in sorted(lines):
        unreached = sorted(number for number, count in lines[path].items() if count == 0)
        if unreached:
            with open(os.path.join(ROOT, path), encoding="utf-8") as file:
                text = file.read().splitlines()
            for number in unreached:
                print(f"{path}:{number}: {text[number - 1].strip()}")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("export", metavar="COVERAGE.json")
    parser.add_argument("lcov", metavar="COVERAGE.lcov")
    parser.add_argument("functions", metavar="FUNCTIONS.txt")
    parser.add_argument("--at-least", type=float, default=0, metavar="PERCENT")
    options = parser.parse_args()

    lines = read_lines(options.lcov)
    if not lines:
        print("coverage_report.py: nothing of plenar/ in the export", file=sys.stderr)
        return 1
    with open(options.export, encoding="utf-8") as file:
        data = json.load(file)["data"][0]
    branches = read_branches(data)
    without_code = take_out(lines, branches, lines_by_code(data, functions_with_code(options.functions)))
    total = print_table(lines, branches)
    print_unreached(lines)
    print("\nLines that no code was made of:")
    for path, numbers in sorted(without_code.items()):
        print(f"{path}: {ranges(numbers)}")
    if total.percent() < options.at_least:
        print(f"coverage_report.py: {total.percent():.2f}% of all lines, and not {options.at_least:g}%", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
