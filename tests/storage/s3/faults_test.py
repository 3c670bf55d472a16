"""Searches of a store of three nodes while one of them dies or freezes, or while the whole store dies."""

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
KEYS = [f"top{top}/folder{folder:02}/{number}.csv" for top in range(4) for folder in range(25) for number in range(3)]
KEYS += [f"many/{number:03}" for number in range(250)]
# Listings of many folders, the pages of one folder, and everything below a folder at once.
SEARCHES = {"top*/*/1.csv": [key for key in KEYS if key.endswith("/1.csv")],
            "many/*": [key for key in KEYS if key.startswith("many/")],
            "**/1*": [key for key in sorted(KEYS) if key.rsplit("/", 1)[1].startswith("1")]}


class Relay:
    """Forwards connections to the store, and causes the fault before the second request."""

    def __init__(self, port, fault):
        self.requests, self._port, self._fault, self._lock = 0, port, fault, threading.Lock()
        self._listener = socket.create_server(("127.0.0.1", 0))
        self.endpoint = "http://127.0.0.1:%d" % self._listener.getsockname()[1]
        threading.Thread(target=self._accept, daemon=True).start()

    def close(self):
        # Closing alone wouldn't wake the waiting thread, which keeps the port open.
        with contextlib.suppress(OSError):  # closed already
            self._listener.shutdown(socket.SHUT_RDWR)
        self._listener.close()

    def _accept(self):
        with contextlib.suppress(OSError):  # closed, or the store refuses: then refuse as well
            while True:
                client = self._listener.accept()[0]
                server = socket.create_connection(("127.0.0.1", self._port))
                threading.Thread(target=self._forward, args=(client, server), daemon=True).start()
                threading.Thread(target=self._forward, args=(server, client), daemon=True).start()
        self.close()

    def _forward(self, source, target):
        with contextlib.suppress(OSError):
            while data := source.recv(65536):
                if data.startswith(b"GET "):
                    self._count()
                target.sendall(data)
        for end in (source, target):
            with contextlib.suppress(OSError):
                end.shutdown(socket.SHUT_RDWR)

    def _count(self):
        with self._lock:
            self.requests += 1
            if self.requests == 2:
                self._fault()


class Faults(unittest.TestCase):
    """Runs in this order, as some faults are permanent."""

    @classmethod
    def setUpClass(cls):
        cls.store = swift_store.SwiftStore(nodes=3, page=100)
        cls.addClassCleanup(cls.store.stop)
        cls.store.fill("faults", KEYS)

    def search(self, pattern, fault):
        with contextlib.closing(Relay(self.store.port, fault)) as relay:
            environment = {**os.environ, **self.store.environment(), "AWS_ENDPOINT_URL_S3": relay.endpoint}
            done = subprocess.run([KGLOB, f"s3://faults/{pattern}"], env=environment, capture_output=True, timeout=150, check=False)
        self.assertGreaterEqual(relay.requests, 2, "the search ended before the fault")
        return done.returncode, done.stdout.decode().splitlines(), done.stderr.decode()

    def check_same(self, fault, mend=lambda: None):
        for pattern, keys in SEARCHES.items():
            with self.subTest(pattern=pattern):
                self.assertEqual(self.search(pattern, fault), (0, [f"s3://faults/{key}" for key in keys], ""))
            mend()

    def test_1_a_node_freezes(self):
        for node in range(3):
            self.check_same(lambda node=node: self.store.freeze(node), lambda node=node: self.store.thaw(node))

    def test_2_a_node_dies(self):
        self.check_same(lambda: self.store.kill(0))

    def test_3_the_store_dies(self):
        begin = time.monotonic()
        status, _, errors = self.search("top*/*/1.csv", self.store.kill_proxy)
        self.assertEqual(status, 2)
        self.assertRegex(errors, r"kglob: .*s3://faults/")
        self.assertLess(time.monotonic() - begin, 60)


if __name__ == "__main__":
    KGLOB = sys.argv.pop(1)
    unittest.main(verbosity=2)
