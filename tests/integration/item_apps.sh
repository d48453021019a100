# Sourced after lib.sh: applications Alpha and Beta (plain X11 windows with desktop entries).
item_apps_entries() {
    local name
    mkdir -p "$XDG_DATA_HOME/applications"
    for name in Alpha Beta; do
        printf '[Desktop Entry]\nType=Application\nName=%s\nExec=%s %s %s\nStartupWMClass=%s\n' "$name" \
            "$VELMORA_IT_PYTHON" "$it_here/testwin.py" "$name" "$name" >"$XDG_DATA_HOME/applications/${name,,}.desktop"
    done
}

# Beta, when it exists, is iconified each time it is activated; Alpha ($alpha) is not.
beta_hidden_alpha_stays() {
    local round
    poll 10 "Beta's window exists" xdotool search --class '^Beta$'
    beta="$(xdotool search --class '^Beta$' | head -n1)"
    for round in 1 2 3; do
        xdotool windowactivate "$beta" 2>/dev/null || true
        seen="xprop -id $beta WM_STATE _NET_WM_STATE" poll 5 "Beta is iconified at activation $round" iconic "$beta"
        xdotool windowactivate "$alpha" 2>/dev/null || true
        sleep 1.2 # a tick of the one-second check
        ! iconic "$alpha" || fail "the allowed Alpha was iconified (round $round)"
    done
}

iconic() { xprop -id "$1" WM_STATE 2>/dev/null | grep -q 'window state: Iconic'; }
