"""What is linked with one mutation is as it was for the next one."""
import pathlib
import shutil
import tempfile
import unittest

import building
import places


class Copying(building.Builder):
    """Two sources, of which a test program has one; compiling copies, linking strings together."""

    def __init__(self, folder):
        self.build, self.work = folder, folder
        self.copy, self.objects, self.broken = folder / "src", folder / "objects", folder / "broken"
        self.flags = {"a.cpp": [], "b.cpp": []}
        self.dependants, self.touched = {}, []
        self.links = {building.DLL: ["-o", "dll"], "a_tests": ["-o", "a_tests"]}
        self.pulled = {building.DLL: {"a.cpp.obj", "b.cpp.obj"}, "a_tests": {"a.cpp.obj"}}
        for made in (self.copy, self.objects, folder / "pristine"):
            made.mkdir()
        for source in self.flags:
            (self.copy / source).write_text(f"good {source};")
            self.compile(source, self.objects)
        self.link(self.links, {})
        for target in self.links:
            shutil.copy2(self.file_of(target), folder / "pristine" / target)

    def compile(self, source, folder):
        shutil.copy2(self.copy / source, folder / building.object_of(source))
        return True

    def link(self, targets, broken):
        for target in targets:
            self.file_of(target).write_text("".join(
                broken.get(name, self.objects / name).read_text() for name in sorted(self.pulled[target])))
        return True

    def linked(self):
        return {target: self.file_of(target).read_text() for target in self.links}


def spoil(file):
    return places.Mutation(file=file, function="f", line="", name="", number=1, start=0, end=4, replacement="bad")


class Building(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.builder = Copying(pathlib.Path(folder.name))

    def test_a_mutation_is_in_everything_that_has_its_source(self):
        self.assertEqual(self.builder.make(spoil("a.cpp")), "built")
        self.assertEqual(self.builder.linked(), {building.DLL: "bad a.cpp;good b.cpp;", "a_tests": "bad a.cpp;"})

    def test_a_mutation_leaves_nothing_for_the_next_one(self):
        self.builder.make(spoil("a.cpp"))
        self.builder.make(spoil("b.cpp"))
        self.assertEqual(self.builder.linked(), {building.DLL: "good a.cpp;bad b.cpp;", "a_tests": "good a.cpp;"})

    def test_the_last_mutation_is_taken_back(self):
        good = self.builder.linked()
        self.builder.make(spoil("a.cpp"))
        self.builder.restore()
        self.assertEqual(self.builder.linked(), good)


if __name__ == "__main__":
    unittest.main()
