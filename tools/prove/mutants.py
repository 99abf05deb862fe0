"""Forces branches of the compiled library one at a time, and counts what the tests notice.

A mutant is the library with one conditional jump replaced: it is always taken, or never. Only jumps
whose innermost source line is in src/ or include/ are taken, so that the standard library's own
branches, which we do not write, are left out. Only programs that run the line of the jump are asked,
those of the same family first and fast ones before slow ones, until one fails or all have passed.

Survivors are listed in mutants.txt with the reason why no test can tell them from the library, or why
none should. The list is keyed by the text of the source line, so it survives edits elsewhere.
"""
import collections
import concurrent.futures
import os
import pathlib
import random
import re
import shutil
import subprocess
import threading

import tests_of_build

TITLE = "Mutants"
REQUIRED = 97.0  # per cent killed, without the explained ones
REASONS = pathlib.Path(__file__).with_name("mutants.txt")
SLOW = re.compile("programs_|xml_forms_")  # the quick form does without these
SOURCES = ("tests", "tools/prove/tests_of_build.py")

JUMP = re.compile(r"^\s*([0-9a-f]+):\s+((?:[0-9a-f]{2} )+)\s+(j[a-z]+)\s+([0-9a-f]+)")
NOT_CONDITIONAL = {"jmp", "jmpq", "jrcxz", "jecxz"}

Mutant = collections.namedtuple("Mutant", "address size taken source line")


def text_section(library):
    """Address and file offset of .text, whose difference maps one to the other."""
    listing = subprocess.run(["readelf", "--wide", "--sections", library], check=True,
                             capture_output=True, text=True).stdout
    found = re.search(r"\.text\s+PROGBITS\s+([0-9a-f]+)\s+([0-9a-f]+)", listing)
    return int(found.group(1), 16), int(found.group(2), 16)


def jumps(library):
    code = subprocess.run(["objdump", "--disassemble", "--section=.text", library], check=True,
                          capture_output=True, text=True).stdout
    for line in code.splitlines():
        found = JUMP.match(line)
        if found and found.group(3) not in NOT_CONDITIONAL:
            yield int(found.group(1), 16), len(found.group(2).split())


def places(library, addresses, root):
    """The innermost source line of each address, for those in our own files."""
    done = subprocess.run(["addr2line", "-e", library], check=True, capture_output=True, text=True,
                          input="\n".join(f"{address:#x}" for address in addresses))
    for address, place in zip(addresses, done.stdout.splitlines()):
        path, _, line = place.split(" ")[0].rpartition(":")
        path = os.path.normpath(os.path.join(root, "build", "release", path))
        name = os.path.relpath(path, root)
        if name.startswith(("src/", "include/")) and line.isdigit() and line != "0":
            yield address, name, int(line)


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


def ordered(programs, mutant):
    """The programs that run the line of a mutant; its family first, each group by its running time.

    All programs if none is known to run the line: not every jump has a line that is counted.
    """
    part = mutant.source.split("/")
    family = part[1] if part[0] == "src" else part[2]
    place = (mutant.source, mutant.line)
    running = [program for program in programs if program.places is None or place in program.places]
    return sorted(running if any(program.places for program in running) else programs,
                  key=lambda program: (program.family != family, program.seconds))


def judge(mutant, code, offset, programs, scratch):
    """The name of the program that notices the mutant, or None."""
    number = threading.get_ident()
    folder = scratch / f"library-{number}"
    folder.mkdir(exist_ok=True)
    changed = patched(code, offset, mutant.size, mutant.taken)
    (folder / "libtova.so.2.18").write_bytes(changed)
    work = scratch / f"work-{number}"
    try:
        for program in ordered(programs, mutant):
            limit = 5 + 6 * program.seconds
            passed, _ = tests_of_build.run(program, folder, work, limit,
                                           ("--gtest_fail_fast",))
            if not passed:
                return program.name
        return None
    finally:
        shutil.rmtree(work, ignore_errors=True)


def measure(context):
    build = context.build("release")
    library = build / "libtova.so.2.18.0"
    code = library.read_bytes()
    address, offset = text_section(library)
    sizes = dict(jumps(library))
    here = list(places(library, sorted(sizes), context.root))
    every = [Mutant(at, sizes[at], taken, name, line)
             for at, name, line in here for taken in (True, False) if sizes[at] in (2, 6)]
    chosen = random.Random(context.seed).sample(every, min(len(every), 150 if context.quick else 2000))
    context.say(f"{len(every)} mutants in {len(here)} jumps, {len(chosen)} chosen")

    programs = [program for program in tests_of_build.programs_of(build)
                if not context.quick or not SLOW.match(program.name)]
    # Without a mutant, but with another library than their own, as the mutants are.
    failed = tests_of_build.find_places(context, programs, context.build("coverage", "tova"))
    if failed:
        raise SystemExit(f"prove mutants: without a mutant these fail: {', '.join(failed)}")
    context.say(f"{len(programs)} programs take {sum(p.seconds for p in programs):.0f} s")

    survivors = []
    killers = collections.Counter()
    with concurrent.futures.ThreadPoolExecutor(context.jobs) as pool:
        futures = {pool.submit(judge, mutant, code, mutant.address - address + offset, programs,
                               context.scratch): mutant for mutant in chosen}
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
    return {"jumps": len(here), "mutants": len(every), "judged": len(chosen),
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
    if killed(result) < REQUIRED:
        missed.append(f"{killed(result):.1f} % of the mutants are killed, {REQUIRED} % are required")
    return missed
