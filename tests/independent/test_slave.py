#!/usr/bin/env python3
"""`kvt read`, `write` and `poll` against the independent slave on a good line.

    test_slave.py --kvt build/bin/kvt
"""
import argparse
import os
import sys
import tempfile
import unittest

import fields
import judge
import line
import master
import memory
import program
import slave
import wire

KVT = None
# The parts of addresses at their ends, at stations at theirs.
TAGS = master.TAGS + [memory.Tag(*parts) for parts in (
    ("negative", "D", "7.3.0", 1, "s16"), ("bits", "D", "7.3.1", 1, "hex"),
    ("switch", "X", "9.15.1", 255, "hex"), ("first", "C", "7.9.0.0", 2, "hex"),
    ("command_word", "D", "18.1.0", 1, "u16"))]
WRITES = {"word": 0x12AB, "word_selector": 65535, "word_top": 1, "byte": 255, "byte_first": 0x7B,
          "other_word": 0, "negative": -2, "bits": "0xBEEF", "switch": 1, "last": 4660}


class OnLine(unittest.TestCase):
    """On a pseudo-terminal and on TCP; each test has a PLC of its own."""

    end = line.TcpEnd

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.tags = os.path.join(folder.name, "tags.csv")
        memory.save_tags(self.tags, TAGS)
        self.start(moving=False)

    def start(self, moving, filler=b"00"):
        self.memory = memory.Memory(TAGS, moving)
        self.slave = slave.Slave(self.memory, filler=filler)
        self.server = slave.start(self.end(), self.slave)
        self.addCleanup(self.server.stop)

    def kvt(self, verb, *words):
        command = [KVT, verb, *self.server.end.options(), "--json", "--tags", self.tags, *words]
        status, objects, messages = program.run(command, 20.0)
        others = [line for line in messages.splitlines() if not line.startswith("kvt: driver ")]
        self.assertEqual((status, others), (0, []))
        return objects

    def sent(self):
        return [exchange.request.raw for exchange in self.slave.log]

    def value(self, tag):
        """A cell as the type shows it."""
        value = self.memory.cells[tag.name].value
        return value - 65536 if tag.type == "s16" and value > 32767 else value

    def test_reads_what_the_memory_holds(self):
        objects = self.kvt("read", *(tag.name for tag in TAGS))
        reads = fields.get(objects[-1][1], "reads")
        shown = {fields.get(read, "name"): fields.get(read, "value") for read in reads}
        self.assertEqual(shown, {tag.name: self.value(tag) for tag in TAGS})

    def test_asks_for_nothing_else(self):
        self.kvt("read", *(tag.name for tag in TAGS))
        expected = [wire.read_request(tag.station, wire.parse_address(tag.area, tag.address))
                    for tag in TAGS]
        self.assertEqual(sorted(self.sent()), sorted(expected))

    def test_writes_into_the_memory_and_nowhere_else(self):
        expected = {name: cell.value for name, cell in self.memory.cells.items()}
        by_name = {tag.name: tag for tag in TAGS}
        requests = []
        for name, value in WRITES.items():
            output = fields.the_write(self.kvt("write", name, str(value))[-1][1])
            self.assertEqual(fields.get(output, "state"), "acknowledged")
            tag = by_name[name]
            expected[name] = int(str(value), 0) & (0xFFFF if tag.area == "D" else 0xFF)
            requests.append(wire.write_request(
                tag.station, wire.parse_address(tag.area, tag.address), expected[name]))
        self.assertEqual({name: cell.value for name, cell in self.memory.cells.items()}, expected)
        self.assertEqual(self.sent(), requests)

    def test_takes_any_two_bytes_in_an_acknowledgement(self):
        for filler in (b"FF", b"\x00\xff", b"zz", b"  "):
            self.slave.filler = filler
            self.kvt("write", "word", "7")

    def test_sends_a_command_without_a_value(self):
        self.kvt("write", "command_word")
        self.assertEqual(self.sent(), [b"\x05011211\r"])
        self.assertEqual(self.slave.counts["command"], 1)

    def test_polls_values_of_their_time(self):
        self.start(moving=True)
        before = len(self.slave.log)
        status, outputs, _ = program.run(
            [KVT, "poll", *self.server.end.options(), "--json", "--tags", self.tags,
             "--cycles", "20", "--interval", "20"], 20.0)
        verdict = judge.judge_poll(outputs, self.memory, status)
        self.assertEqual((status, verdict.wrong, verdict.faults), (0, 0, ()))
        last = [o for _, o in outputs if fields.is_snapshot(o)][-1]
        self.assertEqual([fields.get(t, "name") for t in fields.get(last, "tags")
                          if not fields.is_good(t)], [])
        cycles = (len(self.slave.log) - before) / (len(TAGS) - 1)  # two tags share a block
        self.assertGreaterEqual(cycles, 20)


class OnPty(OnLine):
    end = line.PtyEnd


def main():
    global KVT
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--kvt", required=True, metavar="PROGRAM")
    arguments, rest = parser.parse_known_args()
    KVT = arguments.kvt
    unittest.main(argv=[sys.argv[0], *rest])


if __name__ == "__main__":
    main()
