"""Mutants of a C++ source: one small change each, by a fixed list of operators.

Changed are: arithmetic, comparing, logical and bit operators; numbers (one more); true and false;
break and continue; a negation left out; the condition of an if or a while turned round; a choice
(?:) that always takes the one side, or the other; least and greatest, first and last, append and
prepend; ++ and --; a statement, a lock or a bare return left out; a result replaced by an empty one.

Not changed are: types, declarations and the order of statements, which the compiler or the layout
tests judge; texts, which the tests of what people read judge; the step of a for loop, because a
loop that runs the other way only hangs; conditions on several lines as a whole, whose parts are
changed; preprocessor lines and static assertions.
"""
import re
import typing

# Replaced where the operator stands between blanks, as clang-format sets it.
BINARY = {
    "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"], "==": ["!="], "!=": ["=="],
    "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["*"], "&&": ["||"], "||": ["&&"],
    "&": ["|"], "|": ["&"], "^": ["|"], "<<": [">>"], ">>": ["<<"],
    "+=": ["-="], "-=": ["+="], "^=": ["|="],
}
BINARY_PATTERN = re.compile(r"(?<= )(<<|>>|<=|>=|==|!=|&&|\|\||\+=|-=|\^=|[<>+\-*/%&|^])(?= |$)")
NUMBER = re.compile(r"(?<![\w.'\"])(0x[0-9A-Fa-f]+|[0-9]+)([uU]?)(?![\w.'\"])")
WORDS = {
    "true": "false", "false": "true", "break;": ";", "continue;": ";", "return;": ";",
    "qMin": "qMax", "qMax": "qMin", "std::min": "std::max", "std::max": "std::min",
    ".first()": ".last()", ".last()": ".first()", ".append(": ".prepend(", ".prepend(": ".append(",
}
WORD_PATTERN = re.compile(r"(?:\b(?:true|false|qMin|qMax|std::min|std::max)\b|\b(?:break|continue|return);"
                          r"|\.(?:first|last)\(\)|\.(?:append|prepend)\()")
CONDITION = re.compile(r"^(\s*(?:(?:\} )?else )?(?:if|while) \()(.*)(\)(?: \{)?)$")
NEGATION = re.compile(r"(?<![\w)])!(?=[\w(])|~(?=[\w(])")
CHOICE = re.compile(r"(?<= )\?(?= )|^\s*\?(?= )")
STEP = re.compile(r"^(\s+)(\+\+|--)(?=[\w.>-]+;$)")
# A call or an assignment that is a statement of its own, or a lock.
STATEMENT = re.compile(r"^\s+(?!return\b|const\b|static\b|typedef\b|using\b|case\b|Q_|else\b|if\b|for\b|while\b)"
                       r"(?:QMutexLocker \w+\(.*\);|\+\+[\w.>-]+;|--[\w.>-]+;"
                       r"|[A-Za-z_*][\w.:>\[\]()*-]*(?:\(.*\)| (?:[+\-|&^]?=) .*|\+\+|--);)$")
STATEMENT_START = re.compile(r"^\s+(?!return\b|else\b|if\b|for\b|while\b|switch\b|noThrow\b)"
                             r"[A-Za-z_*][\w.:>\[\]()*-]*(?:\(| (?:[+\-|&^]?=)(?: |$))[^{]*$")
RESULT = re.compile(r"^(\s+(?:\{ )?return )(?!0;|true;|false;|nullptr;|[\w:]+\(\);)([^;{]+);")
UNCHANGED = re.compile(r"\s*(//|#|static_assert|template|namespace|using |extern |alignas|KVT_ASSERT)")
FUNCTION = re.compile(r"^(?=[\w*&<>:])(?:.* [*&]*)?((?:\w+::)*~?[\w!=]+)\(")
MEMBER = re.compile(r"^    (?!if\b|for\b|while\b|switch\b|return\b|else\b)\w[^()]* [*&]*([\w!=]+)\(.*\)(?: const)?(?: \{.*)?$")


