#!/usr/bin/env python3
"""The parts of the attack themselves: a judge that finds nothing proves nothing."""
import random
import unittest

import attack
import judge
import memory
import misbehaviour
import rows
import wire


def address(area, text):
    return wire.parse_address(area, text)


class Frames(unittest.TestCase):
    """The worked examples of docs/protocol.md."""

    def test_reads(self):
        self.assertEqual(wire.read_request(1, address("D", "5.2.1")), b"\x05010528\r")
        self.assertEqual(wire.read_request(1, address("D", "5.2.3")), b"\x05010503\r")
        self.assertEqual(wire.read_request(1, address("C", "7.3.0.4")), b"\x05010730\r")

    def test_writes(self):
        self.assertEqual(wire.write_request(1, address("X", "1.2.0"), 0xFF), b"\x05010121FF\r")
        self.assertEqual(wire.write_request(2, address("D", "3.4.0"), 0x1234),
                         b"\x050203411234\r")
        self.assertEqual(wire.command_request(1, address("D", "18.1.0")), b"\x05011211\r")

    def test_replies(self):
        self.assertEqual(wire.data_reply(1, b"\x12\xab"), b"\x060112AB\r")
        self.assertEqual(wire.refusal(1), b"\x1501\r")

    def test_requests_are_cut_out_of_noise(self):
        reader = wire.RequestReader()
        found = reader.feed(b"\x00\x05010\x05010528\r\x0501zz28\r\x05\r0D\x0501012")
        self.assertEqual([each.raw for each in found], [b"\x05010528\r"])
        self.assertEqual([each.digits for each in reader.feed(b"1FF\r")], [b"FF"])


class Scripts(unittest.TestCase):
    def play(self, script):
        request = wire.Request(1, 5, 0x28, b"", b"\x05010528\r")
        context = misbehaviour.Context(request, b"\x060112AB\r", b"\x0602BBBB\r",
                                       b"\x0601PPPP\r", 2, 0.1, random.Random(1))
        return [(round(at, 6), data) for at, data in misbehaviour.play(script, context)]

    def test_bytes(self):
        for script, sent in (("R", b"\x060112AB\r"), ("F", b"\x0602BBBB\r"),
                             ("P", b"\x0601PPPP\r"), ("Q", b"\x05010528\r"),
                             ("R/zz", b"\x060112zz\r"), ("R/lower", b"\x060112ab\r"),
                             ("R[0:2]", b"\x060"), ("R[-1]", b"\r"), ("S", b"01"),
                             ("f", b"02"), ("150D", b"\x15\r")):
            self.assertEqual(self.play(script), [(0, sent)], script)

    def test_times(self):
        self.assertEqual(self.play("15 @30 0D @0.5T 06"),
                         [(0, b"\x15"), (0.03, b"\r"), (0.08, b"\x06")])
        self.assertEqual(self.play("G5 1506"), [(0.005, b"\x15"), (0.01, b"\x06")])
        self.assertEqual(len(self.play("E1:31")), 500)
        self.assertEqual(self.play(""), [])
        self.assertEqual(self.play("X @30 15"), [(0, None), (0.03, b"\x15")])

    def test_when(self):
        plan = misbehaviour.Plan([misbehaviour.Rule("15", "2"), misbehaviour.Rule("", "1/3")])
        self.assertEqual([plan.script(n, "read") for n in range(1, 7)],
                         ["R", "15", "", "R", "R", ""])

    def test_every_row_has_scripts_that_can_be_played(self):
        self.assertEqual(len({row.name for row in rows.ALL}), len(rows.ALL))
        for row in rows.ALL:
            for script, when in row.rules:
                misbehaviour.Rule(script, when)


class Values(unittest.TestCase):
    def test_name_their_tag(self):
        for width, tags, counts in ((1, 60, 4), (2, 32, 128)):
            codes = [{memory.code(width, tag, n) for n in range(counts)} for tag in range(tags)]
            self.assertEqual(len(set().union(*codes)), tags * counts)

    def test_one_wrong_digit_of_a_word_shows(self):
        valid = {memory.code(2, tag, n) for tag in range(32) for n in range(128)}
        for value in valid:
            for shift in (0, 4, 8, 12):
                for change in range(1, 16):
                    self.assertNotIn(value ^ change << shift, valid)


