"""Forces branches of the compiled library one at a time, and counts what the tests notice.

A mutant is the library with one conditional jump replaced: it is always taken, or never. Only jumps
whose innermost source line is in src/ or include/ are taken, so that the standard library's own
branches, which we do not write, are left out. So are the checks of the stack guard, which the compiler adds.

First each test program runs once with a library in which the chosen jumps are traps. jump_trace.cpp puts
the instruction back when the program comes there, and so tells which programs run which jumps. Only those
are asked about a mutant, the programs of the same family first and fast ones before slow ones, until one
fails or all have passed. Each form of the kernels is asked: a mutant is also written with another form in
the variable that holds the choice.

Survivors are listed in mutants.txt with the reason why no test can tell them from the library, or why
none should. The list is keyed by the text of the source line, so it survives edits elsewhere.

The quick form asks the programs of the same family only, and at most for some seconds for each mutant,
so a few more survive.
"""
import collections
import concurrent.futures
import os
import pathlib
import random
import re
import shutil
import struct
import subprocess
import threading
import time

import tests_of_build

TITLE = "Mutants"
REQUIRED = 97.0  # per cent killed, the explained survivors counted as survivors
REQUIRED_OF_CI = 93.0
SECONDS_OF_CI = 40  # for each mutant
REASONS = pathlib.Path(__file__).with_name("mutants.txt")
# The quick form does without these.
SLOW = re.compile("programs_|xml_forms_|docs_|consumers_|tools_")
TRAP = 0xCC  # int3
STACK_GUARD = "%fs:0x28"
# This one asks for the switch of the libraries for each form, which a mutant lacks.
OF_THE_SWITCH = "kernel_form_test"
SOURCES = ("tests", "tools/prove/tests_of_build.py")

JUMP = re.compile(r"^\s*([0-9a-f]+):\s+((?:[0-9a-f]{2} )+)\s+(j[a-z]+)\s+([0-9a-f]+)")
NOT_CONDITIONAL = {"jmp", "jmpq", "jrcxz", "jecxz"}

Mutant = collections.namedtuple("Mutant", "address size taken source line unit")


def text_section(library):
    """Address and file offset of .text, whose difference maps one to the other."""
    listing = subprocess.run(["readelf", "--wide", "--sections", library], check=True,
                             capture_output=True, text=True).stdout
    found = re.search(r"\.text\s+PROGBITS\s+([0-9a-f]+)\s+([0-9a-f]+)", listing)
    return int(found.group(1), 16), int(found.group(2), 16)


def choice_of_form(library):
    """The file offset of the variable that holds the chosen form of the kernels, or -1 until it is chosen."""
    names = subprocess.run(["nm", "--demangle", library], check=True, capture_output=True, text=True).stdout
    address = int(re.search(r"^([0-9a-f]+) \w \S*::detail::chosen_cpu_level$", names, re.M).group(1), 16)
    sections = subprocess.run(["readelf", "--wide", "--sections", library], check=True, capture_output=True,
                              text=True).stdout
    found = re.search(r" \.data\s+PROGBITS\s+([0-9a-f]+)\s+([0-9a-f]+)", sections)
    return address - int(found.group(1), 16) + int(found.group(2), 16)


def jumps(library):
    """Address and size of each conditional jump, but for those that check the stack guard."""
    code = subprocess.run(["objdump", "--wide", "--disassemble", "--section=.text", library], check=True,
                          capture_output=True, text=True).stdout
    last = ""
    for line in code.splitlines():
        found = JUMP.match(line)
        if found and found.group(3) not in NOT_CONDITIONAL and STACK_GUARD not in last:
            yield int(found.group(1), 16), len(found.group(2).split())
        last = line


def places(library, addresses, root):
    """For each address in our own files the innermost source line, and the source that it was inlined into."""
    done = subprocess.run(["addr2line", "--addresses", "--inlines", "-e", library], check=True,
                          capture_output=True, text=True,
                          input="\n".join(f"{address:#x}" for address in addresses))

    def place(line):
        path, _, number = line.split(" ")[0].rpartition(":")
        path = os.path.normpath(os.path.join(root, "build", "release", path))
        return os.path.relpath(path, root), int(number) if number.isdigit() else 0

    for answer in re.split(r"^0x", done.stdout, flags=re.M)[1:]:
        address, *lines = answer.split("\n")[:-1]
        name, line = place(lines[0])
        if name.startswith(("src/", "include/")) and line:
            yield int(address, 16), name, line, place(lines[-1])[0]


