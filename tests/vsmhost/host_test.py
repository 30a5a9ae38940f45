"""vsmhost against vsmctl: the same commands give the same bytes over POST, GET query forms and
WebSocket; origins reach the module's guard; the browser rules and the limits hold."""
import asyncio
import json
import os
import socket
import subprocess
import time
import unittest

import websockets

from hostlib import ENV, Host, vsmctl_answers, vsmkit_url, wait_until

ORIGIN = "http://127.0.0.1:18625"
# A conversation that changes the module's state on the way (SetServerInfo), so the transports
# must also keep the order of the commands.
COMMANDS = [
    '{"id":"1","cmdId":"1","method":"VSVersion","parameter":[]}',
    '{"id":"2","cmdId":"2","method":"ChangePort","parameter":["a"]}',
    '{"id":"3","cmdId":"3","method":"GetServerInfo","parameter":[]}',
    '{"id":"4","cmdId":"4","method":"SetServerInfo","parameter":["127.0.0.1",18625,18626,18622,18623]}',
    '{"id":"5","cmdId":"5","method":"GetServerInfo","parameter":[]}',
    '{"id":"6","cmdId":"6","method":"CheckQPTPort","parameter":["127.0.0.1",18622,18623]}',
    '{"id":"7","cmdId":"7","method":"SetServerInfo","parameter":["a"]}',
    '{"id":"8","cmdId":"8","method":"NoSuchMethod","parameter":[1,2.5,null]}',
    '{"id":"9","method":"ChangePort","parameter":{"a":1}}',
    'not json at all',
    '{"id":"10","cmdId":"10","method":"ChangePort"}\r\n\r\nbody behind the blank line',
    '',
]


def websocket_answers(port, commands, origin=ORIGIN, path="/vsm/ws"):
    async def talk():
        async with websockets.connect("ws://127.0.0.1:%d%s" % (port, path), origin=origin or None,
                                      max_size=None, compression=None) as connection:
            answers = []
            for command in commands:
                await connection.send(command)
                answer = await connection.recv()
                answers.append(answer.encode() if isinstance(answer, str) else answer)
            return answers
    return asyncio.run(talk())


class AnswersMatchVsmctl(unittest.TestCase):
    def test_post_and_websocket(self):
        expected = vsmctl_answers(COMMANDS, origin=ORIGIN)
        self.assertEqual(len(expected), len(COMMANDS))
        with Host() as host:
            posted = []
            for command in COMMANDS:
                status, headers, body = host.request("POST", "/vsm/", command, {"Origin": ORIGIN})
                self.assertEqual((status, headers["content-type"]),
                                 (200, "application/json; charset=utf-8"))
                posted.append(body)
            self.assertEqual(posted, expected)
        with Host() as host:
            self.assertEqual(websocket_answers(host.port, COMMANDS), expected)

    def test_get_query_forms(self):
        rows = [("ChangePort", "id=7&p=[1,2]"), ("CheckQPTPort", 'id=x&p=["127.0.0.1",1,2]'),
                ("VSVersion", "id=a%20b"), ("GetServerInfo", "id=1&id=2&p="),
                ("Nope", "p=[1]&id=3")]
        with Host() as host:
            for method, query in rows:
                target = "/vsm/%s?%s" % (method, query)
                command = vsmkit_url("method", method, query)
                self.assertTrue(command.startswith('{"id":'), command)
                status, _, body = host.request("GET", target, headers={"Origin": ORIGIN})
                self.assertEqual((status, body),
                                 (200, vsmctl_answers([command], ORIGIN, url=target)[0]), target)
            for target in ["/vsm/ChangePort", "/vsm/ChangePort?p=[1]", "/vsm/ChangePort?x"]:
                status, _, body = host.request("GET", target)
                self.assertEqual(status, 400, target)
                self.assertIn(b'"error"', body)

    def test_origins_reach_the_guard(self):
        guarded = ['{"id":"1","cmdId":"1","method":"Reboot","parameter":[]}',
                   '{"id":"2","cmdId":"2","method":"AddFirewall","parameter":[]}',
                   '{"id":"3","cmdId":"3","method":"GetLocalIP","parameter":[]}']
        with Host() as host:
            for origin in ["http://127.0.0.1:8080", "https://127.0.0.1", "http://localhost",
                           "https://example.com", ""]:
                expected = vsmctl_answers(guarded, origin=origin)
                headers = {"Origin": origin} if origin else {}
                posted = [host.request("POST", "/vsm/", c, headers)[2] for c in guarded]
                self.assertEqual(posted, expected, origin)
                self.assertEqual(websocket_answers(host.port, guarded, origin), expected, origin)


