"""An object store on this machine: OpenStack Swift with its S3 interface, on loopback ports and in a temporary folder.

    with SwiftStore(nodes=1) as store:
        store.fill("bucket", {"data/a.csv": b"1,2"})
        subprocess.run([...], env={**os.environ, **store.environment()})

Needs Debian's own interpreter (/usr/bin/python3), which finds the modules of the package python3-swift, but no privileges
and no system service. Ports are bound before any server starts, so several stores can start at the same time. The servers
are child processes, which the kernel kills when the process that created the store ends for whatever reason.
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
import shlex
import shutil
import signal
import socket
import sys
import tempfile
import threading
import time
import urllib.parse

import swift_servers
from swift_servers import AWKWARD, GUEST, OWNER, REGION, USERS  # noqa: F401


def _supports_attributes(folder):
    """Whether files in the folder can have the extended attributes in which Swift stores an object's metadata."""
    try:
        with tempfile.NamedTemporaryFile(dir=folder) as file:
            os.setxattr(file.fileno(), b"user.swift.metadata", b"x" * 1024)
        return True
    except OSError:
        return False


def _listening_socket():
    listener = socket.socket(socket.AF_INET, socket.SOCK_STREAM)
    listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    listener.bind(("127.0.0.1", 0))
    listener.listen(1024)
    return listener


class SwiftStore:
    """A running store: `nodes` storage nodes, each with a replica of everything, behind one proxy."""

    def __init__(self, nodes=1, page=1000):
        """`page`: the most keys in one response. Main thread only, since the servers end with the thread that forks them."""
        candidates = [tempfile.gettempdir(), "/var/tmp", os.path.dirname(os.path.abspath(__file__))]
        base = next((folder for folder in candidates if _supports_attributes(folder)), None)
        if base is None:
            raise RuntimeError("no temporary folder supports extended attributes: set TMPDIR to one that does")
        self.folder = tempfile.mkdtemp(prefix="korvan-store-", dir=base)
        self._processes = {}  # (node, kind) → process id; the node of the proxy is None
        self._owner = os.getpid()
        self._fork_janitor()
        atexit.register(self.stop)
        try:
            self._start(nodes, page)
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
            "AWS_SECRET_ACCESS_KEY": USERS[user][0],
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

    def kill(self, node):
        """Kills a node: it refuses connections from now on."""
        self._signal(node, signal.SIGKILL)

    def freeze(self, node):
        """A node stops responding, but its connections stay open."""
        self._signal(node, signal.SIGSTOP)

    def thaw(self, node):
        self._signal(node, signal.SIGCONT)

    def kill_proxy(self):
        self._signal(None, signal.SIGKILL)

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

    def _signal(self, node, number):
        for server in [server for server in self._processes if server[0] == node]:
            if number == signal.SIGKILL:
                self._end(server, number)
            else:
                os.kill(self._processes[server], number)

    def _start(self, nodes, page):
        servers = [(node, kind) for node in range(nodes) for kind in swift_servers.KINDS] + [(None, "proxy")]
        listeners = {server: _listening_socket() for server in servers}
        ports = {server: listener.getsockname()[1] for server, listener in listeners.items()}
        self.port = ports[None, "proxy"]
        files = swift_servers.Files(self.folder, nodes, ports, page)
        swift_servers.import_swift(self.folder)
        files.write_rings()
        for server in servers:
            self._processes[server] = self._fork(server, listeners, files.configuration(*server))
        for listener in listeners.values():
            listener.close()
        self._await_proxy()

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

    def _fork(self, server, listeners, configuration):
        parent = os.getpid()
        sys.stdout.flush()
        sys.stderr.flush()
        process = os.fork()
        if process:
            return process
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
            listener = listeners.pop(server)
            for other in listeners.values():
                other.close()
            swift_servers.serve(server[1], configuration, listener)
        except BaseException as error:  # pylint: disable=broad-except
            os.write(2, f"{server}: {error!r}\n".encode())
        os._exit(1)

    def _await_proxy(self):
        """Waits for a response that all servers took part in. Until a server runs, its socket keeps requests waiting."""
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

    def request(self, method, bucket, key=None, body=b""):
        path = "/" + urllib.parse.quote(bucket, safe="") + ("" if key is None else "/" + urllib.parse.quote(key))
        date = email.utils.formatdate(usegmt=True)
        text = f"{method}\n\n\n{date}\n{path}"
        digest = hmac.new(USERS[self._user][0].encode(), text.encode(), "sha1").digest()
        headers = {"Date": date, "Authorization": f"AWS {self._user}:{base64.b64encode(digest).decode()}"}
        self._connection.request(method, path, body, headers)
        with self._connection.getresponse() as response:
            content = response.read()
            if response.status >= 300:
                raise StoreError(f"{method} {path}: {response.status} {content[:500]!r}")
            return content


def main():
    import argparse
    import subprocess

    import sample_trees

    parser = argparse.ArgumentParser(description="Starts an object store on this machine, with a small tree in it. Without a command it "
                                     "prints the environment variables for clients and runs until ctrl-c.")
    parser.add_argument("--nodes", type=int, default=1, help="number of storage nodes, each with a replica of everything (default: 1)")
    parser.add_argument("--bucket", default="sample", help="bucket for the tree (default: sample)")
    parser.add_argument("command", nargs="*", metavar="COMMAND", help="a command to run in that environment; the store ends with it")
    arguments = parser.parse_args()

    signal.signal(signal.SIGTERM, lambda *_: sys.exit(128 + signal.SIGTERM))
    with contextlib.suppress(KeyboardInterrupt), SwiftStore(arguments.nodes) as store:
        store.fill(arguments.bucket, sample_trees.sample())
        if arguments.command:
            command = subprocess.Popen(arguments.command, env={**os.environ, **store.environment()})
            signal.signal(signal.SIGINT, signal.SIG_IGN)  # ctrl-c is for the command
            status = command.wait()
            return status if status >= 0 else 128 - status
        for name, value in store.environment().items():
            print(f"export {name}={shlex.quote(value)}")
        print(f"# s3://{arguments.bucket}/ is available until ctrl-c", flush=True)
        while True:
            signal.pause()
    return 0


if __name__ == "__main__":
    sys.exit(main())
