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
