#!/usr/bin/env bash
# package_test.sh BUILD_DIR PROBE_DIR: installs the build into a staging prefix and checks the
# files, the SONAME, and a ten-line host built against the installed header through pkg-config
# and through find_package, which loads the installed library and gets an answer. As root, the
# CPack .deb installs with dpkg -i, its vsmhost answers, and it is purged again.
set -euo pipefail
build=$(cd "$1" && pwd)
probe=$(cd "$2" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }
# vsmctl's answer to the probe's command, less the last line feed, which $(...) drops.
mkdir "$work/ctl" && cp "$build/tools/vsmctl" "$work/ctl" && cp "$build/libvsm.so" "$work/ctl"
expected=$("$work/ctl/vsmctl" '{"id":"1","cmdId":"2","method":"ChangePort"}' |
  sed -n '/^--- answer/,/^--- result/{//!p}')

stage=$work/stage
cmake --install "$build" --prefix "$stage" >/dev/null
libdir=$(dirname "$(find "$stage" -name vsm.pc)")/..
for file in include/vsm.h bin/vsmhost bin/vsmctl bin/vsmkit; do
  [ -e "$stage/$file" ] || fail "not installed: $file"
done
for file in libvsm.so libvsm.so.16 cmake/vsm/vsmConfig.cmake vsm/vsmhost vsm/libvsm.so \
  vsm/page/index.html; do
  [ -e "$libdir/$file" ] || fail "not installed: $file"
done
objdump -p "$libdir/libvsm.so.16" | grep -q 'SONAME *libvsm\.so\.16$' || fail "no SONAME"
"$stage/bin/vsmhost" --help | grep -q -- --module || fail "vsmhost --help"

export PKG_CONFIG_PATH=$libdir/pkgconfig
mkdir "$work/pc"  # the probes run in folders of their own: the module keeps its files there
cc -Wall $(pkg-config --cflags vsm) -DVSM_MODULE="\"$(pkg-config --variable=module vsm)\"" \
  "$probe/probe.c" $(pkg-config --libs vsm) -o "$work/pc/probe"
[ "$("$work/pc/probe")" = "$expected" ] || fail "pkg-config probe: $("$work/pc/probe")"
cmake -S "$probe" -B "$work/cm" -DCMAKE_PREFIX_PATH="$stage" >/dev/null
cmake --build "$work/cm" >/dev/null
[ "$("$work/cm/probe")" = "$expected" ] || fail "find_package probe: $("$work/cm/probe")"
echo "staged install: files, SONAME, pkg-config and find_package probes ok"

if [ "$(id -u)" -ne 0 ] || dpkg-query -W vsm >/dev/null 2>&1; then
  echo "SKIP: the .deb install needs root and no vsm package installed already"
  exit 0
fi
cpack --config "$build/CPackConfig.cmake" -B "$work/deb" >/dev/null
deb=$(ls "$work"/deb/vsm_*.deb)
depends=$(dpkg-deb -f "$deb" Depends)
[[ $depends == *libjsoncpp* ]] || fail "Depends lacks libjsoncpp: $depends"
flock /tmp/apt.lock dpkg -i "$deb" >/dev/null  # other jobs may run apt meanwhile
service=$(dirname "$(readlink -f "$(command -v vsmhost)")")
trap '[ -n "${host:-}" ] && kill "$host"; flock /tmp/apt.lock dpkg --purge vsm >/dev/null;
  [[ $service == */vsm ]] && rm -rf "$service"; rm -rf "$work"' EXIT
vsmhost --port 0 >"$work/out" 2>/dev/null &
host=$!
for _ in $(seq 100); do grep -q listening "$work/out" && break; sleep 0.1; done
port=$(sed -n 's|^listening on http://127.0.0.1:\([0-9]*\)$|\1|p' "$work/out")
answer=$(python3 -c 'import http.client, sys
c = http.client.HTTPConnection("127.0.0.1", int(sys.argv[1]), timeout=30)
c.request("POST", "/vsm/", "{\"id\":\"1\",\"cmdId\":\"2\",\"method\":\"ChangePort\"}")
print(c.getresponse().read().decode(), end="")' "${port:-0}")
[ "$answer" = "$expected" ] || fail "installed vsmhost answered: $answer"
kill -TERM "$host" && wait "$host" || fail "installed vsmhost did not stop cleanly"
host=
echo "deb: $(basename "$deb") installs, depends on $depends, and its vsmhost answers"
