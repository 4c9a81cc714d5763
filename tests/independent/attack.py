#!/usr/bin/env python3
"""Attacks `kvt` through a PLC that misbehaves, and prints what it made of it.

A wrong value is one that kvt shows as good, or a write that it calls acknowledged, although the
PLC's memory never held that value for that tag, or the PLC did not acknowledge it. `stay` is how long
the longest of them was shown. The exit status is 1 if one stayed longer than --bound, if too few
values are good in a row that is none of the worse, or if a run ended as it must not.
"""
import argparse
import concurrent.futures
import os
import sys
import tempfile
import time

import fields
import judge
import line
import memory
import misbehaviour
import program
import rows
import slave

ENDS = {"tcp": (line.TcpEnd, 0), "pty": (line.PtyEnd, 9600)}  # with the speed kvt counts with
TAGS = {
    "mixed": [memory.Tag(*parts) for parts in (
        ("a1", "D", "5.0.0", 1, "u16"), ("a2", "D", "5.1.0", 1, "u16"),
        ("a3", "D", "5.2.1", 1, "u16"), ("a4", "D", "5.0.77", 1, "u16"),
        ("a5", "X", "1.0.0", 1, "u8"), ("a6", "X", "1.1.1", 1, "u8"),
        ("b1", "D", "5.0.0", 2, "u16"), ("b2", "D", "5.1.0", 2, "u16"),
        ("b3", "X", "1.0.0", 2, "u8"), ("b4", "X", "1.2.0", 2, "u8"),
        ("b5", "C", "7.0.0.0", 2, "u8"), ("b6", "C", "7.0.0.69", 2, "u8"))],
    "alike": [memory.Tag("w%d" % n, "D", "5.%d.0" % n, 1, "u16") for n in range(10)],
}
RUNS = 6  # of kvt read and kvt write in a row


class Stage:
    """A slave that misbehaves as a row says, and the kvt that is to deal with it."""

    def __init__(self, row, end, arguments):
        make, baud = ENDS[end]
        self.row = row
        self.arguments = arguments
        self.memory = memory.Memory(TAGS[row.tags], moving=row.doing != "write")
        rules = [misbehaviour.Rule(script, when) for script, when in row.rules]
        self.slave = slave.Slave(self.memory, misbehaviour.Plan(rules, arguments.seed), baud=baud)
        self.server = slave.start(make(), self.slave)
        self.messages = ""

    def kvt(self, verb, *words, seconds=5.0):
        command = [self.arguments.kvt, verb, *self.server.end.options(), "--json",
                   "--tags", os.path.join(self.arguments.folder, self.row.tags + ".csv"), *words,
                   *self.arguments.kvt_option]
        status, objects, messages = program.run(command, seconds)
        self.messages += messages
        return status, objects

    def poll(self):
        seconds = self.arguments.seconds
        status, outputs = self.kvt("poll", "--seconds", str(seconds), "--interval", "20",
                                   seconds=seconds)
        return judge.judge_poll(outputs, self.memory, status)

    def read(self):
        names = [tag.name for tag in self.memory.tags]
        statuses, outputs = [], []
        for _ in range(RUNS):
            self.slave.restart()
            status, objects = self.kvt("read", *names, seconds=20.0)
            statuses.append(status)
            outputs.append(objects[-1][1] if objects else {})
        return judge.judge_reads(outputs, self.memory, statuses, time.monotonic())

    def write(self):
        runs = []
        for number in range(RUNS):
            tag = self.memory.tags[(0, 4, 7)[number % 3]]
            value = (0x1234 if tag.area == "D" else 0x51) + number
            logged = len(self.slave.log)
            self.slave.restart()
            status, objects = self.kvt("write", tag.name, str(value))
            answered = self.slave.log[logged:]
            runs.append(judge.WriteRun(
                fields.the_write(objects[-1][1]) if objects else {}, status,
                properly=any(exchange.unharmed for exchange in answered),
                taken=self.memory.cells[tag.name].value == value))
        return judge.judge_writes(runs)

    def run(self):
        try:
            return getattr(self, self.row.doing)()
        finally:
            self.server.stop()


