"""Runs every fuzz target for a fixed number of inputs, and keeps a tally over all runs.

Each target runs 100,000 inputs, the fast ones as many more as make 10 million together. The tally,
fuzz_tally.json, is committed: it says which commit was fuzzed with which seed, and how often. CI runs
the targets for a fixed time by `./run fuzz`, so the quick form has nothing to do.

The seeds of the targets are replayed by ordinary tests, which also change them in fixed ways. How many of
the branches of the readers these tests reach shows whether the seeds are good.
"""
import concurrent.futures
import json
import re
import shutil
import subprocess
import time

import coverage
import tests_of_build

TITLE = "Fuzzing"
SOURCES = ("fuzz", "programs", ":(glob)tests/**/*.hpp", "tests/fuzz", "tools/prove/coverage.py")
TALLY = "tools/prove/fuzz_tally.json"
EACH = 100_000
TOGETHER = 10_000_000
TARGETS = 20
EVER = 100_000_000  # over all recorded runs
REACHED = 90.0  # per cent of the sides of the readers' branches
# What reads text from outside: settings, catalogs and formats, XML, serialized data, encodings, numbers.
READERS = re.compile(r"""^src/(
    config/(commandline_item|config_token|entry_reader|enviroment_item|token_scanner)[.]
    |i18n/(_private/(message_draft|token_cursor|xmc_grammar|xmc_load_error|xmc_reader)|fields|format|format_options
          |locale_list|message_item)[.]
    |parser/(attribute_names|document_scanner|document_walk|entity|flat_tokens|piece|stream_elements|stream_machine
            |stream_nodes|stream_scanner|token_list|usual_element|xml_token_stream)[.]
    |serialization/(labeled_text_buffer|serialize_binary_read|serialize_text_read|text_items)[.]
    |strings/(code_page|unicode|utf8|utf16)[.]
    |generic/convert/(floating_reader|str_to_x)[.]
    )""", re.X)


def run_target(context, build, name, runs, seed):
    """Runs one target. Returns the executions, the time and what libFuzzer found."""
    corpus = context.scratch / "corpus" / name
    found = context.scratch / "found" / name
    for folder in (corpus, found):
        folder.mkdir(parents=True, exist_ok=True)
    command = [build / "fuzz" / f"fuzz_{name}", f"-runs={runs}", f"-seed={seed}", "-timeout=20",
               "-rss_limit_mb=4096", f"-artifact_prefix={found}/", "-print_final_stats=1"]
    dictionary = context.root / "fuzz" / f"{name}.dict"
    if dictionary.is_file():
        command.append(f"-dict={dictionary}")
    seeds = context.root / "fuzz" / "seeds" / name
    begin = time.monotonic()
    done = subprocess.run([str(part) for part in command + [corpus] + ([seeds] if seeds.is_dir() else [])],
                          cwd=context.scratch, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                          stderr=subprocess.PIPE, text=True, errors="replace")
    (context.scratch / f"{name}.log").write_text(done.stderr)
    count = re.search(r"number_of_executed_units:\s*(\d+)", done.stderr)
    return int(count.group(1)) if count else 0, time.monotonic() - begin, done.returncode != 0


def measure(context):
    if context.quick:
        return {"targets": [], "tally": tally(context)}
    commit = context.run("git", "rev-parse", "--short=12", "HEAD").strip()
    seed = context.seed + 2 * len(tally(context))  # each run has other inputs
    build = context.build("fuzz")
    names = sorted(path.stem for path in (context.root / "fuzz").glob("*.cpp"))
    targets = {name: {"name": name, "runs": 0, "seconds": 0.0, "failed": False} for name in names}

    def run(name, runs, seed):
        count, seconds, failed = run_target(context, build, name, runs, seed)
        target = targets[name]
        target["runs"] += count
        target["seconds"] += seconds
        target["failed"] |= failed
        context.say(f"{name}: {count:,} inputs in {seconds:.0f} s{', FAILED' if failed else ''}")

    with concurrent.futures.ThreadPoolExecutor(context.jobs) as pool:
        list(pool.map(lambda name: run(name, EACH, seed), names))
        # What is left goes to the targets by their speed, so that all of them take the same time.
        left = TOGETHER - sum(target["runs"] for target in targets.values())
        speeds = {name: target["runs"] / target["seconds"] for name, target in targets.items()}
        if left > 0:
            list(pool.map(lambda name: run(name, int(left * speeds[name] / sum(speeds.values())) + 1,
                                           seed + 1), names))
    record(context, commit, seed, targets)
    return {"targets": list(targets.values()), "tally": tally(context), "readers": count_of_readers(context)}


