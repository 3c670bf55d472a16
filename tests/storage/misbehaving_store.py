"""An object store that misbehaves in a chosen way. The bucket names the behaviour, so one server serves every case.

Each bucket holds the objects of `NAMES`. Every request is kept in `requests`, by bucket.
"""

import collections
import hashlib
import hmac
import http.server
import ssl
import threading
import time
import urllib.parse

SECRET = "se+cr/e%t: x"
NAMES = ["three", "tree", "two"]


def page(names=NAMES, token=None, truncated=False):
    inside = "".join(f"<Contents><Key>{name}</Key></Contents>" for name in names)
    inside += f"<IsTruncated>{'true' if token or truncated else 'false'}</IsTruncated>"
    if token:
        inside += f"<NextContinuationToken>{token}</NextContinuationToken>"
    return f"<?xml version='1.0'?><ListBucketResult>{inside}</ListBucketResult>".encode()


def error(code):
    return f"<Error><Code>{code}</Code><Message>as told</Message><RequestId>id-{code}</RequestId></Error>".encode()


def is_signed(handler):
    """Whether the request carries the signature that its own words and the secret make (AWS Signature Version 4)."""
    authorization = handler.headers.get("Authorization", "")
    parts = dict(part.strip().split("=", 1) for part in authorization.partition(" ")[2].split(","))
    names = parts["SignedHeaders"].split(";")
    path, _, query = handler.path.partition("?")
    headers = "".join(f"{name}:{handler.headers[name].strip()}\n" for name in names)
    empty = hashlib.sha256(b"").hexdigest()
    canonical = "\n".join([handler.command, path, query, headers, parts["SignedHeaders"], empty])
    scope = parts["Credential"].split("/", 1)[1]
    digest = hashlib.sha256(canonical.encode()).hexdigest()
    text = "\n".join(["AWS4-HMAC-SHA256", handler.headers["X-Amz-Date"], scope, digest])
    key = ("AWS4" + SECRET).encode()
    for word in scope.split("/"):
        key = hmac.new(key, word.encode(), hashlib.sha256).digest()
    return hmac.compare_digest(hmac.new(key, text.encode(), hashlib.sha256).hexdigest(), parts["Signature"])


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, *_):
        pass

    def do_GET(self):
        address = urllib.parse.urlsplit(self.path)
        self.bucket = urllib.parse.unquote(address.path.split("/")[1])
        self.query = dict(urllib.parse.parse_qsl(address.query))
        self.server.requests[self.bucket].append(time.monotonic())
        self.count = len(self.server.requests[self.bucket])
        try:
            getattr(self, "serve_" + self.bucket.replace("-", "_"), self.serve_unknown)()
        except OSError:  # the client has gone
            self.hang_up()

    def answer(self, status, body, content_type="application/xml", length=None, **headers):
        self.send_response(status)
        self.send_header("Content-Type", content_type)
        self.send_header("Content-Length", str(len(body) if length is None else length))
        for name, value in headers.items():
            self.send_header(name.replace("_", "-"), value)
        self.end_headers()
        self.wfile.write(body)

    def hang_up(self):
        self.close_connection = True

    def serve_unknown(self):
        self.answer(404, error("NoSuchBucket"))

    def serve_well(self):
        self.answer(200, page())

    def serve_pages(self):
        token = self.query.get("continuation-token", "0")
        index = int(token)
        self.answer(200, page([NAMES[index]], str(index + 1) if index < 2 else None))

    def serve_signed(self):
        self.answer(200, page()) if is_signed(self) else self.answer(403, error("SignatureDoesNotMatch"))

    def serve_slow(self):
        time.sleep(2)
        self.serve_well()

    def serve_trickle(self):
        body = page()
        self.send_response(200)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        for i in range(0, len(body), 20):
            self.wfile.write(body[i:i + 20])
            time.sleep(0.1)

    def serve_silent(self):
        self.server.stopped.wait(60)
        self.hang_up()

    def serve_busy_thrice(self):
        self.answer(503, error("SlowDown")) if self.count <= 3 else self.serve_well()

    def serve_busy(self):
        self.answer(503, error("SlowDown"))

    def serve_retry_after(self):
        self.answer(503, b"", "text/plain", Retry_After="1") if self.count == 1 else self.serve_well()

    def serve_retry_after_an_hour(self):
        self.answer(429, b"later", "text/plain", Retry_After="3600")

    def serve_dropped_once(self):
        self.hang_up() if self.count == 1 else self.serve_well()

    def serve_cut(self):
        self.answer(200, page()[:-20], length=len(page()))
        self.hang_up()

    def serve_cut_once(self):
        self.serve_cut() if self.count == 1 else self.serve_well()

    def serve_cut_second_page(self):
        self.answer(200, page(["three"], "1")) if "continuation-token" not in self.query else self.serve_cut()

    def serve_half_xml(self):
        self.answer(200, page()[:-20])

    def serve_garbage(self):
        self.answer(200, bytes(range(256)) * 10)

    def serve_no_http(self):
        self.wfile.write(b"SSH-2.0-banner\r\n")
        self.hang_up()

    def serve_sign_in(self):
        self.answer(200, b"<html><body>Please sign in</body></html>", "text/html")

    def serve_same_token(self):
        self.answer(200, page([f"t{self.count:06}"], "again"))

    def serve_same_page(self):
        self.answer(200, page(NAMES, f"token{self.count}"))

    def serve_empty_for_ever(self):
        self.answer(200, page([], f"token{self.count}"))

    def serve_no_token(self):
        self.answer(200, page(truncated=True))

    def serve_elsewhere(self):
        self.answer(200, page(["elsewhere"]))

    def serve_flood(self):
        self.send_response(200)
        self.end_headers()
        while not self.server.stopped.is_set():
            self.wfile.write(b"<Contents>" * 100000)
        self.hang_up()

    def serve_denied(self):
        self.answer(403, b"Forbidden by the guard", "text/plain", x_amz_request_id="id-guard")

    def serve_bad_request(self):
        self.answer(412, b"Bad URL", "text/plain")

    def serve_moved(self):
        self.answer(301, error("PermanentRedirect"), x_amz_bucket_region="eu-far-1", Location="http://127.0.0.1:1/")

    def serve_echo(self):
        words = f"you sent {SECRET} and {self.headers['x-amz-security-token']}"
        self.answer(400, error("Echo").replace(b"as told", words.encode()))


class MisbehavingStore:
    """The server, on a loopback port that it finds free, for the length of a `with` statement.

    `certificate`: a file with a certificate and its key, to serve HTTPS.
    """

    def __init__(self, certificate=None):
        self.certificate = certificate

    def __enter__(self):
        self.server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self.server.daemon_threads = True
        self.server.requests = self.requests = collections.defaultdict(list)
        self.server.stopped = threading.Event()
        self.endpoint = f"http{'s' if self.certificate else ''}://127.0.0.1:{self.server.server_address[1]}"
        if self.certificate:
            context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
            context.load_cert_chain(self.certificate)
            self.server.socket = context.wrap_socket(self.server.socket, server_side=True)
        threading.Thread(target=self.server.serve_forever, daemon=True).start()
        return self

    def __exit__(self, *_):
        self.server.stopped.set()
        self.server.shutdown()
        self.server.server_close()
