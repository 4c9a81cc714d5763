"""Builds one mutant at a time beside a build, and runs the tests on it."""
import collections
import hashlib
import math
import os
import re
import resource
import shutil
import signal
import subprocess
import time

MEMORY_bytes = 4 << 30
LONG_TEST_s = 0.5 # these come last
DRIVER_OBJECTS = "driver/CMakeFiles/KVT.dir"
HOST_OBJECTS = "host/CMakeFiles/kvt_host.dir"
HOST_ARCHIVE = "host/libkvt_host.a"
NOT_BUILT, KILLED, HUNG, SAME_CODE, SURVIVED = "not built", "killed", "hung", "same code", "survived"


class Workbench:
    """One for each process, with a directory of its own. `times` has the seconds that each test takes."""

    def __init__(self, build, directory, precompiled):
        self.build, self.directory, self.precompiled = build, directory, precompiled
        self.times, self.kills, self.copies = {}, collections.Counter(), set()
        self.mutant, self.library_changed = None, False
        self.library = next(word for word in build.link("KVT") if word.startswith("lib/libKVT.so"))
        shutil.rmtree(directory, ignore_errors=True)
        (directory / "lib").mkdir(parents=True)
        for name in ("libKVT.so.1", "libKVT.so"):
            (directory / "lib" / name).symlink_to(os.path.basename(self.library))
        self.environment = dict(os.environ, LD_LIBRARY_PATH=str(directory / "lib"), MALLOC_PERTURB_="165",
                                QTEST_DISABLE_STACK_DUMP="1", QTEST_DISABLE_CORE_DUMP="1", TMPDIR=str(directory))
        self.link_library({})

    def link_library(self, objects):
        """Links the driver with `objects` (the build's name: file) in place of the build's own."""
        to = self.directory / self.library
        words = [str(objects.get(word, to if word == self.library else word)) for word in self.build.link("KVT")]
        to.unlink(missing_ok=True)
        return self.build.run(words)

    def program_of(self, test, objects):
        """The test's program, linked anew where it holds changed objects, or knows where the driver lies.
        None if it cannot be built."""
        command = self.build.link(self.build.program(test))
        own = [name for name in self.build.own_objects(test) if self.knows_library(name)]
        changed = self.changed_in(test, objects if HOST_ARCHIVE in command else {})
        program = self.directory / "programs" / self.build.program(test)
        if changed is None:
            return None
        if not changed and not own:
            return self.build.path / self.build.program(test)
        if not changed and test in self.copies:
            return program
        self.copies.discard(test)
        if not self.link_program(command, {**self.compiled_anew(own), **changed}, program):
            return None
        if not changed:
            self.copies.add(test)
        return program

    def changed_in(self, test, objects):
        """The host's changed objects, and with a changed header those of the test that see it; None if one
        of these cannot be compiled."""
        if not self.mutant or not self.mutant.file.endswith(".h"):
            return objects
        own = self.compiled([name for name in self.build.own_objects(test) if self.mutant.file in self.build.sees[name]])
        return None if own is None else {**objects, **own}

    def link_program(self, command, objects, program):
        program.parent.mkdir(parents=True, exist_ok=True)
        program.unlink(missing_ok=True)
        words = []
        for word in command:
            if word == HOST_ARCHIVE: # what stands before it is not taken from it
                words += [str(file) for name, file in objects.items() if name.startswith(HOST_OBJECTS)]
            words.append(str(objects.get(word, program if word.endswith(program.name) and words[-1] == "-o" else word)))
        return self.build.run(words)

    def knows_library(self, name):
        """True for an object that is made of something that names the driver's path."""
        return name in self.build.with_path

    def compiled_anew(self, names):
        """Objects that hold this workbench's path of the driver, each made once."""
        made = {}
        for name in names:
            made[name] = self.directory / "own" / name
            if not made[name].exists():
                made[name].parent.mkdir(parents=True, exist_ok=True)
                words, source = self.build.compiles[name]
                if not self.build.run([*self.with_own_library(words), "-w", "-c", str(source), "-o", str(made[name])]):
                    raise RuntimeError(f"cannot compile {source}")
        return made

    def changed_objects(self, mutant):
        """The build's names of the driver's objects that the mutant changes, else of the host's."""
        return (self.build.objects_with(mutant.file, DRIVER_OBJECTS) or
                self.build.objects_with(mutant.file, HOST_OBJECTS))

    def make_overlay(self, mutant):
        """Puts the changed file where it goes before that of the tree."""
        shutil.rmtree(self.directory / "overlay", ignore_errors=True)
        file = self.directory / "overlay" / mutant.file
        file.parent.mkdir(parents=True)
        file.write_text(mutant.apply((self.build.source / mutant.file).read_text().split("\n")))

    def compiled(self, names):
        """Compiles these objects with the changed file. Returns the build's name and the file of each, or None."""
        objects = {name: self.directory / "objects" / name for name in names}
        for name, file in objects.items():
            file.parent.mkdir(parents=True, exist_ok=True)
            words = self.build.compile(name, self.directory / "overlay", self.precompiled(name, False), file)
            if not self.build.run(self.with_own_library(words)):
                return None
        return objects

    def with_own_library(self, words):
        return [word.replace(str(self.build.path / self.library), str(self.directory / self.library)) for word in words]

    def built(self, mutant):
        """Compiles the mutant and links the driver if it is of the driver. Returns the changed objects of
        other programs, or None if it cannot be built."""
        self.make_overlay(mutant)
        names = self.changed_objects(mutant)
        objects = self.compiled(names)
        of_driver = bool(objects) and names[0].startswith(DRIVER_OBJECTS)
        linked = self.link_library(objects if of_driver else {}) if of_driver or self.library_changed else True
        self.library_changed = of_driver
        if not linked:
            return None
        return {} if of_driver else objects

    def judge(self, mutant, tests):
        """Returns one of the verdicts above."""
        self.mutant = mutant
        objects = self.built(mutant)
        if objects is None:
            return NOT_BUILT
        order = sorted(tests, key=lambda test: -self.kills[mutant.file, test] / (0.1 + self.times[test]))
        quick = [test for test in order if self.times[test] < LONG_TEST_s]
        verdict = self.first_failure(quick, objects)
        if verdict == SURVIVED and self.is_same_code(mutant):
            return SAME_CODE
        if verdict == SURVIVED:
            return self.first_failure([test for test in order if test not in quick], objects)
        return verdict

    def first_failure(self, tests, objects):
        for test in tests:
            verdict = self.run_test(test, objects)
            if verdict != SURVIVED:
                self.kills[self.mutant.file, test] += 1
                return verdict
        return SURVIVED

    def run_test(self, test, objects):
        program = self.program_of(test, objects)
        if program is None:
            return KILLED # the test's own assertions for the compiler
        usual = self.times.get(test, 10.0)
        started = time.monotonic()
        process = subprocess.Popen([str(program), *self.build.tests[test][1:]], cwd=self.directory, env=self.environment,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                   start_new_session=True, preexec_fn=lambda: limit(usual))
        try:
            status = process.wait(timeout=10 * usual + 5)
        except subprocess.TimeoutExpired:
            status = None
        if status is None:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()
            return HUNG
        if status == 0:
            self.times.setdefault(test, time.monotonic() - started)
            return SURVIVED
        return HUNG if status in (-signal.SIGXCPU, -signal.SIGKILL) else KILLED

    def is_same_code(self, mutant):
        """True when the optimised machine code is that of the file as it is."""
        overlay, empty = self.directory / "overlay", self.directory / "empty"
        return all(self.code_of(name, overlay, False) == self.code_of(name, empty, True)
                   for name in self.changed_objects(mutant))

    def code_of(self, name, overlay, keep):
        """A digest of the optimised assembly of an object."""
        kept = self.directory / "code" / name
        if keep and kept.exists():
            return kept.read_text()
        assembly = self.directory / "assembly.s"
        if not self.build.run(self.build.compile(name, overlay, self.precompiled(name, True), assembly, True)):
            return None
        digest = hashlib.sha256(re.sub(r"^\s*\.file.*$", "", assembly.read_text(), flags=re.MULTILINE)
                                .encode()).hexdigest()
        if keep:
            kept.parent.mkdir(parents=True, exist_ok=True)
            kept.write_text(digest)
        return digest


def limit(usual):
    """In the test's process: a mutant may want all the memory or time there is."""
    seconds = math.ceil(10 * usual) + 2
    resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds + 1))
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY_bytes, MEMORY_bytes))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
