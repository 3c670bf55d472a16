"""An object store on this machine: OpenStack Swift with its S3 interface, on loopback ports and in a temporary folder.

    with SwiftStore(nodes=1) as store:
        store.fill("bucket", {"data/a.csv": b"1,2"})
        subprocess.run([...], env={**os.environ, **store.environment()})

Needs Debian's own interpreter (/usr/bin/python3), which finds the modules of the package python3-swift, but no privileges
and no system service. Ports are bound before any server starts, so several stores can start at the same time.
"""

import os
import signal
import socket
import tempfile

import swift_servers
from local_store import LocalStore


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


class SwiftStore(LocalStore):
    """A running store: `nodes` storage nodes, each with a replica of everything, behind one proxy."""

    def __init__(self, nodes=1, page=1000):
        """`page`: the most keys in one response."""
        candidates = [tempfile.gettempdir(), "/var/tmp", os.path.dirname(os.path.abspath(__file__))]
        base = next((folder for folder in candidates if _supports_attributes(folder)), None)
        if base is None:
            raise RuntimeError("no temporary folder supports extended attributes: set TMPDIR to one that does")
        self._nodes, self._page = nodes, page
        super().__init__(base)

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

    def _signal(self, node, number):
        for server in [server for server in self._processes if server[0] == node]:
            if number == signal.SIGKILL:
                self._end(server, number)
            else:
                os.kill(self._processes[server], number)

    def _start(self):
        # The node of the proxy is None. Until a server runs, its socket keeps requests waiting.
        servers = [(node, kind) for node in range(self._nodes) for kind in swift_servers.KINDS] + [(None, "proxy")]
        listeners = {server: _listening_socket() for server in servers}
        ports = {server: listener.getsockname()[1] for server, listener in listeners.items()}
        self.port = ports[None, "proxy"]
        files = swift_servers.Files(self.folder, self._nodes, ports, self._page)
        swift_servers.import_swift(self.folder)
        files.write_rings()
        for server in servers:
            self._fork(server, lambda: self._serve(server, listeners, files))
        for listener in listeners.values():
            listener.close()

    @staticmethod
    def _serve(server, listeners, files):
        listener = listeners.pop(server)
        for other in listeners.values():
            other.close()
        swift_servers.serve(server[1], files.configuration(*server), listener)
