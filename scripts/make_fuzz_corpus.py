#!/usr/bin/env python3
"""Makes the seeds of the fuzz targets, in fuzz/corpus/: the same files at every run.

    scripts/make_fuzz_corpus.py [DIRECTORY]

Each target says in its source how it takes its input apart. Files that the fuzzers found stand beside the seeds, under
other names, and are left alone.
"""
import pathlib
import random
import struct
import sys

# Orders and types that are supported, as the targets count them.
PAIRS = [(order, kind) for order in range(1, 17) for kind in (1, 2, 3, 4, 5, 6, 7, 214)
         if (kind != 5 or order == 2) and (kind != 214 or order not in (10, 13)) and (kind < 3 or order != 14)]


def word(number):
    return struct.pack("<I", number)


def box(kind, content, size=None):
    return word(len(content) + 8 if size is None else size) + kind.encode() + content


def plane_size(code, width, height):
    samples = 3 * width if "rg" in code or "y4" in code else width
    if "y2" in code:
        samples = 2 * width + width % 2
    bits = {"8": 8, "0": 10, "2": 12, "f": 32}.get(code[-1], 16)
    return (bits * samples + 7) // 8 * height


def sinf(code, width, height, layout=b"\0"):
    return box("sinf", word(width) + word(height) + code.encode() + layout)


def run_length(run):
    digits = f"{run:b}"
    return "0" * (len(digits) - 1) + digits


def index_list(entries):
    bits, running = "", 0x7FFFFF
    for entry in entries:
        delta = entry - running
        bits += "10" + f"{-2 * delta - 1 if delta < 0 else 2 * delta:024b}"
        running = entry
    return bits


def to_bytes(bits):
    bits += "0" * (-len(bits) % 8)
    return bytes(int(bits[i:i + 8], 2) for i in range(0, len(bits), 8))


