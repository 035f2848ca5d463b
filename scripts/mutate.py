#!/usr/bin/env python3
"""Plants single faults at random places of plenar/src and tools/, and lists those that no test notices.

    mutate.py [--seed N] [--count N] [--file PATTERN]

Works in a copy of the tree in build/mutate. The same seed in the same tree gives the same faults. Each is built and
ends in one of these ways:

    invalid    it doesn't compile, and so is no fault
    equal      the compiler makes the same machine code of it
    noticed    a test fails, or doesn't end in time
    SURVIVED   all tests pass

A fault in tools/ runs the program's tests, one in plenar/src the library's: first those that notice most, and the
others only if they pass. With ccache, where there is one, nothing is compiled twice.
"""
import argparse
import collections
import dataclasses
import fnmatch
import hashlib
import json
import os
import pathlib
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutate"
TREE = WORK / "tree"
BUILD = WORK / "build"
JOBS = 2
MEMORY_LIMIT = 16 << 30

# By the directory of a fault: where its objects lie, and the tests to begin with: programs of GoogleTest's, and those of
# their tests that are left for later as they take long.
SIDES = {
    "plenar": (["plenar"], {"tests/plenar_core_tests": "", "tests/plenar_tests": "", "tests/plenar_way_tests": ""}),
    "tools": (["tools", "tests/tool"], {"tests/tool/plenar_tool_tests": "Files.*"}),
}

# What stands for what. The sources' format puts blanks around the operators that take two numbers.
OPERATORS = {
    "<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&",
    "+": "-", "-": "+", "*": "+", "/": "*", "%": "/", "<<": ">>", ">>": "<<", "&": "|", "|": "&", "^": "|",
    "+=": "-=", "-=": "+=", "|=": "&=", "&=": "|=", "<<=": ">>=", ">>=": "<<=",
}  # fmt: skip
WORDS = {"true": "false", "false": "true", "min": "max", "max": "min", "break": "continue", "continue": "break",
         "any_of": "none_of", "none_of": "any_of", "front": "back", "begin": "end"}  # fmt: skip
OPERATOR = re.compile(r"(?<= )(" + "|".join(sorted(map(re.escape, OPERATORS), key=len, reverse=True)) + r")(?= )")
WORD = re.compile(r"\b(" + "|".join(WORDS) + r")\b")
COUNTS = {"++": "--", "--": "++"}
COUNTING = re.compile(r"\+\+|--")
TEXT = re.compile(r'"(\\.|[^"\\])*"')
NOT = re.compile(r"!(?=[\w(])")
NUMBER = re.compile(r"(?<![\w.\"'])(0x[0-9A-Fa-f]+|\d+)(?![\w.]*[.\"'])")
# A call or an assignment that stands alone, but no declaration.
STATEMENT = re.compile(r"^\s+(?!return\b|using\b)([\w.:>\[\]*()-]+(\(.*\)| [-+*/%&|^<>]*= .*)|\+\+\w+|--\w+);$")
ARGUMENTS = re.compile(r"\w\(([^(),]+), ([^(),]+)(?=[,)])")
CHOICE = re.compile(r"\? ([^?:]+) : ([^?:;,)]+)(?=[;,)])")
FAILED_TEST = re.compile(rb"\[  FAILED  \] (\S+)")
NO_CODE = re.compile(r"^\s*(//|#|using |static_assert|template)")


@dataclasses.dataclass(frozen=True)
class Fault:
    path: str  # below the root
    line: int  # from 0
    before: str
    after: str

    def __str__(self):
        return f"{self.path}:{self.line + 1}: {self.before.strip()}  ->  {self.after.strip() or '(dropped)'}"


def replaced(line, match, text, group=0):
    return line[: match.start(group)] + text + line[match.end(group) :]


def exchanged(line, match):
    """The line with two expressions changing places; as it was for declarations and for parts of expressions."""
    spans = (match.span(1), (match.end(1), match.start(2)), match.span(2))
    first, between, second = (line[begin:end] for begin, end in spans)
    if any(re.search(r"\w[&*]* \w|[{}]", part) or part.count("(") != part.count(")") for part in (first, second)):
        return line
    return line[: match.start(1)] + second + between + first + line[match.end(2) :]


def number_replacements(text):
    form = "0x{:X}" if text.startswith("0x") else "{}"
    values = (int(text, 0) + 1, int(text, 0) - 1) if text == "0" or text[:2] == "0x" or text[0] != "0" else ()
    return [form.format(value) for value in values if value >= 0]