def count_of_readers(context):
    """The sides of branches of the readers that the replayed seeds take."""
    tests = context.build("release", settings=("-DTOVA_BUILD_TESTS=ON",))
    counting = context.build("coverage", "tova")
    folder = coverage.profiles_of(context, counting)

    def replay(program):
        scratch = context.scratch / f"run-{program.name}"
        passed, _ = tests_of_build.run(program, counting, scratch, 900, (),
                                       {"LLVM_PROFILE_FILE": str(folder / "%m%c.profraw")})
        shutil.rmtree(scratch, ignore_errors=True)
        if not passed:
            raise SystemExit(f"prove fuzzing: {program.name} failed")

    programs = [program for program in tests_of_build.programs_of(tests) if program.name.startswith("replay_")]
    with concurrent.futures.ThreadPoolExecutor(context.jobs) as pool:
        list(pool.map(replay, programs))
    counted = coverage.export(context, counting, coverage.merged_profile(context, folder))
    result = coverage.count_of_files(context, [(name, entry) for name, entry in coverage.files_of_src(context, counted)
                                               if READERS.match(name)])
    return dict(result["branches"], programs=len(programs))


def tally(context):
    path = context.root / TALLY
    return json.loads(path.read_text()) if path.is_file() else []


def record(context, commit, seed, targets):
    runs = tally(context)
    runs.append({"commit": commit, "seed": seed,
                 "executions": {name: target["runs"] for name, target in sorted(targets.items())}})
    (context.root / TALLY).write_text(json.dumps(runs, indent=1) + "\n")


def report(result):
    if not result["targets"]:
        return "Only the long form fuzzes; CI runs each target for some seconds."
    rows = "\n".join(f"| `{one['name']}` | {one['runs']:,} | {'**yes**' if one['failed'] else 'none'} |"
                     for one in result["targets"])
    total = sum(one["runs"] for one in result["targets"])
    ever = sum(sum(run["executions"].values()) for run in result["tally"])
    return f"""{len(result['targets'])} targets read what comes from outside, under the address and undefined-behaviour
sanitizers, each with an oracle that knows the right result. This run: **{total:,}** inputs. Over the
{len(result['tally'])} recorded runs: {ever:,} (`{TALLY}`).

| target | inputs | findings |
|---|---|---|
{rows}

{result['readers']['programs']} ordinary tests replay the seeds of the targets, and fixed changes of them. They take
**{coverage.per_cent(result['readers']):.1f} %** of the {result['readers']['count']:,} sides of branches in the sources
that read what comes from outside."""


def failures(result):
    if not result["targets"]:
        return []
    missed = [f"{one['name']} found an input that fails" for one in result["targets"] if one["failed"]]
    missed += [f"{one['name']} ran {one['runs']:,} inputs only" for one in result["targets"]
               if one["runs"] < EACH]
    total = sum(one["runs"] for one in result["targets"])
    ever = sum(sum(run["executions"].values()) for run in result["tally"])
    for count, required, what in ((total, TOGETHER, "this run has"), (ever, EVER, "all recorded runs have")):
        if count < required:
            missed.append(f"{what} {count:,} inputs, {required:,} are required")
    if coverage.per_cent(result["readers"]) < REACHED:
        missed.append(f"the seeds reach {coverage.per_cent(result['readers']):.1f} % of the readers' branches, "
                      f"{REACHED:g} % are required")
    if len(result["targets"]) < TARGETS:
        missed.append(f"there are {len(result['targets'])} targets, {TARGETS} are required")
    return missed
