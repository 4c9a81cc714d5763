"""What a PLC holds: cells by station, found as a PLC finds them, by command and address byte."""
import collections
import csv
import random
import time

import wire

Tag = collections.namedtuple("Tag", "name area address station type")
# `times` are from time.monotonic(); a value is held from its time to that of the next.
Held = collections.namedtuple("Held", "time value")


def load_tags(path):
    """Tags of a CSV file; blank lines and lines that begin with # are passed over."""
    with open(path, encoding="utf-8-sig", newline="") as file:
        lines = [line for line in file if line.strip() and not line.startswith("#")]
    rows = csv.DictReader(lines)
    rows.fieldnames = [name.strip().lower() for name in rows.fieldnames]
    return [Tag(row["name"], row["area"], row["address"], int(row["station"]), row["type"])
            for row in rows]


def save_tags(path, tags):
    with open(path, "w", encoding="utf-8", newline="") as file:
        rows = csv.writer(file)
        rows.writerow(Tag._fields)
        rows.writerows(tags)


# One value in 256 belongs to at most one tag of a byte, so that a mixed up byte is noticed.
_BYTES = random.Random(18).sample(range(256), 256)
BYTE_CODES = 4


def code(width, number, count):
    """The value number `count` of tag `number`: it names its tag.

    A word has the tag's number in its upper five bits, a counter below, and in its last digit a sum
    that no other value of one of its digits leaves right. A byte is one of four that are its tag's.
    """
    if width == 1:
        return _BYTES[(number * BYTE_CODES + count % BYTE_CODES) % 256]
    upper = (number % 32) << 7 | count % 128
    return upper << 4 | (3 * (upper >> 8) + 5 * (upper >> 4 & 15) + 7 * (upper & 15)) & 15


class Cell:
    """One byte or word, with everything it ever held."""

    def __init__(self, width, number):
        self.width = width
        self.number = number
        self.count = 0
        self.written = False
        self.history = [Held(float("-inf"), code(width, number, 0))]

    @property
    def value(self):
        return self.history[-1].value

    def write(self, value):
        self.written = True
        self.history.append(Held(time.monotonic(), value))

    def advance(self):
        """The next value, unless one has been written: that stays."""
        if not self.written:
            self.count += 1
            self.history.append(Held(time.monotonic(), code(self.width, self.number, self.count)))

    def held_until(self, value, now):
        """When the cell last held the value, seen from `now`; None if it never did."""
        end = now
        for time_, held in reversed(self.history):
            if time_ <= now and held == value:
                return end
            end = min(end, time_)
        return None


class Memory:
    """The cells of a tag list, and the PLC's ways to them."""

    def __init__(self, tags, moving=True):
        self.tags = list(tags)
        self.cells = {}     # by tag name
        self._reads = {}    # (station, command, address byte) -> (area, cells in the reply's order)
        self._writes = {}   # (station, command, address byte, digits) -> cell
        self._moving = moving
        self.stations = sorted({tag.station for tag in self.tags})
        for number, tag in enumerate(self.tags):
            self._add(number, tag)

    def _add(self, number, tag):
        address = wire.parse_address(tag.area, tag.address)
        width = 2 if tag.area == "D" else 1
        key = (tag.station, address.command, wire.address_byte(address))
        if tag.area == "C":
            block = self._reads.setdefault(key, ("C", self._filler(key)))[1]
            block[address.element] = self.cells[tag.name] = Cell(1, number)
            return
        _, known = self._reads.get(key, (None, None))
        cell = known[0] if known else Cell(width, number)
        self.cells[tag.name] = cell
        self._reads[key] = (tag.area, [cell])
        to = (tag.station, address.command, wire.address_byte(address, True), 2 * width)
        self._writes[to] = cell

    @staticmethod
    def _filler(key):
        """The cells of a block that no tag names; their values are not those of tags."""
        return [Cell(1, 63) for _ in range(wire.DATA_BYTES["C"])]

    def find_read(self, request):
        """(area, cells), or None where there is nothing."""
        return self._reads.get((request.station, request.command, request.address))

    def find_write(self, request):
        """The cell, or None where there is nothing to be written."""
        return self._writes.get(
            (request.station, request.command, request.address, len(request.digits)))

    @staticmethod
    def is_command(request):
        """D 18.1.0 and D 18.1.1: a write without a value."""
        return not request.digits and request.command == 18 and request.address in (0x11, 0x19)

    def read(self, cells):
        """The bytes of a reply; what moves has its next value first."""
        if self._moving:
            for cell in cells:
                cell.advance()
        return b"".join(cell.value.to_bytes(cell.width, "big") for cell in cells)

    def strange_data(self, station, area):
        """Data that another station, or another cell, would answer a read of that area with."""
        others = [tag for tag in self.tags if tag.area == area and tag.station != station]
        if others:
            key = next(k for k, (a, cells) in self._reads.items()
                       if a == area and self.cells[others[0].name] in cells)
            cells = self._reads[key][1]
            return b"".join(cell.value.to_bytes(cell.width, "big") for cell in cells)
        width = 2 if area == "D" else 1
        count = wire.DATA_BYTES[area] // width
        return code(width, len(self.tags) + 1, 0).to_bytes(width, "big") * count
