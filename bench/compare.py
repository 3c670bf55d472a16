"""Compares kglob with other tools that find files: whole processes, on one tree, with the folders in the system's cache.

First every tool makes each search once, and the sets of paths are compared. Then the tools take turns, round by round,
so that a change in the machine's speed affects all of them; ratios are computed within a round, and their median over
the rounds is reported. kglob and the std::filesystem loop also take turns on a single core. Prints Markdown. Exits with 1 if
a tool's set differs from find's.
"""

import argparse
import contextlib
import hashlib
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
from collections.abc import Iterator
from dataclasses import dataclass
from pathlib import Path

import searches as catalogue
from line_chart import table
from searches import FIND, GETDENTS, KGLOB, RIVALS, STD_FILESYSTEM, Search

HERE = Path(__file__).resolve().parent

# Folders and visible entries.
TREES = {"small": (1_000, 10_000), "medium": (10_000, 100_000), "large": (100_000, 1_000_000)}
ROUNDS = {"small": 15, "medium": 15, "large": 5}

# No further round of a search begins after so many seconds, since what takes long varies little.
LONG = 20


@dataclass
class Runs:
    """The time and peak memory of one tool in each round."""

    seconds: list[float]
    peak_kib: list[int]

    def median(self) -> float:
        return statistics.median(self.seconds)

    def ratio(self, other: "Runs") -> float:
        return statistics.median(mine / theirs for mine, theirs in zip(self.seconds, other.seconds))

    def peak_mib(self) -> float:
        return max(self.peak_kib) / 1024


class Measure:
    """Runs commands, one at a time, with their output going to a file in memory."""

    def __init__(self, programs: Path):
        memory = "/dev/shm" if os.path.isdir("/dev/shm") else None
        self._folder = tempfile.TemporaryDirectory(prefix="kglob-bench-", dir=memory)
        self._output = Path(self._folder.name, "output")
        self._program = str(programs / "measure")

    def run(self, command: list[str], folder: Path, to_first_match: bool = False) -> tuple[float, int]:
        """The wall time in seconds, on request only to the first byte of output, and the peak memory in KiB."""
        output = "--first" if to_first_match else str(self._output)
        done = subprocess.run([self._program, output, *command], cwd=folder, stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL if to_first_match else None, check=True)
        nanoseconds, peak_kib, status = map(int, done.stdout.split()[:3])
        if status != 0 and not to_first_match:  # whose output is closed early
            sys.exit(f"bench: status {status} from {command}")
        return nanoseconds / 1e9, peak_kib

    def lines(self, command: list[str], folder: Path) -> list[bytes]:
        """The paths that the command prints, without a leading "./" or a "/" at the end."""
        self.run(command, folder)
        return [line.removeprefix(b"./").removesuffix(b"/") for line in self._output.read_bytes().splitlines()]


def tree_at(cache: Path, name: str, programs: Path) -> Path:
    """The tree of that name, made when it is first needed, and made anew when its generator changes."""
    version = hashlib.sha256((HERE / "tree.cpp").read_bytes()).hexdigest()[:8]
    tree = cache / f"{name}-{version}"
    if not tree.is_dir():
        print(f"making {tree}", file=sys.stderr)
        cache.mkdir(parents=True, exist_ok=True)
        folders, entries = TREES[name]
        subprocess.run([programs / "make_tree", str(folders), str(entries), tree], check=True)
    return tree


def usable(search: Search, only: list[str] | None) -> dict[str, list[str]]:
    return {tool: command for tool, command in search.commands.items()
            if shutil.which(command[0]) and (only is None or tool in (KGLOB, FIND, *only))}


def agree(search: Search, commands: dict[str, list[str]], measure: Measure) -> tuple[bool, int, int]:
    """Whether all tools find the same set of paths, the size of the set, and the number of lines that kglob prints."""
    expected = set(measure.lines(commands[FIND], search.folder))
    same, printed = True, 0
    for tool, command in commands.items():
        if tool == FIND or tool in search.countersOnly:
            continue
        lines = measure.lines(command, search.folder)
        found = set(lines)
        if tool == KGLOB:
            printed = len(lines)
        if found != expected:
            same = False
            example = min(found ^ expected).decode(errors="replace")
            print(f"bench: {tool} differs from find on {search.pattern!r}: {len(found - expected)} more,"
                  f" {len(expected - found)} fewer, such as {example!r}", file=sys.stderr)
    return same, len(expected), printed


def take_turns(search: Search, commands: dict[str, list[str]], measure: Measure, rounds: int,
               to_first_match: bool = False) -> dict[str, Runs]:
    runs = {tool: Runs([], []) for tool in commands}
    start = time.monotonic()
    for finished in range(rounds):
        if finished and time.monotonic() - start > LONG:
            break
        for tool, command in commands.items():
            seconds, peak_kib = measure.run(command, search.folder, to_first_match)
            runs[tool].seconds.append(seconds)
            runs[tool].peak_kib.append(peak_kib)
    return runs


