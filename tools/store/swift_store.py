"""An object store on this machine: OpenStack Swift with its S3 interface, on loopback ports, in a temporary folder.

    with SwiftStore(nodes=1) as store:
        store.fill("bucket", {"data/a.csv": b"1,2"})
        subprocess.run([...], env={**os.environ, **store.environment()})

Run it by Debian's own interpreter (/usr/bin/python3), which sees the modules of the package python3-swift. Needs no rights and no
service. Ports are bound before any server starts, so several stores can start at the same moment. The servers are children that
the kernel kills when the process that made the store ends, however it ends.
"""

import array
import atexit
import base64
import concurrent.futures
import configparser
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

REGION = "us-east-1"

# Access key → secret and groups. All belong to one account, as buckets of different accounts never meet.
OWNER = "test:tester"
GUEST = "test:guest"
AWKWARD = "test:o'wner+%3A =&"
USERS = {
    OWNER: ("testing", ["test", OWNER, ".admin", "AUTH_test"]),
    # May sign requests, and is refused every bucket.
    GUEST: ("guest-secret", ["test", GUEST]),
    # What signing must not trip over.
    AWKWARD: ("s+e/c%2Fr:e t=\"ä&'", ["test", AWKWARD, ".admin", "AUTH_test"]),
}

_PROXY_PIPELINE = ("catch_errors gatekeeper healthcheck cache proxy-logging listing_formats bulk s3api tempauth copy slo dlo "
                   "versioned_writes symlink proxy-logging proxy-server")
_PROXY_FILTERS = {
    "cache": {"paste.filter_factory": "swift_store:memory_cache_filter"},
    "s3api": {"location": REGION},
    "versioned_writes": {"allow_object_versioning": "true"},
    "tempauth": {"user_test_tester": "testing .admin"},
}
_PARTITION_POWER = 4
_KINDS = ("account", "container", "object")
_now = time.time


class MemoryCache:
    """What Swift keeps in memcached, kept in the proxy itself: no service needed, and half the internal requests saved."""

    def __init__(self):
        self._items = {}

    def get(self, key, *_args, **_kwargs):
        value, end = self._items.get(key, (None, 0))
        return value if not end or end > _now() else None

    def set(self, key, value, *_args, time=0, **_kwargs):  # the keyword is Swift's
        self._items[key] = (value, time and _now() + time)

    def delete(self, key, *_args, **_kwargs):
        self._items.pop(key, None)


def memory_cache_filter(_global_conf, **_local_conf):
    cache = MemoryCache()

    def make(app):
        def call(env, start_response):
            env["swift.cache"] = cache
            return app(env, start_response)

        return call

    return make


