"""The small faults that mutation_check.py makes, and the places of a source where each can be made.

It reads text and knows no C++ beyond the layout of this code: operators have blanks around them,
templates have none, and a statement that stands on one line is one statement.
"""

import re
from dataclasses import dataclass

COMPARISONS = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="}
NUMBER = re.compile(r"(?<![\w.'])(0[xX][0-9a-fA-F']+|\d[\d']*)(?=[uUlLzZ]*(?![\w.']))")
# What a statement on a line of its own may begin with; a declaration has a blank before its name.
CALL = re.compile(r"(?:\(void\))?\*?[\w:.\[\]()>*<-]*[\w\])]\(.*\);")
ASSIGNMENT = re.compile(r"\*?[\w.:>\[\]()*-]+ [-+|&]?= .*;")
STEP = re.compile(r"(?:\+\+|--)[\w.:>\[\]()*-]+;")
LEAVE = re.compile(r"(?:return|continue|break);")
KEYWORD = re.compile(r"(?:if|for|while|switch|return|throw|using|static_assert|delete|case|else|do)\b")
# Nothing that a test could see hangs on these: memory that is asked for early, and hints to the
# compiler.
WITHOUT_EFFECT = re.compile(
    r"\b(?:reserve|shrink_to_fit|PinToRegisters)\(|\balignas\b|= (?:default|delete);")
CONDITION = re.compile(r"(?:\} else )?(?:if|while) \((?P<inside>.*)\) \{$")


@dataclass(frozen=True)
class Mutant:
    """One fault: the lines from `line` on, counted from 1, become `after`."""
    file: str
    line: int
    operator: str
    before: tuple
    after: tuple

    def name(self):
        return f"{self.file}:{self.line} {self.operator}"


def blank_out(text):
    """The text with the insides of comments, strings and characters as blanks, lengths kept."""
    pattern = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|(?<![0-9a-fA-F])\'(?:\\.|[^\'\\\n])+\'',
                         re.DOTALL)

    def blanks(match):
        found = match.group(0)
        if found.startswith("/"):
            return re.sub(r"[^\n]", " ", found)
        return found[0] + "_" * (len(found) - 2) + found[-1]

    return pattern.sub(blanks, text)


def code_lines(text):
    """The text's lines without what is no code, as pairs of line number and code."""
    lines = blank_out(text).split("\n")
    inside = None  # what goes on over several lines and is left alone
    for number, code in enumerate(lines, 1):
        stripped = code.strip()
        if inside == "assert":
            inside = None if stripped.endswith(");") else inside
            continue
        if inside == "macro":
            inside = "macro" if stripped.endswith("\\") else None
            continue
        if stripped.startswith("#"):
            inside = "macro" if stripped.endswith("\\") else None
            continue
        if stripped.startswith("static_assert"):
            inside = None if stripped.endswith(");") else "assert"
            continue
        if stripped:
            yield number, code.rstrip()


def replaced(line, begin, end, text):
    return line[:begin] + text + line[end:]


def turn_comparison(line, code):
    for match in re.finditer(r"(?<= )(<=|>=|==|!=|<|>)(?= |$)", code):
        yield replaced(line, match.start(), match.end(), COMPARISONS[match.group()])


def negate_condition(line, code):
    match = CONDITION.match(code.strip())
    if not match or " = " in match["inside"].split("; ")[-1] or match["inside"].startswith("!"):
        return
    indent = len(code) - len(code.lstrip())
    begin = indent + match.start("inside")
    begin += match["inside"].rfind("; ") + 2 if "; " in match["inside"] else 0
    end = indent + match.end("inside")
    yield replaced(line, begin, end, f"!({line[begin:end]})")


def shift_constant(line, code):
    for match in NUMBER.finditer(code):
        digits = match.group().replace("'", "")
        if digits.lower().startswith("0x"):
            value = int(digits, 16)
            changed = [f"0x{value + 1:X}", f"0x{value - 1:X}" if value > 0 else None]
        else:
            value = int(digits)
            changed = [str(value + 1), str(value - 1) if value > 0 else None]
        for text in filter(None, changed):
            yield replaced(line, match.start(), match.end(), text)
    for match in re.finditer(r"(?:(?<= = )|(?<=\()|(?<=, )|(?<=\{))(true|false)\b", code):
        yield replaced(line, match.start(), match.end(),
                       "false" if match.group() == "true" else "true")


def is_statement(code):
    stripped = code.strip()
    return bool(not KEYWORD.match(stripped) and
                (CALL.fullmatch(stripped) or ASSIGNMENT.fullmatch(stripped) or
                 STEP.fullmatch(stripped)) and
                stripped.count("(") == stripped.count(")"))


