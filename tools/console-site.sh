#!/bin/sh
# Lays out the sample console as a web site: the CGI program with its
# definition and pages in SITE/www, and a lighttpd configuration in
# SITE/lighttpd.conf serving it on 127.0.0.1:PORT. When kxtrapreceive lies
# beside the CGI program, also the trap store (SITE/traps, the server list
# SITE/hwinv.dba, the sample traps) and SITE/run/snmptrapd.conf for
# tools/trap-receiver.sh.
# With AGENT-PORT, the server list of the inventory page (SITE/www/snmp/
# hwinv.dba) names the simulated chassis on udp 127.0.0.1:AGENT-PORT.
# usage: console-site.sh SITE CGI-PROGRAM PORT [AGENT-PORT]
set -eu
site=$1 program=$2 port=$3 agent=${4:-}
here=$(cd "$(dirname "$0")/.." && pwd)
# The console's user files ("RootPath" "..") live in SITE/console, outside
# the web root.
mkdir -p "$site/www" "$site/run" "$site/console"
cp -R "$here/examples/console/." "$site/www/"
rm -f "$site/www/"*.c
cp "$program" "$site/www/console.cgi"
# The console's second application, built beside the first.
if [ -f "$(dirname "$program")/PeerScan.cgi" ]; then cp "$(dirname "$program")/PeerScan.cgi" "$site/www/"; fi
# The inventory page, with the server list of the simulated chassis.
if [ -f "$(dirname "$program")/inventory.cgi" ]; then cp "$(dirname "$program")/inventory.cgi" "$site/www/"; fi
if [ -n "$agent" ]; then
  sed "s/@AGENT@/127.0.0.1:$agent/g" "$here/examples/console/snmp/hwinv.dba.in" >"$site/www/snmp/hwinv.dba"
fi
# The trap store and the server list lie outside the web root; the CGI
# programs find them through ./snmptrapd.ini, the trap MIBs through MibPath,
# TrapMibs and OID2Mib.ini beside them.
mkdir -p "$site/traps"
mv "$site/www/hwinv.dba" "$site/hwinv.dba"
rm -rf "$site/www/sample-traps"
printf 'TrapsDirectory = %s\nDBDirectory = %s\n' "$site/traps" "$site/hwinv.dba" >"$site/www/snmptrapd.ini"
receiver="$(dirname "$program")/kxtrapreceive"
if [ -x "$receiver" ]; then
  cp "$receiver" "$site/run/kxtrapreceive"
  # One log line per trap received: the tests count them.
  printf 'disableAuthorization yes\nformat1 received %%b\\n\nformat2 received %%b\\n\ntraphandle default %s\n' \
    "$site/run/kxtrapreceive" >"$site/run/snmptrapd.conf"
  for sample in "$here"/examples/console/sample-traps/*.txt; do
    (cd "$site/www" && "$site/run/kxtrapreceive" <"$sample" >/dev/null)
  done
fi
cat >"$site/lighttpd.conf" <<CONF
server.document-root = "$site/www"
server.bind = "127.0.0.1"
server.port = $port
server.pid-file = "$site/run/lighttpd.pid"
server.errorlog = "$site/run/error.log"
server.modules = ("mod_access", "mod_redirect", "mod_cgi")
server.max-request-size = 16384
server.max-worker = 0
cgi.assign = (".cgi" => "")
index-file.names = ("index.html")
url.redirect = ("^/\$" => "/console.cgi?Application=console")
mimetype.assign = (".html" => "text/html", ".css" => "text/css", ".htm" => "text/html")
static-file.exclude-extensions = (".cgi", ".ini", ".htm", ".dba", ".in", ".snmprec", ".MIB")
# Temporary files of a save, lock files and every hidden file stay private.
url.access-deny = (".tmp", ".lock", "~", ".dba")
\$HTTP["url"] =~ "/\\." { url.access-deny = ("") }
CONF
# Started as root, lighttpd runs itself and the CGI program as an
# unprivileged user, who owns the site's files so that saves can replace them.
if [ "$(id -u)" = 0 ]; then
  cat >>"$site/lighttpd.conf" <<CONF
server.username = "nobody"
server.groupname = "nogroup"
CONF
  chmod 755 "$site"
  chown -R nobody:nogroup "$site/www" "$site/run" "$site/console" "$site/traps"
fi
