"""Negates the conditions of the library one at a time, and counts what the tests notice.

A mutant is a condition of src/ or include/ that has the opposite value. clang's coverage says where the
conditions are. A copy of the sources gets a call around each of them (see mutant.hpp), and is built once.
The file of the library says which condition is negated, so a mutant is a copy of that file with other
bytes in one variable. Another variable says which form of the kernels is used, so each form is asked.

A condition that is always true or always false would be no better: where it chooses between a fast way and
the usual one, one of the two always survives.

First each test program runs once with a library that records which conditions run, the longer ones case by
case. Only the programs and cases that run a condition are asked about its mutant: those of the same family
first and fast ones before slow ones, until one fails, all have passed, or the time for one mutant is over.

What passes all tests may still have lost a fast way. The workloads of proofs/growth.cpp run with it under
valgrind, which counts instructions: 5 % more in one of them fail the measure `growth`, so they count as
noticed. valgrind has no AVX-512, so the workloads use the AVX2 form of the kernels.

Survivors are listed in mutants.txt with the reason why no test can tell them from the library, or why
none should. The list is keyed by the text of the source line, so it survives edits elsewhere.

The quick form asks the programs of the same family only, and no workloads, so a few more survive: what
only costs time, one in twenty.
"""
import collections
import concurrent.futures
import json
import os
import pathlib
import random
import re
import shutil
import subprocess
import threading
import time

import growth
import tests_of_build

TITLE = "Mutants"
REQUIRED = 97.0  # per cent killed, the explained survivors counted as survivors
REQUIRED_OF_CI = 90.0  # per cent killed or explained, of a small sample without workloads
JUDGED, JUDGED_BY_CI = 2000, 150
# A mutant that passes for so long counts as a survivor. A known survivor gets less.
SECONDS = 60
SECONDS_OF_CI = 30
SECONDS_OF_KNOWN = 5
REASONS = pathlib.Path(__file__).with_name("mutants.txt")
# The quick form does without these.
SLOW = re.compile("programs_|xml_forms_|docs_|consumers_|tools_")
# These look at the file of the library, which differs in a mutant for other reasons.
OF_THE_FILE = re.compile("(kernel_form|abi_symbols|abi_hardening)_test$")
SOURCES = ("proofs", "tests", "tools/prove/growth.py", "tools/prove/tests_of_build.py", "tools/prove/mutant.cpp",
           "tools/prove/mutant.hpp")
# What several forms of the kernels run.
SHARED = re.compile("_loops[.]hpp$|/byte_blocks[.]hpp$|/(byte|unicode|xml)_kernels[.]cpp$")
NOTHING, RECORD = -1, -2  # values of the variable `active`
CHOSEN = "chosen"  # the folder of the library that chooses the form of its kernels
WHOLE = 1.0  # seconds; of programs that take longer, each case runs by itself
LONGEST_FILTER = 100_000  # bytes; an argument of a program is limited to 128 KiB

Condition = collections.namedtuple("Condition", "source begin end")  # (line, column) of its ends
Mutant = collections.namedtuple("Mutant", "number source line text")


def conditions(context, library):
    """The conditions of our own sources, from the coverage of a library that has not run."""
    empty = context.scratch / "empty.txt"
    empty.write_text("nothing\n1\n1\n0\n")  # a function, its hash, its only counter
    merged = context.scratch / "empty.profdata"
    context.run("llvm-profdata-19", "merge", "-o", merged, empty)
    exported = json.loads(context.run("llvm-cov-19", "export", library, f"--instr-profile={merged}"))
    found = set()
    for entry in exported["data"][0]["files"]:
        name = pathlib.Path(entry["filename"])
        name = str(name.relative_to(context.root) if name.is_absolute() else name)
        if not name.startswith(("src/", "include/")):
            continue
        lines = (context.root / name).read_text(encoding="latin-1").splitlines()
        every = {Condition(name, tuple(branch[0:2]), tuple(branch[2:4])) for branch in entry.get("branches", ())}
        found |= {one for one in every if not is_of_switch(lines, one)}
    return sorted(found)


