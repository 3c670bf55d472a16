"""Trees as keys of a store, and the searches in them."""

from collections.abc import Sequence
from dataclasses import dataclass, field


class Keys(Sequence[str]):
    """Keys in order, made up one by one: so many folders, and in each as many files. Without folders all are at the top."""

    def __init__(self, folders: int, files: int):
        self.folders = folders
        self._files = sorted(f"x{number}.csv" for number in range(files))

    def __len__(self) -> int:
        return max(self.folders, 1) * len(self._files)

    def __getitem__(self, index: int) -> str:  # type: ignore[override]
        if not 0 <= index < len(self):
            raise IndexError(index)
        folder, file = divmod(index, len(self._files))
        return f"f{folder:04}/{self._files[file]}" if self.folders else self._files[file]


@dataclass
class Shape:
    """One bucket. `searches` has the patterns, relative to the bucket, and for some of them the maximum number of requests."""

    name: str
    bucket: str
    keys: Sequence[str]
    searches: dict[str, int | None] = field(default_factory=dict)

    def folders(self) -> set[str]:
        """Every folder."""
        found: set[str] = set()
        for key in self.keys:
            folder = key.rpartition("/")[0]
            while folder and folder not in found:
                found.add(folder)
                folder = folder.rpartition("/")[0]
        return found


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


def large() -> Shape:
    return Shape("100,000 keys in 2,000 folders", "large", list(Keys(2000, 50)), {"**": None})


def shapes() -> list[Shape]:
    """The first ones are too large to fill a store with."""
    return [
        large(),
        Shape("100,000 keys in one folder", "one", list(Keys(0, 100_000)), {"*": None}),
        Shape("500 folders of 3,000 keys", "wide", Keys(500, 3000), {"*/x8.csv": None}),
        Shape("three levels: 450 folders of 44 keys in 45 of 4 in 5 of 4", "levels", sorted(_three_levels()),
              {"**": 60, "*/*/*.csv": None, "d3/**/*.csv": None, "d3/d4/x0.csv": 2}),
        Shape("flat: 500 folders of 40 keys", "flat", sorted(key for number in range(500) for key in _files(f"f{number}", 40)),
              {"**": None, "*/*.csv": 25, "*/x8.csv": None}),
        Shape("deep: 50 chains of ten nested folders of 40 keys", "deep", sorted(_deep()), {"**": None, "*/*.csv": None}),
        Shape("few huge: 4 folders of 4,504 keys among 496 of 4", "huge", sorted(_huge()),
              {"**": None, "*/x8.csv": None, "f060/x1*.csv": None}),
    ]
