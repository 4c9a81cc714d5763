#!/usr/bin/env python3
"""An independent master: asks `kvt sim` and compares each answer byte by byte.

What the cells hold it learns by reading, changes by writing, and finds again by reading; what the
frames look like it knows from docs/protocol.md alone (wire.py). Prints what is wrong; the exit
status is 1 if anything is.
"""
import argparse
import json
import os
import random
import select
import signal
import socket
import subprocess
import sys
import tempfile
import time
import tty

import memory
import wire

TAGS = [memory.Tag(*fields) for fields in (
    ("word", "D", "5.2.1", 1, "u16"), ("word_low", "D", "5.2.0", 1, "u16"),
    ("word_selector", "D", "5.0.3", 1, "u16"), ("word_top", "D", "255.15.1", 1, "u16"),
    ("word_255", "D", "5.0.255", 1, "u16"), ("byte", "X", "1.2.0", 1, "u8"),
    ("byte_high", "X", "1.2.1", 1, "u8"), ("byte_first", "X", "0.0.0", 1, "u8"),
    ("other_word", "D", "5.2.1", 2, "u16"), ("other_byte", "X", "1.2.0", 2, "u8"),
    ("block", "C", "7.9.0.4", 2, "u8"), ("block_high", "C", "7.9.1.69", 2, "u8"),
    ("zero", "D", "5.2.1", 0, "u16"), ("last", "D", "5.2.1", 255, "u16"))]
UNKNOWN_STATION = 9
ANSWER = 2.0    # seconds that an answer may take
SILENCE = 0.25  # seconds after which none is taken to come


class Line:
    """The master's end of a pseudo-terminal or a TCP connection."""

    def __init__(self, kind, name):
        if kind == "pty":
            self._fd = os.open(name, os.O_RDWR | os.O_NOCTTY)
            tty.setraw(self._fd)
        else:
            host, port = name.rsplit(":", 1)
            self._fd = socket.create_connection((host, int(port))).detach()

    def send(self, data):
        os.write(self._fd, data)

    def receive(self, seconds):
        """What there is within that time; nothing if nothing came."""
        if not select.select([self._fd], [], [], seconds)[0]:
            return b""
        return os.read(self._fd, 4096)

    def close(self):
        os.close(self._fd)


class Examination:
    """Questions to a simulated PLC, and what was wrong with the answers."""

    def __init__(self, line):
        self._line = line
        self.asked = 0
        self.wrong = []

    def ask(self, request, length):
        """The answer, up to so many bytes; a refusal ends at its CR."""
        stray = self._line.receive(0)
        if stray:
            self.wrong.append("%s before the request %s" % (stray.hex(" "), request.hex(" ")))
        self._line.send(request)
        self.asked += 1
        answer, end = b"", time.monotonic() + ANSWER
        while len(answer) < length and not answer.endswith(b"\r") and time.monotonic() < end:
            answer += self._line.receive(max(0.0, end - time.monotonic()))
        return answer

    def expect(self, request, answer, what):
        """Sends and compares; `answer` is bytes, or None for silence."""
        got = self.ask(request, len(answer)) if answer is not None else self._hear(request)
        if got != (answer or b""):
            self.wrong.append("%s: %s is answered by %s, not by %s" % (
                what, request.hex(" "), got.hex(" "), (answer or b"").hex(" ")))

    def expect_refusal(self, station, request):
        """NAK, the station, CR; a PLC may give a reason of two bytes between."""
        got = self.ask(request, 6)
        if got[:3] != b"\x15%02X" % station or got[-1:] != b"\r" or len(got) not in (4, 6):
            self.wrong.append("%s is answered by %s, no refusal" % (request.hex(" "), got.hex(" ")))

    def _hear(self, request):
        self._line.send(request)
        self.asked += 1
        return self._line.receive(SILENCE)

    def read(self, tag):
        """The data of a tag's reply, None if the reply is none."""
        address = wire.parse_address(tag.area, tag.address)
        request = wire.read_request(tag.station, address)
        answer = self.ask(request, wire.reply_length(tag.area))
        data = answer[3:-1]
        if answer != b"\x06%02X" % tag.station + data + b"\r" or \
                len(data) != 2 * wire.DATA_BYTES[tag.area] or \
                any(digit not in wire.UPPER_HEX for digit in data):
            self.wrong.append("%s: %s is answered by %s" % (
                tag.name, request.hex(" "), answer.hex(" ")))
            return None
        return bytes.fromhex(data.decode())

    def write(self, tag, value):
        address = wire.parse_address(tag.area, tag.address)
        request = wire.write_request(tag.station, address, value)
        answer = self.ask(request, wire.WRITE_REPLY_LENGTH)
        if len(answer) != 6 or answer[:3] != b"\x06%02X" % tag.station or answer[-1:] != b"\r":
            self.wrong.append("%s: %s is answered by %s" % (
                tag.name, request.hex(" "), answer.hex(" ")))