@contextlib.contextmanager
def on_one_core() -> Iterator[None]:
    """Within it, every program that is started runs on one core, the same one."""
    cores = os.sched_getaffinity(0)
    os.sched_setaffinity(0, {min(cores)})
    try:
        yield
    finally:
        os.sched_setaffinity(0, cores)


def figures(runs: Runs, all_runs: dict[str, Runs]) -> list[str]:
    """Wall time, the ratios to find, to the fastest rival and to the getdents64 loop, and peak memory."""
    fastest = min((all_runs[tool] for tool in RIVALS if tool in all_runs), key=Runs.median)
    ratios = [all_runs.get(FIND), fastest, all_runs.get(GETDENTS)]
    return [
        f"{runs.median() * 1000:.1f}",
        *(f"{runs.ratio(other):.2f}" if other else "" for other in ratios),
        f"{runs.peak_mib():.1f}",
    ]


FIGURES = ["ms", "÷ find", "÷ fastest of find, fd, rg, std::filesystem", "÷ getdents64 loop", "peak MiB"]


def system_calls(search: Search) -> str:
    """How many kglob makes on one thread: under strace every read seems to wait, so that it would start many."""
    program, *arguments = search.commands[KGLOB]
    if not shutil.which("strace"):
        return ""
    with tempfile.NamedTemporaryFile() as counts:
        subprocess.run(["strace", "-f", "-c", "-U", "calls,name", "-o", counts.name, program, "-j1", *arguments],
                       cwd=search.folder, stdout=subprocess.DEVNULL, check=True)
        lines = Path(counts.name).read_text().splitlines()
    return next(line.split()[0] for line in lines if line.endswith("total"))


def ratio_on_one_core(search: Search, commands: dict[str, list[str]], measure: Measure, rounds: int) -> str:
    if STD_FILESYSTEM not in commands:
        return ""
    with on_one_core():
        runs = take_turns(search, {tool: commands[tool] for tool in (KGLOB, STD_FILESYSTEM)}, measure, rounds)
    return f"{runs[KGLOB].ratio(runs[STD_FILESYSTEM]):.2f}"


def compare(name: str, arguments: argparse.Namespace, measure: Measure) -> bool:
    tree = tree_at(arguments.folder, name, arguments.programs)
    folders, entries = TREES[name]
    rounds = arguments.rounds or ROUNDS[name]
    print(f"## Tree `{name}`: {entries:,} visible entries in {folders:,} folders\n\n"
          f"Medians of {rounds} rounds, {os.cpu_count()} processors.\n")
    all_agree, summary = True, []
    for search in catalogue.searches(tree, arguments.programs):
        if arguments.patterns and search.pattern not in arguments.patterns:
            continue
        commands = usable(search, arguments.tools)
        same, size, printed = agree(search, commands, measure)
        all_agree &= same
        runs = take_turns(search, commands, measure, rounds)
        repeated = f", {printed:,} lines from kglob" if printed != size else ""
        print(f"### `{search.pattern}`: {size:,} paths{repeated}\n")
        print(table(["tool", *FIGURES], [[tool, *figures(taken, runs)] for tool, taken in runs.items()]))
        sys.stdout.flush()
        if search.pattern == "**":
            others = [[tool, f"{taken.median() * 1000:.1f}", f"{taken.peak_mib():.1f}"] for tool, taken in runs.items()]
            print(table(["tool", "ms", "peak MiB"], others, f"tools-{name}"))
        where = "" if search.folder == tree else " in a small folder"
        summary.append([f"`{search.pattern}`{where}" if "*" in search.pattern else "a literal path", *figures(runs[KGLOB], runs),
                        ratio_on_one_core(search, commands, measure, rounds), system_calls(search)])
    print("### kglob\n")
    print(table(["pattern", *FIGURES, "on one core, ÷ std::filesystem", "system calls, -j 1"], summary, f"kglob-{name}"))
    return all_agree


def main() -> int:
    parser = argparse.ArgumentParser(prog="bench", description=__doc__.split("\n\n")[0])
    parser.add_argument("--programs", type=Path, required=True, help="folder of kglob and of the benchmark programs")
    parser.add_argument("--tree", choices=[*TREES, "both"], default="medium")
    parser.add_argument("--rounds", type=int, help="default: 15 on the medium tree, 5 on the large one")
    parser.add_argument("--patterns", nargs="+", metavar="PATTERN", help="compare only these patterns")
    parser.add_argument("--tools", nargs="*", metavar="TOOL",
                        help="only these besides kglob and find, by their names in the table")
    parser.add_argument("--folder", type=Path, default=Path(tempfile.gettempdir(), "kglob-bench"),
                        help="where the trees are, and remain between runs")
    arguments = parser.parse_args()
    arguments.programs = arguments.programs.resolve()
    arguments.folder = arguments.folder.resolve()
    measure = Measure(arguments.programs)
    names = ["medium", "large"] if arguments.tree == "both" else [arguments.tree]
    return 0 if all([compare(name, arguments, measure) for name in names]) else 1


if __name__ == "__main__":
    sys.exit(main())
