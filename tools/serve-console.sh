#!/bin/sh
# Serves the sample console on http://127.0.0.1:PORT/ until Ctrl-C.
# The simulated blade chassis of the inventory page answers SNMP on udp
# 127.0.0.1:AGENT-PORT (PORT + 1 unless given) beside it.
# usage: serve-console.sh CGI-PROGRAM [PORT [AGENT-PORT]]
set -eu
program=$1 port=${2:-8080} agent=${3:-$((${2:-8080} + 1))}
here=$(cd "$(dirname "$0")/.." && pwd)
site=$(mktemp -d)
"$here/tools/snmp-agent.sh" "$here/examples/console/snmp/agent" "$agent" &
agent_pid=$!
trap 'kill "$agent_pid" 2>/dev/null; wait "$agent_pid" 2>/dev/null; rm -rf "$site"' EXIT INT TERM
"$here/tools/console-site.sh" "$site" "$program" "$port" "$agent"
echo "The inventory page: http://127.0.0.1:$port/inventory.cgi (chassis on udp 127.0.0.1:$agent)"
echo "The console is served on http://127.0.0.1:$port/ (Ctrl-C stops it)"
lighttpd -D -f "$site/lighttpd.conf" || true
