"""A mail server on a loopback port, which it prints. Each message becomes a file N.json in the folder.

usage: mail_server.py FOLDER [--certificate FILE] [--starttls] [--login USER:PASSWORD] [--refuse ADDRESS]
With a certificate (and its key in the same file) it is encrypted from the first byte, or from STARTTLS on.
"""

import argparse
import asyncio
import base64
import email
import email.policy
import json
import os
import ssl

from aiosmtpd.smtp import SMTP, AuthResult

options = None


class Handler:
    def __init__(self):
        self.messages = 0

    async def handle_RCPT(self, server, session, envelope, address, rcpt_options):
        if address == options.refuse:
            return "550 5.1.1 There is no such user"
        envelope.rcpt_tos.append(address)
        return "250 OK"

    async def handle_DATA(self, server, session, envelope):
        self.messages += 1
        message = email.message_from_bytes(envelope.content, policy=email.policy.default)
        body = message.get_body()
        record = {
            "sender": envelope.mail_from,
            "recipients": envelope.rcpt_tos,
            "encrypted": server.transport.get_extra_info("sslcontext") is not None,
            "login": bool(session.authenticated),
            "connection": session.peer[1],
            "defects": [str(defect) for part in message.walk() for defect in part.defects],
            "from": str(message["From"]),
            "to": str(message["To"]),
            "subject": str(message["Subject"]),
            "fields": sorted(message.keys()),
            "body": body.get_content().replace("\r\n", "\n") if body else None,
            "attachments": [
                {
                    "name": part.get_filename(),
                    "type": part.get_content_type(),
                    "bytes": base64.b64encode(part.get_payload(decode=True)).decode(),
                }
                for part in message.iter_attachments()
            ],
        }
        path = os.path.join(options.folder, "%d.json" % self.messages)
        with open(path + ".new", "w") as file:
            json.dump(record, file)
        os.rename(path + ".new", path)
        return "250 OK"


def check_login(server, session, envelope, mechanism, data):
    given = "%s:%s" % (data.login.decode(), data.password.decode())
    return AuthResult(success=given == options.login, handled=False)


async def serve():
    context = None
    if options.certificate:
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(options.certificate)
    handler = Handler()

    def make():
        return SMTP(
            handler,
            hostname="mail.test",
            enable_SMTPUTF8=True,
            tls_context=context if options.starttls else None,
            authenticator=check_login if options.login else None,
            auth_required=bool(options.login),
            auth_require_tls=False,
            loop=asyncio.get_running_loop(),
        )

    server = await asyncio.get_running_loop().create_server(
        make, "127.0.0.1", 0, ssl=None if options.starttls else context
    )
    print(server.sockets[0].getsockname()[1], flush=True)
    await server.serve_forever()


parser = argparse.ArgumentParser()
parser.add_argument("folder")
parser.add_argument("--certificate")
parser.add_argument("--starttls", action="store_true")
parser.add_argument("--login")
parser.add_argument("--refuse")
options = parser.parse_args()
asyncio.run(serve())
