#!/bin/sh
# Receives SNMP v1 and v2c traps on 127.0.0.1, UDP port PORT, into the trap
# store of a site laid out by console-site.sh, until stopped. snmptrapd hands
# each trap to kxtrapreceive, which runs beside the CGI programs (their
# ./snmptrapd.ini, TrapMibs and OID2Mib.ini count for it too).
# usage: trap-receiver.sh SITE PORT
set -eu
site=$1 port=$2
mkdir -p "$site/run/snmp"
cd "$site/www"
# No MIB of the system is loaded: OIDs stay numeric (-On), octet strings
# come as hexadecimal bytes (-Ox) and time ticks as numbers (-Ot), which is
# the form kxtrapreceive reads. -C: no configuration but the site's.
SNMP_PERSISTENT_DIR="$site/run/snmp" MIBS= exec snmptrapd -f -C -c "$site/run/snmptrapd.conf" \
  -m "" -M /dev/null -Lf "$site/run/snmptrapd.log" -On -Ox -Ot "udp:127.0.0.1:$port" >/dev/null
