"""The servers of an object store: OpenStack Swift with its S3 interface. swift_store starts them, one process for each.

Needs Debian's own interpreter (/usr/bin/python3), which finds the modules of the package python3-swift.
"""

import array
import configparser
import os
import socket
import sys
import time

from local_store import AWKWARD, GUEST, OWNER, REGION, SECRETS

# Access key → groups. All users belong to one account, since accounts can't see each other's buckets.
_GROUPS = {
    OWNER: ["test", OWNER, ".admin", "AUTH_test"],
    GUEST: ["test", GUEST],
    AWKWARD: ["test", AWKWARD, ".admin", "AUTH_test"],
}

_PROXY_PIPELINE = ("catch_errors gatekeeper healthcheck cache proxy-logging listing_formats bulk s3api tempauth copy slo dlo "
                   "versioned_writes symlink proxy-logging proxy-server")
_PROXY_FILTERS = {
    "cache": {"paste.filter_factory": "swift_servers:memory_cache_filter"},
    "s3api": {"location": REGION},
    "versioned_writes": {"allow_object_versioning": "true"},
    "tempauth": {"user_test_tester": "testing .admin"},
}
_PARTITION_POWER = 4
KINDS = ("account", "container", "object")
_now = time.time


class MemoryCache:
    """Replaces memcached by the proxy's own memory: needs no service, and saves half of the internal requests."""

    def __init__(self):
        self._items = {}

    def get(self, key, *_args, **_kwargs):
        value, end = self._items.get(key, (None, 0))
        return value if not end or end > _now() else None

    def set(self, key, value, *_args, time=0, **_kwargs):  # Swift uses this keyword
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


class Files:
    """The configuration files of all servers, and the rings, which assign data to nodes."""

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
            # One of several nodes that doesn't respond is soon replaced by another. A single one is given time: on a busy
            # machine the proxy would answer 503 for it, and retries would change the number of requests.
            response, connection = ("1", "0.3") if self._nodes > 1 else ("60", "10")
            sections = {
                "DEFAULT": common,
                "pipeline:main": {"pipeline": _PROXY_PIPELINE},
                "app:proxy-server": {"use": "egg:swift#proxy", "account_autocreate": "true", "node_timeout": response,
                                     "recoverable_node_timeout": response, "conn_timeout": connection},
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
        for kind in KINDS:
            devices = [{"id": node, "region": 1, "zone": node, "weight": 1.0, "device": "disk", "meta": "",
                        "ip": "127.0.0.1", "port": self._ports[node, kind],
                        "replication_ip": "127.0.0.1", "replication_port": self._ports[node, kind]}
                       for node in range(self._nodes)]
            parts = 2**_PARTITION_POWER
            replicas = [array.array("H", ((replica + part) % self._nodes for part in range(parts)))
                        for replica in range(self._nodes)]
            RingData(replicas, devices, 32 - _PARTITION_POWER).save(os.path.join(self._folder, f"{kind}.ring.gz"))


def import_swift(folder):
    """Loads Swift's servers once, before the forks. The first import reads swift.conf."""
    from swift.common.utils import set_swift_dir
    set_swift_dir(folder)
    import swift.account.server
    import swift.container.server
    import swift.obj.server
    import swift.proxy.server  # noqa: F401


def serve(kind, configuration, listener):
    """Runs a server in this process until it is killed."""
    import eventlet.greenio
    import swift.common.middleware.tempauth as tempauth
    import swift.common.wsgi as wsgi
    import swift.obj.server

    sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
    listener.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
    wsgi.get_socket = lambda _conf: eventlet.greenio.GreenSocket(listener)
    wsgi.drop_privileges = lambda _user: None  # keep the user who started it
    os.fsync = os.fdatasync = lambda _file: None  # durability isn't needed; filling takes a third less time

    make = tempauth.TempAuth.__init__

    def with_users(self, app, conf):
        # The configuration file can't represent every secret.
        make(self, app, conf)
        self.users = {name: {"key": SECRETS[name], "url": "$HOST/v1/AUTH_test", "groups": groups} for name, groups in _GROUPS.items()}

    tempauth.TempAuth.__init__ = with_users
    extra = {"global_conf_callback": swift.obj.server.global_conf_callback} if kind == "object" else {}
    wsgi.run_wsgi(configuration, f"{kind}-server", verbose=True, **extra)