class Mutant(typing.NamedTuple):
    """Lines `first` to `last`, from 1, of the file become `text`."""
    file: str
    function: str
    first: int
    last: int
    before: str
    text: str

    def key(self):
        """What names it in equivalent.txt: the file, the function, the code as it is, as changed."""
        return self.file, self.function, self.before, " ".join(self.text.split())

    def apply(self, lines):
        return "\n".join(lines[:self.first - 1] + [self.text] + lines[self.last:])

    def __str__(self):
        """Its place, and the line of equivalent.txt that wants a reason."""
        return f"{self.file}:{self.first}\n    {' @ '.join(self.key())} @"


def masked(line):
    """The line with texts, characters and comments blanked, so that nothing in them is changed."""
    line = re.sub(r'"(?:\\.|[^"\\])*"|\'(?:\\.|[^\'\\])*\'', lambda m: "\x01" * len(m.group()), line)
    return re.sub(r"\s*//.*$", "", line)


def is_one_comparison(condition):
    """Turned round by the operator, or by the negation left out, already."""
    return not re.search(r"&&|\|\|", condition) and re.search(r"^!| (?:[<>]=?|[!=]=) ", condition)


def variants(line, begins_statement):
    """Yields the line, without its comment, in each changed form."""
    plain = masked(line)
    line = line[:len(plain)]

    def put(begin, end, text):
        return line[:begin] + text + line[end:]

    for match in BINARY_PATTERN.finditer(plain):
        for other in BINARY[match.group()]:
            yield put(match.start(), match.end(), other)
    for match in NUMBER.finditer(plain):
        yield put(match.start(), match.end(), str(int(match.group(1), 0) + 1) + match.group(2))
    for match in WORD_PATTERN.finditer(plain):
        yield put(match.start(), match.end(), WORDS[match.group()])
    for match in NEGATION.finditer(plain):
        yield put(match.start(), match.end(), "")
    for match in CHOICE.finditer(plain):
        yield put(match.start(), match.end(), "&& false ?")
        yield put(match.start(), match.end(), "|| true ?")
    condition = CONDITION.match(plain)
    if condition and plain.count("(") == plain.count(")") and not is_one_comparison(condition.group(2)):
        yield put(condition.start(2), condition.end(2), "!(" + line[condition.start(2):condition.end(2)] + ")")
    step = STEP.match(plain)
    if step:
        yield put(step.start(2), step.end(2), "--" if step.group(2) == "++" else "++")
    if begins_statement and STATEMENT.match(plain):
        yield re.match(r"\s*", line).group() + ";"
    result = RESULT.match(plain)
    if result:
        yield put(result.start(2), result.end(2), "{}")


def end_of_statement(lines, index):
    """Index of the line that ends the call or assignment that begins at `index`; None if that one does or none."""
    plain = masked(lines[index])
    if plain.endswith(";") or not STATEMENT_START.match(plain):
        return None
    for end in range(index + 1, min(index + 6, len(lines))):
        plain = masked(lines[end])
        if "{" in plain or "}" in plain:
            return None
        if plain.endswith(";"):
            return end
    return None


def function_of(file, line):
    """The name of the function whose head the line is, else None."""
    if line.endswith(";"):
        return None
    head = FUNCTION.match(line) or (file.endswith(".h") and MEMBER.match(line))
    return head.group(1) if head else None


def mutants_of(file, text):
    """Yields the mutants of a source text."""
    lines = text.split("\n")
    function = ""
    previous = ""
    for index, line in enumerate(lines):
        function = function_of(file, line) or function
        if UNCHANGED.match(line):
            continue
        plain = masked(line)
        begins_statement = previous.endswith((";", "{", "}", ":", ")", "else"))
        before = " ".join(line[:len(plain)].split())
        for variant in dict.fromkeys(variants(line, begins_statement)):
            yield Mutant(file, function, index + 1, index + 1, before, variant)
        end = end_of_statement(lines, index) if begins_statement else None
        if end is not None:
            before = " ".join(" ".join(lines[index:end + 1]).split())
            yield Mutant(file, function, index + 1, end + 1, before, ";")
        previous = plain or previous
