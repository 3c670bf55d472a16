"""The searches that are compared, and each tool's command line for them."""

import re
import shlex
import sys
from dataclasses import dataclass, field
from pathlib import Path

KGLOB = "kglob"
FIND = "find"
FD_ONE_THREAD = "fd -j1"
FD = "fd"
RIPGREP = "rg --files"
STD_FILESYSTEM = "std::filesystem loop"
GETDENTS = "getdents64 loop, no paths"
ZSH = "zsh"
BASH = "bash"
PYTHON = "Python glob"

# kglob is compared with the fastest of these that returns the same result, with as many threads as it likes.
RIVALS = (FIND, FD_ONE_THREAD, FD, RIPGREP, STD_FILESYSTEM)

# GNU find, and how it skips dot entries; the search's own condition follows.
_FIND = ["find", ".", "-mindepth", "1"]
_VISIBLE = ["-name", ".*", "-prune", "-o"]
_FD = ["fdfind", "--no-ignore", "--color=never"]
_RIPGREP = ["rg", "--files", "--no-ignore"]


@dataclass
class Search:
    """One pattern, the folder it is searched in, and a command line for each tool that can make the search."""

    pattern: str
    folder: Path
    commands: dict[str, list[str]]
    # The tools that print something other than the list of matches.
    countersOnly: set[str] = field(default_factory=lambda: {GETDENTS})


def _shells(pattern: str, zsh_pattern: str | None = None) -> dict[str, list[str]]:
    return {
        ZSH: ["zsh", "-fc", f"print -rl -- {zsh_pattern or pattern + '(N)'}"],
        BASH: ["bash", "--norc", "-O", "globstar", "-O", "nullglob", "-c", f"printf '%s\\n' {pattern}"],
    }


def _python(pattern: str) -> list[str]:
    program = "import glob, sys; sys.stdout.write(''.join(p + '\\n' for p in glob.glob(sys.argv[1], recursive=True)))"
    return [sys.executable, "-I", "-c", program, pattern]


def _walks(programs: Path, selection: list[str], depth: int = 0) -> dict[str, list[str]]:
    limit = ["--depth", str(depth)] if depth else []
    return {
        STD_FILESYSTEM: [str(programs / "std_filesystem_walk"), *limit, *selection],
        GETDENTS: [str(programs / "getdents_walk"), *limit, "--count"],
    }


def searches(tree: Path, programs: Path) -> list[Search]:
    """Every search, on the tree; `programs` holds kglob and the hand-written loops."""
    kglob = str(programs / "kglob")

    def search(pattern: str, folder: Path, commands: dict[str, list[str]]) -> Search:
        return Search(pattern, folder, {KGLOB: [kglob, "--", pattern], **commands, PYTHON: _python(pattern)})

    below = re.escape(str(tree)) + "/"
    literal = _a_deep_file(tree)
    return [
        search("**", tree, {
            FIND: [*_FIND, *_VISIBLE, "-print"],
            FD_ONE_THREAD: [*_FD, "-j1", "."],
            FD: [*_FD, "."],
            **_walks(programs, []),
            **_shells("**", "**/*(N)"),
        }),
        search("**/*.csv", tree, {
            FIND: [*_FIND, *_VISIBLE, "-name", "*.csv", "-print"],
            FD_ONE_THREAD: [*_FD, "-j1", "-e", "csv", "."],
            FD: [*_FD, "-e", "csv", "."],
            RIPGREP: [*_RIPGREP, "-g", "*.csv", "-g", "!.*"],
            **_walks(programs, ["--suffix", ".csv"]),
            **_shells("**/*.csv"),
        }),
        search("**/", tree, {
            FIND: [*_FIND, *_VISIBLE, "-type", "d", "-print"],
            FD_ONE_THREAD: [*_FD, "-j1", "-t", "d", "."],
            FD: [*_FD, "-t", "d", "."],
            **_walks(programs, ["--folders"]),
            **_shells("**/", "**/*(N/)"),
        }),
        search("**/d*/**/*.hpp", tree, {
            FIND: [*_FIND, *_VISIBLE, "-name", "*.hpp", "-path", "*/d*/*", "-print"],
            FD_ONE_THREAD: [*_FD, "-j1", "-p", f"^{below}(.*/)?d[^/]*/.*[.]hpp$"],
            FD: [*_FD, "-p", f"^{below}(.*/)?d[^/]*/.*[.]hpp$"],
            RIPGREP: [*_RIPGREP, "-g", "**/d*/**/*.hpp", "-g", "!.*"],
            **_walks(programs, ["--ancestor", "d", "--suffix", ".hpp"]),
            **_shells("**/d*/**/*.hpp"),
        }),
        search("*/*/*.txt", tree, {
            FIND: [*_FIND, "-maxdepth", "3", *_VISIBLE, "-path", "./*/*/*.txt", "-print"],
            FD_ONE_THREAD: [*_FD, "-j1", "--min-depth", "3", "--max-depth", "3", "-e", "txt", "."],
            FD: [*_FD, "--min-depth", "3", "--max-depth", "3", "-e", "txt", "."],
            RIPGREP: [*_RIPGREP, "--max-depth", "3", "-g", "/*/*/*.txt", "-g", "!.*"],
            **_walks(programs, ["--suffix", ".txt"], depth=3),
            **_shells("*/*/*.txt"),
        }),
        search(literal, tree, {
            FIND: ["find", literal],
            ZSH: ["zsh", "-fc", f"[[ -e {shlex.quote(literal)} ]] && print -r -- {shlex.quote(literal)}"],
            BASH: ["bash", "--norc", "-c", f"[[ -e {shlex.quote(literal)} ]] && printf '%s\\n' {shlex.quote(literal)}"],
        }),
        search("*", _a_small_folder(tree), {
            FIND: [*_FIND, "-maxdepth", "1", *_VISIBLE, "-print"],
            FD_ONE_THREAD: [*_FD, "-j1", "--max-depth", "1", "."],
            FD: [*_FD, "--max-depth", "1", "."],
            **_walks(programs, [], depth=1),
            **_shells("*"),
        }),
    ]


def _visible(folder: Path) -> list[Path]:
    return sorted(entry for entry in folder.iterdir() if not entry.name.startswith("."))


def _a_deep_file(tree: Path) -> str:
    """The relative path of a file five levels down, always the same one."""
    found = min(path for path in tree.glob("*/*/*/*/*") if path.is_file() and "/." not in str(path.relative_to(tree)))
    return str(found.relative_to(tree))


def _a_small_folder(tree: Path) -> Path:
    """A folder with 10 to 20 visible entries, always the same one."""
    return next(folder for folder in sorted(tree.glob("*/*")) if folder.is_dir() and 10 <= len(_visible(folder)) <= 20)
