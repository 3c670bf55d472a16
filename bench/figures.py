"""Draws how kglob and other tools behave as one condition varies: the delay of a folder or a request, the reads in flight, the size of
the tree.

Writes one SVG for each figure into a folder and prints the same figures as Markdown tables. Every value is the median of several rounds
in which the tools take turns; of those that take long there are fewer rounds. That the tools find the same paths is checked by compare.py
and store_compare.py.
"""

import argparse
import os
import sys
import tempfile
from pathlib import Path

import compare
import store_figures
from line_chart import LineChart
from searches import FD, FIND, KGLOB, Search

DELAY = "KORVAN_FOLDER_DELAY_US"
RIPGREP = "rg"


def everything(tree: Path, programs: Path, threads: int | None = None) -> Search:
    """What lists everything that isn't hidden; rg lists files only. `threads`: with so many, which find can't have."""
    option = [f"-j{threads}"] if threads else []
    commands = {
        KGLOB: [str(programs / "kglob"), *option, "--", "**"],
        FD: ["fdfind", "--no-ignore", "--color=never", *option, "."],
        RIPGREP: ["rg", "--files", "--no-ignore", *option],
    }
    if not threads:
        commands[FIND] = ["find", ".", "-mindepth", "1", "-name", ".*", "-prune", "-o", "-print"]
    return Search("**", tree, commands)


class DelayedFolders:
    """Within it, every opening of a folder by a program that is started takes longer."""

    def __init__(self, programs: Path, milliseconds: float):
        self._settings = {"LD_PRELOAD": str(programs / "libslow_folders.so"), DELAY: str(int(milliseconds * 1000))}

    def __enter__(self) -> None:
        os.environ.update(self._settings)

    def __exit__(self, *_: object) -> None:
        for name in self._settings:
            del os.environ[name]


def by_delay(tree: Path, programs: Path, measure: compare.Measure, rounds: int) -> LineChart:
    chart = LineChart("folder-delay", "** on the medium tree with -j 16, every opening of a folder delayed", "delay, ms", "seconds")
    search = everything(tree, programs, threads=16)
    for milliseconds in (0.1, 0.25, 0.5, 1, 2, 4):
        with DelayedFolders(programs, milliseconds):
            for tool, runs in compare.take_turns(search, search.commands, measure, rounds).items():
                chart.add(tool, milliseconds, runs.median())
    return chart


def by_reads_in_flight(tree: Path, programs: Path, measure: compare.Measure, rounds: int) -> LineChart:
    chart = LineChart("reads-in-flight", "** on the medium tree, 2 ms for every opening of a folder", "-j", "seconds")
    with DelayedFolders(programs, 2):
        for threads in (1, 2, 4, 8, 16, 32):
            search = everything(tree, programs, threads)
            for tool, runs in compare.take_turns(search, search.commands, measure, rounds).items():
                chart.add(tool, threads, runs.median())
    return chart


def by_size(folder: Path, programs: Path, measure: compare.Measure, rounds: int) -> list[LineChart]:
    charts = [LineChart("tree-size", "** on trees of different sizes", "entries", "seconds"),
              LineChart("first-match", "Time to the first match of **", "entries", "milliseconds"),
              LineChart("peak-memory", "Peak memory of ** on trees of different sizes", "entries", "MiB")]
    for name in ("small", "medium", "large"):
        search = everything(compare.tree_at(folder, name, programs), programs)
        entries = compare.TREES[name][1]
        measure.run(search.commands[FIND], search.folder)  # brings the folders into the system's cache
        whole = compare.take_turns(search, search.commands, measure, rounds)
        first = compare.take_turns(search, search.commands, measure, rounds, to_first_match=True)
        for tool in search.commands:
            for chart, value in zip(charts, (whole[tool].median(), first[tool].median() * 1000, whole[tool].peak_mib())):
                chart.add(tool, entries, value)
    return charts


def main() -> int:
    parser = argparse.ArgumentParser(prog="bench --figures", description=__doc__.split("\n\n")[0])
    parser.add_argument("--programs", type=Path, required=True, help="folder of kglob and of the benchmark programs")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--folder", type=Path, default=Path(tempfile.gettempdir(), "kglob-bench"), help="where the trees are")
    parser.add_argument("--output", type=Path, required=True, help="the folder that the drawings are written to")
    arguments = parser.parse_args()
    programs, folder, rounds = arguments.programs.resolve(), arguments.folder.resolve(), arguments.rounds
    measure = compare.Measure(programs)
    arguments.output.mkdir(parents=True, exist_ok=True)
    medium = compare.tree_at(folder, "medium", programs)
    for charts in (lambda: by_size(folder, programs, measure, rounds), lambda: [by_delay(medium, programs, measure, rounds)],
                   lambda: [by_reads_in_flight(medium, programs, measure, rounds)],
                   lambda: store_figures.by_delay(programs, measure, rounds)):
        for chart in charts():
            chart.draw(arguments.output)
            print(chart.table(), flush=True)
    return 0


if __name__ == "__main__":
    sys.exit(main())
