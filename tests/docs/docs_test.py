"""Holds the documentation to the program: pattern tables, options, examples, links between pages.

usage: docs_test.py KGLOB [unittest arguments]
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

KGLOB = ""
ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGES = [*ROOT.glob("*.md"), *ROOT.glob("docs/*.md")]


def read(path):
    return (ROOT / path).read_text(encoding="utf-8")


def make_tree(folder, lines):
    """A line is a file's path, or "link -> target"."""
    for line in lines:
        path, _, target = line.partition(" -> ")
        place = pathlib.Path(folder, path)
        place.parent.mkdir(parents=True, exist_ok=True)
        if target:
            place.symlink_to(target)
        else:
            place.touch()


def tree_and_rows(text):
    """The lines of the page's first block, and the cells of its tables without headings: pattern, matches."""
    tree = re.search(r"^```\n(.*?)^```$", text, re.M | re.S).group(1).splitlines()
    rows = re.findall(r"^\| `([^`]+)` \|([^|]*)\|", text, re.M)
    return tree, [(pattern, re.findall(r"`([^`]+)`", cell)) for pattern, cell in rows]


def examples(text):
    """Blocks of code that say which file they show: a comment with its path, then the block."""
    return re.findall(r"^<!-- (\S+) -->\n```\w+\n(.*?)^```$", text, re.M | re.S)


class PatternTables(unittest.TestCase):
    def test_each_row_is_what_kglob_gives(self):
        tree, rows = tree_and_rows(read("docs/patterns.md"))
        self.assertGreater(len(rows), 25)
        self.assertTrue(any(not matches for _, matches in rows))
        folder = tempfile.mkdtemp(prefix="kglob-docs-")
        self.addCleanup(shutil.rmtree, folder)
        make_tree(folder, tree)
        for cell, matches in rows:
            options, pattern = (["-d"], cell[3:]) if cell.startswith("-d ") else ([], cell)
            with self.subTest(pattern=cell):
                done = subprocess.run([KGLOB, "-0", *options, "--", pattern], cwd=folder, capture_output=True, text=True,
                                      timeout=60, check=False)
                self.assertEqual((done.stdout.split("\0")[:-1], done.stderr), (matches, ""))
                self.assertEqual(done.returncode, 0 if matches else 1)


class Options(unittest.TestCase):
    def test_manual_and_completions_know_every_option(self):
        done = subprocess.run([KGLOB, "--help"], capture_output=True, text=True, timeout=60, check=True)
        lines = re.findall(r"^ +(-\S.*?)(?:  |$)", done.stdout, re.M)
        options = {option for line in lines for option in re.findall(r"(?<!\S)-[-\w]+", line)}
        self.assertGreaterEqual(options, {"-r", "--root-folder", "--null", "--version"})
        pages = {
            "docs/man/kglob.1": lambda text: re.findall(r"--?[\w-]+", text.replace("\\-", "-")),
            "cli/completions/kglob.bash": lambda text: re.search(r"compgen -W '(.*?)'", text, re.S).group(1).split(),
            "cli/completions/_kglob": lambda text: re.findall(r"--?\w[\w-]*", text),
            "cli/completions/kglob.fish": lambda text: ["-" + "-" * (kind == "l") + name
                                                        for kind, name in re.findall(r" -([sl]) ([\w-]+)", text)],
        }
        for path, known in pages.items():
            with self.subTest(path=path):
                self.assertEqual(options - set(known(read(path))), set())

    def test_completions_are_lawful(self):
        for shell, path in (("bash", "kglob.bash"), ("zsh", "_kglob"), ("fish", "kglob.fish")):
            if shutil.which(shell):
                with self.subTest(shell=shell):
                    done = subprocess.run([shell, "-n", ROOT / "cli/completions" / path], capture_output=True, text=True,
                                          timeout=60, check=False)
                    self.assertEqual((done.returncode, done.stderr), (0, ""))

    def test_bash_completes_options_and_folders(self):
        folder = tempfile.mkdtemp(prefix="kglob-docs-")
        self.addCleanup(shutil.rmtree, folder)
        make_tree(folder, ["folder/file", "fold.txt"])
        script = 'compopt() { :; }; source "$0"; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _kglob; echo "${COMPREPLY[*]}"'
        for words, reply in ((["--i"], "--include-dot-files"), (["-r", "fo"], "folder"), (["--library", "fold."], "fold.txt"),
                             (["--", "-"], ""), (["fo"], "")):
            with self.subTest(words=words):
                done = subprocess.run(["bash", "-c", script, ROOT / "cli/completions/kglob.bash", "kglob", *words],
                                      cwd=folder, capture_output=True, text=True, timeout=60, check=True)
                self.assertEqual((done.stdout, done.stderr), (reply + "\n", ""))


class Pages(unittest.TestCase):
    def test_examples_are_the_files_that_they_show(self):
        shown = [(page.name, path, code) for page in PAGES for path, code in examples(page.read_text(encoding="utf-8"))]
        self.assertGreaterEqual({path for _, path, _ in shown}, {"tests/consumers/search.cpp", "tests/consumers/host.cpp"})
        for page, path, code in shown:
            with self.subTest(page=page, file=path):
                self.assertEqual(code, read(path))

    def test_links_lead_somewhere(self):
        links = [(page, link) for page in PAGES for link in re.findall(r"\]\((?!\w+:)([^)#]+)", page.read_text(encoding="utf-8"))]
        self.assertGreater(len(links), 5)
        for page, link in links:
            with self.subTest(page=page.name, link=link):
                self.assertTrue((page.parent / link).exists())


if __name__ == "__main__":
    KGLOB = os.path.abspath(sys.argv.pop(1))
    unittest.main()
