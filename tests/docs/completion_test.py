"""completion_test.py KGLOB DOCUMENTS: types into the real shells what each option's completion must finish. Shells that aren't installed are skipped."""

import os
import pathlib
import pty
import re
import select
import shutil
import subprocess
import sys
import tempfile
import unittest

KGLOB, DOCUMENTS = (pathlib.Path(sys.argv.pop(1)).resolve() for _ in range(2))
SETUPS = {"bash": ["bash --norc --noprofile -i", f"source {DOCUMENTS}/kglob.bash"],
          "zsh": ["zsh -f -i", f"PS1='> '; fpath=({DOCUMENTS} $fpath); autoload -Uz compinit; compinit -u -D"]}
ENVIRONMENT = {"PATH": os.environ["PATH"], "TERM": "dumb", "HOME": "/nowhere", "PS1": "> ", "LC_ALL": "C.UTF-8"}


class Shell:
    """A shell on a terminal."""

    def __init__(self, name, folder):
        command, setup = SETUPS[name]
        process, self._terminal = pty.fork()
        if process == 0:
            os.chdir(folder)
            os.execvpe(command.split()[0], command.split(), ENVIRONMENT)
        self._send(setup + "; kglob() { printf '[%s]' \"$@\"; echo END; }; echo rea''dy", "ready\r\n")

    def _send(self, line, end):
        """What the shell shows up to `end`, or within a few seconds."""
        os.write(self._terminal, line.encode() + b"\n")
        shown = ""
        while end not in shown and select.select([self._terminal], [], [], 5)[0]:
            shown += os.read(self._terminal, 65536).decode()
        return shown

    def complete(self, line):
        """The last argument that kglob gets from the line after a tab."""
        shown = self._send(f"kglob {line}\t", "END\r\n")
        return re.findall(r"\[([^][]*)\]END", shown)


def complete_in_fish(line, folder):
    script = f"source {DOCUMENTS}/kglob.fish; complete -C '{line}'"
    done = subprocess.run(["fish", "--no-config", "-c", script], cwd=folder, capture_output=True, text=True, timeout=60, check=True)
    return [reply.split("\t")[0] for reply in done.stdout.splitlines()]


class Completion(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="kglob-completion-")
        self.addCleanup(shutil.rmtree, self.folder)
        os.makedirs(self.folder + "/folder/below")
        for name in ("fold.txt", "folder/file"):
            pathlib.Path(self.folder, name).touch()
        help_text = subprocess.check_output([KGLOB, "--help"], text=True)
        options = re.findall(r"^  .{4}--([a-z-]+)", help_text, re.M)
        self.assertGreater(len(options), 25)
        # Line, what completes its last word; none where nothing must be offered.
        self.cases = [(f"--{option}"[:-1], f"--{option}") for option in options]
        self.cases += [("-r fo", "folder/"), ("-r folder/", "folder/below/"), ("-r folder/f", None), ("--root-folder=fo", "--root-folder=folder/"),
                       ("--patterns-from fold.", "fold.txt"), ("--color=al", "--color=always"), ("--color n", "never"), ("-E fo", None)]

    def test_shells_with_line_editors(self):
        for name in filter(shutil.which, SETUPS):
            shell = Shell(name, self.folder)
            for line, word in self.cases:
                with self.subTest(shell=name, line=line):
                    completed = [argument.rstrip("/") for argument in shell.complete(line)]  # zsh leaves the slash off
                    self.assertEqual(completed, [(word or line.split()[-1]).rstrip("/")])

    @unittest.skipUnless(shutil.which("fish"), "fish isn't installed")
    def test_fish(self):
        for line, word in self.cases:
            replies = complete_in_fish("kglob " + line, self.folder)
            self.assertEqual(replies, [word] if word else [], line)


if __name__ == "__main__":
    unittest.main()
