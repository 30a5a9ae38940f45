#!/usr/bin/env bash
# The main job: builds libvsm.so and the vsmctl host, then runs a short demo conversation
# through the ten exports, exactly as a host would. The demo runs in its own folder
# (build/demo), where start-up creates the module's working folders and configuration.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
scripts/build.sh build/main -DVSM_BUILD_TESTS=OFF

demo=build/demo
rm -rf "$demo"
mkdir -p "$demo"
cp build/main/libvsm.so build/main/tools/vsmctl "$demo/"

cat <<'COMMANDS' | "$demo/vsmctl" --origin http://127.0.0.1:18625
{"id":"1","cmdId":"1","method":"VersionInfo","parameter":[]}
{"id":"2","cmdId":"2","method":"VSVersion","parameter":[]}
{"id":"3","cmdId":"3","method":"ChangePort","parameter":["a"]}
{"id":"4","cmdId":"4","method":"GetServerInfo","parameter":[]}
{"id":"5","cmdId":"5","method":"SetServerInfo","parameter":["127.0.0.1",18625,18626,18622,18623]}
{"id":"6","cmdId":"6","method":"GetServerInfo","parameter":[]}
{"id":"7","cmdId":"7","method":"CheckQPTPort","parameter":["127.0.0.1",18622,18623]}
{"id":"8","cmdId":"8","method":"GetLocalIP","parameter":[]}
{"id":"9","cmdId":"9","method":"NoSuchMethod","parameter":[1,2.5,null]}
COMMANDS

echo "--- $demo/VSConfiguration.ini"
cat "$demo/VSConfiguration.ini"

# The same module behind vsmhost, the reference host, on a free loopback port: a page would
# talk to it the same way (open http://127.0.0.1:PORT/ in a browser while it runs).
cp build/main/tools/vsmhost "$demo/"
cp -r build/main/tools/page "$demo/"
"$demo/vsmhost" --port 0 --verbose >"$demo/vsmhost.out" 2>"$demo/vsmhost.err" &
host=$!
trap 'kill "$host" 2>/dev/null || true' EXIT
for _ in $(seq 100); do grep -q listening "$demo/vsmhost.out" && break; sleep 0.1; done
port=$(sed -n 's|^listening on http://127.0.0.1:\([0-9]*\)$|\1|p' "$demo/vsmhost.out")
echo "--- vsmhost on http://127.0.0.1:$port"
host_request() { python3 -c '
import http.client, sys
c = http.client.HTTPConnection("127.0.0.1", int(sys.argv[1]), timeout=30)
c.request(sys.argv[2], sys.argv[3], sys.argv[4] if len(sys.argv) > 4 else None,
          {"Origin": "http://127.0.0.1:" + sys.argv[1]})
r = c.getresponse()
print("---", sys.argv[2], sys.argv[3], r.status)
sys.stdout.write(r.read().decode())
print()' "$port" "$@"; }
host_request GET /status
host_request POST /vsm/ '{"id":"1","cmdId":"1","method":"VSVersion","parameter":[]}'
host_request GET '/vsm/ChangePort?id=2&p=["a"]'
kill -TERM "$host"
wait "$host"
trap - EXIT
echo "--- vsmhost stopped; its log:"
cat "$demo/vsmhost.err"
