"""The trees that tests search, as keys of a store: "a/b" is an object, "a/" a marker that makes an empty folder."""

import os
import urllib.parse

# Names that a shell, a pattern, an IRI, XML or a request's signature could trip over. None is longer than a local disk allows.
AWKWARD_NAMES = [
    "a b", "100%", "a%20b", "#1", "what?", "new\nline", "-rf", "~", "$HOME", "http:", "back\\slash", "日本", "𝒳𝓎", "+a+b", "it's \"q\"",
    "a;b&c=d", "[x]{y}|^`<z>", ".hidden", "...", "é", "e\u0301", "*", "a*b", "x" * 200, "\x01ctl\x7f", "tab\t", " ", "s3:", "a:b,c@d!",
]


def sample():
    """A small tree to try things on."""
    keys = [f"data/{year}/{year}-{month:02}.csv" for year in (2023, 2024) for month in range(1, 13)]
    keys += [f"src/{module}/{file}" for module in ("core", "net", "ui") for file in ("main.cpp", "main.hpp", "README.md")]
    return keys + ["README.md", "empty/", ".config/settings", "docs/a b/100%.txt", "docs/日本/見本.txt"]


def mirror():
    """Some 3,300 objects in some 340 folders, three deep, the awkward names at every depth."""
    plain = ["alpha", "beta", "2023", "2024", "src", "data"]
    tops = plain + AWKWARD_NAMES[:6]
    keys = ["top.csv", "top.txt", "empty/", ".top"] + [f"{name}.file" for name in AWKWARD_NAMES[:-4]]
    for top_index, top in enumerate(tops):
        middles = [AWKWARD_NAMES[(6 + top_index * 2) % 28], AWKWARD_NAMES[(7 + top_index * 2) % 28], "mid", "data", "aa"]
        for middle_index, middle in enumerate(middles):
            folder = f"{top}/{middle}"
            leaves = ["x", "y", "data", "leaf.d", AWKWARD_NAMES[(top_index * 5 + middle_index) % len(AWKWARD_NAMES)]]
            for leaf in leaves:
                keys += [f"{folder}/{leaf}/{name}" for name in _files(top_index + middle_index)]
            keys += [f"{folder}/{name}" for name in _files(middle_index)[:4]]
        keys += [f"{top}/{name}" for name in _files(top_index)[:4]] + [f"{top}/hollow/"]
    return list(dict.fromkeys(keys))


def _files(number):
    awkward = [AWKWARD_NAMES[(number * 3 + offset) % len(AWKWARD_NAMES)] for offset in range(3)]
    return [f"file{number}.csv", "readme.txt", "data.csv", "a", ".dot", "aab", "ab.txt"] + [f"{name}.x" for name in awkward]


def wide():
    """One folder of 2,500 keys: three pages."""
    return [f"wide/{number:04}.csv" for number in range(2500)]


def conformance():
    """The tree of the conformance suite: one percent-encoded key a line."""
    with open(os.path.join(os.path.dirname(os.path.abspath(__file__)), "conformance_tree.txt"), encoding="ascii") as file:
        return [urllib.parse.unquote(line.strip()) for line in file if line.strip() and not line.startswith("#")]


def write_locally(folder, keys):
    """The same tree on the local disk."""
    for key in keys:
        path = os.path.join(folder, key)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        if not key.endswith("/"):
            with open(path, "xb"):
                pass