def is_of_switch(lines, one):
    """Whether clang means a label of a switch, or its missing default."""
    line, column = one.begin
    before = lines[line - 1][:column - 1].rstrip()
    return before.endswith(("switch (", "case")) or lines[line - 1][column - 1:].startswith(("case ", "default:"))


def with_calls(text, chosen):
    """The text of a source with a call around each of its conditions, given as pairs of number and condition."""
    lines = text.splitlines(keepends=True)
    starts = [0]
    for line in lines:
        starts.append(starts[-1] + len(line))
    inserts = []
    for number, one in chosen:
        begin, end = (starts[line - 1] + column - 1 for line, column in (one.begin, one.end))
        # At one place the shorter ends before the longer one, and begins after it.
        inserts.append((begin, 1, begin - end, f"::tova_mutants::condition({number}, static_cast<bool>("))
        inserts.append((end, 0, -begin, "))"))
    for place, _, _, call in sorted(inserts, reverse=True):
        text = text[:place] + call + text[place:]
    return text


def build_with_calls(context, every):
    """Builds the copy of the sources. Returns its library and the numbers of the conditions that have a call.

    Conditions whose calls the compiler refuses, such as declarations, go without one.
    """
    here = pathlib.Path(__file__).parent
    tree = context.scratch / "tree"
    shutil.rmtree(tree, ignore_errors=True)
    for name in context.run("git", "ls-files", "-z", "--", "CMakeLists.txt", "CMakePresets.json", "cmake", "include",
                            "src").split("\0")[:-1]:
        (tree / name).parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(context.root / name, tree / name)
    with (tree / "CMakeLists.txt").open("a") as lists:
        lists.write(f'target_sources(tova PRIVATE "{here}/mutant.cpp")\n')
    build = context.root / "build" / "mutants"
    context.run("cmake", "--preset", "release", "-B", build, "-DTOVA_BUILD_TESTS=OFF", "-DTOVA_BUILD_EXAMPLES=OFF",
                "-DTOVA_BUILD_TOOLS=OFF", "-DTOVA_INSTALL=OFF", f"-DCMAKE_CXX_FLAGS=-w -include {here}/mutant.hpp",
                cwd=tree)

    numbered = collections.defaultdict(list)
    for number, one in enumerate(every):
        numbered[one.source].append((number, one))
    changed = set(numbered)
    for _ in range(12):
        for source in changed:
            text = (context.root / source).read_text(encoding="latin-1")
            (tree / source).write_text(with_calls(text, numbered[source]), encoding="latin-1")
        done = subprocess.run(["cmake", "--build", build, "-j", str(context.jobs), "--target", "tova", "--", "-k", "0"],
                              capture_output=True, text=True, errors="replace")
        if done.returncode == 0:
            return build / "libtova.so.2.18.0", {number for source in numbered for number, _ in numbered[source]}
        changed = set()
        for path, line in set(re.findall(r"^(\S+?):(\d+):\d+: error:", done.stdout, re.M)):
            path = (build / path).resolve()  # a compiler cache may make it relative
            if tree not in path.parents:
                continue
            source = str(path.relative_to(tree))
            kept = [(number, one) for number, one in numbered[source]
                    if not one.begin[0] <= int(line) <= one.end[0]]
            if len(kept) != len(numbered[source]):
                numbered[source] = kept
                changed.add(source)
        if not changed:
            break
    raise SystemExit(f"prove mutants: the copy can't be built:\n{done.stdout[-3000:]}")


def offset_of(library, name):
    """The file offset of a variable in .data."""
    names = subprocess.run(["nm", "--demangle", library], check=True, capture_output=True, text=True).stdout
    address = int(re.search(rf"^([0-9a-f]+) \w \S*{name}$", names, re.M).group(1), 16)
    sections = subprocess.run(["readelf", "--wide", "--sections", library], check=True, capture_output=True,
                              text=True).stdout
    found = re.search(r" \.data\s+PROGBITS\s+([0-9a-f]+)\s+([0-9a-f]+)", sections)
    return address - int(found.group(1), 16) + int(found.group(2), 16)


