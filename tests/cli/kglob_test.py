"""Tests of kglob as its users meet it: output byte for byte, exit status, errors, terminals, signals.

usage: kglob_test.py KGLOB [unittest arguments]
"""

import fcntl
import os
import pty
import re
import resource
import select
import shutil
import signal
import stat
import subprocess
import sys
import tempfile
import termios
import time
import unittest
import urllib.parse

KGLOB = ""
NOBODY = 65534

# Names that shells, IRIs, terminals or encodings could trip over.
AWKWARD_NAMES = [
    b" ", b"a space", b"100%", b"a%20b", b"#1", b"?", b"new\nline", b"-leading", b"~", b"$HOME", b"http:", b"http:x",
    b"back\\slash", b"[a,b]", b"{}", b"'\"`", "日本".encode(), "\U0001F600".encode(), "\u0085\u202e".encode(), b"\xff\xfe",
    b"cut\xe6\x97", b"\xed\xa0\x80", b"\x01\x1b[31m\x7f", b"x" * 255,
]


class KglobTest(unittest.TestCase):
    """A temporary folder, readable by everyone, and ways to run kglob in it."""

    def setUp(self):
        self.folder = os.fsencode(os.path.realpath(tempfile.mkdtemp(prefix="kglob-")))
        os.chmod(self.folder, 0o755)
        self.addCleanup(shutil.rmtree, self.folder)

    def at(self, path):
        return os.path.join(self.folder, path)

    def add(self, *paths):
        """Makes empty files, and folders for paths that end in "/"."""
        for path in paths:
            os.makedirs(os.path.dirname(self.at(path)), exist_ok=True)
            if not path.endswith(b"/"):
                os.close(os.open(self.at(path), os.O_CREAT | os.O_WRONLY, 0o644))

    def run_kglob(self, *arguments, **options):
        options = {"cwd": self.folder, "stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, "timeout": 60, **options}
        done = subprocess.run([KGLOB, *arguments], stderr=subprocess.PIPE, **options)
        return done.returncode, done.stdout, done.stderr

    def expect(self, arguments, status, output, errors=b"", **options):
        with self.subTest(arguments=arguments):
            self.assertEqual(self.run_kglob(*arguments, **options), (status, output, errors))

    def expect_error(self, arguments, pattern, output=b"", **options):
        """One line on standard error that matches, and exit status 2."""
        with self.subTest(arguments=arguments):
            status, written, errors = self.run_kglob(*arguments, **options)
            self.assertRegex(errors, rb"\Akglob: [^\n]*" + pattern + rb"[^\n]*\n\Z")
            self.assertEqual((status, written), (2, output))


class MatchesAndStatus(KglobTest):

    def test_table(self):
        self.add(b"a.txt", b"b.csv", b".hidden", b"sub/c.csv", b"sub/.d/e.csv", b"sub/deep/f.csv", b"-x")
        here = self.folder
        for arguments, output in [
            (["*"], b"-x\na.txt\nb.csv\nsub\n"),
            (["-d", "*.csv"], b"b.csv\n"),
            (["-d", "*h*"], b".hidden\n"),
            (["--include-dot-files", "**/*.csv"], b"b.csv\nsub/c.csv\nsub/.d/e.csv\nsub/deep/f.csv\n"),
            (["**/*.csv"], b"b.csv\nsub/c.csv\nsub/deep/f.csv\n"),
            (["**/"], b"sub/\nsub/deep/\n"),
            (["-0", "*.*"], b"a.txt\0b.csv\0"),
            (["--null", "a.txt"], b"a.txt\0"),
            (["-r", "sub", "*"], b"c.csv\ndeep\n"),
            (["--root-folder=sub", "*"], b"c.csv\ndeep\n"),
            (["-rsub/deep", "*"], b"f.csv\n"),
            (["-r", "nowhere", "-r", "sub", "*.csv"], b"c.csv\n"),
            (["-r", "", "*.csv"], b"b.csv\n"),
            (["-r", b"file://" + here + b"/sub", "*"], b"c.csv\ndeep\n"),
            ([b"file://" + here + b"/sub/*"], b"file://" + here + b"/sub/c.csv\nfile://" + here + b"/sub/deep\n"),
            ([here + b"/sub/*"], here + b"/sub/c.csv\n" + here + b"/sub/deep\n"),
            (["*", "-d0r", "sub"], b".d\0c.csv\0deep\0"),
            (["--", "-*"], b"-x\n"),
            (["--", "-x", "a.txt"], b"-x\na.txt\n"),
            (["*.csv", "nothing", "a*"], b"b.csv\na.txt\n"),
            (["a*", "a*"], b"a.txt\na.txt\n"),
        ]:
            self.expect(arguments, 0, output)
        for arguments in [["nothing"], ["*.zip", ""], ["-r", "sub", "*.txt"], ["[a,b].txt"]]:
            self.expect(arguments, 1, b"")
        for folder in ["nowhere", "a.txt"]:
            self.expect_error(["-r", folder, "**"], rb'root folder "%s" is no folder' % folder.encode())

    def test_awkward_names(self):
        for name in AWKWARD_NAMES:
            self.add(name + b"/f")
        self.expect(["-0", "*"], 0, b"".join(name + b"\0" for name in sorted(AWKWARD_NAMES)))
        for name in AWKWARD_NAMES:
            self.expect(["-0", "--", name], 0, name + b"\0")
            self.expect(["-0", "--root-folder", name, "*"], 0, b"f\0")
            iri = b"file://" + urllib.parse.quote(self.at(name), safe="/").encode()
            with self.subTest(iri=iri):
                status, output, errors = self.run_kglob("-0", iri)
                self.assertEqual((status, errors), (0, b""))
                self.assertEqual(urllib.parse.unquote_to_bytes(output), b"file://" + self.at(name) + b"\0")

    def test_many_matches(self):
        names = sorted(b"%0200d" % number for number in range(3000))
        self.add(*names)
        self.expect(["*"], 0, b"".join(name + b"\n" for name in names))

    def test_stats(self):
        self.add(b"one/a", b"one/b", b"two/c", b"d")
        status, output, errors = self.run_kglob("--stats", "*/*")
        self.assertEqual((status, output), (0, b"one/a\none/b\ntwo/c\n"))
        self.assertRegex(errors, rb"\Akglob: read 3 folders, 6 entries; 0 requests, 0 bytes; \d+\.\d{3} s\n\Z")

    def test_help_fits_a_screen(self):
        status, output, errors = self.run_kglob("--help")
        self.assertEqual((status, errors), (0, b""))
        lines = output.decode().splitlines()
        self.assertLessEqual(len(lines), 24)
        self.assertLessEqual(max(map(len, lines)), 80)
        options = re.findall(r"^ +(?:(-\w), )?(--[\w-]+)( [A-Z]+)?", output.decode(), re.MULTILINE)
        self.assertGreaterEqual(len(options), 6)
        for short, long, value in options:
            for name in filter(None, (short, long)):
                with self.subTest(option=name):
                    # Known options are read; --version and --help end the call before the library is looked for.
                    self.assertEqual(self.run_kglob(name, *(["x"] if value else []), "--version")[0], 0)

    def test_version(self):
        status, output, _ = self.run_kglob("--version")
        self.assertEqual(status, 0)
        self.assertRegex(output, rb"\Akglob \d+\.\d+\.\d+\n\Z")


class Errors(KglobTest):

    def test_usage(self):
        for arguments, pattern in [
            ([], rb"no PATTERN"), (["-0"], rb"no PATTERN"), (["--"], rb"no PATTERN"),
            (["-x", "*"], rb"-x"), (["-05", "*"], rb"-5"), (["---", "*"], rb"---"), (["--nul", "*"], rb"--nul"),
            (["--null=false", "*"], rb"null"), (["*", "-r"], rb"FOLDER"), (["--library"], rb"FILE"),
            (["--root-folder=", "*"], rb"--root-folder="), (["--bad\n\x1b[31m", "*"], rb"--bad\\n\\x1B\[31m"),
        ]:
            self.expect_error(arguments, pattern + rb".*; see kglob --help")

    def test_errors_of_the_search(self):
        self.add(b"a", b"b")
        invalid = rb"\[KORVAN:virtualfilesystem:invalidIRI\]"
        unsupported = rb"nope.*\[KORVAN:virtualfilesystem:unsupportedProvider\]"
        for arguments, pattern, output in [
            (["file:///100%"], rb'file:///100%.*\("%" must be followed by two hex digits.*\) ' + invalid, b""),
            (["-r", "file:///x?y", "*"], invalid, b""),
            (["nope://host/*"], unsupported, b""),
            # One pattern's error leaves the others' matches alone.
            (["a", "nope://host/*", "b"], unsupported, b"a\nb\n"),
        ]:
            self.expect_error(arguments, pattern, output)

    def test_library(self):
        foreign = os.path.join(os.path.dirname(KGLOB), "libkorvanhost.so")
        self.add(b"text.so")
        for file, pattern in [("/nowhere/x.so", rb"/nowhere/x\.so.*No such file"), ("text.so", rb"text\.so"),
                              (foreign, rb"libkorvanhost\.so is not the search library"), (".", rb"search library")]:
            self.expect_error(["--library", file, "*"], pattern)

    def test_library_is_looked_for_beside_the_program(self):
        self.add(b"a", b"bin/")
        folder = os.path.dirname(KGLOB)
        alone = os.fsdecode(self.at(b"bin/kglob"))
        shutil.copy(KGLOB, alone)
        for file in os.listdir(folder):
            if file.startswith("libkorvanhost.so"):
                shutil.copy(os.path.join(folder, file), os.path.dirname(alone))
        self.expect_error(["a"], rb"cannot find libqdkorvanautomationio\.so[.\d]* in .*; name it by --library FILE",
                          executable=alone)
        library = os.path.join(folder, "libqdkorvanautomationio.so")
        self.expect(["--library", library, "a"], 0, b"a\n", executable=alone)
        for file in os.listdir(folder):
            if file.startswith("libqdkorvanautomationio.so"):
                shutil.copy(os.path.join(folder, file), os.path.dirname(alone))
        self.expect(["a"], 0, b"a\n", executable=alone)

    def test_output_that_cannot_be_written(self):
        self.add(b"a")
        for arguments in [["*"], ["--help"], ["--version"]]:
            with open("/dev/full", "wb") as full, self.subTest(arguments=arguments):
                status, _, errors = self.run_kglob(*arguments, stdout=full)
                self.assertEqual((status, errors),
                                 (2, b"kglob: cannot write standard output: No space left on device\n"))
        closed = subprocess.run(["sh", "-c", 'exec "$0" "*" >&-', KGLOB], cwd=self.folder, stderr=subprocess.PIPE)
        self.assertEqual((closed.returncode, closed.stderr),
                         (2, b"kglob: cannot write standard output: Bad file descriptor\n"))

    def test_closed_pipe_ends_quietly(self):
        self.add(b"a")
        for restored in (True, False):  # SIGPIPE at its default, and ignored as under some supervisors
            with self.subTest(restored=restored):
                reader, writer = os.pipe()
                os.close(reader)
                status, _, errors = self.run_kglob("*", stdout=writer, restore_signals=restored)
                os.close(writer)
                self.assertEqual((status, errors), (-signal.SIGPIPE, b""))


class UnreadableFolders(KglobTest):
    """Run as a user who may not read everything."""

    def setUp(self):
        super().setUp()
        self.user = {}
        if os.geteuid() == 0:
            self.user = {"user": NOBODY, "group": NOBODY, "extra_groups": []}
            try:
                usable = self.run_kglob("-r", "/", "/", **self.user)[0] == 0
            except PermissionError:
                usable = False
            if not usable:
                self.skipTest(f"the user {NOBODY} can't run {KGLOB}")

    def close_folder(self, path):
        self.add(path + b"/inside/")
        os.chmod(self.at(path), 0)
        self.addCleanup(os.chmod, self.at(path), stat.S_IRWXU)

    def test_told_and_the_rest_complete(self):
        self.add(b"open/a", b"z")
        self.close_folder(b"open/shut")
        denied = b": Permission denied\n"
        here, iri = self.folder, b"file://" + self.folder
        for arguments, output, told in [
            (["**"], b"open\nopen/a\nopen/shut\nz\n", b"open/shut"),
            (["-r", "open", "**"], b"a\nshut\n", b"open/shut"),
            (["-r", "open/shut", "*"], b"", b"open/shut"),
            ([here + b"/open/*/*"], b"", here + b"/open/shut"),
            ([iri + b"/open/**"], b"".join(iri + b"/open" + end for end in (b"\n", b"/a\n", b"/shut\n")), iri + b"/open/shut"),
            (["open/*/*", "z", "**/no*thing"], b"z\n", b"open/shut"),
        ]:
            self.expect(arguments, 2, output, b"kglob: cannot read " + told + denied, **self.user)

    def test_ten_and_a_count(self):
        names = [b"%02d\n" % number for number in range(13)]
        for name in names:
            self.close_folder(name)
        told = b"".join(b"kglob: cannot read %02d\\n: Permission denied\n" % number for number in range(10))
        self.expect(["-0", "*/*"], 2, b"", told + b"kglob: further folders that cannot be read: 3\n", **self.user)

    def test_literal_target(self):
        self.close_folder(b"shut")
        identifier = rb"\[KORVAN:virtualfilesystem:permissionDenied\]"
        self.expect_error(["shut/inside"], rb"Permission denied.*shut/inside.*" + identifier, **self.user)
        iri = b"file://" + self.folder + b"/shut/inside"
        self.expect_error([iri], re.escape(iri) + rb".*" + identifier, **self.user)


class Terminal(KglobTest):

    def on_terminal(self, *arguments, stream="stdout", term="xterm", stop_after=None, **options):
        """Runs kglob with one stream on a terminal. Gives the exit status, what the terminal got, and the other stream's bytes."""
        master, slave = pty.openpty()
        attributes = termios.tcgetattr(slave)
        attributes[1] &= ~termios.OPOST  # bytes as they were written
        termios.tcsetattr(slave, termios.TCSANOW, attributes)

        def take_terminal():
            os.setsid()
            fcntl.ioctl(slave, termios.TIOCSCTTY, 0)

        streams = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, stream: slave}
        with subprocess.Popen([KGLOB, *arguments], cwd=self.folder, stdin=subprocess.DEVNULL, preexec_fn=take_terminal,
                              env={**os.environ, "TERM": term}, **streams, **options) as process:
            os.close(slave)
            shown = b""
            deadline = time.monotonic() + (stop_after or 60)
            while True:
                if not select.select([master], [], [], max(0, deadline - time.monotonic()))[0]:
                    process.send_signal(signal.SIGINT)
                    deadline = time.monotonic() + 60
                    continue
                try:
                    shown += os.read(master, 65536)
                except OSError:  # the terminal's last writer is gone
                    break
            rest = (process.stderr if stream == "stdout" else process.stdout).read()
            status = process.wait(60)
            os.close(master)  # not before: it hangs the process up
            return status, shown, rest

    def test_names_are_escaped(self):
        table = [
            (b"plain name", b"plain name"),
            (b"back\\slash", b"back\\slash"),
            ("日本 \U0001F600".encode(), "日本 \U0001F600".encode()),
            (b"a\nb'c\\d", b"$'a\\nb\\'c\\\\d'"),
            (b"\x1b[31m\t\r\x7f", b"$'\\x1B[31m\\t\\r\\x7F'"),
            (b"\xff\xc3\xa9\xe6\x97", b"$'\\xFF\xc3\xa9\\xE6\\x97'"),
            ("\u0085\u202e".encode(), b"$'\\xC2\\x85\\xE2\\x80\\xAE'"),
            (b"$'x", b"$'$\\'x'"),
        ]
        self.add(*(name for name, _ in table))
        for name, shown in table:
            with self.subTest(name=name):
                self.assertEqual(self.on_terminal("--", name), (0, shown + b"\n", b""))
                self.assertEqual(self.on_terminal("-0", "--", name), (0, name + b"\0", b""))
                if shutil.which("bash"):
                    quoted = shown if shown.startswith(b"$'") else b"'" + shown + b"'"
                    self.assertEqual(subprocess.check_output(["bash", "-c", b"printf %s " + quoted]), name)

    def make_maze(self):
        """Folders that all link to each other: a handful of entries, and more paths through them than any search could visit."""
        names = [b"%c" % letter for letter in b"abcdefghijkl"]
        for name in names:
            self.add(name + b"/")
            for other in names:
                os.symlink(b"../" + other, self.at(name + b"/to-" + other))

    def test_progress_of_a_long_search(self):
        self.make_maze()
        status, shown, output = self.on_terminal("**/nothing", stream="stderr", stop_after=1.6)
        self.assertEqual((status, output), (-signal.SIGINT, b""))
        take_away = b"\r\x1b[K"
        lines = shown.split(take_away)
        self.assertGreaterEqual(len(lines), 3)
        self.assertEqual((lines[0], lines[-1]), (b"", b""))  # nothing before, and nothing left at the end
        for line in lines[1:-1]:
            self.assertRegex(line, rb"\Akglob: read \d+ folders, \d+ entries\Z")

    def test_no_progress(self):
        self.make_maze()
        for term in ("dumb", ""):
            with self.subTest(term=term):
                self.assertEqual(self.on_terminal("**/nothing", stream="stderr", term=term, stop_after=1.3),
                                 (-signal.SIGINT, b"", b""))
        self.assertEqual(self.on_terminal("a", stream="stderr"), (0, b"", b"a\n"))