class Judging(unittest.TestCase):
    def setUp(self):
        self.memory = memory.Memory([memory.Tag("a", "D", "5.0.0", 1, "u16"),
                                     memory.Tag("b", "D", "5.1.0", 1, "u16")])
        self.held = {name: cell.value for name, cell in self.memory.cells.items()}

    def polled(self, values, status=0):
        """A verdict on `a` showing these (time, value, quality)."""
        outputs = [(at, {"tags": [{"name": "a", "value": value, "quality": quality, "age_ms": 0}]})
                   for at, value, quality in values]
        return judge.judge_poll(outputs, self.memory, status)

    def test_true_values_pass(self):
        verdict = self.polled([(0, self.held["a"], "good"), (2, self.held["a"], "good")])
        self.assertEqual((verdict.wrong, verdict.share(), verdict.faults), (0, 100, ()))

    def test_wrong_good_values_are_counted_and_timed(self):
        verdict = self.polled([(0, self.held["a"], "good"), (1, self.held["b"], "good"),
                               (2, self.held["b"], "good"), (3, 7, "good"), (5, 7, "failed")])
        self.assertEqual((verdict.wrong, verdict.another, verdict.longest), (2, 1, 4))

    def test_wrong_values_that_are_not_called_good_pass(self):
        for quality in ("doubtful", "suspect", "stale", "failed"):
            verdict = self.polled([(0, 7, quality), (2, 7, quality)], 1)
            self.assertEqual((verdict.wrong, verdict.share()), (0, 0))

    def test_a_value_not_yet_held_is_wrong(self):
        self.memory.cells["a"].write(4711)
        later = self.memory.cells["a"].history[-1].time
        self.assertEqual(self.polled([(later - 1, 4711, "good"), (later - 0.5, 1, "failed")]).wrong,
                         1)
        self.assertEqual(self.polled([(later + 1, 4711, "good")]).wrong, 0)

    def test_bad_ends_are_told(self):
        self.assertTrue(self.polled([(0, self.held["a"], "failed")], 0).faults)
        self.assertTrue(self.polled([(0, self.held["a"], "good")], None).faults)
        self.assertTrue(self.polled([(0, self.held["a"], "good")], -6).faults)
        self.assertTrue(self.polled([], 0).faults)

    def test_writes(self):
        taken = {"state": "acknowledged", "uncertain": False}
        unknown = {"state": "timed_out", "uncertain": True}
        denied = {"state": "refused", "uncertain": False}
        for output, status, properly, held, wrong, denials in (
                (taken, 0, True, True, 0, 0), (taken, 0, False, True, 1, 0),
                (taken, 0, True, False, 1, 0), (unknown, 1, False, True, 0, 0),
                (denied, 1, False, True, 0, 1), (denied, 1, False, False, 0, 0)):
            verdict = judge.judge_writes([judge.WriteRun(output, status, properly, held)])
            self.assertEqual((verdict.wrong, verdict.denied), (wrong, denials))

    def test_complaints(self):
        row = rows.Row("a row", "poll", (), "mixed", 90, "", 0.0)
        verdict = judge.Verdict(shown=100, good=95, wrong=1, longest=0.2)
        self.assertEqual(attack.complaints(row, verdict, 0.0), ["wrong values"])
        self.assertEqual(attack.complaints(row, verdict, 0.5), [])
        self.assertEqual(attack.complaints(row._replace(bound=0.5), verdict, 0.0), [])
        self.assertTrue(attack.complaints(row._replace(bound=0.1), verdict, 0.0))
        last = self.polled([(0, self.held["a"], "good"), (2, 7, "good")])
        self.assertEqual(attack.complaints(row, last, 0.0), ["wrong values"])
        self.assertEqual(attack.complaints(row._replace(physics="why"), verdict, 0.0), [])
        self.assertTrue(attack.complaints(row._replace(least=99), verdict, 0.5))


if __name__ == "__main__":
    unittest.main()