def variants(line):
    """What a line may become by one fault. Texts and comments stay as they are."""
    code = TEXT.sub(lambda match: '"' + "_" * (len(match[0]) - 2) + '"', line).split("  //")[0]
    for pattern, table in ((OPERATOR, OPERATORS), (WORD, WORDS), (COUNTING, COUNTS)):
        for match in pattern.finditer(code):
            if not (match[0] == "+" and '"' in code):  # texts are appended to one another
                yield replaced(line, match, table[match[0]])
    for match in NOT.finditer(code):
        yield replaced(line, match, "")
    for match in NUMBER.finditer(code):
        for text in number_replacements(match[0]):
            yield replaced(line, match, text)
    for match in (*ARGUMENTS.finditer(code), *CHOICE.finditer(code)):
        yield exchanged(line, match)
    if STATEMENT.match(code.rstrip()):
        yield ""


def line_faults(path, number, line):
    if NO_CODE.search(line):
        return []
    return [Fault(path, number, line, after) for after in variants(line) if after != line]


def choose_faults(seed, count, pattern):
    """Lines are drawn, and for each one of its faults, so that a line that has many isn't drawn more often."""
    places = []
    for path in tree_files():
        if re.match(r"(plenar/src|tools)/.*\.(h|cpp)$", path) and fnmatch.fnmatch(path, pattern):
            lines = (ROOT / path).read_text(encoding="utf-8").split("\n")
            places += filter(None, (line_faults(path, i, line) for i, line in enumerate(lines)))
    generator = random.Random(seed)
    return [generator.choice(faults) for faults in generator.sample(places, min(count, len(places)))]


def tree_files():
    listing = ["git", "ls-files", "--cached", "--others", "--exclude-standard"]
    names = subprocess.run(listing, cwd=ROOT, check=True, capture_output=True, text=True).stdout.split("\n")
    return sorted(name for name in names if name and (ROOT / name).is_file())


def copy_tree():
    """Leaves files alone that are as they should be, so that they aren't compiled again."""
    wanted = tree_files()
    for name in wanted:
        target = TREE / name
        content = (ROOT / name).read_bytes()
        if not target.is_file() or target.read_bytes() != content:
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(ROOT / name, target)
    for path in list(TREE.rglob("*")):
        if path.is_file() and str(path.relative_to(TREE)) not in wanted:
            path.unlink()


def configure(sides):
    tools = "ON" if "tools" in sides else "OFF"
    launcher = ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"] if shutil.which("ccache") else []
    command = ["cmake", "--preset", "release", "-B", str(BUILD), "-DPLENAR_WERROR=OFF",
               "-DPLENAR_BUILD_TOOLS=" + tools, *launcher]  # fmt: skip
    subprocess.run(command, cwd=TREE, check=True, stdout=subprocess.DEVNULL)


def build(targets):
    command = ["cmake", "--build", str(BUILD), "-j", str(JOBS), "--target", *targets]
    return subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False).returncode == 0


def objects_digest(directories):
    digest = hashlib.sha256()
    for path in sorted(path for directory in directories for path in (BUILD / directory).rglob("*.o")):
        digest.update(path.read_bytes())
    return digest.hexdigest()


def test_commands():
    """The project's own test programs with the arguments that they have, by side: the quick ones and the others."""
    listing = subprocess.run(["ctest", "--show-only=json-v1"], cwd=BUILD, check=True, capture_output=True, text=True)
    commands = {}
    for test in json.loads(listing.stdout)["tests"]:
        command = [part for part in test.get("command", []) if not part.startswith("--gtest_filter")]
        if command and command[0].startswith(str(BUILD)):
            commands[tuple(part for part in command if part != "--gtest_also_run_disabled_tests")] = None
    sides = {side: ([], []) for side in SIDES}
    for command in commands:
        program = os.path.relpath(command[0], BUILD)
        side = "tools" if program.startswith("tests/tool/") else "plenar"
        later = SIDES[side][1].get(program)
        if later:
            sides[side][0].append((*command, "--gtest_filter=-" + later))
            sides[side][1].append((*command, "--gtest_filter=" + later))
        else:
            sides[side][later is None].append(command)
    return sides


def limit_process():
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY_LIMIT, MEMORY_LIMIT))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


