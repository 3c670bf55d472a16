"""docs_test.py KGLOB DOCUMENTS [unittest arguments]: checks the documentation against the program and the files that it mentions.

DOCUMENTS is the folder of the manual page and the completions, which are made when the program is built."""

import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

KGLOB = DOCUMENTS = ""
ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGES = [*ROOT.glob("*.md"), *ROOT.glob("docs/*.md")]


def read(path):
    return (ROOT / path).read_text(encoding="utf-8")


def run(*arguments, **options):
    return subprocess.run(arguments, capture_output=True, text=True, timeout=60, check=False, **options)


class Program(unittest.TestCase):
    def make_tree(self, lines):
        """Makes a folder with the files that the lines name; a line may be "link -> target"."""
        folder = tempfile.mkdtemp(prefix="kglob-docs-")
        self.addCleanup(shutil.rmtree, folder)
        for line in lines:
            path, _, target = line.partition(" -> ")
            file = pathlib.Path(folder, path)
            file.parent.mkdir(parents=True, exist_ok=True)
            file.symlink_to(target) if target else file.touch()
        return folder

    def test_pattern_tables_show_the_matches_of_kglob(self):
        text = read("docs/patterns.md")
        folder = self.make_tree(re.search(r"^```\n(.*?)^```$", text, re.M | re.S).group(1).splitlines())
        rows = re.findall(r"^\| `(-d )?([^`]+)` \|([^|]*)\|", text, re.M)
        self.assertGreater(len(rows), 25)
        for option, pattern, cell in rows:
            with self.subTest(pattern=pattern):
                done = run(KGLOB, "-L0" + option.strip(" -"), "--", pattern, cwd=folder)
                matches = re.findall(r"`([^`]+)`", cell)
                self.assertEqual((done.stdout.split("\0")[:-1], done.returncode), (matches, 0 if matches else 1))

    def test_generated_documents_parse(self):
        checks = [("kglob.bash", "bash", "-n"), ("_kglob", "zsh", "-n"), ("kglob.fish", "fish", "-n"),
                  ("kglob.1", "man", "--warnings", "-Tutf8", "-l")]
        for document, program, *options in checks:
            self.assertTrue((DOCUMENTS / document).is_file(), document)
            if shutil.which(program):
                done = run(program, *options, DOCUMENTS / document)
                self.assertEqual((done.returncode, done.stderr), (0, ""), document)


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
    KGLOB, DOCUMENTS = (pathlib.Path(sys.argv.pop(1)).resolve() for _ in range(2))
    unittest.main()
