"""An FTP server on loopback for one test.

usage: ftpserver.py ROOT [plain|tls CERTIFICATE] [COMMAND...]

Serves ROOT to the user "vandrel" with the password "s3cret", with every right. Commands named are taken away from the
server (MLSD, EPSV, ...). Prints its port when it listens and ends with its standard input.
"""

import os
import sys
import threading

from pyftpdlib.authorizers import DummyAuthorizer
from pyftpdlib.handlers import FTPHandler, TLS_FTPHandler
from pyftpdlib.servers import FTPServer


def end_with_input():
    sys.stdin.read()
    os._exit(0)


def main():
    root, kind = sys.argv[1:3]
    missing = sys.argv[3:]
    handler = FTPHandler
    if kind == "tls":
        handler = TLS_FTPHandler
        handler.certfile = missing.pop(0)
        handler.tls_control_required = True
        handler.tls_data_required = True
    handler.authorizer = DummyAuthorizer()
    handler.authorizer.add_user("vandrel", "s3cret", root, perm="elradfmwMT")
    handler.proto_cmds = {name: facts for name, facts in handler.proto_cmds.items() if name not in missing}
    server = FTPServer(("127.0.0.1", 0), handler)
    print(server.socket.getsockname()[1], flush=True)
    threading.Thread(target=end_with_input, daemon=True).start()
    server.serve_forever()


main()
