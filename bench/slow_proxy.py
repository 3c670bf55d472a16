"""A proxy that makes a server on this machine respond as slowly as a distant one."""

import asyncio
import contextlib
import threading


class SlowProxy:
    """Forwards HTTP requests without a body from its own loopback port to another, each after a delay, and counts them. Bytes pass
    unchanged, so that a signature over the Host header remains valid."""

    def __init__(self, target_port: int, delay: float):
        """`delay` is in seconds. Serves on its own thread until the process ends."""
        self._target_port, self._delay = target_port, delay
        self.requests = 0
        loop = asyncio.new_event_loop()
        server = loop.run_until_complete(asyncio.start_server(self._serve, "127.0.0.1", 0))
        self.port = server.sockets[0].getsockname()[1]
        threading.Thread(target=loop.run_forever, daemon=True).start()

    async def _serve(self, client: asyncio.StreamReader, to_client: asyncio.StreamWriter) -> None:
        server, to_server = await asyncio.open_connection("127.0.0.1", self._target_port)
        answers = asyncio.create_task(_relay(server, to_client))
        with contextlib.suppress(asyncio.IncompleteReadError, ConnectionError):
            while True:
                head = await client.readuntil(b"\r\n\r\n")
                self.requests += 1
                await asyncio.sleep(self._delay)
                to_server.write(head)
        to_server.close()
        await answers


async def _relay(source: asyncio.StreamReader, to: asyncio.StreamWriter) -> None:
    with contextlib.suppress(ConnectionError):
        while data := await source.read(1 << 16):
            to.write(data)
            await to.drain()
    to.close()
