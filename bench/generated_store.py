"""An object store that makes its listings up: as many keys as one likes, without storing any.

Its only bucket, "generated", holds FOLDERS folders of FILES keys each: folder000000/file000000.csv and so on. Prints the endpoint and serves
until it is ended; with --once COMMAND... runs a command with AWS_ENDPOINT_URL_S3 set, reports its peak memory and the number of requests
on standard error, and ends with its exit status.
"""

import argparse
import bisect
import http.server
import os
import resource
import subprocess
import sys
import threading
import urllib.parse
from xml.sax.saxutils import escape

PAGE = 1000


class Keys:
    """The keys in order, made up one by one: a sequence, so that `bisect` can search it."""

    def __init__(self, folders: int, files: int):
        self.folders, self.files = folders, files

    def __len__(self) -> int:
        return self.folders * self.files

    def __getitem__(self, index: int) -> str:
        folder, file = divmod(index, self.files)
        return f"folder{folder:06}/file{file:06}.csv"


def first_after(keys: Keys, text: str) -> int:
    return bisect.bisect_right(keys, text)


def page_of(keys: Keys, prefix: str, delimiter: str, after: str, limit: int) -> tuple[list[str], list[str], bool]:
    """The keys and common prefixes of one page, and whether more follow."""
    listed: list[str] = []
    prefixes: list[str] = []
    at = max(first_after(keys, after), bisect.bisect_left(keys, prefix))
    while at < len(keys) and keys[at].startswith(prefix):
        if len(listed) + len(prefixes) == limit:
            return listed, prefixes, True
        key = keys[at]
        end = key.find(delimiter, len(prefix)) if delimiter else -1
        if end < 0:
            listed.append(key)
            at += 1
        else:
            common = key[:end + len(delimiter)]
            if common != after:  # the page before this one ended with it
                prefixes.append(common)
            at = first_after(keys, common + "\U0010ffff")
    return listed, prefixes, False


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    log_message = lambda *_: None

    def do_GET(self):
        self.server.requests += 1
        query = dict(urllib.parse.parse_qsl(urllib.parse.urlsplit(self.path).query))
        after = query.get("continuation-token", query.get("start-after", ""))
        keys, prefixes, more = page_of(self.server.keys, query.get("prefix", ""), query.get("delimiter", ""), after,
                                       min(int(query.get("max-keys", PAGE)), PAGE))
        body = "".join(f"<Contents><Key>{escape(key)}</Key><Size>1</Size></Contents>" for key in keys)
        body += "".join(f"<CommonPrefixes><Prefix>{escape(prefix)}</Prefix></CommonPrefixes>" for prefix in prefixes)
        token = f"<NextContinuationToken>{escape(max(keys[-1:] + prefixes[-1:]))}</NextContinuationToken>" if more else ""
        answer = (f"<?xml version='1.0'?><ListBucketResult><IsTruncated>{str(more).lower()}</IsTruncated>{token}{body}"
                  "</ListBucketResult>").encode()
        self.send_response(200)
        self.send_header("Content-Length", str(len(answer)))
        self.end_headers()
        self.wfile.write(answer)


class GeneratedStore(http.server.ThreadingHTTPServer):
    def __init__(self, folders: int, files: int):
        super().__init__(("127.0.0.1", 0), Handler)
        self.keys = Keys(folders, files)
        self.requests = 0


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folders", type=int)
    parser.add_argument("files", type=int)
    parser.add_argument("--once", nargs=argparse.REMAINDER, metavar="COMMAND")
    arguments = parser.parse_args()
    store = GeneratedStore(arguments.folders, arguments.files)
    endpoint = f"http://127.0.0.1:{store.server_port}"
    if not arguments.once:
        print(endpoint, flush=True)
        store.serve_forever()
    threading.Thread(target=store.serve_forever, daemon=True).start()
    environment = {name: value for name, value in os.environ.items() if not name.startswith("AWS_")}
    environment |= {"AWS_ENDPOINT_URL_S3": endpoint, "AWS_ACCESS_KEY_ID": "key", "AWS_SECRET_ACCESS_KEY": "secret", "AWS_REGION": "anywhere"}
    status = subprocess.run(arguments.once, env=environment, check=False).returncode
    peak = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss
    print(f"{store.requests} requests, {peak / 1024:.1f} MiB at the most", file=sys.stderr)
    return status


if __name__ == "__main__":
    sys.exit(main())
