"""A mail server on loopback that stores what it gets, for tests.

    smtp_server.py FOLDER [--tls starttls|implicit --cert FILE --key FILE] [--login USER:PASSWORD] [--size OCTETS]

Prints "port N" once it listens, and ends when its standard input does. Message number N is stored as N.eml with
its envelope in N.json. What stands before the "@" of a recipient can ask for a fault:

    refused550, refused450   the recipient is refused
    toolarge                 the message is refused with 552 after its end
    drop                     the connection is cut at the message's end
    delay                    the confirmation comes after a second
"""
import argparse
import asyncio
import json
import pathlib
import ssl
import sys

from aiosmtpd.smtp import SMTP, AuthResult


class Store:
    def __init__(self, folder):
        self.folder = pathlib.Path(folder)
        self.count = 0

    async def handle_RCPT(self, server, session, envelope, address, options):
        fault = address.partition("@")[0]
        if fault == "refused550":
            return f"550 5.1.1 No such user {address}"
        if fault == "refused450":
            return "450 4.2.0 Greylisted, come back later"
        envelope.rcpt_tos.append(address)
        return "250 2.1.5 Recipient ok"

    async def handle_DATA(self, server, session, envelope):
        faults = {address.partition("@")[0] for address in envelope.rcpt_tos}
        if "toolarge" in faults:
            return "552 5.3.4 Message too big for the mailbox"
        if "drop" in faults:
            server.transport.abort()
            return "250 never seen"
        if "delay" in faults:
            await asyncio.sleep(1)
        self.store(server, session, envelope)
        return f"250 2.0.0 Stored as {self.count}"

    def store(self, server, session, envelope):
        self.count += 1
        about = {
            "from": envelope.mail_from,
            "to": envelope.rcpt_tos,
            "options": envelope.mail_options,
            "encrypted": server.transport.get_extra_info("sslcontext") is not None,
            "login": bool(session.authenticated),
            "hello": session.host_name,
        }
        (self.folder / f"{self.count}.eml").write_bytes(envelope.original_content)
        # The envelope comes last: who sees it may read the message.
        partial = self.folder / f"{self.count}.json.part"
        partial.write_text(json.dumps(about), encoding="utf-8")
        partial.rename(self.folder / f"{self.count}.json")


def authenticator(login):
    user, _, password = login.encode().partition(b":")

    def check(server, session, envelope, mechanism, data):
        return AuthResult(success=(data.login, data.password) == (user, password), handled=False)

    return check


def factory(options, handler, context):
    settings = {"hostname": "test.example", "enable_SMTPUTF8": True, "data_size_limit": options.size}
    if options.tls == "starttls":
        settings["tls_context"] = context
    if options.login:
        settings |= {"authenticator": authenticator(options.login), "auth_required": True,
                     "auth_require_tls": options.tls == "starttls"}
    return lambda: SMTP(handler, **settings)


async def until_end_of_input():
    await asyncio.get_running_loop().run_in_executor(None, sys.stdin.read)


async def serve(options):
    context = None
    if options.tls:
        context = ssl.create_default_context(ssl.Purpose.CLIENT_AUTH)
        context.load_cert_chain(options.cert, options.key)
    server = await asyncio.get_running_loop().create_server(
        factory(options, Store(options.folder), context), "127.0.0.1", 0,
        ssl=context if options.tls == "implicit" else None)
    print("port", server.sockets[0].getsockname()[1], flush=True)
    await until_end_of_input()


parser = argparse.ArgumentParser()
parser.add_argument("folder")
parser.add_argument("--tls", choices=["starttls", "implicit"])
parser.add_argument("--cert")
parser.add_argument("--key")
parser.add_argument("--login")
parser.add_argument("--size", type=int, default=200_000_000)
asyncio.run(serve(parser.parse_args()))