def _keeps_attributes(folder):
    """Whether files below the folder can hold the extended attributes that Swift keeps an object's metadata in."""
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
    """A running store. `nodes` storage nodes hold as many replicas of everything; one proxy serves them all."""

    def __init__(self, nodes=1, page=1000):
        """`page` is the most keys in one answer. Only for the main thread: the servers end with the thread that forks them."""
        candidates = [tempfile.gettempdir(), "/var/tmp", os.path.dirname(os.path.abspath(__file__))]
        base = next((folder for folder in candidates if _keeps_attributes(folder)), None)
        if base is None:
            raise RuntimeError("no temporary folder keeps extended attributes; set TMPDIR to one that does")
        self.folder = tempfile.mkdtemp(prefix="korvan-store-", dir=base)
        self._processes = {}  # (node, kind) → process id; the proxy's node is None
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
        """What a client needs to know, in the customary variables."""
        return {
            "AWS_ACCESS_KEY_ID": user,
            "AWS_SECRET_ACCESS_KEY": USERS[user][0],
            "AWS_REGION": REGION,
            "AWS_ENDPOINT_URL_S3": self.endpoint,
            # Nothing of the user's own set-up may leak in.
            "AWS_SHARED_CREDENTIALS_FILE": os.devnull,
            "AWS_CONFIG_FILE": os.devnull,
        }

    def fill(self, bucket, objects, user=OWNER):
        """Makes the bucket and puts the objects, a mapping of keys to bytes or an iterable of keys."""
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
        """A node's machine fails: connections are refused from now on."""
        self._signal(node, signal.SIGKILL)

    def freeze(self, node):
        """A node stops answering, but its connections stand."""
        self._signal(node, signal.SIGSTOP)

    def thaw(self, node):
        self._signal(node, signal.SIGCONT)

    def kill_proxy(self):
        self._signal(None, signal.SIGKILL)

    def stop(self):
        """Ends every server and removes all that was stored. May be called again."""
        if os.getpid() != self._owner:
            return  # a forked child leaves its parent's store alone
        for place in list(self._processes):
            self._end(place, signal.SIGKILL)
        shutil.rmtree(self.folder, ignore_errors=True)
        if self._alive_end is not None:
            os.close(self._alive_end)
            os.waitpid(self._janitor, 0)
            self._alive_end = None
        atexit.unregister(self.stop)

    def _end(self, place, number):
        process = self._processes.pop(place)
        with contextlib.suppress(ProcessLookupError):
            os.kill(process, number)
        with contextlib.suppress(ChildProcessError):
            os.waitpid(process, 0)

    def _signal(self, node, number):
        for place in [place for place in self._processes if place[0] == node]:
            if number == signal.SIGKILL:
                self._end(place, number)
            else:
                os.kill(self._processes[place], number)

    def _start(self, nodes, page):
        places = [(node, kind) for node in range(nodes) for kind in _KINDS] + [(None, "proxy")]
        listeners = {place: _listening_socket() for place in places}
        ports = {place: listener.getsockname()[1] for place, listener in listeners.items()}
        self.port = ports[None, "proxy"]
        files = _Files(self.folder, nodes, ports, page)
        _import_swift(self.folder)
        files.write_rings()
        for place in places:
            self._processes[place] = self._fork(place, listeners, files.configuration(*place))
        for listener in listeners.values():
            listener.close()
        self._await_proxy()

    def _fork_janitor(self):
        """A child that removes the folder when this process and the servers have ended without doing so."""
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

    def _fork(self, place, listeners, configuration):
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
            listener = listeners.pop(place)
            for other in listeners.values():
                other.close()
            _serve(place[1], configuration, listener)
        except BaseException as error:  # pylint: disable=broad-except
            os.write(2, f"{place}: {error!r}\n".encode())
        os._exit(1)

    def _await_proxy(self):
        """The listening sockets hold requests back until their server is there, so one answered by the disks tells that all are."""
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


class _Files:
    """The configuration of all servers, and the rings that say which node holds what."""

    def __init__(self, folder, nodes, ports, page):
        self._folder, self._nodes, self._ports, self._page = folder, nodes, ports, page
        for node in range(nodes):
            os.makedirs(os.path.join(folder, f"node{node}", "disk"))
        self._write("swift.conf", {
            "swift-hash": {"swift_hash_path_prefix": "a", "swift_hash_path_suffix": "b"},
            "storage-policy:0": {"name": "all", "default": "yes"},
        })

    def _write(self, name, sections):
        parser = configparser.RawConfigParser()
        parser.optionxform = str
        parser.read_dict(sections)
        path = os.path.join(self._folder, name)
        with open(path, "w", encoding="utf-8") as file:
            parser.write(file)
        return path

    def configuration(self, node, kind):
        common = {"bind_ip": "127.0.0.1", "bind_port": str(self._ports[node, kind]), "workers": "0", "swift_dir": self._folder,
                  "log_level": "ERROR", "log_address": os.path.join(self._folder, "nothing")}
        if kind == "proxy":
            sections = {
                "DEFAULT": common,
                "pipeline:main": {"pipeline": _PROXY_PIPELINE},
                "app:proxy-server": {"use": "egg:swift#proxy", "account_autocreate": "true", "node_timeout": "1",
                                     "recoverable_node_timeout": "1", "conn_timeout": "0.3"},
            }
            for name in dict.fromkeys(_PROXY_PIPELINE.split()[:-1]):
                egg = {"proxy-logging": "proxy_logging"}.get(name, name)
                settings = dict(_PROXY_FILTERS.get(name, {}))
                if name == "s3api":
                    settings["max_bucket_listing"] = str(self._page)
                use = {} if "paste.filter_factory" in settings else {"use": f"egg:swift#{egg}"}
                sections[f"filter:{name}"] = {**use, **settings}
            return self._write("proxy.conf", sections)
        return self._write(f"{kind}{node}.conf", {
            "DEFAULT": {**common, "devices": os.path.join(self._folder, f"node{node}"), "mount_check": "false",
                        "disable_fallocate": "true", "db_preallocation": "off"},
            "pipeline:main": {"pipeline": f"{kind}-server"},
            f"app:{kind}-server": {"use": f"egg:swift#{kind}"},
        })

    def write_rings(self):
        from swift.common.ring.ring import RingData
        for kind in _KINDS:
            devices = [{"id": node, "region": 1, "zone": node, "weight": 1.0, "device": "disk", "meta": "",
                        "ip": "127.0.0.1", "port": self._ports[node, kind],
                        "replication_ip": "127.0.0.1", "replication_port": self._ports[node, kind]}
                       for node in range(self._nodes)]
            parts = 2**_PARTITION_POWER
            replicas = [array.array("H", ((replica + part) % self._nodes for part in range(parts)))
                        for replica in range(self._nodes)]
            RingData(replicas, devices, 32 - _PARTITION_POWER).save(os.path.join(self._folder, f"{kind}.ring.gz"))