def patched(code, offset, size, taken):
    """The bytes of the library with one jump forced."""
    mutant = bytearray(code)
    if not taken:
        mutant[offset:offset + size] = b"\x90" * size
    elif size == 2:
        mutant[offset] = 0xEB  # jmp rel8
    elif size == 6 and code[offset] == 0x0F:
        mutant[offset:offset + 2] = b"\x90\xE9"  # nop; jmp rel32, same displacement
    else:
        return None
    return mutant


def reasons():
    """Known survivors: the stripped text of a source line, and why it may survive."""
    known = {}
    if REASONS.is_file():
        for line in REASONS.read_text().splitlines():
            if line and not line.startswith("#"):
                source, text, reason = (part.strip() for part in line.split(" ||| "))
                known[source, text] = reason
    return known


def family(mutant):
    """The name of the folder of a mutant's source, which is also the folder of its tests."""
    part = mutant.source.split("/")
    return part[1] if part[0] == "src" else part[2]


def in_kernels(mutant):
    """Whether the same line may be there once for each form, in a file of kernels or inlined into one."""
    return "kernels" in mutant.source + mutant.unit


def ordered(programs, mutant):
    """The programs that run the jump of a mutant; its family first, each group by its running time.

    Outside of the kernels, another form adds nothing to a program that runs the jump with the usual form.
    """
    usual = {program.path for program in programs if program.form is None and mutant.address in program.jumps}

    def may_notice(program):
        if program.form and not in_kernels(mutant) and program.path in usual:
            return False
        return mutant.address in program.jumps

    return sorted(filter(may_notice, programs),
                  key=lambda program: (program.family != family(mutant), program.seconds))


class Libraries:
    """The files of a changed library, one for each form of the kernels, made when a program needs them."""

    def __init__(self, code, choice, folder):
        self.code = code
        self.choice = choice
        self.folder = folder
        shutil.rmtree(folder, ignore_errors=True)

    def folder_of(self, form):
        folder = self.folder / (form or "chosen")
        if not folder.is_dir():
            folder.mkdir(parents=True)
            level = tests_of_build.FORMS.index(form) if form else -1
            self.code[self.choice:self.choice + 4] = level.to_bytes(4, "little", signed=True)
            (folder / "libtova.so.2.18").write_bytes(self.code)
        return folder


def judge(mutant, code, choice, programs, scratch, seconds):
    """The name of the program that notices the mutant, or None."""
    number = threading.get_ident()
    libraries = Libraries(code, choice, scratch / f"library-{number}")
    work = scratch / f"work-{number}"
    begin = time.monotonic()
    try:
        for program in ordered(programs, mutant):
            limit = 5 + 4 * program.seconds
            passed, _ = tests_of_build.run(program, libraries.folder_of(program.form), work, limit,
                                           ("--gtest_fail_fast",))
            if not passed:
                return program.name
            if seconds and time.monotonic() - begin > seconds:
                break
        return None
    finally:
        shutil.rmtree(work, ignore_errors=True)


def trace(context, programs, library, chosen):
    """Runs each program once. Fills in its time, and the addresses of the chosen jumps that it runs.

    Returns the names of the programs that fail.
    """
    tracer = context.scratch / "jump_trace.so"
    context.run("g++", "-std=c++14", "-O2", "-shared", "-fPIC", "-Wl,-z,initfirst", "-o", tracer,
                pathlib.Path(__file__).with_name("jump_trace.cpp"))
    code = bytearray(library.read_bytes())
    address, offset = text_section(library)
    record = struct.Struct("<QII")
    traps = sorted({mutant.address for mutant in chosen})
    records = b"".join(record.pack(jump, code[jump - address + offset], 0) for jump in traps)
    for jump in traps:
        code[jump - address + offset] = TRAP
    libraries = Libraries(code, choice_of_form(library), context.scratch / "traps")
    for form in (None, *tests_of_build.FORMS):
        libraries.folder_of(form)

    def one(program):
        folder = context.scratch / f"trace-{program.name}"
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        (folder / "records").write_bytes(records)
        passed, program.seconds = tests_of_build.run(
            program, libraries.folder_of(program.form), folder / "work", 900, (),
            {"LD_PRELOAD": str(tracer), "JUMP_TRACE": str(folder / "records")})
        program.jumps = {jump for jump, _, ran in record.iter_unpack((folder / "records").read_bytes()) if ran}
        shutil.rmtree(folder, ignore_errors=True)
        return [] if passed else [program.name]

    with concurrent.futures.ThreadPoolExecutor(context.jobs) as pool:
        return sum(pool.map(one, programs), [])


