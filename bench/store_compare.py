"""Compares kglob with rclone on an object store on this machine that delays each request.

First every tool makes each search once: requests are counted, and the sets of paths are compared with the keys in the store. Then the
tools take turns, round by round, as in compare.py. Prints Markdown. Exits with 1 if a set is wrong, if kglob makes more requests than the
limit or 32 more than with one request at a time, or if its own count of requests differs from the store's.
"""

import argparse
import contextlib
import os
import re
import subprocess
import sys
from collections.abc import Iterator, Sequence
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "tools" / "store"))

from compare import Measure, Runs, take_turns, usable
from generated_store import GeneratedStore
from line_chart import table
from searches import KGLOB, Search
from slow_proxy import SlowProxy
from store_shapes import Shape, shapes

Store = GeneratedStore | SlowProxy

KGLOB_ALONE = "kglob -j 1"
# rclone's recursive listing: page by page, or folder by folder with 32 requests at a time.
RCLONE_BY_PAGE, RCLONE_BY_FOLDER = "rclone --fast-list", "rclone --checkers 32"
RCLONE_OPTIONS = {RCLONE_BY_PAGE: ["--fast-list"], RCLONE_BY_FOLDER: ["--checkers", "32", "--disable", "ListR"]}
# By how many requests kglob may exceed those that it makes with one at a time: twice the most that are in flight.
MORE_REQUESTS = 32


def set_environment(environment: dict[str, str], port: int) -> None:
    """Points every tool at the store on that port, by environment variables of this process."""
    for name in [name for name in os.environ if name.startswith(("AWS_", "RCLONE_"))]:
        del os.environ[name]  # the user's own configuration must not interfere
    endpoint = f"http://127.0.0.1:{port}"
    os.environ.update(environment, AWS_ENDPOINT_URL_S3=endpoint, RCLONE_CONFIG="", RCLONE_CONFIG_STORE_TYPE="s3",
                      RCLONE_CONFIG_STORE_PROVIDER="Other", RCLONE_CONFIG_STORE_ENDPOINT=endpoint,
                      RCLONE_CONFIG_STORE_ACCESS_KEY_ID=environment["AWS_ACCESS_KEY_ID"],
                      RCLONE_CONFIG_STORE_SECRET_ACCESS_KEY=environment["AWS_SECRET_ACCESS_KEY"],
                      RCLONE_CONFIG_STORE_REGION=environment["AWS_REGION"])


def search_in(shape: Shape, pattern: str, programs: Path) -> Search:
    kglob, location = str(programs / "kglob"), f"s3://{shape.bucket}/{pattern}"
    commands = {KGLOB: [kglob, "--", location], KGLOB_ALONE: [kglob, "-j1", "--", location]}
    # rclone has no patterns for single folders, so it is compared where it lists nothing in vain.
    selection = {"**": ["-R"], "*": []}.get(pattern)
    if selection is not None:
        for tool, options in RCLONE_OPTIONS.items():
            commands[tool] = ["rclone", "lsf", *selection, *options, f"store:{shape.bucket}"]
    return Search(pattern, Path("/"), commands)


def expected(shape: Shape, pattern: str) -> set[str]:
    """What matches among the keys in the store and their folders."""
    paths = set(shape.keys) | shape.folders()
    expression = re.compile(re.escape(pattern).replace(r"\*\*/", "(?:[^/]+/)*").replace(r"\*\*", ".*").replace(r"\*", "[^/]*"))
    return {path for path in paths if expression.fullmatch(path)}


def counted(shape: Shape, search: Search, measure: Measure, store: Store, wanted: set[str]) -> tuple[bool, dict[str, int]]:
    """Whether every tool finds the right paths, and the number of requests that each makes."""
    same, requests = True, {}
    top = f"s3://{shape.bucket}/"
    for tool, command in search.commands.items():
        before = store.requests
        paths = {line.decode().removeprefix(top) for line in measure.lines(command, search.folder)} - {top[:-1]}
        requests[tool] = store.requests - before
        if paths != wanted:
            same = False
            print(f"bench: {tool} finds {len(paths - wanted)} more and {len(wanted - paths)} fewer for {search.pattern!r} in"
                  f" {shape.name}, such as {min(paths ^ wanted)!r}", file=sys.stderr)
    return same, requests


def reported_by_kglob(search: Search) -> int:
    """The number of requests that `kglob --stats` reports for the search, on one thread so that it is always the same."""
    program, *arguments = search.commands[KGLOB_ALONE]
    done = subprocess.run([program, "--stats", *arguments], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, check=True)
    return int(re.search(r"(\d+) requests", done.stderr)[1])


