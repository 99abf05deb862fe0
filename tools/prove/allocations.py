"""Lets each allocation of every public operation fail.

proofs/allocations holds the scenarios. A run of all of them under callgrind shows which exported
functions they reach, virtual ones as well; the others are listed.
"""
import concurrent.futures
import re
import shutil
import subprocess

TITLE = "Exhausted memory, in every exported operation"
SOURCES = ("proofs",)
OUTCOMES = ("raised", "right", "ended", "other", "wrong", "leaked", "crashed")

# Functions that no scenario can call.
PRIVATE = "private; the public functions do the same work"
BASE = "abstract; runs as part of the destructors of the derived classes"
UNREACHABLE = {
    "system::io::mkdir": "never returns, by rule",
    **{f"functor::delegate_t<void ({signature})>::delegate_t": "constant; a program has it from the header"
       for signature in ("strings::ustring8 const&", "strings::ustring8 const&, strings::ustring8 const&",
                         "char const*, char const*, unsigned int&")},
    "types::variant_type::~variant_type": BASE,
    "serialization::serialize_buffer::~serialize_buffer": BASE,
    "serialization::labeled_serialize_buffer::~labeled_serialize_buffer": BASE,
    **{f"parser::xml_stream_parser::{name}": PRIVATE for name in (
        "close_tag", "do_parse", "end_of_open_node", "finish_comment", "is_whitespace", "load", "new_node",
        "parse_attrib_value", "parse_entity", "parse_name", "parse_next", "queue_size_less_than",
        "skip_whitespace")},
}


def exported_functions(context, library):
    """Maps each address to the names of the functions there, without those of std."""
    found = {}
    for mode in ("--no-demangle", "--demangle"):
        for line in context.run("nm", "-D", "--defined-only", mode, library).splitlines():
            address, kind, name = line.split(" ", 2)
            if kind in "TWi":
                found.setdefault(int(address, 16), [set(), set()])[mode == "--demangle"].add(name)
    return found


def reached(context, program, work):
    """The mangled names of the functions of the library that the scenarios execute."""
    profile = context.scratch / "callgrind.out"
    done = subprocess.run(["valgrind", "--tool=callgrind", f"--callgrind-out-file={profile}", "--demangle=no",
                           "--compress-strings=no", program, "--once"], cwd=work, capture_output=True, text=True,
                          errors="replace")
    if done.returncode != 0:
        raise SystemExit(f"prove allocations: a scenario fails without a failing allocation:\n{done.stderr[-2000:]}")
    return set(re.findall(r"^c?fn=(?:\(\d+\) )?([^'\s]+)", profile.read_text(errors="replace"), re.M))


def measure(context):
    build = context.build("release", "proof_allocations", settings=("-DTOVA_BUILD_PROOFS=ON",))
    program = build / "proofs" / "proof_allocations"
    names = context.run(program, "--list").splitlines()

    def run(share):
        work = context.scratch / f"work{share}"
        shutil.rmtree(work, ignore_errors=True)
        work.mkdir(parents=True)
        done = subprocess.run([program, *names[share::context.jobs]], cwd=work, capture_output=True, text=True,
                              errors="replace")
        if done.returncode not in (0, 1):
            raise SystemExit(f"prove allocations: failed:\n{done.stderr[-2000:]}")
        return [line.split("\t") for line in done.stdout.splitlines()]

    scenarios = []
    with concurrent.futures.ThreadPoolExecutor(context.jobs) as pool:
        for rows in pool.map(run, range(context.jobs)):
            for name, may_end, allocations, *rest in rows:
                scenarios.append({"name": name, "may_end": may_end == "1", "allocations": int(allocations),
                                  "outcomes": dict(zip(OUTCOMES, map(int, rest))), "where": rest[-1].strip("; ")})
    context.say(f"{len(scenarios)} scenarios")
    scenarios.sort(key=lambda one: names.index(one["name"]))

    work = context.scratch / "work-once"
    shutil.rmtree(work, ignore_errors=True)
    work.mkdir(parents=True)
    called = reached(context, program, work)
    functions = exported_functions(context, build / "libtova.so")
    # A constructor or destructor has several symbols of one name.
    every = {name for _, plain in functions.values() for name in plain if name.startswith("TOVA_2_18::")}
    missing = sorted(every - {name for mangled, plain in functions.values() if mangled & called for name in plain})
    return {"scenarios": scenarios, "functions": len(every),
            "missing": [name.replace("TOVA_2_18::", "") for name in missing]}


def reason(name):
    return next((why for start, why in UNREACHABLE.items() if name.startswith(start + "(")), None)


def report(result):
    scenarios = result["scenarios"]
    total = {kind: sum(one["outcomes"][kind] for one in scenarios) for kind in OUTCOMES}
    failures_made = sum(total[kind] for kind in OUTCOMES if kind != "leaked")
    rows = "\n".join(f"| {one['name']} | {one['allocations']} | {one['outcomes']['raised']} | "
                     f"{one['outcomes']['right']} | {one['outcomes']['ended']} |" for one in scenarios)
    excused = "\n".join(f"- `{name}`: {reason(name)}" for name in result["missing"] if reason(name))
    uncalled = [name for name in result["missing"] if not reason(name)]
    return f"""{len(scenarios)} scenarios call {result['functions'] - len(result['missing'])} of the {result['functions']} exported
functions. Each runs with its first allocation failing, then with its second one, and so on; once
with that one failing only and once with all from there on: **{failures_made:,}** failures. Either
`std::bad_alloc` leaves, or the result is that of a run with enough memory, or the process ends
through `std::unexpected` where a value is converted (docs/surprises.md). There were {total['other']} other
exceptions, {total['wrong']} wrong results, {total['leaked']} leaks and {total['crashed']} crashes.

The add-ons exist only in headers and export nothing. Those that allocate most have scenarios of their own; no list
shows that all have one.

Not called:

{excused}
{chr(10).join(f'- `{name}`' for name in uncalled)}

| scenario | allocations | raised | right result | ended |
|---|---|---|---|---|
{rows}"""


def failures(result):
    missed = [f"no scenario calls {name}" for name in result["missing"] if not reason(name)]
    for one in result["scenarios"]:
        counts = one["outcomes"]
        if any(counts[kind] for kind in ("other", "wrong", "leaked", "crashed")) or (
                counts["ended"] and not one["may_end"]) or "undisturbed" in one["where"]:
            missed.append(f"{one['name']}: {one['where']}")
    return missed
