"""A line chart: the values of several tools over one axis, as an SVG drawn by gnuplot and as a Markdown table."""

import subprocess
from dataclasses import dataclass, field
from pathlib import Path

COLOURS = {"kglob": "#d55e00", "find": "#555555", "fd": "#0072b2", "rg": "#009e73", "rclone --fast-list": "#0072b2",
           "rclone --checkers 32": "#009e73"}


def table(header: list[str], rows: list[list[str]], name: str = "") -> str:
    """A Markdown table; page.py puts those with a name into the document."""
    rule = ["---" if column == header[0] or column == "pattern" else "---:" for column in header]
    mark = f"<!-- table: {name} -->\n\n" if name else ""
    return mark + "\n".join("| " + " | ".join(row) + " |" for row in [header, rule, *rows]) + "\n"


@dataclass
class LineChart:
    """Both axes are logarithmic, unless `linear_x` is set because there is a value at 0."""

    name: str
    title: str
    x_label: str
    y_label: str
    linear_x: bool = False
    values: dict[str, dict[float, float]] = field(default_factory=dict)

    def add(self, tool: str, x: float, value: float) -> None:
        self.values.setdefault(tool, {})[x] = value

    def table(self) -> str:
        axis = sorted({x for values in self.values.values() for x in values})
        rows = [[tool, *(f"{values[x]:.3g}" if x in values else "" for x in axis)] for tool, values in self.values.items()]
        return f"{self.title} ({self.y_label}, by {self.x_label}):\n\n" + table(["tool", *(f"{x:g}" for x in axis)], rows)

    def draw(self, folder: Path) -> None:
        # The marks have different forms, so that lines that coincide can be seen.
        lines = [f"'-' using 1:2 with linespoints linewidth 2 pointtype {mark} pointsize 0.8 linecolor '{COLOURS[tool]}' title '{tool}'"
                 for tool, mark in zip(self.values, (7, 4, 8, 12))]
        data = "".join("".join(f"{x} {y}\n" for x, y in sorted(values.items())) + "e\n" for values in self.values.values())
        axis = sorted({x for values in self.values.values() for x in values})
        ticks = ", ".join(f"'{x:,}' {x}" for x in axis)
        span = f"{-axis[-1] / 30}:{axis[-1] * 31 / 30}" if self.linear_x else f"{axis[0] / 1.1}:{axis[-1] * 1.1}"
        script = (f"set terminal svg size 720,420 dynamic font 'sans-serif,13' background '#ffffff'\n"
                  f"set output '{folder / self.name}.svg'\nset title '{self.title}' noenhanced\n"
                  f"set xlabel '{self.x_label}'\nset ylabel '{self.y_label}'\nset xtics ({ticks}) noenhanced\nset xrange [{span}]\n"
                  f"set key outside right noenhanced\nset grid linecolor '#dddddd'\nset logscale {'y' if self.linear_x else 'xy'}\n"
                  f"plot {', '.join(lines)}\n{data}")
        subprocess.run(["gnuplot"], input=script, text=True, check=True)
