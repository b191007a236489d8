"""Finds where C++ can be broken: one operator, constant, condition, statement, result or release at a time."""
import dataclasses
import re

import tree_sitter
import tree_sitter_cpp

LANGUAGE = tree_sitter.Language(tree_sitter_cpp.language())

# What an operator is broken into. Comparisons for order move their boundary, the others become their opposite.
OPERATORS = {
    "==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">", "&&": "||", "||": "&&",
    "+": "-", "-": "+", "*": "+", "/": "*", "%": "/", "&": "|", "<<": ">>", ">>": "<<",
    "+=": "-=", "-=": "+=", "|=": "&=", "&=": "|=", "<<=": ">>=", ">>=": "<<=", "++": "--", "--": "++",
}
OPPOSITES = {"true": "false", "TRUE": "FALSE", "JNI_TRUE": "JNI_FALSE"}
OPPOSITES |= {value: key for key, value in OPPOSITES.items()}

# Words before and in declarations that a parser without a preprocessor takes for names.
SYSTEM_MACROS = (b"JNIEXPORT", b"JNICALL", b"WINAPI", b"CALLBACK", b"STDAPICALLTYPE")

# Nothing in here runs: what these say is checked when it is compiled, or is not the library's.
PASSED_OVER = {"comment", "static_assert_declaration", "template_parameter_list", "noexcept"}

# Returning an empty value there changes nothing.
EMPTY_RESULTS = {"0", "false", "FALSE", "JNI_FALSE", "nullptr", "{}", "NULL"}


@dataclasses.dataclass(frozen=True)
class Mutation:
    """One way to break a file: what it is called, and which bytes become what."""
    file: str        # below src, with slashes
    function: str
    line: str        # its text
    name: str        # of the change; with the line and the function it is known again when the file has changed
    number: int      # of the line, from 1
    start: int
    end: int
    replacement: str

    @property
    def key(self):
        return self.file, self.function, self.line, self.name

    @property
    def room(self):
        return self.file.split("/")[0]

    def apply(self, source):
        return source[:self.start] + self.replacement.encode() + source[self.end:]


