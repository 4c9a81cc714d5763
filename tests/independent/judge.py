"""Compares what `kvt` shows with what the memory held."""
import dataclasses

import fields


@dataclasses.dataclass
class Verdict:
    """What one run came to. A wrong value is one shown as good that its tag never held."""
    shown: int = 0         # values in all outputs, after the first second of a poll
    good: int = 0          # of these, shown as good; of writes: acknowledged
    wrong: int = 0         # wrong values, each counted once however long it stayed
    another: int = 0       # of these, values of another tag
    longest: float = 0.0   # seconds that the wrong value stayed which stayed longest
    behind: float = 0.0    # seconds by which a good value was older than its age, at most
    denied: int = 0        # writes carried out, not acknowledged and not called uncertain
    exits: tuple = ()
    faults: tuple = ()     # whatever else is wrong, in words

    def share(self):
        return 100.0 * self.good / self.shown if self.shown else 0.0


def _owner(memory, value, name):
    """Whether another tag holds such values."""
    return any(cell.held_until(value, float("inf")) is not None
               for other, cell in memory.cells.items() if other != name)


class _Stays:
    """Wrong values of the tags, from the output that brings one to the one that takes it away."""

    def __init__(self, verdict):
        self._verdict = verdict
        self._since = {}

    def see(self, name, now, wrong_value):
        value, since = self._since.get(name, (None, now))
        if value is not None:
            self._verdict.longest = max(self._verdict.longest, now - since)
        if wrong_value is None:
            self._since.pop(name, None)
            return False
        self._since[name] = (wrong_value, since)
        return value != wrong_value


def judge_poll(outputs, memory, status):
    """`outputs` are (time of arrival, object); `status` is the exit status."""
    verdict = Verdict(exits=(status,))
    stays = _Stays(verdict)
    snapshots = [(at, o) for at, o in outputs if fields.is_snapshot(o)]
    for now, output in snapshots:
        for tag in fields.get(output, "tags"):
            name, good = fields.get(tag, "name"), fields.is_good(tag)
            value = fields.get(tag, "value")
            until = memory.cells[name].held_until(value, now) if good else None
            if now - snapshots[0][0] > 1.0:
                verdict.shown += 1
                verdict.good += good
            if until is not None:
                verdict.behind = max(verdict.behind, now - fields.age(tag) - until)
            if stays.see(name, now, value if good and until is None else None):
                verdict.wrong += 1
                verdict.another += _owner(memory, value, name)
    verdict.faults = tuple(_faults_of_poll(snapshots, status))
    return verdict


def _faults_of_poll(snapshots, status):
    if status is None:
        yield "does not end"
    elif status not in (0, 1):
        yield "exit status %s" % status
    if not snapshots:
        yield "no output"
    elif status == 0 and not all(fields.is_good(t) for t in fields.get(snapshots[-1][1], "tags")):
        yield "exit status 0 without good values"


def judge_reads(objects, memory, statuses, now):
    """`objects` are those that each `kvt read` has printed; all reads were done by `now`."""
    verdict = Verdict(exits=tuple(statuses))
    for status, output in zip(statuses, objects):
        for read in fields.get(output, "reads", []):
            verdict.shown += 1
            if not fields.is_taken(read):
                continue
            verdict.good += 1
            name, value = fields.get(read, "name"), fields.get(read, "value")
            if memory.cells[name].held_until(value, now) is None:
                verdict.wrong += 1
                verdict.another += _owner(memory, value, name)
                verdict.longest = float("inf")
    verdict.faults = tuple(_faults_of_runs(objects, statuses))
    return verdict


@dataclasses.dataclass
class WriteRun:
    """One `kvt write`: what it printed, and what the slave knows of it."""
    output: dict
    status: int
    properly: bool   # the slave sent its acknowledgement unharmed, at least once
    taken: bool      # the memory holds the value


def judge_writes(runs):
    verdict = Verdict(exits=tuple(run.status for run in runs))
    for run in runs:
        verdict.shown += 1
        if fields.is_acknowledged(run.output) or run.status == 0:
            verdict.good += 1
            if not (run.properly and run.taken):
                verdict.wrong += 1
                verdict.longest = float("inf")
        elif run.taken and not fields.is_uncertain(run.output):
            verdict.denied += 1
    verdict.faults = tuple(_faults_of_runs([run.output for run in runs], verdict.exits))
    return verdict


def _faults_of_runs(objects, statuses):
    if None in statuses:
        yield "does not end"
    if any(status not in (0, 1, None) for status in statuses):
        yield "exit status other than 0 and 1"
    if any(status in (0, 1) and not output for output, status in zip(objects, statuses)):
        yield "no output"
