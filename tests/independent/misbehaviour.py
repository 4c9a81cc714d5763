"""How a PLC, or the line, spoils a reply.

A spoiled reply is written as a script: words parted by blanks, carried out from left to right.

    R            the true reply               P    the reply before, of whatever station
    R[2:5] R[-1] a part of it                 F    the reply that another station would send
    R/zz         its last data digits are zz  Q    the request, as an echo
    R/lower      its digits in lower case     S f  two digits of its station, of another station
    150D         these bytes                  *20  so many random bytes
    @30          30 ms later                  @1.5T  1.5 of the master's time-outs later
    G5           from here on byte by byte, with 5 ms before each
    E2:R         that, again and again for 2 s
    X            the connection is closed (on TCP); what follows meets the next one

An empty script loses the reply.
"""
import random
import re

import wire

# Name, script: what the command line and the attack choose from.
NAMED = {
    "none": "R",
    "lost": "",
    "twice": "R R",
    "echo": "Q R",
    "echo-alone": "Q",
    "foreign": "F",
    "foreign-first": "F R",
    "foreign-behind": "R F",
    "behind": "P",
    "digits": "R/zz",
    "lower": "R/lower",
    "no-cr": "R[0:-1]",
    "bad-cr": "R[0:-1] 0A",
    "refuse": "15 S 0D",
    "nak": "15",
    "nak-cr": "15 0D",
    "nak-foreign": "15 f 0D",
    "nak-cr-then-true": "15 0D R",
    "garbage": "*20",
    "endless-true": "E9:R",
    "endless-digits": "E9:31",
}


class Context:
    """One reply to be spoiled. `timeout` is the master's, in seconds."""

    def __init__(self, request, reply, foreign, previous, other_station, timeout, rng):
        self.request = request
        self.reply = reply
        self.foreign = foreign
        self.previous = previous
        self.other_station = other_station
        self.timeout = timeout
        self.rng = rng


def _with_digits(reply, text):
    if text == "lower":
        return reply.lower()
    text = text.encode()
    end = len(reply) - 1
    text = text[-(end - 3):]
    return reply[:end - len(text)] + text + reply[end:]


def _slice(data, text):
    parts = [int(part) if part else None for part in text.split(":")]
    if len(parts) == 1:
        return data[parts[0]:][:1]
    return data[slice(*parts)]


def _bytes_of(word, context):
    """The bytes that a word stands for."""
    simple = {"R": context.reply, "P": context.previous, "F": context.foreign,
              "Q": context.request.raw, "S": b"%02X" % context.request.station,
              "f": b"%02X" % context.other_station}
    if word in simple:
        return simple[word]
    part = re.fullmatch(r"([RPFQ])\[(-?\d*:?-?\d*)\]", word)
    if part:
        return _slice(simple[part.group(1)], part.group(2))
    if word.startswith("R/"):
        return _with_digits(context.reply, word[2:])
    if word.startswith("*"):
        return bytes(context.rng.randrange(256) for _ in range(int(word[1:])))
    if re.fullmatch(r"([0-9A-Fa-f]{2})+", word):
        return bytes.fromhex(word)
    raise ValueError("not a word of a script: %s" % word)


def _wait(word, context):
    number = word[1:]
    return float(number[:-1]) * context.timeout if number.endswith("T") else float(number) / 1e3


STREAM_STEP = 0.002  # seconds between the pieces of an endless stream


def play(script, context):
    """The pieces of the reply, as (seconds from now, bytes), in their order; None hangs up."""
    now, gap, pieces = 0.0, 0.0, []
    for word in script.split():
        if word.startswith("@"):
            now += _wait(word, context)
        elif word.startswith("G"):
            gap = float(word[1:]) / 1e3
        elif word.startswith("E"):
            seconds, piece = word[1:].split(":")
            data = _bytes_of(piece, context)
            end = now + float(seconds)
            while now < end:
                pieces.append((now, data))
                now += STREAM_STEP
        elif word == "X":
            pieces.append((now, None))
        elif gap:
            for byte in _bytes_of(word, context):
                now += gap
                pieces.append((now, bytes([byte])))
        else:
            pieces.append((now, _bytes_of(word, context)))
    return [piece for piece in pieces if piece[1] != b""]


class Rule:
    """A script and when it is due: `all`, `1/N`, `N%` by chance, or the numbers `A-B`, from 1."""

    def __init__(self, script, when="all", kind="all"):
        self.script = NAMED.get(script, script)
        self.when = when
        self.kind = kind  # all, read or write
        play(self.script, Context(wire.Request(1, 0, 0, b"", b"\x05"), b"\x06010000\r", b"", b"", 2,
                                  1.0, random.Random(1)))  # complains about a wrong script now
        self.due(1, "read", random.Random(1))

    def due(self, number, kind, rng):
        if self.kind not in ("all", kind):
            return False
        if self.when == "all":
            return True
        if self.when.startswith("1/"):
            return number % int(self.when[2:]) == 0
        if self.when.endswith("%"):
            return rng.random() * 100 < float(self.when[:-1])
        first, _, last = self.when.partition("-")
        return int(first) <= number <= int(last or first)


class Plan:
    """The first rule that is due decides; with none, the reply is the true one."""

    def __init__(self, rules=(), seed=1):
        self.rules = list(rules)
        self.rng = random.Random(seed)

    def script(self, number, kind):
        due = [rule.due(number, kind, self.rng) for rule in self.rules]
        return next((rule.script for rule, is_due in zip(self.rules, due) if is_due), "R")
