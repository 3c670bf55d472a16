"""python_package_test.py KGLOB [unittest arguments]: tests the Python package, also against kglob and glob."""

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
EXIT_SCRIPT = """import atexit, os, threading, time
atexit.register(lambda: print(len(os.listdir("/proc/self/task")) <= 2, flush=True))  # main and the daemon thread
import kglob
search = kglob.iglob("**")
print(next(search), flush=True)
threading.Thread(target=lambda: kglob.glob("**/none"), daemon=True).start()
time.sleep(0.1)
try: os.fork() and os.wait() or list(search)
except kglob.Error: print(kglob.glob("1"), flush=True)
"""


class PackageTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="kglob-python-")
        self.addCleanup(shutil.rmtree, self.folder)
        os.chmod(self.folder, 0o755)

    def make_endless_tree(self):
        for level in range(40):  # through which there are 2 to the power of 40 ways
            os.mkdir(f"{self.folder}/{level}")
            os.symlink(f"../{level + 1}", f"{self.folder}/{level}/x")
            os.symlink(f"../{level + 1}", f"{self.folder}/{level}/y")

    def expect_no_threads_of_searches(self):
        self.assertEqual(len(os.listdir("/proc/self/task")), 1)

    def make_random_tree(self, root, chance):
        folders = [root]
        os.makedirs(root)
        for _ in range(chance.randrange(50)):
            path = os.path.join(chance.choice(folders), chance.choice(NAMES))
            if not os.path.lexists(path) and chance.random() < 0.3:
                os.symlink(chance.choice([f"{self.folder}/elsewhere", "nowhere"]), path)
            elif not os.path.lexists(path):
                os.mkdir(path)
                folders.append(path)

    def test_matches_are_those_of_kglob_and_of_the_standard_library(self):
        os.makedirs(f"{self.folder}/elsewhere/a/.h")
        chance = random.Random(7)
        found = 0
        for case in range(360):
            root = f"{self.folder}/{case // 12}"
            if case % 12 == 0:
                self.make_random_tree(root, chance)
            segments = chance.choices(["**", "**", "*", "*", "*a*", ".*", "a*", *NAMES], k=chance.randrange(1, 4))
            pattern = "/".join(segments).replace("**/**", "**") + chance.choice(["", "", "/"])
            hidden = chance.random() < 0.5
            policy, arguments = chance.choice([({}, ["-L"]), ({"follow_links": False, "exclude": "b"}, ["-E", "b"]),
                                               ({"max_depth": 2, "exclude": ["[*", b"ab"], "one_file_system": True},
                                                ["-Lx", "-E[*", "-E", "ab", "--max-depth=2"])])
            with self.subTest(case=case, pattern=pattern, hidden=hidden, policy=policy):
                matches = kglob.glob(pattern, root_dir=root, include_hidden=hidden, **policy)
                self.assertEqual(kglob.glob(os.fsencode(pattern), root_dir="file://" + root, include_hidden=hidden, **policy),
                                 [os.fsencode(match) for match in matches])
                program = subprocess.run([KGLOB, "-0" + "d" * hidden, *arguments, "--", pattern], cwd=root, stdout=subprocess.PIPE)
                self.assertEqual(os.fsdecode(program.stdout), "".join(match + "\0" for match in matches))
                found += len(matches)
                if policy:
                    continue
                literal = pattern.replace("[", "[[]").replace("?", "[?]")
                expected = glob.glob(literal, root_dir=root, include_hidden=hidden, recursive=True)
                if pattern.endswith("**"):  # the standard library gives "a/", even if there is no folder "a"
                    expected = [match.rstrip("/") for match in expected if os.path.lexists(f"{root}/{match}")]
                self.assertEqual(sorted(matches), sorted(expected))
        self.assertGreater(found, 500)

    def test_reads_in_flight(self):
        for number in range(300):
            os.mkdir(f"{self.folder}/{number:03}")
        os.symlink("/proc/self/task", f"{self.folder}/threads")
        several = len(os.sched_getaffinity(0)) > 1
        for limit, has_other_threads in ((1, False), (2, several), (None, several)):
            threads = kglob.glob("*/*", root_dir=self.folder, reads_in_flight=limit)
            self.assertEqual(len(threads) > 2, has_other_threads, (limit, threads))  # than main and the search's own
        self.assertRaises(ValueError, kglob.iglob, "*", reads_in_flight=0)

    def test_searches_end_when_they_are_dropped_or_the_interpreter_exits(self):
        self.make_endless_tree()
        for end in (lambda search: None, lambda search: search.close()):
            search = kglob.iglob("**", root_dir=self.folder)
            self.assertEqual([next(search), next(search)], ["0", "0/x"])
            end(search)
            del search
            self.expect_no_threads_of_searches()
        done = subprocess.run([sys.executable, "-c", EXIT_SCRIPT], cwd=self.folder, capture_output=True, text=True)
        self.assertEqual((done.returncode, done.stderr, done.stdout), (0, "", "0\n['1']\nTrue\nTrue\n"))

    def test_an_interrupt_ends_a_search_that_finds_nothing(self):
        self.make_endless_tree()
        self.addCleanup(signal.signal, signal.SIGINT, signal.signal(signal.SIGINT, signal.default_int_handler))
        delays = []
        for _ in range(3):
            timer = threading.Timer(0.2, lambda: delays.append(-time.monotonic()) or signal.raise_signal(signal.SIGINT))
            with self.assertRaises(KeyboardInterrupt):
                timer.start()
                kglob.glob("**/none", root_dir=self.folder)
            delays[-1] += time.monotonic()
            timer.join()
            self.expect_no_threads_of_searches()
        self.assertLess(min(delays), 0.2)

    def test_errors(self):
        locked = f"{self.folder}/locked"
        os.mkdir(locked, 0)
        if os.geteuid() == 0:
            os.seteuid(NOBODY)
            self.addCleanup(os.seteuid, 0)
        for pattern, kind, number, filename, identifier in [
            (f"{locked}/x", PermissionError, errno.EACCES, f"{locked}/x", "permissionDenied"),
            (os.fsencode(f"{locked}/x"), PermissionError, errno.EACCES, os.fsencode(f"{locked}/x"), "permissionDenied"),
            ("s3:///", ValueError, errno.EINVAL, "s3:///", "invalidIRI"),
            ("none://x/*", kglob.Error, errno.EPROTONOSUPPORT, "none", "unsupportedProvider"),
        ]:
            with self.subTest(pattern=pattern), self.assertRaises(kind) as caught:
                kglob.glob(pattern)
            error = caught.exception
            self.assertEqual((isinstance(error, kglob.Error), error.errno, error.filename, error.identifier),
                             (True, number, filename, "KORVAN:virtualfilesystem:" + identifier))
        for pattern, root, error in [("\0", None, ValueError), ("*", b"\0", ValueError), (None, "", TypeError),
                                     ("*", 1, TypeError)]:
            with self.subTest(pattern=pattern, root=root), self.assertRaises(error):
                kglob.iglob(pattern, root_dir=root)

        failures = []
        self.assertEqual(kglob.glob("**", root_dir=self.folder, onerror=failures.append), ["locked"])
        self.assertEqual([(type(failure), failure.filename, failure.strerror) for failure in failures],
                         [(kglob.PermissionDeniedError, locked, "Permission denied")])
        with self.assertRaises(ZeroDivisionError):
            kglob.glob("**", root_dir=self.folder, onerror=lambda error: 1 / 0)


if __name__ == "__main__":
    KGLOB = sys.argv.pop(1)
    unittest.main()
