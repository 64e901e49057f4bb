#!/usr/bin/env python3
"""A web server on this computer that answers as a test tells it, also badly.

    webserver.py                     HTTP
    webserver.py FOLDER HOST         HTTPS with a certificate for HOST, made in FOLDER by an
                                     authority whose own certificate is FOLDER/authority.pem

Prints its port. Then each line of standard input is a command in JSON, answered by a line of JSON:

    {"path": PATH, "status": 200, "headers": {...}, "body": BASE64, "how": HOW}
        how to answer a GET of PATH from now on
    {}  the requests so far: [{"path": ..., "agent": ..., "state": ..., "sent": BYTES}], where the
        state is "open", "answered" or "left" by the client
    {"release": true}
        what is held is sent
    {"forget": true}
        all of that is forgotten

HOW is one of
    whole     all of it
    cut       the size of all of it and half of it, then the connection is closed
    hold      all of it, though not before it is released
    stall     the size of all of it and half of it, then nothing more
    silent    not a byte
    close     the connection is closed at once
    endless   a body without a size that ends when the client goes
    huge      the same with a size of 2 GB
"""

import base64
import http.server
import json
import pathlib
import select
import ssl
import subprocess
import sys
import threading


class Site:
    def __init__(self):
        self.lock = threading.Lock()
        self.answers = {}
        self.requests = []
        self.released = threading.Event()

    def tell(self, command):
        with self.lock:
            if not command:
                return self.requests
            if "forget" in command:
                self.answers, self.requests = {}, []
                self.released = threading.Event()
                return []
            if "release" in command:
                self.released.set()
                return []
            self.answers[command["path"]] = command
            return []

    def begin(self, path, agent):
        request = {"path": path, "agent": agent, "state": "open", "sent": 0}
        with self.lock:
            self.requests.append(request)
            return request, self.answers.get(path, {"status": 404})


class Handler(http.server.BaseHTTPRequestHandler):
    site = Site()
    protocol_version = "HTTP/1.1"

    def log_message(self, *_arguments):
        pass

    def do_GET(self):
        request, answer = self.site.begin(self.path, self.headers.get("User-Agent", ""))
        self.close_connection = True
        try:
            self.answer(request, answer)
            request["state"] = "answered"
        except OSError:
            request["state"] = "left"

    def answer(self, request, answer):
        how = answer.get("how", "whole")
        body = base64.b64decode(answer.get("body", ""))
        if how == "close":
            return
        if how == "silent":
            self.wait_for_leaving()
        if how == "hold":
            self.site.released.wait()
        self.send_response(answer["status"])
        for name, value in answer.get("headers", {}).items():
            self.send_header(name, value)
        if how != "endless":
            self.send_header("Content-Length", str(2 << 30 if how == "huge" else len(body)))
        self.send_header("Connection", "close")
        self.end_headers()
        if how in ("cut", "stall"):
            body = body[: len(body) // 2]
        self.send(request, body)
        if how == "stall":
            self.wait_for_leaving()
        while how in ("endless", "huge"):
            self.send(request, bytes(65536))

    def send(self, request, data):
        self.wfile.write(data)
        self.wfile.flush()
        request["sent"] += len(data)

    def wait_for_leaving(self):
        # What else the client could send is nothing that belongs here.
        select.select([self.connection], [], [])
        raise ConnectionError


class Server(http.server.ThreadingHTTPServer):
    daemon_threads = True

    def handle_error(self, *_arguments):
        """A client that does not trust the certificate is no error of the server."""


def certify(folder, host):
    """Makes the certificate of a server for the host, and that of its authority."""

    def openssl(*words):
        subprocess.run(["openssl", *words], cwd=folder, check=True, capture_output=True)

    key = ("-newkey", "rsa:2048", "-nodes")
    openssl("req", "-x509", *key, "-subj", "/CN=Test authority", "-days", "30",
            "-keyout", "authority.key", "-out", "authority.pem")
    openssl("req", *key, "-subj", "/CN=Test server", "-keyout", "server.key",
            "-out", "server.request")
    kind = "IP" if host[0].isdigit() else "DNS"
    (folder / "server.names").write_text("subjectAltName=%s:%s\n" % (kind, host))
    openssl("x509", "-req", "-in", "server.request", "-CA", "authority.pem",
            "-CAkey", "authority.key", "-CAcreateserial", "-days", "30",
            "-extfile", "server.names", "-out", "server.pem")


def main(arguments):
    server = Server(("127.0.0.1", 0), Handler)
    if arguments:
        folder = pathlib.Path(arguments[0])
        certify(folder, arguments[1])
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(folder / "server.pem", folder / "server.key")
        # The handshake is left to the thread of the request.
        server.socket = context.wrap_socket(
            server.socket, server_side=True, do_handshake_on_connect=False
        )
    threading.Thread(target=server.serve_forever, daemon=True).start()
    print(server.server_port, flush=True)
    for line in sys.stdin:
        print(json.dumps(Handler.site.tell(json.loads(line))), flush=True)


if __name__ == "__main__":
    main(sys.argv[1:])
