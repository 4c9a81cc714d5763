"""The commands of a build made by CMake and Ninja, to build one changed file without Ninja."""
import json
import os
import pathlib
import re
import shlex
import subprocess

# What the released library is compiled with, as far as it decides about the machine code.
OPTIMISED = ["-O2", "-DQT_NO_DEBUG", "-DNDEBUG"]
# What is undefined ends the test.
TRAPPED = ["-fsanitize=undefined", "-fsanitize-undefined-trap-on-error"]
OPTIMISATION = re.compile(r"-O\w?|-g\w*|-ftrivial-auto-var-init=.*|-D_GLIBCXX_ASSERTIONS")
INCLUDE = re.compile(r"^#include (<[^>]+>)", re.MULTILINE)


def output_of(words):
    return subprocess.run(words, check=True, stdout=subprocess.PIPE, text=True).stdout


def without_launcher(words):
    return words[1:] if pathlib.Path(words[0]).name == "ccache" else words


class Build:
    """Reads the commands of the build in `path` of the sources in `source`."""

    def __init__(self, source, path):
        self.source, self.path = source, path
        self.compiles = {}
        for entry in json.loads((path / "compile_commands.json").read_text()):
            words = without_launcher(shlex.split(entry["command"]))
            at = words.index("-o")
            self.compiles[words[at + 1]] = (words[:at], pathlib.Path(entry["file"]))
        self.sees = self._dependencies()
        tests = json.loads(output_of(["ctest", "--test-dir", str(path), "--show-only=json-v1"]))["tests"]
        self.tests = {test["name"]: test.get("command") for test in tests} # none until it is built
        self.links = {}
        naming = {file for file in set().union(*self.sees.values()) if self._names_library(file)}
        self.with_path = {name for name, files in self.sees.items() if files & naming}

    def _names_library(self, file):
        path = self.source / file
        return path.is_file() and b"KVT_LIBRARY" in path.read_bytes()

    def _dependencies(self):
        """Each object with the files of the source tree that it is made of."""
        sees, object_ = {}, None
        for line in output_of(["ninja", "-C", str(self.path), "-t", "deps"]).splitlines():
            if line.startswith("    "):
                file = os.path.relpath(os.path.join(self.path, line.strip()), self.source)
                if not file.startswith(".."):
                    sees[object_].add(file)
            elif line:
                object_ = line.split(":")[0]
                sees[object_] = set()
        return sees

    def objects_with(self, file, folder):
        """The objects beneath `folder` of the build that a change of `file` changes."""
        return sorted(name for name, files in self.sees.items() if name.startswith(folder + "/") and file in files)

    def link(self, target):
        """The command that links `target`."""
        if target not in self.links:
            lines = output_of(["ninja", "-C", str(self.path), "-t", "commands", target]).splitlines()
            commands = [line for line in lines if line.startswith(": && ") and " -o " in line]
            self.links[target] = shlex.split(commands[-1].removeprefix(": && ").removesuffix(" && :"))
            self.links[target] = without_launcher(self.links[target])
        return self.links[target]

    def program(self, test):
        """The program of a test, from the build's root."""
        return os.path.relpath(self.tests[test][0], self.path)

    def own_objects(self, test):
        """The objects of a test's program alone."""
        return [word for word in self.link(self.program(test)) if word in self.compiles]

    def run(self, words):
        """True when the command succeeds."""
        quiet = dict(os.environ, CCACHE_DISABLE="1")
        return subprocess.run(words, cwd=self.path, env=quiet, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL, check=False).returncode == 0

    def precompile(self, objects, directory, optimised):
        """Compiles the system's headers that these objects include; the directory is for `compile`."""
        files = sorted(set().union(*(self.sees[name] for name in objects)))
        texts = [(self.source / name).read_text() for name in files if (self.source / name).is_file()]
        headers = sorted(set(re.findall(INCLUDE, "\n".join(texts))))
        directory.mkdir(parents=True, exist_ok=True)
        (directory / "all.h").write_text("".join(f"#include {name}\n" for name in headers))
        words = self._flags(objects[0], optimised)
        if not self.run([*words, "-x", "c++-header", str(directory / "all.h"), "-o", str(directory / "all.h.gch")]):
            raise RuntimeError(f"cannot compile {directory}/all.h")

    def _flags(self, name, optimised):
        words = self.compiles[name][0] + ["-w"]
        if optimised:
            return [word for word in words if not OPTIMISATION.fullmatch(word)] + OPTIMISED
        return words + TRAPPED

    def compile(self, name, overlay, headers, to, optimised=False):
        """The command that compiles the object `name`, with the files beneath `overlay` in place of the tree's."""
        source = self.compiles[name][1]
        changed = overlay / os.path.relpath(source, self.source)
        words = self._flags(name, optimised)
        words[1:1] = [*(["-include", str(headers / "all.h")] if headers else []), f"-I{overlay}"]
        return [*words, "-S" if optimised else "-c", str(changed if changed.is_file() else source), "-o", str(to)]
