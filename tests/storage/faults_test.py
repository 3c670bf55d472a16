"""What a search makes of a store of three nodes when one of them dies or freezes while it runs, or when the whole store goes.

    faults_test.py KGLOB
"""

import contextlib
import os
import socket
import subprocess
import sys
import threading
import time
import unittest

import swift_store

KGLOB = ""
BUCKET = "faults"
KEYS = [f"top{top}/folder{folder:02}/{number}.csv" for top in range(4) for folder in range(25) for number in range(3)]
KEYS += [f"many/{number:03}" for number in range(250)]
# Listings of many folders, the pages of one folder, and everything below a folder at once: each with the request of the search
# before which the fault happens.
SEARCHES = [("top*/*/1.csv", 2, [key for key in KEYS if key.endswith("/1.csv")]),
            ("many/*", 2, [key for key in KEYS if key.startswith("many/")]),
            ("**/1*", 2, [key for key in sorted(KEYS) if key.rsplit("/", 1)[1].startswith("1")])]


class Relay:
    """Passes connections on to the store, and lets something happen before a certain request goes through."""

    def __init__(self, port, request, action):
        self._port, self._left, self._action = port, request, action
        self._lock = threading.Lock()
        self.happened = False
        self._listener = socket.create_server(("127.0.0.1", 0))
        self.endpoint = "http://127.0.0.1:%d" % self._listener.getsockname()[1]
        threading.Thread(target=self._accept, daemon=True).start()

    def close(self):
        # Closing alone would leave the waiting thread, and so the port, as they are.
        with contextlib.suppress(OSError):  # closed already
            self._listener.shutdown(socket.SHUT_RDWR)
        self._listener.close()

    def _accept(self):
        while True:
            try:
                client = self._listener.accept()[0]
            except OSError:
                return
            try:
                server = socket.create_connection(("127.0.0.1", self._port))
            except OSError:
                # What the store refuses is refused here.
                self.close()
                client.close()
                return
            threading.Thread(target=self._pass, args=(client, server, self._count), daemon=True).start()
            threading.Thread(target=self._pass, args=(server, client, None), daemon=True).start()

    def _pass(self, source, target, before):
        try:
            while data := source.recv(65536):
                if before is not None and data.startswith(b"GET "):
                    before()
                target.sendall(data)
        except OSError:
            pass
        for end in (source, target):
            with contextlib.suppress(OSError):
                end.shutdown(socket.SHUT_RDWR)

    def _count(self):
        with self._lock:
            self._left -= 1
            if self._left == 0:
                self._action()
                self.happened = True


class Faults(unittest.TestCase):
    """In this order: each fault that lasts leaves less of the store."""

    @classmethod
    def setUpClass(cls):
        cls.store = swift_store.SwiftStore(nodes=3, page=100)
        cls.store.fill(BUCKET, KEYS)

    @classmethod
    def tearDownClass(cls):
        cls.store.stop()

    def search(self, pattern, request, action):
        relay = Relay(self.store.port, request, action)
        environment = {**os.environ, **self.store.environment(), "AWS_ENDPOINT_URL_S3": relay.endpoint}
        begin = time.monotonic()
        try:
            done = subprocess.run([KGLOB, f"s3://{BUCKET}/{pattern}"], env=environment, capture_output=True, timeout=150, check=False)
        finally:
            relay.close()
        seconds = time.monotonic() - begin
        print(f"{pattern}: {seconds:.1f} s", file=sys.stderr)
        self.assertTrue(relay.happened, f"the search ended before the fault: {done.stderr!r}")
        return done, seconds

    def check_same(self, fault, mend):
        for pattern, request, keys in SEARCHES:
            with self.subTest(pattern=pattern):
                try:
                    done, _ = self.search(pattern, request, fault)
                finally:
                    mend()
                self.assertEqual(done.stdout.decode().splitlines(), [f"s3://{BUCKET}/{key}" for key in keys])
                self.assertEqual((done.returncode, done.stderr), (0, b""))

    def test_1_without_a_fault(self):
        self.check_same(lambda: None, lambda: None)

    def test_2_a_node_freezes(self):
        for node in range(3):
            with self.subTest(node=node):
                self.check_same(lambda: self.store.freeze(node), lambda: self.store.thaw(node))

    def test_3_a_node_dies(self):
        self.check_same(lambda: self.store.kill(0), lambda: None)

    def test_4_the_store_goes(self):
        done, seconds = self.search("top*/*/1.csv", 2, self.store.kill_proxy)
        self.assertEqual(done.returncode, 2)
        self.assertRegex(done.stderr.decode(), rf"kglob: .*s3://{BUCKET}/.*127\.0\.0\.1")
        self.assertLess(seconds, 60)


if __name__ == "__main__":
    KGLOB = sys.argv.pop(1)
    unittest.main(verbosity=2)
