#!/usr/bin/python3
"""A POP3 server on loopback for the tests: plain with STLS on one port, encrypted from the start on another.

    pop3_server.py --mail FOLDER --certificate PEM --key PEM [--login apop|cram|user] [--without-stls]

Each file of the folder is a message. The user is "vandrel", the password "s3cret". It says "ready PLAIN ENCRYPTED" with
its ports, and then what happens to it: "connection", "command NAME", "deleted NUMBER" once a deletion is final. It ends
with its standard input.
"""

import argparse
import pathlib
import sys

from twisted.cred import checkers, credentials, portal
from twisted.internet import reactor, ssl, stdio
from twisted.internet.protocol import Factory, Protocol
from twisted.mail import pop3
from zope.interface import implementer


def say(text):
    print(text, flush=True)


@implementer(pop3.IMailbox)
class Mailbox:
    def __init__(self, folder):
        self.paths = sorted(folder.iterdir())
        self.deleted = set()

    def size(self, index):
        if index >= len(self.paths):
            raise ValueError("no such message")
        return 0 if index in self.deleted else self.paths[index].stat().st_size

    def listMessages(self, index=None):
        return [self.size(i) for i in range(len(self.paths))] if index is None else self.size(index)

    def getMessage(self, index):
        return self.paths[index].open("rb")

    def getUidl(self, index):
        return self.paths[index].name.encode()

    def deleteMessage(self, index):
        self.size(index)
        self.deleted.add(index)

    def undeleteMessages(self):
        self.deleted.clear()

    def sync(self):
        for index in sorted(self.deleted):
            self.paths[index].unlink()
            say(f"deleted {index + 1}")


@implementer(portal.IRealm)
class Realm:
    def __init__(self, folder):
        self.folder = folder

    def requestAvatar(self, avatar, mind, *interfaces):
        return pop3.IMailbox, Mailbox(self.folder), lambda: None


class Server(pop3.POP3):
    AUTH_CMDS = pop3.POP3.AUTH_CMDS + [b"STLS"]

    def connectionMade(self):
        say("connection")
        if self.factory.options.login != "apop":
            self.magic = b"ready"
        super().connectionMade()

    def listCapabilities(self):
        offered = [b"TOP", b"UIDL", b"PIPELINING", b"USER"]
        if self.factory.challengers:
            offered.append(b"SASL " + b" ".join(self.factory.challengers))
        if not self.encrypted and not self.factory.options.without_stls:
            offered.append(b"STLS")
        return offered

    @property
    def encrypted(self):
        return self.factory.encrypted or getattr(self, "started", False)

    def processCommand(self, command, *args):
        say("command " + command.decode("latin-1").upper())
        return super().processCommand(command, *args)

    def do_APOP(self, user, digest):
        # The library compares the digest with a text.
        return super().do_APOP(user, digest.decode("latin-1"))

    def do_STLS(self):
        self.successResponse(b"Begin")
        self.started = True
        self.transport.startTLS(self.factory.context)


class ServerFactory(Factory):
    protocol = Server

    def __init__(self, options, context, encrypted):
        self.options = options
        self.context = context
        self.encrypted = encrypted
        self.challengers = {b"CRAM-MD5": credentials.CramMD5Credentials} if options.login == "cram" else {}
        users = checkers.InMemoryUsernamePasswordDatabaseDontUse()
        users.addUser(b"vandrel", b"s3cret")
        self.portal = portal.Portal(Realm(options.mail), [users])
        self.noisy = False

    def buildProtocol(self, address):
        server = super().buildProtocol(address)
        server.portal = self.portal
        return server


class EndWithInput(Protocol):
    def connectionLost(self, reason=None):
        if reactor.running:
            reactor.stop()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--mail", type=pathlib.Path, required=True)
    parser.add_argument("--certificate", required=True)
    parser.add_argument("--key", required=True)
    parser.add_argument("--login", choices=["apop", "cram", "user"], default="user")
    parser.add_argument("--without-stls", action="store_true")
    options = parser.parse_args()

    context = ssl.DefaultOpenSSLContextFactory(options.key, options.certificate, ssl.SSL.TLS_METHOD)
    plain = reactor.listenTCP(0, ServerFactory(options, context, False), interface="127.0.0.1")
    encrypted = reactor.listenSSL(0, ServerFactory(options, context, True), context, interface="127.0.0.1")
    stdio.StandardIO(EndWithInput())
    say(f"ready {plain.getHost().port} {encrypted.getHost().port}")
    reactor.run()


if __name__ == "__main__":
    sys.exit(main())
