#!/usr/bin/env python3
"""Makes one table of ratios out of the rounds of plenar_bench.

    bench_table.py [--details] [--json FILE] ROUND.json...

Each file is one round, as Google Benchmark writes it. A ratio is taken within a round, between measurements that ran
one right after the other; what is shown is the median over the rounds. A row of the table stands for many cases and
shows the worst of them.
"""
import argparse
import collections
import json
import re
import statistics
import sys

SUBJECT = "plenar"


class Measured:
    """The medians and ratios of all rounds."""

    def __init__(self, files):
        self.rounds = []  # of each round: {(case, what): benchmark}
        self.errors = []
        self.context = {}
        for name in files:
            with open(name, encoding="utf-8") as file:
                data = json.load(file)
            self.context = data["context"]
            self.rounds.append(self._index(data["benchmarks"]))
        self.cases = list(dict.fromkeys(case for one in self.rounds for case, _ in one))

    def _index(self, benchmarks):
        index = {}
        for one in benchmarks:
            name = one["name"]
            for suffix in ("/real_time", "/manual_time"):
                if name.endswith(suffix):
                    name = name[: -len(suffix)]
                    one["clock"] = "real_time"
            if one.get("error_occurred"):
                self.errors.append(f"{name}: {one.get('error_message')}")
                continue
            case, what = name.rsplit("/", 1)
            index[case, what] = one
        return index

    def whats(self, case):
        return list(dict.fromkeys(what for one in self.rounds for c, what in one if c == case))

    def over_rounds(self, case, whats, value):
        """The median of value(benchmark...) over the rounds that have all of them; None if none has."""
        values = [
            value(*(one[case, what] for what in whats))
            for one in self.rounds
            if all((case, what) in one for what in whats)
        ]
        return statistics.median(values) if values else None


def nanoseconds(one):
    return one[one.get("clock", "cpu_time")]


def rate(one):
    return one["bytes_per_second"]


def rate_ratio(measured, case, what, reference):
    return measured.over_rounds(case, (what, reference), lambda a, b: rate(a) / rate(b))


# Row values: a function of one case; the greater the better unless the row says "at most".


def against(reference):
    return lambda measured, case: rate_ratio(measured, case, SUBJECT, reference)


def against_best_of(*references):
    def value(measured, case):
        ratios = [rate_ratio(measured, case, SUBJECT, reference) for reference in references]
        return min((ratio for ratio in ratios if ratio is not None), default=None)

    return value


def cycles_per_token(measured, case):
    # The additions of "cycles" take a cycle each, and count as its bytes.
    def value(subject, cycles):
        return nanoseconds(subject) * 1e-9 * rate(cycles) / subject["tokens"]

    return measured.over_rounds(case, (SUBJECT, "cycles"), value)


def second_thread(measured, case):
    return rate_ratio(measured, case, "two", "one")


def beyond_copy(measured, case):
    return measured.over_rounds(case, (SUBJECT, "memcpy"), lambda a, b: nanoseconds(a) - nanoseconds(b))


def against_waking(measured, case):
    return measured.over_rounds(case, ("waking", SUBJECT), lambda a, b: nanoseconds(a) / nanoseconds(b))


def slowness(measured, case):
    return measured.over_rounds(case, (SUBJECT, "memcpy"), lambda a, b: nanoseconds(a) / nanoseconds(b))


def pixels_of(case):
    width, height = case.split("/")[1].split("x")
    return int(width) * int(height)


def growth_since(choose):
    """The growth of the time per pixel since a smaller size, in units of memcpy's own growth."""

    def value(measured, case):
        group, _, threads, name = case.split("/")
        pattern = re.compile(f"{group}/[0-9]+x[0-9]+/{threads}/{re.escape(name)}$")
        smaller = [one for one in measured.cases if pattern.match(one) and pixels_of(one) <= pixels_of(case)]
        values = [slowness(measured, one) for one in sorted(smaller, key=pixels_of)]
        return None if None in values or not values else values[-1] / choose(values)

    return value


def microseconds_of(what):
    return lambda measured, case: measured.over_rounds(case, (what,), lambda one: nanoseconds(one) / 1e3)


def cost_beside_own_work(measured, case):
    return measured.over_rounds(
        case, ("frameandown", "own", "backtoback"),
        lambda both, own, frame: (nanoseconds(both) - nanoseconds(own) - nanoseconds(frame)) / 1e3)


def against_honest(what):
    return lambda measured, case: measured.over_rounds(
        case, (what, "honest"), lambda a, b: nanoseconds(a) / nanoseconds(b))


def memory_beyond_honest(measured, case):
    return measured.over_rounds(case, (SUBJECT, "honest"), lambda a, b: (a["memory"] - b["memory"]) / 1024)


Row = collections.namedtuple("Row", "work cases value target at_most unit", defaults=(False, ""))

MATTES = "shapes|soft|glyphs|hair|grain|sprites"
REORDERS = "(reorder|split)"

