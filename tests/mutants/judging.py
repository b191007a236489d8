"""Runs the native test programs against the DLL that was linked last."""
import os
import pathlib
import re
import shutil
import signal
import subprocess
import time

# A mutant must not take what memory the machine has; nothing in the tests needs a tenth of this.
MEMORY_LIMIT = 4 << 30

# What the entry points of a source belong to, where that is not its name.
ROOMS_OF_EXPORTS = {"encrypted_files": "filesystem", "links": "filesystem", "security": "filesystem",
                    "shell": "filesystem"}


class Judge:
    """The test programs, each with how long it takes and what fails in it without any mutation."""

    def __init__(self, build, work, template):
        self.tests = build / "tests"
        self.programs = {path.stem: path for path in sorted(self.tests.rglob("*_tests.exe"))}
        self.results = work / "results"
        self.results.mkdir(exist_ok=True)
        self.template, self.prefix = template, work / "wine"
        self.left_out, self.seconds = {}, {}

    def room_of(self, program):
        return self.programs[program].relative_to(self.tests).parts[0]

    def renew_prefix(self):
        """A Wine prefix of the mutants' own, since they may leave anything in it."""
        self.end_prefix()
        subprocess.run(["cp", "-a", self.template, self.prefix], check=True)
        self.start_wine()

    def end_prefix(self):
        if self.prefix.exists():
            self.stop_wine()
            shutil.rmtree(self.prefix)

    def start_wine(self):
        subprocess.run(["wineserver", "-p"], env=self.environment(), check=True)

    def stop_wine(self):
        subprocess.run(["wineserver", "-k"], env=self.environment())
        subprocess.run(["wineserver", "-w"], env=self.environment())

    def environment(self, **more):
        return {**os.environ, "WINEPREFIX": str(self.prefix), **more}

    def run(self, program, limit, **environment):
        """Returns (what failed, the output); nothing failed where the first is None."""
        command = ["prlimit", f"--data={MEMORY_LIMIT}", "--core=0", "wine", self.programs[program], "--gtest_brief=1",
                   "--gtest_filter=-" + ":".join(self.left_out.get(program, []))]
        # Into a file: what Wine starts in the background keeps a pipe open.
        output_file = self.results / "output.txt"
        with output_file.open("wb") as stream, subprocess.Popen(
                command, cwd=self.results, env=self.environment(**environment), stdin=subprocess.DEVNULL, stdout=stream,
                stderr=subprocess.STDOUT, start_new_session=True) as process:
            try:
                process.wait(limit)
            except subprocess.TimeoutExpired:
                os.killpg(process.pid, signal.SIGKILL)
                self.stop_wine()
                self.start_wine()
                return "hangs", ""
        output = output_file.read_text("utf-8", "replace")
        failed = re.search(r"^\[  FAILED  \] ([^\s,]+)", output, re.MULTILINE)
        if process.returncode == 0:
            return None, output
        return failed[1] if failed else f"exit code {process.returncode}", output

    def measure(self):
        """Runs everything without a mutation. What is red then says nothing of a mutant, and is left out."""
        for program in self.programs:
            begin = time.monotonic()
            failure, output = self.run(program, 600)
            red = sorted(set(re.findall(r"^\[  FAILED  \] ([^\s,]+)", output, re.MULTILINE)))
            if failure and not red:
                raise RuntimeError(f"{program} fails without a mutation: {failure}\n{output[-2000:]}")
            self.left_out[program] = red
            self.seconds[program] = time.monotonic() - begin
            if red:
                print(f"red without a mutation, left out: {program}: {' '.join(red)}", flush=True)

    def distance(self, program, mutation):
        room = mutation.room
        if room == "exports":
            stem = pathlib.PurePosixPath(mutation.file).stem
            room = ROOMS_OF_EXPORTS.get(stem, stem)
        tested = self.room_of(program)
        return "matrix" if tested == "faults" else "room" if tested == room else "others"

    def order(self, mutation):
        """The programs of the mutation's room, those of all others, the fault matrix; the quick ones first."""
        return sorted(self.programs, key=lambda program: (
            ("room", "others", "matrix").index(self.distance(program, mutation)), self.seconds[program]))

    def killer(self, mutation):
        """What kills the DLL that was linked, as columns of the results; None where nothing does."""
        for program in self.order(mutation):
            failure, _ = self.run(program, 15 + 4 * self.seconds[program], GTEST_FAIL_FAST="1")
            if failure:
                return {"by": self.distance(program, mutation), "program": program, "test": failure}
        return None

    def still_sound(self, programs):
        """Whether these programs pass; asked with the good DLL in place, for what mutants may have left behind."""
        return all(self.run(program, 15 + 4 * self.seconds[program])[0] is None for program in programs)
