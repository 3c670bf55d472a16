"""An object store that makes its listings up: as many keys as one likes, without storing any, each response after a delay.

Its bucket "generated" holds FOLDERS folders of FILES keys each: f0000/x0.csv and so on. Prints the endpoint and serves until it is
ended; with --once COMMAND... runs a command with AWS_ENDPOINT_URL_S3 set, reports its peak memory and the number of requests on standard
error, and ends with its exit status.
"""

import argparse
import asyncio
import bisect
import contextlib
import functools
import os
import resource
import subprocess
import sys
import threading
import urllib.parse
from collections.abc import Sequence
from xml.sax.saxutils import escape

from store_shapes import Keys

PAGE = 1000
# What a real store says of each key.
FACTS = ("<LastModified>2024-01-31T12:00:00.000Z</LastModified><ETag>&quot;d41d8cd98f00b204e9800998ecf8427e&quot;</ETag><Size>1</Size>"
         "<StorageClass>STANDARD</StorageClass>")


def first_after(keys: Sequence[str], text: str) -> int:
    return bisect.bisect_right(keys, text)


def page_of(keys: Sequence[str], prefix: str, delimiter: str, after: str, limit: int) -> tuple[list[str], list[str], bool]:
    """The keys and common prefixes of one page, and whether more follow."""
    listed: list[str] = []
    prefixes: list[str] = []
    at = max(first_after(keys, after), bisect.bisect_left(keys, prefix))
    while at < len(keys) and (key := keys[at]).startswith(prefix):
        if len(listed) + len(prefixes) == limit:
            return listed, prefixes, True
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


class GeneratedStore:
    """Serves on its own thread until the process ends, any number of requests at a time, and counts them. Signatures are not checked."""

    def __init__(self, buckets: dict[str, Sequence[str]], delay: float = 0):
        """`buckets` has the keys of each in byte order. `delay` is in seconds and may be changed at any time."""
        self._buckets = buckets
        self.delay = delay
        self.requests = 0
        loop = asyncio.new_event_loop()
        server = loop.run_until_complete(asyncio.start_server(self._serve, "127.0.0.1", 0))
        self.port = server.sockets[0].getsockname()[1]
        threading.Thread(target=loop.run_forever, daemon=True).start()

    def environment(self) -> dict[str, str]:
        """The environment variables that a client needs."""
        return {"AWS_ENDPOINT_URL_S3": f"http://127.0.0.1:{self.port}", "AWS_ACCESS_KEY_ID": "key", "AWS_SECRET_ACCESS_KEY": "secret",
                "AWS_REGION": "us-east-1", "AWS_SHARED_CREDENTIALS_FILE": os.devnull, "AWS_CONFIG_FILE": os.devnull}

    async def _serve(self, client: asyncio.StreamReader, to_client: asyncio.StreamWriter) -> None:
        with contextlib.suppress(asyncio.IncompleteReadError, ConnectionError):
            while True:
                method, target, _ = (await client.readuntil(b"\r\n\r\n")).split(b" ", 2)
                self.requests += 1
                if self.delay:
                    await asyncio.sleep(self.delay)
                status, body = self._response(target.decode()) if method == b"GET" else ("405 Method Not Allowed", b"")
                head = f"HTTP/1.1 {status}\r\nContent-Type: application/xml\r\nContent-Length: {len(body)}\r\n\r\n"
                to_client.write(head.encode() + body)
                await to_client.drain()
        to_client.close()

    # Pages are made once, so that the tools don't wait for a processor that is busy with them.
    @functools.lru_cache(maxsize=4000)
    def _response(self, target: str) -> tuple[str, bytes]:
        location = urllib.parse.urlsplit(target)
        keys = self._buckets.get(location.path.strip("/"))
        if keys is None:
            return "404 Not Found", b"<Error><Code>NoSuchBucket</Code></Error>"
        query = dict(urllib.parse.parse_qsl(location.query))
        after = query.get("continuation-token", query.get("marker", query.get("start-after", "")))
        listed, prefixes, more = page_of(keys, query.get("prefix", ""), query.get("delimiter", ""), after,
                                         min(int(query.get("max-keys", PAGE)), PAGE))
        parts = [f"<?xml version='1.0'?><ListBucketResult><IsTruncated>{str(more).lower()}</IsTruncated>"]
        if more:
            last = escape(max(listed[-1:] + prefixes[-1:]))
            parts.append(f"<NextContinuationToken>{last}</NextContinuationToken><NextMarker>{last}</NextMarker>")
        parts += [f"<Contents><Key>{escape(key)}</Key>{FACTS}</Contents>" for key in listed]
        parts += [f"<CommonPrefixes><Prefix>{escape(prefix)}</Prefix></CommonPrefixes>" for prefix in prefixes]
        return "200 OK", "".join([*parts, "</ListBucketResult>"]).encode()


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folders", type=int)
    parser.add_argument("files", type=int)
    parser.add_argument("--delay", type=float, default=0, metavar="MS")
    parser.add_argument("--once", nargs=argparse.REMAINDER, metavar="COMMAND")
    arguments = parser.parse_args()
    store = GeneratedStore({"generated": Keys(arguments.folders, arguments.files)}, arguments.delay / 1000)
    if not arguments.once:
        print(store.environment()["AWS_ENDPOINT_URL_S3"], flush=True)
        threading.Event().wait()
    environment = {name: value for name, value in os.environ.items() if not name.startswith("AWS_")}
    status = subprocess.run(arguments.once, env=environment | store.environment(), check=False).returncode
    peak = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss
    print(f"{store.requests} requests, {peak / 1024:.1f} MiB at the most", file=sys.stderr)
    return status


if __name__ == "__main__":
    sys.exit(main())
