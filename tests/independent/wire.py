"""Frames of the line, as docs/protocol.md describes them.

Nothing here is taken from the driver or from the simulated PLC: the tests that stand on it are only
worth something as long as it is a second reading of the same page.
"""
import collections

ENQ, ACK, CR, NAK = 0x05, 0x06, 0x0D, 0x15
DATA_BYTES = {"X": 1, "D": 2, "C": 70}
WRITE_REPLY_LENGTH = 6
UPPER_HEX = b"0123456789ABCDEF"

# An address text taken apart; `element` is the fourth part in area C, else None.
Address = collections.namedtuple("Address", "area command nibble selector element")
# A request as a PLC sees it; `digits` is what a write carries, empty in a read or a command.
Request = collections.namedtuple("Request", "station command address digits raw")


class BadAddress(ValueError):
    """An address text that names nothing."""


def parse_address(area, text):
    parts = text.split(".")
    wanted = 4 if area == "C" else 3
    if area not in DATA_BYTES or len(parts) != wanted or not all(p.isdigit() for p in parts):
        raise BadAddress("%s %s" % (area, text))
    numbers = [int(p) for p in parts]
    element = numbers[3] if area == "C" else None
    if element is not None and element >= DATA_BYTES["C"]:
        raise BadAddress("%s %s: element beyond the block" % (area, text))
    return Address(area, numbers[0] & 0xFF, numbers[1] & 0x0F, numbers[2] & 0xFF, element)


def address_byte(address, writing=False):
    """The byte behind the command; in area C the nibble is what the host's word 50,000 would hold."""
    if address.selector > 1:
        return address.selector
    return address.nibble * 16 + address.selector * 8 + (1 if writing else 0)


def reply_length(area):
    return 4 + 2 * DATA_BYTES[area]


def digits(value, count):
    return b"%0*X" % (count, value)


def read_request(station, address):
    return b"\x05%02X%02X%02X\r" % (station & 0xFF, address.command, address_byte(address))


def write_request(station, address, value):
    head = b"\x05%02X%02X%02X" % (station & 0xFF, address.command, address_byte(address, True))
    return head + digits(value, 2 * DATA_BYTES[address.area]) + b"\r"


def command_request(station, address):
    """D 18.1.c carries no value; its address byte is that of a write."""
    return b"\x05%02X%02X%02X\r" % (station & 0xFF, address.command, address_byte(address, True))


def data_reply(station, data):
    """`data` as bytes in the order of their digits: a word's high byte first."""
    return b"\x06%02X" % station + data.hex().upper().encode() + b"\r"


def write_reply(station, filler=b"00"):
    return b"\x06%02X" % station + filler + b"\r"


def refusal(station):
    return b"\x15%02X\r" % station


def parse_request(frame):
    """The request in a frame from ENQ to CR, or None if it is not one."""
    body = frame[1:-1]
    if len(frame) not in (8, 10, 12) or frame[0] != ENQ or frame[-1] != CR:
        return None
    if any(byte not in UPPER_HEX for byte in body):
        return None
    return Request(int(body[0:2], 16), int(body[2:4], 16), int(body[4:6], 16), body[6:], frame)


class RequestReader:
    """Cuts frames out of the bytes that arrive; each ENQ begins anew."""

    LONGEST = 12

    def __init__(self):
        self._frame = b""
        self.dropped = 0

    def feed(self, data):
        """The requests that are complete, in order; what is no request is counted as dropped."""
        found = []
        for byte in data:
            if byte == ENQ:
                self.dropped += len(self._frame)
                self._frame = b""
            elif not self._frame:
                self.dropped += 1
                continue
            self._frame += bytes([byte])
            if byte == CR or len(self._frame) > self.LONGEST:
                request = parse_request(self._frame)
                if request is None:
                    self.dropped += len(self._frame)
                else:
                    found.append(request)
                self._frame = b""
        return found
