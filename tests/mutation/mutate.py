"""Changes sources one small thing at a time and sees whether a test fails. See scripts/mutate."""
import argparse
import collections
import fnmatch
import multiprocessing
import os
import pathlib
import sys
import time

import commands
import mutants
import workbench
from workbench import HUNG, KILLED, NOT_BUILT, SAME_CODE, SURVIVED

HERE = pathlib.Path(__file__).resolve().parent
DRIVER = ["driver", "varlist", "cache", "protocol", "cycle"]
# Declarations and constants of the driver's interface: who changes one has another interface.
DECLARATIONS = ["driver/com_info.h", "driver/entry_points.h", "driver/record_layout.h", "driver/records.h",
                "driver/version.h"]
HOST = ["host/exchange_engine.cpp", "host/reply_check.cpp", "host/reply_check.h", "host/reply_collector.cpp",
        "host/reply_times.cpp", "host/reply_times.h", "host/step_watch.cpp", "host/step_watch.h",
        "host/write_tracker.cpp"]
# Tests that see a change, by patterns of their names.
DRIVER_TESTS = ["tst_library*", "fuzz_address", "fuzz_driver"]
HOST_TESTS = ["tst_exchange_engine*", "tst_host_session*", "tst_reply_*", "tst_step_watch", "tst_write_tracker",
              "tst_rig_faults", "tst_rig_proofs", "fuzz_session", "fuzz_slave_view"]
EQUIVALENT = HERE / "equivalent.txt"


def arguments():
    parser = argparse.ArgumentParser()
    parser.add_argument("--source", type=pathlib.Path, required=True)
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--targets", action="store_true", help="print what has to be built, and end")
    parser.add_argument("files", nargs="*")
    return parser.parse_args()


def all_files(source):
    """The driver's sources and headers that hold code, and those of the host's core."""
    driver = [str(path.relative_to(source)) for folder in DRIVER for ending in ("cpp", "h")
              for path in sorted((source / folder).glob(f"*.{ending}"))]
    return [name for name in driver if name not in DECLARATIONS] + HOST


def tests_of(source, name, known):
    """The tests that see a change of the file, those of its name first, then those of its folder."""
    folder, stem = pathlib.Path(name).parent.name, pathlib.Path(name).stem
    if folder in DRIVER:
        order = [folder] + [other for other in DRIVER if other != folder]
        found = [path.stem for other in order for path in sorted((source / "tests/unit" / other).glob("tst_*.cpp"))]
        patterns = DRIVER_TESTS
    else:
        found, patterns = [], HOST_TESTS
    found += [test for pattern in patterns for test in fnmatch.filter(known, pattern)]
    return sorted(dict.fromkeys(found), key=lambda test: stem not in test)


def equivalents():
    """Mutants that change nothing a caller can see: file, function, code as it is, as changed; and the reason."""
    entries = {}
    for text in EQUIVALENT.read_text().split("\n"):
        if text and not text.startswith("#"):
            fields = [field.strip() for field in text.split(" @ ")]
            if len(fields) != 5 or not fields[4]:
                sys.exit(f"{EQUIVALENT}: not five fields: {text}")
            entries[tuple(fields[:4])] = fields[4]
    return entries


class Precompiled:
    """Directories with the precompiled headers of the driver and of the host, plain and optimised."""

    def __init__(self, build, root):
        self.build, self.root = build, root

    def make(self):
        for folder in (workbench.DRIVER_OBJECTS, workbench.HOST_OBJECTS):
            objects = sorted(name for name in self.build.sees if name.startswith(folder + "/"))
            for optimised in (False, True):
                self.build.precompile(objects, self(objects[0], optimised), optimised)

    def __call__(self, name, optimised):
        """The directory for the object `name`; None for a test's."""
        if name.startswith("tests/"):
            return None
        return self.root / f"{name.split('/')[0]}-{'optimised' if optimised else 'plain'}"


bench = None # of a worker process


def begin_worker(build, root):
    global bench
    number = multiprocessing.current_process()._identity[0]
    bench = workbench.Workbench(build, root / f"worker-{number}", Precompiled(build, root / "headers"))


def time_test(test):
    """Seconds that a test takes with nothing changed; None if it fails."""
    bench.times.pop(test, None)
    return test, bench.times.get(test) if bench.run_test(test, {}) == SURVIVED else None


def judge(job):
    mutant, tests, bench.times = job
    return mutant, bench.judge(mutant, tests)


def usual_times(pool, tests):
    """Seconds that each test takes with nothing changed. Ends the program if one fails."""
    times = dict(pool.imap_unordered(time_test, tests))
    failing = sorted(test for test, seconds in times.items() if seconds is None)
    if failing:
        sys.exit(f"these fail before anything is changed: {' '.join(failing)}")
    return times


def try_all(pool, work):
    """Tries the mutants and prints those that survive. Returns the counts of each file, and the entries
    of equivalent.txt that were met."""
    known, met = equivalents(), set()
    counts = collections.defaultdict(collections.Counter)
    for mutant, verdict in pool.imap(judge, work):
        if verdict == SURVIVED and mutant.key() in known:
            verdict = "listed"
            met.add(mutant.key())
        elif verdict == SURVIVED:
            print(mutant, flush=True)
        counts[mutant.file][verdict] += 1
    return counts, met


def show_table(files, counts):
    rows = [(name, counts[name]) for name in files if counts[name]]
    rows.append(("all", sum((count for _, count in rows), collections.Counter())))
    print("\n| file | mutants | killed | changing nothing | survived | not built |\n"
          "| --- | ---: | ---: | ---: | ---: | ---: |")
    for name, count in rows:
        nothing = count[SAME_CODE] + count["listed"]
        killed = count[KILLED] + count[HUNG]
        print(f"| `{name}` | {killed + nothing + count[SURVIVED]:,} | {killed:,} | {nothing} | {count[SURVIVED]} "
              f"| {count[NOT_BUILT]} |")
    total = rows[-1][1]
    print(f"\nOf the killed {total[HUNG]} by a test that did not end; of those that change nothing {total[SAME_CODE]} "
          f"have the same machine code, and {total['listed']} are in tests/mutation/equivalent.txt.")


def main():
    args = arguments()
    files = args.files or all_files(args.source)
    build = commands.Build(args.source, args.build)
    started = time.monotonic()
    tests = {name: tests_of(args.source, name, build.tests) for name in files}
    needed = sorted(set().union(*tests.values()))
    if args.targets:
        print("\n".join(["KVT", *needed]))
        return 0
    root = args.build / "mutants"
    Precompiled(build, root / "headers").make()
    with multiprocessing.Pool(args.jobs, begin_worker, (build, root)) as pool:
        times = usual_times(pool, needed)
        counts, met = try_all(pool, [(mutant, tests[name], times) for name in files for mutant in
                                     mutants.mutants_of(name, (args.source / name).read_text())])
    stale = [key for key in equivalents() if key not in met and key[0] in files]
    for key in stale:
        print(f"in {EQUIVALENT.name}, but killed or not there: {' @ '.join(key)}")
    show_table(files, counts)
    print(f"{time.monotonic() - started:.0f} s")
    return 1 if stale or any(count[SURVIVED] for count in counts.values()) else 0


if __name__ == "__main__":
    sys.exit(main())
