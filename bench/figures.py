"""Draws how kglob and other tools behave as one condition varies: the delay of a folder, the size of the tree; and the first match.

Writes one SVG for each figure into a folder, by gnuplot, and prints the same figures as Markdown tables. Every figure is the median of
several rounds in which the tools take turns. The sets of paths are those that compare.py checks.
"""

import argparse
import os
import statistics
import subprocess
import sys
import tempfile
from dataclasses import dataclass, field
from pathlib import Path

import compare
from searches import FD_ONE_THREAD, FIND, KGLOB

DELAY = "KORVAN_FOLDER_DELAY_US"
FD_MANY = "fd -j16"
RIPGREP_MANY = "rg -j16"
COLOURS = {KGLOB: "#d55e00", FIND: "#555555", FD_ONE_THREAD: "#56b4e9", "fd": "#56b4e9", FD_MANY: "#0072b2", RIPGREP_MANY: "#009e73", "rg": "#009e73"}


def commands(programs: Path) -> dict[str, list[str]]:
    """What lists everything that isn't hidden below the current folder; rg lists files only."""
    fd, ripgrep = ["fdfind", "--no-ignore", "--color=never", "."], ["rg", "--files", "--no-ignore"]
    return {
        KGLOB: [str(programs / "kglob"), "--", "**"],
        FIND: ["find", ".", "-mindepth", "1", "-name", ".*", "-prune", "-o", "-print"],
        FD_ONE_THREAD: [*fd, "-j1"], "fd": fd, FD_MANY: [*fd, "-j16"],
        "rg": ripgrep, RIPGREP_MANY: [*ripgrep, "-j16"],
    }


@dataclass
class Figure:
    """The values of several tools over one axis."""

    name: str
    title: str
    x_label: str
    y_label: str
    values: dict[str, dict[float, float]] = field(default_factory=dict)

    def add(self, tool: str, x: float, value: float) -> None:
        self.values.setdefault(tool, {})[x] = value

    def table(self) -> str:
        axis = sorted({x for values in self.values.values() for x in values})
        rows = [[tool, *(f"{values[x]:.3g}" if x in values else "" for x in axis)] for tool, values in self.values.items()]
        return f"{self.title} ({self.y_label}, by {self.x_label}):\n\n" + compare.table(["tool", *(f"{x:g}" for x in axis)], rows)

    def draw(self, folder: Path) -> None:
        lines = [f"'-' using 1:2 with linespoints linewidth 2 pointtype 7 pointsize 0.5 linecolor '{COLOURS[tool]}' title '{tool}'"
                 for tool in self.values]
        data = "".join("".join(f"{x} {y}\n" for x, y in sorted(values.items())) + "e\n" for values in self.values.values())
        script = (f"set terminal svg size 720,420 dynamic font 'sans-serif,13' background '#ffffff'\n"
                  f"set output '{folder / self.name}.svg'\nset title '{self.title}'\nset xlabel '{self.x_label}'\nset ylabel '{self.y_label}'\n"
                  "set key outside right\nset grid linecolor '#dddddd'\nset logscale xy\n"
                  f"plot {', '.join(lines)}\n{data}")
        subprocess.run(["gnuplot"], input=script, text=True, check=True)


def medians(tools: dict[str, list[str]], folder: Path, measure: compare.Measure, rounds: int) -> dict[str, float]:
    search = compare.Search("**", folder, tools)
    return {tool: runs.median() for tool, runs in compare.take_turns(search, tools, measure, rounds).items()}


def by_delay(tree: Path, programs: Path, measure: compare.Measure, rounds: int) -> Figure:
    figure = Figure("folder-delay", "** on the medium tree, every opening of a folder delayed", "delay, ms", "seconds")
    tools = {name: command for name, command in commands(programs).items() if name in (KGLOB, FD_ONE_THREAD, FD_MANY, RIPGREP_MANY)}
    os.environ["LD_PRELOAD"] = str(programs / "libslow_folders.so")
    for milliseconds in (0.1, 0.25, 0.5, 1, 2, 4):
        os.environ[DELAY] = str(int(milliseconds * 1000))
        for tool, seconds in medians(tools, tree, measure, rounds).items():
            figure.add(tool, milliseconds, seconds)
    del os.environ["LD_PRELOAD"], os.environ[DELAY]
    return figure


def by_size(folder: Path, programs: Path, measure: compare.Measure, rounds: int) -> tuple[Figure, Figure]:
    seconds = Figure("tree-size", "** on trees of different sizes", "entries", "seconds")
    memory = Figure("peak-memory", "Peak memory of ** on trees of different sizes", "entries", "MiB")
    tools = {name: command for name, command in commands(programs).items() if name in (KGLOB, FIND, "fd", "rg")}
    for name in ("small", "medium", "large"):
        tree = compare.tree_at(folder, name, programs)
        entries = compare.TREES[name][1]
        for tool, runs in compare.take_turns(compare.Search("**", tree, tools), tools, measure, rounds).items():
            seconds.add(tool, entries, runs.median())
            memory.add(tool, entries, max(runs.peak_kib) / 1024)
    return seconds, memory


def first_match(folder: Path, programs: Path, rounds: int) -> Figure:
    """The time to the first byte into a pipe, whose reader then goes away."""
    figure = Figure("first-match", "Time to the first match of **", "entries", "milliseconds")
    tools = {name: command for name, command in commands(programs).items() if name in (KGLOB, FIND, "fd", "rg")}
    for name in ("small", "medium", "large"):
        tree = compare.tree_at(folder, name, programs)
        taken: dict[str, list[float]] = {tool: [] for tool in tools}
        for _ in range(rounds):
            for tool, command in tools.items():
                done = subprocess.run([programs / "measure", "--first", *command], cwd=tree, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                      check=True)
                taken[tool].append(int(done.stdout.split()[0]) / 1e6)
        for tool, values in taken.items():
            figure.add(tool, compare.TREES[name][1], statistics.median(values))
    return figure


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--programs", type=Path, required=True, help="folder of kglob and of the benchmark programs")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--folder", type=Path, default=Path(tempfile.gettempdir(), "kglob-bench"), help="where the trees are")
    parser.add_argument("--output", type=Path, required=True, help="the folder that the drawings are written to")
    arguments = parser.parse_args()
    programs, folder, rounds = arguments.programs.resolve(), arguments.folder.resolve(), arguments.rounds
    measure = compare.Measure(programs)
    arguments.output.mkdir(parents=True, exist_ok=True)
    medium = compare.tree_at(folder, "medium", programs)
    for figure in (by_delay(medium, programs, measure, rounds), *by_size(folder, programs, measure, rounds), first_match(folder, programs, rounds)):
        figure.draw(arguments.output)
        print(figure.table(), flush=True)
    return 0


if __name__ == "__main__":
    sys.exit(main())
