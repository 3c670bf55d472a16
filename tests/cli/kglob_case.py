"""What the tests of kglob share: a temporary folder, and ways to run kglob in it, on a terminal or not."""

import contextlib
import fcntl
import os
import pty
import shutil
import signal
import subprocess
import sys
import tempfile
import termios
import threading
import unittest

KGLOB = os.path.abspath(sys.argv.pop(1))


class KglobTest(unittest.TestCase):
    """A temporary folder, readable by everyone, and ways to run kglob in it."""
    def setUp(self):
        self.folder = os.fsencode(os.path.realpath(tempfile.mkdtemp(prefix="kglob-")))
        os.chmod(self.folder, 0o755)
        self.addCleanup(shutil.rmtree, self.folder)

    def at(self, path):
        return os.path.join(self.folder, path)

    def add(self, *paths):
        """Makes empty files, and folders for paths that end in "/"."""
        for path in paths:
            os.makedirs(os.path.dirname(self.at(path)), exist_ok=True)
            if not path.endswith(b"/"):
                os.close(os.open(self.at(path), os.O_CREAT | os.O_WRONLY, 0o644))

    def run_kglob(self, *arguments, **options):
        options = {"cwd": self.folder, "stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, "timeout": 60, **options}
        done = subprocess.run([KGLOB, *arguments], stderr=subprocess.PIPE, **options)
        return done.returncode, done.stdout, done.stderr

    def expect(self, arguments, status, output, errors=b"", **options):
        with self.subTest(arguments=arguments):
            self.assertEqual(self.run_kglob(*arguments, **options), (status, output, errors))

    def expect_error(self, arguments, pattern, output=b"", **options):
        """Expects one line on standard error that matches the pattern, and exit status 2."""
        with self.subTest(arguments=arguments):
            status, written, errors = self.run_kglob(*arguments, **options)
            self.assertRegex(errors, rb"\Akglob: [^\n]*" + pattern + rb"[^\n]*\n\Z")
            self.assertEqual((status, written), (2, output))

    def on_terminal(self, *arguments, stream="stdout", stop_after=60, TERM="xterm", **variables):
        """Runs kglob with one stream on a terminal. Returns the exit status, the terminal's bytes and the other's."""
        environment = {name: value for name, value in os.environ.items() if name not in ("LS_COLORS", "NO_COLOR")}
        master, slave = pty.openpty()
        streams = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, stream: slave}
        with subprocess.Popen([KGLOB, *arguments], cwd=self.folder, env={**environment, "TERM": TERM, **variables}, start_new_session=True,
                              preexec_fn=lambda: fcntl.ioctl(slave, termios.TIOCSCTTY, 0), **streams) as process:
            os.close(slave)
            timer = threading.Timer(stop_after, process.send_signal, [signal.SIGINT])
            timer.start()
            shown = b""
            with contextlib.suppress(OSError):  # the terminal's last writer is gone
                while True:
                    shown += os.read(master, 65536)
            timer.cancel()
            rest = (process.stderr if stream == "stdout" else process.stdout).read()
        os.close(master)  # not before: it hangs the process up
        return process.returncode, shown.replace(b"\r\n", b"\n"), rest
