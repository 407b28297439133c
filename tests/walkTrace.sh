#!/usr/bin/env bash
# Keeps the example that walks a trace one to be copied: it shows what is there, and says what is
# wrong where it fails.
# Usage: walkTrace.sh SOURCE_DIR PROGRAM
set -euo pipefail
program=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
trace=$work/one.trace
head -c 150 "$1/tests/golden/messages.trace" >"$trace" # one GPS message

fail() {
    echo "walkTrace.sh: $*" >&2
    exit 1
}

# refused TEXT FILE: the program fails, with one line that says so.
refused() {
    local status=0
    "$program" "$2" >"$work/out" 2>"$work/err" || status=$?
    [ "$status" -eq 1 ] || fail "the status for $2 is $status"
    diff "$work/err" <(echo "walkTrace: $1 $2") >&2 || fail "it does not say what is wrong with $2"
}

"$program" "$trace" >"$work/whole" 2>"$work/err" || fail "it cannot walk a trace"
[ ! -s "$work/err" ] || fail "it complains about a whole trace"
grep -q 'GPS         |' "$work/whole" || fail "it shows nothing"

refused "cannot open" "$work/none.trace"
refused "cannot read" "$work"
head -c -1 "$trace" >"$work/torn.trace"
refused "no whole message at the end of" "$work/torn.trace"
echo "The example walks traces, and says where it cannot."
