"""Compares kglob with other tools that list an object store: Swift on this machine, behind a proxy that delays each request.

First every tool makes each search once: requests are counted, and the sets of paths are compared with the keys in the store. Then the
tools take turns, round by round, as in compare.py. Prints Markdown. Exits with 1 if a set is wrong, if kglob makes more requests than the
limit, or if its own count of requests differs from the proxy's.
"""

import argparse
import os
import re
import subprocess
import sys
import tempfile
from dataclasses import dataclass
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "tools" / "store"))

from compare import Measure, take_turns, table, usable
from searches import KGLOB, Search
from slow_proxy import SlowProxy
from store_shapes import Shape, shapes
from swift_store import SwiftStore

RCLONE = "rclone lsf -R"
S3CMD = "s3cmd ls -r"
TOOLS = (KGLOB, RCLONE, S3CMD)
# The other tools only list recursively, so they are compared only on patterns that do the same.
COMPARED = ("**", "**/*.csv")


@dataclass
class Access:
    """How the tools reach the store."""

    proxy: SlowProxy
    s3cmd_configuration: Path


def prepare(environment: dict[str, str], proxy: SlowProxy, folder: Path) -> Access:
    """Points every tool at the proxy: by environment variables of this process, and with a configuration file for s3cmd."""
    endpoint = f"127.0.0.1:{proxy.port}"
    key, secret, region = (environment[name] for name in ("AWS_ACCESS_KEY_ID", "AWS_SECRET_ACCESS_KEY", "AWS_REGION"))
    for name in [name for name in os.environ if name.startswith(("AWS_", "RCLONE_"))]:
        del os.environ[name]  # the user's own configuration must not interfere
    os.environ.update(environment, AWS_ENDPOINT_URL_S3=f"http://{endpoint}", RCLONE_CONFIG="", RCLONE_CONFIG_STORE_TYPE="s3",
                      RCLONE_CONFIG_STORE_PROVIDER="Other", RCLONE_CONFIG_STORE_ENDPOINT=f"http://{endpoint}",
                      RCLONE_CONFIG_STORE_ACCESS_KEY_ID=key, RCLONE_CONFIG_STORE_SECRET_ACCESS_KEY=secret,
                      RCLONE_CONFIG_STORE_REGION=region)
    configuration = folder / "s3cfg"
    configuration.write_text(f"[default]\naccess_key = {key}\nsecret_key = {secret}\nbucket_location = {region}\nhost_base = {endpoint}\n"
                             f"host_bucket = {endpoint}\nuse_https = False\n")
    return Access(proxy, configuration)


def search_in(shape: Shape, pattern: str, programs: Path, access: Access) -> Search:
    commands = {KGLOB: [str(programs / "kglob"), "--", f"s3://{shape.bucket}/{pattern}"]}
    if pattern in COMPARED:
        commands |= {
            # It already lists the whole bucket page by page; with --fast-list it makes the same requests.
            RCLONE: ["rclone", "lsf", "-R", *(["--files-only", "--include", "*.csv"] if pattern.endswith("*.csv") else []),
                     f"store:{shape.bucket}"],
            S3CMD: ["s3cmd", "-c", str(access.s3cmd_configuration), "ls", "-r", f"s3://{shape.bucket}"],
        }
    return Search(pattern, Path("/"), commands)


def expected(shape: Shape, pattern: str, tool: str) -> set[str]:
    """What the tool must find among the keys in the store."""
    if tool == S3CMD:
        return set(shape.keys)
    paths = set(shape.keys) | shape.folders()
    if pattern == "**":
        return paths
    expression = re.compile(re.escape(pattern).replace(r"\*\*/", "(?:[^/]+/)*").replace(r"\*", "[^/]*"))
    return {path for path in paths if expression.fullmatch(path)}


def found(shape: Shape, tool: str, lines: list[bytes]) -> set[str]:
    paths = [line.decode() for line in lines]
    if tool == S3CMD:
        paths = [line.partition("s3://")[2].partition("/")[2] for line in paths]
    top = f"s3://{shape.bucket}"
    return {path.removeprefix(top).removeprefix("/") for path in paths} - {""}


