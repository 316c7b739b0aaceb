#!/bin/sh
# Serves the sample console on http://127.0.0.1:PORT/ until Ctrl-C.
# usage: serve-console.sh CGI-PROGRAM [PORT]
set -eu
program=$1 port=${2:-8080}
site=$(mktemp -d)
trap 'rm -rf "$site"' EXIT INT TERM
"$(dirname "$0")/console-site.sh" "$site" "$program" "$port"
echo "The console is served on http://127.0.0.1:$port/ (Ctrl-C stops it)"
lighttpd -D -f "$site/lighttpd.conf" || true
