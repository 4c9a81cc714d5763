"""What the attack tries: one row each, on TCP and on a pseudo-terminal.

`rules` are pairs of a script (see misbehaviour.py) and when it is due. `tags` is the list that is
polled: mixed (three kinds of cells at two stations) or alike (words of one station, whose replies
differ in nothing but their digits). `least` is the share of good values, or of acknowledged writes,
in per cent that a row has to reach: a program that shows nothing is safe, but of no use.
`physics` says why no master can help it. A wrong value may be shown as good for `bound` seconds.
"""
import collections

Row = collections.namedtuple("Row", "name doing rules tags least physics bound")


ANY = "1/10"  # at any time: one of ten


def _poll(name, script, when=ANY, tags="mixed", least=0, physics="", bound=0.0):
    rules = tuple(script) if isinstance(script, list) else ((script, when),)
    return Row(name, "poll", rules, tags, least, physics, bound)


def _with_alike(name, *rest, **more):
    """A row, and the same among replies alike."""
    return [_poll(name, *rest, **more), _poll(f"{name}, alike", *rest, tags="alike", **more)]


def _read(name, script, when="all", least=0, physics=""):
    return Row(name, "read", ((script, when),), "mixed", least, physics, 0.0)


def _write(name, script, when="all", least=0, physics=""):
    return Row(name, "write", ((script, when),), "mixed", least, physics, 0.0)


LATE = "nothing but time tells a reply of that station and length from the true one"
LATE_DUPLICATE = "a repetition behind the next request looks like its answer"
KEPT_BACK = "a line that keeps one reply back until the next request, among replies alike"

