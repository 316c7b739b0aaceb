#!/bin/sh
# Runs one fuzz target for a bounded time over its seeds. New inputs go to a
# temporary corpus; whatever crashes is written beside it for a look.
# usage: run-fuzzer.sh TARGET SEEDS-DIR SECONDS
set -eu
target=$1 seeds=$2 seconds=$3
[ -d "$seeds" ] || { echo "no seeds in $seeds"; exit 1; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/corpus"
export ASAN_OPTIONS=detect_leaks=1
# Kept crash inputs are seeds too: replaying them all first fails at once.
"$target" -runs=0 "$seeds" >"$work/replay.log" 2>&1 || { cat "$work/replay.log"; exit 1; }
"$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
  -artifact_prefix="${TMPDIR:-/tmp}/kx-" "$work/corpus" "$seeds"
