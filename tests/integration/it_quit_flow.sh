#!/usr/bin/env bash
# Quitting for good, as the user does it: the tray panel's Quit, ten seconds to think,
# "The app is broken" with a few words of feedback, five last seconds. The feedback
# reaches the webhook, and the program ends with the status the service does not
# restart. A program ended by a signal, on the other hand, ends by that signal, so that
# the service brings it back.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

[ -x "${VELMORA_PREFS:-}" ] || fail "VELMORA_PREFS ('${VELMORA_PREFS:-}') is not the velmora-prefs tool"
prefs() { "$VELMORA_PREFS" "$VELMORA_CONF" "$@"; }
resources="$(cd "$(dirname "$0")/../../resources" && pwd)"
work="$VELMORA_IT_DIR/quit"
mkdir -p "$work/bin"

# systemctl as the program sees it: no user manager answers, so that the program runs itself.
cat >"$work/bin/systemctl" <<EOS
#!/bin/sh
case "\$*" in *is-system-running*) echo offline ;; esac
exit 0
EOS
chmod +x "$work/bin/systemctl"
export PATH="$work/bin:$PATH"

# The configuration server and the feedback webhook on one local port.
cat >"$work/server.py" <<'EOS'
import http.server, json, sys

work, resources = sys.argv[1], sys.argv[2]

class Handler(http.server.BaseHTTPRequestHandler):
    def answer(self, status, body, kind="application/json"):
        self.send_response(status)
        self.send_header("Content-Type", kind)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def do_GET(self):
        with open(work + "/gets.log", "a") as f:
            f.write(self.path + "\n")
        if self.path == "/config/config.json":
            with open(resources + "/config.json", encoding="utf-8") as f:
                catalogue = json.load(f)
            catalogue["common"]["webhookUrl"] = "http://127.0.0.1:%d/hook" % self.server.server_port
            self.answer(200, json.dumps(catalogue).encode())
        elif self.path == "/config/version.json":
            self.answer(200, b'{"version": "0.0.1"}')
        else:
            self.answer(404, b"{}")

    def do_POST(self):
        body = self.rfile.read(int(self.headers.get("Content-Length", 0)))
        with open(work + "/posts.jsonl", "ab") as f:
            f.write(body.replace(b"\n", b" ") + b"\n")
        self.answer(200, b"1", "text/plain")

    def log_message(self, *args):
        pass

server = http.server.HTTPServer(("127.0.0.1", 0), Handler)
with open(work + "/port.tmp", "w") as f:
    f.write(str(server.server_port))
import os
os.rename(work + "/port.tmp", work + "/port")
server.serve_forever()
EOS
start_helper "$VELMORA_IT_PYTHON" "$work/server.py" "$work" "$resources"
poll 10 "the local server is listening" test -s "$work/port"
port="$(cat "$work/port")"

# No routine today: nothing but the tray.
# The morning lock falls at 07:00, while the quit flow is open: the flow must stay
# above it and keep the keyboard. The night before is bought off until then.
day="$(date -d tomorrow +%F)"
prefs set-string kUserdefaultsSelectedJson \
    '{"morningHabits": [{"name": "Water", "durationSeconds": 120}], "startTime": "07:00", "shutOffTime": "22:00"}'
prefs set-bool kUserdefaultsFirstRun true
prefs set-date UserdefaultsLastHabitShowDate "$(date -d "$day - 1 day" +%F) 07:00:00"
prefs set-date kUserdefaultsShutdownAborted "$day 07:00:00"

# The user is at work in an ordinary window.
start_helper xmessage -name ordinary -geometry 500x200+300+200 "An ordinary application window"
poll 10 "the ordinary window is mapped" xdotool search --onlyvisible --classname '^ordinary$'
ordinary="$(printf '0x%x' "$(xdotool search --onlyvisible --classname '^ordinary$' | head -n1)")"

start_accessibility
export VELMORA_CONFIG_SERVER="http://127.0.0.1:$port"
start_velmora "$day 06:59:50"

