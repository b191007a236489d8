"""What can be broken in a few lines, each way of breaking them once."""
import pathlib
import tempfile
import unittest

import places


def broken(*lines, before=""):
    """What a function of these lines becomes, each with the name of its change."""
    source = before + "\nint f(int a, int b) {\n" + "\n".join(lines) + "\n}\n"
    with tempfile.TemporaryDirectory() as folder:
        pathlib.Path(folder, "f.cpp").write_text(source)
        found = places.find_mutations(pathlib.Path(folder))
    return {mutation.name: mutation.apply(source.encode()).decode().split("\n")[2 + before.count("\n")]
            for mutation in found if mutation.function == "f"}


class Places(unittest.TestCase):
    def test_operators(self):
        self.assertEqual(broken("return a <= b && a;"), {
            "<= becomes <": "return a < b && a;",
            "&& becomes ||": "return a <= b || a;",
            "return a <= b && a; returns nothing": "return {};",
        })

    def test_constants(self):
        self.assertEqual(broken("int c = 0, d = 2; bool e = true;"), {
            "0 becomes 1": "int c = 1, d = 2; bool e = true;",
            "2 becomes 2 + 1": "int c = 0, d = (2 + 1); bool e = true;",
            "true becomes false": "int c = 0, d = 2; bool e = false;",
        })
        self.assertEqual(broken("return ERROR_BUSY;"), {
            "ERROR_BUSY one more": "return (ERROR_BUSY + 1);",
            "return ERROR_BUSY; returns nothing": "return {};",
        })
        self.assertEqual(broken("""const wchar_t* c = L"text"; wchar_t d = L'x';"""), {
            'L"text" emptied': """const wchar_t* c = L""; wchar_t d = L'x';""",
            "L'x' becomes L'!'": """const wchar_t* c = L"text"; wchar_t d = L'!';""",
        })

    def test_flags(self):
        changes = broken("int c = READ_A | WRITE_B | SYNC_C;")
        self.assertEqual(changes["without SYNC_C"], "int c = READ_A | WRITE_B;")
        self.assertEqual(changes["without READ_A"], "int c = WRITE_B | SYNC_C;")

    def test_conditions(self):
        self.assertEqual(broken("if (a) b++;"), {"a negated": "if (!(a)) b++;", "++ becomes --": "if (a) b--;"})
        self.assertEqual(broken("if (!a) {}"), {"!a without its !": "if ((a)) {}"})
        self.assertEqual(broken("if constexpr (a) {}"), {})

    def test_statements(self):
        self.assertEqual(broken("g(a);"), {"without g(a);": ";"})
        self.assertEqual(broken("a = b;"), {"without a = b;": ";"})

    def test_releases(self):
        owner = "struct Handle { ~Handle() { close(); } };"
        self.assertEqual(broken("const Handle h(a);", before=owner), {"h never gives back": (
            "using KeptType = decltype(Handle(a)); static_assert(!std::is_trivially_destructible_v<KeptType>); "
            "union Keeper { KeptType value; ~Keeper() {} }; Keeper keeper{.value = Handle(a)}; "
            "const KeptType& h = keeper.value;")})
        self.assertEqual(broken("using File = Resource<HANDLE, CloseHandle>;"), {
            "CloseHandle never called": "using File = Resource<HANDLE, [](auto) noexcept {}>;"})

    def test_what_does_not_run(self):
        self.assertEqual(broken("static_assert(sizeof(int) == 4);", "// a == b"), {})

    def test_the_same_change_twice_in_a_line_has_two_names(self):
        self.assertEqual(broken("g(0, 0);").keys(), {"0 becomes 1", "0 becomes 1 (2)", "without g(0, 0);"})


if __name__ == "__main__":
    unittest.main()