def programs_for(context, build, library, chosen):
    """The programs that may notice the chosen mutants, with their times and the jumps that they run."""
    programs = [program for program in tests_of_build.programs_in_each_form(build)
                if not program.name.endswith(OF_THE_SWITCH)]
    if context.quick:
        families = {family(mutant) for mutant in chosen}
        programs = [program for program in programs if program.family in families and not SLOW.match(program.name)]
    failed = trace(context, programs, library, chosen)
    if failed:
        raise SystemExit(f"prove mutants: without a mutant these fail: {', '.join(failed)}")
    context.say(f"{len(programs)} programs take {sum(program.seconds for program in programs):.0f} s")
    return programs


def measure(context):
    build = context.build("release", settings=("-DTOVA_BUILD_TESTS=ON",))
    library = build / "libtova.so.2.18.0"
    code = library.read_bytes()
    address, offset = text_section(library)
    choice = choice_of_form(library)
    sizes = dict(jumps(library))
    here = list(places(library, sorted(sizes), context.root))
    every = [Mutant(at, sizes[at], taken, name, line, unit)
             for at, name, line, unit in here for taken in (True, False) if sizes[at] in (2, 6)]
    chosen = random.Random(context.seed).sample(every, min(len(every), 150 if context.quick else 2000))
    context.say(f"{len(every)} mutants in {len(here)} jumps, {len(chosen)} chosen")
    programs = programs_for(context, build, library, chosen)

    survivors = []
    killers = collections.Counter()
    with concurrent.futures.ThreadPoolExecutor(context.jobs) as pool:
        futures = {pool.submit(judge, mutant,
                               patched(code, mutant.address - address + offset, mutant.size, mutant.taken),
                               choice, programs, context.scratch,
                               SECONDS_OF_CI if context.quick else None): mutant for mutant in chosen}
        for done, future in enumerate(concurrent.futures.as_completed(futures), 1):
            killer = future.result()
            if killer is None:
                survivors.append(futures[future])
            else:
                killers[killer] += 1
            if done % 50 == 0:
                context.say(f"{done} of {len(chosen)} judged, {len(survivors)} survive")

    listed = []
    for mutant in sorted(survivors, key=lambda one: (one.source, one.line, one.address)):
        lines = (context.root / mutant.source).read_text().splitlines()
        text = lines[mutant.line - 1].strip() if mutant.line <= len(lines) else ""
        listed.append({"source": mutant.source, "line": mutant.line, "text": text,
                       "taken": mutant.taken, "address": f"{mutant.address:#x}"})
    return {"quick": context.quick, "jumps": len(here), "mutants": len(every), "judged": len(chosen),
            "survivors": listed, "killers": killers.most_common(10), "seed": context.seed}


def killed(result):
    return 100.0 * (result["judged"] - len(result["survivors"])) / result["judged"]


def report(result):
    known = reasons()
    explained = [(one, known.get((one["source"], one["text"]))) for one in result["survivors"]]
    unexplained = [one for one, reason in explained if not reason]
    rows = "\n".join(
        f"| `{one['source']}:{one['line']}` | {'taken' if one['taken'] else 'never'} | "
        f"{reason or '**none yet**'} |" for one, reason in explained)
    return f"""The library has {result['jumps']:,} conditional jumps that come from our own lines. Each can be forced in two
ways: always taken, or never. Of these {result['mutants']:,} mutants, {result['judged']:,} were drawn at random (seed
{result['seed']}); the tests notice **{killed(result):.1f} %** of them, without any correction. {len(result['survivors'])} survive,
{len(unexplained)} of them without an explanation.

| place | jump | why it survives |
|---|---|---|
{rows}"""


def failures(result):
    missed = []
    required = REQUIRED_OF_CI if result["quick"] else REQUIRED
    if killed(result) < required:
        missed.append(f"{killed(result):.1f} % of the mutants are killed, {required} % are required")
    if not result["quick"]:
        known = reasons()
        missed += [f"{one['source']}:{one['line']} ({'taken' if one['taken'] else 'never'}) has no reason"
                   for one in result["survivors"] if (one["source"], one["text"]) not in known]
    return missed