def _import_swift(folder):
    """Loads Swift's servers once, before the forks; swift.conf is read at the first import."""
    from swift.common.utils import set_swift_dir
    set_swift_dir(folder)
    import swift.account.server
    import swift.container.server
    import swift.obj.server
    import swift.proxy.server  # noqa: F401


def _serve(kind, configuration, listener):
    """Serves in this process until it is killed."""
    import eventlet.greenio
    import swift.common.middleware.tempauth as tempauth
    import swift.common.wsgi as wsgi
    import swift.obj.server

    sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
    listener.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
    wsgi.get_socket = lambda _conf: eventlet.greenio.GreenSocket(listener)
    wsgi.drop_privileges = lambda _user: None  # it runs as whoever started it
    os.fsync = os.fdatasync = lambda _file: None  # nothing here must outlive a power cut, and a third of the time to fill is saved

    make = tempauth.TempAuth.__init__

    def with_users(self, app, conf):
        # The configuration file can't write every secret.
        make(self, app, conf)
        self.users = {name: {"key": secret, "url": "$HOST/v1/AUTH_test", "groups": groups}
                      for name, (secret, groups) in USERS.items()}

    tempauth.TempAuth.__init__ = with_users
    extra = {"global_conf_callback": swift.obj.server.global_conf_callback} if kind == "object" else {}
    wsgi.run_wsgi(configuration, f"{kind}-server", verbose=True, **extra)


class StoreError(Exception):
    """The store refused a request."""


class Client:
    """Enough of S3 to fill a store: one connection, requests signed in the old way (signature version 2), which is short."""

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
        with self._connection.getresponse() as answer:
            content = answer.read()
            if answer.status >= 300:
                raise StoreError(f"{method} {path}: {answer.status} {content[:500]!r}")
            return content


def main():
    import argparse
    import subprocess

    import sample_trees

    parser = argparse.ArgumentParser(description="Starts an object store on this machine, filled with a small tree. Without a command it "
                                     "prints the environment to use and serves until ctrl-c.")
    parser.add_argument("--nodes", type=int, default=1, help="storage nodes, each with a replica of everything (1)")
    parser.add_argument("--bucket", default="sample", help="the bucket that holds the tree (sample)")
    parser.add_argument("command", nargs="*", metavar="COMMAND", help="what to run in that environment; the store ends with it")
    arguments = parser.parse_args()

    signal.signal(signal.SIGTERM, lambda *_: sys.exit(128 + signal.SIGTERM))
    with contextlib.suppress(KeyboardInterrupt), SwiftStore(arguments.nodes) as store:
        store.fill(arguments.bucket, sample_trees.sample())
        if arguments.command:
            command = subprocess.Popen(arguments.command, env={**os.environ, **store.environment()})
            signal.signal(signal.SIGINT, signal.SIG_IGN)  # ctrl-c is the command's to answer
            status = command.wait()
            return status if status >= 0 else 128 - status
        for name, value in store.environment().items():
            print(f"export {name}={shlex.quote(value)}")
        print(f"# s3://{arguments.bucket}/ is served until ctrl-c", flush=True)
        while True:
            signal.pause()
    return 0


if __name__ == "__main__":
    sys.exit(main())
