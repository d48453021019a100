#!/usr/bin/python3
"""webserver.py WORK: answers every GET on loopback, logs "host path" to WORK/requests.log."""
import http.server, os, sys

work = sys.argv[1]


class Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        host = self.headers.get("Host", "").split(":")[0]
        with open(os.path.join(work, "requests.log"), "a") as log:
            log.write("%s %s\n" % (host, self.path))
        body = ("<!doctype html><title>%s</title><h1>%s%s</h1>" % (host, host, self.path)).encode()
        self.send_response(200)
        self.send_header("Content-Type", "text/html; charset=utf-8")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *args):
        pass


server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
with open(os.path.join(work, "port.tmp"), "w") as f:
    f.write(str(server.server_port))
os.rename(os.path.join(work, "port.tmp"), os.path.join(work, "port"))
server.serve_forever()
