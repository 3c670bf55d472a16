"""What kglob does with a real store: outcomes, their cost in requests, and what a search of the local disk leaves alone.

    kglob_store_test.py KGLOB     with KORVAN_TEST_STORE naming the file that store_fixture.py wrote
"""

import os
import re
import socket
import subprocess
import sys
import tempfile
import time
import unittest
import urllib.parse

import sample_trees

KGLOB = ""
STATS = re.compile(r"kglob: read (\d+) folders, (\d+) entries; (\d+) requests, (\d+) bytes; \d+\.\d+ s$", re.M)


def store_environment():
    with open(os.environ["KORVAN_TEST_STORE"], encoding="utf-8") as file:
        return dict(line.rstrip("\n").split("=", 1) for line in file)


STORE = store_environment()
CLEAN = {name: value for name, value in os.environ.items() if not name.startswith("AWS_")}


def user(name):
    return {"AWS_ACCESS_KEY_ID": STORE[f"KORVAN_TEST_{name}_KEY"], "AWS_SECRET_ACCESS_KEY": STORE[f"KORVAN_TEST_{name}_SECRET"]}


class Run:
    """One run of kglob, ended after a minute at most."""

    def __init__(self, *arguments, **changes):
        environment = {**CLEAN, **STORE}
        for name, value in changes.items():
            if value is None:
                environment.pop(name, None)
            else:
                environment[name] = value
        begin = time.monotonic()
        done = subprocess.run([KGLOB, *arguments], env=environment, capture_output=True, timeout=60, check=False)
        self.seconds = time.monotonic() - begin
        self.status = done.returncode
        self.output = os.fsdecode(done.stdout)
        self.errors = os.fsdecode(done.stderr)

    def stats(self):
        folders, entries, requests, transferred = map(int, STATS.search(self.errors).groups())
        return {"folders": folders, "entries": entries, "requests": requests, "bytes": transferred}


def closed_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Outcomes(unittest.TestCase):
    """Status, the matches, what standard error must say, and the most seconds that it may take."""

    def check(self, pattern, status, says, seconds=5, **changes):
        for each in (pattern, pattern.replace("*", "top.csv")):  # once by a listing, once by a look
            with self.subTest(pattern=each):
                run = Run(each, **changes)
                self.assertEqual(run.status, status, run.errors)
                self.assertEqual(run.output, "")
                if says:
                    self.assertRegex(run.errors, says)
                else:
                    self.assertEqual(run.errors, "")
                self.assertLess(run.seconds, seconds)
                secret = changes.get("AWS_SECRET_ACCESS_KEY") or STORE["AWS_SECRET_ACCESS_KEY"]
                self.assertNotIn(secret, run.errors)

    def test_wrong_secret(self):
        self.check("s3://mirror/*", 2, "403", AWS_SECRET_ACCESS_KEY="not-it-at-all")

    def test_unknown_access_key(self):
        self.check("s3://mirror/*", 2, "403", AWS_ACCESS_KEY_ID="no:body")

    def test_bucket_of_another_user(self):
        self.check("s3://mirror/*", 2, "403", **user("GUEST"))

    def test_no_credentials(self):
        self.check("s3://mirror/*", 2, "kglob: ", AWS_ACCESS_KEY_ID=None, AWS_SECRET_ACCESS_KEY=None)

    def test_unknown_bucket_holds_nothing(self):
        self.check("s3://no-such-bucket/*", 1, None)

    def test_unreachable_endpoint(self):
        self.check("s3://mirror/*", 2, "127.0.0.1", seconds=15, AWS_ENDPOINT_URL_S3=f"http://127.0.0.1:{closed_port()}")

    def test_half_a_pair_of_credentials(self):
        self.check("s3://mirror/*", 2, "kglob: ", AWS_ACCESS_KEY_ID=None)

    def test_awkward_user(self):
        """An access key, a secret, a bucket and a key with all that a signature is computed over."""
        text = "s3://a-bucket.with-dots/plus+and%20space/100%25.txt"
        for pattern in (text, "s3://a-bucket.with-dots/**/*.txt"):
            run = Run(pattern, **user("AWKWARD"))
            self.assertEqual((run.status, run.output, run.errors), (0, text + "\n", ""))


