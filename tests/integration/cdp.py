"""Drives a page of the program's web engine through the DevTools protocol, as far
as a test needs: evaluate an expression, click an element, type text.

    cdp.py PORT URL-PREFIX eval EXPRESSION      prints the value as JSON
    cdp.py PORT URL-PREFIX click CSS-SELECTOR   a mouse click in the element's middle
    cdp.py PORT URL-PREFIX type TEXT            text into the focused field

The program runs with QTWEBENGINE_REMOTE_DEBUGGING=127.0.0.1:PORT. Only the standard
library: a WebSocket client of the few lines the protocol needs."""
import base64
import json
import os
import socket
import struct
import sys
import urllib.parse
import urllib.request


class Socket:
    def __init__(self, url):
        parts = urllib.parse.urlparse(url)
        self.sock = socket.create_connection((parts.hostname, parts.port), timeout=10)
        key = base64.b64encode(os.urandom(16)).decode()
        request = (f"GET {parts.path} HTTP/1.1\r\nHost: {parts.netloc}\r\nUpgrade: websocket\r\n"
                   f"Connection: Upgrade\r\nSec-WebSocket-Key: {key}\r\nSec-WebSocket-Version: 13\r\n\r\n")
        self.sock.sendall(request.encode())
        reply = b""
        while b"\r\n\r\n" not in reply:
            chunk = self.sock.recv(4096)
            if not chunk:
                raise RuntimeError("no WebSocket handshake")
            reply += chunk
        if b" 101 " not in reply.split(b"\r\n")[0]:
            raise RuntimeError(reply.split(b"\r\n")[0].decode())
        self.buffer = reply.split(b"\r\n\r\n", 1)[1]

    def exactly(self, n):
        while len(self.buffer) < n:
            chunk = self.sock.recv(65536)
            if not chunk:
                raise RuntimeError("connection closed")
            self.buffer += chunk
        data, self.buffer = self.buffer[:n], self.buffer[n:]
        return data

    def send(self, text):
        payload = text.encode()
        mask = os.urandom(4)
        n = len(payload)
        header = bytes([0x81]) + (bytes([0x80 | n]) if n < 126 else
                                  bytes([0x80 | 126]) + struct.pack(">H", n) if n < 65536 else
                                  bytes([0x80 | 127]) + struct.pack(">Q", n))
        self.sock.sendall(header + mask + bytes(b ^ mask[i % 4] for i, b in enumerate(payload)))

    def receive(self):
        message = b""
        while True:
            first, second = self.exactly(2)
            n = second & 0x7F
            if n == 126:
                n = struct.unpack(">H", self.exactly(2))[0]
            elif n == 127:
                n = struct.unpack(">Q", self.exactly(8))[0]
            payload = self.exactly(n)
            if first & 0x0F in (0x1, 0x0):
                message += payload
                if first & 0x80:
                    return message.decode()


class Page:
    def __init__(self, port, prefix):
        with urllib.request.urlopen(f"http://127.0.0.1:{port}/json", timeout=5) as reply:
            targets = json.load(reply)
        pages = [t for t in targets if t.get("type") == "page" and t.get("url", "").startswith(prefix)]
        if not pages:
            raise RuntimeError("no page at " + prefix + " among " + ", ".join(t.get("url", "") for t in targets))
        self.ws = Socket(pages[0]["webSocketDebuggerUrl"])
        self.last = 0

    def call(self, method, **params):
        self.last += 1
        self.ws.send(json.dumps({"id": self.last, "method": method, "params": params}))
        while True:
            reply = json.loads(self.ws.receive())
            if reply.get("id") == self.last:
                if "error" in reply:
                    raise RuntimeError(f"{method}: {reply['error']}")
                return reply["result"]

    def eval(self, expression):
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True)
        if "exceptionDetails" in result:
            raise RuntimeError(json.dumps(result["exceptionDetails"]))
        return result["result"].get("value")

    def click(self, selector):
        box = self.eval(f"""(() => {{ const e = document.querySelector({json.dumps(selector)});
            if (!e) return null; e.scrollIntoView({{block: "center"}});
            const r = e.getBoundingClientRect(); return [r.x + r.width / 2, r.y + r.height / 2]; }})()""")
        if not box:
            raise RuntimeError("nothing matches " + selector)
        for kind in ("mousePressed", "mouseReleased"):
            self.call("Input.dispatchMouseEvent", type=kind, x=box[0], y=box[1], button="left", clickCount=1)


def main(argv):
    port, prefix, command, arg = argv[1], argv[2], argv[3], argv[4]
    page = Page(port, prefix)
    if command == "eval":
        print(json.dumps(page.eval(arg)))
    elif command == "click":
        page.click(arg)
    elif command == "type":
        page.call("Input.insertText", text=arg)
    else:
        raise SystemExit("unknown command " + command)


if __name__ == "__main__":
    try:
        main(sys.argv)
    except Exception as e:  # a failed poll prints why
        print(f"cdp: {e}", file=sys.stderr)
        sys.exit(1)