class BrowserRules(unittest.TestCase):
    def test_cors_preflight_status_and_page(self):
        with Host() as host:
            status, headers, body = host.request("OPTIONS", "/vsm/", headers={
                "Origin": "https://example.com", "Access-Control-Request-Method": "POST",
                "Access-Control-Request-Headers": "content-type",
                "Access-Control-Request-Private-Network": "true"})
            self.assertEqual(status, 204)
            for name, value in [("access-control-allow-origin", "https://example.com"),
                                ("access-control-allow-methods", "GET, POST, OPTIONS"),
                                ("access-control-allow-headers", "content-type"),
                                ("access-control-allow-private-network", "true")]:
                self.assertEqual(headers.get(name), value, name)
            status, headers, _ = host.request("OPTIONS", "/vsm/", headers={
                "Access-Control-Request-Method": "POST"})
            self.assertEqual((headers["access-control-allow-origin"],
                              "access-control-allow-private-network" in headers), ("*", False))
            _, headers, _ = host.request("POST", "/vsm/", "{}", {"Origin": "http://a.b"})
            self.assertEqual(headers["access-control-allow-origin"], "http://a.b")

            status, _, body = host.request("GET", "/status")
            module = json.loads(body)["modules"][0]
            self.assertEqual((status, module["alias"], module["version"], module["ports"]),
                             (200, "vsm", "qwasm2_16261212", [18625, 18626]))
            self.assertTrue(wait_until(lambda: json.loads(host.request(
                "GET", "/status")[2])["modules"][0]["waitTimeout"] in (1, 100)))
            for target, status, kind in [("/", 200, "text/html"), ("/app.js", 200, "text/javascript"),
                                         ("/style.css", 200, "text/css"),
                                         ("/../CMakeLists.txt", 404, "application/json"),
                                         ("/nothing", 404, "application/json")]:
                got, headers, _ = host.request("GET", target)
                self.assertEqual((got, headers["content-type"].split(";")[0]), (status, kind), target)
            self.assertEqual(host.request("PUT", "/vsm/", "{}")[0], 405)
            self.assertEqual(host.stop(), 0)


class Limits(unittest.TestCase):
    def test_body_parse_idle_and_connection_cap(self):
        with Host("--idle-timeout", "1", "--max-connections", "4") as host:
            too_big = host.raw(b"POST /vsm/ HTTP/1.1\r\nHost: x\r\nContent-Length: %d\r\n\r\n"
                               % (16 * 1024 * 1024 + 1))
            self.assertTrue(too_big.startswith(b"HTTP/1.1 413 "), too_big)
            command = b'{"id":"1","cmdId":"1","method":"ChangePort","parameter":["a"]}'
            big = command + b" " * (16 * 1024 * 1024 - len(command))
            status, _, body = host.request("POST", "/vsm/", big)
            self.assertEqual((status, body), (200, vsmctl_answers([command.decode()])[0]))
            for garbage in [b"GARBAGE\r\n\r\n", b"GET / HTTP/9.Z\r\n\r\n",
                            b"POST /vsm/ HTTP/1.1\r\nContent-Length: x\r\n\r\n",
                            b"GET / HTTP/1.1\r\nHost: x\r\nBad Header\r\n\r\n"]:
                self.assertTrue(host.raw(garbage).startswith(b"HTTP/1.1 400 "), garbage)

            # An idle connection is closed after the timeout, over HTTP and over WebSocket.
            started = time.monotonic()
            self.assertEqual(host.raw(b"", wait=10), b"")
            self.assertLess(time.monotonic() - started, 5)

            async def idle_websocket():
                async with websockets.connect("ws://127.0.0.1:%d/vsm/ws" % host.port) as ws:
                    with self.assertRaises(websockets.ConnectionClosed):
                        await asyncio.wait_for(ws.recv(), 10)
            asyncio.run(idle_websocket())

            # Four connections fill the cap; a fifth is turned away, and a place that frees is
            # taken again.
            held = [socket.create_connection(("127.0.0.1", host.port)) for _ in range(4)]
            time.sleep(0.2)  # the host takes them in; they stay within the idle second
            refused = host.raw(b"GET /status HTTP/1.1\r\nHost: x\r\n\r\n")
            self.assertTrue(refused.startswith(b"HTTP/1.1 503 "), refused)
            held.pop().close()
            self.assertTrue(wait_until(lambda: host.raw(
                b"GET /status HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n")
                .startswith(b"HTTP/1.1 200 ")))
            for connection in held:
                connection.close()
            self.assertEqual(host.stop(), 0)