poll 30 "the status icon is embedded in the tray" xutil tray-icons velmora
icon="$(xutil tray-icons velmora | head -n1 | cut -d' ' -f1)"
poll 20 "the catalogue was fetched from the local server" grep -qx /config/config.json "$work/gets.log"

# The panel opens from a left click on the icon; clicks before start-up has finished
# are ignored, so click until it is there. (A pop-up is not on AT-SPI: its rows are
# reached by their place, the last one being Quit.)
open_panel() {
    mapped_titled "Velmora menu" && return 0
    xdotool mousemove --window "$(($icon))" 10 10 click 1
    sleep 0.5
    mapped_titled "Velmora menu"
}
poll 20 "the panel opens from the tray icon" open_panel
panel="$(windows_titled "Velmora menu" | head -n1)"
screenshot 1-panel
read -r w h x y < <(geometry_of "$panel" | tr 'x+' '   ')
xdotool mousemove "$((x + w / 2))" "$((y + h - 16))" click 1
poll 10 "the quit window is mapped" mapped_titled "Velmora quit"
quitwin="$(windows_titled "Velmora quit" | head -n1)"
seen="a11y names label" poll 5 "the count-down starts" a11y has label "Quitting.."
poll 30 "the morning lock comes up at 07:00" mapped_titled "Velmora lock"
lock="$(windows_titled "Velmora lock" | head -n1)"
seen="root_windows _NET_CLIENT_LIST_STACKING" poll 5 "the quit window is above the lock" \
    stacked_above "$lock" "$quitwin"
seen="root_windows _NET_CLIENT_LIST_STACKING" poll 5 "the quit window is above the ordinary window" \
    stacked_above "$ordinary" "$quitwin"
screenshot 2-count-down

seen="a11y names label" poll 15 "the reasons come after ten seconds" \
    a11y has label "Can you share why you're quitting?"
screenshot 3-reasons

# The reason list holds the keyboard focus: open it and take the second reason below
# "Select a reason".
xdotool windowactivate --sync "$(($quitwin))" 2>/dev/null || true
xdotool key --clearmodifiers F4
sleep 0.5
xdotool key --clearmodifiers Down Down Return
seen="a11y names label" poll 5 "'The app is broken' asks what happened" \
    a11y has label "Oh no! We're really sorry. Can you please let us know what happened?﹡"
xdotool type --delay 30 "It froze at noon"
seen="a11y dump" poll 5 "the Quit button is there" a11y has button Quit
screenshot 4-feedback
a11y press Quit || fail "the quit window's Quit could not be pressed"
seen="a11y names label" poll 5 "the farewell is shown" \
    a11y has label "We hope you will start the habits back soon! See you soon."

# Five seconds, the upload, and the end.
deadline=$((SECONDS + 30))
while velmora_running && [ "$SECONDS" -lt "$deadline" ]; do sleep 0.2; done
velmora_running && fail "the program still runs 30 s after the last Quit"
status=0
wait "$VELMORA_PID" || status=$?
VELMORA_PID=""
[ "$status" -eq 64 ] || fail "the program exited with status $status, not 64"

[ -s "$work/posts.jsonl" ] || fail "no feedback reached the webhook"
"$VELMORA_IT_PYTHON" - "$work/posts.jsonl" <<'EOS' || fail "the feedback posted is not as expected: $(cat "$work/posts.jsonl")"
import json, sys
posts = [json.loads(line) for line in open(sys.argv[1], encoding="utf-8") if line.strip()]
assert len(posts) == 1, posts
post = posts[0]
assert post["quitReason"] == "The app is broken", post
assert post["feedback"] == "It froze at noon", post
EOS

# A signal is no quit: the program ends by it, which the service restarts.
start_velmora
poll 30 "the second run's status icon is in the tray" xutil tray-icons velmora
kill -TERM "$VELMORA_PID"
deadline=$((SECONDS + 10))
while velmora_running && [ "$SECONDS" -lt "$deadline" ]; do sleep 0.1; done
status=0
wait "$VELMORA_PID" || status=$?
VELMORA_PID=""
[ "$status" -eq $((128 + 15)) ] || fail "after SIGTERM the program exited with status $status, not by the signal (143)"
