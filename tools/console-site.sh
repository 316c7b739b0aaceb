#!/bin/sh
# Lays out the sample console as a web site: the CGI program with its
# definition and pages in SITE/www, and a lighttpd configuration in
# SITE/lighttpd.conf serving it on 127.0.0.1:PORT.
# usage: console-site.sh SITE CGI-PROGRAM PORT
set -eu
site=$1 program=$2 port=$3
here=$(cd "$(dirname "$0")/.." && pwd)
mkdir -p "$site/www"
cp -R "$here/examples/console/." "$site/www/"
rm -f "$site/www/"*.c
cp "$program" "$site/www/console.cgi"
# The console's second application, built beside the first.
if [ -f "$(dirname "$program")/PeerScan.cgi" ]; then cp "$(dirname "$program")/PeerScan.cgi" "$site/www/"; fi
cat >"$site/lighttpd.conf" <<CONF
server.document-root = "$site/www"
server.bind = "127.0.0.1"
server.port = $port
server.pid-file = "$site/lighttpd.pid"
server.errorlog = "$site/error.log"
server.modules = ("mod_redirect", "mod_cgi")
server.max-request-size = 16384
server.max-worker = 0
cgi.assign = (".cgi" => "")
index-file.names = ("index.html")
url.redirect = ("^/\$" => "/console.cgi?Application=console")
mimetype.assign = (".html" => "text/html", ".css" => "text/css", ".htm" => "text/html")
static-file.exclude-extensions = (".cgi", ".ini", ".htm")
CONF
