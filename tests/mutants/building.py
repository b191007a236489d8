"""Compiles what a mutation touches, and links the DLL and whatever tests link the library's sources themselves."""
import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess

# What most sources include, read once: half of what compiling one of them costs.
PREFIX_HEADER = "".join(f"#include <{header}>\n" for header in (
    "windows.h", "jni.h", "algorithm", "cstddef", "cstdint", "cstdio", "cstdlib", "cstring", "cwchar", "iterator",
    "optional", "span", "string_view", "tuple", "utility"))
DLL = "WinUtil64"


class Builder:
    """A copy of the sources and its objects, in `work`; what is linked takes the place of what the build made.

    A test source that includes a header of the library is not compiled again when that is broken.
    """

    def __init__(self, sources, build, work):
        self.sources, self.build, self.work = sources, build, work
        self.copy, self.objects, self.broken = work / "src", work / "objects", work / "broken"
        self.archive = work / "libwinutil_workers.a"
        commands = json.loads((build / "compile_commands.json").read_text())
        self.flags = {pathlib.Path(entry["file"]).relative_to(sources).as_posix(): self.flags_of(entry["command"])
                      for entry in commands
                      if entry["file"].startswith(f"{sources}/") and entry["file"].endswith(".cpp")}
        self.dependants = self.read_dependants()
        self.touched = []   # targets that have a mutation in them
        self.links = {}     # target -> its link command
        self.pulled = {}    # target -> the objects that it takes from the archive

    def flags_of(self, command):
        words, result = iter(shlex.split(command)), []
        for word in words:
            if word in ("-o", "-c"):
                next(words)
            elif word != "-g" and not word.startswith("-W"):
                result.append(word.replace(f"-I{self.sources}", f"-I{self.copy}"))
        return [word for word in result if not word.endswith("ccache")] + ["-w", "-g0"]

    def read_dependants(self):
        """Which sources include a header."""
        result, current = {}, None
        deps = subprocess.check_output(["ninja", "-C", self.build, "-t", "deps"], text=True)
        for line in deps.splitlines():
            if not line.startswith(" "):
                target = re.match(r"src/CMakeFiles/\w+\.dir/(.+)\.obj:", line)
                current = target and target[1]
            elif current:
                header = pathlib.Path(os.path.normpath(self.build / line.strip()))
                if header.is_relative_to(self.sources):
                    result.setdefault(header.relative_to(self.sources).as_posix(), []).append(current)
        return result

    def prepare(self, programs):
        """Compiles and links everything as it is; objects that are newer than their sources stay."""
        shutil.rmtree(self.copy, ignore_errors=True)
        shutil.copytree(self.sources, self.copy)
        self.objects.mkdir(exist_ok=True)
        stale = [source for source in self.flags if self.is_stale(source)]
        if stale:
            self.compile_good(stale)
        for target in (DLL, "open_worker", *programs):
            self.read_link(target)
        if not self.link(self.links, {}):
            raise RuntimeError("what is as it should be does not link")
        pristine = self.work / "pristine"
        pristine.mkdir(exist_ok=True)
        for target in self.links:
            shutil.copy2(self.file_of(target), pristine / target)

    def is_stale(self, source):
        inputs = ["CMakeLists.txt", *(file for file, sources in self.dependants.items() if source in sources)]
        made = self.objects / object_of(source)
        newest = max((self.sources / file).stat().st_mtime for file in inputs)
        return not made.exists() or made.stat().st_mtime < newest

    def compile_good(self, sources):
        print(f"compiling {len(sources)} sources", flush=True)
        header = self.work / "prefix.h"
        header.write_text(PREFIX_HEADER)
        flags = self.flags["bridge/errors.cpp"]
        subprocess.run([*flags, "-x", "c++-header", header, "-o", f"{header}.gch"], check=True)
        self.broken.mkdir(exist_ok=True)
        for source in sources:
            if not self.compile(source, self.broken):
                raise RuntimeError(f"{source} does not compile as it is")
            (self.broken / object_of(source)).replace(self.objects / object_of(source))
        self.archive.unlink(missing_ok=True)
        subprocess.run(["x86_64-w64-mingw32-ar", "qcs", self.archive, *sorted(self.objects.iterdir())], check=True)

    def compile(self, source, folder):
        command = [*self.flags[source], "-include", self.work / "prefix.h", "-c", self.copy / source, "-o",
                   folder / object_of(source)]
        return subprocess.run(command, stderr=subprocess.DEVNULL).returncode == 0

    def read_link(self, target):
        commands = subprocess.check_output(["ninja", "-C", self.build, "-t", "commands", target], text=True)
        command = next(part for part in commands.splitlines()[-1].split(" && ") if " -o " in part)
        if "libwinutil_workers.a" in command:
            self.links[target] = [word for word in shlex.split(command) if not word.startswith("-Wl,--out-implib")]
            self.pulled[target] = set()

    def file_of(self, target):
        command = self.links[target]
        return self.build / command[command.index("-o") + 1]

    def link(self, targets, broken):
        """Links the targets with the broken objects, a map from names to files, in place of the good ones."""
        for target in targets:
            workers = [file for name, file in broken.items() if name in self.pulled[target]]
            map_file = self.work / f"{target}.map"
            command = [*self.links[target], "-s", f"-Wl,-Map={map_file}"]
            for index, word in enumerate(command):
                own = re.fullmatch(rf"src/CMakeFiles/{DLL}\.dir/(.+)\.obj", word)
                if own:
                    name = object_of(own[1])
                    command[index] = str(broken.get(name, self.objects / name))
            place = command.index("src/libwinutil_workers.a")
            command[place:place + 1] = [*map(str, workers), str(self.archive)]
            if subprocess.run(command, cwd=self.build, stderr=subprocess.DEVNULL).returncode != 0:
                return False
            if not broken:
                found = re.findall(rf"^{re.escape(str(self.archive))}\((.+)\)", map_file.read_text(), re.MULTILINE)
                self.pulled[target] = set(found)
        return True

    def make(self, mutation):
        """Builds with the mutation. Returns what came of it: "built", "stillborn" or "equivalent"."""
        sources = [mutation.file] if mutation.file in self.flags else self.dependants.get(mutation.file, [])
        original = (self.copy / mutation.file).read_bytes()
        shutil.rmtree(self.broken, ignore_errors=True)
        self.broken.mkdir()
        (self.copy / mutation.file).write_bytes(mutation.apply(original))
        try:
            for source in sources:
                if not self.compile(source, self.broken):
                    return "stillborn"
        finally:
            (self.copy / mutation.file).write_bytes(original)
        changed = {file.name: file for file in self.broken.iterdir()
                   if file.read_bytes() != (self.objects / file.name).read_bytes()}
        if not changed:
            return "equivalent"
        self.restore()
        self.touched = [target for target in self.links if target == DLL or self.pulled[target] & changed.keys()]
        return "built" if self.link(self.touched, changed) else "stillborn"

    def restore(self):
        """Puts back what the last mutation was linked into: what the next one does not touch must be as it was."""
        for target in self.touched:
            shutil.copy2(self.work / "pristine" / target, self.file_of(target))
        self.touched = []


def object_of(source):
    return source.replace("/", "-") + ".obj"
