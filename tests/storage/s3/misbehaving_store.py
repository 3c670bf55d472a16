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


KEYS = sorted([f"f{folder}/x{number}" for folder in range(3) for number in range(15)] + [f"f0/{name}/x" for name in ("S", "t", "U")])


def page(names=NAMES, token=None, prefixes=()):
    inside = "".join(f"<Contents><Key>{name}</Key></Contents>" for name in names)
    inside += "".join(f"<CommonPrefixes><Prefix>{prefix}</Prefix></CommonPrefixes>" for prefix in prefixes)
    inside += f"<IsTruncated>true</IsTruncated><NextContinuationToken>{token}</NextContinuationToken>" if token else \
        "<IsTruncated>false</IsTruncated>"
    return f"<?xml version='1.0'?><ListBucketResult>{inside}</ListBucketResult>".encode()


def error(code):
    return f"<Error><Code>{code}</Code><Message>as configured</Message><RequestId>id-{code}</RequestId></Error>".encode()


def listing(query, keys=KEYS):
    """A page of at most ten keys and prefixes, as a store would answer that lists in the order of `keys`."""
    prefix, delimiter, token = query.get("prefix", ""), query.get("delimiter"), query.get("continuation-token")
    names, after = [], query.get("start-after", "")
    for key in keys:
        end = key.find("/", len(prefix)) if delimiter else -1
        name = key[:end + 1] if end >= 0 else key
        if key.startswith(prefix) and key > after and name not in names:
            names.append(name)
    begin = names.index(token) + 1 if token else 0
    chosen, more = names[begin:begin + 10], len(names) > begin + 10
    is_prefix = lambda name: name.endswith("/")
    return 200, page(itertools.filterfalse(is_prefix, chosen), chosen[-1] if more else None, filter(is_prefix, chosen)), {}


WELL = (200, page(), {})
BUSY = (503, error("SlowDown"), {})
CUT = (200, page()[:-20], {"Content-Length": str(len(page()))})


def slowly(body):
    for i in range(0, len(body), 20):
        yield body[i:i + 20]
        time.sleep(0.1)


# bucket: the response (status, body, headers) to a request with this number, from 1, and query; None hangs up.
BEHAVIOURS = {
    "well": lambda number, query: WELL,
    "trickle": lambda number, query: (200, slowly(page()), {"Content-Length": str(len(page()))}),
    "busy-thrice": lambda number, query: BUSY if number <= 3 else WELL,
    "busy": lambda number, query: BUSY,
    "retry-after": lambda number, query: (503, b"", {"Retry-After": "1"}) if number == 1 else WELL,
    "dropped-once": lambda number, query: None if number == 1 else WELL,
    "silent": lambda number, query: time.sleep(60),
    "cut-second-page": lambda number, query: (200, page(["three"], "1"), {}) if "continuation-token" not in query else CUT,
    "garbage": lambda number, query: (200, bytes(range(256)) * 10, {}),
    "same-token": lambda number, query: (200, page([f"t{number:06}"], "again"), {}),
    "empty-forever": lambda number, query: (200, page([], f"token{number}"), {}),
    "flood": lambda number, query: (200, itertools.repeat(b"<Contents>" * 100000), {}),
    "moved": lambda number, query: (301, error("PermanentRedirect"), {"x-amz-bucket-region": "eu-far-1", "Location": "/well"}),
    "collated": lambda number, query: listing(query, sorted(KEYS, key=str.lower)),
    "limited": lambda number, query: listing(query) if query.get("prefix", "").startswith("f0/") else (403, error("AccessDenied"), {}),
}


def behaviour(bucket):
    """That of the bucket "gone-7" is to be absent at the seventh request only."""
    if not bucket.startswith("gone-"):
        return BEHAVIOURS[bucket]
    return lambda number, query: (404, error("NoSuchBucket"), {}) if bucket.endswith(f"-{number}") else listing(query)


class Handler(http.server.BaseHTTPRequestHandler):
    log_message = lambda *_: None

    def do_GET(self):
        address = urllib.parse.urlsplit(self.path)
        bucket = address.path.split("/")[1]
        self.server.requests[bucket] += 1
        response = behaviour(bucket)(self.server.requests[bucket], dict(urllib.parse.parse_qsl(address.query)))
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
