"""Trees of 20,000 keys in 500 folders, as keys of a store, and the searches in them."""

from dataclasses import dataclass, field


@dataclass
class Shape:
    """One bucket. `searches` has the patterns, relative to the bucket, and for some of them the maximum number of requests."""

    name: str
    bucket: str
    keys: list[str]
    searches: dict[str, int | None] = field(default_factory=dict)

    def folders(self) -> set[str]:
        return {key[:end] for key in self.keys for end, unit in enumerate(key) if unit == "/"}


def _files(folder: str, count: int) -> list[str]:
    return [f"{folder}/x{number}.{'txt' if number % 2 else 'csv'}" for number in range(count)]


def _three_levels() -> list[str]:
    """450 folders of 44 keys, in 45 folders of 4 keys, in 5 folders of 4 keys."""
    keys = []
    for top in (f"d{number}" for number in range(5)):
        keys += _files(top, 4)
        for middle in (f"{top}/d{number}" for number in range(9)):
            keys += _files(middle, 4)
            for number in range(10):
                keys += _files(f"{middle}/d{number}", 44)
    return keys


def _deep() -> list[str]:
    """50 chains of ten nested folders, each with 40 keys."""
    return [key for chain in range(50) for depth in range(1, 11) for key in _files("/".join([f"c{chain}", *["d"] * (depth - 1)]), 40)]


def _huge() -> list[str]:
    """4 folders of 4,504 keys among 496 folders of 4."""
    return [key for number in range(500) for key in _files(f"f{number:03}", 4504 if number % 125 == 60 else 4)]


def shapes() -> list[Shape]:
    return [
        Shape("three levels", "levels", _three_levels(),
              {"**": 60, "**/*.csv": 60, "*/*/*.csv": None, "d3/**/*.csv": None, "d3/d4/*.csv": None, "d3/d4/x0.csv": 2}),
        Shape("flat and wide", "flat", [key for number in range(500) for key in _files(f"f{number}", 40)],
              {"**": None, "**/*.csv": None, "*/*.csv": 25, "*/x8.csv": None, "f77/*.csv": None, "f77/x8.csv": 2}),
        Shape("deep", "deep", _deep(), {"**": None, "**/*.csv": None, "*/*.csv": None, "c7/d/d/*.csv": None, "c7/d/d/x8.csv": 2}),
        Shape("few huge folders", "huge", _huge(),
              {"**": None, "**/*.csv": None, "*/*.csv": None, "*/x8.csv": None, "f060/*.csv": None, "f060/x1*.csv": None}),
    ]