class Names(unittest.TestCase):
    def test_each_awkward_name_is_found(self):
        """Each as a folder to list, as a prefix to filter by and as a file to look up: every kind of request is signed with it."""
        keys = [key for key in sample_trees.conformance() if key.startswith("awkward")]
        for key in keys:
            folder, name = key.rsplit("/", 1)
            # "*" can't be told from a wildcard.
            patterns = [urllib.parse.quote(key)] if "*" not in key else []
            patterns += [urllib.parse.quote(folder) + "/" + urllib.parse.quote(name[:-1]) + "*"] if "*" not in key else []
            for pattern in patterns:
                run = Run("-0d", f"s3://conformance/{pattern}")
                found = [urllib.parse.unquote(text) for text in run.output.split("\0")[:-1]]
                self.assertIn(f"s3://conformance/{key}", found, (pattern, run.errors))
                self.assertEqual((run.status, run.errors), (0, ""))


class OddKeys(unittest.TestCase):
    def check(self, pattern, found):
        run = Run("-d", f"s3://odd/{pattern}")
        self.assertEqual(run.output.splitlines(), [f"s3://odd/{name}" for name in found])
        self.assertEqual((run.status, run.errors), (0 if found else 1, ""))

    def test_what_can_be_named_is_found(self):
        everything = sample_trees.odd()[1]
        self.check("**", [""] + everything)
        self.check("*", [name for name in everything if "/" not in name])

    def test_an_object_and_a_folder_of_one_name_are_a_folder(self):
        self.check("b*", ["both"])
        self.check("b*/", ["both/"])
        self.check("both/*", ["both/below"])

    def test_a_marker_is_no_entry_of_its_folder(self):
        self.check("marker/*", ["marker/x"])
        self.check("only-marker/*", [])
        self.check("only-marker/", ["only-marker/"])


class Requests(unittest.TestCase):
    def check(self, pattern, matches, least, most):
        run = Run("--stats", pattern)
        self.assertEqual(len(run.output.splitlines()), matches, run.errors)
        self.assertEqual(run.status, 0 if matches else 1)
        requests = run.stats()["requests"]
        self.assertTrue(least <= requests <= most, f"{pattern}: {requests} requests, not {least} to {most}")
        return run.stats()

    def test_a_listing_costs_one_a_page(self):
        stats = self.check("s3://mirror/wide/*", 2500, 3, 4)
        self.assertEqual(stats["entries"], 2500)
        self.assertGreater(stats["bytes"], 2500 * len("wide/0000.csv"))

    def test_a_literal_head_is_sent_as_the_prefix(self):
        self.check("s3://mirror/wide/00*", 100, 1, 2)

    def test_a_literal_costs_two_at_most(self):
        for pattern, matches in (("wide/0001.csv", 1), ("wide/0001", 0), ("wide", 1), ("wide/", 1), ("", 1), ("no/thing", 0)):
            self.check(f"s3://mirror/{pattern}", matches, 1, 2)

    def test_a_descent_costs_about_one_a_page(self):
        """Not one for each of some 370 folders. 3,300 keys are four pages; a page or two may be read twice."""
        keys = sample_trees.mirror()
        self.check("s3://mirror/**/readme.txt", len([key for key in keys if key.endswith("/readme.txt")]), 4, 8)


class LocalSearch(unittest.TestCase):
    REMOTE = re.compile(r"lib(curl|ssl|crypto|gnutls|nss3|pugixml)|korvan-storage-s3")

    def loaded(self, pattern, folder):
        """The names of remote access's libraries that the process looked for."""
        run = Run("-r", folder, pattern, LD_DEBUG="files")
        self.assertEqual(run.status, 0)
        return {match.group() for match in self.REMOTE.finditer(run.errors)}

    def test_it_loads_nothing_of_remote_access(self):
        with tempfile.TemporaryDirectory() as folder:
            with open(os.path.join(folder, "file"), "wb"):
                pass
            self.assertEqual(self.loaded("*", folder), set())
            self.assertEqual(self.loaded("**", folder), set())
            self.assertIn("libcurl", self.loaded("s3://mirror/wide/0001.csv", folder))


if __name__ == "__main__":
    KGLOB = sys.argv.pop(1)
    unittest.main(verbosity=2)
