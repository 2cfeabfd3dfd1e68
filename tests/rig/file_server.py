"""Serves a folder on a loopback port, which it prints. usage: file_server.py http|ftp FOLDER

The FTP server knows the user "user" with the password "secret", and guests.
"""

import functools
import http.server
import sys

kind, folder = sys.argv[1:]
if kind == "http":
    handler = functools.partial(http.server.SimpleHTTPRequestHandler, directory=folder)
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), handler)
    print(server.server_address[1], flush=True)
else:
    from pyftpdlib.authorizers import DummyAuthorizer
    from pyftpdlib.handlers import FTPHandler
    from pyftpdlib.servers import FTPServer

    FTPHandler.authorizer = DummyAuthorizer()
    FTPHandler.authorizer.add_anonymous(folder)
    FTPHandler.authorizer.add_user("user", "secret", folder)
    server = FTPServer(("127.0.0.1", 0), FTPHandler)
    print(server.address[1], flush=True)
server.serve_forever()
