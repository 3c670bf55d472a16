"""store.py [--ceph] [--nodes N] [--bucket NAME] [COMMAND...]: starts an object store on this machine; see --help."""

import argparse
import contextlib
import os
import shlex
import signal
import subprocess
import sys

import sample_trees
from ceph_store import CephStore
from swift_store import SwiftStore


def start(arguments):
    return CephStore() if arguments.ceph else SwiftStore(arguments.nodes)


def main():
    parser = argparse.ArgumentParser(description="Starts an object store on this machine, with a small tree in it. Without a command it "
                                     "prints the environment variables for clients and runs until ctrl-c.")
    parser.add_argument("--ceph", action="store_true", help="Ceph's gateway instead of Swift, with one storage node")
    parser.add_argument("--nodes", type=int, default=1, help="number of storage nodes, each with a replica of everything (default: 1)")
    parser.add_argument("--bucket", default="sample", help="bucket for the tree (default: sample)")
    parser.add_argument("command", nargs="*", metavar="COMMAND", help="a command to run in that environment; the store ends with it")
    arguments = parser.parse_args()

    signal.signal(signal.SIGTERM, lambda *_: sys.exit(128 + signal.SIGTERM))
    with contextlib.suppress(KeyboardInterrupt), start(arguments) as store:
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
