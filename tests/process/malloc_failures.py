"""Lets every single allocation of a program fail, one a run, and judges how each run ends.

    malloc_failures.py --kvt PROGRAM --library libKVT.so.1 --host HOST --preload LIBRARY
                       [--most N] [--jobs N]

The runs are those of kvt poll, read, decode and plan, and of a small host of the driver. Each is run once
as it is, then with its first, second, third ... allocation failing, and with that one and all later
ones. It may do without and end as ever; it may end with a message and another status; it may be
aborted, which is what C++ does about memory that has run out; and the libraries beneath may crash
for themselves, as GLib does on purpose. It must not crash in code of ours, hang, end without a
message, or end with status 0 and other output than usual. --most N tries N allocations of each,
evenly spread, not all. The exit status is 1 if a run did what it must not.
"""
import argparse
import collections
import concurrent.futures
import os
import queue
import re
import signal
import subprocess
import sys
import tempfile

LIMIT_S = 60
KINDS = ["as ever", "message", "aborted", "crash beneath", "crash", "silent", "wrong", "hung"]
BAD = ["crash", "silent", "wrong", "hung"]


def run(words, preload, at=0, on=False, count=None):
    environment = dict(os.environ, LC_ALL="C.UTF-8", LD_PRELOAD=preload)
    for name, value in (("KVT_FAIL_AT", at), ("KVT_FAIL_ON", 1 if on else 0), ("KVT_FAIL_COUNT", count)):
        if value:
            environment[name] = str(value)
    try:
        return subprocess.run(words, env=environment, capture_output=True, timeout=LIMIT_S,
                              stdin=subprocess.DEVNULL, check=False)
    except subprocess.TimeoutExpired:
        return None


def text_of(ended):
    """What it printed, but for times."""
    return re.sub(rb'"(reply_ms":[0-9.e-]+|time":"[^"]+")', b"", ended.stdout)


def values_of(ended):
    """The values that a poll printed; what else it tells depends on how often it had to ask."""
    return re.findall(rb'"(?:name|quality|text)":"[^"]*"|"value":[0-9]+', ended.stdout)


def messages_of(ended):
    """Without the line that names the driver, which is no message."""
    return b"".join(line for line in ended.stderr.splitlines() if not line.startswith(b"kvt: driver "))


def kind_of(ended, usual, result_of):
    """One of KINDS."""
    if ended is None:
        return "hung"
    if ended.returncode == 0:
        return "as ever" if result_of(ended) == result_of(usual) else "wrong"
    if ended.returncode > 0:
        return "message" if messages_of(ended).strip() else "silent"
    if ended.returncode == -signal.SIGABRT:
        return "aborted"
    return "crash beneath" if is_beneath(ended) else "crash"


def is_beneath(ended):
    """Whether it crashed in Qt or GLib: by the innermost call that is not the C library's."""
    if ended.returncode == -signal.SIGTRAP:
        return b"GLib-ERROR" in ended.stderr
    for frame in re.findall(rb"^(/\S+?)\(", ended.stderr, re.MULTILINE):
        name = os.path.basename(frame)
        if not name.startswith((b"libfailing_malloc", b"libc.so")):
            return name.startswith((b"libQt5Core", b"libglib"))
    return False


def places(calls, most):
    if most == 0 or calls <= most:
        return range(1, calls + 1)
    return sorted({1 + i * (calls - 1) // (most - 1) for i in range(most)})


def usual_run(words, preload):
    """How it ends with all the memory it asks for, and how often it asks."""
    with tempfile.NamedTemporaryFile() as file:
        usual = run(words, preload, count=file.name)
        file.seek(0)
        calls = int(file.read() or 0)
    if usual is None or usual.returncode != 0 or not calls:
        sys.exit(f"malloc_failures: {' '.join(words)} does not work as it is: {usual}")
    return usual, calls


def try_all(name, words, lines, options, result_of=text_of):
    """Tries one run with all its failures; `lines` are the ends of as many PLCs as there are jobs."""
    usual, calls = usual_run(words + lines[0], options.preload)
    free = queue.SimpleQueue()
    for line in lines:
        free.put(line)

    def attempt(place):
        line = free.get()
        ended = run(words + line, options.preload, *place)
        free.put(line)
        return ended

    tally = collections.Counter()
    bad = []
    tries = [(at, on) for at in places(calls, options.most) for on in (False, True)]
    with concurrent.futures.ThreadPoolExecutor(len(lines)) as pool:
        for (at, on), ended in zip(tries, pool.map(attempt, tries)):
            kind = kind_of(ended, usual, result_of)
            tally[kind] += 1
            if kind in BAD:
                bad.append((at, on, kind, ended))
    print(f"| {name} | {calls:,} | {len(tries):,} | " + " | ".join(f"{tally[k]:,}" for k in KINDS) + " |",
          flush=True)
    for at, on, kind, ended in bad[:5]:
        told = "" if ended is None else f"status {ended.returncode}, {ended.stdout!r} {ended.stderr.decode()}"
        print(f"malloc_failures: {name}: allocation {at}{' and later' if on else ''}: {kind}: {told}",
              file=sys.stderr)
    return not bad


class SimulatedLines:
    """As many simulated PLCs as asked for, each with the words that point kvt to it."""

    def __init__(self, kvt, count):
        self.plcs = [subprocess.Popen([kvt, "sim", "--values", "constant"], stdout=subprocess.PIPE,
                                      stderr=subprocess.DEVNULL) for _ in range(count)]

    def __enter__(self):
        return [["--serial", plc.stdout.readline().decode().strip()] for plc in self.plcs]

    def __exit__(self, *_):
        for plc in self.plcs:
            plc.terminate()
            plc.communicate()


def main():
    parser = argparse.ArgumentParser()
    for option in ("--kvt", "--library", "--host", "--preload"):
        parser.add_argument(option, required=True)
    parser.add_argument("--most", type=int, default=0)
    parser.add_argument("--jobs", type=int, default=2 * os.cpu_count())
    options = parser.parse_args()
    print("| run | allocations | tries | " + " | ".join(KINDS) + " |")
    print("| --- |" + " ---: |" * (len(KINDS) + 2))
    with tempfile.TemporaryDirectory() as folder, SimulatedLines(options.kvt, options.jobs) as lines:
        tags = os.path.join(folder, "tags.csv")
        with open(tags, "w", encoding="utf-8") as file:
            file.write("name,area,address,station,type\nlevel,D,5.2.1,1,u16\nvalve,X,1.1.0,1,u8\n")
        nothing = [[]] * options.jobs
        read = ["read", "D", "5.2.1", "--json", "--timeout", "10000"]
        poll = ["poll", "--tags", tags, "--json", "--cycles", "1"]
        good = [try_all("driver in a small host", [options.host, options.library], nothing, options),
                try_all("`kvt decode`", [options.kvt, "decode", "053031303532380D"], nothing, options),
                try_all("`kvt plan`", [options.kvt, "plan", "--tags", tags], nothing, options),
                try_all("`kvt read`", [options.kvt] + read, lines, options),
                try_all("`kvt poll`", [options.kvt] + poll, lines, options, values_of)]
    sys.exit(0 if all(good) else 1)


if __name__ == "__main__":
    main()
