#!/bin/sh
# Serves the sample console on http://127.0.0.1:PORT/ and receives traps on
# 127.0.0.1, UDP port TRAP-PORT, until Ctrl-C.
# usage: serve-console.sh CGI-PROGRAM [PORT [TRAP-PORT]]
set -eu
program=$1 port=${2:-8080} trap_port=${3:-10162}
site=$(mktemp -d)
receiver=
stop() {
  if [ -n "$receiver" ]; then kill "$receiver" 2>/dev/null || true; wait "$receiver" 2>/dev/null || true; fi
  rm -rf "$site"
}
trap stop EXIT
trap 'exit 130' INT TERM
"$(dirname "$0")/console-site.sh" "$site" "$program" "$port"
if [ -f "$site/run/snmptrapd.conf" ]; then
  "$(dirname "$0")/trap-receiver.sh" "$site" "$trap_port" &
  receiver=$!
  echo "Traps sent to 127.0.0.1:$trap_port (UDP) appear on the trap page"
fi
echo "The console is served on http://127.0.0.1:$port/ (Ctrl-C stops it)"
lighttpd -D -f "$site/lighttpd.conf" || true
