"""What the object stores on this machine have in common: a temporary folder, server processes, users, and a client that fills them.

The servers are child processes, which the kernel kills when the process that created the store ends for whatever reason.
"""

import atexit
import base64
import concurrent.futures
import contextlib
import ctypes
import email.utils
import hmac
import http.client
import os
import shutil
import signal
import sys
import tempfile
import threading
import time
import urllib.parse

REGION = "us-east-1"

# Access keys. The owner's buckets are the stores of most tests.
OWNER = "test:tester"
# Valid credentials without access to any bucket.
GUEST = "test:guest"
# Characters that are easily signed wrongly.
AWKWARD = "test:o'wner+%3A =&"
SECRETS = {OWNER: "testing", GUEST: "guest-secret", AWKWARD: "s+e/c%2Fr:e t=\"ä&'"}


class LocalStore:
    """A running store. A derived class starts its servers in `_start` and sets `port`."""

    def __init__(self, base=None):
        """`base`: where the store's folder is made. Main thread only, since the servers end with the thread that forks them."""
        self.folder = tempfile.mkdtemp(prefix="korvan-store-", dir=base)
        self._processes = {}  # name of the server → process id
        self._owner = os.getpid()
        self._fork_janitor()
        atexit.register(self.stop)
        try:
            self._start()
            self._await_response()
        except BaseException:
            self.stop()
            raise

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stop()

    @property
    def endpoint(self):
        return f"http://127.0.0.1:{self.port}"

    def environment(self, user=OWNER):
        """The environment variables that a client needs."""
        return {
            "AWS_ACCESS_KEY_ID": user,
            "AWS_SECRET_ACCESS_KEY": SECRETS[user],
            "AWS_REGION": REGION,
            "AWS_ENDPOINT_URL_S3": self.endpoint,
            # The user's own configuration must not interfere.
            "AWS_SHARED_CREDENTIALS_FILE": os.devnull,
            "AWS_CONFIG_FILE": os.devnull,
        }

    def fill(self, bucket, objects, user=OWNER):
        """Creates the bucket and its objects: a mapping of keys to contents, or an iterable of keys."""
        contents = objects if isinstance(objects, dict) else dict.fromkeys(objects, b"")
        connections = threading.local()

        def put(item):
            if not hasattr(connections, "client"):
                connections.client = Client(self.endpoint, user)
            connections.client.request("PUT", bucket, *item)

        Client(self.endpoint, user).request("PUT", bucket)
        with concurrent.futures.ThreadPoolExecutor(4) as pool:
            for _ in pool.map(put, contents.items()):
                pass

    def stop(self):
        """Ends every server and removes everything that was stored. May be called repeatedly."""
        if os.getpid() != self._owner:
            return  # this is a forked child: the store belongs to its parent
        for server in list(self._processes):
            self._end(server, signal.SIGKILL)
        shutil.rmtree(self.folder, ignore_errors=True)
        if self._alive_end is not None:
            os.close(self._alive_end)
            os.waitpid(self._janitor, 0)
            self._alive_end = None
        atexit.unregister(self.stop)

    def _end(self, server, number):
        process = self._processes.pop(server)
        with contextlib.suppress(ProcessLookupError):
            os.kill(process, number)
        with contextlib.suppress(ChildProcessError):
            os.waitpid(process, 0)

    def _fork_janitor(self):
        """Forks a child that removes the folder after this process and the servers, should they not have done so."""
        ended, self._alive_end = os.pipe()
        self._janitor = os.fork()
        if self._janitor:
            os.close(ended)
            return
        with contextlib.suppress(BaseException):
            os.setsid()
            os.close(self._alive_end)
            null = os.open(os.devnull, os.O_RDWR)
            for number in range(3):
                os.dup2(null, number)
            os.read(ended, 1)
            shutil.rmtree(self.folder, ignore_errors=True)
        os._exit(0)

    def _fork(self, name, run):
        """Starts a server: a child process that runs `run`, which doesn't return."""
        parent = os.getpid()
        sys.stdout.flush()
        sys.stderr.flush()
        process = os.fork()
        if process:
            self._processes[name] = process
            return
        try:
            ctypes.CDLL(None).prctl(1, signal.SIGKILL)  # PR_SET_PDEATHSIG
            if os.getppid() != parent:
                os._exit(1)
            for number in (signal.SIGINT, signal.SIGTERM):
                signal.signal(number, signal.SIG_IGN if number == signal.SIGINT else signal.SIG_DFL)
            log = os.open(os.path.join(self.folder, "log"), os.O_WRONLY | os.O_CREAT | os.O_APPEND, 0o600)
            null = os.open(os.devnull, os.O_RDONLY)
            for old, new in ((null, 0), (log, 1), (log, 2)):
                os.dup2(old, new)
            run()
        except BaseException as error:  # pylint: disable=broad-except
            os.write(2, f"{name}: {error!r}\n".encode())
        os._exit(1)

    def _await_response(self):
        """Waits for a response that all servers took part in."""
        end = time.monotonic() + 60
        while True:
            try:
                Client(self.endpoint, OWNER, timeout=5).request("GET", "")
                return
            except (OSError, http.client.HTTPException, StoreError) as error:
                if time.monotonic() > end or not self._alive():
                    raise RuntimeError(f"the store did not start: {error}\n{self.log()}") from error
                time.sleep(0.05)

    def _alive(self):
        return all(os.waitpid(process, os.WNOHANG) == (0, 0) for process in self._processes.values())

    def log(self):
        with contextlib.suppress(OSError), open(os.path.join(self.folder, "log"), errors="replace") as file:
            return file.read()[-4000:]
        return ""


class StoreError(Exception):
    """The store rejected a request."""


class Client:
    """Enough of S3 to fill a store: one connection, and requests signed with signature version 2, as it is the shortest."""

    def __init__(self, endpoint, user, timeout=60):
        self._connection = http.client.HTTPConnection(urllib.parse.urlsplit(endpoint).netloc, timeout=timeout)
        self._user = user

    def request(self, method, bucket, key=None, body=b"", setting=""):
        """`setting`: what to set of a bucket instead of storing an object, such as "?policy"."""
        path = "/" + urllib.parse.quote(bucket, safe="") + ("" if key is None else "/" + urllib.parse.quote(key)) + setting
        date = email.utils.formatdate(usegmt=True)
        text = f"{method}\n\n\n{date}\n{path}"
        digest = hmac.new(SECRETS[self._user].encode(), text.encode(), "sha1").digest()
        headers = {"Date": date, "Authorization": f"AWS {self._user}:{base64.b64encode(digest).decode()}"}
        self._connection.request(method, path, body, headers)
        with self._connection.getresponse() as response:
            content = response.read()
            if response.status >= 300:
                raise StoreError(f"{method} {path}: {response.status} {content[:500]!r}")
            return content
