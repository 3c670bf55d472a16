"""How kglob and rclone list a bucket of 100,000 keys as the delay of a request varies."""

from pathlib import Path

import compare
from line_chart import LineChart
from searches import KGLOB
from store_compare import RCLONE_BY_FOLDER, RCLONE_BY_PAGE, search_in, served
from store_shapes import large

DELAYS = (0, 5, 20, 50, 100)


def by_delay(programs: Path, measure: compare.Measure, rounds: int) -> list[LineChart]:
    shape = large()
    charts = [LineChart(name, title, "delay of a request, ms", unit, linear_x=True) for name, title, unit in (
        ("store-delay", f"** in a bucket of {shape.name}", "seconds"),
        ("store-first-match", f"Time to the first match of ** in a bucket of {shape.name}", "seconds"))]
    search = search_in(shape, "**", programs)
    commands = {tool: search.commands[tool] for tool in (KGLOB, RCLONE_BY_PAGE, RCLONE_BY_FOLDER)}
    with served([shape], 0, with_swift=False) as store:
        compare.take_turns(search, commands, measure, 1)  # the store prepares its pages
        for milliseconds in DELAYS:
            store.delay = milliseconds / 1000
            whole = compare.take_turns(search, commands, measure, rounds)
            first = compare.take_turns(search, commands, measure, rounds, to_first_match=True)
            for tool in commands:
                for chart, runs in zip(charts, (whole[tool], first[tool])):
                    chart.add(tool, milliseconds, runs.median())
    return charts
