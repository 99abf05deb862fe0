"""Compares the library with plain forms on every input of some domains, by proofs/exhaustive.cpp.

The quick form takes a random sample of the large domains. The long one is cut into parts; those
that are done are kept with a hash of the program and the library, so an interrupted run goes on.
"""
import concurrent.futures
import hashlib
import json
import subprocess
import threading

TITLE = "Every input"
SOURCES = ("proofs",)
PART = 1 << 26
# The quick form takes one block in so many, and the domains without an entry whole.
ONE_IN = {"four_bytes": 1000, "integers": 1000, "floats": 1000, "doubles": 100, "pages": 20}


class Parts:
    """The parts that are done, in a file."""

    def __init__(self, path, key):
        self.path = path
        self.lock = threading.Lock()
        record = json.loads(path.read_text()) if path.is_file() else {}
        self.done = record["done"] if record.get("key") == key else {}
        self.key = key

    def add(self, name, result):
        with self.lock:
            self.done[name] = result
            temporary = self.path.with_suffix(".new")
            temporary.write_text(json.dumps({"key": self.key, "done": self.done}))
            temporary.replace(self.path)


def measure(context):
    build = context.build("release", "proof_exhaustive", settings=("-DTOVA_BUILD_PROOFS=ON",))
    program = build / "proofs" / "proof_exhaustive"
    domains = [line.split("\t") for line in context.run(program, "--list").splitlines()]
    digest = hashlib.sha256(program.read_bytes() + (build / "libtova.so").read_bytes())
    parts = Parts(context.scratch / "parts.json", digest.hexdigest())

    def work():
        for name, size, _ in domains:
            if context.quick:
                yield name, 0, int(size), (context.seed, ONE_IN.get(name, 1))
            else:
                for begin in range(0, int(size), PART):
                    yield name, begin, min(begin + PART, int(size)), ()

    def run(part):
        name, begin, end, sample = part
        label = f"{name} {begin} {end} {sample}"
        if label in parts.done:
            return name, parts.done[label]
        done = subprocess.run([program, name, *map(str, (begin, end, *sample))], capture_output=True, text=True)
        if done.returncode == 0:
            result = {"inputs": int(done.stdout), "different": ""}
            parts.add(label, result)
        else:
            result = {"inputs": 0, "different": done.stdout.strip() or f"ended with {done.returncode}"}
        context.say(f"{name} up to {end:,}: {result['different'] or 'equal'}")
        return name, result

    rows = {name: {"title": title, "size": int(size), "inputs": 0, "different": []} for name, size, title in domains}
    with concurrent.futures.ThreadPoolExecutor(context.jobs) as pool:
        for name, result in pool.map(run, list(work())):
            rows[name]["inputs"] += result["inputs"]
            if result["different"]:
                rows[name]["different"].append(result["different"])
    return {"quick": context.quick, "rows": list(rows.values())}


def report(result):
    lines = "\n".join(f"| {one['title']} | {one['size']:,} | {one['inputs']:,} | "
                      f"{'; '.join(one['different']) or 'none'} |" for one in result["rows"])
    return f"""The library is compared with plain second forms of its rules. The code pages are compared with
iconv character by character, the floats and doubles with the C library. The code pages of the locale are those
of the C locale. Decoded codes of more than two bytes, which only UTF-8 has, are in the first rows.

| inputs | there are | compared | different |
|---|---|---|---|
{lines}"""


def failures(result):
    missed = [f"{one['title']}: {different}" for one in result["rows"] for different in one["different"]]
    missed += [f"{one['title']}: {one['inputs']:,} of {one['size']:,} were compared" for one in result["rows"]
               if not result["quick"] and one["inputs"] != one["size"]]
    missed += [f"{one['title']}: none was compared" for one in result["rows"] if one["inputs"] == 0]
    return missed
