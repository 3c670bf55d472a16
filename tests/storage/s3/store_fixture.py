"""The store that all tests of a ctest run share.

    store_fixture.py {start|stop} FOLDER
    store_fixture.py run FOLDER COMMAND...    runs the command with the environment of a client

It also ends when the process that started it does (ctest), so that an interrupted run leaves nothing behind. FOLDER/mirror
is a local copy of the bucket "mirror"; KORVAN_TEST_MIRROR names it. The store is Swift, or Ceph if KORVAN_TEST_STORE=ceph is set.
"""

import contextlib
import json
import os
import select
import shutil
import signal
import subprocess
import sys
import time
import urllib.parse
from pathlib import Path

import sample_trees
from ceph_store import CephStore
from local_store import AWKWARD, OWNER
from swift_store import SwiftStore


def conformance_keys():
    lines = (Path(__file__).parents[1] / "vfs" / "conformance_tree.txt").read_text(encoding="ascii").splitlines()
    return [urllib.parse.unquote(line) for line in lines if line and not line.startswith("#")]


def serve(folder, starter):
    """The server process of the fixture: runs until the process `starter` ends or SIGTERM arrives."""
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(0))
    is_ceph = os.environ.get("KORVAN_TEST_STORE") == "ceph"
    dots_user = OWNER if is_ceph else AWKWARD  # Ceph's gateway doesn't parse such an access key
    with CephStore() if is_ceph else SwiftStore() as store:
        store.fill("conformance", conformance_keys())
        store.fill("odd", sample_trees.odd()[0])
        store.fill("facts", {"d/five": b"12345", "none": b""})
        store.fill("mirror", sample_trees.mirror())
        store.fill("a-bucket.with-dots", ["plus+and space/100%.txt"], user=dots_user)
        sample_trees.write_locally(folder / "mirror", sample_trees.mirror())
        environment = {**store.environment(), "KORVAN_TEST_MIRROR": str(folder / "mirror"), "KORVAN_TEST_DOTS_USER": dots_user}
        (folder / "new").write_text(json.dumps(environment), encoding="ascii")
        (folder / "new").rename(folder / "environment")
        select.select([os.pidfd_open(int(starter))], [], [])


def start(folder):
    stop(folder)
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    with open(folder / "log", "wb") as log:
        server = subprocess.Popen([sys.executable, "-B", __file__, "serve", folder, str(os.getppid())],
                                  stdin=subprocess.DEVNULL, stdout=log, stderr=log, start_new_session=True)
    (folder / "pid").write_text(str(server.pid), encoding="ascii")
    end = time.monotonic() + 240
    while not (folder / "environment").exists():
        if server.poll() is not None or time.monotonic() > end:
            stop(folder)
            sys.exit("the store did not start:\n" + (folder / "log").read_text(errors="replace", encoding="utf-8")[-4000:])
        time.sleep(0.05)


def stop(folder):
    with contextlib.suppress(OSError, ValueError):
        server = int((folder / "pid").read_text(encoding="ascii"))
        # If the server ended long ago, another process may have its number. Nothing needs to wait for its end.
        if os.fsencode(folder) in Path(f"/proc/{server}/cmdline").read_bytes().split(b"\0"):
            os.kill(server, signal.SIGTERM)


def run(folder, *command):
    store = json.loads((folder / "environment").read_text(encoding="ascii"))
    # The user's own profile or endpoint would name another store.
    others = {name: value for name, value in os.environ.items() if not name.startswith("AWS_")}
    os.execvpe(command[0], command, {**others, **store})


if __name__ == "__main__":
    commands = {"start": start, "stop": stop, "run": run, "serve": serve}
    commands[sys.argv[1]](Path(sys.argv[2]).absolute(), *sys.argv[3:])
