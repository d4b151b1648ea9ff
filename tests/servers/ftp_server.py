"""An FTP server on loopback for tests.

    ftp_server.py FOLDER [--tls --cert FILE --key FILE] [--rate OCTETS] [--without COMMAND...]

Serves FOLDER to the user "vandrel" with the password "s3cret", with every right; with --tls only to who encrypts both
connections. Prints "port N" once it listens, and ends when its standard input does. What follows --without the server
does not know: MLSD, EPSV and so on. With --rate no more data is sent and taken in a second.
"""
import argparse
import logging
import os
import sys
import threading

from pyftpdlib.authorizers import DummyAuthorizer
from pyftpdlib.handlers import FTPHandler, ThrottledDTPHandler, TLS_FTPHandler
from pyftpdlib.servers import FTPServer


def end_with_input():
    sys.stdin.read()
    os._exit(0)


def handler_for(options):
    handler = TLS_FTPHandler if options.tls else FTPHandler
    if options.tls:
        handler.certfile, handler.keyfile = options.cert, options.key
        handler.tls_control_required = handler.tls_data_required = True
    # Names are octets.
    handler.unicode_errors = "surrogateescape"
    handler.authorizer = DummyAuthorizer()
    handler.authorizer.add_user("vandrel", "s3cret", options.folder, perm="elradfmwMT")
    handler.proto_cmds = {name: facts for name, facts in handler.proto_cmds.items()
                          if name not in options.without}
    if options.rate:
        handler.dtp_handler = ThrottledDTPHandler
        handler.dtp_handler.read_limit = handler.dtp_handler.write_limit = options.rate
    return handler


logging.basicConfig(level=logging.WARNING)
parser = argparse.ArgumentParser()
parser.add_argument("folder")
parser.add_argument("--tls", action="store_true")
parser.add_argument("--cert")
parser.add_argument("--key")
parser.add_argument("--rate", type=int)
parser.add_argument("--without", nargs="+", default=[])
server = FTPServer(("127.0.0.1", 0), handler_for(parser.parse_args()))
print("port", server.socket.getsockname()[1], flush=True)
threading.Thread(target=end_with_input, daemon=True).start()
server.serve_forever()
