#!/bin/sh
# Runs every benchmark program in a folder, one after the other.
# usage: run-benchmarks.sh FOLDER
set -eu
for program in "$1"/bench_*; do
  [ -x "$program" ] || continue
  echo "== $(basename "$program")"
  "$program"
done
