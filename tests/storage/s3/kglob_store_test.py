"""Searches of a real store: outcomes and numbers of requests. Local searches must not load remote access."""

import json
import os
import re
import subprocess
import sys
import time
import unittest
import urllib.parse

import local_store
import sample_trees
import store_fixture

KGLOB = ""
STATS = re.compile(r"kglob: read (\d+) folders, (\d+) entries; (\d+) requests, (\d+) bytes; \d+\.\d+ s$", re.M)


def user(name):
    return {"AWS_ACCESS_KEY_ID": name, "AWS_SECRET_ACCESS_KEY": local_store.SECRETS[name]}


class KglobStore(unittest.TestCase):
    def run_kglob(self, *arguments, **changes):
        """Status, output and errors. A variable whose value is None isn't set."""
        environment = {name: value for name, value in {**os.environ, **changes}.items() if value is not None}
        done = subprocess.run([KGLOB, *arguments], env=environment, capture_output=True, timeout=60, check=False)
        return done.returncode, os.fsdecode(done.stdout), os.fsdecode(done.stderr)

    def test_refusals(self):
        none = {"AWS_ACCESS_KEY_ID": None, "AWS_SECRET_ACCESS_KEY": None}
        for bucket, status, expected, changes in (
                ("mirror", 2, "403", {"AWS_SECRET_ACCESS_KEY": "not-it-at-all"}),
                ("mirror", 2, "403", {"AWS_ACCESS_KEY_ID": "no:body"}),
                ("mirror", 2, "403", user(local_store.GUEST)),
                ("mirror", 2, "kglob: ", none),
                ("mirror", 2, "kglob: ", {"AWS_ACCESS_KEY_ID": None}),
                ("mirror", 2, "127.0.0.1", {"AWS_ENDPOINT_URL_S3": "http://127.0.0.1:1"}),
                ("no-such-bucket", 2, '^kglob: "s3://no-such-bucket/" does not exist\n$', {})):
            for pattern in ("*", "top.csv"):  # a listing, and a look-up
                with self.subTest(bucket=bucket, pattern=pattern, **changes):
                    begin = time.monotonic()
                    result, output, errors = self.run_kglob(f"s3://{bucket}/{pattern}", **changes)
                    self.assertEqual((result, output), (status, ""), errors)
                    self.assertRegex(errors, expected)
                    self.assertLess(time.monotonic() - begin, 15)
                    secret = {**os.environ, **changes}["AWS_SECRET_ACCESS_KEY"]
                    self.assertTrue(secret is None or secret not in errors)

    def test_signing_of_awkward_names(self):
        """As folders to list, prefixes to filter by and files to look up; also as access key, secret and bucket."""
        searches = [(text := "s3://a-bucket.with-dots/plus+and%20space/100%25.txt", text, user(os.environ["KORVAN_TEST_DOTS_USER"]))]
        for key in store_fixture.conformance_keys():
            if key.startswith("awkward") and "*" not in key:  # "*" would be a wildcard
                text = f"s3://conformance/{urllib.parse.quote(key)}"
                head = f"s3://conformance/{urllib.parse.quote(key[:-1])}" + "*"
                searches += [(text, text, {}), (head, text, {})]
        for pattern, expected, changes in searches:
            status, output, errors = self.run_kglob("-0d", pattern, **changes)
            found = [urllib.parse.unquote(text) for text in output.split("\0")]
            self.assertIn(urllib.parse.unquote(expected), found, (pattern, errors))
            self.assertEqual((status, errors), (0, ""))

    def test_odd_keys(self):
        everything = sample_trees.odd()[1]
        for pattern, found in (("**", ["", *everything]), ("*", [name for name in everything if "/" not in name]),
                               ("b*", ["both"]), ("b*/", ["both/"]), ("both/*", ["both/below"]), ("marker/*", ["marker/x"]),
                               ("only-marker/*", []), ("only-marker/", ["only-marker/"])):
            with self.subTest(pattern=pattern):
                self.assertEqual(self.run_kglob("-d", f"s3://odd/{pattern}"),
                                 (0 if found else 1, "".join(f"s3://odd/{name}\n" for name in found), ""))

    def test_requests(self):
        readme = len([key for key in sample_trees.mirror() if key.endswith("/readme.txt")])
        for pattern, matches, least, most in (
                ("wide/*", 2500, 3, 4),  # one request a page
                ("wide/00*", 100, 1, 2),  # a literal head is sent as the prefix
                ("wide/0001.csv", 1, 1, 2), ("wide/0001", 0, 1, 2), ("wide", 1, 1, 2), ("wide/", 1, 1, 2), ("no/thing", 0, 1, 2),
                ("**/readme.txt", readme, 4, 8)):  # four pages for 3,300 keys, not one request for each of some 370 folders
            with self.subTest(pattern=pattern):
                _, output, errors = self.run_kglob("--stats", f"s3://mirror/{pattern}")
                self.assertEqual(len(output.splitlines()), matches, errors)
                self.assertTrue(least <= int(STATS.search(errors).group(3)) <= most, errors)

    def test_buckets(self):
        owned = ["a-bucket.with-dots", "conformance", "facts", "mirror", "odd"]
        facts = ["facts", "facts/d", "facts/d/five", "facts/none"]
        for arguments, found, requests in (
                (["s3://"], [""], 1), (["s3://*"], owned, 1), (["s3://*/"], [f"{bucket}/" for bucket in owned], 1),
                (["s3://*o*r*"], ["conformance", "mirror"], 1), (["s3://*/top.csv"], ["mirror/top.csv"], 1 + len(owned)),
                (["s3://f*/**"], facts, 2), (["s3://**/fiv*", "-E", "mirror"], ["facts/d/five"], 8), (["s3://x*"], [], 1),
                (["--max-depth=1", "s3://**"], ["", *owned], 1), (["s3://*x*", "s3://facts/**/five"], ["facts/d/five"], 2),
                (["s3://fact*", "s3://no-bucket"], None, 3)):
            with self.subTest(arguments=arguments):
                status, output, errors = self.run_kglob("--stats", *arguments)
                self.assertEqual((status, output.splitlines()), (2, ["s3://facts"]) if found is None else
                                 (0 if found else 1, [f"s3://{name}" for name in found]), errors)
                self.assertLessEqual(int(STATS.search(errors).group(3)), requests)
        self.assertEqual(self.run_kglob("-r", "s3a://", "facts/*", "*rro*"), (0, "facts/d\nfacts/none\nmirror\n", ""))
        for changes, reason in (({"AWS_SECRET_ACCESS_KEY": "not-it"}, "HTTP 403 SignatureDoesNotMatch"), ({"AWS_NO_SIGN_REQUEST": "1"}, "credentials are needed")):
            for pattern in ("s3://", "s3://*", "s3://**"):
                status, output, errors = self.run_kglob(pattern, **changes)
                self.assertEqual((status, output), (2, ""))
                self.assertRegex(errors, f's3://"?: .*{reason}')

    def test_options(self):
        bucket, wide = "s3://mirror/", [f"{number:04}.csv" for number in range(2500)]
        for arguments, expected in (
                (["-c", "-E", "1*", "-E", "2*", "-E", "00*.csv", bucket + "wide/**"], ["901"]), (["-E", "w*", bucket + "w*/"], []),
                (["-t", "d", "-n2", bucket + "**"], [bucket, bucket + "%231"]), (["-tf", "--max-depth=1", "-r", bucket, "**/top*"], ["top.csv", "top.txt"]),
                (["-a", "-r", bucket, "top.c*", "/mirror/top.t*"], [bucket + "top.csv", bucket + "top.txt"]),
                (["--decode", bucket + "docs/*", bucket + "100%25.f*"], [bucket + "100%.file"]), (["-c", bucket + "wide/*"], ["2500"]),
                (["-u", "-r", bucket + "wide", "000*", "0009*"], wide[:10]), (["--size", "+1", bucket + "wide/*"], []),
                (["--no-sign-request", bucket + "top.csv"], None), (["--endpoint-url=http://127.0.0.1:1", bucket + "*"], None),
                (["--profile", "none", bucket + "*"], None), (["--region", "!", bucket + "*"], None)):
            status, output, errors = self.run_kglob(*arguments)
            self.assertEqual((status, output), (2, "") if expected is None else (0 if expected else 1, "".join(line + "\n" for line in expected)),
                             (arguments, errors))

    def test_facts_cost_no_requests(self):
        plain = self.run_kglob("--stats", "s3://mirror/wide/*")
        for option in ("--json", "-l"):
            status, output, errors = self.run_kglob("--stats", option, "s3://mirror/wide/*")
            self.assertEqual((status, len(output.splitlines())), (0, 2500))
            self.assertEqual(STATS.search(errors).group(3), STATS.search(plain[2]).group(3))
        line = json.loads(self.run_kglob("--json", "s3://mirror/wide/0001.csv")[1])
        self.assertRegex(line.pop("mtime"), r"^20\d\d-\d\d-\d\dT\d\d:\d\d:\d\d(\.\d+)?Z$")
        self.assertRegex(line.pop("etag"), "^[0-9a-f]{32}$")
        line.pop("storage_class", None)
        self.assertEqual(line, {"path": "s3://mirror/wide/0001.csv", "kind": "file", "size": 0})
        self.assertEqual(json.loads(self.run_kglob("--json", "s3://mirror/wid*")[1]), {"path": "s3://mirror/wide", "kind": "folder"})

    def test_a_local_search_loads_nothing_of_remote_access(self):
        for pattern, expected in (("*", False), ("**/*.csv", False), ("s3://mirror/wide/0001.csv", True)):
            _, _, looked_for = self.run_kglob("-r", os.environ["KORVAN_TEST_MIRROR"], pattern, LD_DEBUG="files")
            remote = re.search("lib(curl|ssl|crypto|gnutls|nss3|pugixml)|korvan-storage-s3", looked_for)
            self.assertEqual(remote is not None, expected, pattern)


if __name__ == "__main__":
    KGLOB = sys.argv.pop(1)
    unittest.main(verbosity=2)