def row(name: str, pattern: str, paths: int, requests: dict[str, int], runs: dict[str, Runs]) -> list[str]:
    own, alone = runs[KGLOB], runs[KGLOB_ALONE]
    rclone = min((runs[tool] for tool in RCLONE_OPTIONS if tool in runs), key=Runs.median, default=None)
    return [name, f"`{pattern}`", f"{paths:,}", str(requests[KGLOB]), str(requests[KGLOB_ALONE]), f"{own.median():.2f}",
            f"{alone.median():.2f}", f"{rclone.median():.2f}" if rclone else "", f"{own.ratio(alone):.2f}",
            f"{own.ratio(rclone):.2f}" if rclone else "", f"{own.peak_mib():.0f}", f"{rclone.peak_mib():.0f}" if rclone else ""]


COLUMNS = ["bucket", "pattern", "paths", "requests", "requests, -j 1", "s", "s, -j 1", "s, rclone", "÷ -j 1", "÷ rclone", "MiB",
           "MiB, rclone"]


def compare(shape: Shape, arguments: argparse.Namespace, measure: Measure, store: Store) -> tuple[bool, list[list[str]]]:
    good, rows = True, []
    for pattern, limit in shape.searches.items():
        search = search_in(shape, pattern, arguments.programs)
        search.commands = usable(search, arguments.tools)
        wanted = expected(shape, pattern)
        same, requests = counted(shape, search, measure, store, wanted)
        reported, alone = reported_by_kglob(search), requests[KGLOB_ALONE]
        most = min(alone + MORE_REQUESTS, limit or sys.maxsize)
        if reported != alone or requests[KGLOB] > most:
            print(f"bench: {requests[KGLOB]} requests, of at most {most}, and {alone} with -j 1, where kglob counts {reported}, for"
                  f" {pattern!r} in {shape.name}", file=sys.stderr)
        good &= same and reported == alone and requests[KGLOB] <= most
        runs = take_turns(search, search.commands, measure, arguments.rounds)
        rows.append(row(shape.name if not rows else "", pattern, len(wanted), requests, runs))
    return good, rows


@contextlib.contextmanager
def served(chosen: Sequence[Shape], delay: float, with_swift: bool) -> Iterator[Store]:
    """A store with these buckets that delays each request by so many seconds, and that every tool uses within it."""
    if not with_swift:
        store = GeneratedStore({shape.bucket: shape.keys for shape in chosen}, delay)
        set_environment(store.environment(), store.port)
        yield store
        return
    from swift_store import SwiftStore  # needs Debian's own interpreter
    with SwiftStore() as swift:
        for shape in chosen:
            print(f"filling s3://{shape.bucket}", file=sys.stderr)
            swift.fill(shape.bucket, shape.keys)
        proxy = SlowProxy(swift.port, delay)
        set_environment(swift.environment(), proxy.port)
        yield proxy


def main() -> int:
    known = {shape.bucket: shape for shape in shapes()}
    parser = argparse.ArgumentParser(prog="bench --store", description=__doc__.split("\n\n")[0])
    parser.add_argument("--programs", type=Path, required=True, help="folder of kglob and of the benchmark programs")
    parser.add_argument("--shapes", nargs="+", choices=known, help="only these")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--delay", type=int, default=20, metavar="MS", help="added to each request (20)")
    parser.add_argument("--tools", nargs="*", metavar="TOOL", help="only these besides kglob, by their names")
    parser.add_argument("--swift", action="store_true",
                        help="OpenStack Swift, with buckets of 20,000 keys, not a store that makes its listings up; each takes two to four"
                             " minutes to fill")
    arguments = parser.parse_args()
    arguments.programs = arguments.programs.resolve()
    if arguments.tools is not None:
        arguments.tools.append(KGLOB_ALONE)
    chosen = [shape for shape in known.values() if not arguments.shapes or shape.bucket in arguments.shapes]
    if arguments.swift:
        chosen = [shape for shape in chosen if len(shape.keys) < 50_000]
    measure = Measure(arguments.programs)
    with served(chosen, arguments.delay / 1000, arguments.swift) as store:
        compared = [compare(shape, arguments, measure, store) for shape in chosen]
    print(f"Medians of at most {arguments.rounds} rounds with {arguments.delay} ms added to each request; rclone with"
          f" {' or '.join(' '.join(options) for options in RCLONE_OPTIONS.values())}, whichever is faster:\n")
    print(table(COLUMNS, [each for _, rows in compared for each in rows], "stores"))
    return 0 if all(good for good, _ in compared) else 1


if __name__ == "__main__":
    sys.exit(main())
