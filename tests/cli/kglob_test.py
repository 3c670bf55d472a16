"""kglob_test.py KGLOB [unittest arguments]: tests kglob from outside: output byte for byte, exit status, errors, terminals, signals."""

import itertools
import os
import re
import resource
import shutil
import signal
import socket
import subprocess
import time
import unittest
import urllib.parse

from kglob_case import KGLOB, KglobTest

NOBODY = 65534

# Names that shells, IRIs, terminals or encodings could get wrong.
AWKWARD_NAMES = [
    b" ", b"a space", b"100%", b"a%20b", b"#1", b"?", b"new\nline", b"-leading", b"~", b"$HOME", b"http:", b"http:x",
    b"back\\slash", b"[a,b]", b"{}", b"'\"`", "日本".encode(), "\U0001F600".encode(), "\u0085\u202e".encode(), b"\xff\xfe",
    b"cut\xe6\x97", b"\xed\xa0\x80", b"\x01\x1b[31m\x7f", b"x" * 255,
]


class MatchesAndStatus(KglobTest):
    def test_table(self):
        self.add(b"a.txt", b"b.csv", b".hidden", b"sub/c.csv", b"sub/.d/e.csv", b"sub/deep/f.csv", b"-x")
        iri = b"file://" + self.folder + b"/sub"
        for arguments, output in [
            (["*"], b"-x\na.txt\nb.csv\nsub\n"),
            (["--include-dot-files", "**/*.csv"], b"b.csv\nsub/c.csv\nsub/.d/e.csv\nsub/deep/f.csv\n"),
            (["--null", "*.*"], b"a.txt\0b.csv\0"),
            (["--root-folder=sub", "*.csv"], b"c.csv\n"),
            (["-r", iri, "*"], b"c.csv\ndeep\n"),
            ([iri + b"/*"], iri + b"/c.csv\n" + iri + b"/deep\n"),
            (["*", "-d0r", "sub"], b".d\0c.csv\0deep\0"),
            (["--", "-x", "a.txt"], b"-x\na.txt\n"),
            (["*.csv", "nothing", "a*"], b"b.csv\na.txt\n"),
            (["a*", "a*"], b"a.txt\na.txt\n"),
        ]:
            self.expect(arguments, 0, output)
        for arguments in [["nothing"], ["*.zip"], ["-r", "sub", "*.txt"]]:
            self.expect(arguments, 1, b"")
        self.expect_error(["-r", "a.txt", "**"], rb'root folder "a\.txt" is not a folder')
        # A region that can't be ends the search before anything is asked of a network.
        _, _, errors = self.run_kglob("-r", "s3://b/x", "/b/a.*", env={**os.environ, "AWS_REGION": "!"})
        self.assertRegex(errors, rb'\Akglob: "/b/a\.\*" is searched in the store[^\n]*"file:///b/a\.\*"\n[^\n]*region')

    def test_awkward_names(self):
        for name in AWKWARD_NAMES:
            self.add(name + b"/f")
        self.expect(["-0", "*"], 0, b"".join(name + b"\0" for name in sorted(AWKWARD_NAMES)))
        for name in AWKWARD_NAMES:
            self.expect(["-0", "--", name], 0, name + b"\0")
            self.expect(["-0", "--root-folder", name, "*"], 0, b"f\0")
            iri = b"file://" + urllib.parse.quote(self.at(name), safe="/").encode()
            self.assertEqual(urllib.parse.unquote_to_bytes(self.run_kglob("-0", iri)[1]), b"file://" + self.at(name) + b"\0", iri)

    def test_stats(self):
        self.add(b"one/a", b"one/b", b"two/c", b"d")
        status, output, errors = self.run_kglob("--stats", "*/*")
        self.assertEqual((status, output), (0, b"one/a\none/b\ntwo/c\n"))
        self.assertRegex(errors, rb"\Akglob: read 3 folders, 6 entries; 0 requests, 0 bytes; \d+\.\d{3} s\n\Z")

    def test_help_fits_80_columns(self):
        lines = self.run_kglob("--help")[1].decode().splitlines()
        self.assertEqual(lines, self.run_kglob("-h")[1].decode().splitlines())
        self.assertTrue(1 < len(lines) <= 50)
        self.assertLessEqual(max(map(len, lines)), 80)
        self.assertRegex(self.run_kglob("--version")[1], rb"\Akglob \d+\.\d+\.\d+\n\Z")


