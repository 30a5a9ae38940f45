#!/usr/bin/env bash
# package_test.sh BUILD_DIR PROBE_DIR: installs the build into a staging prefix and checks what a
# user of the package gets: the files and links, a library with a SONAME, and a ten-line host
# built against the installed header through pkg-config and through find_package, which loads
# the installed library and gets an answer. As root, the .deb is built with CPack, installed
# with dpkg -i, its vsmhost answers, and it is removed again; otherwise that part is skipped.
set -euo pipefail
build=$(cd "$1" && pwd)
probe=$(cd "$2" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }
# The answer without its last line feed, which $(...) drops.
expected=$'{\n   "id" : "1",\n   "method" : "ChangePort",\n   "result" : [ true ],\n\t"cmdId" : "2"\n}'

stage=$work/stage
cmake --install "$build" --prefix "$stage" >/dev/null
libdir=$(dirname "$(find "$stage" -name libvsm.so.16 | head -1)")
[ -n "$libdir" ] || fail "no libvsm.so.16 installed"
for file in "$stage/include/vsm.h" "$libdir/pkgconfig/vsm.pc" "$libdir/cmake/vsm/vsmConfig.cmake" \
  "$libdir/vsm/vsmhost" "$libdir/vsm/vsmctl" "$libdir/vsm/page/index.html" "$libdir/vsm/libvsm.so" \
  "$stage/bin/vsmhost" "$stage/bin/vsmctl" "$stage/bin/vsmkit" "$libdir/libvsm.so"; do
  [ -e "$file" ] || fail "not installed: ${file#$stage/}"
done
objdump -p "$libdir/libvsm.so.16" | grep -q 'SONAME *libvsm\.so\.16$' || fail "no SONAME libvsm.so.16"

# Through pkg-config. The probe runs in a folder of its own: the module keeps its files there.
export PKG_CONFIG_PATH=$libdir/pkgconfig
mkdir "$work/pc"
cc -Wall -Wextra -Wno-unused-parameter $(pkg-config --cflags vsm) \
  -DVSM_MODULE="\"$(pkg-config --variable=module vsm)\"" "$probe/probe.c" $(pkg-config --libs vsm) \
  -o "$work/pc/probe"
[ "$("$work/pc/probe")" = "$expected" ] || fail "pkg-config probe: $("$work/pc/probe")"

# Through find_package.
cmake -S "$probe" -B "$work/cm" -DCMAKE_PREFIX_PATH="$stage" >/dev/null
cmake --build "$work/cm" >/dev/null
[ "$("$work/cm/probe")" = "$expected" ] || fail "find_package probe: $("$work/cm/probe")"

# The staged vsmhost, through its link in bin/, finds the module and the page beside it.
"$stage/bin/vsmhost" --help | grep -q -- --module || fail "vsmhost --help"
echo "staged install: files, SONAME, pkg-config and find_package probes ok"

if [ "$(id -u)" -ne 0 ] || ! command -v dpkg >/dev/null; then
  echo "SKIP: the .deb install needs root and dpkg"
  exit 0
fi
cpack --config "$build/CPackConfig.cmake" -B "$work/deb" >/dev/null
deb=$(find "$work/deb" -maxdepth 1 -name 'vsm_*.deb' | head -1)
[ -n "$deb" ] || fail "CPack made no .deb"
dpkg-deb -f "$deb" Depends | grep -q libjsoncpp || fail "no Depends on libjsoncpp: $(dpkg-deb -f "$deb" Depends)"
if dpkg-query -W -f='${Status}' vsm 2>/dev/null | grep -q "install ok installed"; then
  echo "SKIP: a vsm package is installed on this machine already; leaving it alone"
  exit 0
fi
# Other jobs may run apt at the same time.
flock /tmp/apt.lock dpkg -i "$deb" >/dev/null
service=$(dirname "$(readlink -f "$(command -v vsmhost)")")
cleanup() {
  [ -n "${host:-}" ] && kill "$host" 2>/dev/null || true
  flock /tmp/apt.lock dpkg --purge vsm >/dev/null || true
  case $service in */vsm) rm -rf "$service" ;; esac  # the module's working files
  rm -rf "$work"
}
trap cleanup EXIT
vsmhost --port 0 >"$work/out" 2>"$work/err" &
host=$!
for _ in $(seq 100); do grep -q listening "$work/out" 2>/dev/null && break; sleep 0.1; done
port=$(sed -n 's|^listening on http://127.0.0.1:\([0-9]*\)$|\1|p' "$work/out")
[ -n "$port" ] || fail "installed vsmhost did not start: $(cat "$work/err")"
answer=$(python3 - "$port" <<'PY'
import http.client, sys
c = http.client.HTTPConnection("127.0.0.1", int(sys.argv[1]), timeout=30)
c.request("POST", "/vsm/", '{"id":"1","cmdId":"2","method":"ChangePort"}')
sys.stdout.write(c.getresponse().read().decode())
PY
)
[ "$answer" = "$expected" ] || fail "installed vsmhost answered: $answer"
kill -TERM "$host"
wait "$host" || fail "installed vsmhost did not stop cleanly"
host=
echo "deb: $(basename "$deb") installs, declares $(dpkg-deb -f "$deb" Depends), and its vsmhost answers"