class Tests:
    """A few test programs that run side by side, the large ones in as many parts."""

    def __init__(self, commands):
        self.waiting = collections.deque()
        for command in commands:
            program = os.path.relpath(command[0], BUILD)
            parts = JOBS if any(program in large for _, large in SIDES.values()) else 1
            self.waiting += [(command, part, parts) for part in range(parts)]
        self.running = {}

    def failed(self, limit):
        """The program that failed or took longer than the limit, or None."""
        end = time.monotonic() + limit
        try:
            while self.waiting or self.running:
                self._start()
                failure = self._ended(end)
                if failure:
                    return failure
                time.sleep(0.02)
            return None
        finally:
            for process in self.running:
                os.killpg(process.pid, signal.SIGKILL)
                process.wait()

    def _start(self):
        while self.waiting and len(self.running) < JOBS:
            command, part, parts = self.waiting.popleft()
            environment = dict(os.environ, GTEST_FAIL_FAST="1", GTEST_SHARD_INDEX=str(part),
                               GTEST_TOTAL_SHARDS=str(parts), TMPDIR=str(WORK / "tmp"))  # fmt: skip
            output = tempfile.TemporaryFile()
            process = subprocess.Popen(command, cwd=WORK / "tmp", env=environment, start_new_session=True,
                                       preexec_fn=limit_process, stdin=subprocess.DEVNULL, stdout=output,
                                       stderr=subprocess.STDOUT)  # fmt: skip
            self.running[process] = (os.path.basename(command[0]), output)

    def _ended(self, end):
        for process, (name, output) in list(self.running.items()):
            code = process.poll()
            if code is None and time.monotonic() > end:
                return name + " doesn't end"
            if code is not None:
                del self.running[process]
                if code != 0:
                    output.seek(0)
                    failed = FAILED_TEST.search(output.read())
                    return f"{name} {failed[1].decode() if failed else ''}"
        return None


class Bench:
    """The copy of the tree, and what it is like without a fault."""

    def __init__(self, sides):
        (WORK / "tmp").mkdir(parents=True, exist_ok=True)
        copy_tree()
        configure(sides)
        if not build(["all"]):
            sys.exit("mutate.py: the tree doesn't build")
        self.digests = {side: objects_digest(SIDES[side][0]) for side in sides}
        self.tests = test_commands()
        self.limits = {side: [self._limit(stage) for stage in self.tests[side]] for side in sides}

    @staticmethod
    def _limit(commands):
        start = time.monotonic()
        failure = Tests(commands).failed(1800)
        if failure:
            sys.exit(f"mutate.py: {failure} fails without any fault")
        return 30 + 5 * (time.monotonic() - start)

    def outcome(self, fault):
        source = TREE / fault.path
        lines = source.read_text(encoding="utf-8").split("\n")
        lines[fault.line] = fault.after
        source.write_text("\n".join(lines), encoding="utf-8")
        try:
            return self._run(fault.path.split("/")[0])
        finally:
            shutil.copy(ROOT / fault.path, source)

    def _run(self, side):
        programs = ["plenar_core"] if side == "plenar" else ["plenar_tool", "plenar_pictures"]
        if not build(programs):
            return "invalid", ""
        if side == "plenar" and objects_digest(SIDES[side][0]) == self.digests[side]:
            return "equal", ""
        for commands, limit in zip(self.tests[side], self.limits[side]):
            if not build([os.path.relpath(command[0], BUILD) for command in commands] + programs):
                return "invalid", ""
            if objects_digest(SIDES[side][0]) == self.digests[side]:
                return "equal", ""
            failure = Tests(commands).failed(limit)
            if failure:
                return "noticed", failure
        return "SURVIVED", ""


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--count", type=int, default=70)
    parser.add_argument("--file", default="*", metavar="PATTERN", help="only files whose path matches, as in */rle/*")
    options = parser.parse_args()
    faults = choose_faults(options.seed, options.count, options.file)
    bench = Bench({fault.path.split("/")[0] for fault in faults})
    totals = collections.Counter()
    survivors = []
    for fault in faults:
        outcome, detail = bench.outcome(fault)
        totals[outcome] += 1
        survivors += [fault] if outcome == "SURVIVED" else []
        print(f"{outcome:9} {fault}  {detail}", flush=True)
    print(f"\nseed {options.seed}: " + ", ".join(f"{count} {outcome}" for outcome, count in sorted(totals.items())))
    print("\n".join(str(fault) for fault in survivors))


if __name__ == "__main__":
    main()