class Modules(unittest.TestCase):
    """Several modules side by side, and the faults of a module, through the stand-in."""

    def test_routing_faults_and_lifecycle(self):
        fake = ENV["VSM_FAKE_MODULE"]
        host = Host(modules=[fake, "./libvsm.so"])
        try:
            status, _, body = host.request("POST", "/fak/x?y=1", "hello", {"Origin": "http://o"})
            self.assertEqual(status, 200)
            fields = dict(line.split("=", 1) for line in body.decode().split("\n"))
            self.assertEqual((fields["url"], fields["origin"], fields["socket"], fields["text"],
                              fields["supported"]), ("/fak/x?y=1", "http://o", "yes", "hello", "1"))
            self.assertNotEqual(fields["key"], "0")
            self.assertEqual(host.request("POST", "/vsm/", COMMANDS[1])[2],
                             vsmctl_answers([COMMANDS[1]])[0])

            status, headers, body = host.request("POST", "/fak/", "silent")
            self.assertEqual((status, json.loads(body)),
                             (502, {"error": "the module gave no answer", "module": "fak"}))
            status, headers, body = host.request("POST", "/fak/", "binary")
            boundary = headers["content-type"].split("boundary=")[1].encode()
            self.assertEqual(body, b"--" + boundary + b"\r\nContent-Type: application/json; "
                             b"charset=utf-8\r\n\r\n{\"binary\":true}\r\n--" + boundary +
                             b"\r\nContent-Type: application/octet-stream\r\n\r\n\x00\x01\xffB\r\n--"
                             + boundary + b"--\r\n")

            async def talk():
                async with websockets.connect("ws://127.0.0.1:%d/fak/ws" % host.port) as ws:
                    await ws.send("silent")
                    silent = await ws.recv()
                    await ws.send("binary")
                    text, block = await ws.recv(), await ws.recv()
                    await ws.send("latin")
                    latin = await ws.recv()
                    await ws.send("hi")
                    key = (await ws.recv()).split("key=")[1].split("\n")[0]
                    return silent, text, block, latin, key
            silent, text, block, latin, key = asyncio.run(talk())
            self.assertEqual(json.loads(silent)["error"], "the module gave no answer")
            self.assertEqual((text, block, latin), ('{"binary":true}', b"\x00\x01\xffB", b"caf\xe9"))
            # The module hears of the closed WebSocket by the connection's number.
            self.assertTrue(wait_until(lambda: host.request("POST", "/fak/", "closed")[2]
                                       == (key + " ").encode()))
        finally:
            self.assertEqual(host.stop(), 0)
            with open(os.path.join(host.folder, "fake_actions.log")) as file:
                lines = file.read().splitlines()
            host.close()
        self.assertEqual((lines[0], lines[1], lines[-1]), ("action 0", "close " + key, "action 3"))

    def test_refuses_bad_modules_and_options(self):
        for arguments, status in [(["--module", "/nonexistent.so"], 1),
                                  (["--module", ENV["VSM_FAKE_MODULE"], "--module",
                                    ENV["VSM_FAKE_MODULE"]], 1),
                                  (["--port", "70000"], 2), (["--bogus"], 2)]:
            result = subprocess.run([ENV["VSMHOST"], "--port", "0", *arguments],
                                    capture_output=True, timeout=30)
            self.assertEqual(result.returncode, status, arguments)


if __name__ == "__main__":
    unittest.main()
