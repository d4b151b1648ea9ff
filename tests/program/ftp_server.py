"""An FTP server on loopback for the tests of the whole program."""

import contextlib
import os
import shutil
import tempfile

from servers import Server

USER, PASSWORD = "vandrel", "s3cret"


class FtpServer:
    """The server; a context manager. `root` is the folder that it serves, `address` what is typed into the server
    field. The options are those of tests/servers/ftp_server.py."""

    def __init__(self, *options):
        self._options = options

    def __enter__(self):
        with contextlib.ExitStack() as stack:
            folder = tempfile.mkdtemp(prefix="vandrel-ftp-")
            stack.callback(shutil.rmtree, folder, ignore_errors=True)
            self.root = os.path.join(folder, "root")
            os.mkdir(self.root)
            server = Server(os.path.join(folder, "ftp.log"), "ftp_server.py", self.root, *self._options)
            stack.callback(server.stop)
            self.address = "127.0.0.1:" + server.await_line("port ")[1]
            self._stack = stack.pop_all()
        return self

    def __exit__(self, *failure):
        self._stack.close()

    def path(self, *names):
        """The path of a file below the root."""
        return os.path.join(self.root, *names)

    def write(self, name, content):
        with open(self.path(name), "wb") as file:
            file.write(content)

    def read(self, *names):
        with open(self.path(*names), "rb") as file:
            return file.read()
