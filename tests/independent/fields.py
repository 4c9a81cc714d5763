"""The one place that knows how `kvt --json` names things; case and underscores do not matter."""


def _plain(name):
    return name.replace("_", "").replace("-", "").lower()


def get(record, name, default=None):
    """The field of that name, however it is written."""
    wanted = _plain(name)
    for key, value in record.items():
        if _plain(key) == wanted:
            return value
    return default


def is_snapshot(record):
    """One output of a poll, not its summary."""
    return get(record, "tags") is not None


def is_good(tag):
    """A value of a poll that claims to be trustworthy; `doubtful`, `suspect` and others do not."""
    return get(tag, "quality") == "good" and get(tag, "value") is not None


def is_taken(read):
    """A value of `kvt read` that is shown without a reservation."""
    return (get(read, "ok") is True and get(read, "value") is not None and
            get(read, "quality", "good") == "good" and not get(read, "doubtful", False))


def age(tag):
    return get(tag, "age_ms", 0.0) / 1e3


def the_write(output):
    """The one write of what `kvt write` prints."""
    return (get(output, "writes") or [output])[0]


def is_acknowledged(write):
    return get(write, "state") == "acknowledged" or get(write, "ok") is True


def is_uncertain(write):
    return bool(get(write, "uncertain", False))
