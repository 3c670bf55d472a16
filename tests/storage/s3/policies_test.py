"""Searches of a store with bucket policies: credentials that may list a part of a bucket, another user's bucket, and a public one."""

import os
import subprocess
import sys
import unittest

from ceph_store import CephStore
from local_store import GUEST, OWNER

KGLOB = ""
KEYS = ["x/1.csv", "x/a/2.csv", "x/a/b/3.csv", "xy/4.csv", "y/5.csv"]
PUBLIC = {"AWS_NO_SIGN_REQUEST": "true"}


class Policies(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.store = CephStore()
        cls.addClassCleanup(cls.store.stop)
        for bucket in ("limited", "shared", "public", "private"):
            cls.store.fill(bucket, KEYS)
        cls.store.allow("limited", "x/*", GUEST)
        cls.store.allow("shared", "*", GUEST)
        cls.store.allow("public")

    def search(self, pattern, user, **changes):
        environment = {**os.environ, **self.store.environment(user), **changes}
        done = subprocess.run([KGLOB, pattern], env=environment, capture_output=True, timeout=60, check=False, text=True)
        return done.returncode, done.stdout.splitlines(), done.stderr

    def test_what_may_be_listed_is_found(self):
        below_x = [key for key in KEYS if key.startswith("x/")]
        virtual = {"AWS_S3_ADDRESSING_STYLE": "virtual", "AWS_ENDPOINT_URL_S3": f"http://localhost:{self.store.port}"}
        for user, changes, pattern, keys in (
                (GUEST, {}, "s3://limited/x/**/*.csv", below_x), (GUEST, {}, "s3://limited/x/*", ["x/1.csv", "x/a"]),
                (GUEST, {}, "s3://limited/x/a/*.csv", ["x/a/2.csv"]), (GUEST, {}, "s3://limited/x/a/b/3.csv", ["x/a/b/3.csv"]),
                (OWNER, {}, "s3://limited/**/*.csv", KEYS), (GUEST, {}, "s3://shared/**/*.csv", KEYS),
                (GUEST, PUBLIC, "s3://public/**/*.csv", KEYS), (OWNER, virtual, "s3a://shared/**/*.csv", KEYS)):
            with self.subTest(user=user, pattern=pattern):
                bucket = pattern[:pattern.index("/", 6)]
                self.assertEqual(self.search(pattern, user, **changes), (0, [f"{bucket}/{key}" for key in keys], ""))

    def test_what_may_not_be_listed_is_refused(self):
        for user, changes, pattern in ((GUEST, {}, "s3://limited/**"), (GUEST, {}, "s3://limited/y/*"), (GUEST, {}, "s3://private/*"),
                                       (OWNER, PUBLIC, "s3://private/**"), (OWNER, PUBLIC, "s3://shared/x/*")):
            with self.subTest(user=user, pattern=pattern):
                status, matches, errors = self.search(pattern, user, **changes)
                self.assertEqual((status, matches), (2, []))
                self.assertRegex(errors, "HTTP 403 AccessDenied.*request was not signed" if changes else "HTTP 403 AccessDenied")


if __name__ == "__main__":
    KGLOB = sys.argv.pop(1)
    unittest.main(verbosity=2)
