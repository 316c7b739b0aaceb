#!/bin/sh
# Compares the dynamic symbols a library defines with a list of names.
# usage: check-exports.sh LIBRARY NAMES-FILE
set -eu
lib=$1 list=$2
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
grep -E '^[A-Za-z_]' "$list" | sort -u >"$tmp/wanted"
nm -D --defined-only "$lib" | awk '{print $NF}' | sort -u >"$tmp/have"
missing=$(comm -23 "$tmp/wanted" "$tmp/have")
extra=$(comm -13 "$tmp/wanted" "$tmp/have")
[ -z "$missing" ] || printf 'not exported:\n%s\n' "$missing"
[ -z "$extra" ] || printf 'exported but not listed:\n%s\n' "$extra"
[ -z "$missing$extra" ] && echo "$(wc -l <"$tmp/wanted") names exported, nothing else"