WELL_BEHAVED = [
    _poll("nothing wrong", "R", "all", least=99),
    _poll("byte by byte, 5 ms between", "G5 R", "all", least=95),
    _poll("in two pieces, 15 ms between", "R[0:4] @15 R[4:]", "all", least=95),
    _poll("half a time-out late", "@0.5T R", "all", least=90),
    _poll("echo of the request", "Q R", "all", least=95),
]
LOST_AND_LATE = [
    _poll("lost", "", least=50),
    *(_poll(f"late, {late} time-outs", f"@{late}T R", least=50) for late in (1.2, 1.5, 1.9)),
    *_with_alike("late, 2.5 time-outs", "@2.5T R", physics=LATE),
    _poll("late, 3.5 time-outs", "@3.5T R", physics=LATE),
    _poll("all late, 1.2 time-outs", "@1.2T R", "all"),
    *_with_alike("all late, 2.2 time-outs", "@2.2T R", "all", physics=LATE),
]
CUT = [
    *(_poll(f"cut after {count}", f"R[0:{count}]", least=50) for count in (1, 3, 5)),
    _poll("cut before CR", "R[0:-1]", least=50),
    *(_poll(f"cut after 5, the rest {pause} ms later", f"R[0:5] @{pause} R[5:]", least=20)
      for pause in (40, 100)),
    _poll("LF for CR", "R[0:-1] 0A", least=50),
]
DOUBLED = [
    _poll("twice", "R R", least=50),
    _poll("all twice", "R R", "all"),
    *_with_alike("twice, 1 ms between", "R @1 R", physics=LATE_DUPLICATE),
    _poll("once twice, 1 ms between, alike", "R @1 R", "100", tags="alike",
          physics=LATE_DUPLICATE),
    _poll("all twice, 1 ms between, alike", "R @1 R", "all", tags="alike",
          physics=LATE_DUPLICATE),
    _poll("twice, 30 ms between", "R @30 R", physics=LATE_DUPLICATE),
    _poll("the one before ahead", "P R", physics=LATE_DUPLICATE),
    _poll("the one before behind", "R P", least=20),
]
FOREIGN = [
    _poll("another station instead", "F", least=20),
    _poll("another station always", "F", "all"),
    _poll("another station ahead", "F R", least=20),
    _poll("another station ahead, 3 ms", "F @3 R", least=20),
    _poll("another station always ahead", "F R", "all"),
    _poll("another station behind", "R F", least=20),
    _poll("another station behind, 1 ms", "R @1 F", least=20),
]
NOISE = [
    *(_poll(f"ahead: {noise}", f"{noise} R", least=20)
      for noise in ("00FF55", "0D", "15", "06 0D")),
    *_with_alike("ahead: 15 0D, 1 of 100", "15 0D R", "1/100", least=20),
    _poll("ahead: 15 0D, once, alike", "15 0D R", "100", tags="alike", least=20),
    _poll("ahead: 15 0D", "15 0D R"),
    *_with_alike("ahead: 15 0D, 5 ms", "15 0D @5 R", "1/100"),
    *(_poll(f"within: {noise}", f"R[0:4] {noise.replace(' ', '')} R[4:]", least=20)
      for noise in ("0D", "15", "15 0D", "55")),
    *(_poll(f"behind: {noise}", f"R {noise}", least=20) for noise in ("55", "0D", "15 0D")),
    _poll("behind: 0D, 1 ms", "R @1 0D"),
    *_with_alike("behind: 15 0D, 1 ms", "R @1 15 0D"),
    _poll("ahead: 5 random", "*5 R", "5%", least=20),
    _poll("behind: 5 random", "R *5", "5%", least=20),
    _poll("random for a reply", "*20", least=20),
    _poll("always random", "*20", "all"),
]
DIGITS = [
    _poll("digits zz", "R/zz", least=20),
    _poll("digits zz always", "R/zz", "all"),
    _poll("digits :;", "R/:;", least=20),
    _poll("a blank digit", "R[0:-2] 20 0D", least=20),
    _poll("lower case", "R/lower", "all"),
]
REFUSALS = [
    _poll("refused", "15 S 0D", least=20),
    _poll("refused with a reason", "15 S 3031 0D", least=20),
    _poll("refused with a reason, the reply behind", "15 S 3031 0D R"),
    _poll("refused, the reply behind", "15 S 0D R"),
    *_with_alike("refused, the reply 5 ms behind", "15 S 0D @5 R"),
    _poll("NAK alone", "15", least=20),
    _poll("NAK CR", "15 0D", least=20),
    _poll("NAK of another station", "15 f 0D", least=20),
    _poll("NAK of another station ahead", "15 f 0D R"),
    _poll("refused always", "15 S 0D", "all"),
]
STREAMS = [
    _poll("endless true replies", "E9:R", "60"),
    _poll("endless digits", "E9:31", "60"),
    _poll("endless refusals", "E9:153031" "0D", "60"),
    _poll("endless CR", "E9:0D", "60"),
    _poll("endless echo", "E9:Q", "60"),
]
BROKEN = [
    _poll("connection closed", "X", "1/50", least=20),
    _poll("connection closed within a reply", "R[0:4] X", "1/50", least=20),
    _poll("connection closed, the reply 120 ms later", "X @120 R", "1/50"),
    _poll("connection closed, the reply 150 ms later", "X @150 R", "1/50"),
]
SHIFTED = [
    # No pause hears anything there: it takes two requests that differ to see it.
    _poll("each answers the one before", "P", "all", bound=0.5),
    _poll("each answers the one before, alike", "P", "all", tags="alike",
          physics=KEPT_BACK),
    _poll("from 100 on the one before", "P", "100-999999"),
    _poll("a bit of everything", [
        ("", "1%"), ("@1.5T R", "1%"), ("R[0:5]", "1%"), ("R R", "1%"), ("F", "1%"),
        ("15 0D R", "1%"), ("R/zz", "1%"), ("R[0:4] 0D R[4:]", "1%"), ("15 S 0D", "1%"),
        ("*7 R", "1%"), ("R *3", "1%"), ("F R", "1%")], least=20),
]
READS = [
    _read("read: nothing wrong", "R", least=100),
    _read("read: another station", "F"),
    _read("read: another station ahead", "F R"),
    _read("read: another station ahead of the 2nd", "F R", "2"),
    _read("read: digits zz", "R/zz"),
    _read("read: lower case", "R/lower"),
    _read("read: 15 0D ahead of the 2nd", "15 0D R", "2"),
    _read("read: 15 0D ahead of all", "15 0D R"),
    _read("read: 2nd twice, 1 ms between", "R @1 R", "2"),
    _read("read: last twice, 50 ms between", "R @50 R", "12"),
    _read("read: last twice, 90 ms between", "R @90 R", "12"),
    _read("read: last lost, 3 late", "@3T R", "12-14"),
    _read("read: each answers the one before", "P", physics=KEPT_BACK),
]
WRITES = [
    _write("write: nothing wrong", "R", least=100),
    _write("write: zz in the acknowledgement", "R/zz", least=100),
    _write("write: echo of the request", "Q R", least=100),
    _write("write: another station", "F"),
    _write("write: another station ahead", "F R"),
    _write("write: lost", ""),
    _write("write: 1st lost", "", "1/2", least=100),
    _write("write: late, 1.5 time-outs", "@1.5T R"),
    _write("write: echo alone", "Q"),
    _write("write: refused though done", "15 S 0D", physics="a PLC that lies"),
    _write("write: NAK alone", "15"),
    _write("write: NAK CR", "15 0D"),
    _write("write: NAK of another station", "15 f 0D"),
    _write("write: cut before CR", "R[0:-1]"),
    _write("write: one byte short", "R[0:4] 0D"),
    _write("write: 06 0D", "06 0D"),
    _write("write: random", "*5 0D"),
    _write("write: a word's reply", "06 S 31323334 0D"),
    _write("write: 00FF55 ahead", "00FF55 R"),
]
ALL = (WELL_BEHAVED + LOST_AND_LATE + CUT + DOUBLED + FOREIGN + NOISE + DIGITS + REFUSALS +
       STREAMS + BROKEN + SHIFTED + READS + WRITES)

# The rows that the tests insist on; one that a change mends is added here.
MUST_BE_ZERO = [
    "nothing wrong", "lost", "cut after 1", "cut after 3", "cut before CR", "LF for CR",
    "ahead: 00FF55", "refused", "refused with a reason", "NAK alone", "NAK CR",
    "NAK of another station", "endless digits", "read: nothing wrong", "write: nothing wrong",
    "write: zz in the acknowledgement", "write: lost", "write: cut before CR",
    "write: one byte short", "write: a word's reply", "write: NAK alone", "write: 06 0D",
    "another station instead", "another station always", "ahead: 15 0D, 1 of 100",
    "digits zz always", "read: another station", "read: digits zz", "write: another station",
    "write: NAK of another station", "write: random"]


def must_be_zero():
    """The rows of that list, each of which there has to be."""
    by_name = {row.name: row for row in ALL}
    return [by_name[name] for name in MUST_BE_ZERO]
