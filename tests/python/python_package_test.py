"""python_package_test.py KGLOB [unittest arguments]: tests the package kglob, against the program and the standard library's glob."""

import errno
import glob
import os
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
import unittest

import kglob

KGLOB = ""
NOBODY = 65534
NAMES = ["a", "b", "ab", ".h", "[a]", "a?", "new\nline", "a b", "日本", os.fsdecode(b"cut\xe6\x97"), "%2A"]


def threads():
    return len(os.listdir("/proc/self/task"))


class PackageTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="kglob-python-")
        self.addCleanup(shutil.rmtree, self.folder)
        os.chmod(self.folder, 0o755)

    def at(self, *names):
        return os.path.join(self.folder, *names)

    def make_endless_tree(self):
        """Adds folders that can be walked on 2 to the power of 40 ways."""
        for level in range(40):
            os.mkdir(self.at(str(level)))
            for link in "xy":
                os.symlink(f"../{level + 1}", self.at(str(level), link))

    def test_results_are_those_of_kglob_and_of_the_standard_library(self):
        elsewhere = self.at("elsewhere")
        os.makedirs(os.path.join(elsewhere, "a", ".h"))
        chance = random.Random(7)
        found = 0
        for tree in range(30):
            folders = [self.at(str(tree))]
            os.mkdir(folders[0])
            for _ in range(chance.randrange(50)):
                path = os.path.join(chance.choice(folders), chance.choice(NAMES))
                if os.path.lexists(path):
                    continue
                if chance.random() < 0.3:
                    os.symlink(chance.choice([elsewhere, "nowhere"]), path)
                else:
                    os.mkdir(path)
                    folders.append(path)
            for _ in range(12):
                segments = chance.choices(["**", "**", "*", "*", "*a*", ".*", "a*", *NAMES], k=chance.randrange(1, 4))
                pattern = "/".join(segments).replace("**/**", "**") + chance.choice(["", "", "/"])
                hidden = chance.random() < 0.5
                with self.subTest(tree=tree, pattern=pattern, hidden=hidden):
                    matches = kglob.glob(pattern, root_dir=folders[0], include_hidden=hidden)
                    self.assertEqual([os.fsencode(match) for match in matches],
                                     kglob.glob(os.fsencode(pattern), root_dir="file://" + folders[0], include_hidden=hidden))
                    program = subprocess.run([KGLOB, "-0" + "d" * hidden, "--", pattern], cwd=folders[0], stdout=subprocess.PIPE)
                    self.assertEqual(os.fsdecode(program.stdout), "".join(match + "\0" for match in matches))
                    expected = glob.glob(pattern.replace("[", "[[]").replace("?", "[?]"), root_dir=folders[0],
                                         include_hidden=hidden, recursive=True)
                    if pattern.endswith("**"):  # "a/", even if "a" isn't a folder
                        expected = [match.rstrip("/") for match in expected if os.path.lexists(os.path.join(folders[0], match))]
                    self.assertEqual(sorted(matches), sorted(expected))
                    found += len(matches)
        self.assertGreater(found, 500)

    def test_searches_that_are_dropped_leave_no_thread(self):
        self.make_endless_tree()
        before = threads()
        for end in (lambda search: None, lambda search: search.close()):
            search = kglob.iglob("**", root_dir=self.folder)
            self.assertEqual([next(search), next(search)], ["0", "0/x"])
            self.assertGreater(threads(), before)
            end(search)
            del search
            self.assertEqual(threads(), before)

    def test_the_interpreter_exits_while_searches_run(self):
        self.make_endless_tree()
        script = ("import kglob, os, sys, threading, time\n"
                  "search = kglob.iglob('**')\n"
                  "print(next(search), flush=True)\n"
                  "threading.Thread(target=lambda: kglob.glob('**/x/none'), daemon=True).start()\n"
                  "time.sleep(0.1)\n"
                  "if os.fork():\n    os.wait()\n"
                  "else:\n    try: list(search)\n    except kglob.Error: print(kglob.glob('0'), flush=True)\n")
        done = subprocess.run([sys.executable, "-c", script], cwd=self.folder, capture_output=True, text=True, timeout=30)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(sorted(done.stdout.split()), ["0", "['0']"])

    def test_an_interrupt_ends_a_search_that_finds_nothing(self):
        self.make_endless_tree()
        self.addCleanup(signal.signal, signal.SIGINT, signal.signal(signal.SIGINT, signal.default_int_handler))
        delays = []
        for _ in range(3):
            timer = threading.Timer(0.2, os.kill, (os.getpid(), signal.SIGINT))
            with self.assertRaises(KeyboardInterrupt):
                timer.start()
                start = time.monotonic()
                kglob.glob("**/none", root_dir=self.folder)
            delays.append(time.monotonic() - start - 0.2)
            timer.join()
            self.assertEqual(threads(), 1)
        self.assertLess(min(delays), 0.2)

    def test_errors(self):
        os.makedirs(self.at("locked", "inner"))
        os.mkdir(self.at("open"))
        os.chmod(self.at("locked"), 0)
        self.addCleanup(os.chmod, self.at("locked"), 0o755)
        if os.geteuid() == 0:
            os.seteuid(NOBODY)
            self.addCleanup(os.seteuid, 0)
        for pattern, kind, number, filename, identifier in [
            (self.at("locked", "x"), PermissionError, errno.EACCES, self.at("locked", "x"), "permissionDenied"),
            (os.fsencode(self.at("locked", "x")), PermissionError, errno.EACCES, os.fsencode(self.at("locked", "x")), "permissionDenied"),
            ("s3://", ValueError, errno.EINVAL, "s3://", "invalidIRI"),
            ("none://x/*", kglob.Error, errno.EPROTONOSUPPORT, "none", "unsupportedProvider"),
        ]:
            with self.subTest(pattern=pattern), self.assertRaises(kind) as caught:
                kglob.glob(pattern)
            error = caught.exception
            self.assertIsInstance(error, kglob.Error)
            self.assertEqual((error.errno, error.filename, error.identifier), (number, filename, "KORVAN:virtualfilesystem:" + identifier))
        for pattern, kind in (("a\0b", ValueError), (None, TypeError), (b"a", TypeError)):
            with self.subTest(pattern=pattern), self.assertRaises(kind):
                kglob.iglob(pattern, root_dir=1 if kind is TypeError else None)

        failures = []
        self.assertEqual(kglob.glob("**", root_dir=self.folder, onerror=failures.append), ["locked", "open"])
        self.assertEqual([(type(failure), failure.filename, failure.strerror) for failure in failures],
                         [(kglob.PermissionDeniedError, self.at("locked"), "Permission denied")])
        with self.assertRaises(ZeroDivisionError):
            kglob.glob("**", root_dir=self.folder, onerror=lambda error: 1 / 0)


if __name__ == "__main__":
    KGLOB = sys.argv.pop(1)
    unittest.main()
