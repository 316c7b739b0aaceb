#!/bin/sh
# Runs snmpsim in the foreground as the managed servers of the sample console:
# every DATA-DIR/<community>.snmprec answers SNMP v1 and v2c reads with that
# community on udp 127.0.0.1:PORT. Stop it with a signal.
# usage: snmp-agent.sh DATA-DIR PORT
set -eu
data=$1 port=$2
# snmpsim keeps an index of each data file beside its own run files.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT INT TERM
cp "$data"/*.snmprec "$work/"
mkdir "$work/cache"
drop=""
# Started as root, snmpsim must run as an unprivileged user.
if [ "$(id -u)" = 0 ]; then
  chmod -R a+rwX "$work"
  drop="--process-user=nobody --process-group=nogroup"
fi
# shellcheck disable=SC2086
snmpsimd --data-dir="$work" --cache-dir="$work/cache" --agent-udpv4-endpoint="127.0.0.1:$port" \
  --logging-method=null $drop &
agent=$!
trap 'kill "$agent" 2>/dev/null; wait "$agent" 2>/dev/null; rm -rf "$work"' EXIT INT TERM
wait "$agent"
