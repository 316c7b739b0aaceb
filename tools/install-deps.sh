#!/bin/sh
# Installs the Debian packages the build, tests, benchmarks and demo need.
# Idempotent: apt-get runs only when something is missing.
set -eu
# Build and tests: compilers, LLVM's linker for optimised builds, GoogleTest, the
# sanitizer and fuzzer runtimes.
# Companion stand-ins: net-snmp for MIB trees and SNMP reads, inih for ini files.
# Real peers in tests and the demo: lighttpd, snmptrapd and the snmp tools,
# snmpd and snmpsim as managed servers, snmptt for trap texts, Chromium.
# Benchmarks: ClearSilver.
packages="cmake ninja-build g++ clang lld libclang-rt-14-dev libgtest-dev
locales binutils lighttpd clearsilver-dev
libsnmp-dev snmp snmptrapd snmpd snmpsim snmptt libinih-dev chromium"
missing=""
for p in $packages; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" ||
    missing="$missing $p"
done
[ -z "$missing" ] && exit 0
echo "installing:$missing"
sudo=""
[ "$(id -u)" -eq 0 ] || sudo=sudo
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends $missing
