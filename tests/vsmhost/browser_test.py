"""Headless chromium, driven over its DevTools protocol, loads the demo page from vsmhost, waits
for the page's conversation, checks what the page shows against vsmctl's answers, and saves a
screenshot (artifacts/vsmhost-page.png)."""
import asyncio
import base64
import json
import os
import shutil
import subprocess
import sys
import tempfile

import websockets

from hostlib import Host, artifact, vsmctl_answers, wait_until

# What the page sends after VersionInfo, whose answer depends on the socket's user; then the box.
COMMANDS = ['{"id":"2","cmdId":"2","method":"GetServerInfo","parameter":[]}',
            '{"id":"3","cmdId":"3","method":"ChangePort","parameter":["a"]}',
            '{"id":"4","cmdId":"4","method":"CheckQPTPort","parameter":["127.0.0.1",18625,18626]}',
            '{"id":"9","cmdId":"9","method":"NoSuchMethod","parameter":[1]}']
SHOWN = """JSON.stringify({state: document.body.dataset.state,
  identity: ['alias', 'version', 'ports', 'wait'].map(id => document.getElementById(id).textContent),
  methods: [...document.querySelectorAll('#conversation li')].map(item => item.dataset.method),
  answers: [...document.querySelectorAll('#conversation pre.answer')].map(pre => pre.textContent)})"""


async def drive(devtools_url, page_url):
    async with websockets.connect(devtools_url, max_size=None) as connection:
        serial = [0]

        async def call(method, session=None, **params):
            serial[0] += 1
            await connection.send(json.dumps({"id": serial[0], "method": method, "params": params,
                                              **({"sessionId": session} if session else {})}))
            while (reply := json.loads(await connection.recv())).get("id") != serial[0]:
                pass
            if "error" in reply:
                raise RuntimeError("%s: %s" % (method, reply["error"]))
            return reply["result"]

        target = (await call("Target.createTarget", url="about:blank"))["targetId"]
        page = (await call("Target.attachToTarget", targetId=target, flatten=True))["sessionId"]

        async def evaluate(expression, seconds=0):
            for _ in range(int(seconds * 10) + 1):
                value = (await call("Runtime.evaluate", page, expression=expression,
                                    returnByValue=True))["result"].get("value")
                if value:
                    break
                await asyncio.sleep(0.1)
            return value

        await call("Emulation.setDeviceMetricsOverride", page, width=1000, height=1400,
                   deviceScaleFactor=1, mobile=False)
        await call("Page.navigate", page, url=page_url)
        await evaluate("['done', 'failed'].includes(document.body?.dataset.state)", 30)
        shown = json.loads(await evaluate(SHOWN))
        await evaluate("document.getElementById('command').value = '%s';"
                       "document.querySelector('#send button').click(); 1" % COMMANDS[-1])
        shown["typed"] = await evaluate("document.getElementById('answer').textContent", 10)
        shot = await call("Page.captureScreenshot", page, format="png", captureBeyondViewport=True)
        return shown, base64.b64decode(shot["data"])


def main():
    chromium = shutil.which("chromium")
    if chromium is None:
        print("SKIP: no chromium (Debian package chromium)")
        return 0
    profile = tempfile.mkdtemp(prefix="vsmhost-chromium-")
    with Host() as host:
        browser = subprocess.Popen(
            [chromium, "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic",
             "--no-first-run", "--disable-background-networking", "--disable-component-update",
             "--disable-sync", "--disable-dev-shm-usage", "--user-data-dir=" + profile,
             "--remote-debugging-port=0", "about:blank"],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            port_file = os.path.join(profile, "DevToolsActivePort")
            if not wait_until(lambda: os.path.exists(port_file) and
                              open(port_file).read().count("\n") >= 1, 60):
                raise RuntimeError("chromium opened no DevTools port")
            port, path = open(port_file).read().split("\n")[:2]
            shown, png = asyncio.run(drive("ws://127.0.0.1:%s%s" % (port, path),
                                           "http://127.0.0.1:%d/" % host.port))
        finally:
            browser.terminate()
            browser.wait(30)
            shutil.rmtree(profile, ignore_errors=True)
        host_exit = host.stop()
    with open(artifact("vsmhost-page.png"), "wb") as file:
        file.write(png)
    expected = vsmctl_answers(COMMANDS, origin="http://127.0.0.1:%d" % host.port)
    answers = [a.encode() for a in shown["answers"]]
    checks = [
        ("state", shown["state"], "done"), ("host exit", host_exit, 0),
        ("identity", shown["identity"][:3], ["vsm", "qwasm2_16261212", "18625 18626"]),
        ("wait timeout", shown["identity"][3] in ("1", "100"), True),
        ("methods", shown["methods"], ["VersionInfo", "GetServerInfo", "ChangePort", "CheckQPTPort"]),
        ("VersionInfo", answers[:1] and answers[0].startswith(b'{\n   "event" : "VersionInfo",')
         and answers[0].endswith(b'\t"cmdId" : "1"\n}\n'), True),
        ("answers", answers[1:], expected[:3]), ("send box", (shown["typed"] or "").encode(),
                                                 expected[3]),
        ("screenshot", png[:8], b"\x89PNG\r\n\x1a\n")]
    failures = ["%s: got %r, want %r" % check for check in checks if check[1] != check[2]]
    print("\n".join("FAIL: " + f for f in failures) or "page ok; " + artifact("vsmhost-page.png"))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