class Interrupts(KglobTest):

    def interrupted(self, *arguments, after=0.15):
        with subprocess.Popen([KGLOB, *arguments], cwd=self.folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            time.sleep(after)
            start = time.monotonic()
            process.send_signal(signal.SIGINT)
            output, errors = process.communicate(timeout=60)
            return (process.returncode, output, errors), time.monotonic() - start

    def expect_interrupt(self, *arguments):
        """No match and the signal's own end, within 0.2 s at the best of three."""
        times = []
        for _ in range(3):
            result, seconds = self.interrupted(*arguments)
            self.assertEqual(result, (-signal.SIGINT, b"", b""))
            times.append(seconds)
        self.assertLessEqual(min(times), 0.2)

    def test_deep_search(self):
        Terminal.make_maze(self)
        self.expect_interrupt("**/nothing")

    def test_blocked_output(self):
        """Matches that nobody reads: the write is given up."""
        self.add(*(b"%0250d" % number for number in range(1000)))
        reader, writer = os.pipe()
        with subprocess.Popen([KGLOB, "*"], cwd=self.folder, stdout=writer, stderr=subprocess.PIPE) as process:
            time.sleep(0.3)
            process.send_signal(signal.SIGINT)
            self.assertEqual((process.wait(10), process.stderr.read()), (-signal.SIGINT, b""))
        os.close(reader)
        os.close(writer)

    def test_ignored_signal_stays_ignored(self):
        Terminal.make_maze(self)
        with subprocess.Popen([KGLOB, "**/nothing"], cwd=self.folder, stdout=subprocess.DEVNULL,
                              preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_IGN)) as process:
            time.sleep(0.1)
            process.send_signal(signal.SIGINT)
            with self.assertRaises(subprocess.TimeoutExpired):
                process.wait(0.4)
            process.kill()


class WhatIsLoaded(KglobTest):

    def test_local_search_loads_nothing_remote(self):
        self.add(b"a")
        status, output, loaded = self.run_kglob("*", env={**os.environ, "LD_DEBUG": "files"})
        self.assertEqual((status, output), (0, b"a\n"))
        self.assertIn(b"libqdkorvanautomationio", loaded)
        self.assertNotRegex(loaded, rb"libcurl|libssl|libcrypto|libgnutls|libpugixml")


if __name__ == "__main__":
    KGLOB = os.path.abspath(sys.argv.pop(1))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    unittest.main(verbosity=2)
