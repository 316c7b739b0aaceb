#!/bin/sh
# Serves the sample console on http://127.0.0.1:PORT/, receives traps on
# 127.0.0.1, UDP port TRAP-PORT, and runs the simulated blade chassis of the
# inventory page on udp 127.0.0.1:AGENT-PORT (PORT + 1 unless given), until
# Ctrl-C.
# usage: serve-console.sh CGI-PROGRAM [PORT [TRAP-PORT [AGENT-PORT]]]
set -eu
program=$1 port=${2:-8080} trap_port=${3:-10162} agent=${4:-$((${2:-8080} + 1))}
here=$(cd "$(dirname "$0")/.." && pwd)
site=$(mktemp -d)
receiver= agent_pid=
stop() {
  for pid in $receiver $agent_pid; do kill "$pid" 2>/dev/null || true; wait "$pid" 2>/dev/null || true; done
  rm -rf "$site"
}
trap stop EXIT
trap 'exit 130' INT TERM
"$here/tools/snmp-agent.sh" "$here/examples/console/snmp/agent" "$agent" &
agent_pid=$!
"$here/tools/console-site.sh" "$site" "$program" "$port" "$agent"
echo "The inventory page: http://127.0.0.1:$port/inventory.cgi (chassis on udp 127.0.0.1:$agent)"
if [ -f "$site/run/snmptrapd.conf" ]; then
  "$here/tools/trap-receiver.sh" "$site" "$trap_port" &
  receiver=$!
  echo "Traps sent to 127.0.0.1:$trap_port (UDP) appear on the trap page"
fi
echo "The console is served on http://127.0.0.1:$port/ (Ctrl-C stops it)"
lighttpd -D -f "$site/lighttpd.conf" || true