def check_values(examination, rng):
    """Writes all that can be written, several times over, and finds every cell as it must be."""
    expected = {tag.name: examination.read(tag) for tag in TAGS}
    for _ in range(12):
        for tag in rng.sample(TAGS, len(TAGS)):
            if tag.area != "C" and rng.random() < 0.7:
                width = wire.DATA_BYTES[tag.area]
                value = rng.choice([0, 256 ** width - 1, rng.randrange(256 ** width)])
                examination.write(tag, value)
                expected[tag.name] = value.to_bytes(width, "big")
        for tag in rng.sample(TAGS, len(TAGS)):
            data = examination.read(tag)
            if data is not None and data != expected[tag.name]:
                examination.wrong.append("%s holds %s, not %s" % (
                    tag.name, data.hex(), expected[tag.name].hex()))


def check_refusals(examination):
    """Cells that no tag names are refused, stations that no tag names are silent."""
    word, byte = wire.parse_address("D", "6.3.0"), wire.parse_address("X", "1.2.0")
    examination.expect_refusal(1, wire.read_request(1, word))
    examination.expect_refusal(2, wire.write_request(2, word, 1))
    examination.expect(wire.read_request(UNKNOWN_STATION, byte), None, "no such station")
    examination.expect(wire.write_request(UNKNOWN_STATION, byte, 1), None, "no such station")


def check_broken_requests(examination):
    """Whatever came before it, a whole request is answered, and once only."""
    tag = next(tag for tag in TAGS if tag.name == "word")
    request = wire.read_request(tag.station, wire.parse_address(tag.area, tag.address))
    examination.write(tag, 0x12AB)
    answer = b"\x060112AB\r"
    for end in range(1, len(request) - 1):
        examination.expect(request[:end] + request, answer, "broken off after %d bytes" % end)
    for noise in (b"\r", b"\x15", b"\x06", b"\x00\xff\x55", b"0128\r", b"\x05" * 40):
        examination.expect(noise + request, answer, "noise ahead")
    examination.expect(b"\x05\r" + request, answer, "an empty request ahead")


def check_one_at_a_time(examination, line):
    """A request that arrives byte by byte is the same request."""
    tag = TAGS[0]
    request = wire.read_request(tag.station, wire.parse_address(tag.area, tag.address))
    for index in range(len(request) - 1):
        line.send(request[index:index + 1])
        if line.receive(0.002):
            examination.wrong.append("answered after %d bytes of a request" % (index + 1))
    examination.expect(request[-1:], b"\x060112AB\r", "byte by byte")


def examine(kvt, kind, tags_path, seed):
    """Starts `kvt sim` on such a line and examines it: (questions, what was wrong)."""
    with tempfile.TemporaryDirectory() as folder:
        where = ["--tcp", "0"] if kind == "tcp" else ["--pty", os.path.join(folder, "plc")]
        simulation = subprocess.Popen(
            [kvt, "sim", *where, "--json", "--values", "constant", "--tags", tags_path],
            stdout=subprocess.PIPE, text=True)
        try:
            line = Line(kind, json.loads(simulation.stdout.readline())["line"])
            examination = Examination(line)
            check_values(examination, random.Random(seed))
            check_refusals(examination)
            check_broken_requests(examination)
            check_one_at_a_time(examination, line)
            line.close()
        finally:
            simulation.send_signal(signal.SIGINT)
            simulation.communicate()
        if simulation.returncode != 0:
            examination.wrong.append("kvt sim: exit status %d" % simulation.returncode)
        return examination.asked, examination.wrong


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--kvt", required=True, metavar="PROGRAM")
    parser.add_argument("--seed", type=int, default=1)
    arguments = parser.parse_args()
    wrong = []
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "tags.csv")
        memory.save_tags(path, TAGS)
        for kind in ("tcp", "pty"):
            asked, found = examine(arguments.kvt, kind, path, arguments.seed)
            print("%s: %d questions, %d answers wrong" % (kind, asked, len(found)))
            wrong += found
    for text in wrong[:50]:
        print(text)
    sys.exit(1 if wrong else 0)


if __name__ == "__main__":
    main()
