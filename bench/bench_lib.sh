# Sourced by the benches that drive the built program: where it and velmora-prefs are
# (VELMORA_BIN, VELMORA_PREFS), the integration tests' helpers, and $here, this folder.
here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
VELMORA_BIN="${VELMORA_BIN:-$here/../build/bin/velmora}"
VELMORA_PREFS="${VELMORA_PREFS:-$(dirname "$VELMORA_BIN")/velmora-prefs}"
export VELMORA_BIN
. "$here/../tests/integration/lib.sh"
[ -x "$VELMORA_PREFS" ] || fail "velmora-prefs is not built ($VELMORA_PREFS)"