class Libraries:
    """Makes the files of mutants, one for each form of the kernels when a program needs it."""

    def __init__(self, library):
        self.code = library.read_bytes()
        self.active = offset_of(library, "tova_mutants::active")
        self.choice = offset_of(library, "::detail::chosen_cpu_level")

    def folder_of(self, base, active, form):
        folder = base / (form or CHOSEN)
        if not folder.is_dir():
            folder.mkdir(parents=True)
            code = bytearray(self.code)
            level = tests_of_build.FORMS.index(form) if form else -1
            code[self.active:self.active + 4] = active.to_bytes(4, "little", signed=True)
            code[self.choice:self.choice + 4] = level.to_bytes(4, "little", signed=True)
            (folder / "libtova.so.2.18").write_bytes(code)
        return folder


def family(mutant):
    """The name of the folder of a mutant's source, which is also the folder of its tests."""
    part = mutant.source.split("/")
    return part[1] if part[0] == "src" else part[2]


class Part:
    """A test program, or one of its cases."""

    def __init__(self, program, case=None):
        self.program = program
        self.case = case
        self.passed = False
        self.seconds = 0.0
        self.records = b""  # a byte for each condition, not 0 if it ran

    def run(self, scratch, folder, records=None):
        """Runs it with the library of a folder."""
        work = scratch / f"record-{threading.get_ident()}"
        self.passed, self.seconds = tests_of_build.run(
            self.program, folder, work, 900, (f"--gtest_filter={self.case}",) if self.case else (),
            {"MUTANT_RECORDS": str(records)} if records else {})
        shutil.rmtree(work, ignore_errors=True)
        return self

    def record(self, scratch, folder, count):
        """Runs it with a library that records."""
        records = scratch / f"records-{threading.get_ident()}"
        records.write_bytes(bytes(count))
        self.run(scratch, folder, records)
        self.records = records.read_bytes()
        return self


def cases_of(program, folder):
    """The names of the cases of a program that GoogleTest makes."""
    if not tests_of_build.is_googletest(program):
        return []
    listing = subprocess.run([program.path, "--gtest_list_tests"], capture_output=True, text=True,
                             env=dict(os.environ, LD_LIBRARY_PATH=str(folder))).stdout
    found = []
    suite = ""
    for line in listing.splitlines():
        name = line.split("#")[0].rstrip()
        if not line.startswith(" "):
            suite = name
        else:
            found.append(suite + name.strip())
    return found


def record(context, programs, libraries, count):
    """Runs each program, the short ones whole and the others case by case, with a library that records.

    A program with a case that fails by itself stays whole. Returns the parts, and the names of the programs
    that fail.
    """
    recording = context.scratch / "recording"
    idle = context.scratch / "idle"
    for base, active in ((recording, RECORD), (idle, NOTHING)):
        shutil.rmtree(base, ignore_errors=True)
        for form in (None, *tests_of_build.FORMS):
            libraries.folder_of(base, active, form)

    with concurrent.futures.ThreadPoolExecutor(context.jobs) as pool:
        def run_all(parts):
            return list(pool.map(lambda part: part.run(context.scratch, idle / (part.program.form or CHOSEN)), parts))

        def record_all(parts):
            return list(pool.map(lambda part: part.record(context.scratch, recording / (part.program.form or CHOSEN),
                                                          count), parts))

        whole = run_all([Part(program) for program in programs])
        failed = [part.program.name for part in whole if not part.passed]
        single = record_all([Part(part.program, case) for part in whole if part.seconds > WHOLE
                             for case in cases_of(part.program, idle / (part.program.form or CHOSEN))])
        cases = collections.defaultdict(list)
        for part in single:
            cases[part.program].append(part)
        divided = {program for program, own in cases.items() if all(part.passed for part in own)}
        whole = record_all([part for part in whole if part.program not in divided])
    failed += [part.program.name for part in whole if not part.passed]
    return whole + [part for part in single if part.program in divided], sorted(set(failed))


