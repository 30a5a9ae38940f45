"""A real browser loads the demo page from vsmhost: headless chromium, driven over its DevTools
protocol, waits for the page's conversation with the module, checks what the page shows against
the answers vsmctl gets, and saves a screenshot (artifacts/vsmhost-page.png)."""
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

# The page's conversation; VersionInfo depends on the socket's user and is checked by its shape.
COMMANDS = [
    '{"id":"2","cmdId":"2","method":"GetServerInfo","parameter":[]}',
    '{"id":"3","cmdId":"3","method":"ChangePort","parameter":["a"]}',
    '{"id":"4","cmdId":"4","method":"CheckQPTPort","parameter":["127.0.0.1",18625,18626]}',
]


def find_chromium():
    for name in ["chromium", "chromium-browser", "google-chrome"]:
        if path := shutil.which(name):
            return path
    return None


class DevTools:
    """Calls over one DevTools connection, to the browser or (with `session`) to one page."""

    def __init__(self, connection, session=None):
        self.connection, self.session, self.next_id = connection, session, 0

    async def call(self, method, **params):
        self.next_id += 1
        message = {"id": self.next_id, "method": method, "params": params}
        if self.session:
            message["sessionId"] = self.session
        await self.connection.send(json.dumps(message))
        while True:
            reply = json.loads(await self.connection.recv())
            if reply.get("id") == self.next_id and reply.get("sessionId") == self.session:
                if "error" in reply:
                    raise RuntimeError("%s: %s" % (method, reply["error"]))
                return reply["result"]

    async def evaluate(self, expression):
        result = await self.call("Runtime.evaluate", expression=expression, returnByValue=True)
        return result["result"].get("value")

    async def wait_for(self, expression, seconds):
        for _ in range(int(seconds * 10)):
            if value := await self.evaluate(expression):
                return value
            await asyncio.sleep(0.1)
        return None


async def drive(devtools_url, page_url):
    async with websockets.connect(devtools_url, max_size=None) as connection:
        browser = DevTools(connection)
        target = await browser.call("Target.createTarget", url="about:blank")
        session = await browser.call("Target.attachToTarget", targetId=target["targetId"],
                                     flatten=True)
        page = DevTools(connection, session["sessionId"])
        await page.call("Emulation.setDeviceMetricsOverride", width=1000, height=1400,
                        deviceScaleFactor=1, mobile=False)
        await page.call("Page.navigate", url=page_url)
        await page.wait_for("document.body && ['done', 'failed'].includes("
                            "document.body.dataset.state)", 30)
        shown = await page.evaluate("""JSON.stringify({
            state: document.body.dataset.state,
            connection: document.getElementById('connection').textContent,
            alias: document.getElementById('alias').textContent,
            version: document.getElementById('version').textContent,
            ports: document.getElementById('ports').textContent,
            wait: document.getElementById('wait').textContent,
            exchanges: [...document.querySelectorAll('#conversation li')].map(item => ({
                method: item.dataset.method,
                answer: item.querySelector('pre.answer').textContent}))})""")
        # The send box: any command, answered byte for byte.
        await page.evaluate("""document.getElementById('command').value =
            '{"id":"9","cmdId":"9","method":"NoSuchMethod","parameter":[1]}';
            document.querySelector('#send button').click(); 0""")
        typed = await page.wait_for("document.getElementById('answer').textContent", 10) or ""
        shot = await page.call("Page.captureScreenshot", format="png", captureBeyondViewport=True)
        return json.loads(shown), typed, base64.b64decode(shot["data"])


def main():
    chromium = find_chromium()
    if chromium is None:
        print("SKIP: no chromium on this machine (Debian package chromium)")
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
                              len(open(port_file).read().split("\n")) >= 2, 60):
                raise RuntimeError("chromium did not open its DevTools port")
            port, path = open(port_file).read().split("\n")[:2]
            shown, typed, png = asyncio.run(drive("ws://127.0.0.1:%s%s" % (port, path),
                                                  "http://127.0.0.1:%d/" % host.port))
        finally:
            browser.terminate()
            try:
                browser.wait(20)
            except subprocess.TimeoutExpired:
                browser.kill()
            shutil.rmtree(profile, ignore_errors=True)
        host_status = host.stop()
    with open(artifact("vsmhost-page.png"), "wb") as file:
        file.write(png)
    print("screenshot:", artifact("vsmhost-page.png"), len(png), "bytes")

    origin = "http://127.0.0.1:%d" % host.port
    expected = vsmctl_answers(COMMANDS, origin=origin)
    expected_typed = vsmctl_answers(
        ['{"id":"9","cmdId":"9","method":"NoSuchMethod","parameter":[1]}'], origin=origin)[0]
    failures = []

    def check(what, got, want):
        if got != want:
            failures.append("%s: got %r, want %r" % (what, got, want))

    check("state", shown["state"], "done")
    check("identity", (shown["alias"], shown["version"], shown["ports"]),
          ("vsm", "qwasm2_16261212", "18625 18626"))
    check("wait timeout", shown["wait"] in ("1", "100"), True)
    check("connection", shown["connection"].startswith("connected to ws://"), True)
    methods = [e["method"] for e in shown["exchanges"]]
    check("methods", methods, ["VersionInfo", "GetServerInfo", "ChangePort", "CheckQPTPort"])
    if len(shown["exchanges"]) == 4:
        version_info = shown["exchanges"][0]["answer"]
        check("VersionInfo", version_info.startswith('{\n   "event" : "VersionInfo",\n   "id" : "1"')
              and version_info.endswith('\t"cmdId" : "1"\n}\n'), True)
        for exchange, answer in zip(shown["exchanges"][1:], expected):
            check(exchange["method"], exchange["answer"].encode(), answer)
    check("send box", typed.encode(), expected_typed)
    check("png", png[:8], b"\x89PNG\r\n\x1a\n")
    check("host exit", host_status, 0)
    for failure in failures:
        print("FAIL:", failure)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
