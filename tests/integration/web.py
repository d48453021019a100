#!/usr/bin/python3
"""Loopback web helpers of the integration scripts.

  web.py serve WORK [CATALOGUE]   on a free port (WORK/port): a GET is logged to WORK/requests.log
      and answered with a page, /config/config.json with CATALOGUE, its webhook pointed here;
      a POST body is appended to WORK/posts.jsonl as one line.
  web.py tabs PORT open URL | wait ID PREFIX SECONDS | list   Chromium's tabs; wait prints the URL,
      list every tab's id and URL
  web.py page PORT URL-PREFIX eval EXPRESSION | click SELECTOR | type TEXT
      the page, through the DevTools protocol (EXPRESSION's value is printed as JSON)
"""
import http.server, json, os, sys, time, urllib.parse, urllib.request


def serve(work, catalogue=None):
    class Handler(http.server.BaseHTTPRequestHandler):
        def answer(self, status, body, kind):
            self.send_response(status)
            self.send_header("Content-Type", kind)
            self.send_header("Content-Length", str(len(body)))
            self.end_headers()
            self.wfile.write(body)

        def do_GET(self):
            host = self.headers.get("Host", "").split(":")[0]
            with open(os.path.join(work, "requests.log"), "a") as log:
                log.write("%s %s\n" % (host, self.path))
            if self.path == "/config/config.json" and catalogue:
                with open(catalogue, encoding="utf-8") as f:
                    doc = json.load(f)
                doc["common"]["webhookUrl"] = "http://127.0.0.1:%d/hook" % self.server.server_port
                self.answer(200, json.dumps(doc).encode(), "application/json")
            elif self.path == "/config/version.json":
                self.answer(200, b'{"version": "0.0.1"}', "application/json")
            elif self.path.startswith("/config/"):
                self.answer(404, b"{}", "application/json")
            else:
                page = "<!doctype html><title>%s</title><h1>%s%s</h1>" % (host, host, self.path)
                self.answer(200, page.encode(), "text/html; charset=utf-8")

        def do_POST(self):
            body = self.rfile.read(int(self.headers.get("Content-Length", 0)))
            with open(os.path.join(work, "posts.jsonl"), "ab") as f:
                f.write(body.replace(b"\n", b" ") + b"\n")
            self.answer(200, b"1", "text/plain")

        def log_message(self, *args):
            pass

    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
    with open(os.path.join(work, "port.tmp"), "w") as f:
        f.write(str(server.server_port))
    os.rename(os.path.join(work, "port.tmp"), os.path.join(work, "port"))
    server.serve_forever()


def tabs(port, command, *args):
    base = "http://127.0.0.1:%s/json" % port

    def url_of(tab_id):
        with urllib.request.urlopen(base + "/list", timeout=5) as reply:
            return next((t.get("url", "") for t in json.load(reply) if t.get("id") == tab_id), None)

    if command == "list":
        with urllib.request.urlopen(base + "/list", timeout=5) as reply:
            for t in json.load(reply):
                if t.get("type") == "page":
                    print(t["id"], t.get("url", ""))
    elif command == "open":
        request = urllib.request.Request(base + "/new?" + urllib.parse.quote(args[0], safe=":/?&=%"), method="PUT")
        with urllib.request.urlopen(request, timeout=5) as reply:
            print(json.load(reply)["id"])
    else:
        tab_id, prefix, deadline = args[0], args[1], time.monotonic() + float(args[2])
        while not (url := url_of(tab_id) or "").startswith(prefix):
            if time.monotonic() > deadline:
                sys.exit("tab %s still at %s" % (tab_id, url))
            time.sleep(0.005)
        print(url)


def page(port, prefix, command, arg):
    import websocket

    with urllib.request.urlopen(f"http://127.0.0.1:{port}/json", timeout=5) as reply:
        pages = [t for t in json.load(reply) if t.get("url", "").startswith(prefix)]
    if not pages:
        sys.exit("no page at " + prefix)
    ws = websocket.create_connection(pages[0]["webSocketDebuggerUrl"], timeout=10)
    calls = iter(range(1, 100))

    def call(method, **params):
        number = next(calls)
        ws.send(json.dumps({"id": number, "method": method, "params": params}))
        while (reply := json.loads(ws.recv())).get("id") != number:
            pass
        if "error" in reply or "exceptionDetails" in reply.get("result", {}):
            sys.exit(f"{method}: {reply}")
        return reply["result"]

    def evaluate(expression):
        return call("Runtime.evaluate", expression=expression, returnByValue=True)["result"].get("value")

    if command == "eval":
        print(json.dumps(evaluate(arg)))
    elif command == "type":
        call("Input.insertText", text=arg)
    elif command == "click":
        x, y = evaluate(f"""(() => {{ const e = document.querySelector({json.dumps(arg)});
            e.scrollIntoView({{block: "center"}}); const r = e.getBoundingClientRect();
            return [r.x + r.width / 2, r.y + r.height / 2]; }})()""")
        for kind in ("mousePressed", "mouseReleased"):
            call("Input.dispatchMouseEvent", type=kind, x=x, y=y, button="left", clickCount=1)


if __name__ == "__main__":
    try:
        {"serve": serve, "tabs": tabs, "page": page}[sys.argv[1]](*sys.argv[2:])
    except Exception as e:  # a failed poll says why
        sys.exit("web.py: %r" % e)
