#!/usr/bin/env python3
"""A simulated PLC of several stations, written from docs/protocol.md alone.

    slave.py --tags plant.csv --pty /tmp/plc
    slave.py --tags plant.csv --tcp 0 --fault nak-cr-then-true --when 1/100
    slave.py --tags plant.csv --tcp 0 --fault '@1.5T R' --when 2% --seed 7

Prints the name of its line first and, at Ctrl-C or after --seconds, what it has done.
"""
import argparse
import collections
import time

import line
import memory
import misbehaviour
import wire

# One request: what was asked, the reply that would be true, and whether that went out unharmed.
Exchange = collections.namedtuple("Exchange", "time number kind request script reply unharmed")


class Slave:
    """Answers requests from a memory; how it spoils replies is up to a plan."""

    def __init__(self, memory_, plan=None, turnaround=0.002, baud=0, filler=b"00"):
        self.memory = memory_
        self.plan = plan or misbehaviour.Plan()
        self.turnaround = turnaround
        self.baud = baud  # what the master counts with; 0 without a speed
        self.filler = filler
        self.log = []
        self.counts = collections.Counter()
        self._reader = wire.RequestReader()
        self.restart()

    def answer(self, data):
        """What goes on the line for the bytes that have arrived."""
        pieces = []
        for request in self._reader.feed(data):
            pieces += [(self.turnaround + t, piece) for t, piece in self._exchange(request)]
        self.counts["dropped"] = self._reader.dropped
        return pieces

    def restart(self):
        """Exchanges count from 1 again, and there was no reply before."""
        self._number = 0
        self._previous = b""

    def _exchange(self, request):
        if request.station not in self.memory.stations:
            self.counts["not addressed"] += 1
            return []
        self.counts["exchanges"] += 1
        self._number += 1
        number = self._number
        kind, reply, foreign = self._carry_out(request)
        self.counts[kind] += 1
        script = self.plan.script(number, kind)
        context = misbehaviour.Context(request, reply, foreign, self._previous,
                                       self._other_station(request.station),
                                       self._timeout(len(reply)), self.plan.rng)
        pieces = misbehaviour.play(script, context)
        self._previous = reply
        unharmed = "R" in script.split() or kind == "write" and script.startswith("R/")
        self.log.append(Exchange(time.monotonic(), number, kind, request, script, reply, unharmed))
        return pieces

    def _carry_out(self, request):
        """(kind, true reply, reply of another station)."""
        other = self._other_station(request.station)
        acknowledged = (wire.write_reply(request.station, self.filler),
                        wire.write_reply(other, self.filler))
        if self.memory.is_command(request):
            return ("command",) + acknowledged
        if request.digits:
            cell = self.memory.find_write(request)
            if cell is None:
                return "refused", wire.refusal(request.station), wire.refusal(other)
            cell.write(int(request.digits, 16))
            return ("write",) + acknowledged
        found = self.memory.find_read(request)
        if found is None:
            return "refused", wire.refusal(request.station), wire.refusal(other)
        area, cells = found
        strange = self.memory.strange_data(request.station, area)
        return ("read", wire.data_reply(request.station, self.memory.read(cells)),
                wire.data_reply(other, strange))

    def _other_station(self, station):
        return next((s for s in self.memory.stations if s != station), (station + 1) % 256)

    def _timeout(self, length):
        """The master's default: 70 ms and the time of the reply at the line's speed."""
        return 0.070 + (10.0 * length / self.baud if self.baud else 0.0)


def start(end, slave):
    """A running slave at that end of a line; stop() it in the end."""
    server = line.Server(end, slave.answer)
    server.start()
    return server


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--tags", required=True, help="tag list: the cells that exist")
    where = parser.add_mutually_exclusive_group(required=True)
    where.add_argument("--pty", metavar="LINK")
    where.add_argument("--tcp", metavar="PORT", type=int)
    parser.add_argument("--fault", default="none", metavar="SCRIPT",
                        help="%s, or a script: %s" % (", ".join(misbehaviour.NAMED),
                                                      misbehaviour.__doc__.split("\n")[2]))
    parser.add_argument("--when", default="all", help="all, 1/N, N%%, or exchanges A-B")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--turnaround", type=float, default=2, metavar="MS")
    parser.add_argument("--baud", type=int, default=0, help="what T in a script is computed with")
    parser.add_argument("--still", action="store_true", help="values do not move by themselves")
    parser.add_argument("--seconds", type=float, default=1e9)
    arguments = parser.parse_args()

    try:
        tags = memory.load_tags(arguments.tags)
        plan = misbehaviour.Plan([misbehaviour.Rule(arguments.fault, arguments.when)],
                                 arguments.seed)
    except (OSError, ValueError, KeyError) as error:
        parser.error(str(error))
    end = line.TcpEnd(arguments.tcp) if arguments.tcp is not None else line.PtyEnd(arguments.pty)
    slave = Slave(memory.Memory(tags, not arguments.still), plan, arguments.turnaround / 1e3,
                  arguments.baud)
    server = start(end, slave)
    print(end.name, flush=True)
    try:
        time.sleep(arguments.seconds)
    except KeyboardInterrupt:
        pass
    server.stop()
    print(" ".join("%s=%d" % item for item in sorted(slave.counts.items())))


if __name__ == "__main__":
    main()
