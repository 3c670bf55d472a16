"""The trees that tests search, as keys of a store: "a/b" is an object, "a/" a marker for a folder."""

import os

# Names that shells, patterns, IRIs, XML or request signatures easily get wrong. A local disk allows them all.
AWKWARD_NAMES = [
    "a b", "100%", "a%20b", "#1", "what?", "new\nline", "-rf", "~", "$HOME", "http:", "back\\slash", "日本", "𝒳𝓎", "+a+b", "it's \"q\"",
    "a;b&c=d", "[x]{y}|^`<z>", ".hidden", "...", "é", "e\u0301", "*", "a*b", "x" * 200, "\x01ctl\x7f", "tab\t", " ", "s3:", "a:b,c@d!",
]


def sample():
    """A small tree for trying things out."""
    keys = [f"data/{year}/{year}-{month:02}.csv" for year in (2023, 2024) for month in range(1, 13)]
    keys += [f"src/{module}/{file}" for module in ("core", "net", "ui") for file in ("main.cpp", "main.hpp", "README.md")]
    return keys + ["README.md", "empty/", ".config/settings", "docs/a b/100%.txt", "docs/日本/見本.txt"]


def mirror():
    """Some 3,300 objects in some 370 folders, three levels deep, awkward names on each; one folder of 2,500 takes three pages."""
    tops = ["alpha", "beta", "2023", "2024", "src", "data"] + AWKWARD_NAMES[:6]
    keys = ["top.csv", "top.txt", "empty/", ".top"] + [f"{name}.file" for name in AWKWARD_NAMES[:-4]]
    keys += [f"wide/{number:04}.csv" for number in range(2500)]
    for top_index, top in enumerate(tops):
        middles = [AWKWARD_NAMES[(6 + top_index * 2) % 28], AWKWARD_NAMES[(7 + top_index * 2) % 28], "mid", "data", "aa"]
        for middle_index, middle in enumerate(middles):
            folder = f"{top}/{middle}"
            leaves = ["x", "y", "data", "leaf.d", AWKWARD_NAMES[(top_index * 5 + middle_index) % len(AWKWARD_NAMES)]]
            for leaf_index, leaf in enumerate(leaves):
                keys += _files(f"{folder}/{leaf}", top_index + middle_index + 3 * leaf_index, 2)
            keys += _files(folder, top_index + middle_index, 2)
        keys += _files(top, top_index, 3) + [f"{top}/hollow/"]
    return list(dict.fromkeys(keys))


def _files(folder, start, count):
    names = ["readme.txt", "data.csv", "a", ".dot", f"file{start}.csv", "ab.txt", "aab", AWKWARD_NAMES[start % len(AWKWARD_NAMES)] + ".x"]
    return [f"{folder}/{names[(start + 3 * number) % len(names)]}" for number in range(count)]


def odd():
    """Keys that no disk could have, and what `**` finds of them: paths can't name some."""
    keys = ["a//b", "./x", "../y", "/lead", "both", "both/below", "dir/./z", "marker/", "marker/x", "only-marker/", "n" * 600]
    return keys, ["a", "both", "both/below", "dir", "marker", "marker/x", "n" * 600, "only-marker"]


def write_locally(folder, keys):
    """Creates the same tree on the local disk."""
    for key in keys:
        path = os.path.join(folder, key)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        if not key.endswith("/"):
            with open(path, "xb"):
                pass
