"""What a search makes of a store of three nodes when one of them dies or freezes while it runs, or when the whole store goes."""

import http.client
import http.server
import os
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


class Relay(http.server.BaseHTTPRequestHandler):
    """Passes requests on to the store; the fault happens before the second."""

    protocol_version = "HTTP/1.1"
    log_message = lambda *_: None
    lock = threading.Lock()

    def do_GET(self):
        with self.lock:
            self.server.requests += 1
            if self.server.requests == 2:
                self.server.fault()
        try:
            connection = http.client.HTTPConnection("127.0.0.1", self.server.store_port)
            connection.request("GET", self.path, headers=dict(self.headers))
            answer = connection.getresponse()
            body = answer.read()
        except (OSError, http.client.HTTPException):  # what the store doesn't answer isn't answered here
            self.close_connection = True
            return
        self.send_response_only(answer.status)
        for name, value in {**dict(answer.headers), "Content-Length": len(body)}.items():
            self.send_header(name, value)
        self.end_headers()
        self.wfile.write(body)


class Faults(unittest.TestCase):
    """In this order: each fault that lasts leaves less of the store."""

    @classmethod
    def setUpClass(cls):
        cls.store = swift_store.SwiftStore(nodes=3, page=100)
        cls.addClassCleanup(cls.store.stop)
        cls.store.fill("faults", KEYS)

    def search(self, pattern, fault):
        with http.server.ThreadingHTTPServer(("127.0.0.1", 0), Relay) as relay:
            relay.requests, relay.fault, relay.store_port, relay.daemon_threads = 0, fault, self.store.port, True
            threading.Thread(target=relay.serve_forever, daemon=True).start()
            environment = {**os.environ, **self.store.environment(), "AWS_ENDPOINT_URL_S3": f"http://127.0.0.1:{relay.server_port}"}
            done = subprocess.run([KGLOB, f"s3://faults/{pattern}"], env=environment, capture_output=True, timeout=150, check=False)
            relay.shutdown()
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

    def test_3_the_store_goes(self):
        begin = time.monotonic()
        status, _, told = self.search("top*/*/1.csv", self.store.kill_proxy)
        self.assertEqual(status, 2)
        self.assertRegex(told, r"kglob: .*s3://faults/")
        self.assertLess(time.monotonic() - begin, 60)


if __name__ == "__main__":
    KGLOB = sys.argv.pop(1)
    unittest.main(verbosity=2)
