"""An object store that misbehaves in a way that the bucket's name selects, so that one server serves every case."""

import base64
import collections
import contextlib
import http.server
import itertools
import random
import socket
import ssl
import struct
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


def error(code, more=""):
    return f"<Error><Code>{code}</Code><Message>as configured</Message><RequestId>id-{code}</RequestId>{more}</Error>".encode()


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


def in_region(request):
    """A bucket in the region "eu-far-1", whose listing takes two pages."""
    if request.region == "eu-far-1":
        return 200, page(NAMES[:1], "1") if request.token == "0" else page(NAMES[1:]), {}
    return 301, error("PermanentRedirect"), {"x-amz-bucket-region": "eu-far-1", "Location": "/well"}


def with_the_password(request):
    """What a proxy could repeat of the user information that it was sent."""
    sent = request.headers.get("Proxy-Authorization", "Basic ").split()[1]
    user = base64.b64decode(sent).decode()
    return 403, f"{sent} {user} {user.split(':')[1]} {urllib.parse.quote(user, safe='')}".encode(), {}


def cut(request):
    """Cuts off a share of the responses, which the bucket's name ends with, in percent: somewhere between the connection and the end."""
    chunked = b"%x\r\n%b\r\n0\r\n\r\n" % (len(page()), page())
    header, body = random.choice([(f"Content-Length: {len(page())}\r\n", page()), ("Transfer-Encoding: chunked\r\n", chunked), ("", page())])
    response = f"HTTP/1.1 200 OK\r\n{header}x-amz-request-id: 1\r\n\r\n".encode() + body
    if random.random() * 100 < int(request.bucket.split("-")[1]):
        response = response[:random.randrange(len(response))]
        if random.random() < 0.5:  # a reset
            request.connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
    request.wfile.write(response)


# bucket: the response (status, body, headers) to a request, which has the attributes `number` (from 1, for each bucket), `query`, `token` (of
# continuation), `region` (that it is signed for) and `bucket`; None hangs up.
BEHAVIOURS = {
    "well": lambda request: WELL,
    "trickle": lambda request: (200, slowly(page()), {"Content-Length": str(len(page()))}),
    "busy-thrice": lambda request: BUSY if request.number <= 3 else WELL,
    "busy": lambda request: BUSY,
    "retry-after": lambda request: (503, b"", {"Retry-After": "1"}) if request.number == 1 else WELL,
    "dropped-once": lambda request: None if request.number == 1 else WELL,
    "late": lambda request: time.sleep(11) or WELL,
    "silent": lambda request: time.sleep(60),
    "silent-body": lambda request: (200, (time.sleep(60) for _ in range(1)), {}),
    "cut-second-page": lambda request: (200, page(["three"], "1"), {}) if request.token == "0" else CUT,
    "cut-5": cut,
    "cut-20": cut,
    "garbage": lambda request: (200, bytes(range(256)) * 10, {}),
    "not-http": lambda request: (request.wfile.write(b"220 mail.example ESMTP\r\n\r\n"), None)[1],
    "long-header": lambda request: (200, page(), {"x-long": "x" * 200000}),
    "same-token": lambda request: (200, page([f"t{request.number:06}"], "again"), {}),
    "empty-forever": lambda request: (200, page([], f"token{request.number}"), {}),
    "flood": lambda request: (200, itertools.repeat(b"<Contents>" * 100000), {}),
    "moved": in_region,
    "moving": lambda request: (400, error("AuthorizationHeaderMalformed", f"<Region>eu-{request.number}</Region>"), {}),
    "moved-away": lambda request: (301, error("PermanentRedirect"), {"x-amz-bucket-region": "elsewhere.example/"}),
    "password": with_the_password,
    "in-host": lambda request: WELL if request.headers["Host"].startswith("in-host.") else (400, b"", {}),
    "payer": lambda request: WELL if request.headers.get("x-amz-request-payer") == "requester" else (403, error("AccessDenied"), {}),
    "collated": lambda request: listing(request.query, sorted(KEYS, key=str.lower)),
    "limited": lambda request: listing(request.query) if request.query["prefix"].startswith("f0/") else (403, error("AccessDenied"), {}),
    "unsigned": lambda request: (403, error("AccessDenied"), {}) if "Authorization" in request.headers else WELL,
}


def behaviour(bucket):
    """That of the bucket "gone-7" is to be absent at the seventh request only."""
    if not bucket.startswith("gone-"):
        return BEHAVIOURS[bucket]
    return lambda request: (404, error("NoSuchBucket"), {}) if bucket.endswith(f"-{request.number}") else listing(request.query)


class Handler(http.server.BaseHTTPRequestHandler):
    log_message = lambda *_: None

    def do_GET(self):
        address = urllib.parse.urlsplit(self.path)
        self.bucket = address.path.split("/")[1] or self.headers["Host"].split(".")[0]
        self.server.requests[self.bucket] += 1
        self.number = self.server.requests[self.bucket]
        self.query = dict(urllib.parse.parse_qsl(address.query, keep_blank_values=True))
        self.token = self.query.get("continuation-token", "0")
        self.region = (self.headers.get("Authorization", "").split("/") + [""] * 3)[2]
        response = behaviour(self.bucket)(self)
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
