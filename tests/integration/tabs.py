#!/usr/bin/python3
"""Chromium's tabs through DevTools: tabs.py PORT open URL | url ID | wait ID PREFIX SECONDS"""
import json, sys, time, urllib.parse, urllib.request

port, command = sys.argv[1], sys.argv[2]
base = "http://127.0.0.1:%s/json" % port


def tabs():
    with urllib.request.urlopen(base + "/list", timeout=5) as reply:
        return json.load(reply)


def url_of(tab_id):
    return next((tab.get("url", "") for tab in tabs() if tab.get("id") == tab_id), None)


if command == "open":
    request = urllib.request.Request(base + "/new?" + urllib.parse.quote(sys.argv[3], safe=":/?&=%"), method="PUT")
    with urllib.request.urlopen(request, timeout=5) as reply:
        print(json.load(reply)["id"])
elif command == "url":
    print(url_of(sys.argv[3]) or "")
elif command == "wait":
    tab_id, prefix, seconds = sys.argv[3], sys.argv[4], float(sys.argv[5])
    start = time.monotonic()
    while time.monotonic() - start < seconds:
        url = url_of(tab_id)
        if url is not None and url.startswith(prefix):
            print("%.1f" % ((time.monotonic() - start) * 1000))
            sys.exit(0)
        time.sleep(0.005)
    print("tab %s still at %s" % (tab_id, url_of(tab_id)), file=sys.stderr)
    sys.exit(1)
