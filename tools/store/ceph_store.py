"""An object store on this machine: Ceph's gateway with one monitor and one storage daemon, which keeps everything in memory.

    with CephStore() as store:
        store.fill("bucket", {"data/a.csv": b"1,2"})
        subprocess.run([...], env={**os.environ, **store.environment()})

Needs Debian's ceph-mon, ceph-osd, radosgw and ceph-common, but no privileges and no system service: the daemons are child
processes on loopback ports. Starts in some ten seconds.
"""

import configparser
import json
import os
import socket
import subprocess
import uuid

from local_store import OWNER, SECRETS, Client, LocalStore


def _free_port():
    with socket.create_server(("127.0.0.1", 0)) as listener:
        return listener.getsockname()[1]


def _name(user):
    return f"user{list(SECRETS).index(user)}"


class CephStore(LocalStore):
    """A running store. Each access key is a user of its own, who owns the buckets that it creates."""

    def __init__(self, page=1000):
        """`page`: the most keys in one response."""
        self._page = page
        super().__init__()

    def allow(self, bucket, prefix="*", user=None, owner=OWNER):
        """Lets the user list the bucket where the requested prefix has the form of `prefix`; without a user anyone, unsigned."""
        who = "*" if user is None else {"AWS": [f"arn:aws:iam:::user/{_name(user)}"]}
        statement = {"Effect": "Allow", "Principal": who, "Action": "s3:ListBucket", "Resource": f"arn:aws:s3:::{bucket}"}
        if prefix != "*":
            statement["Condition"] = {"StringLike": {"s3:prefix": prefix}}
        policy = json.dumps({"Version": "2012-10-17", "Statement": [statement]})
        Client(self.endpoint, owner).request("PUT", bucket, body=policy.encode(), setting="?policy")

    def _start(self):
        self.port, monitor = _free_port(), f"[v2:127.0.0.1:{_free_port()}]"
        cluster, disk = str(uuid.uuid4()), str(uuid.uuid4())
        self._configuration = self._write_configuration(cluster, monitor)
        for name in ("mon", "osd", "rgw"):
            os.mkdir(os.path.join(self.folder, name))
        map_file = os.path.join(self.folder, "monmap")
        self._run("monmaptool", "--create", "--fsid", cluster, "--addv", "a", monitor, map_file)
        self._run("ceph-mon", "--mkfs", "--id", "a", "--monmap", map_file)
        self._daemon("ceph-mon", "--id", "a")
        self._run("ceph", "osd", "new", disk)
        self._run("ceph-osd", "--mkfs", "--id", "0", "--osd-uuid", disk)
        self._daemon("ceph-osd", "--id", "0")
        for key, secret in SECRETS.items():
            self._run("radosgw-admin", "user", "create", f"--uid={_name(key)}", f"--display-name={_name(key)}",
                      f"--access-key={key}", f"--secret={secret}")
        self._daemon("radosgw", "--name", "client.rgw")

    def _write_configuration(self, cluster, monitor):
        folder = self.folder
        parser = configparser.RawConfigParser()
        parser.read_dict({
            "global": {
                "fsid": cluster, "mon_host": monitor, "public_addr": "127.0.0.1",
                # The daemons trust each other; the gateway's users have secrets all the same.
                "auth_cluster_required": "none", "auth_service_required": "none", "auth_client_required": "none",
                "ms_mon_client_mode": "crc",
                "run_dir": folder, "admin_socket": "", "crash_dir": folder, "log_file": f"{folder}/$name.log",
                "mon_data": f"{folder}/mon", "osd_data": f"{folder}/osd", "rgw_data": f"{folder}/rgw",
                "osd_objectstore": "memstore", "memstore_device_bytes": str(4 << 30), "mon_data_avail_warn": "1",
                "osd_pool_default_size": "1", "osd_pool_default_min_size": "1", "mon_allow_pool_size_one": "true",
                "osd_pool_default_pg_num": "8", "osd_pool_default_pg_autoscale_mode": "off", "mon_max_pg_per_osd": "1000",
                "osd_crush_chooseleaf_type": "0", "paxos_propose_interval": "0.05",
            },
            "client.rgw": {
                "rgw_frontends": f"beast endpoint=127.0.0.1:{self.port}", "rgw_max_listing_results": str(self._page),
                "rgw_dns_name": "localhost",
            },
        })
        path = os.path.join(folder, "ceph.conf")
        with open(path, "w", encoding="utf-8") as file:
            parser.write(file)
        return path

    def _run(self, *command):
        done = subprocess.run(command, env={**os.environ, "CEPH_CONF": self._configuration}, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, timeout=120, check=False)
        if done.returncode:
            raise RuntimeError(f"{command[0]} failed: {done.stdout.decode(errors='replace')[-2000:]}")

    def _daemon(self, program, *arguments):
        self._fork(program, lambda: os.execvp(program, [program, "--conf", self._configuration, "--foreground", *arguments]))