ROWS = [
    Row("copies, L2: memcpy", "copies/L2/t1/", against("memcpy"), 0.97),
    Row("copies, HD: memcpy", "copies/HD/t1/", against("memcpy"), 0.97),
    Row("copies, UHD: memcpy", "copies/UHD/t1/", against("memcpy"), 0.97),
    Row("copies, L2: memcpy to the same place", "copies/L2/t1/", against("shifted"), 0.97),
    Row("copies, HD: memcpy to the same place", "copies/HD/t1/", against("shifted"), 0.97),
    Row("copies, UHD: memcpy to the same place", "copies/UHD/t1/", against("shifted"), 0.97),
    Row("copies, HD, 2 threads: memcpy on 2", "copies/HD/t2/", against("memcpy"), 0.9),
    Row("copies, UHD, 2 threads: memcpy on 2", "copies/UHD/t2/", against("memcpy"), 0.9),
    Row("reorders, L2: memcpy", f"{REORDERS}/L2/t1/", against("memcpy"), 0.5),
    Row("reorders, HD: memcpy", "reorder/HD/t1/", against("memcpy"), 0.95),
    Row("reorders, HD, one stream to two: memcpy", "split/HD/t1/", against("memcpy"), 0.85),
    Row("reorders, UHD: memcpy", f"{REORDERS}/UHD/t1/", against("memcpy"), 0.85),
    Row("reorders, UHD, 2 threads: memcpy on 2", f"{REORDERS}/UHD/t2/", against("memcpy"), 1.0),
    Row("reorders: libyuv, swscale", f"{REORDERS}/[^/]*/t1/", against_best_of("libyuv", "swscale"), 1.0),
    Row("10 and 12 bits, L2: memcpy", "pack/L2/t1/", against("memcpy"), 0.4),
    Row("10 and 12 bits, HD: memcpy", "pack/HD/t1/", against("memcpy"), 0.9),
    Row("10 and 12 bits, UHD: memcpy", "pack/UHD/t1/", against("memcpy"), 0.6),
    Row("10 and 12 bits, UHD, 2 threads: memcpy on 2", "pack/UHD/t2/", against("memcpy"), 0.85),
    Row("Packed10, L2: memcpy", "packed10/L2/t1/", against("memcpy"), 0.3),
    Row("Packed10, HD: memcpy", "packed10/HD/t1/", against("memcpy"), 0.85),
    Row("fixed point to float, HD: memcpy", "float/HD/t1/", against("memcpy"), 0.9),
    Row("fixed point to float, UHD: memcpy", "float/UHD/t1/", against("memcpy"), 0.9),
    Row("coded alpha encode, flat, vertical: read pass", "alpha_encode/HD/t1/(flat|vertical)-", against("read"), 0.85),
    Row("coded alpha encode, mattes, 8 bits: lz4", f"alpha_encode/HD/t1/({MATTES})-8", against("lz4"), 1.3),
    Row("coded alpha encode, mattes, 16 bits: lz4", f"alpha_encode/HD/t1/({MATTES})-16", against("lz4"), 1.3),
    Row("coded alpha encode, noise", "alpha_encode/HD/t1/noise-", cycles_per_token, 6, True, "cycles a token"),
    Row("coded alpha decode, flat, vertical: memset", "alpha_decode/HD/t1/(flat|vertical)-", against("memset"), 0.95),
    Row("coded alpha decode, shapes: lz4", "alpha_decode/HD/t1/shapes-", against("lz4"), 1.0),
    Row("coded alpha decode, glyphs: zstd level 1", "alpha_decode/HD/t1/glyphs-", against("zstd"), 1.0),
    Row("coded alpha decode, soft, hair, grain", "alpha_decode/HD/t1/(soft|hair|grain)-", cycles_per_token, 17, True,
        "cycles a token"),
    Row("coded alpha decode, noise", "alpha_decode/HD/t1/noise-", cycles_per_token, 7, True, "cycles a token"),
    Row("RGBA with coded alpha, HD: memcpy", "picture/HD/t1/", against("memcpy"), None),
    Row("RGBA with coded alpha, UHD: memcpy", "picture/UHD/t1/", against("memcpy"), None),
    Row("RGBA with coded alpha, UHD, 2 threads: memcpy on 2", "picture/UHD/t2/", against("memcpy"), None),
    Row("2 threads, UHD, coded alpha: 1 thread", "threads/UHD/t2/alpha-", second_thread, 1.9),
    Row("2 threads, UHD, packing: 1 thread", "threads/UHD/t2/pack-", second_thread, 1.9),
    Row("2 threads, HD, all kinds: 1 thread", "threads/HD/t2/", second_thread, 1.5),
    Row("16 x 16, beyond its copy", "small/16x16/t1/", beyond_copy, 500, True, "ns"),
    Row("16 x 16, 2 threads: wake-up from sleep", "small/16x16/t2/", against_waking, 5.0),
    Row("growth from 64 x 64: memcpy's growth", "growth/", growth_since(lambda values: values[0]), 1.1, True),
    Row("growth from any smaller size: memcpy's growth", "growth/", growth_since(min), None, True),
    Row("hostile boxes: honest decode", "hostile/[^/]*/[^/]*/boxes-", against_honest(SUBJECT), 4, True),
    Row("hostile coded planes: honest decode", "hostile/[^/]*/[^/]*/(?!boxes-)", against_honest(SUBJECT), 4, True),
    Row("hostile payloads, metadata alone: honest decode", "hostile/", against_honest("metadata"), 4, True),
    Row("hostile payloads, memory beyond an honest decode", "hostile/", memory_beyond_honest, 16, True, "KiB"),
    Row("HD frame, 2 threads, back to back", "pauses/", microseconds_of("backtoback"), None, True, "us"),
    Row("HD frame, 2 threads, after 2 ms of sleep", "pauses/", microseconds_of("aftersleep"), None, True, "us"),
    Row("HD frame, 2 threads, cost beside own work of 2", "pauses/", cost_beside_own_work, None, True, "us"),
]