class Errors(KglobTest):
    def test_usage(self):
        for arguments, pattern in [
            ([], rb"no PATTERN"), (["-0"], rb"no PATTERN"), (["--"], rb"no PATTERN"),
            (["-y", "*"], rb"-y"), (["-05", "*"], rb"-5"), (["---", "*"], rb"---"), (["--nul", "*"], rb"--nul"),
            (["--null=false", "*"], rb"null"), (["*", "-r"], rb"FOLDER"),
            (["--root-folder=", "*"], rb"--root-folder="), (["--bad\n\x1b[31m", "*"], rb"--bad\\n\\x1B\[31m"),
        ]:
            self.expect_error(arguments, pattern + rb".*; see kglob --help")

    def test_errors_of_the_search(self):
        self.add(b"a", b"b")
        self.expect_error(["file:///100%"],
                          rb'file:///100%.*\("%" must be followed by two hex digits.*\) \[KORVAN:virtualfilesystem:invalidIRI\]')
        # One pattern's error leaves the others' matches alone.
        self.expect_error(["a", "nope://host/*", "b"], rb"nope.*\[KORVAN:virtualfilesystem:unsupportedProvider\]", b"a\nb\n")

    def test_output_that_cannot_be_written(self):
        self.add(b"a")
        for redirection, reason in [(">/dev/full", b"No space left on device"), (">&-", b"Bad file descriptor")]:
            for argument in ["*", "--help", "--version"]:
                self.expect([b"-c", f'exec "$0" "$1" {redirection}', KGLOB, argument], 2, b"",
                            b"kglob: cannot write standard output: " + reason + b"\n", executable="/bin/sh")
        reader, writer = os.pipe()
        os.close(reader)
        for restored in (True, False):  # SIGPIPE at its default, and ignored as under some supervisors
            self.expect(["*"], -signal.SIGPIPE, None, stdout=writer, restore_signals=restored)
        os.close(writer)

    def test_out_of_memory(self):
        def run_within(size):
            return self.run_kglob("*", preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (size, size)))
        if run_within(1 << 30)[0] == 1:  # no match; under a sanitizer no limit is large enough
            results = map(run_within, itertools.count(4 << 20, 16 << 10))
            loaded = itertools.dropwhile(lambda result: result[0] == 127, results)  # the loader's exit status
            failures = list(itertools.takewhile(lambda result: result[0] != 1, loaded))
            self.assertIn((2, b"", b"kglob: out of memory\n"), failures)
            for status, output, errors in failures:
                self.assertRegex(errors, rb"\Akglob: [^\n]*\n\Z")
                self.assertEqual((status, output), (2, b""))


class UnreadableFolders(KglobTest):
    def setUp(self):
        super().setUp()
        self.user = {"user": NOBODY, "group": NOBODY, "extra_groups": []} if os.geteuid() == 0 else {}
        try:
            self.run_kglob("--version", **self.user)
        except PermissionError:
            self.skipTest(f"the user {NOBODY} can't run {KGLOB}")

    def close_folder(self, path):
        self.add(path + b"/inside/")
        os.chmod(self.at(path), 0)
        self.addCleanup(os.chmod, self.at(path), 0o700)

    def test_reported_and_the_rest_searched(self):
        self.add(b"open/a", b"z")
        self.close_folder(b"open/shut")
        here, iri = self.folder, b"file://" + self.folder
        for arguments, output, unreadable in [
            (["**"], b"open\nopen/a\nopen/shut\nz\n", b"open/shut"),
            (["-r", "open", "**"], b"a\nshut\n", b"open/shut"),
            ([here + b"/open/*/*"], b"", here + b"/open/shut"),
            ([iri + b"/open/*/*"], b"", iri + b"/open/shut"),
            (["open/*/*", "z", "**/no*thing"], b"z\n", b"open/shut"),
            (["**/inside", "*/a", "*/*/inside"], b"open/a\n", b"open/shut"),
        ]:
            self.expect(arguments, 2, output, b"kglob: cannot read " + unreadable + b": Permission denied\n", **self.user)
        for target in (b"open/shut/inside", iri + b"/open/shut/inside"):
            self.expect_error([target], re.escape(target) + rb".*\[KORVAN:virtualfilesystem:permissionDenied\]", **self.user)

    def test_ten_and_a_count(self):
        for number in range(13):
            self.close_folder(b"%02d\n" % number)
        errors = b"".join(b"kglob: cannot read %02d\\n: Permission denied\n" % number for number in range(10))
        self.expect(["-0", "*/*"], 2, b"", errors + b"kglob: further unreadable folders: 3\n", **self.user)


