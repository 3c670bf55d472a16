"""docs_test.py KGLOB [unittest arguments]: checks the documentation against the program and the files that it mentions."""

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


def run(*arguments, **options):
    return subprocess.run(arguments, capture_output=True, text=True, timeout=60, check=False, **options)


class Program(unittest.TestCase):
    def make_tree(self, lines):
        """A folder with the files that the lines name; a line may be "link -> target"."""
        folder = tempfile.mkdtemp(prefix="kglob-docs-")
        self.addCleanup(shutil.rmtree, folder)
        for line in lines:
            path, _, target = line.partition(" -> ")
            place = pathlib.Path(folder, path)
            place.parent.mkdir(parents=True, exist_ok=True)
            place.symlink_to(target) if target else place.touch()
        return folder

    def test_pattern_tables_show_the_matches_of_kglob(self):
        text = read("docs/patterns.md")
        folder = self.make_tree(re.search(r"^```\n(.*?)^```$", text, re.M | re.S).group(1).splitlines())
        rows = re.findall(r"^\| `(-d )?([^`]+)` \|([^|]*)\|", text, re.M)
        self.assertGreater(len(rows), 25)
        for option, pattern, cell in rows:
            with self.subTest(pattern=pattern):
                done = run(KGLOB, "-0" + option.strip(" -"), "--", pattern, cwd=folder)
                self.assertEqual((done.stdout.split("\0")[:-1], done.stderr), (re.findall(r"`([^`]+)`", cell), ""))

    def test_manual_and_completions_know_every_option(self):
        lines = re.findall(r"^ +(-\S.*?)(?:  |$)", run(KGLOB, "--help").stdout, re.M)
        options = {option for line in lines for option in re.findall(r"(?<!\S)-[-\w]+", line)}
        self.assertGreaterEqual(options, {"-r", "--root-folder"})
        pages = {
            "docs/man/kglob.1": lambda text: re.findall(r"--?[\w-]+", text.replace("\\-", "-")),
            "cli/completions/kglob.bash": lambda text: re.search(r"compgen -W '(.*?)'", text, re.S).group(1).split(),
            "cli/completions/_kglob": lambda text: re.findall(r"--?\w[\w-]*", text),
            "cli/completions/kglob.fish": lambda text: ["-" + "-" * (kind == "l") + name
                                                        for kind, name in re.findall(r" -([sl]) ([\w-]+)", text)],
        }
        for path, known in pages.items():
            self.assertEqual(options - set(known(read(path))), set(), path)

    def test_bash_completes_options_and_folders(self):
        folder = self.make_tree(["folder/file", "fold.txt"])
        script = 'compopt() { :; }; source "$0"; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _kglob; echo "${COMPREPLY[*]}"'
        for words, reply in ((["--i"], "--include-dot-files"), (["-r", "fo"], "folder"), (["--library", "fold."], "fold.txt"),
                             (["--", "-"], ""), (["fo"], "")):
            done = run("bash", "-c", script, ROOT / "cli/completions/kglob.bash", "kglob", *words, cwd=folder)
            self.assertEqual((done.stdout, done.stderr), (reply + "\n", ""), words)


class Pages(unittest.TestCase):
    def test_examples_equal_the_files_that_they_show(self):
        block = re.compile(r"^<!-- (\S+) -->\n```\w+\n(.*?)^```$", re.M | re.S)
        shown = [example for page in PAGES for example in block.findall(read(page))]
        self.assertGreaterEqual({path for path, _ in shown}, {"examples/search.cpp", "examples/host.cpp"})
        for path, code in shown:
            self.assertEqual(code, read(path), path)

    def test_links_are_not_broken(self):
        links = [(page, link) for page in PAGES for link in re.findall(r"\]\((?!\w+:)([^)#]+)", read(page))]
        self.assertGreater(len(links), 5)
        for page, link in links:
            self.assertTrue((page.parent / link).exists(), (page.name, link))


if __name__ == "__main__":
    KGLOB = pathlib.Path(sys.argv.pop(1)).resolve()
    unittest.main()