def evaluate(row, measured):
    values = {}
    for case in measured.cases:
        if re.match(row.cases, case):
            value = row.value(measured, case)
            if value is not None:
                values[case] = value
    if not values:
        return None
    worst = (max if row.at_most else min)(values, key=values.get)
    met = None
    if row.target is not None:
        met = values[worst] <= row.target if row.at_most else values[worst] >= row.target
    missed = sum(1 for v in values.values() if row.target is not None and (v > row.target if row.at_most else v < row.target))
    return {
        "work": row.work, "target": row.target, "at_most": row.at_most, "unit": row.unit,
        "worst": values[worst], "worst_case": worst, "median": statistics.median(values.values()),
        "met": met, "cases": len(values), "missed": missed, "values": values,
    }


def number(value):
    return f"{value:.2f}" if abs(value) < 100 else f"{value:.0f}"


def print_table(results):
    header = ("work: compared with", "target", "worst", "median", "met", "of cases", "worst case")
    lines = [header]
    for row in results:
        target = "-" if row["target"] is None else ("at most " if row["at_most"] else "") + f"{row['target']:g}"
        met = {None: "-", True: "yes", False: "NO"}[row["met"]]
        group = row["worst_case"].split("/", 1)[1]
        lines.append((row["work"] + (f" ({row['unit']})" if row["unit"] else ""), target, number(row["worst"]),
                      number(row["median"]), met, f"{row['cases'] - row['missed']}/{row['cases']}", group))
    widths = [max(len(line[i]) for line in lines) for i in range(len(header))]
    for line in lines:
        print("  ".join(text.ljust(width) for text, width in zip(line, widths)).rstrip())


def print_details(measured):
    """Every case: the GB/s of each thing measured, and how the library stands to it."""
    for case in measured.cases:
        parts = []
        for what in measured.whats(case):
            speed = measured.over_rounds(case, (what,), lambda one: one.get("bytes_per_second", 0) / 1e9)
            time = measured.over_rounds(case, (what,), lambda one: nanoseconds(one) / 1e3)
            parts.append(f"{what} {speed:.2f} GB/s {number(time)} us")
            ratio = rate_ratio(measured, case, SUBJECT, what) if speed and what != SUBJECT else None
            if ratio is not None and what != "cycles":
                parts[-1] += f" (x{ratio:.2f})"
        print(f"{case}: " + ", ".join(parts))


def write_json(name, measured, results):
    medians = {
        case: {
            what: {
                "nanoseconds": measured.over_rounds(case, (what,), nanoseconds),
                "bytes_per_second": measured.over_rounds(case, (what,), lambda one: one.get("bytes_per_second")),
            }
            for what in measured.whats(case)
        }
        for case in measured.cases
    }
    kept = ("date", "num_cpus", "mhz_per_cpu", "caches", "load_avg", "payload_shift")
    context = {key: measured.context[key] for key in kept if key in measured.context}
    with open(name, "w", encoding="utf-8") as file:
        json.dump({"context": context, "rounds": len(measured.rounds), "rows": results, "medians": medians}, file, indent=1)
        file.write("\n")


def first_lines(measured):
    context = measured.context
    load = ", ".join(f"{value:.1f}" for value in context.get("load_avg", []))
    shift = context.get("payload_shift", "0")
    return f"{len(measured.rounds)} rounds, {context['num_cpus']} processors, load {load}, payload shift {shift}"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("rounds", nargs="+", metavar="ROUND.json")
    parser.add_argument("--details", action="store_true", help="list all cases too")
    parser.add_argument("--json", help="write rows and medians to this file")
    options = parser.parse_args()

    measured = Measured(options.rounds)
    results = [result for row in ROWS if (result := evaluate(row, measured))]
    if options.details:
        print_details(measured)
        print()
    print(first_lines(measured))
    print_table(results)
    if options.json:
        write_json(options.json, measured, results)
    if measured.errors:
        print("\n".join(["", "Failed:", *sorted(set(measured.errors))]), file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