class Workloads:
    """The workloads of proofs/growth.cpp, with the conditions that each runs and its instructions."""

    FORM = "avx2"

    def __init__(self, context, build, libraries, count):
        self.program = build / "proofs" / "proof_growth"
        self.libraries = libraries
        self.scratch = context.scratch
        listing = growth.workloads_of(context, self.program)

        def prepare(entry):
            size, _, name = entry
            records = self.scratch / f"records-{threading.get_ident()}"
            records.write_bytes(bytes(count))
            work = self.scratch / f"work-{threading.get_ident()}"
            work.mkdir(exist_ok=True)
            subprocess.run([self.program, name, str(size)], check=True, cwd=work, env=dict(
                os.environ, MUTANT_RECORDS=str(records),
                LD_LIBRARY_PATH=str(libraries.folder_of(self.scratch / "recording", RECORD, self.FORM))))
            shutil.rmtree(work)
            usual = self.instructions(name, size, libraries.folder_of(self.scratch / "idle", NOTHING, self.FORM))
            return usual, name, size, records.read_bytes()

        with concurrent.futures.ThreadPoolExecutor(context.jobs) as pool:
            self.all = sorted(pool.map(prepare, listing))

    def instructions(self, name, size, folder, seconds=None):
        return growth.instructions(self.program, name, size, self.scratch / f"count-{threading.get_ident()}", folder,
                                   seconds)

    def slower(self, mutant, base):
        """The name of a workload that fails or takes more instructions with a mutant, or None."""
        folder = self.libraries.folder_of(base, mutant.number, self.FORM)
        for usual, name, size, records in self.all:
            if records[mutant.number]:
                counted = self.instructions(name, size, folder, 60)
                if counted is None or counted > usual * growth.MORE:
                    return name
        return None


def trials(parts, mutant):
    """What is asked about a mutant: programs, their cases (none for the whole program), and their time.

    Its family comes first, each group by its running time. If a program runs the condition with the form that
    the library chooses, another one adds nothing, but for the loops that several forms share.
    """
    chosen = [part for part in parts if part.records[mutant.number]]
    usual = {part.program.path for part in chosen if part.program.form is None}
    found = collections.defaultdict(list)
    for part in chosen:
        if not part.program.form or part.program.path not in usual or SHARED.search(mutant.source):
            found[part.program].append(part)
    result = [(program, [part.case for part in own if part.case], sum(part.seconds for part in own))
              for program, own in found.items()]
    return sorted(result, key=lambda trial: (trial[0].family != family(mutant), trial[2]))


def judge(mutant, libraries, parts, scratch, seconds, workloads):
    """The name of the program or the workload that notices the mutant, or None."""
    number = threading.get_ident()
    base = scratch / f"library-{number}"
    work = scratch / f"work-{number}"
    shutil.rmtree(base, ignore_errors=True)
    begin = time.monotonic()
    try:
        for program, cases, usual in trials(parts, mutant):
            names = ":".join(cases)
            chosen = (f"--gtest_filter={names}",) if 0 < len(names) < LONGEST_FILTER else ()
            folder = libraries.folder_of(base, mutant.number, program.form)
            passed, _ = tests_of_build.run(program, folder, work, 5 + 4 * usual, ("--gtest_fail_fast", *chosen))
            if not passed:
                return program.name
            if time.monotonic() - begin > seconds:
                break
        return workloads.slower(mutant, base) if workloads else None
    finally:
        shutil.rmtree(work, ignore_errors=True)


def reasons():
    """Known survivors: the stripped text of a source line, and why it may survive."""
    known = {}
    if REASONS.is_file():
        for line in REASONS.read_text().splitlines():
            if line and not line.startswith("#"):
                source, text, reason = (part.strip() for part in line.split(" ||| "))
                known[source, text] = reason
    return known


