"""Drives the program's web page through the DevTools protocol (the program runs with
QTWEBENGINE_REMOTE_DEBUGGING=127.0.0.1:PORT):

    cdp.py PORT URL-PREFIX eval EXPRESSION      prints the value as JSON
    cdp.py PORT URL-PREFIX click CSS-SELECTOR   a mouse click in the element's middle
    cdp.py PORT URL-PREFIX type TEXT            text into the focused field"""
import json
import sys
import urllib.request

import websocket


def main(port, prefix, command, arg):
    with urllib.request.urlopen(f"http://127.0.0.1:{port}/json", timeout=5) as reply:
        pages = [t for t in json.load(reply) if t.get("url", "").startswith(prefix)]
    if not pages:
        raise RuntimeError("no page at " + prefix)
    ws = websocket.create_connection(pages[0]["webSocketDebuggerUrl"], timeout=10)
    calls = iter(range(1, 100))

    def call(method, **params):
        number = next(calls)
        ws.send(json.dumps({"id": number, "method": method, "params": params}))
        while (reply := json.loads(ws.recv())).get("id") != number:
            pass
        if "error" in reply or "exceptionDetails" in reply.get("result", {}):
            raise RuntimeError(f"{method}: {reply}")
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
        main(*sys.argv[1:5])
    except Exception as e:  # a failed poll prints why
        sys.exit(f"cdp: {e}")
