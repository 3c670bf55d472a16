"""The store that all tests of one ctest run share.

    store_fixture.py start FOLDER     starts it, fills it, and writes FOLDER/environment: one NAME=VALUE a line
    store_fixture.py stop FOLDER      ends it

It also ends when the process that asked for it does (ctest), so that an interrupted run leaves nothing behind. FOLDER/mirror is the local
twin of the bucket "mirror".
"""

import contextlib
import os
import select
import shutil
import signal
import subprocess
import sys
import time

import sample_trees
import swift_store


def serve(folder, asker):
    """The process behind the fixture: serves until `asker` ends or it is told to stop."""
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(0))
    with swift_store.SwiftStore() as store:
        keys = sample_trees.mirror()
        store.fill("conformance", sample_trees.conformance())
        store.fill("odd", sample_trees.odd()[0])
        store.fill("mirror", keys)
        store.fill("a-bucket.with-dots", ["plus+and space/100%.txt"], user=swift_store.AWKWARD)
        sample_trees.write_locally(os.path.join(folder, "mirror"), keys)
        guest = store.environment(swift_store.GUEST)
        awkward = store.environment(swift_store.AWKWARD)
        values = {
            **store.environment(),
            "KORVAN_TEST_MIRROR": os.path.join(folder, "mirror"),
            "KORVAN_TEST_GUEST_KEY": guest["AWS_ACCESS_KEY_ID"],
            "KORVAN_TEST_GUEST_SECRET": guest["AWS_SECRET_ACCESS_KEY"],
            "KORVAN_TEST_AWKWARD_KEY": awkward["AWS_ACCESS_KEY_ID"],
            "KORVAN_TEST_AWKWARD_SECRET": awkward["AWS_SECRET_ACCESS_KEY"],
        }
        path = os.path.join(folder, "environment")
        with open(path + ".new", "w", encoding="utf-8") as file:
            file.writelines(f"{name}={value}\n" for name, value in values.items())
        os.rename(path + ".new", path)
        select.select([os.pidfd_open(asker)], [], [])


def start(folder):
    stop(folder)
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    with open(os.path.join(folder, "log"), "wb") as log:
        server = subprocess.Popen([sys.executable, os.path.abspath(__file__), "serve", folder, str(os.getppid())],
                                  stdin=subprocess.DEVNULL, stdout=log, stderr=log, start_new_session=True)
    with open(os.path.join(folder, "pid"), "w", encoding="ascii") as file:
        file.write(str(server.pid))
    end = time.monotonic() + 240
    while not os.path.exists(os.path.join(folder, "environment")):
        if server.poll() is not None or time.monotonic() > end:
            stop(folder)
            with open(os.path.join(folder, "log"), errors="replace", encoding="utf-8") as log:
                sys.exit("the store did not start:\n" + log.read()[-4000:])
        time.sleep(0.05)


def stop(folder):
    with contextlib.suppress(OSError, ValueError):
        with open(os.path.join(folder, "pid"), encoding="ascii") as file:
            server = int(file.read())
        with open(f"/proc/{server}/cmdline", "rb") as file:
            if os.fsencode(folder) not in file.read().split(b"\0"):
                return  # long gone, and its number given to another
        # It isn't waited for: nothing depends on its end, and removing thousands of files may take it a while.
        os.kill(server, signal.SIGTERM)


if __name__ == "__main__":
    action, place = sys.argv[1], os.path.abspath(sys.argv[2])
    if action == "serve":
        serve(place, int(sys.argv[3]))
    else:
        {"start": start, "stop": stop}[action](place)