def coded_plane(width, height, depth):
    """Two bands: a flat one, and one that begins with a few samples of their own."""
    rows = [height - height // 2, height // 2] if height > 1 else [height]
    streams = []
    for band, count in enumerate(rows):
        samples = width * count
        bits = ""
        for value in range(min(samples - 1, 3 * band)):
            bits += f"{value % 2}" + run_length(1) + "0" + f"{77 * value % 256:0{depth}b}"
            samples -= 1
        bits += "1" + run_length(samples) + "10" + "0" * (depth // 2 - 2)
        streams.append(to_bytes(bits))
    return to_bytes(f"{len(rows):08b}" + index_list(map(len, streams)) + index_list(rows)) + b"".join(streams)


def plane(code, width, height, rng):
    if code[:2] in ("cb", "cr") or code[1:3] in ("cb", "cr"):
        width, height = (width + 1) // 2, (height + 1) // 2
    if code[:2] == "rl":
        data = coded_plane(width, height, 8 if code[-1] == "8" else 16)
    else:
        data = rng.randbytes(plane_size(code, width, height))
    return sinf(code, width, height) + box("sdat", data)


def payload(codes, width, height, rng):
    planes = [plane(code, width, height, rng) for code in codes]
    return box("pack", planes[0] if len(planes) == 1 else b"".join(box("icmp", p) for p in planes))


PLANE_SETS = [
    ["y208"], ["y208", " a08"], ["y208", "rl08"], ["y210"], ["y212"], ["y216", " a16"], ["y216", "rl16"], ["y2S1"],
    [" y2h"], [" y2f"], ["y408", " a08"], ["y410"], ["y4S1"], ["rg08"], ["rg08", " a08"], ["rg08", "rl08"], ["rg10"],
    ["rg12"], ["rg16", " a16"], ["rg16", "rl16"], ["rgS1"], [" rgf"], [" a08"], ["rl08"], [" a16"], ["rl16"],
    [" y08", "cb08", "cr08"], [" y08", "cb08", "cr08", " a08"], [" y08", "cb08", "cr08", "rl08"],
    [" y10", "cb10", "cr10"], [" y12", "cb12", "cr12"], [" y16", "cb16", "cr16", "rl16"], ["  yh", " cbh", " crh"],
    ["  yf", " cbf", " crf"],
]  # fmt: skip


def any_pair(order, kind):
    """The number by which a record in an input asks for an order and a type."""
    return b"\xf0" + word(180 + order + 18 * (9 if kind == 214 else kind))


def rare(seed, rarity=10):
    """The input with bytes at its end that make it as rare as large things are."""
    rest = -1 - sum(seed) & (1 << rarity) - 1
    return seed + b"\xff" * (rest // 255) + bytes([rest % 255])


def decode_seeds(rng):
    def head(way, source, pair=b"\0", stride=b"\0\0"):
        return (bytes([way, rng.randrange(256), 0, source]) + pair + b"\0\0\0" + stride).ljust(28, b"\0")

    for i, codes in enumerate(PLANE_SETS):
        yield head(8 * i % 256, 2, stride=bytes([i % 3, i % 5])) + payload(codes, 5 + i % 9, 1 + i % 4, rng)
    for width in (4, 5, 12, 13):  # the ways in which a packed row can end
        yield head(16 * width, 1, any_pair(2, 5)) + payload(["y210"], width, 2, rng)
    for order, codes in ((1, ["y2S1"]), (6, ["rgS1"]), (9, ["y4S1"])):
        yield head(9, 1, any_pair(order, 7)) + payload(codes, 7, 3, rng)
    for order in (1, 15, 16, 14):
        yield head(23, 1, any_pair(order, 1), b"\3\2") + payload(["y208", "rl08"], 7, 5, rng)
    yield rare(head(7, 1, any_pair(13, 2), b"\0\3") + payload([" y16", "cb16", "cr16", "rl16"], 141, 67, rng))
    for order, kind, code in ((7, 1, "rg08"), (7, 2, "rg16"), (11, 2, "y216"), (14, 1, None), (15, 2, "y216")):
        alpha = sinf("rl08" if kind == 1 else "rl16", 8, 4) + box("sdat", b"\0\0\0")  # no bands at all
        colour = [plane(code, 8, 4, rng)] if code else []
        yield head(3, 1, any_pair(order, kind)) + box("pack", b"".join(box("icmp", p) for p in colour + [alpha]))


def metadata_seeds(rng):
    for codes in PLANE_SETS[::3]:
        yield payload(codes, 4, 2, rng)
    y, cb, cr = (plane(code, 4, 2, rng) for code in (" y08", "cb08", "cr08"))
    junk = box("junk", b"\0" * 5)
    yield box("pack", junk + box("icmp", cr + junk) + box("icmp", y) + junk + box("icmp", cb)) + junk
    yield box("pack", box("sinf", word(4) + word(2) + b"  h2") + box("sdat", bytes(32)) + box("icmp", y))
    yield box("pack", sinf("y208", 4, 2, b"\1" * 9) + box("sdat", bytes(16), 0xFFFFFFFF))
    yield box("pack", sinf("y208", 0x80000000, 0xFFFFFFFF) + box("sdat", b""))
    yield box("pack", b"", 8) + box("pack", y)


def round_trip_seeds(rng):
    for i, (order, kind) in enumerate(PAIRS):
        change, wanted = i % 3, rng.randrange(240)
        if (order, 7 if kind == 214 else 5) in PAIRS and kind in (3, 214):  # the types that others are decoded into
            change, wanted = 2, PAIRS.index((order, 7 if kind == 214 else 5))
        decoding = bytes([change] + [wanted] * (change != 0) + [i % 4, i % 5, 37 * i % 256, i * 7 % 256, i % 6])
        width = 2 + 2 * (i * 7 % 36) if kind != 5 else 10  # a packed row with a group of four pixels at its end
        record = bytes([i, width, 2 + 2 * (i % 2), i % 2, i % 4, i % 5])
        coding = bytes([i // 2 % 2, i % 5, 8 * i % 256, 255 - i, 14 + i // 54 if i % 18 == 8 else 0])
        yield decoding.ljust(24, b"\0") + record + coding + rng.randbytes(i % 40)
    for i in (0, 50, 100):  # large pictures
        sides = b"\xf0" + word(152) + b"\xf0" + word(66)
        yield rare(bytes(24) + bytes([i]) + sides + bytes([0, 1, 0, i % 4, 3, 9, 0, 0]) + rng.randbytes(300))


def coded_planes_seeds(rng):
    for i in range(24):
        damage = bytes([rng.randrange(256), i % 2]) + rng.randbytes(38)
        shape = bytes([i // 2 % 2, rng.randrange(240), 0, rng.randrange(256), rng.randrange(240), i // 4 % 2])
        yield damage + shape + rng.randbytes(8 * (i % 16))
    for i in range(10):  # flat runs and ramps of more than a block among runs of any value
        tokens = [b"\0\xd7\5\0\0", b"\1\xd7\5\0\0"] + [rng.randbytes(2) + b"\xf0" + rng.randbytes(2) for _ in range(3)]
        tokens += [bytes([j % 2, 9 + j, 64]) + rng.randbytes(2) for j in range(6)]
        shape = bytes([i % 2, 199, 0, 200 * (i % 3 // 2), i // 2 % 2, i // 4 % 2, 15])
        yield rare(bytes(40) + shape + b"".join(rng.choice(tokens) for _ in range(90)), 6)
    for depth in (0, 1):  # ramps and flat runs that begin and end where the encoder's blocks do
        yield rare(bytes(40) + bytes([depth, 127, 0, 0, 0, 0, 15]) + 9 * b"\0\xd6\0\x40\5\0\0\xd7\0\0\0", 6)
    for i in range(4):  # rows of one and of two samples, padded
        shape = bytes([i // 2, i % 2, 0, 0x84, 0, 0, 15])
        yield bytes(40) + shape + bytes(rng.choice((0, 1, 9, 170)) for _ in range(100))
    for depth in (0, 1):  # a large plane, flat but for a few samples
        shape = bytes([depth]) + b"\xf0\x7f\7\0\0\0\0\0\0" + b"\xf0\x80\0\0\0"
        yield rare(bytes(40) + shape + b"\0\x09\xf0\x34\x12")
    for depth in (0, 1):  # busy bands, large enough to be decoded in pairs
        band = b"\x0f" + 16 * b"\0\x26\x40\x77\x55\1\x25\xf0\x33\1" + bytes(4)
        yield rare(bytes(40) + bytes([depth, 129, 0, 0, 1, 1]) + band + band, 6)
    for i in range(8):  # runs to the band's end, and one short of it
        shape = bytes([i % 2, 60 + 22 * i, 0, 0, 0, 0, 1])
        yield bytes(40) + shape + b"\0\x22\x40\7" * (i // 4) + bytes([i // 2 % 2, i // 4 % 2, 0, 1])


def sequence_seeds(rng):
    for i in range(12):
        yield bytes([0xFE if i < 2 else 0]) + rng.randbytes(30 * i + 30)


def twins_seeds(rng):
    for i in range(0, 160, 3):  # kernels all over the table
        seed = bytes([i, 0, 5 * i % 240, i % 2, i % 3, i % 64, i // 3 % 3, i // 5 % 64]) + rng.randbytes(31)
        yield rare(seed) if i % 8 == 0 else seed


def main():
    directory = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else "fuzz/corpus")
    for make in (decode_seeds, metadata_seeds, round_trip_seeds, coded_planes_seeds, twins_seeds, sequence_seeds):
        target = directory / make.__name__.removesuffix("_seeds")
        target.mkdir(parents=True, exist_ok=True)
        for i, seed in enumerate(make(random.Random(target.name))):
            (target / f"seed-{i:03}").write_bytes(seed)


if __name__ == "__main__":
    main()
