"""An object store that misbehaves in a way that the bucket's name selects, so that one server serves every case."""

import collections
import contextlib
import http.server
import itertools
import ssl
import threading
import time
import urllib.parse

SECRET = "se+cr/e%t: x"
NAMES = ["three", "tree", "two"]


def page(names=NAMES, token=None):
    inside = "".join(f"<Contents><Key>{name}</Key></Contents>" for name in names)
    inside += f"<IsTruncated>true</IsTruncated><NextContinuationToken>{token}</NextContinuationToken>" if token else \
        "<IsTruncated>false</IsTruncated>"
    return f"<?xml version='1.0'?><ListBucketResult>{inside}</ListBucketResult>".encode()


def error(code):
    return f"<Error><Code>{code}</Code><Message>as configured</Message><RequestId>id-{code}</RequestId></Error>".encode()


WELL = (200, page(), {})
BUSY = (503, error("SlowDown"), {})
CUT = (200, page()[:-20], {"Content-Length": str(len(page()))})


def slowly(body):
    for i in range(0, len(body), 20):
        yield body[i:i + 20]
        time.sleep(0.1)


# bucket: the response (status, body, headers) to a request with this number, from 1, and continuation token; None hangs up.
BEHAVIOURS = {
    "well": lambda number, token: WELL,
    "trickle": lambda number, token: (200, slowly(page()), {"Content-Length": str(len(page()))}),
    "busy-thrice": lambda number, token: BUSY if number <= 3 else WELL,
    "busy": lambda number, token: BUSY,
    "retry-after": lambda number, token: (503, b"", {"Retry-After": "1"}) if number == 1 else WELL,
    "dropped-once": lambda number, token: None if number == 1 else WELL,
    "silent": lambda number, token: time.sleep(60),
    "cut-second-page": lambda number, token: (200, page(["three"], "1"), {}) if token == "0" else CUT,
    "garbage": lambda number, token: (200, bytes(range(256)) * 10, {}),
    "same-token": lambda number, token: (200, page([f"t{number:06}"], "again"), {}),
    "empty-forever": lambda number, token: (200, page([], f"token{number}"), {}),
    "flood": lambda number, token: (200, itertools.repeat(b"<Contents>" * 100000), {}),
    "moved": lambda number, token: (301, error("PermanentRedirect"), {"x-amz-bucket-region": "eu-far-1", "Location": "/well"}),
}


class Handler(http.server.BaseHTTPRequestHandler):
    log_message = lambda *_: None

    def do_GET(self):
        address = urllib.parse.urlsplit(self.path)
        bucket = address.path.split("/")[1]
        self.server.requests[bucket] += 1
        token = dict(urllib.parse.parse_qsl(address.query)).get("continuation-token", "0")
        response = BEHAVIOURS[bucket](self.server.requests[bucket], token)
        self.close_connection = True
        if response is None:
            return
        status, body, headers = response
        self.send_response(status)
        for name, value in headers.items():
            self.send_header(name, value)
        self.end_headers()
        with contextlib.suppress(OSError):  # the client has disconnected
            for piece in [body] if isinstance(body, bytes) else body:
                self.wfile.write(piece)


class MisbehavingStore(http.server.ThreadingHTTPServer):
    """`requests` counts the requests by bucket. `certificate` is a file with a certificate and its key, for HTTPS."""

    def __init__(self, certificate=None):
        super().__init__(("127.0.0.1", 0), Handler)
        self.requests = collections.Counter()
        self.endpoint = f"http{'s' if certificate else ''}://127.0.0.1:{self.server_port}"
        if certificate:
            context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
            context.load_cert_chain(certificate)
            self.socket = context.wrap_socket(self.socket, server_side=True)
        threading.Thread(target=self.serve_forever, daemon=True).start()

    def __exit__(self, *_):
        self.shutdown()
        self.server_close()