def drop_statement(line, code):
    stripped = code.strip()
    if is_statement(code) or LEAVE.fullmatch(stripped):
        begin = len(code) - len(code.lstrip())
        yield replaced(line, begin, len(line), ";")


def turn_logic(line, code):
    for match in re.finditer(r"(?<= )(&&|\|\|)(?= |$)", code):
        yield replaced(line, match.start(), match.end(), "||" if match.group() == "&&" else "&&")


def turn_sign(line, code):
    for match in re.finditer(r"(?<= )([+-]=?)(?= |$)|(?<![+\w])\+\+(?=[\w*(])|(?<![-\w])--(?=[\w*(])",
                             code):
        old = match.group()
        yield replaced(line, match.start(), match.end(),
                       old.translate(str.maketrans("+-", "-+")))


def drop_negation(line, code):
    for match in re.finditer(r"!(?=[\w(*])", code):
        yield replaced(line, match.start(), match.end(), "")


def change_return(line, code):
    match = re.search(r"\breturn (true|false|QS_[A-Z_]+);", code)
    if match:
        new = {"true": "false", "false": "true", "QS_OK": "QS_FAILED"}.get(match[1], "QS_OK")
        yield replaced(line, match.start(1), match.end(1), new)
    # Of a pair of answers the other one.
    match = re.search(r"\breturn .* \? (.+) : (.+);$", code)
    if match:
        first, second = (line[match.start(n):match.end(n)] for n in (1, 2))
        yield replaced(line, match.start(1), match.end(2), f"{second} : {first}")


DROP = "statement dropped"
LINE_OPERATORS = {
    "comparison turned": turn_comparison,
    "condition negated": negate_condition,
    "constant off by one": shift_constant,
    DROP: drop_statement,
    "and/or turned": turn_logic,
    "sign turned": turn_sign,
    "negation dropped": drop_negation,
    "answer changed": change_return,
}
SWAP = "statements swapped"
OPERATORS = [*LINE_OPERATORS, SWAP]


def assigned(code):
    match = re.match(r"\*?([\w.>\[\]()*-]+) [-+|&]?= (.*);", code)
    return match and match.groups()


def order_matters(first, second):
    """False for two plain assignments that do not read what the other one writes."""
    one, two = assigned(first.strip()), assigned(second.strip())
    if not one or not two:
        return not (STEP.fullmatch(first.strip()) and STEP.fullmatch(second.strip()))
    return one[0] == two[0] or is_read(one[0], two[1]) or is_read(two[0], one[1])


def is_read(variable, expression):
    return bool(re.search(rf"(?<![\w.]){re.escape(variable.strip('*'))}(?!\w)", expression))


def is_constant_of_the_seam(file, code):
    """What mirrors the system's numbers is proved where the system's own headers are."""
    return file.startswith("src/platform/") and bool(
        re.search(r"\bconstexpr\b.* = |^\s*k\w+ = ", code))


def find_mutants(file, text):
    """Every mutant of one source: a dictionary of line number to a list of mutants."""
    lines = text.split("\n")
    found = {}
    code_of = dict(code_lines(text))
    previous = ";"
    for number, code in code_of.items():
        begins = previous.endswith((";", "{", "}", ":"))
        previous = code
        if WITHOUT_EFFECT.search(code) or is_constant_of_the_seam(file, code):
            continue
        line = lines[number - 1]
        here = []
        for operator, mutate in LINE_OPERATORS.items():
            if operator == DROP and not begins:
                continue
            for after in mutate(line, code):
                if after != line and all(after != m.after[0] for m in here):
                    here.append(Mutant(file, number, operator, (line,), (after,)))
        following = code_of.get(number + 1)
        if (begins and following and is_statement(code) and is_statement(following) and
                not WITHOUT_EFFECT.search(following) and
                len(code) - len(code.lstrip()) == len(following) - len(following.lstrip()) and
                order_matters(code, following)):
            pair = (line, lines[number])
            here.append(Mutant(file, number, SWAP, pair, pair[::-1]))
        if here:
            found[number] = here
    return found


def is_listed(text, mutant, entries):
    """Whether one of the entries describes this mutant: file, lines, and if need be the line before."""
    lines = text.split("\n")
    return any(entry["file"] == mutant.file and tuple(entry["before"]) == mutant.before and
               tuple(entry["after"]) == mutant.after and
               entry.get("behind", lines[mutant.line - 2]) == lines[mutant.line - 2]
               for entry in entries)


def apply(text, mutant):
    """The text with the fault in it."""
    lines = text.split("\n")
    begin = mutant.line - 1
    end = begin + len(mutant.before)
    if tuple(lines[begin:end]) != tuple(mutant.before):
        raise ValueError(f"{mutant.name()}: the source has changed")
    return "\n".join(lines[:begin] + list(mutant.after) + lines[end:])
