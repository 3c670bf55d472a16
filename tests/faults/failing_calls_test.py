"""failing_calls_test.py KGLOB LIBRARY: searches during which one system call or allocation fails, or all allocations from one on.

Each search must end with all matches and status 0, or with some of them, a message and status 2. LIBRARY makes the calls fail.
Of the allocations every fifth is tried, or every one if FAULT_STEP=1 is set in the environment.
"""

import concurrent.futures
import errno
import os
import subprocess
import sys
import tempfile

KGLOB, LIBRARY = sys.argv[1:3]
MEMORY_STEP = int(os.environ.get("FAULT_STEP", "5"))
FILES = ["1.csv", "a/2.csv", "a/sub/deep/3.csv", "b/new\nline/4.csv", "b/*", "b/caf\udcff/5.csv", ".dot/6.csv", "other/deep/7.csv"]
LINKS = {"folder": "a/sub", "chain": "folder", "a/far": "../other", "b/up": "..", "b/file": "../1.csv", "broken": "none", "loop": "loop"}
LINKS.update({"../links/%02d" % number: "%02d" % (number + 1) for number in range(45)})  # more than the system follows at once
LINKS["../links/45"] = "../tree/a/sub"
WIDE = ["../wide/%02d/%d.csv" % (number, number) for number in range(60)]  # enough for a search to start a thread
SEARCHES = [["-dL", "**"], ["**/*.csv", "*/"], ["--size=-9k", "**"], ["chain/deep/*", "a/2.csv", "b/*/*/"],
            ["-r", "../wide", "**/*.csv"], ["-r", "../links", "00/deep/*"]]
DISK_ERRORS = ["EIO", "ESTALE", "EINTR", "ENOMEM", "EMFILE", "EACCES", "ELOOP", "ENOTCONN"]
FAULTS = {"open": DISK_ERRORS, "getdents": DISK_ERRORS[:4], "stat": DISK_ERRORS, "readlink": ["EIO", "EACCES", "ENOMEM"],
          "memory": ["ENOMEM"], "thread": ["EAGAIN"]}


def run(tree, search, faults):
    """Status, matches, messages, and whether the fault was reached."""
    end, other = os.pipe()
    environment = {"LANG": "C.UTF-8", "LD_PRELOAD": LIBRARY, "FAULT_SEEN": str(other), **faults}
    try:
        done = subprocess.run([KGLOB, "-0", *search], env=environment, cwd=tree, pass_fds=[other], capture_output=True, timeout=30)
        result = done.returncode, done.stdout.split(b"\0"), done.stderr.decode(errors="replace")
    except subprocess.TimeoutExpired:
        result = "none after 30 s", [b""], ""
    os.close(other)
    with os.fdopen(end, "rb") as seen:
        return *result, seen.read() != b""


def problem(expected, status, output, errors):
    """What is wrong with the result; empty if nothing is. Both lists end with what follows the last NUL, the empty text."""
    rest = iter(expected)
    are_some = all(match in rest for match in output)
    if are_some and ((status, output) == (0, expected) or (status == 2 and errors.startswith("kglob: "))):
        return ""
    counts = "%d of %d matches" % (len(output) - 1, len(expected) - 1)
    return "status %s, %s, %r" % (status, counts if are_some else "wrong matches", errors)


def try_all(tree, search, expected, faults, step):
    """A line for each search that ends wrong, and the number of calls."""
    wrong, number = [], 1
    while True:
        now = {**faults, "FAULT_AT": str(number)}
        *result, reached = run(tree, search, now)
        if not reached:
            return wrong, number - 1
        if trouble := problem(expected, *result):
            wrong.append("%s kglob %s: %s" % (" ".join("=".join(each) for each in now.items()), search, trouble))
        number += step


def make(tree):
    for path in FILES + WIDE:
        os.makedirs(os.path.dirname(os.path.join(tree, path)), exist_ok=True)
        with open(os.path.join(tree, path), "wb"):
            pass
    os.mkdir(os.path.join(tree, "../links"))
    for path, target in LINKS.items():
        os.symlink(target, os.path.join(tree, path))


def main():
    with tempfile.TemporaryDirectory(prefix="kglob-faults-") as folder, concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        make(tree := os.path.join(folder, "tree"))
        tries = []
        for search in SEARCHES:
            expected = run(tree, search, {})[1]
            for untyped in [{}, {"UNTYPED": "1"}]:
                result = run(tree, search, untyped)[:3]
                assert result == (0, expected, "") and len(expected) > 1, (search, untyped, result)
                for call, error in ((call, error) for call, each in FAULTS.items() for error in each):
                    fault = {**untyped, "FAULT_CALL": call, "FAULT_ERROR": str(getattr(errno, error))}
                    tries.append((tree, search, expected, fault, MEMORY_STEP if call == "memory" else 1))
                    if call == "memory":
                        tries.append((tree, search, expected, {**fault, "FAULT_ON": "1"}, MEMORY_STEP))
        ended = list(pool.map(lambda one: try_all(*one), tries))
    wrong = [line for lines, _ in ended for line in lines]
    calls = {call: sum(count for one, (_, count) in zip(tries, ended) if one[3]["FAULT_CALL"] == call) for call in FAULTS}
    print("\n".join([*wrong, "%d searches ended wrong; calls that were made to fail: %s" % (len(wrong), calls)]))
    return 1 if wrong or not all(calls.values()) else 0


if __name__ == "__main__":
    sys.exit(main())
