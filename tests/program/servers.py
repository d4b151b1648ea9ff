"""What the servers have in common that the tests of the whole program start on loopback."""

import os
import subprocess
import sys

from session import await_condition

SERVERS = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "servers")


class Server:
    """A server of tests/servers in a process of its own, which ends with its standard input."""

    def __init__(self, log, script, *arguments):
        self._log = log
        with open(log, "wb") as output:
            self._process = subprocess.Popen(
                [sys.executable, os.path.join(SERVERS, script), *arguments],
                stdin=subprocess.PIPE, stdout=output, stderr=subprocess.STDOUT)

    def said(self):
        """The lines that it has written so far."""
        with open(self._log, encoding="utf-8", errors="replace") as log:
            return log.read().splitlines()

    def await_line(self, beginning):
        """Waits for a line of that beginning; returns its words."""
        def look():
            if self._process.poll() is not None:
                raise RuntimeError(f"{self._log}: ended with {self._process.returncode}: {self.said()}")
            return next((line.split() for line in self.said() if line.startswith(beginning)), None)

        return await_condition(look, f'"{beginning}" from {self._log}')

    def stop(self):
        self._process.stdin.close()
        try:
            self._process.wait(5)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()


def make_certificate(folder):
    """A certificate for localhost and its key, made in that folder; returns both paths."""
    certificate, key = (os.path.join(folder, name) for name in ("certificate.pem", "key.pem"))
    subprocess.run(
        ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes",
         "-days", "2", "-subj", "/CN=localhost", "-addext", "subjectAltName=DNS:localhost,IP:127.0.0.1",
         "-keyout", key, "-out", certificate],
        check=True, capture_output=True, timeout=60)
    return certificate, key