class Terminal(KglobTest):
    def test_names_are_escaped(self):
        table = [
            (b"plain name", b"plain name"),
            ("日本 \U0001F600".encode(), "日本 \U0001F600".encode()),
            (b"a\nb'c\\d", b"$'a\\nb\\'c\\\\d'"),
            (b"\x01b\x1b[31m\t\r\x7f7", b"$'\\001b\\033[31m\\t\\r\\1777'"),
            (b"\xff\xc3\xa9\xe6\x97", b"$'\\377\xc3\xa9\\346\\227'"),
            ("\u0085\u202e\u200f".encode(), b"$'\\302\\205\\342\\200\\256\\342\\200\\217'"),
            (b"$'x", b"$'$\\'x'"),
        ]
        self.add(*(name for name, _ in table))
        for name, shown in table:
            with self.subTest(name=name):
                self.assertEqual(self.on_terminal("--", name), (0, shown + b"\n", b""))
                self.assertEqual(self.on_terminal("-0", "--", name), (0, name + b"\0", b""))
                quoted = shown if shown.startswith(b"$'") else b"'" + shown + b"'"
                for shell in filter(shutil.which, ["bash", "zsh", "ksh93", "mksh"]):
                    self.assertEqual(subprocess.check_output([shell, "-c", b"printf %s " + quoted]), name, shell)

    def make_maze(self):
        """Folders that all link to each other: a handful of entries, and more paths through them than any search could visit."""
        for name in b"abcdefghijkl":
            self.add(b"%c/" % name)
            for other in b"abcdefghijkl":
                os.symlink(b"../%c" % other, self.at(b"%c/to-%c" % (name, other)))

    def test_progress_of_a_long_search(self):
        self.make_maze()
        call = {"stream": "stderr", "stop_after": 1.6}
        status, shown, output = self.on_terminal("-L", "**/nothing", **call)
        self.assertEqual((status, output), (-signal.SIGINT, b""))
        # Nothing before, and nothing left at the end.
        self.assertRegex(shown, rb"\A(\r\x1b\[Kkglob: read \d+ folders, \d+ entries){2,}\r\x1b\[K\Z")
        self.assertEqual(self.on_terminal("-L", "**/nothing", TERM="dumb", **call), (-signal.SIGINT, b"", b""))
        self.assertEqual(self.on_terminal("a", **call), (0, b"", b"a\n"))


class Interrupts(KglobTest):
    def test_deep_search(self):
        Terminal.make_maze(self)
        seconds = []
        for _ in range(3):
            with subprocess.Popen([KGLOB, "-L", "**/nothing"], cwd=self.folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT) as process:
                time.sleep(0.2)
                start = time.monotonic()
                process.send_signal(signal.SIGINT)
                self.assertEqual((process.communicate(timeout=60)[0], process.returncode), (b"", -signal.SIGINT))
                seconds.append(time.monotonic() - start)
        self.assertLessEqual(min(seconds), 0.2)

    def test_matches_are_written_as_found_and_a_closed_pipe_ends_the_search(self):
        Terminal.make_maze(self)
        for patterns, line in (["-L", "**"], b"a\n"), (["-L", "l", "**/nothing"], b"l\n"):  # the second search writes nothing more
            for end, status in (signal.SIGINT, -signal.SIGINT), (None, -signal.SIGPIPE):
                with self.subTest(patterns=patterns, end=end), subprocess.Popen(
                        [KGLOB, *patterns], cwd=self.folder, stdout=subprocess.PIPE) as process:
                    self.assertEqual(process.stdout.readline(), line)
                    start = time.monotonic()
                    process.send_signal(end) if end else process.stdout.close()
                    self.assertEqual(process.wait(60), status)
                    self.assertLess(time.monotonic() - start, 0.5)

    def test_output_ends_with_a_whole_line(self):
        def small_socket():
            reader, writer = socket.socketpair()
            writer.setsockopt(socket.SOL_SOCKET, socket.SO_SNDBUF, 4000)
            return reader.detach(), writer.detach()
        lines = [b"%0250d\n" % number for number in range(1000)]
        self.add(*(line[:-1] for line in lines))
        self.expect(["*"], 0, b"".join(lines))
        for run, make in zip(range(40), itertools.cycle([os.pipe, small_socket])):  # such a socket takes parts of a write
            reader, writer = make()
            with subprocess.Popen([KGLOB, "*"], cwd=self.folder, stdout=writer) as process, open(reader, "rb", 0) as output:
                os.close(writer)
                read = output.read(1500 * run)
                time.sleep(0.05)
                process.send_signal(signal.SIGINT)
                if make is os.pipe:
                    process.wait(60)  # though nobody reads
                read += output.read()
            self.assertEqual((process.returncode, read), (-signal.SIGINT, b"".join(lines[:len(read) // 251])), run)


if __name__ == "__main__":
    unittest.main(verbosity=2)