def counted(shape: Shape, search: Search, measure: Measure, access: Access) -> tuple[bool, dict[str, int]]:
    """Whether every tool finds the right paths, and the number of requests that each makes."""
    same, requests = True, {}
    for tool, command in search.commands.items():
        before = access.proxy.requests
        paths = found(shape, tool, measure.lines(command, search.folder))
        requests[tool] = access.proxy.requests - before
        wanted = expected(shape, search.pattern, tool)
        if paths != wanted:
            same = False
            print(f"bench: {tool} finds {len(paths - wanted)} more and {len(wanted - paths)} fewer for {search.pattern!r} on"
                  f" {shape.name}, such as {min(paths ^ wanted)!r}", file=sys.stderr)
    return same, requests


def reported_by_kglob(search: Search) -> int:
    """The number of requests that `kglob --stats` reports for the search."""
    command = search.commands[KGLOB]
    done = subprocess.run([command[0], "--stats", *command[1:]], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, check=True)
    return int(re.search(r"(\d+) requests", done.stderr)[1])


def compare(shape: Shape, arguments: argparse.Namespace, measure: Measure, access: Access) -> bool:
    print(f"## {shape.name.capitalize()}: {len(shape.keys):,} keys in {len(shape.folders())} folders\n")
    good, requests_rows, times_rows = True, [], []
    for pattern, limit in shape.searches.items():
        search = search_in(shape, pattern, arguments.programs, access)
        search.commands = usable(search, arguments.tools)
        same, requests = counted(shape, search, measure, access)
        reported = reported_by_kglob(search)
        if reported != requests[KGLOB]:
            print(f"bench: kglob counts {reported} requests, not {requests[KGLOB]}, for {pattern!r} on {shape.name}", file=sys.stderr)
        good &= same and reported == requests[KGLOB] and (limit is None or reported <= limit)
        requests_rows.append([f"`{pattern}`", f"{len(expected(shape, pattern, KGLOB)):,}", str(limit or ""),
                              *(str(requests.get(tool, "")) for tool in TOOLS)])
        runs = take_turns(search, search.commands, measure, arguments.rounds)
        times_rows.append([f"`{pattern}`",
                           *(f"{runs[tool].median():.2f}" if tool in runs else "" for tool in TOOLS),
                           *(f"{runs[KGLOB].ratio(runs[tool]):.2f}" if tool in runs else "" for tool in TOOLS[1:])])
    print("Requests:\n")
    print(table(["pattern", "paths", "limit", *TOOLS], requests_rows))
    print(f"Seconds, medians of {arguments.rounds} rounds with {arguments.delay} ms added to each request:\n")
    print(table(["pattern", *TOOLS, *(f"kglob ÷ {tool}" for tool in TOOLS[1:])], times_rows))
    sys.stdout.flush()
    return good


def main() -> int:
    known = {shape.bucket: shape for shape in shapes()}
    parser = argparse.ArgumentParser(prog="bench --store", description=__doc__.split("\n\n")[0])
    parser.add_argument("--programs", type=Path, required=True, help="folder of kglob and of the benchmark programs")
    parser.add_argument("--shapes", nargs="+", choices=known, default=list(known), help="only these; each takes two to four minutes to fill")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--delay", type=int, default=20, metavar="MS", help="added to each request (20)")
    parser.add_argument("--tools", nargs="*", metavar="TOOL", help="only these besides kglob, by their names in the table")
    arguments = parser.parse_args()
    arguments.programs = arguments.programs.resolve()
    with SwiftStore() as store, tempfile.TemporaryDirectory(prefix="kglob-bench-") as folder:
        chosen = [known[name] for name in arguments.shapes]
        for shape in chosen:
            print(f"filling s3://{shape.bucket}", file=sys.stderr)
            store.fill(shape.bucket, shape.keys)
        access = prepare(store.environment(), SlowProxy(store.port, arguments.delay / 1000), Path(folder))
        measure = Measure(arguments.programs)
        return 0 if all([compare(shape, arguments, measure, access) for shape in chosen]) else 1


if __name__ == "__main__":
    sys.exit(main())
