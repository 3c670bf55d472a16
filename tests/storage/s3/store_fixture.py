"""The store that all tests of one ctest run share.

    store_fixture.py {start|stop} FOLDER
    store_fixture.py run FOLDER COMMAND...    a command in the environment of a client of it

It also ends when the process that asked for it does (ctest), so that an interrupted run leaves nothing behind. FOLDER/mirror is the local
twin of the bucket "mirror"; KORVAN_TEST_MIRROR names it.
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
import swift_store


def conformance_keys():
    lines = (Path(__file__).parents[1] / "vfs" / "conformance_tree.txt").read_text(encoding="ascii").splitlines()
    return [urllib.parse.unquote(line) for line in lines if line and not line.startswith("#")]


def serve(folder, asker):
    """The process behind the fixture: serves until `asker` ends or it is told to stop."""
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(0))
    with swift_store.SwiftStore() as store:
        store.fill("conformance", conformance_keys())
        store.fill("odd", sample_trees.odd()[0])
        store.fill("mirror", sample_trees.mirror())
        store.fill("a-bucket.with-dots", ["plus+and space/100%.txt"], user=swift_store.AWKWARD)
        sample_trees.write_locally(folder / "mirror", sample_trees.mirror())
        environment = {**store.environment(), "KORVAN_TEST_MIRROR": str(folder / "mirror")}
        (folder / "new").write_text(json.dumps(environment), encoding="ascii")
        (folder / "new").rename(folder / "environment")
        select.select([os.pidfd_open(int(asker))], [], [])


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
        # Long gone, its number may have been given to another. It isn't waited for: nothing depends on its end.
        if os.fsencode(folder) in Path(f"/proc/{server}/cmdline").read_bytes().split(b"\0"):
            os.kill(server, signal.SIGTERM)


def run(folder, *command):
    store = json.loads((folder / "environment").read_text(encoding="ascii"))
    # A profile or an endpoint of the user's own would be another store.
    others = {name: value for name, value in os.environ.items() if not name.startswith("AWS_")}
    os.execvpe(command[0], command, {**others, **store})


if __name__ == "__main__":
    place = Path(sys.argv[2]).absolute()
    {"start": start, "stop": stop, "run": run, "serve": serve}[sys.argv[1]](place, *sys.argv[3:])
