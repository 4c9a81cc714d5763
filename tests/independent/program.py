"""Runs `kvt` and collects what it prints."""
import json
import subprocess
import threading
import time

GRACE = 10.0  # seconds beyond the time it was given, after which a program counts as hung


def _collect(stream, lines):
    for line in stream:
        lines.append((time.monotonic(), line))


def run(command, seconds):
    """(exit status or None if it hung, [(time of arrival, object)], what it said on standard error)."""
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                               stderr=subprocess.PIPE, text=True)
    lines, messages = [], []
    readers = [threading.Thread(target=_collect, args=pair)
               for pair in ((process.stdout, lines), (process.stderr, messages))]
    for reader in readers:
        reader.start()
    try:
        status = process.wait(seconds + GRACE)
    except subprocess.TimeoutExpired:
        status = None
        process.kill()
        process.wait()
    for reader in readers:
        reader.join()
    process.stdout.close()
    process.stderr.close()
    objects = []
    for at, text in lines:
        try:
            objects.append((at, json.loads(text)))
        except ValueError:
            messages.append((at, "not JSON: " + text))
    return status, objects, "".join(text for _, text in messages)