def complaints(row, verdict, bound):
    """Why a row is not as it should be; none if it is."""
    found = list(verdict.faults)
    bound = max(bound, row.bound)
    stayed = verdict.longest > bound or verdict.wrong and not bound  # the last output brought it
    if stayed and not row.physics:
        found.append("wrong values")
    if verdict.denied and not row.physics:
        found.append("%d taken but denied" % verdict.denied)
    if verdict.share() < row.least:
        found.append("less than %d %% good" % row.least)
    return found


HEAD = "| %-42s | %-4s | %6s | %7s | %6s | %6s | %6s | %-7s | %s |"


def print_head():
    print(HEAD % ("what the PLC does", "line", "good %", "wrong", "others", "stay s", "old ms",
                  "exit", "verdict"))
    print("|---|---|---:|---:|---:|---:|---:|---|---|")


def print_row(row, end, verdict, found):
    text = "; ".join(found) or "ok"
    if row.physics:
        text += " (physics: %s)" % row.physics
    exits = ",".join("%s" % ("hung" if s is None else s) for s in sorted(
        set(verdict.exits), key=str))
    print(HEAD % (row.name, end, "%.0f" % verdict.share(), verdict.wrong, verdict.another,
                  "ever" if verdict.longest == float("inf") else "%.2f" % verdict.longest,
                  "%.0f" % (1e3 * verdict.behind), exits, text), flush=True)


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--kvt", required=True, metavar="PROGRAM")
    parser.add_argument("--kvt-option", action="append", default=[], metavar="OPTION",
                        help="passed on, e.g. --kvt-option=--reply-check=refuse; none by default")
    parser.add_argument("--bound", type=float, default=0.0, metavar="SECONDS",
                        help="how long a wrong value may be shown; 0 by default: not at all")
    parser.add_argument("--seconds", type=int, default=3, help="length of each poll; 3 by default")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=4, help="rows at a time; 4 by default")
    parser.add_argument("--line", choices=sorted(ENDS), action="append")
    parser.add_argument("--must-be-zero", action="store_true",
                        help="only the rows that the tests insist on")
    parser.add_argument("--list", action="store_true", help="name the rows and their scripts")
    parser.add_argument("--messages", action="store_true", help="print what kvt says, too")
    parser.add_argument("rows", nargs="*", metavar="ROW", help="only rows with this in their name")
    return parser.parse_args()


def chosen(arguments):
    found = [row for row in (rows.must_be_zero() if arguments.must_be_zero else rows.ALL)
             if not arguments.rows or any(word in row.name for word in arguments.rows)]
    return [(row, end) for row in found for end in arguments.line or sorted(ENDS)]


def main():
    arguments = parse_arguments()
    work = chosen(arguments)
    if not work:
        sys.exit("attack.py: no such row")
    if arguments.list:
        for row in dict.fromkeys(row for row, _ in work):
            print("%-44s %-5s %s" % (row.name, row.tags, "; ".join(
                "%s: %s" % (when, script or "nothing") for script, when in row.rules)))
        return
    failed = 0
    with tempfile.TemporaryDirectory() as arguments.folder, \
            concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        for name, tags in TAGS.items():
            memory.save_tags(os.path.join(arguments.folder, name + ".csv"), tags)

        def perform(job):
            stage = Stage(*job, arguments)
            return stage, stage.run()
        print_head()
        for (row, end), (stage, verdict) in zip(work, pool.map(perform, work)):
            found = complaints(row, verdict, arguments.bound)
            failed += bool(found)
            print_row(row, end, verdict, found)
            if arguments.messages:
                print(stage.messages, end="")
    print("\n%d of %d rows failed" % (failed, len(work)))
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