def measure(context):
    tests = context.build("release", settings=("-DTOVA_BUILD_TESTS=ON", "-DTOVA_BUILD_PROOFS=ON"))
    # CI has built the suite under the sanitizers, whose library knows its conditions as well.
    counting = context.build("asan" if context.quick else "coverage", "tova")
    every = conditions(context, counting / "libtova.so.2.18.0")
    library, present = build_with_calls(context, every)
    libraries = Libraries(library)

    mutants = []
    for number in sorted(present):
        one = every[number]
        text = (context.root / one.source).read_text(encoding="latin-1").splitlines()[one.begin[0] - 1].strip()
        mutants.append(Mutant(number, one.source, one.begin[0], text))
    programs = [program for program in tests_of_build.programs_in_each_form(tests)
                if not OF_THE_FILE.search(program.name)]
    # What this processor can't run, nothing can notice.
    absent = set(tests_of_build.FORMS) - {program.form for program in programs}
    mutants = [mutant for mutant in mutants if not absent & set(re.split("[_.]", mutant.source))]
    chosen = random.Random(context.seed).sample(mutants, min(len(mutants), JUDGED_BY_CI if context.quick else JUDGED))
    context.say(f"{len(mutants)} of {len(every)} conditions have a mutant, {len(chosen)} chosen")

    if context.quick:
        families = {family(mutant) for mutant in chosen}
        programs = [program for program in programs if program.family in families and not SLOW.match(program.name)]
    parts, failed = record(context, programs, libraries, len(every))
    if failed:
        raise SystemExit(f"prove mutants: without a mutant these fail: {', '.join(failed)}")
    context.say(f"{len(programs)} programs in {len(parts)} parts take {sum(part.seconds for part in parts):.0f} s")

    workloads = None
    if not context.quick:
        workloads = Workloads(context, tests, libraries, len(every))
        context.say(f"{len(workloads.all)} workloads are counted")
    names = {name for _, name, _, _ in workloads.all} if workloads else set()

    survivors = []
    killers = collections.Counter()
    with concurrent.futures.ThreadPoolExecutor(context.jobs) as pool:
        known = reasons()
        usual = SECONDS_OF_CI if context.quick else SECONDS
        futures = {pool.submit(judge, mutant, libraries, parts, context.scratch,
                               SECONDS_OF_KNOWN if (mutant.source, mutant.text) in known else usual,
                               workloads): mutant for mutant in chosen}
        for done, future in enumerate(concurrent.futures.as_completed(futures), 1):
            killer = future.result()
            if killer is None:
                survivors.append(futures[future])
            else:
                killers[killer] += 1
            if done % 50 == 0:
                context.say(f"{done} of {len(chosen)} judged, {len(survivors)} survive")

    listed = [dict(mutant._asdict(), programs=len(trials(parts, mutant)))
              for mutant in sorted(survivors, key=lambda one: (one.source, one.line, one.number))]
    return {"quick": context.quick, "conditions": len(every), "mutants": len(mutants), "judged": len(chosen),
            "survivors": listed, "killers": killers.most_common(10), "seed": context.seed,
            "slower": sum(count for name, count in killers.items() if name in names)}


def killed(result):
    return 100.0 * (result["judged"] - len(result["survivors"])) / result["judged"]


def report(result):
    known = reasons()
    explained = [(one, known.get((one["source"], one["text"]))) for one in result["survivors"]]
    unexplained = [one for one, reason in explained if not reason]
    rows = "\n".join(f"| `{one['source']}:{one['line']}` | {reason or '**none yet**'} |" for one, reason in explained)
    by_tests = result["judged"] - len(result["survivors"]) - result["slower"]
    return f"""The library has {result['conditions']:,} conditions of our own. For {result['mutants']:,} of them there is a
mutant, in which the condition has the opposite value. Of these, {result['judged']:,} were drawn at random (seed
{result['seed']}). Without any correction, **{killed(result):.1f} %** of them are noticed: {by_tests:,} by the tests, and
{result['slower']} by the instructions of a workload. {len(result['survivors'])} survive, {len(unexplained)} of them
without an explanation.

| place | why it survives |
|---|---|
{rows}"""


def failures(result):
    known = reasons()
    unexplained = [one for one in result["survivors"] if (one["source"], one["text"]) not in known]
    if result["quick"]:
        noticed = 100.0 * (result["judged"] - len(unexplained)) / result["judged"]
        return ([f"{noticed:.1f} % of the mutants are killed or explained, {REQUIRED_OF_CI} % are required"]
                if noticed < REQUIRED_OF_CI else [])
    missed = [f"{one['source']}:{one['line']} has no reason" for one in unexplained]
    if killed(result) < REQUIRED:
        missed.append(f"{killed(result):.1f} % of the mutants are killed, {REQUIRED} % are required")
    return missed
