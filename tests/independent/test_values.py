#!/usr/bin/python3
"""Usage: test_values.py --kvt KVT

Polls a list of a hundred tags of every type, order and meaning from kvt sim, over a pseudo-terminal and
over TCP, and holds each value against the words and bytes that the simulator has, which it reads with a
list of bare elements and puts together by itself. Then writes values to tags and does it again. Ends with
status 1 at the first difference.
"""
import argparse
import csv
import json
import os
import signal
import struct
import subprocess
import sys
import tempfile
from decimal import ROUND_HALF_UP, Decimal
from fractions import Fraction

LIMIT_s = 60
ORDERS = ("abcd", "badc", "cdab", "dcba")
WIDE = {"u32": 4, "s32": 4, "f32": 4, "bcd32": 4, "u64": 8, "s64": 8, "f64": 8}
FLOATS = {"f32": ">f", "f64": ">d"}


class Tag(dict):
    """A row of the list, with the bytes that it takes."""

    def size(self):
        kind = self["type"].split(":")
        if kind[0] == "string":
            return int(kind[1])
        if kind[0] in WIDE:
            return WIDE[kind[0]]
        return 2 if kind[0] in ("u16", "s16", "bcd16") or self["area"] == "D" else 1

    def addresses(self):
        """The texts of its elements: c counts to 1, then b, then a; in C the last part counts."""
        parts = [int(part) for part in self["address"].split(".")]
        if self["area"] == "C":
            return [".".join(map(str, parts[:3] + [parts[3] + i])) for i in range(self.size())]
        if self["area"] == "X":
            return [self["address"]]
        first = parts[0] * 32 + parts[1] * 2 + parts[2]
        return [f"{n // 32}.{n % 32 // 2}.{n % 2}" for n in range(first, first + (self.size() + 1) // 2)]


def make_list():
    tags = []
    place = {"D": 40 * 32, "C": 0, "X": 0}

    def add(area, kind, **columns):
        tag = Tag(name=f"{area}{len(tags)} {kind}", area=area, station="1", type=kind, **columns)
        place_now = place[area]
        if area == "D":
            tag["address"] = f"{place_now // 32}.{place_now % 32 // 2}.{place_now % 2}"
        elif area == "X":
            tag["address"] = f"{3 + place_now // 32}.{place_now % 32 // 2}.{place_now % 2}"
        else:
            if place_now % 70 + tag.size() > 70:
                place_now = place["C"] = (place_now // 70 + 1) * 70
            tag["address"] = f"80.2.{place_now // 70}.{place_now % 70}"
        place[area] += (tag.size() + 1) // 2 if area == "D" else tag.size()
        tags.append(tag)

    for order in ORDERS:
        for kind in ("u16", "s16", "bcd16", "u32", "s32", "f32", "bcd32", "u64", "s64", "f64"):
            add("D", kind, order=order)
            if order in ("abcd", "dcba"):
                add("C", kind, order=order)
    for kind in ("bool", "hex", "u8", "s8", "bit:3"):
        add("X", kind)
        add("C", kind)
    add("X", "bit:7:rmw")
    for kind in ("bool", "hex", "bit:0", "bit:15", "bit:9:rmw"):
        add("D", kind)
    add("D", "string:7", order="badc")
    add("D", "string:8:utf8")
    add("C", "string:5")
    add("D", "u16", scale="0.1", unit="°C")
    add("D", "s16", scale="0.25", offset="-10", unit="bar", decimals="2")
    add("D", "u32", scale="0.001", decimals="3", order="cdab", write_order="down", unit="kWh")
    add("D", "s32", raw_low="0", raw_high="27648", low="0", high="100", decimals="1", torn="accept")
    add("D", "f32", scale="10", unit="m/s", order="cdab")
    add("D", "bcd32", scale="0.01")
    add("D", "u16", labels="0=off;1=manual;2=automatic", min="0", max="2")
    add("D", "hex", bits="0=door open;3=dry run;15=fault")
    add("C", "u8", labels="0=idle;1=run", scale="2")
    add("C", "u16", raw_low="0", raw_high="65535", low="-50", high="150", decimals="2")
    for _ in range(100 - len(tags)):
        add("D", "u32", scale="0.5")
    return tags


def elements_of(tags):
    """A list of the bare elements of these tags."""
    bare = {}
    for tag in tags:
        for text in tag.addresses():
            key = (tag["area"], text)
            bare[key] = Tag(name=f"{tag['area']} {text}", area=tag["area"], address=text, station="1",
                            type="u16" if tag["area"] == "D" else "u8")
    return list(bare.values())


def save(path, tags):
    names = sorted({name for tag in tags for name in tag}, key=lambda name: (name != "name", name))
    with open(path, "w", encoding="utf-8", newline="") as file:
        writer = csv.DictWriter(file, names, restval="")
        writer.writeheader()
        writer.writerows(tags)


def joined(tag, held):
    """The bytes of a value, the most significant first."""
    width = 2 if tag["area"] == "D" else 1
    data = b"".join(held[tag["area"] + " " + text].to_bytes(width, "big") for text in tag.addresses())
    order = tag.get("order", "abcd")
    words = [data[i:i + 2] for i in range(0, len(data), 2)]
    if order in ("badc", "dcba") and len(data) > 1:
        words = [word[::-1] if len(word) == 2 else word for word in words]
    if order in ("cdab", "dcba") and not tag["type"].startswith("string"):
        words.reverse()
    return b"".join(words)[:tag.size()]


def raw_of(tag, data):
    kind = tag["type"].split(":")
    if kind[0] in FLOATS:
        return struct.unpack(FLOATS[kind[0]], data)[0]
    number = int.from_bytes(data, "big", signed=kind[0].startswith("s"))
    if kind[0] == "bool":
        return int(number != 0)
    if kind[0] == "bit":
        return number >> int(kind[1]) & 1
    return int(data.hex()) if kind[0].startswith("bcd") else number


def ratio_of(tag):
    if "raw_low" in tag:
        low, high = Fraction(tag["low"]), Fraction(tag["high"])
        raw_low, raw_high = Fraction(tag["raw_low"]), Fraction(tag["raw_high"])
        factor = (high - low) / (raw_high - raw_low)
        return factor, low - raw_low * factor
    return Fraction(tag.get("scale", "1")), Fraction(tag.get("offset", "0"))


def is_near(shown, expected):
    if isinstance(shown, str):
        shown = float(shown)
    if expected != expected:
        return shown != shown
    return shown == expected or abs(shown - expected) <= abs(expected) * 1e-6


def rounded(tag, value):
    if "decimals" not in tag:
        return value
    exact = Decimal(value.numerator) / Decimal(value.denominator)
    return Fraction(exact.quantize(Decimal(1).scaleb(-int(tag["decimals"])), ROUND_HALF_UP))


def text_of(tag, raw):
    """What is shown where that is no number."""
    for entry in filter(None, tag.get("labels", "").split(";")):
        number, name = entry.split("=")
        if int(number) == raw:
            return name
    if "bits" in tag:
        names = dict(entry.split("=") for entry in tag["bits"].split(";"))
        shown = [names.get(str(i), f"bit {i}") for i in range(16) if raw >> i & 1]
        return ", ".join(shown) or "none"
    return None


def compare(tag, polled, held):
    data = joined(tag, held)
    assert polled["quality"] == "good", (tag, polled)
    assert polled.get("unit", "") == tag.get("unit", ""), (tag, polled)
    if tag["type"].startswith("string"):
        text = data.split(b"\0")[0].decode("utf-8" if tag["type"].endswith("utf8") else "latin1")
        assert polled["value"] == text and bytes.fromhex(polled["raw"]) == data, (tag, polled, data)
        return
    raw = raw_of(tag, data)
    factor, offset = ratio_of(tag)
    if tag["type"] in FLOATS:
        value = raw * float(factor) + float(offset)
        assert is_near(polled["raw"], raw), (tag, polled, raw)
    else:
        value = rounded(tag, raw * factor + offset)
        assert Fraction(polled["raw"]) == raw, (tag, polled, raw)
        if isinstance(polled["value"], str) or value.denominator == 1:
            assert Fraction(polled["value"]) == value, (tag, polled, value)
    assert is_near(polled["value"], float(value)), (tag, polled, value)
    text = text_of(tag, raw)
    if text is not None:
        assert polled["text"] == text, (tag, polled, text)


def run(kvt, status, *words):
    done = subprocess.run([kvt, *words], capture_output=True, text=True, timeout=LIMIT_s, check=False)
    assert done.returncode == status, (words, done.returncode, done.stderr)
    return done


def poll(kvt, path, line):
    output = run(kvt, 0, "poll", "--json", "--cycles", "2", "--tags", path, *line).stdout
    return {tag["name"]: tag for tag in json.loads(output.splitlines()[-1])["tags"]}


def hold(kvt, tags, lists, line):
    bare = {name: tag["value"] for name, tag in poll(kvt, lists["elements"], line).items()}
    polled = poll(kvt, lists["tags"], line)
    for tag in tags:
        compare(tag, polled[tag["name"]], bare)
    return len(tags)


WRITTEN = {"u16": "65535", "s16": "-2", "bcd16": "1234", "u32": "4294967294", "s32": "-70000",
           "bcd32": "12345678", "u64": "18446744073709551615", "s64": "-5000000000", "f32": "-0",
           "f64": "nan", "bool": "on", "hex": "0x1", "u8": "200", "s8": "-3", "string:7": "Kühlung",
           "string:8:utf8": "Öl 80°", "bit:9:rmw": "1", "bit:7:rmw": "1"}
MEANT = {"scale": "12.5", "raw_low": "50", "labels": "automatic", "bits": "fault, door open"}


def value_to_write(tag):
    """None where it cannot be written."""
    if tag["area"] == "C":
        return None
    for column, value in MEANT.items():
        if column in tag:
            return value
    return WRITTEN.get(tag["type"])


def check(kvt, folder, line_words):
    tags = make_list()
    lists = {"tags": os.path.join(folder, "tags.csv"), "elements": os.path.join(folder, "elements.csv")}
    save(lists["tags"], tags)
    save(lists["elements"], elements_of(tags))
    sim = subprocess.Popen([kvt, "sim", "--json", "--values", "constant", "--tags", lists["tags"], *line_words],
                           stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    try:
        name = json.loads(sim.stdout.readline())["line"]
        line = ["--tcp" if "--tcp" in line_words else "--serial", name]
        count = hold(kvt, tags, lists, line)
        written = 0
        for tag in tags:
            value = value_to_write(tag)
            if value is None:
                continue
            run(kvt, 0, "write", "--tags", lists["tags"], *line, "--", tag["name"], value)
            written += 1
        again = hold(kvt, tags, lists, line)
        # Refused before anything is sent, with what can be had.
        scaled = next(tag for tag in tags if tag.get("unit") == "°C")
        refused = run(kvt, 2, "write", "--tags", lists["tags"], *line, "--", scaled["name"], "21.43")
        assert "21.4" in refused.stderr, refused.stderr
    finally:
        sim.send_signal(signal.SIGTERM)
        sim.communicate(timeout=LIMIT_s)
    return count, written, again


parser = argparse.ArgumentParser()
parser.add_argument("--kvt", required=True)
program = parser.parse_args().kvt
for words in ([], ["--tcp", "0"]):
    with tempfile.TemporaryDirectory() as directory:
        figures = check(program, directory, words)
    print(f"{words or 'pty'}: {figures[0]} values held, {figures[1]} written, {figures[2]} held again")
sys.exit(0)
