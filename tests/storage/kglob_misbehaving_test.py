"""What kglob makes of stores that misbehave: the right outcome, few requests, and an end within bounded time.

    kglob_misbehaving_test.py KGLOB
"""

import concurrent.futures
import os
import signal
import subprocess
import sys
import tempfile
import time
import unittest

import misbehaving_store

KGLOB = ""
TOKEN = "session+token/="


def environment(endpoint, **changes):
    clean = {name: value for name, value in os.environ.items() if not name.startswith("AWS_")}
    return {**clean, "AWS_ACCESS_KEY_ID": "a key", "AWS_SECRET_ACCESS_KEY": misbehaving_store.SECRET,
            "AWS_SESSION_TOKEN": TOKEN, "AWS_ENDPOINT_URL": endpoint, "AWS_SHARED_CREDENTIALS_FILE": "/dev/null",
            "AWS_CONFIG_FILE": "/dev/null", "no_proxy": "127.0.0.1", **changes}


# bucket: (exit status, what standard error holds, requests at least and at most, seconds at least and at most). A listing
# that fails is told, and the search goes on without it: status 2. A bucket that isn't there is no failure. A folder of
# many pages may be tried as a flat listing first, at the cost of one request.
OUTCOMES = {
    "well": (0, "", 1, 1, 0, 8),
    "pages": (0, "", 3, 4, 0, 8),
    "signed": (0, "", 1, 1, 0, 8),
    "slow": (0, "", 1, 1, 2, 8),
    "trickle": (0, "", 1, 1, 0.5, 8),
    "busy-thrice": (0, "", 4, 4, 0, 8),
    "retry-after": (0, "", 2, 2, 1, 8),
    "dropped-once": (0, "", 2, 2, 0, 8),
    "cut-once": (0, "", 2, 2, 0, 8),
    "unknown": (1, "", 1, 2, 0, 8),
    "silent": (2, "(tried ", 2, 4, 10, 34),
    "busy": (2, "HTTP 503 SlowDown: as told (request id id-SlowDown) (tried ", 5, 20, 0, 34),
    "retry-after-an-hour": (2, "HTTP 429: later", 1, 1, 0, 8),
    "cut": (2, "(tried ", 5, 20, 0, 34),
    "cut-second-page": (2, "(tried ", 6, 21, 0, 34),
    "half-xml": (2, "makes no sense", 1, 1, 0, 8),
    "garbage": (2, "makes no sense", 1, 1, 0, 8),
    "no-http": (2, "HTTP", 1, 1, 0, 8),
    "sign-in": (2, "isn't the page of a listing", 1, 1, 0, 8),
    "same-token": (2, "token repeats", 2, 3, 0, 8),
    "same-page": (2, "goes back", 2, 3, 0, 8),
    "empty-for-ever": (2, "page after page", 10, 200, 0, 10),
    "no-token": (2, "no token", 1, 1, 0, 8),
    "elsewhere": (2, "begin with", 1, 1, 0, 8),
    "flood": (2, "longer than any answer", 1, 1, 0, 20),
    "denied": (2, "HTTP 403: Forbidden by the guard (request id id-guard)", 1, 1, 0, 8),
    "bad-request": (2, "HTTP 412: Bad URL", 1, 1, 0, 8),
    "moved": (2, 'the region is "eu-far-1"', 1, 1, 0, 8),
    "echo": (2, "HTTP 400 Echo: you sent *** and ***", 1, 1, 0, 8),
}


def everything(bucket):
    return "".join(f"s3://{bucket}/{name}\n" for name in misbehaving_store.NAMES)


class Misbehaving(unittest.TestCase):
    def setUp(self):
        self.store = self.enterContext(misbehaving_store.MisbehavingStore())

    def start(self, bucket, **changes):
        return subprocess.Popen([KGLOB, f"s3://{bucket}/t*"], env=environment(self.store.endpoint, **changes),
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def run_one(self, bucket):
        begin = time.monotonic()
        with self.start(bucket) as run:
            found, told = run.communicate(timeout=60)
        return run.returncode, found.decode(), told.decode(), time.monotonic() - begin

    def test_outcomes(self):
        with concurrent.futures.ThreadPoolExecutor(8) as pool:
            runs = {bucket: pool.submit(self.run_one, bucket) for bucket in OUTCOMES}
        for bucket, (status, errors, fewest, most, soonest, latest) in OUTCOMES.items():
            with self.subTest(bucket=bucket):
                returned, found, told, seconds = runs[bucket].result()
                self.assertEqual(returned, status, told)
                self.assertEqual(found, everything(bucket) if status == 0 else "")
                self.assertIn(errors, told)
                self.assertEqual(told.count("\n"), 1 if status == 2 else 0, told)
                self.assertNotIn(misbehaving_store.SECRET, told)
                self.assertNotIn(TOKEN, told)
                self.assertTrue(fewest <= len(self.store.requests[bucket]) <= most, len(self.store.requests[bucket]))
                self.assertTrue(soonest <= seconds <= latest, seconds)

    def test_an_interrupt_ends_transfers_and_waits(self):
        for bucket in ("silent", "busy", "trickle"):
            with self.subTest(bucket=bucket), self.start(bucket) as run:
                before = len(self.store.requests[bucket])
                while len(self.store.requests[bucket]) == before:
                    time.sleep(0.01)
                time.sleep(0.3)
                begin = time.monotonic()
                run.send_signal(signal.SIGINT)
                found, _ = run.communicate(timeout=30)
                self.assertLess(time.monotonic() - begin, 0.5)
                self.assertEqual((run.returncode, found), (-signal.SIGINT, b""))

    def test_another_secret_is_refused(self):
        with self.start("signed", AWS_SECRET_ACCESS_KEY="another") as run:
            told = run.communicate(timeout=30)[1].decode()
        self.assertEqual(run.returncode, 2)
        self.assertIn("HTTP 403 SignatureDoesNotMatch", told)

    def test_attempts_can_be_bounded(self):
        with self.start("busy-thrice", AWS_MAX_ATTEMPTS="2") as run:
            told = run.communicate(timeout=30)[1].decode()
        self.assertEqual(run.returncode, 2)
        self.assertIn("(tried 2 times in ", told)

    def test_certificates_are_verified(self):
        folder = self.enterContext(tempfile.TemporaryDirectory())
        certificate = os.path.join(folder, "certificate")
        subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
                        "-days", "2", "-subj", "/CN=localhost", "-addext", "subjectAltName=IP:127.0.0.1",
                        "-keyout", certificate, "-out", certificate + ".pem"], check=True, capture_output=True)
        with open(certificate, "a", encoding="ascii") as both, open(certificate + ".pem", encoding="ascii") as public:
            both.write(public.read())
        self.store = self.enterContext(misbehaving_store.MisbehavingStore(certificate))
        with self.start("well", AWS_CA_BUNDLE=certificate + ".pem") as run:
            found, told = run.communicate(timeout=30)
        self.assertEqual((found.decode(), told), (everything("well"), b""))
        with self.start("well") as run:
            found, told = run.communicate(timeout=30)
        self.assertEqual((run.returncode, found), (2, b""))
        self.assertIn(b"certificate", told)
        self.assertNotIn(b"tried", told)
        self.assertEqual(len(self.store.requests["well"]), 1)


def main():
    global KGLOB
    KGLOB = sys.argv.pop(1)
    unittest.main()


if __name__ == "__main__":
    main()