class Finder:
    """Walks one source file."""

    def __init__(self, file, source, owners):
        self.file = file
        self.source = source
        self.lines = source.decode().split("\n")
        self.owners = owners
        self.found = []

    def text(self, node):
        return self.source[node.start_byte:node.end_byte].decode()

    def add(self, node, name, replacement):
        row = node.start_point[0]
        self.found.append(Mutation(self.file, self.function_of(node), self.lines[row].strip(), name, row + 1,
                                   node.start_byte, node.end_byte, replacement))

    def function_of(self, node):
        while node is not None and node.type != "function_definition":
            node = node.parent
        while node is not None and node.type != "function_declarator":
            node = node.child_by_field_name("declarator") or \
                next((child for child in node.named_children if "declarator" in child.type), None)
        name = self.text(node.child_by_field_name("declarator")) if node is not None else "-"
        return name.removeprefix("Java_com_qarvo_kel_util_WindowsUtil_")

    def walk(self, node):
        if node.type in PASSED_OVER or node.type.startswith("preproc_include") or node.type == "preproc_def":
            return
        visit = getattr(self, "visit_" + node.type, None)
        if visit is not None:
            visit(node)
        for child in node.children:
            self.walk(child)

    def swap_operator(self, node):
        operator = node.child_by_field_name("operator")
        text = self.text(operator)
        if text in OPERATORS:
            self.add(operator, f"{text} becomes {OPERATORS[text]}", OPERATORS[text])

    def visit_binary_expression(self, node):
        self.swap_operator(node)
        if self.text(node.child_by_field_name("operator")) == "|":
            left, right = node.child_by_field_name("left"), node.child_by_field_name("right")
            for dropped, kept in ((left, right), (right, left)):
                if dropped.type != "binary_expression":
                    self.add(node, f"without {shortened(self.text(dropped))}", self.text(kept))

    visit_assignment_expression = swap_operator
    visit_update_expression = swap_operator

    def visit_unary_expression(self, node):
        operator = self.text(node.child_by_field_name("operator"))
        if operator in ("!", "-", "~"):
            argument = node.child_by_field_name("argument")
            self.add(node, f"{shortened(self.text(node))} without its {operator}", f"({self.text(argument)})")

    def visit_number_literal(self, node):
        text = self.text(node)
        changed = "0" if text == "1" else f"({text} + 1)" if text != "0" else "1"
        self.add(node, f"{text} becomes {changed.strip('()')}", changed)

    def visit_char_literal(self, node):
        changed = "L'!'" if self.text(node).startswith("L") else "'!'"
        self.add(node, f"{self.text(node)} becomes {changed}", changed)

    def visit_string_literal(self, node):
        text = self.text(node)
        language = node.parent.type.startswith("linkage_")
        if not language and not text.endswith('""'):
            self.add(node, f"{shortened(text)} emptied", text[:text.index('"')] + '""')

    def visit_true(self, node):
        self.add(node, f"{self.text(node)} becomes {OPPOSITES[self.text(node)]}", OPPOSITES[self.text(node)])

    visit_false = visit_true

    def visit_identifier(self, node):
        text = self.text(node)
        if text in OPPOSITES:
            self.visit_true(node)
        elif re.fullmatch(r"[A-Z][A-Z0-9]*_[A-Z0-9_]+", text) and node.parent.type in (
                "argument_list", "binary_expression", "case_statement", "init_declarator", "conditional_expression",
                "return_statement", "initializer_list", "assignment_expression"):
            self.add(node, f"{text} one more", f"({text} + 1)")

    def negate(self, condition):
        if condition is None or condition.type == "declaration":
            return
        text = self.text(condition)
        comparison = condition.type == "binary_expression" and \
            self.text(condition.child_by_field_name("operator")) in ("==", "!=")
        if not comparison and not text.startswith("!") and text not in ("true", "false"):
            self.add(condition, f"{shortened(text)} negated", f"!({text})")

    def visit_if_statement(self, node):
        clause = node.child_by_field_name("condition")
        if not any(self.text(child) == "constexpr" for child in node.children):
            self.negate(clause.child_by_field_name("value") if clause.type == "condition_clause" else clause)

    visit_while_statement = visit_if_statement

    def visit_conditional_expression(self, node):
        self.negate(node.child_by_field_name("condition"))

    def visit_expression_statement(self, node):
        if node.named_children and node.named_children[0].type in ("call_expression", "assignment_expression"):
            self.add(node, f"without {shortened(self.text(node))}", ";")

    def visit_return_statement(self, node):
        values = node.named_children
        if values and self.text(values[0]) not in EMPTY_RESULTS:
            self.add(node, f"{shortened(self.text(node))} returns nothing", "return {};")

    def visit_declaration(self, node):
        """An owner in a function: what it has is never given back."""
        declarator = node.child_by_field_name("declarator")
        words = {self.text(child) for child in node.children}
        if node.parent.type != "compound_statement" or declarator is None or "static" in words:
            return
        # To the parser, what is made of names alone may be the declaration of a function.
        value = declarator.child_by_field_name("value") or declarator.child_by_field_name("parameters")
        name = self.text(declarator.child_by_field_name("declarator") if value is not None else declarator)
        kind = self.text(node.child_by_field_name("type"))
        if not re.fullmatch(r"\w+", name) or not self.may_own(kind, value):
            return
        made = "{}" if value is None else self.text(value)
        if value is None or value.type in ("argument_list", "initializer_list", "parameter_list"):
            made = kind + made
        # Template arguments may be left to what it is made of.
        kept = kind if "<" in kind else f"decltype({made})"
        constant = "const " if "const" in words else ""
        self.add(node, f"{name} never gives back", (
            f"using KeptType = {kept}; static_assert(!std::is_trivially_destructible_v<KeptType>); "
            f"union Keeper {{ KeptType value; ~Keeper() {{}} }}; Keeper keeper{{.value = {made}}}; "
            f"{constant}KeptType& {name} = keeper.value;"))

    def may_own(self, kind, value):
        if kind == "auto":
            return value is not None and value.type == "call_expression" and "_cast<" not in self.text(value)
        return kind.split("<")[0].split("::")[-1] in self.owners

    def visit_template_type(self, node):
        """The kind of an owner: what closes its values is never called."""
        if self.text(node.child_by_field_name("name")) == "Resource":
            closing = node.child_by_field_name("arguments").named_children[1]
            self.add(closing, f"{self.text(closing)} never called", "[](auto) noexcept {}")


def shortened(text):
    text = " ".join(text.split())
    return text if len(text) <= 50 else text[:47] + "..."


def owners_in(sources):
    """The names of the types whose objects give something back at their end."""
    text = "\n".join(source.decode() for source in sources)
    names = set(re.findall(r"~(\w+)\(\)(?! = default)", text))
    names |= set(re.findall(r"using (\w+) = (?:Resource|Owned|LockScope)<", text))
    return names | set(re.findall(r"class (\w+) : public Owned<", text))


def without_macros(source):
    for macro in SYSTEM_MACROS:
        source = source.replace(macro, b" " * len(macro))
    return source


def numbered(mutations):
    """The same, so that no two have the same key."""
    seen = {}
    for mutation in mutations:
        count = seen[mutation.key] = seen.get(mutation.key, 0) + 1
        yield mutation if count == 1 else dataclasses.replace(mutation, name=f"{mutation.name} ({count})")


def find_mutations(folder):
    """Every mutation of the sources below the folder, in the order of the files and their lines."""
    files = sorted(path for path in folder.rglob("*") if path.suffix in (".cpp", ".h"))
    sources = {path.relative_to(folder).as_posix(): path.read_bytes() for path in files}
    owners = owners_in(sources.values())
    parser = tree_sitter.Parser(LANGUAGE)
    result = []
    for file, source in sources.items():
        finder = Finder(file, source, owners)
        finder.walk(parser.parse(without_macros(source)).root_node)
        result += numbered(sorted(finder.found, key=lambda mutation: (mutation.start, mutation.end)))
    return result
